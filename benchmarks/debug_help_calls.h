// SPDX-License-Identifier: MIT
//
// The debug help as the library finds it, and a stack of a known depth to ask it about.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "benchmarks/support.h"
#include "kvbase/platform/debug_api.h"
#include "kvbase/platform/debug_help.h"

namespace KV_1_1 {
namespace bench {

namespace debug_help = platform::debug_help;

constexpr int kFrames = 20;
using Addresses = std::array<std::uint64_t, kFrames>;

// Calls `work` with N functions above it, each of its own.
template <int N, class Work>
__attribute__((noinline)) int deeply(Work const& work) {
  int result;
  if constexpr (N > 0) {
    result = deeply<N - 1>(work);
  } else {
    result = work();
  }
  keepWrites();  // so that the call is not the last thing done
  return result;
}

// Room for a symbol with its name.
class SymbolBlock {
 public:
  SymbolBlock() {
    get()->sizeOfStruct = sizeof(debug_help::Symbol64);
    get()->maxNameLength = 1024;
  }
  debug_help::Symbol64* get() { return reinterpret_cast<debug_help::Symbol64*>(block_); }

 private:
  alignas(debug_help::Symbol64) char block_[1056];
};

// The two functions that tell of an address.
struct LookUps {
  void* process;
  debug_help::SymGetSymFromAddr64 symbol;
  debug_help::SymGetLineFromAddr64 line;

  // The last digit of each line.
  std::string lines(Addresses const& addresses) const {
    SymbolBlock block;
    std::string result;
    for (std::uint64_t const address : addresses) {
      std::uint64_t distance = 0;
      symbol(process, address, &distance, block.get());
      keep(block);
      result += static_cast<char>('0' + lineOf(address).lineNumber % 10);
    }
    return result;
  }

  // Of number 0 if there is none.
  debug_help::Line64 lineOf(std::uint64_t address) const {
    debug_help::Line64 found = {};
    found.sizeOfStruct = sizeof found;
    ulong32 distance = 0;
    line(process, address, &distance, &found);
    return found;
  }
};

class DebugHelp {
 public:
  DebugHelp() : library_(debug().loadLibrary(KVW("dbghelp.dll"))) {
    require(library_ != nullptr, "the debug help is installed");
    get(step_, "StackWalk64");
    get(lookUps_.symbol, "SymGetSymFromAddr64");
    get(lookUps_.line, "SymGetLineFromAddr64");
    get(functionTable_, "SymFunctionTableAccess64");
    get(moduleBase_, "SymGetModuleBase64");
    get(moduleInfo_, "SymGetModuleInfo64");
    get(undecorate_, "UnDecorateSymbolName");
  }

  int capture(Addresses& addresses) const { return capture(addresses, step_); }
  // By another function for the steps.
  int capture(Addresses& addresses, debug_help::StackWalk64 step) const {
    int count = 0;
    walk(step, [&](std::uint64_t address) {
      addresses[static_cast<std::size_t>(count++)] = address;
      return count < kFrames;
    });
    return count;
  }

  // The calls that a walk to the end makes for each frame.
  int depth() const {
    SymbolBlock symbol;
    int count = 0;
    walk(step_, [&](std::uint64_t address) {
      char text[1024];
      std::uint64_t distance = 0;
      if (lookUps_.symbol(process_, address, &distance, symbol.get()) != 0) {
        undecorate_(symbol.get()->name, text, sizeof text, debug_help::kUndecorateNameOnly);
        undecorate_(symbol.get()->name, text, sizeof text, debug_help::kUndecorateComplete);
      }
      lookUps_.lineOf(address);
      debug_help::ModuleInfo64 module;
      module.sizeOfStruct = sizeof module;
      moduleInfo_(process_, address, &module);
      ++count;
      return true;
    });
    return count;
  }

  debug_help::StackWalk64 stackWalk() const { return step_; }
  LookUps const& lookUps() const { return lookUps_; }
  std::string lines(Addresses const& addresses) const { return lookUps_.lines(addresses); }

 private:
  // Calls `visit` with each program counter until it returns false.
  template <class Visit>
  void walk(debug_help::StackWalk64 step, Visit visit) const {
    _CONTEXT context;
    context.ContextFlags = debug_help::kContextFull;
    debug().contextCapture()(&context);
    debug_help::StackFrame64 frame = {};
    frame.programCounter = {context.Rip, 0, debug_help::kFlatAddress};
    frame.frame = {context.Rsp, 0, debug_help::kFlatAddress};
    frame.stack = {context.Rsp, 0, debug_help::kFlatAddress};
    while (step(debug_help::kMachineX64, process_, thread_, &frame, &context, &read, functionTable_, moduleBase_,
                nullptr) != 0) {
      if (!visit(frame.programCounter.offset) || frame.returnAddress.offset == 0) return;
    }
  }

  static platform::DebugApi& debug() { return platform::nativeDebug(); }
  static int read(void* process, std::uint64_t address, void* buffer, ulong32 size, ulong32* bytesRead) {
    std::size_t count = 0;
    bool const all = debug().readMemory(process, address, buffer, size, count);
    *bytesRead = static_cast<ulong32>(count);
    return all ? 1 : 0;
  }
  template <class Function>
  void get(Function& function, char const* name) const {
    function = reinterpret_cast<Function>(debug().function(library_, name));
    require(function != nullptr, "it has what is needed");
  }

  HINSTANCE library_;
  void* process_ = debug().currentProcess();
  void* thread_ = debug().currentThread();
  debug_help::StackWalk64 step_;
  LookUps lookUps_ = {process_, nullptr, nullptr};
  debug_help::SymFunctionTableAccess64 functionTable_;
  debug_help::SymGetModuleBase64 moduleBase_;
  debug_help::SymGetModuleInfo64 moduleInfo_;
  debug_help::UnDecorateSymbolName undecorate_;
};

}  // namespace bench
}  // namespace KV_1_1
