// SPDX-License-Identifier: MIT
#pragma once

namespace KV_1_1 {
namespace diagnostics {

// What the debug information of a module is called while modules are loaded, and in a frame. COMPAT: the two differ from
// the value 7 on:
//   7 => "-unknown-" and "DIA"      9 => "DIA" and null      others without a name => "-unknown-" and null
char const* symbolTypeWhileLoading(int symbolType);
char const* symbolTypeOfFrame(int symbolType);

}  // namespace diagnostics
}  // namespace KV_1_1
