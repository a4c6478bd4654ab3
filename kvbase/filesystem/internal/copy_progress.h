// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "kvbase/text_unit.h"

namespace KV_1_1 {

// The callback that File::copy gives the system: passes transferred / total on to the IProgress that `data` points at
// and always lets the copy go on. COMPAT: a total of 0 is not tested for, so the progress of an empty file is not a
// number.
ulong32 copyProgressRoutine(std::int64_t total, std::int64_t transferred, void* data);

}  // namespace KV_1_1
