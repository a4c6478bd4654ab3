// SPDX-License-Identifier: MIT
//
// What the native file backend of either system promises.
#include "kvbase/platform/file_api.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

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

std::string released(wchar* text) {
  std::string const result = text == nullptr ? "null" : narrow(text);
  files().freeText(text);
  return result;
}

class CurrentPath {
 public:
  explicit CurrentPath(std::filesystem::path const& path) : previous_(std::filesystem::current_path()) {
    std::filesystem::current_path(path);
  }
  ~CurrentPath() { std::filesystem::current_path(previous_); }

 private:
  std::filesystem::path previous_;
};

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

  // A standard library may be unable to remove paths of that length.
  std::filesystem::path parent = folder.path();
  for (int i = 0; i < 5; ++i, parent /= "d") std::filesystem::rename(parent / level, parent / "d");
}

TEST(FileApiTest, CurrentDirectoryReadsInTheNotationOfTheLibrary) {
  TempFolder folder;
  folder.makeFolder("here");
  CurrentPath const current(folder.path("here"));
  EXPECT_EQ(released(files().currentDirectory()), narrow(folder.text(KVW("here"))));
  folder.write("here/file.txt");
  EXPECT_NE(files().getAttributes(KVW("file.txt")), platform::kInvalidAttributes);
  EXPECT_NE(files().getAttributes(KVW("..\\here\\file.txt")), platform::kInvalidAttributes);
  EXPECT_NE(files().getAttributes(KVW(".")) & platform::kAttributeDirectory, 0u);
  files().freeText(nullptr);
}

TEST(FileApiTest, NoSuchDriveHasNoCurrentDirectory) {
  EXPECT_EQ(released(files().currentDirectoryOfDrive(25)), "null");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
