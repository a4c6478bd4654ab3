// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

// The last error of this thread, as ErrorApi has it.
ulong32 lastErrorOfThread();
void setLastErrorOfThread(ulong32 code);

// Sets the last error and returns false, for `return failWith(...)`.
[[gnu::cold]] bool failWith(ulong32 code);

}  // namespace platform
}  // namespace KV_1_1
