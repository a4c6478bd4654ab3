// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/examples/scanshelf_folders.h"
#include "tests/examples/scanshelf_texts.h"

namespace scanshelf {
namespace {

class ScanshelfSurvey : public ScanshelfTest {};

using KV_1_1::testing::TempFolder;
using ::testing::UnorderedElementsAre;

Survey surveyOf(TempFolder const& folder, String const& pattern = KVW("*")) {
  return survey(directoryOf(folder), pattern, ignoreProgress);
}

std::string show(Totals const& totals) {
  return std::to_string(totals.files) + " files, " + std::to_string(totals.folders) + " folders, " +
         std::to_string(totals.bytes) + " bytes";
}

void fill(TempFolder const& folder) {
  folder.write("a.dat", std::string(10, 'x'));
  folder.write(".hidden", "x");
  folder.write("x/b.DAT", std::string(20, 'x'));
  folder.write("x/deep/c.txt", "12345");
  folder.write("y.dat/d.txt", "123");
  folder.makeFolder("x/deep/deeper");
  folder.makeFolder("empty");
}

TEST_F(ScanshelfSurvey, PatternChoosesFilesNotFolders) {
  TempFolder folder;
  fill(folder);
  EXPECT_EQ(show(surveyOf(folder).all), "5 files, 5 folders, 39 bytes");
  EXPECT_EQ(show(surveyOf(folder, KVW("*.dat")).all), "2 files, 5 folders, 30 bytes");
  EXPECT_EQ(show(surveyOf(folder, KVW("?.txt")).all), "2 files, 5 folders, 8 bytes");
  EXPECT_EQ(show(surveyOf(folder, KVW("*.none")).all), "0 files, 5 folders, 0 bytes");
}

std::vector<std::string> namesBelow(TempFolder const& folder, std::vector<String> const& fullNames) {
  std::vector<std::string> names;
  for (String const& name : fullNames) {
    names.push_back(name.substr(static_cast<int>(folder.text().size()) + 1).stringUTF8());
  }
  return names;
}

TEST_F(ScanshelfSurvey, FindsFilesWithSizesAndEachFolderBeforeThoseInIt) {
  TempFolder folder;
  fill(folder);
  Survey const found = surveyOf(folder, KVW("*.txt"));
  EXPECT_EQ(found.unmeasured, 0u);
  std::uint64_t bytes = 0;
  std::vector<String> files;
  for (FoundFile const& file : found.files) {
    files.push_back(file.file->getFullName());
    bytes += file.bytes;
  }
  EXPECT_THAT(namesBelow(folder, files), UnorderedElementsAre("x\\deep\\c.txt", "y.dat\\d.txt"));
  EXPECT_EQ(bytes, 8u);

  std::vector<String> folders;
  for (SmartPtr<Directory const> const& directory : found.folders) folders.push_back(directory->getFullName());
  std::vector<std::string> const names = namesBelow(folder, folders);
  EXPECT_THAT(names, UnorderedElementsAre("x\\", "x\\deep\\", "x\\deep\\deeper\\", "y.dat\\", "empty\\"));
  auto const place = [&names](char const* name) { return std::find(names.begin(), names.end(), name); };
  EXPECT_LT(place("x\\"), place("x\\deep\\"));
  EXPECT_LT(place("x\\deep\\"), place("x\\deep\\deeper\\"));
}

TEST_F(ScanshelfSurvey, RefusesInvalidPatterns) {
  TempFolder folder;
  for (wchar const* pattern : {KVW("a\\*"), KVW("*."), KVW(".."), KVW("a:b"), KVW("")}) {
    try {
      surveyOf(folder, pattern);
      ADD_FAILURE() << utf8(pattern);
    } catch (Error const& error) {
      EXPECT_EQ(std::string(error.what()).find(utf8(format(KVW("'%ls' is not a valid pattern"), pattern))), 0u);
    }
  }
}

TEST_F(ScanshelfSurvey, ReportsProgressForEachFolder) {
  TempFolder folder;
  fill(folder);
  std::vector<std::uint64_t> files;
  survey(directoryOf(folder), KVW("*"), [&files](Totals const& totals) { files.push_back(totals.files); });
  EXPECT_EQ(files.size(), 6u);
  EXPECT_TRUE(std::is_sorted(files.begin(), files.end()));
  EXPECT_EQ(files.back(), 5u);
}

TEST_F(ScanshelfSurvey, ReportsProgressWithinALargeFolder) {
  TempFolder folder;
  for (int i = 0; i < 600; ++i) folder.write(std::to_string(i));
  int calls = 0;
  survey(directoryOf(folder), KVW("*"), [&calls](Totals const&) { ++calls; });
  EXPECT_EQ(calls, 3);
}

}  // namespace
}  // namespace scanshelf
