// SPDX-License-Identifier: MIT
//
// The last error of each thread, and what the errors of this system are called by Windows.
#pragma once

#include "kvbase/platform/error_codes.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

// A plain number of the thread: nothing is to be destroyed, so it never keeps the library loaded.
ulong32 lastErrorOfThread();
void setLastErrorOfThread(ulong32 code);

// Sets the last error; gives false, for `return failWith(...)`.
bool failWith(ulong32 code);

// The code for a value of errno. ENOENT is kFileNotFound: only the path tells more.
ulong32 codeOf(int error);

// The system's text for a code, with a line end behind it; null if there is none.
wchar const* textOfCode(ulong32 code);

}  // namespace platform
}  // namespace KV_1_1
