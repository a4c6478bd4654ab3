// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace KV_1_1 {
namespace diagnostics {

// What a text gives as the format of a print that has no arguments, by the rule in assertion.h. Nothing is read but the
// text up to its terminator. Throws std::bad_alloc without memory.
std::string formatWithoutArguments(char const* format);

}  // namespace diagnostics
}  // namespace KV_1_1
