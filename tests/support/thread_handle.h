// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/platform/types.h"

namespace KV_1_1 {
namespace testing {

// A handle of the thread that constructs it, with which another thread can stop it and read its registers. It may
// outlive the thread.
class ThreadHandle {
 public:
  ThreadHandle();
  ~ThreadHandle();
  ThreadHandle(ThreadHandle const&) = delete;
  ThreadHandle& operator=(ThreadHandle const&) = delete;

  void* get() const { return handle_; }

 private:
  void* handle_;
};

}  // namespace testing
}  // namespace KV_1_1
