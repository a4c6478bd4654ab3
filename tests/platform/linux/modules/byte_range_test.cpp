// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/modules/byte_range.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/allocation_failure.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

class FilePages : public ::testing::Test {
 protected:
  std::unique_ptr<platform::FilePages> open(char const* name) {
    auto pages = std::make_unique<platform::FilePages>(
        platform::Descriptor(::open(folder.path(name).c_str(), O_RDONLY | O_CLOEXEC)));
    pages->refresh();
    return pages;
  }
  static std::string bytes(platform::FilePages& pages, std::uint64_t offset, std::size_t size) {
    auto const* const found = pages.at(offset, size);
    return found == nullptr ? "none" : std::string(reinterpret_cast<char const*>(found), size);
  }

  TempFolder folder;
};

// Files use each other's pages once they are closed.
TEST_F(FilePages, OfEachFileAreItsOwn) {
  std::vector<char const*> const names = {"long", "short", "other"};
  folder.write("long", std::string(5000, 'l'));
  folder.write("short", "s");
  folder.write("other", std::string(9000, 'o'));
  for (int i = 0; i < 3; ++i) {
    for (char const* const name : names) {
      auto const pages = open(name);
      EXPECT_EQ(bytes(*pages, 0, 1), std::string(1, name[0]));
      EXPECT_EQ(bytes(*pages, 4200, 2), pages->size() == 1 ? "none" : std::string(2, name[0]));
      EXPECT_EQ(bytes(*pages, 1, 1), pages->size() == 1 ? "none" : std::string(1, name[0]));
    }
    auto const one = open("long"), two = open("other");
    EXPECT_EQ(bytes(*one, 0, 2) + bytes(*two, 0, 2) + bytes(*one, 4090, 10), "lloollllllllll");
  }
}

// More files than there are pages to share, so a page that is not given back would be missed.
TEST_F(FilePages, OfClosedFilesAreUsedAgain) {
  folder.write("a", "text");
  auto const blocksForOneFile = [&](bool isRead) {
    AllocationFailure scope(0);
    auto const pages = open("a");
    EXPECT_TRUE(!isRead || pages->at(0, 4) != nullptr);
    scope.end();
    return scope.allocations();
  };
  int const blocks = blocksForOneFile(false);
  for (int i = 0; i < 40; ++i) ASSERT_EQ(blocksForOneFile(true), blocks) << i;
}

TEST_F(FilePages, AreDroppedWhenTheFileChanges) {
  folder.write("a", "before");
  auto const pages = open("a");
  EXPECT_EQ(bytes(*pages, 0, 6), "before");
  folder.write("a", "and after");
  EXPECT_TRUE(pages->refresh());
  EXPECT_EQ(bytes(*pages, 0, 9), "and after");
  EXPECT_FALSE(pages->refresh());
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
