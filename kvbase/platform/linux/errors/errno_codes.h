// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/platform/error_codes.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

// The code of Windows for a value of errno, kGeneralFailure if there is none. ENOENT is kFileNotFound; only the path
// can tell whether a folder above it is missing.
ulong32 codeOf(int error);

}  // namespace platform
}  // namespace KV_1_1
