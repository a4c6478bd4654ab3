// SPDX-License-Identifier: MIT
#pragma once

#include <new>

#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/linux/errors/last_error.h"

namespace KV_1_1 {
namespace platform {

// Does the work of a function for callers that know functions of C, which an exception must not reach: without memory the
// last error is set and the result is zero.
template <class Work>
auto guarded(Work work) -> decltype(work()) {
  try {
    return work();
  } catch (std::bad_alloc const&) {
    setLastErrorOfThread(kNotEnoughMemory);
    return {};
  }
}

}  // namespace platform
}  // namespace KV_1_1
