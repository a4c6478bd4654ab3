// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/diagnostics/internal/narrow_copy.h"

namespace KV_1_1 {
namespace diagnostics {

// Where the debug-help library searches for debug information: elements, each with a semicolon behind it; see
// StackWalker::LoadModules. `symbolPath` comes first; null: none. What does not fit into 4096 bytes is cut. Null without
// memory.
HeapText composeSymbolSearchPath(char const* symbolPath);

}  // namespace diagnostics
}  // namespace KV_1_1
