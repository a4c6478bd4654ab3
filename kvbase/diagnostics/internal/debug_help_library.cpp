// SPDX-License-Identifier: MIT
//
// Where the debug-help library is found, and its functions.
#include <string>

#include "kvbase/diagnostics/internal/narrow_copy.h"
#include "kvbase/diagnostics/internal/stack_walker_impl.h"
#include "kvbase/platform/debug_api.h"
#include "kvbase/platform/file_api.h"

namespace platform = KV_1_1::platform;
using KV_1_1::wchar;
using KV_1_1::wstring;
using KV_1_1::diagnostics::readText;

namespace {

// Paths have fewer units than this; the terminator is counted.
constexpr std::size_t kPathCapacity = 4096;

bool append(wstring& path, wchar const* suffix) {
  path += suffix;
  return path.size() < kPathCapacity;
}

bool exists(wstring const& path) {
  return platform::files().getAttributes(path.c_str()) != platform::kInvalidAttributes;
}

// Whether the folders of the debugging tools are searched; the file that forbids it belongs to the program.
bool searchesTools() {
  wstring path;
  bool const known = readText([&] { return platform::debug().programPath(path) && append(path, KVW(".local")); });
  return known && !exists(path);
}

// Loads the library from below the folder of the programs; null if it is not there.
HINSTANCE loadTools(wchar const* name) {
  wstring path;
  bool const known =
      readText([&] { return platform::debug().environmentVariable(KVW("ProgramFiles"), path) && append(path, name); });
  return known && exists(path) ? platform::debug().loadLibrary(path.c_str()) : nullptr;
}

template <class Function>
void load(Function& function, HINSTANCE library, char const* name) {
  function = reinterpret_cast<Function>(platform::debug().function(library, name));
}

}  // namespace

bool StackWalkerImpl::loadLibrary() {
  if (searchesTools()) {
    HINSTANCE const tools = loadTools(KVW("\\Debugging Tools for Windows\\dbghelp.dll"));
    if (tools != nullptr) {
      // Loaded by a call before that listed no modules.
      if (library != nullptr) platform::debug().freeLibrary(library);
      library = tools;
    }
    if (library == nullptr) library = loadTools(KVW("\\Debugging Tools for Windows 64-Bit\\dbghelp.dll"));
  }
  if (library == nullptr) library = platform::debug().loadLibrary(KVW("dbghelp.dll"));
  return library != nullptr;
}

bool StackWalkerImpl::loadFunctions() {
  load(symInitialize, library, "SymInitialize");
  load(symCleanup, library, "SymCleanup");
  load(stackWalk, library, "StackWalk64");
  load(symGetOptions, library, "SymGetOptions");
  load(symSetOptions, library, "SymSetOptions");
  load(symFunctionTableAccess, library, "SymFunctionTableAccess64");
  load(symGetLine, library, "SymGetLineFromAddr64");
  load(symGetModuleBase, library, "SymGetModuleBase64");
  load(symGetModuleInfo, library, "SymGetModuleInfo64");
  load(symGetSymbol, library, "SymGetSymFromAddr64");
  load(undecorateSymbolName, library, "UnDecorateSymbolName");
  load(symLoadModule, library, "SymLoadModule64");
  load(symGetSearchPath, library, "SymGetSearchPath");
  return symInitialize != nullptr && symCleanup != nullptr && stackWalk != nullptr && symGetOptions != nullptr &&
         symSetOptions != nullptr && symFunctionTableAccess != nullptr && symGetModuleBase != nullptr &&
         symGetModuleInfo != nullptr && symGetSymbol != nullptr && undecorateSymbolName != nullptr &&
         symLoadModule != nullptr;
}

void StackWalkerImpl::freeLibrary() {
  if (library != nullptr) platform::debug().freeLibrary(library);
  library = nullptr;
}
