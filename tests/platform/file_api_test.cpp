// SPDX-License-Identifier: MIT
//
// Queries, searches and the current directory, for the native backend of either system.
#include "kvbase/platform/file_api.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"
#include "tests/support/current_path.h"
#include "tests/support/narrow_text.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

using platform::FileApi;
using platform::FindData;

FileApi& files() {
  return platform::nativeFiles();
}

std::vector<std::string> namesFound(wstring const& pattern) {
  std::vector<std::string> names;
  FindData data;
  platform::SearchHandle const search = files().findFirst(pattern.c_str(), data);
  if (search == platform::invalidSearch()) return names;
  do {
    names.push_back(narrow(data.name));
  } while (files().findNext(search, data));
  EXPECT_TRUE(files().findClose(search));
  return names;
}

TEST(FileApiTest, AttributesTellFilesFoldersAndNothing) {
  TempFolder folder;
  folder.write("sub/file.txt", "12345");
  struct Row {
    char const* name;
    char const* path;
    bool exists;
    bool isDirectory;
  };
  Row const rows[] = {
      {"file", "sub\\file.txt", true, false},
      {"folder", "sub", true, true},
      {"folder, separator", "sub\\", true, true},
      {"missing", "none", false, false},
      {"missing folder", "none\\file.txt", false, false},
      {"below a file", "sub\\file.txt\\x", false, false},
      {"wildcard", "sub\\*", false, false},
      {"collapsed", "none\\..\\sub\\.\\file.txt", true, false},
      {"slashes", "sub/file.txt", true, false},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    ulong32 const attributes = files().getAttributes(folder.text(widen(row.path)).c_str());
    EXPECT_EQ(attributes != platform::kInvalidAttributes, row.exists);
    EXPECT_EQ(row.exists && (attributes & platform::kAttributeDirectory) != 0, row.isDirectory);
  }
  EXPECT_EQ(files().getAttributes(KVW("")), platform::kInvalidAttributes);
}

TEST(FileApiTest, InfoTellsTheSizeAndLeavesAlone) {
  TempFolder folder;
  folder.write("file.txt", "12345");
  platform::FileInfo info = {7, 7};
  EXPECT_FALSE(files().getInfo(folder.text(KVW("none")).c_str(), info));
  EXPECT_EQ(info.attributes, 7u);
  EXPECT_EQ(info.size, 7u);
  ASSERT_TRUE(files().getInfo(folder.text(KVW("file.txt")).c_str(), info));
  EXPECT_EQ(info.size, 5u);
  EXPECT_EQ(info.attributes & platform::kAttributeDirectory, 0u);
  ASSERT_TRUE(files().getInfo((KVW("\\\\?\\") + folder.text()).c_str(), info));
  EXPECT_NE(info.attributes & platform::kAttributeDirectory, 0u);
}

TEST(FileApiTest, ReadOnlyFileIsToldByItsMode) {
  TempFolder folder;
  folder.write("file.txt");
  std::filesystem::permissions(
      folder.path("file.txt"),
      std::filesystem::perms::owner_write | std::filesystem::perms::group_write | std::filesystem::perms::others_write,
      std::filesystem::perm_options::remove);
  ulong32 const attributes = files().getAttributes(folder.text(KVW("file.txt")).c_str());
  EXPECT_NE(attributes & platform::kAttributeReadOnly, 0u);
}

TEST(FileApiTest, SearchGivesWhatMatches) {
  TempFolder folder;
  for (char const* name : {"scan01.dat", "Scan02.DAT", "scan003.dat", "notes.txt", "plain"}) folder.write(name);
  folder.makeFolder("inner.dat");
  using Names = std::vector<std::string>;
  EXPECT_EQ(namesFound(folder.text(KVW("*.dat"))), (Names{"inner.dat", "scan003.dat", "scan01.dat", "Scan02.DAT"}));
  EXPECT_EQ(namesFound(folder.text(KVW("SCAN??.dat"))), (Names{"scan01.dat", "Scan02.DAT"}));
  EXPECT_EQ(namesFound(folder.text(KVW("notes.txt"))), (Names{"notes.txt"}));
  EXPECT_EQ(namesFound(folder.text(KVW("*.none"))), Names());
  EXPECT_EQ(namesFound(folder.text(KVW("none\\*"))), Names());
  EXPECT_EQ(namesFound(folder.text(KVW("notes.txt\\*"))), Names());
  EXPECT_EQ(namesFound(folder.text(KVW(""))), Names());
  Names const all = {".", "..", "inner.dat", "notes.txt", "plain", "scan003.dat", "scan01.dat", "Scan02.DAT"};
  EXPECT_EQ(namesFound(folder.text(KVW("*"))), all);
  EXPECT_EQ(namesFound(folder.text(KVW("*.*"))), all);
  EXPECT_EQ(namesFound(KVW("\\\\?\\") + folder.text(KVW("*"))), all);
}

