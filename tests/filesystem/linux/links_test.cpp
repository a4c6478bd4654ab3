// SPDX-License-Identifier: MIT
//
// Links, foreign names and drives, as searches and queries on Linux see them.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "kvbase/filesystem/file_system_iterator.h"
#include "tests/filesystem/path_support.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace {

using namespace KV_1_1::testing;

template <class Items>
Texts sortedFullNames(Items const& items) {
  Texts names;
  for (auto const& item : items) names.push_back(fullName(item));
  std::sort(names.begin(), names.end());
  return names;
}

class PathDiskLinux : public ::testing::Test {
 protected:
  SmartPtr<Directory const> directory(wchar const* below = KVW("")) const {
    return directoryAt(folder.text(below).c_str());
  }
  SmartPtr<File const> file(wchar const* below) const { return fileAt(folder.text(below).c_str()); }
  std::string name(wchar const* below) const { return narrow(folder.text(below)); }
  void link(char const* target, char const* at) const { ASSERT_EQ(symlink(target, folder.path(at).c_str()), 0) << at; }

  TempFolder folder;
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
  std::filesystem::path const before = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  EXPECT_EQ(fullName(directoryAt(KVW("a"))->makeAbsolute()), name(KVW("a\\")));
  std::filesystem::current_path(before);
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

// Names that Windows could not hold map into U+F000..F0FF, so no entry stops a walk and each name leads back to its file.
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
  CollectedMessages messages;
  std::filesystem::path const before = std::filesystem::current_path();
  std::filesystem::current_path(folder.path("data/sub"));
  EXPECT_EQ(fullName(directoryAt(KVW("C:x"))->makeAbsolute()), "C:\\sub\\x\\");
  std::filesystem::current_path(folder.path());
  EXPECT_EQ(fullName(directoryAt(KVW("C:x"))->makeAbsolute()), "C:\\x\\");
  std::filesystem::current_path(before);
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

}  // namespace
}  // namespace KV_1_1
