// SPDX-License-Identifier: MIT
//
// What the operations of File promise on Linux beyond what they are on every system: a read-only file is one to
// everybody, and a copy tells its progress.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "tests/filesystem/disk_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

class FileDiskLinux : public OnDisk {
 protected:
  FileDiskLinux() {
    folder.write("one", "1");
    folder.write("locked", "locked");
    EXPECT_EQ(file(KVW("locked"))->setAsReadOnly(), File::ReadOnlyOk);
  }
};

TEST_F(FileDiskLinux, AReadOnlyFileCannotBeOpenedToWriteWhoeverAsks) {
  auto const locked = file(KVW("locked"));
  EXPECT_TRUE(locked->access(0));
  EXPECT_TRUE(locked->access(4));
  EXPECT_FALSE(locked->access(2));
  EXPECT_FALSE(locked->access(6));
  EXPECT_EQ(locked->unsetAsReadOnly(), File::ReadOnlyOk);
  EXPECT_TRUE(locked->access(6));
}

TEST_F(FileDiskLinux, AReadOnlyFileIsNotCopiedOver) {
  Tree const before = treeOf(folder.path());
  EXPECT_EQ(file(KVW("one"))->copy(file(KVW("locked")), true), File::CopyFailed);
  EXPECT_EQ(file(KVW("one"))->copy(file(KVW("locked")), false), File::CopyFailed);
  EXPECT_EQ(treeOf(folder.path()), before);
  EXPECT_TRUE(file(KVW("locked"))->isReadOnly());
}

TEST_F(FileDiskLinux, AReadOnlyFileIsNotTouched) {
  FILETIME before, after;
  ASSERT_TRUE(file(KVW("locked"))->getLastWriteTime(&before));
  EXPECT_FALSE(file(KVW("locked"))->touch());
  ASSERT_TRUE(file(KVW("locked"))->getLastWriteTime(&after));
  EXPECT_EQ(after.dwLowDateTime, before.dwLowDateTime);
  EXPECT_EQ(after.dwHighDateTime, before.dwHighDateTime);
}

TEST_F(FileDiskLinux, ProgressRisesToOne) {
  folder.write("big", std::string(5000000, 'b'));
  auto const progress = std::make_shared<RecordedProgress>();
  EXPECT_EQ(file(KVW("big"))->copy(file(KVW("copy")), false, progress), File::CopyOk);
  ASSERT_GE(progress->values.size(), 2u);
  EXPECT_EQ(progress->values.front(), 0.0);
  EXPECT_EQ(progress->values.back(), 1.0);
  EXPECT_TRUE(std::is_sorted(progress->values.begin(), progress->values.end()));
  EXPECT_EQ(progress.use_count(), 1);
  EXPECT_EQ(bytesOf(folder.path("copy")), std::string(5000000, 'b'));
}

TEST_F(FileDiskLinux, ProgressOfAnEmptyFileIsOneValueThatIsNotANumber) {
  folder.write("empty");
  auto const progress = std::make_shared<RecordedProgress>();
  EXPECT_EQ(file(KVW("empty"))->copy(file(KVW("copy")), false, progress), File::CopyOk);
  ASSERT_EQ(progress->values.size(), 1u);
  EXPECT_TRUE(std::isnan(progress->values[0]));
}

TEST_F(FileDiskLinux, ACopyThatNeverBeginsTellsNoProgress) {
  auto const progress = std::make_shared<RecordedProgress>();
  EXPECT_EQ(file(KVW("missing"))->copy(file(KVW("copy")), false, progress), File::CopyFailed);
  EXPECT_EQ(file(KVW("one"))->copy(file(KVW("locked")), false, progress), File::CopyFailed);
  EXPECT_EQ(progress->values, std::vector<double>());
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
