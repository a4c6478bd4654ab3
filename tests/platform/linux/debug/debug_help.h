// SPDX-License-Identifier: MIT
//
// The debug-help library of this system, with all its functions, and a walk of a stack by it.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "kvbase/platform/debug_api.h"
#include "kvbase/platform/debug_help.h"

namespace KV_1_1 {
namespace testing {

namespace debug_help = platform::debug_help;

struct Frame {
  std::uint64_t address = 0;
  std::uint64_t returnAddress = 0;
  std::string name;  // complete form
  std::string bareName;
  std::uint64_t displacement = 0;
  std::string file;
  unsigned line = 0;
  std::string module;
};

class DebugHelp {
 public:
  DebugHelp() : library_(debug().loadLibrary(KVW("dbghelp.dll"))) {
    if (library_ == nullptr) return;
    find(symInitialize, "SymInitialize");
    find(symCleanup, "SymCleanup");
    find(stackWalk64, "StackWalk64");
    find(symGetOptions, "SymGetOptions");
    find(symSetOptions, "SymSetOptions");
    find(symFunctionTableAccess64, "SymFunctionTableAccess64");
    find(symGetLineFromAddr64, "SymGetLineFromAddr64");
    find(symGetModuleBase64, "SymGetModuleBase64");
    find(symGetModuleInfo64, "SymGetModuleInfo64");
    find(symGetSymFromAddr64, "SymGetSymFromAddr64");
    find(unDecorateSymbolName, "UnDecorateSymbolName");
    find(symLoadModule64, "SymLoadModule64");
    find(symGetSearchPath, "SymGetSearchPath");
  }
  ~DebugHelp() {
    if (library_ != nullptr) debug().freeLibrary(library_);
  }
  DebugHelp(DebugHelp const&) = delete;
  DebugHelp& operator=(DebugHelp const&) = delete;

  static platform::DebugApi& debug() { return platform::nativeDebug(); }
  bool isThere() const { return library_ != nullptr; }

  debug_help::SymInitialize symInitialize = nullptr;
  debug_help::SymCleanup symCleanup = nullptr;
  debug_help::StackWalk64 stackWalk64 = nullptr;
  debug_help::SymGetOptions symGetOptions = nullptr;
  debug_help::SymSetOptions symSetOptions = nullptr;
  debug_help::SymFunctionTableAccess64 symFunctionTableAccess64 = nullptr;
  debug_help::SymGetLineFromAddr64 symGetLineFromAddr64 = nullptr;
  debug_help::SymGetModuleBase64 symGetModuleBase64 = nullptr;
  debug_help::SymGetModuleInfo64 symGetModuleInfo64 = nullptr;
  debug_help::SymGetSymFromAddr64 symGetSymFromAddr64 = nullptr;
  debug_help::UnDecorateSymbolName unDecorateSymbolName = nullptr;
  debug_help::SymLoadModule64 symLoadModule64 = nullptr;
  debug_help::SymGetSearchPath symGetSearchPath = nullptr;

  std::string undecorated(char const* name, ulong32 flags) const {
    char text[1024] = "";
    unDecorateSymbolName(name, text, sizeof text, flags);
    return text;
  }

  std::string symbolName(std::uint64_t address, std::uint64_t* displacement = nullptr) const {
    alignas(debug_help::Symbol64) char block[1056] = {};
    auto* const symbol = reinterpret_cast<debug_help::Symbol64*>(block);
    symbol->sizeOfStruct = sizeof *symbol;
    symbol->maxNameLength = 1024;
    std::uint64_t distance = 0;
    if (symGetSymFromAddr64(process(), address, &distance, symbol) == 0) return "";
    if (displacement != nullptr) *displacement = distance;
    return symbol->name;
  }

  Frame describe(std::uint64_t address) const {
    Frame frame;
    frame.address = address;
    std::string const name = symbolName(address, &frame.displacement);
    if (!name.empty()) {
      frame.name = undecorated(name.c_str(), debug_help::kUndecorateComplete);
      frame.bareName = undecorated(name.c_str(), debug_help::kUndecorateNameOnly);
    }
    debug_help::Line64 line = {};
    line.sizeOfStruct = sizeof line;
    ulong32 displacement = 0;
    if (symGetLineFromAddr64(process(), address, &displacement, &line) != 0) {
      frame.file = line.fileName;
      frame.line = line.lineNumber;
    }
    debug_help::ModuleInfo64 info = {};
    info.sizeOfStruct = sizeof info;
    if (symGetModuleInfo64(process(), address, &info) != 0) frame.module = info.moduleName;
    return frame;
  }

  // Walks from a context to the end of the stack, or until a step fails or `limit` frames have been seen.
  std::vector<Frame> walk(_CONTEXT context, debug_help::ReadProcessMemory64 readMemory = nullptr, int limit = 200,
                          bool describeFrames = true) {
    std::vector<Frame> frames;
    debug_help::StackFrame64 frame = {};
    frame.programCounter = {context.Rip, 0, debug_help::kFlatAddress};
    frame.frame = {context.Rsp, 0, debug_help::kFlatAddress};
    frame.stack = {context.Rsp, 0, debug_help::kFlatAddress};
    endsInOrder = false;
    for (int i = 0; i < limit; ++i) {
      if (stackWalk64(debug_help::kMachineX64, process(), debug().currentThread(), &frame, &context, readMemory,
                      symFunctionTableAccess64, symGetModuleBase64, nullptr) == 0) {
        return frames;
      }
      Frame found;
      if (describeFrames) found = describe(frame.programCounter.offset);
      found.address = frame.programCounter.offset;
      found.returnAddress = frame.returnAddress.offset;
      frames.push_back(found);
      if (frame.returnAddress.offset == 0) {
        endsInOrder = true;
        return frames;
      }
    }
    return frames;
  }

  // Whether the last walk came to a frame without return address.
  bool endsInOrder = false;

  static void* process() { return debug().currentProcess(); }

 private:
  template <class Function>
  void find(Function& function, char const* name) {
    function = reinterpret_cast<Function>(debug().function(library_, name));
  }

  HINSTANCE library_;
};

// The registers here, as the caller of this macro has them.
inline _CONTEXT emptyContext() {
  _CONTEXT context = {};
  context.ContextFlags = debug_help::kContextFull;
  return context;
}

// The index of the first frame whose bare name is this, -1 if there is none.
inline int indexOf(std::vector<Frame> const& frames, std::string const& bareName) {
  for (std::size_t i = 0; i < frames.size(); ++i) {
    if (frames[i].bareName == bareName) return static_cast<int>(i);
  }
  return -1;
}

}  // namespace testing
}  // namespace KV_1_1
