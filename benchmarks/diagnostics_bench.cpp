// SPDX-License-Identifier: MIT
//
// Call stacks: finding the frames, and the function and the source line of each.
//
// The peers' functions are taken from their own libraries at run time: linked, libunwind would replace the unwinder of
// the compiler's run time for the whole process.
#include <backtrace.h>
#include <dlfcn.h>
#include <elfutils/libdwfl.h>
#include <execinfo.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/fresh_processes.h"
#include "benchmarks/support.h"
#include "kvbase/diagnostics/output_debug_parentheses_scope.h"
#include "kvbase/diagnostics/vg_stack_walker.h"
#include "kvbase/platform/debug_api.h"
#include "kvbase/platform/debug_help.h"

namespace KV_1_1 {
namespace bench {

namespace {

namespace debug_help = platform::debug_help;

constexpr int kFrames = 20;
using Addresses = std::array<std::uint64_t, kFrames>;

template <class Function>
Function find(void* library, char const* name) {
  require(library != nullptr, "the library of a peer is there");
  auto const function = reinterpret_cast<Function>(dlsym(library, name));
  require(function != nullptr, "it has the function");
  return function;
}

// Calls `work` with N functions above it, each of its own.
template <int N, class Work>
__attribute__((noinline)) int deeply(Work const& work) {
  int result;
  if constexpr (N > 0) {
    result = deeply<N - 1>(work);
  } else {
    result = work();
  }
  benchmark::ClobberMemory();  // so that the call is not the last thing done
  return result;
}

// The debug help as the library finds it.
class DebugHelp {
 public:
  DebugHelp() : library_(debug().loadLibrary(KVW("dbghelp.dll"))) {
    require(library_ != nullptr, "libdw is installed");
    get(step_, "StackWalk64");
    get(symbol_, "SymGetSymFromAddr64");
    get(line_, "SymGetLineFromAddr64");
    get(functionTable_, "SymFunctionTableAccess64");
    get(moduleBase_, "SymGetModuleBase64");
    get(moduleInfo_, "SymGetModuleInfo64");
    get(undecorate_, "UnDecorateSymbolName");
  }

  int capture(Addresses& addresses) const {
    int count = 0;
    walk([&](std::uint64_t address) {
      addresses[static_cast<std::size_t>(count++)] = address;
      return count < kFrames;
    });
    return count;
  }

  // The calls that a walk to the end makes for each frame.
  int depth() const {
    SymbolBlock symbol;
    int count = 0;
    walk([&](std::uint64_t address) {
      char text[1024];
      std::uint64_t distance = 0;
      if (symbol_(process_, address, &distance, symbol.get()) != 0) {
        undecorate_(symbol.get()->name, text, sizeof text, debug_help::kUndecorateNameOnly);
        undecorate_(symbol.get()->name, text, sizeof text, debug_help::kUndecorateComplete);
      }
      lineNumber(address);
      debug_help::ModuleInfo64 module;
      module.sizeOfStruct = sizeof module;
      moduleInfo_(process_, address, &module);
      ++count;
      return true;
    });
    return count;
  }

  std::string lines(Addresses const& addresses) const {
    SymbolBlock symbol;
    std::string result;
    for (std::uint64_t const address : addresses) {
      std::uint64_t distance = 0;
      symbol_(nullptr, address, &distance, symbol.get());
      benchmark::DoNotOptimize(symbol);
      result += static_cast<char>('0' + lineNumber(address) % 10);
    }
    return result;
  }

 private:
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

  // Calls `visit` with each program counter until it returns false.
  template <class Visit>
  void walk(Visit visit) const {
    _CONTEXT context;
    context.ContextFlags = debug_help::kContextFull;
    debug().contextCapture()(&context);
    debug_help::StackFrame64 frame = {};
    frame.programCounter = {context.Rip, 0, debug_help::kFlatAddress};
    while (step_(debug_help::kMachineX64, process_, thread_, &frame, &context, &read, functionTable_, moduleBase_,
                 nullptr) != 0) {
      if (!visit(frame.programCounter.offset) || frame.returnAddress.offset == 0) return;
    }
  }

  unsigned lineNumber(std::uint64_t address) const {
    debug_help::Line64 line = {};
    line.sizeOfStruct = sizeof line;
    ulong32 distance = 0;
    return line_(nullptr, address, &distance, &line) != 0 ? line.lineNumber : 0;
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
    require(function != nullptr, "libdw has what is needed");
  }

  HINSTANCE library_;
  void* process_ = debug().currentProcess();
  void* thread_ = debug().currentThread();
  debug_help::StackWalk64 step_;
  debug_help::SymGetSymFromAddr64 symbol_;
  debug_help::SymGetLineFromAddr64 line_;
  debug_help::SymFunctionTableAccess64 functionTable_;
  debug_help::SymGetModuleBase64 moduleBase_;
  debug_help::SymGetModuleInfo64 moduleInfo_;
  debug_help::UnDecorateSymbolName undecorate_;
};

// libdwfl as its examples use it.
class PlainDwfl {
 public:
  PlainDwfl() {
    void* const library = dlopen("libdw.so.1", RTLD_NOW | RTLD_LOCAL);
    findElf_ = find<decltype(findElf_)>(library, "dwfl_linux_proc_find_elf");
    findDebugInfo_ = find<decltype(findDebugInfo_)>(library, "dwfl_standard_find_debuginfo");
    begin_ = find<decltype(begin_)>(library, "dwfl_begin");
    end_ = find<decltype(end_)>(library, "dwfl_end");
    report_ = find<decltype(report_)>(library, "dwfl_linux_proc_report");
    reportEnd_ = find<decltype(reportEnd_)>(library, "dwfl_report_end");
    module_ = find<decltype(module_)>(library, "dwfl_addrmodule");
    name_ = find<decltype(name_)>(library, "dwfl_module_addrname");
    source_ = find<decltype(source_)>(library, "dwfl_module_getsrc");
    line_ = find<decltype(line_)>(library, "dwfl_lineinfo");
    callbacks_.find_elf = findElf_;
    callbacks_.find_debuginfo = findDebugInfo_;
  }
  PlainDwfl(PlainDwfl const&) = delete;
  PlainDwfl& operator=(PlainDwfl const&) = delete;

