// SPDX-License-Identifier: MIT
//
// The libraries of the debugging services: each is a table of functions that do the same service as those of the names.
#pragma once

#include "kvbase/platform/types.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

// See DebugApi::loadLibrary, function and freeLibrary.
HINSTANCE loadDebugLibrary(wchar const* path);
void (*debugFunction(HINSTANCE library, char const* name))();
bool freeDebugLibrary(HINSTANCE library);

// Closes a snapshot of modules. False if the handle is none.
bool closeModuleSnapshot(void* handle);

}  // namespace platform
}  // namespace KV_1_1
