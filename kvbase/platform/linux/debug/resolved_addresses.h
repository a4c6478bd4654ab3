// SPDX-License-Identifier: MIT
//
// What is known about addresses of code: function, source line and module, remembered for addresses that have been
// looked up before.
//
// Thread rule: any function may be called from any thread.
#pragma once

#include <cstdint>
#include <string>

#include "kvbase/platform/debug_help.h"

namespace KV_1_1 {
namespace platform {

// Files and names have at most this size with their terminator; longer ones are cut.
constexpr std::size_t kResolvedTextCapacity = 1024;

// The functions of "dbghelp.dll" of these names.
debug_help::Bool symGetSymFromAddr64(void* process, std::uint64_t address, std::uint64_t* displacement,
                                     debug_help::Symbol64* symbol);
// The name of the file stays as long as the library.
debug_help::Bool symGetLineFromAddr64(void* process, std::uint64_t address, ulong32* displacement,
                                      debug_help::Line64* line);

// The module at an address, as debug_help::SymGetModuleInfo64 gives it. False, with the last error set, if there is none.
bool moduleInfoAt(std::uint64_t address, debug_help::ModuleInfo64& info);

// A name in the form that debug_help::UnDecorateSymbolName gives. Returns the number of bytes, 0 for no room.
ulong32 undecorate(char const* name, char* output, ulong32 capacity, bool nameOnly);

}  // namespace platform
}  // namespace KV_1_1