  Dwfl* open() const {
    Dwfl* const session = begin_(&callbacks_);
    report_(session, getpid());
    reportEnd_(session, nullptr, nullptr);
    return session;
  }
  void close(Dwfl* session) const { end_(session); }

  std::string lines(Dwfl* session, Addresses const& addresses) const {
    std::string result;
    for (std::uint64_t const address : addresses) {
      Dwfl_Module* const module = module_(session, address);
      benchmark::DoNotOptimize(name_(module, address));
      Dwfl_Line* const line = source_(module, address);
      int number = 0;
      if (line != nullptr) line_(line, nullptr, &number, nullptr, nullptr, nullptr);
      result += static_cast<char>('0' + number % 10);
    }
    return result;
  }

 private:
  decltype(&::dwfl_linux_proc_find_elf) findElf_;
  decltype(&::dwfl_standard_find_debuginfo) findDebugInfo_;
  decltype(&::dwfl_begin) begin_;
  decltype(&::dwfl_end) end_;
  decltype(&::dwfl_linux_proc_report) report_;
  decltype(&::dwfl_report_end) reportEnd_;
  decltype(&::dwfl_addrmodule) module_;
  decltype(&::dwfl_module_addrname) name_;
  decltype(&::dwfl_module_getsrc) source_;
  decltype(&::dwfl_lineinfo) line_;
  Dwfl_Callbacks callbacks_ = {};
};

// libbacktrace reports the inlined functions of an address first.
std::string linesByBacktrace(backtrace_state* state, Addresses const& addresses) {
  std::string result;
  for (std::uint64_t const address : addresses) {
    int line = -1;
    auto const take = [](void* data, std::uintptr_t, char const* file, int number, char const* function) {
      benchmark::DoNotOptimize(function);
      auto& first = *static_cast<int*>(data);
      if (first < 0) first = file == nullptr ? 0 : number;
      return 0;
    };
    backtrace_pcinfo(
        state, address, take, [](void*, char const*, int) {}, &line);
    result += static_cast<char>('0' + (line < 0 ? 0 : line % 10));
  }
  return result;
}

// Each in the middle of its call. They are the same in each process that is forked from this one.
Addresses addressesHere() {
  void* frames[kFrames] = {};
  deeply<kFrames>([&] { return backtrace(frames, kFrames); });
  Addresses addresses;
  for (int i = 0; i < kFrames; ++i) {
    addresses[static_cast<std::size_t>(i)] = reinterpret_cast<std::uint64_t>(frames[i]) - 1;
  }
  return addresses;
}

}  // namespace

void addDiagnostics() {
  static DebugHelp const help;
  static PlainDwfl const dwfl;
  static auto const unwind =
      find<int (*)(void**, int)>(dlopen("libunwind.so.8", RTLD_NOW | RTLD_LOCAL), "unw_backtrace");
  static backtrace_state* const state = backtrace_create_state(nullptr, 0, nullptr, nullptr);
  static Addresses const addresses = addressesHere();
  // Nothing has been walked or looked up yet.
  static FreshProcesses const processes({[] { return help.lines(addresses); },
                                         [] {
                                           Dwfl* const session = dwfl.open();
                                           std::string result = dwfl.lines(session, addresses);
                                           dwfl.close(session);
                                           return result;
                                         }});

  Row("call stack: capture 20 frames")
      .add("KVBase",
           [] {
             Addresses frames;
             return deeply<kFrames>([&] { return help.capture(frames); });
           })
      .add("backtrace",
           [] {
             void* frames[kFrames];
             return deeply<kFrames>([&] { return backtrace(frames, kFrames); });
           })
      .add("libunwind", [] {
        void* frames[kFrames];
        return deeply<kFrames>([&] { return unwind(frames, kFrames); });
      });

  // A walk that only counts frames still makes all calls that a walk makes.
  Row("call stack: a scope of debug output")
      .add("KVBase",
           [] {
             return deeply<kFrames>([] {
               OutputDebugParenthesesScope const scope;
               return VgStackWalker::initialCallStackDepth > kFrames ? 1 : 0;
             });
           })
      .add("its calls", [] { return deeply<kFrames>([] { return help.depth() > kFrames ? 1 : 0; }); });

  Row("call stack: function and line of 20 frames, first time")
      .addOnce("KVBase", processes, 0)
      .addOnce("libdwfl", processes, 1);

  Row("call stack: function and line of 20 frames, again")
      .add("KVBase", [] { return help.lines(addresses); })
      .add("libdwfl", [session = dwfl.open()] { return dwfl.lines(session, addresses); })
      .add("libbacktrace", [] { return linesByBacktrace(state, addresses); });
}

}  // namespace bench
}  // namespace KV_1_1
