// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "examples/scanshelf/survey.cpp"
#include "tests/support/temp_folder.h"

namespace scanshelf {
namespace {

using KV_1_1::testing::TempFolder;

SmartPtr<Directory const> directoryOf(TempFolder const& folder) {
  return Directory::fromString(folder.text().c_str());
}

Survey surveyOf(TempFolder const& folder, String const& pattern = KVW("*"), std::size_t largest = 10) {
  return survey({directoryOf(folder), pattern, largest}, [](Totals const&) {});
}

std::string show(Totals const& totals) {
  return std::to_string(totals.files) + " files, " + std::to_string(totals.folders) + " folders, " +
         std::to_string(totals.bytes) + " bytes";
}

std::string bytes(int count) {
  return std::string(static_cast<std::size_t>(count), 'x');
}

void fill(TempFolder const& folder) {
  folder.write("a.dat", bytes(10));
  folder.write(".hidden", bytes(1));
  folder.write("readme", bytes(2));
  folder.write("x/b.DAT", bytes(20));
  folder.write("x/deep/c.dat", bytes(40));
  folder.write("x/deep/c.txt", bytes(5));
  folder.write("y.dat/d.txt", bytes(3));
  folder.makeFolder("empty");
}

TEST(ScanshelfSurveyTest, CountsAreSplitByExtensionAndByFolder) {
  TempFolder folder;
  fill(folder);
  Survey const found = surveyOf(folder);
  EXPECT_EQ(show(found.all), "7 files, 4 folders, 81 bytes");
  EXPECT_EQ(show(found.direct), "3 files, 0 folders, 13 bytes");
  EXPECT_EQ(found.unmeasured, 0u);

  ASSERT_EQ(found.byExtension.size(), 4u);
  EXPECT_EQ(show(found.byExtension.at(KVW("DAT"))), "3 files, 0 folders, 70 bytes");
  EXPECT_EQ(show(found.byExtension.at(KVW("txt"))), "2 files, 0 folders, 8 bytes");
  EXPECT_EQ(show(found.byExtension.at(KVW("hidden"))), "1 files, 0 folders, 1 bytes");
  EXPECT_EQ(show(found.byExtension.at(String::EMPTY)), "1 files, 0 folders, 2 bytes");

  std::vector<std::string> groups;
  for (Group const& group : found.byFolder) groups.push_back(group.name.stringUTF8() + (": " + show(group.totals)));
  std::sort(groups.begin(), groups.end());
  EXPECT_EQ(groups, (std::vector<std::string>{"empty: 0 files, 0 folders, 0 bytes", "x: 3 files, 1 folders, 65 bytes",
                                              "y.dat: 1 files, 0 folders, 3 bytes"}));
}

TEST(ScanshelfSurveyTest, PatternChoosesFilesNotFolders) {
  TempFolder folder;
  fill(folder);
  EXPECT_EQ(show(surveyOf(folder, KVW("*.dat")).all), "3 files, 4 folders, 70 bytes");
  EXPECT_EQ(show(surveyOf(folder, KVW("?.txt")).all), "2 files, 4 folders, 8 bytes");
  EXPECT_EQ(show(surveyOf(folder, KVW("*.none")).all), "0 files, 4 folders, 0 bytes");
}

TEST(ScanshelfSurveyTest, LargestComeFirstAndNoMoreThanAskedFor) {
  TempFolder folder;
  fill(folder);
  for (std::size_t limit : {0u, 1u, 3u, 7u, 100u}) {
    SCOPED_TRACE(limit);
    std::vector<std::uint64_t> sizes;
    for (FoundFile const& found : surveyOf(folder, KVW("*"), limit).largest) sizes.push_back(found.bytes);
    std::vector<std::uint64_t> expected = {40, 20, 10, 5, 3, 2, 1};
    expected.resize(std::min(limit, expected.size()));
    EXPECT_EQ(sizes, expected);
  }
}

std::vector<std::string> namesBelow(TempFolder const& folder, std::vector<String> const& fullNames) {
  std::vector<std::string> names;
  for (String const& name : fullNames)
    names.push_back(name.substr(static_cast<int>(folder.text().size()) + 1).stringUTF8());
  return names;
}

TEST(ScanshelfSurveyTest, ItemsAreKeptOnlyOnRequestFoldersBeforeThoseInThem) {
  TempFolder folder;
  fill(folder);
  folder.makeFolder("x/deep/deeper");
  Survey const without = surveyOf(folder);
  EXPECT_TRUE(without.files.empty());
  EXPECT_TRUE(without.folders.empty());

  Survey const found =
      survey({directoryOf(folder), KVW("*.txt"), /*largest=*/0, /*keepItems=*/true}, [](Totals const&) {});
  std::uint64_t bytes = 0;
  std::vector<String> files;
  for (FoundFile const& kept : found.files) {
    files.push_back(kept.file->getFullName());
    bytes += kept.bytes;
  }
  EXPECT_THAT(namesBelow(folder, files), ::testing::UnorderedElementsAre("x\\deep\\c.txt", "y.dat\\d.txt"));
  EXPECT_EQ(bytes, 8u);

  std::vector<String> folders;
  for (SmartPtr<Directory const> const& kept : found.folders) folders.push_back(kept->getFullName());
  std::vector<std::string> const names = namesBelow(folder, folders);
  EXPECT_THAT(names, ::testing::UnorderedElementsAre("x\\", "x\\deep\\", "x\\deep\\deeper\\", "y.dat\\", "empty\\"));
  auto const place = [&names](char const* name) { return std::find(names.begin(), names.end(), name); };
  EXPECT_LT(place("x\\"), place("x\\deep\\"));
  EXPECT_LT(place("x\\deep\\"), place("x\\deep\\deeper\\"));
}

TEST(ScanshelfSurveyTest, RefusedPatternIsAComplaint) {
  TempFolder folder;
  for (String const& pattern :
       {String(KVW("a\\*")), String(KVW("*.")), String(KVW("..")), String(KVW("a:b")), String::EMPTY}) {
    try {
      surveyOf(folder, pattern);
      ADD_FAILURE() << pattern.stringUTF8();
    } catch (Complaint const& complaint) {
      EXPECT_EQ(std::string(complaint.what()).find("'" + std::string(pattern.stringUTF8()) + "' is no pattern"), 0u);
      EXPECT_EQ(complaint.status(), Status::Failed);
    }
  }
}

TEST(ScanshelfSurveyTest, ProgressComesWithEachFolder) {
  TempFolder folder;
  fill(folder);
  std::vector<std::uint64_t> files;
  survey({directoryOf(folder), KVW("*"), 1}, [&files](Totals const& totals) { files.push_back(totals.files); });
  EXPECT_EQ(files.size(), 5u);
  EXPECT_TRUE(std::is_sorted(files.begin(), files.end()));
  EXPECT_EQ(files.back(), 7u);
}

TEST(ScanshelfSurveyTest, ProgressComesWithinALargeFolder) {
  TempFolder folder;
  for (int i = 0; i < 600; ++i) folder.write(std::to_string(i));
  int calls = 0;
  survey({directoryOf(folder), KVW("*"), 1}, [&calls](Totals const&) { ++calls; });
  EXPECT_EQ(calls, 3);
}

}  // namespace
}  // namespace scanshelf
