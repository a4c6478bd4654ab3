// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/run_time.h"

namespace KV_1_1 {
namespace platform {

// The run time is a library of its own, which others use too.
void releaseRunTime() noexcept {}

}  // namespace platform
}  // namespace KV_1_1