TEST(FileApiTest, SearchTellsFoldersFromFiles) {
  TempFolder folder;
  folder.write("file");
  folder.makeFolder("inner");
  FindData data;
  platform::SearchHandle const search = files().findFirst(folder.text(KVW("*")).c_str(), data);
  ASSERT_NE(search, platform::invalidSearch());
  int entries = 0;
  do {
    bool const isDirectory = (data.attributes & platform::kAttributeDirectory) != 0;
    EXPECT_EQ(isDirectory, narrow(data.name) != "file") << narrow(data.name);
    ++entries;
  } while (files().findNext(search, data));
  EXPECT_EQ(entries, 4);
  EXPECT_FALSE(files().findNext(search, data)) << "the end stays the end";
  EXPECT_TRUE(files().findClose(search));
}

TEST(FileApiTest, SearchesRunSideBySide) {
  TempFolder folder;
  folder.write("a");
  folder.write("b");
  FindData data;
  std::vector<platform::SearchHandle> searches;
  for (int i = 0; i < 100; ++i) searches.push_back(files().findFirst(folder.text(KVW("*")).c_str(), data));
  auto sorted = searches;
  std::sort(sorted.begin(), sorted.end());
  EXPECT_EQ(std::unique(sorted.begin(), sorted.end()), sorted.end()) << "each search has its own handle";
  for (platform::SearchHandle const search : searches) {
    int more = 0;
    while (files().findNext(search, data)) ++more;
    EXPECT_EQ(more, 3);
    EXPECT_TRUE(files().findClose(search));
  }
}

TEST(FileApiTest, LongPathsHaveNoLimitOfTheirOwn) {
  TempFolder folder;
  std::string const level(100, 'd');
  std::string const below = level + "/" + level + "/" + level + "/" + level + "/" + level;
  folder.write(below + "/file.txt", "x");
  wstring text = widen(below + "/file.txt");
  std::replace(text.begin(), text.end(), KVW('/'), KVW('\\'));
  platform::FileInfo info;
  ASSERT_TRUE(files().getInfo((KVW("\\\\?\\") + folder.text(text)).c_str(), info));
  EXPECT_EQ(info.size, 1u);

  // Shortened, because not every standard library can remove a path of this length.
  std::filesystem::path parent = folder.path();
  for (int i = 0; i < 5; ++i, parent /= "d") std::filesystem::rename(parent / level, parent / "d");
}

TEST(FileApiTest, CurrentDirectoryReadsInTheNotationOfTheLibrary) {
  TempFolder folder;
  folder.makeFolder("here");
  CurrentPath const current(folder.path("here"));
  wstring path;
  EXPECT_TRUE(files().currentDirectory(path));
  EXPECT_EQ(narrow(path), narrow(folder.text(KVW("here"))));
  folder.write("here/file.txt");
  EXPECT_NE(files().getAttributes(KVW("file.txt")), platform::kInvalidAttributes);
  EXPECT_NE(files().getAttributes(KVW("..\\here\\file.txt")), platform::kInvalidAttributes);
  EXPECT_NE(files().getAttributes(KVW(".")) & platform::kAttributeDirectory, 0u);
  EXPECT_EQ(files().getAttributes(KVW("missing.txt")), platform::kInvalidAttributes);
  EXPECT_EQ(platform::nativeErrors().lastError(), platform::kFileNotFound);
}

TEST(FileApiTest, NoSuchDriveHasNoCurrentDirectory) {
  wstring path = KVW("unchanged");
  EXPECT_FALSE(files().currentDirectoryOfDrive(25, path));
  EXPECT_EQ(narrow(path), "unchanged");
}

// Both systems set these codes.
TEST(FileApiTest, QuestionsThatFailLeaveTheirReason) {
  TempFolder folder;
  folder.write("file.txt");
  struct Row {
    char const* name;
    wchar const* path;
    ulong32 code;
  };
  Row const rows[] = {
      {"missing", KVW("none"), platform::kFileNotFound},
      {"missing folder", KVW("none\\file.txt"), platform::kPathNotFound},
      {"below a file", KVW("file.txt\\x"), platform::kPathNotFound},
      {"wildcard", KVW("*"), platform::kInvalidName},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    wstring const path = folder.text(row.path);
    platform::nativeErrors().setLastError(0);
    EXPECT_EQ(files().getAttributes(path.c_str()), platform::kInvalidAttributes);
    EXPECT_EQ(platform::nativeErrors().lastError(), row.code);
    platform::nativeErrors().setLastError(0);
    platform::FileInfo info;
    EXPECT_FALSE(files().getInfo(path.c_str(), info));
    EXPECT_EQ(platform::nativeErrors().lastError(), row.code);
  }
}

