// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

// The current directory of the drive with this capital letter, of the process for 0; NIL if there is none.
String currentDirectory(wchar drive);

}  // namespace KV_1_1
