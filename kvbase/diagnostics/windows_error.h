// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/export.h"
#include "kvbase/strings/kv_string.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {

// The system's text for an error code, for messages. Line ends behind it are cut off, blanks are not. The codes are those
// of Windows on Linux too, where the texts are English; on Windows the texts are in the language of the system. A code
// without text gives its number. Thread rule: any thread.
//   0 => EMPTY, without asking      2 => "The file was not found."      5000, which has no text => "[0x00001388]"
KVBASE_API String getWindowsError(ulong32 code);
// The same for the last error of this thread.
KVBASE_API String getWindowsError();

}  // namespace KV_1_1
