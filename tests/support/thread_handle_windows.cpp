// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/support/thread_handle.h"

namespace KV_1_1 {
namespace testing {

ThreadHandle::ThreadHandle() : handle_(nullptr) {
  HANDLE const process = GetCurrentProcess();
  EXPECT_NE(DuplicateHandle(process, GetCurrentThread(), process, &handle_, 0, FALSE, DUPLICATE_SAME_ACCESS), 0);
}

ThreadHandle::~ThreadHandle() {
  CloseHandle(handle_);
}

}  // namespace testing
}  // namespace KV_1_1
