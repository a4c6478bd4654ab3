// SPDX-License-Identifier: MIT
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>

#include "tests/support/thread_handle.h"

namespace KV_1_1 {
namespace testing {

ThreadHandle::ThreadHandle() : handle_(reinterpret_cast<void*>(static_cast<std::intptr_t>(syscall(SYS_gettid)))) {}

ThreadHandle::~ThreadHandle() = default;

}  // namespace testing
}  // namespace KV_1_1
