// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/platform/linux/debug/libdw.h"

namespace KV_1_1 {
namespace platform {

// The function that stands for one of "dbghelp.dll"; null if there is none of this name or libdw lacks what it needs.
void (*debugHelpFunction(LibdwFunctions const& libdw, char const* name))();

// The function of the module snapshot with this name; null if there is none.
void (*snapshotFunction(char const* name))();

}  // namespace platform
}  // namespace KV_1_1
