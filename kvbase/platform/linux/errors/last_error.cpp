// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/errors/last_error.h"

#include "kvbase/platform/error_codes.h"

namespace KV_1_1 {
namespace platform {

namespace {

// A plain number, whose end needs no destructor, so threads never keep the library loaded.
thread_local ulong32 lastError = kNoError;

}  // namespace

ulong32 lastErrorOfThread() {
  return lastError;
}

void setLastErrorOfThread(ulong32 code) {
  lastError = code;
}

bool failWith(ulong32 code) {
  lastError = code;
  return false;
}

}  // namespace platform
}  // namespace KV_1_1
