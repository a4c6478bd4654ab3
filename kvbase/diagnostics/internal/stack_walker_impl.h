// SPDX-License-Identifier: MIT
//
// The debug-help library of a walker: search, functions, modules made known to it, and the walk through it.
//
// Failure: no exceptions but those of the walker's callbacks.
// Thread rule: as StackWalker.
#pragma once

#include <cstdint>

#include "kvbase/diagnostics/internal/narrow_copy.h"
#include "kvbase/diagnostics/stack_walker.h"
#include "kvbase/platform/debug_help.h"
#include "kvbase/platform/types.h"
#include "kvbase/text_unit.h"

class StackWalkerImpl {
 public:
  using ModuleInfo = KV_1_1::platform::debug_help::ModuleInfo64;

  // Loads nothing.
  StackWalkerImpl(StackWalker* walker, void* walkedProcess);
  StackWalkerImpl(StackWalkerImpl const&) = delete;
  StackWalkerImpl& operator=(StackWalkerImpl const&) = delete;
  // Ends the symbol handling, frees the library.
  ~StackWalkerImpl();

  // Loads the library, prepares it for the process and calls the parent's OnSymInit. A path is copied; null: the
  // library's default. False without parent, library, or one of the functions that are required; the library is then
  // not loaded. A failure to prepare it goes to OnDbgHelpErr only. A second call goes through all of it again, but searches
  // no further for a library if one is loaded already.
  bool initialize(char const* path);

  // Makes a module known and calls the parent's OnLoadModule. The result is 0 or an error code. COMPAT: a failure that
  // leaves the last error at 0, as that of a module known before may do, is no error.
  KV_1_1::ulong32 loadModule(void* walkedProcess, char const* image, char const* module, std::uint64_t base,
                             KV_1_1::ulong32 size);
  // The two services that list modules, each calls loadModule for each of them. False if the service is missing or lists
  // nothing.
  bool loadModulesThroughSnapshot(void* walkedProcess, KV_1_1::ulong32 processId);
  bool loadModulesThroughPsapi(void* walkedProcess);

  // The record of the module at an address. On failure false, the last error is 8 without memory and otherwise 1114,
  // whatever the library's reason was, and the record has its size only.
  bool getModuleInfo(void* walkedProcess, std::uint64_t address, ModuleInfo& info) const;

  // Walks from `context`, which is changed, and calls back `walker`. REQUIRES: the library is loaded.
  void walk(StackWalker& walker, void* thread, _CONTEXT& context) const;

  StackWalker* parent;
  HINSTANCE library = nullptr;
  void* process;
  char* searchPath = nullptr;  // owned
  KV_1_1::platform::debug_help::SymCleanup symCleanup = nullptr;
  KV_1_1::platform::debug_help::SymFunctionTableAccess64 symFunctionTableAccess = nullptr;
  KV_1_1::platform::debug_help::SymGetLineFromAddr64 symGetLine = nullptr;  // optional
  KV_1_1::platform::debug_help::SymGetModuleBase64 symGetModuleBase = nullptr;
  KV_1_1::platform::debug_help::SymGetModuleInfo64 symGetModuleInfo = nullptr;
  KV_1_1::platform::debug_help::SymGetOptions symGetOptions = nullptr;
  KV_1_1::platform::debug_help::SymGetSymFromAddr64 symGetSymbol = nullptr;
  KV_1_1::platform::debug_help::SymInitialize symInitialize = nullptr;
  KV_1_1::platform::debug_help::SymLoadModule64 symLoadModule = nullptr;
  KV_1_1::platform::debug_help::SymSetOptions symSetOptions = nullptr;
  KV_1_1::platform::debug_help::StackWalk64 stackWalk = nullptr;
  KV_1_1::platform::debug_help::UnDecorateSymbolName undecorateSymbolName = nullptr;
  KV_1_1::platform::debug_help::SymGetSearchPath symGetSearchPath = nullptr;  // optional

 private:
  using Address = KV_1_1::platform::debug_help::Address64;
  using StackFrame = KV_1_1::platform::debug_help::StackFrame64;
  using Symbol = KV_1_1::platform::debug_help::Symbol64;
  using Entry = StackWalker::CallstackEntry;

  // debug_help_library.cpp
  bool loadLibrary();
  bool loadFunctions();
  void freeLibrary();

  void reportStart(KV_1_1::ulong32 symOptions);

  // A record in the work buffer, which is allocated if it is null. Null, with the last error of getModuleInfo, if that
  // is not possible.
  ModuleInfo* moduleRecord(KV_1_1::diagnostics::HeapText& buffer) const;
  // Has the library fill it. On failure false, with the last error of getModuleInfo.
  bool fillModuleRecord(void* walkedProcess, std::uint64_t address, ModuleInfo& record) const;

  // callstack_walk.cpp
  bool step(StackWalker& walker, void* thread, StackFrame& frame, _CONTEXT& context) const;
  void resolve(StackWalker& walker, Symbol& symbol, KV_1_1::diagnostics::HeapText& moduleBuffer, Entry& entry) const;
  void resolveSymbol(StackWalker& walker, Symbol& symbol, Entry& entry) const;
  void resolveLine(StackWalker& walker, Entry& entry) const;
  void resolveModule(StackWalker& walker, KV_1_1::diagnostics::HeapText& moduleBuffer, Entry& entry) const;
  static int readMemory(void* walkedProcess, std::uint64_t address, void* buffer, KV_1_1::ulong32 size,
                        KV_1_1::ulong32* bytesRead);
};
