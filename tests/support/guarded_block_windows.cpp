// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <windows.h>

#include "tests/support/guarded_block.h"

namespace KV_1_1 {
namespace testing {

GuardedBlock::GuardedBlock(std::size_t capacity) {
  SYSTEM_INFO system;
  GetSystemInfo(&system);
  std::size_t const page = system.dwPageSize;
  std::size_t const usable = (capacity + page - 1) / page * page;
  size_ = usable + page;
  memory_ = VirtualAlloc(nullptr, size_, MEM_RESERVE, PAGE_NOACCESS);
  EXPECT_NE(memory_, nullptr);
  EXPECT_NE(VirtualAlloc(memory_, usable, MEM_COMMIT, PAGE_READWRITE), nullptr);
  end_ = static_cast<char*>(memory_) + usable;
}

GuardedBlock::~GuardedBlock() {
  VirtualFree(memory_, 0, MEM_RELEASE);
}

}  // namespace testing
}  // namespace KV_1_1
