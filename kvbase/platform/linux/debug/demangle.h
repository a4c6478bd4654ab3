// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace KV_1_1 {
namespace platform {

// The complete form of a mangled name, with the types of its parameters. The name itself if it is not mangled.
std::string demangledName(char const* name);

// Only the name, with the scopes and the template arguments:
//   _ZN4scan6Reader4readEPKc   => scan::Reader::read         main => main
std::string demangledNameOnly(char const* name);

}  // namespace platform
}  // namespace KV_1_1