TEST(FileApiTest, SearchesThatEndLeaveTheirReason) {
  TempFolder folder;
  folder.write("file.txt");
  FindData data;
  EXPECT_EQ(files().findFirst(folder.text(KVW("*.none")).c_str(), data), platform::invalidSearch());
  EXPECT_EQ(platform::nativeErrors().lastError(), platform::kFileNotFound);
  EXPECT_EQ(files().findFirst(folder.text(KVW("none\\*")).c_str(), data), platform::invalidSearch());
  EXPECT_EQ(platform::nativeErrors().lastError(), platform::kPathNotFound);
  platform::SearchHandle const search = files().findFirst(folder.text(KVW("*.txt")).c_str(), data);
  ASSERT_NE(search, platform::invalidSearch());
  EXPECT_FALSE(files().findNext(search, data));
  EXPECT_EQ(platform::nativeErrors().lastError(), platform::kNoMoreFiles);
  EXPECT_TRUE(files().findClose(search));
}

// The current time by the standard library, in the unit of the seam.
std::uint64_t timeNow() {
  using namespace std::chrono;
  constexpr std::uint64_t kUnitsBefore1970 = 116444736000000000;
  auto const since1970 = duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count() / 100;
  return kUnitsBefore1970 + static_cast<std::uint64_t>(since1970);
}

constexpr std::uint64_t kMinute = std::uint64_t{60} * 10000000;

bool isNow(std::uint64_t time) {
  std::uint64_t const now = timeNow();
  return time + kMinute > now && time < now + kMinute;
}

TEST(FileApiTest, InfoTellsTheTimes) {
  TempFolder folder;
  folder.write("file.txt");
  for (wchar const* name : {KVW("file.txt"), KVW("")}) {
    SCOPED_TRACE(narrow(name));
    platform::FileInfo info;
    ASSERT_TRUE(files().getInfo(folder.text(name).c_str(), info));
    EXPECT_TRUE(isNow(info.creationTime)) << info.creationTime;
    EXPECT_TRUE(isNow(info.lastWriteTime)) << info.lastWriteTime;
  }
  std::filesystem::path const path = folder.path("file.txt");
  auto const before = std::filesystem::last_write_time(path);
  platform::FileInfo info;
  ASSERT_TRUE(files().getInfo(folder.text(KVW("file.txt")).c_str(), info));
  std::uint64_t const written = info.lastWriteTime;
  std::filesystem::last_write_time(path, before - std::chrono::hours(24));
  ASSERT_TRUE(files().getInfo(folder.text(KVW("file.txt")).c_str(), info));
  // The standard library may be able to set whole seconds only.
  EXPECT_NEAR(static_cast<double>(written - info.lastWriteTime), 24.0 * 60 * kMinute, kMinute / 60.0);
}

TEST(FileApiTest, SystemTimeIsTheTimeNow) {
  std::uint64_t const first = files().systemTime();
  EXPECT_TRUE(isNow(first)) << first;
  EXPECT_GE(files().systemTime(), first);
}

TEST(FileApiTest, StatusTellsKindSizeAndTime) {
  TempFolder folder;
  folder.write("sub/file.txt", "12345");
  struct _stat64i32 status;
  ASSERT_EQ(files().getStatus(folder.text(KVW("sub\\file.txt")).c_str(), status), 0);
  EXPECT_EQ(status.st_mode & S_IFMT, S_IFREG + 0u);
  EXPECT_EQ(status.st_mode & 0600u, 0600u);
  EXPECT_EQ(status.st_size, 5);
  EXPECT_LT(std::abs(std::difftime(std::time(nullptr), static_cast<std::time_t>(status.st_mtime))), 60);
  ASSERT_EQ(files().getStatus(folder.text(KVW("sub")).c_str(), status), 0);
  EXPECT_EQ(status.st_mode & S_IFMT, S_IFDIR + 0u);
  EXPECT_NE(files().getStatus(folder.text(KVW("none")).c_str(), status), 0);
  EXPECT_NE(files().getStatus(folder.text(KVW("none\\file.txt")).c_str(), status), 0);
  EXPECT_NE(files().getStatus(KVW(""), status), 0);
}

TEST(FileApiTest, EmptyDirectoriesAreToldFromEverythingElse) {
  TempFolder folder;
  folder.write("full/.hidden");
  folder.makeFolder("nested/empty");
  folder.write("file");
  struct Row {
    wchar const* path;
    int isEmpty;
  };
  Row const rows[] = {{KVW("nested\\empty"), 1}, {KVW("nested\\empty\\"), 1}, {KVW("nested"), 0},
                      {KVW("full"), 0},          {KVW("full\\"), 0},          {KVW("file"), 0},
                      {KVW("none"), 0}};
  for (Row const& row : rows) {
    EXPECT_EQ(files().isDirectoryEmpty(folder.text(row.path).c_str()), row.isEmpty) << narrow(row.path);
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
