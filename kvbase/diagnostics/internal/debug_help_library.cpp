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
bool load(Function& function, HINSTANCE library, char const* name) {
  function = reinterpret_cast<Function>(platform::debug().function(library, name));
  return function != nullptr;
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
  bool complete = true;
  auto const require = [&](auto& function, char const* name) { complete = load(function, library, name) && complete; };
  require(symInitialize, "SymInitialize");
  require(symCleanup, "SymCleanup");
  require(stackWalk, "StackWalk64");
  require(symGetOptions, "SymGetOptions");
  require(symSetOptions, "SymSetOptions");
  require(symFunctionTableAccess, "SymFunctionTableAccess64");
  load(symGetLine, library, "SymGetLineFromAddr64");
  require(symGetModuleBase, "SymGetModuleBase64");
  require(symGetModuleInfo, "SymGetModuleInfo64");
  require(symGetSymbol, "SymGetSymFromAddr64");
  require(undecorateSymbolName, "UnDecorateSymbolName");
  require(symLoadModule, "SymLoadModule64");
  load(symGetSearchPath, library, "SymGetSearchPath");
  return complete;
}

void StackWalkerImpl::freeLibrary() {
  if (library != nullptr) platform::debug().freeLibrary(library);
  library = nullptr;
}
