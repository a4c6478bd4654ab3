// SPDX-License-Identifier: MIT
//
// What every item asks the disk: access, stat and the two times.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/filesystem/disk_support.h"
#include "tests/filesystem/scripted_system.h"

namespace KV_1_1 {
namespace testing {
namespace {

// An item that says itself whether it is there.
template <class Item>
class Claiming final : public Item {
 public:
  Claiming(SmartPtr<Item const> const& item, bool there) : Item(*item), there_(there) {}
  bool exists() const override { return there_; }

 private:
  bool const there_;
};
template <class Item>
SmartPtr<Item const> claiming(SmartPtr<Item const> const& item, bool there) {
  return SmartPtr<Item const>(new Claiming<Item>(item, there));
}

SmartPtr<File const> fileNamed(wchar const* path, wchar const* name) {
  SmartPtr<File> const file = File::fromString(String(path));
  file->setName(String(name));
  return file;
}

class ItemQueries : public ScriptedSystem<ScriptedFiles> {
 protected:
  ItemQueries() {
    files.script.attributes[KVW(R"(\\?\C:\f)")] = platform::kAttributeNormal;
    files.script.attributes[KVW(R"(\\?\C:\d\)")] = platform::kAttributeDirectory;
  }
  ~ItemQueries() override { EXPECT_EQ(messages.take(), Texts()); }

