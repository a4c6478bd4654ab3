// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include "tests/support/guarded_block.h"

namespace KV_1_1 {
namespace testing {

GuardedBlock::GuardedBlock(std::size_t capacity) {
  std::size_t const page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  std::size_t const usable = (capacity + page - 1) / page * page;
  size_ = usable + page;
  memory_ = mmap(nullptr, size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  EXPECT_NE(memory_, MAP_FAILED);
  EXPECT_EQ(mprotect(memory_, usable, PROT_READ | PROT_WRITE), 0);
  end_ = static_cast<char*>(memory_) + usable;
}

GuardedBlock::~GuardedBlock() {
  munmap(memory_, size_);
}

}  // namespace testing
}  // namespace KV_1_1
