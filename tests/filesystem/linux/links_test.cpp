// SPDX-License-Identifier: MIT
//
// Links, foreign names and drives, as searches and queries on Linux see them.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "kvbase/filesystem/file_system_iterator.h"
#include "tests/filesystem/disk_support.h"
#include "tests/platform/linux/files/file_support.h"
#include "tests/support/current_path.h"

namespace KV_1_1 {
namespace testing {
namespace {

template <class Items>
Texts sortedFullNames(Items const& items) {
  Texts names;
  for (auto const& item : items) names.push_back(fullName(item));
  std::sort(names.begin(), names.end());
  return names;
}

class PathDiskLinux : public OnDisk {
 protected:
  void link(char const* target, char const* at) const { ASSERT_EQ(symlink(target, folder.path(at).c_str()), 0) << at; }
  bool has(char const* at) const { return std::filesystem::exists(std::filesystem::symlink_status(folder.path(at))); }
  // The text of a link; empty for what is none.
  std::string linkText(std::filesystem::path const& at) const {
    std::error_code ignored;
    return std::filesystem::read_symlink(folder.path(at), ignored).string();
  }

  String const all{KVW("*")};
};

TEST_F(PathDiskLinux, APathWithoutDriveIsANativePath) {
  folder.write("x", "abc");
  EXPECT_EQ(fullName(Directory::fromUTF8(folder.path().string())), name(KVW("")));
  EXPECT_TRUE(file(KVW("x"))->exists());
  EXPECT_TRUE(directoryAt(KVW("\\"))->exists());
  EXPECT_TRUE(directoryAt(KVW("\\tmp"))->exists());
  EXPECT_EQ(shown(file(KVW("x"))->getFullNameUnix()), folder.path("x").string());
}

TEST_F(PathDiskLinux, TheCurrentDirectoryReadsSo) {
  CurrentPath const current(folder.path());
  EXPECT_EQ(fullName(directoryAt(KVW("a"))->makeAbsolute()), name(KVW("a\\")));
}

TEST_F(PathDiskLinux, NamesKeepTheirCaseAndAreToldApartByIt) {
  folder.write("Name");
  folder.write("name");
  EXPECT_EQ(sortedFullNames(directory()->collectFiles(String(KVW("NAME")), false)),
            Texts({name(KVW("Name")), name(KVW("name"))}));
  EXPECT_FALSE(file(KVW("NAME"))->exists());
}

TEST_F(PathDiskLinux, ALinkIsListedAsAFileWhateverItLeadsTo) {
  folder.write("target/inside");
  folder.write("plain");
  link("target", "toFolder");
  link("plain", "toFile");
  link("nowhere", "toNothing");
  EXPECT_EQ(sortedFullNames(directory()->collectDirectories(all, false)), Texts{name(KVW("target\\"))});
  EXPECT_EQ(sortedFullNames(directory()->collectFiles(all, false)),
            Texts({name(KVW("plain")), name(KVW("toFile")), name(KVW("toFolder")), name(KVW("toNothing"))}));
  // and never walked
  EXPECT_EQ(sortedFullNames(directory()->collectFiles(String(KVW("inside")), true)),
            Texts{name(KVW("target\\inside"))});
}

TEST_F(PathDiskLinux, ATrailingSeparatorLooksThroughALink) {
  folder.write("target/inside", "12345");
  link("target", "toFolder");
  link("nowhere", "toNothing");
  link("target/inside", "toFile");
  EXPECT_TRUE(directory(KVW("toFolder"))->exists());
  EXPECT_FALSE(directory(KVW("toNothing"))->exists());
  EXPECT_FALSE(directory(KVW("toFile"))->exists());
  EXPECT_TRUE(file(KVW("toFolder"))->exists());   // the link itself
  EXPECT_TRUE(file(KVW("toNothing"))->exists());  // the link itself
  EXPECT_TRUE(file(KVW("toFile"))->exists());
  EXPECT_TRUE(file(KVW("toFolder\\inside"))->exists());
  ULARGE_INTEGER size;
  EXPECT_TRUE(file(KVW("toFile"))->getFileSize(size));
  EXPECT_EQ(size.QuadPart, 5u);
  EXPECT_EQ(sortedFullNames(directory(KVW("toFolder"))->collectFiles(all, false)),
            Texts{name(KVW("toFolder\\inside"))});
}

TEST_F(PathDiskLinux, ACircularLinkEndsTheWalk) {
  folder.write("a/b/file");
  link("..", "a/b/up");
  link("self", "a/self");
  EXPECT_EQ(sortedFullNames(directory()->collectContents(all, true)),
            Texts({name(KVW("a\\")), name(KVW("a\\b\\")), name(KVW("a\\b\\file")), name(KVW("a\\b\\up")),
                   name(KVW("a\\self"))}));
}

// Names that Windows could not hold map into U+F000..F0FF, so no entry stops a walk and each name leads back to its
// file.
TEST_F(PathDiskLinux, ForeignNamesComeMappedAndLeadBack) {
  struct Row {
    char const* name;
    char const* bytes;
    char const* shownName;
  };
  Row const rows[] = {
      {"backslash", "a\\b",
       "a\xEF\x81\x9C"
       "b"},  // U+F05C
      {"colon", "a:b",
       "a\xEF\x80\xBA"
       "b"},                                            // U+F03A
      {"wildcards", "*?", "\xEF\x80\xAA\xEF\x80\xBF"},  // U+F02A U+F03F
      {"quote, brackets and bar", "\"<>|", "\xEF\x80\xA2\xEF\x80\xBC\xEF\x80\xBE\xEF\x81\xBC"},
      {"control unit", "a\x01", "a\xEF\x80\x81"},  // U+F001
      {"last dot", "end.", "end\xEF\x80\xAE"},     // U+F02E
      {"last blank", "end ", "end\xEF\x80\xA0"},   // U+F020
      {"three dots", "...", "..\xEF\x80\xAE"},
      {"no UTF-8", "bad\xFF.txt", "bad\xEF\x83\xBF.txt"},  // U+F0FF
      {"cut UTF-8", "bad\xE2\x82", "bad\xEF\x83\xA2\xEF\x82\x82"},
  };
  Texts expected;
  for (Row const& row : rows) {
    folder.write(row.bytes, row.name);
    expected.push_back(row.shownName);
  }
  auto const files = directory()->collectFiles(all, false);
  Texts found;
  for (auto const& item : files) {
    found.push_back(shown(item->getName()));
    EXPECT_TRUE(item->exists()) << found.back();
    ULARGE_INTEGER size;
    EXPECT_TRUE(item->getFileSize(size)) << found.back();
    // the way back: a text parsed anew leads to the same file
    EXPECT_TRUE(fileAt(item->getFullName())->exists()) << found.back();
  }
  std::sort(found.begin(), found.end());
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(found, expected);
}

TEST_F(PathDiskLinux, AFolderWithAForeignNameIsWalked) {
  folder.write("bad\xFF/x");
  folder.write("dot./y");
  EXPECT_EQ(directory()->collectFiles(all, true).size(), 2u);
}

// Sets KVBASE_DRIVES to a folder for a scope.
class Drives {
 public:
  explicit Drives(std::filesystem::path const& folder) {
    char const* const before = getenv("KVBASE_DRIVES");
    if (before != nullptr) previous_ = before;
    wasSet_ = before != nullptr;
    setenv("KVBASE_DRIVES", folder.c_str(), 1);
  }
  ~Drives() {
    if (wasSet_) {
      setenv("KVBASE_DRIVES", previous_.c_str(), 1);
    } else {
      unsetenv("KVBASE_DRIVES");
    }
  }

