// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "kvbase/text_unit.h"

namespace KV_1_1 {

// What File::copy has the system call: passes transferred / total on to the IProgress that `data` points at, without a
// test for 0, so the progress of an empty file is not a number. Always has the copy go on.
ulong32 copyProgressRoutine(std::int64_t total, std::int64_t transferred, void* data);

}  // namespace KV_1_1