  SmartPtr<File const> const file = fileAt(KVW(R"(C:\f)"));
  SmartPtr<Directory const> const directory = directoryAt(KVW(R"(C:\d)"));
};

TEST_F(ItemQueries, AccessMakesAMaskOfTheMode) {
  struct Row {
    int mode;
    char const* mask;
  };
  Row const rows[] = {
      {0, "0"},         {1, "0"},         {2, "40000000"}, {3, "40000000"},   {4, "80000000"},
      {5, "80000000"},  {6, "c0000000"},  {7, "c0000000"}, {8, "0"},          {16, "0"},
      {12, "80000000"}, {-1, "c0000000"}, {-8, "0"},       {0x7FFFFFF8, "0"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.mode);
    files.clearLog();
    EXPECT_TRUE(file->access(row.mode));
    EXPECT_EQ(files.log(), (Log{R"(getAttributes \\?\C:\f)", R"(getAttributes \\?\C:\f)",
                                R"(openFile \\?\C:\f )" + std::string(row.mask) + " 7 3 0", "closeFile"}));
    files.clearLog();
    EXPECT_TRUE(directory->access(row.mode));
    EXPECT_EQ(files.log(), (Log{R"(getAttributes \\?\C:\d\)", R"(getAttributes \\?\C:\d\)",
                                R"(openFile \\?\C:\d\ )" + std::string(row.mask) + " 7 3 2000000", "closeFile"}));
  }
}

TEST_F(ItemQueries, AccessFlagsByTheAttributesAlone) {
  struct Row {
    char const* name;
    ulong32 attributes;
    char const* flags;
  };
  Row const rows[] = {
      {"no bit", 0, "0"},
      {"file", platform::kAttributeNormal, "0"},
      {"read-only and hidden file", platform::kAttributeReadOnly | platform::kAttributeHidden, "0"},
      {"link to a file", platform::kAttributeReparsePoint, "0"},
      {"directory", platform::kAttributeDirectory, "2000000"},
      {"directory with more bits", 0x413, "2000000"},
      {"every bit but one", 0xFFFFFFFE, "2000000"},
  };
  SmartPtr<File const> const item = claiming(file, true);
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    files.script.attributes[KVW(R"(\\?\C:\f)")] = row.attributes;
    files.clearLog();
    EXPECT_TRUE(item->access(4));
    EXPECT_EQ(files.log(), (Log{R"(getAttributes \\?\C:\f)",
                                R"(openFile \\?\C:\f 80000000 7 3 )" + std::string(row.flags), "closeFile"}));
  }
}

TEST_F(ItemQueries, AccessByTheWrongKindOfObjectIsRefused) {
  files.script.attributes[KVW(R"(\\?\C:\d)")] = platform::kAttributeDirectory;
  files.script.attributes[KVW(R"(\\?\C:\f\)")] = platform::kAttributeNormal;
  EXPECT_FALSE(fileAt(KVW(R"(C:\d)"))->access(0));
  EXPECT_FALSE(directoryAt(KVW(R"(C:\f)"))->access(0));
  EXPECT_EQ(files.log(), (Log{R"(getAttributes \\?\C:\d)", R"(getAttributes \\?\C:\f\)"}));
}

TEST_F(ItemQueries, AccessAsksTheVirtualExists) {
  EXPECT_FALSE(claiming(file, false)->access(0));
  EXPECT_FALSE(claiming(directory, false)->access(4));
  EXPECT_EQ(files.log(), Log());
}

TEST_F(ItemQueries, AccessToAnItemThatVanishesOpensNothing) {
  EXPECT_FALSE(claiming(fileAt(KVW(R"(C:\gone)")), true)->access(0));
  EXPECT_EQ(files.log(), Log{R"(getAttributes \\?\C:\gone)"});
}

// One separator at the end is cut and no more; that of a root too.
TEST_F(ItemQueries, StatAsksForTheFullNameWithoutItsLastSeparator) {
  struct Row {
    char const* name;
    SmartPtr<FileSystemItem const> item;
    char const* asked;
  };
  Row const rows[] = {
      {"directory", directoryAt(KVW(R"(C:\a)")), R"(C:\a)"},
      {"directory with a separator", directoryAt(KVW(R"(C:\a\)")), R"(C:\a)"},
      {"two levels", directoryAt(KVW(R"(C:\a\b)")), R"(C:\a\b)"},
      {"root of a drive", directoryAt(KVW(R"(C:\)")), "C:"},
      {"bare drive", directoryAt(KVW("C:")), "C:"},
      {"relative to a drive", directoryAt(KVW("C:a")), "C:a"},
      {"root without drive", directoryAt(KVW(R"(\)")), ""},
      {"level without drive", directoryAt(KVW(R"(\a)")), R"(\a)"},
      {"share", directoryAt(KVW(R"(\\s\t)")), R"(\\s\t)"},
      {"directory of a share", directoryAt(KVW(R"(\\s\t\a)")), R"(\\s\t\a)"},
      {"default directory", SmartPtr<Directory const>(new Directory), "."},
      {"relative directory", directoryAt(KVW(R"(a\b)")), R"(a\b)"},
      {"parent", directoryAt(KVW("..")), ".."},
      {"file", fileAt(KVW(R"(C:\a\b.txt)")), R"(C:\a\b.txt)"},
      {"relative file", fileAt(KVW("b.txt")), R"(.\b.txt)"},
      {"file on a share", fileAt(KVW(R"(\\s\t\b.txt)")), R"(\\s\t\b.txt)"},
      {"file at a bare drive", fileAt(KVW("C:b.txt")), "C:b.txt"},
      {"EMPTY file name", fileNamed(KVW(R"(C:\a\x)"), KVW("")), R"(C:\a)"},
      {"file name that ends in a slash", fileNamed(KVW(R"(C:\a\x)"), KVW("x/")), R"(C:\a\x)"},
      {"file name that is a backslash", fileNamed(KVW(R"(C:\a\x)"), KVW("\\")), R"(C:\a\)"},
      {"file name of two slashes", fileNamed(KVW(R"(C:\a\x)"), KVW("//")), R"(C:\a\/)"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    struct _stat64i32 status = {};
    files.clearLog();
    files.script.statuses.clear();
    EXPECT_FALSE(row.item->stat(status));
    EXPECT_EQ(files.log(), Log{"getStatus " + std::string(row.asked)});
    files.script.statuses[widen(row.asked)].st_size = 42;
    EXPECT_TRUE(row.item->stat(status));
    EXPECT_EQ(status.st_size, 42);
  }
}

TEST_F(ItemQueries, StatOfAFileWithANilName) {
  SmartPtr<File> const nameless = File::fromString(String(KVW(R"(C:\a\x)")));
  nameless->setName(String::NIL);
  struct _stat64i32 status = {};
  EXPECT_FALSE(nameless->stat(status));
  EXPECT_EQ(files.log(), Log{R"(getStatus C:\a)"});
}

TEST_F(ItemQueries, StatLeavesTheStructureAloneWhereTheSystemDoes) {
  struct _stat64i32 status = {};
  status.st_size = 77;
  EXPECT_FALSE(file->stat(status));
  EXPECT_EQ(status.st_size, 77);
}

using TimeQuery = bool (FileSystemItem::*)(FILETIME*) const;
constexpr TimeQuery kTimeQueries[] = {&FileSystemItem::getCreationTime, &FileSystemItem::getLastWriteTime};

std::uint64_t timeBy(FileSystemItem const& item, TimeQuery query) {
  FILETIME time = {};
  EXPECT_TRUE((item.*query)(&time));
  return (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
}

TEST_F(ItemQueries, TimesKeepBothHalves) {
  struct Row {
    char const* name;
    std::uint64_t creation;
    std::uint64_t lastWrite;
  };
  Row const rows[] = {
      {"both halves", 0x0123456789ABCDEF, 0xFEDCBA9876543210},
      {"zero", 0, 0},
      {"low half alone", 0xFFFFFFFF, 1},
      {"high half alone", 0x100000000, 0xFFFFFFFF00000000},
      {"all bits", 0xFFFFFFFFFFFFFFFF, 0xFFFFFFFFFFFFFFFF},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    files.script.infos[KVW(R"(\\?\C:\f)")] = {platform::kAttributeNormal, 5, row.creation, row.lastWrite};
    files.script.infos[KVW(R"(\\?\C:\d\)")] = {platform::kAttributeDirectory, 0, row.lastWrite, row.creation};
    files.clearLog();
    EXPECT_EQ(timeBy(*file, kTimeQueries[0]), row.creation);
    EXPECT_EQ(timeBy(*file, kTimeQueries[1]), row.lastWrite);
    EXPECT_EQ(timeBy(*directory, kTimeQueries[0]), row.lastWrite);
    EXPECT_EQ(timeBy(*directory, kTimeQueries[1]), row.creation);
    EXPECT_EQ(files.log(),
              (Log{R"(getInfo \\?\C:\f)", R"(getInfo \\?\C:\f)", R"(getInfo \\?\C:\d\)", R"(getInfo \\?\C:\d\)"}));
  }
}

class ItemQueriesOnDisk : public OnDisk {
 protected:
  ItemQueriesOnDisk() {
    folder.write("file.bin", "12345");
    folder.write("empty");
    folder.makeFolder("sub");
  }
};

TEST_F(ItemQueriesOnDisk, Access) {
  for (int const mode : {0, 1, 2, 4, 6, 7, 8}) {
    SCOPED_TRACE(mode);
    EXPECT_TRUE(file(KVW("file.bin"))->access(mode));
    EXPECT_FALSE(file(KVW("missing"))->access(mode));
    EXPECT_FALSE(file(KVW("sub"))->access(mode));
    EXPECT_FALSE(file(KVW("file.bin\\x"))->access(mode));
    EXPECT_FALSE(directory(KVW("file.bin"))->access(mode));
    EXPECT_FALSE(directory(KVW("missing"))->access(mode));
  }
  for (int const mode : {0, 1, 4, 8}) EXPECT_TRUE(directory(KVW("sub"))->access(mode)) << mode;
  EXPECT_TRUE(file(KVW("file.bin"))->setAsReadOnly() == File::ReadOnlyOk);
  EXPECT_TRUE(file(KVW("file.bin"))->access(4));
  EXPECT_TRUE(file(KVW("file.bin"))->access(0));
}

TEST_F(ItemQueriesOnDisk, Stat) {
  struct _stat64i32 status = {};
  ASSERT_TRUE(file(KVW("file.bin"))->stat(status));
  EXPECT_EQ(status.st_size, 5);
  EXPECT_EQ(status.st_mode & S_IFMT, S_IFREG);
  ASSERT_TRUE(file(KVW("empty"))->stat(status));
  EXPECT_EQ(status.st_size, 0);
  ASSERT_TRUE(directory(KVW("sub"))->stat(status));
  EXPECT_EQ(status.st_mode & S_IFMT, S_IFDIR);
  EXPECT_FALSE(file(KVW("missing"))->stat(status));
  EXPECT_FALSE(directory(KVW("missing"))->stat(status));
  // It asks for a name, whatever the kind of the object.
  ASSERT_TRUE(file(KVW("sub"))->stat(status));
  EXPECT_EQ(status.st_mode & S_IFMT, S_IFDIR);
}

// The record of the C runtime has seconds since 1970 where the times have units of 100 ns since 1601.
TEST_F(ItemQueriesOnDisk, TimesAgreeWithTheStatusRecord) {
  constexpr std::uint64_t kUnitsPerSecond = 10000000, kFrom1601To1970 = 11644473600;
  std::vector<SmartPtr<FileSystemItem const>> const items = {file(KVW("file.bin")), directory(KVW("sub"))};
  for (SmartPtr<FileSystemItem const> const& item : items) {
    struct _stat64i32 status = {};
    ASSERT_TRUE(item->stat(status));
    std::uint64_t const seconds = timeBy(*item, &FileSystemItem::getLastWriteTime) / kUnitsPerSecond - kFrom1601To1970;
    EXPECT_EQ(seconds, static_cast<std::uint64_t>(status.st_mtime));
    EXPECT_GT(timeBy(*item, &FileSystemItem::getCreationTime), kFrom1601To1970 * kUnitsPerSecond);
  }
}

TEST_F(ItemQueriesOnDisk, TheLastWriteTimeFollowsTheFile) {
  constexpr std::uint64_t kThousandHours = 1000ull * 3600 * 10000000;
  auto const item = file(KVW("file.bin"));
  auto const setBack = [&] {
    auto const path = folder.path("file.bin");
    std::filesystem::last_write_time(path, std::filesystem::last_write_time(path) - std::chrono::hours(1000));
    return timeBy(*item, &FileSystemItem::getLastWriteTime);
  };
  std::uint64_t const once = setBack();  // not every standard library keeps the parts of a second
  EXPECT_EQ(setBack(), once - kThousandHours);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