 private:
  std::string previous_;
  bool wasSet_;
};

TEST_F(PathDiskLinux, DrivesAndSharesAreLinksInOneFolder) {
  folder.write("data/sub/x", "123");
  folder.write("mount/y");
  folder.makeFolder("drives/unc/server");
  link("../data", "drives/c:");
  link("../../../mount", "drives/unc/server/share");
  Drives const drives(folder.path("drives"));

  EXPECT_TRUE(directoryAt(KVW("C:\\"))->exists());
  EXPECT_TRUE(directoryAt(KVW("c:\\sub"))->exists());
  EXPECT_TRUE(fileAt(KVW("C:\\sub\\x"))->exists());
  EXPECT_FALSE(directoryAt(KVW("D:\\"))->exists());
  EXPECT_EQ(sortedFullNames(directoryAt(KVW("C:\\"))->collectContents(all, true)), Texts({"C:\\sub\\", "C:\\sub\\x"}));

  EXPECT_TRUE(directoryAt(KVW("\\\\server\\share"))->exists());
  EXPECT_TRUE(fileAt(KVW("\\\\server\\share\\y"))->exists());
  EXPECT_FALSE(directoryAt(KVW("\\\\server\\other"))->exists());
  EXPECT_FALSE(directoryAt(KVW("\\\\other\\share"))->exists());
  EXPECT_EQ(sortedFullNames(directoryAt(KVW("\\\\server\\share"))->collectFiles(all, true)),
            Texts{"\\\\server\\share\\y"});
}

TEST_F(PathDiskLinux, TheCurrentDirectoryOfADrive) {
  folder.makeFolder("data/sub");
  folder.makeFolder("drives");
  link("../data", "drives/c:");
  Drives const drives(folder.path("drives"));
  for (auto const& place : {std::make_pair("data/sub", "C:\\sub\\x\\"), std::make_pair("data", "C:\\x\\")}) {
    CurrentPath const current(folder.path(place.first));
    EXPECT_EQ(fullName(directoryAt(KVW("C:x"))->makeAbsolute()), place.second);
  }
  EXPECT_EQ(messages.take(), Texts());
  EXPECT_EQ(directoryAt(KVW("D:x"))->makeAbsolute(), nullptr);
  EXPECT_EQ(messages.take(), Texts{kNoCurrentDirectory});
}

TEST_F(PathDiskLinux, WithoutDrivesFolderThereAreNone) {
  Drives const drives(folder.path("missing"));
  EXPECT_FALSE(directoryAt(KVW("C:\\"))->exists());
  EXPECT_FALSE(directoryAt(KVW("\\\\server\\share"))->exists());
  EXPECT_TRUE(directoryAt(KVW("C:\\"))->collectContents(all, true).empty());
}

TEST_F(PathDiskLinux, ARecursiveRemoveStaysInItsTree) {
  folder.write("outside/kept");
  folder.write("beside");
  folder.write("tree/sub/deep/file");
  link("../outside", "tree/toOutside");
  link("../outside/kept", "tree/toFile");
  link("..", "tree/up");
  link(".", "tree/self");
  link("../../../outside", "tree/sub/deep/toOutside");
  link("../..", "tree/sub/deep/up");
  link("nowhere", "tree/sub/toNothing");
  link("circle2", "tree/sub/circle1");
  link("circle1", "tree/sub/circle2");
  EXPECT_TRUE(directory(KVW("tree"))->remove(true));
  EXPECT_FALSE(has("tree"));
  EXPECT_TRUE(has("outside/kept"));
  EXPECT_TRUE(has("beside"));
}

// In a process whose root is the temporary folder, so that nothing is lost should the link be followed.
TEST_F(PathDiskLinux, ARecursiveRemoveDoesNotFollowALinkToTheRoot) {
  folder.write("outside/kept");
  folder.write("tree/sub/file");
  link("/", "tree/sub/root");
  link("/", "tree/root");
  link("/outside", "tree/outside");
  bool const permitted = inChildIfPermitted([&] {
    char const* const root = folder.path().c_str();
    if (chroot(root) != 0 && (!becomeRootOfNamespace() || chroot(root) != 0)) return false;
    EXPECT_EQ(chdir("/"), 0);
    EXPECT_TRUE(directoryAt(KVW("\\tree"))->remove(true));
    return true;
  });
  KVBASE_SKIP_UNLESS(permitted, "the right to change the root, which some containers withhold even from root");
  EXPECT_FALSE(has("tree"));
  EXPECT_TRUE(has("outside/kept"));
}

TEST_F(PathDiskLinux, RemoveContentsTakesLinksAsFiles) {
  folder.write("outside/kept");
  folder.write("tree/file");
  link("../outside", "tree/toOutside");
  link("nowhere", "tree/toNothing");
  EXPECT_TRUE(directory(KVW("tree"))->removeContents(false));
  EXPECT_TRUE(std::filesystem::is_empty(folder.path("tree")));
  EXPECT_TRUE(has("outside/kept"));
}

TEST_F(PathDiskLinux, ALinkIsRemovedWhereItsDirectoryIsAskedFor) {
  folder.write("outside/kept");
  link("outside", "toOutside");
  EXPECT_TRUE(directory(KVW("toOutside"))->remove(false));
  EXPECT_FALSE(has("toOutside"));
  EXPECT_TRUE(has("outside/kept"));
}

// A directory's name ends in a separator, and that looks through a link: asked for by its own name, it is what it leads
// to.
TEST_F(PathDiskLinux, ALinkNamedAsADirectoryIsEmptiedAsOne) {
  folder.write("outside/sub/file");
  link("outside", "toOutside");
  EXPECT_TRUE(directory(KVW("toOutside"))->removeContents(true));
  EXPECT_TRUE(std::filesystem::is_empty(folder.path("outside")));
  EXPECT_EQ(linkText("toOutside"), "outside");
}

TEST_F(PathDiskLinux, ALinkIsRemovedAsAFile) {
  folder.write("outside/kept");
  folder.write("locked");
  ASSERT_EQ(chmod(folder.path("locked").c_str(), 0444), 0);
  link("outside", "toOutside");
  link("locked", "toLocked");
  link("nowhere", "toNothing");
  for (wchar const* name : {KVW("toOutside"), KVW("toLocked"), KVW("toNothing")}) {
    EXPECT_TRUE(file(name)->remove()) << narrow(name);
    EXPECT_FALSE(file(name)->exists()) << narrow(name);
  }
  EXPECT_TRUE(has("outside/kept"));
  EXPECT_TRUE(has("locked"));
  EXPECT_FALSE(file(KVW("locked"))->remove());
  EXPECT_EQ(messages.take().size(), 1u);
}

TEST_F(PathDiskLinux, ACopiedTreeKeepsItsLinks) {
  folder.write("tree/sub/file", "deep");
  folder.write("tree/file", "contents");
  folder.write("outside/kept");
  std::pair<char const*, char const*> const links[] = {
      {"sub", "toSub"},           {"nowhere", "toNothing"},  {"..", "up"}, {"../../outside", "sub/toOutside"},
      {"circle2", "sub/circle1"}, {"circle1", "sub/circle2"}};
  for (auto const& each : links) link(each.first, (std::string("tree/") + each.second).c_str());
  link("file", "tree/toFile");
  folder.makeFolder("copy");
  for (int round = 0; round < 2; ++round) {
    SCOPED_TRACE(round);
    EXPECT_TRUE(directory(KVW("tree"))->copyContents(directory(KVW("copy")), true, true, nullptr));
    for (auto const& each : links) {
      EXPECT_EQ(linkText(std::filesystem::path("copy") / each.second), each.first) << each.second;
    }
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(folder.path("copy/toFile"))));
    EXPECT_EQ(std::filesystem::file_size(folder.path("copy/toFile")), 8u);
    EXPECT_EQ(std::filesystem::file_size(folder.path("copy/sub/file")), 4u);
  }
  EXPECT_FALSE(directory(KVW("tree"))->copyContents(directory(KVW("copy")), true, false, nullptr));
  EXPECT_FALSE(has("copy/up/nowhere"));
  EXPECT_FALSE(has("copy/nowhere"));
}

TEST_F(PathDiskLinux, ATreeGoesToAnotherFileSystemByCopies) {
  OtherFileSystem const other;
  KVBASE_SKIP_UNLESS(other.isOtherThan(folder.path()), "/dev/shm, on another file system than temporary files");
  folder.write("tree/sub/file", "deep");
  link("sub", "tree/toSub");
  auto const tree = directory(KVW("tree"));
  std::filesystem::create_directory(other.path("copy"));
  EXPECT_TRUE(tree->copyContents(directoryAt(other.text(KVW("copy")).c_str()), true, false, nullptr));
  EXPECT_EQ(std::filesystem::file_size(other.path("copy/sub/file")), 4u);
  EXPECT_EQ(std::filesystem::read_symlink(other.path("copy/toSub")), "sub");

  EXPECT_TRUE(file(KVW("tree\\sub\\file"))->move(fileAt(other.text(KVW("moved")).c_str())));
  EXPECT_EQ(std::filesystem::file_size(other.path("moved")), 4u);
  EXPECT_FALSE(has("tree/sub/file"));
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(PathDiskLinux, ACopyToAFullDiskSaysSo) {
  folder.makeFolder("mount");
  folder.write("large", std::string(3 << 20, 'x'));
  bool const permitted = inChildIfPermitted([&] {
    if (!mountPrivately(folder.path("mount"), "size=1m")) return false;
    EXPECT_EQ(file(KVW("large"))->copy(file(KVW("mount\\large")), true), int{File::CopyDiskFull});
    EXPECT_FALSE(has("mount/large"));
    EXPECT_EQ(file(KVW("large"))->copy(directory(KVW("mount")), true), nullptr);
    EXPECT_FALSE(has("mount/large"));
    return true;
  });
  KVBASE_SKIP_UNLESS(permitted, KVBASE_MOUNT_RIGHT);
}

TEST_F(PathDiskLinux, TouchMakesNothingBehindALink) {
  link("nothing", "toNothing");
  EXPECT_FALSE(file(KVW("toNothing"))->touch());
  EXPECT_FALSE(has("nothing"));
  EXPECT_EQ(linkText("toNothing"), "nothing");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
