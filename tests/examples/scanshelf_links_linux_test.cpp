// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/examples/scanshelf_folders.h"

namespace scanshelf {
namespace {

namespace fs = std::filesystem;
using KV_1_1::testing::TempFolder;

TEST(ScanshelfLinks, IsWithinFollowsLinks) {
  TempFolder source;
  TempFolder other;
  source.makeFolder("sub");
  fs::create_directory_symlink(source.path("sub"), other.path("link"));
  EXPECT_TRUE(isWithin(*directoryOf(other, KVW("link")), *directoryOf(source)));
  EXPECT_TRUE(isWithin(*directoryOf(other, KVW("link\\new\\folder")), *directoryOf(source)));
  EXPECT_TRUE(isWithin(*directoryOf(source, KVW("sub\\new")), *directoryOf(other, KVW("link"))));
  EXPECT_FALSE(isWithin(*directoryOf(source, KVW("new")), *directoryOf(other, KVW("link"))));
  EXPECT_FALSE(isWithin(*directoryOf(other, KVW("new")), *directoryOf(source)));
}

TEST(ScanshelfLinks, IsWithinDistinguishesCase) {
  TempFolder folder;
  folder.makeFolder("scans");
  folder.makeFolder("Scans");
  EXPECT_FALSE(isWithin(*directoryOf(folder, KVW("Scans\\new")), *directoryOf(folder, KVW("scans"))));
}

TEST(ScanshelfLinks, CopiesLinksAndReportsAPipeAsAFailure) {
  TempFolder source;
  TempFolder target;
  source.write("real/a.dat", "12345");
  fs::create_directory_symlink("real", source.path("link to folder"));
  fs::create_symlink("nothing", source.path("link to nothing"));
  ASSERT_EQ(mkfifo(source.path("pipe").c_str(), 0600), 0);

  Survey const found = survey(directoryOf(source), KVW("*"), ignoreProgress);
  CopyResult const result = copyItems(found, *directoryOf(target), /*overwrite=*/false, ignoreProgress);
  EXPECT_EQ(result.copied.files, 3u);
  EXPECT_EQ(result.equalSizes, 3u);
  ASSERT_EQ(result.failures.size(), 1u);
  EXPECT_STREQ(result.failures.front().item->getFullName().stringUTF8(), ".\\pipe");
  EXPECT_GT(result.failures.front().reason.length(), 0);
  EXPECT_EQ(fs::read_symlink(target.path("link to folder")), "real");
  EXPECT_EQ(fs::read_symlink(target.path("link to nothing")), "nothing");
  EXPECT_EQ(fs::file_size(target.path("real/a.dat")), 5u);
  EXPECT_FALSE(fs::exists(target.path("pipe")));
}

}  // namespace
}  // namespace scanshelf
