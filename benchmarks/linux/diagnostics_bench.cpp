// SPDX-License-Identifier: MIT
//
// Call stacks: finding the frames, and the function and the source line of each. On Windows the debug help that does this is
// the system's.
//
// The peers' functions are taken from their own libraries at run time: linked, libunwind would replace the unwinder of
// the compiler's run time for the whole process.
#include <backtrace.h>
#include <dlfcn.h>
#include <elfutils/libdwfl.h>
#include <execinfo.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "benchmarks/debug_help_calls.h"
#include "benchmarks/support.h"
#include "deep_stack.h"
#include "fresh_processes.h"

namespace KV_1_1 {
namespace bench {

namespace {

template <class Function>
Function find(void* library, char const* name) {
  require(library != nullptr, "the library of a peer is there");
  auto const function = reinterpret_cast<Function>(dlsym(library, name));
  require(function != nullptr, "it has the function");
  return function;
}

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
      keep(name_(module, address));
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
      keep(function);
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

// The steps through known frames bare: a table of where each frame keeps the registers of its caller, found by the program
// counter, the stack, which the caller's routine reads, many words at a time, and the caller's two records. A frame that is
// not known yet is learnt from the debug help.
class KnownFrames {
 public:
  static debug_help::StackWalk64 learntFrom(debug_help::StackWalk64 step) {
    learntFrom_ = step;
    return &KnownFrames::step;
  }

 private:
  static constexpr std::size_t kRegisters = 7;
  static constexpr std::uint64_t _CONTEXT::*kSaved[kRegisters] = {
      &_CONTEXT::Rbx, &_CONTEXT::Rbp, &_CONTEXT::R12, &_CONTEXT::R13, &_CONTEXT::R14, &_CONTEXT::R15, &_CONTEXT::Rip};
  struct Known {
    std::uint64_t counter = 0;
    std::uint64_t size = 0;
    // In words below the end of the frame; 0 for a register that the caller has as it is.
    std::array<std::uint64_t, kRegisters> savedAt = {};
  };
  static constexpr std::size_t kBits = 10;
  static constexpr std::uint64_t kWindowWords = 64;
  static inline std::vector<Known> slots_{std::size_t{1} << kBits};
  static inline debug_help::StackWalk64 learntFrom_ = nullptr;
  static inline thread_local std::uint64_t window_[kWindowWords];

  static Known& slotOf(std::uint64_t counter) {
    std::size_t i = (counter * 0x9E3779B97F4A7C15) >> (64 - kBits);
    while (slots_[i].counter != 0 && slots_[i].counter != counter) i = (i + 1) % slots_.size();
    return slots_[i];
  }

  static debug_help::Bool step(ulong32 machine, void* process, void* thread, debug_help::StackFrame64* frame,
                               void* context, debug_help::ReadProcessMemory64 read,
                               debug_help::FunctionTableAccess64 functionTable, debug_help::GetModuleBase64 moduleBase,
                               debug_help::TranslateAddress64 translate) {
    auto& registers = *static_cast<_CONTEXT*>(context);
    Known& known = slotOf(registers.Rip);
    if (known.counter == 0) {
      _CONTEXT const before = registers;
      if (learntFrom_(machine, process, thread, frame, context, read, functionTable, moduleBase, translate) == 0)
        return 0;
      known = learn(before, registers);
      return 1;
    }
    frame->programCounter.offset = registers.Rip;
    frame->stack.offset = registers.Rsp;
    std::uint64_t const end = registers.Rsp + known.size;
    std::uint64_t& windowStart = frame->reserved[0];  // 0 at the start of a walk
    if (windowStart == 0 || end - windowStart > sizeof window_) {
      ulong32 bytes = 0;
      windowStart = end - std::min(known.size, std::uint64_t{sizeof window_});
      if (read(process, windowStart, window_, sizeof window_, &bytes) == 0) return 0;
    }
    std::uint64_t const* const words = window_ + (end - windowStart) / sizeof(std::uint64_t);
    for (std::size_t i = 0; i < kRegisters; ++i) {
      if (known.savedAt[i] != 0) registers.*kSaved[i] = *(words - known.savedAt[i]);
    }
    registers.Rsp = end;
    frame->frame.offset = end;
    frame->returnAddress.offset = registers.Rip;
    return 1;
  }

  static Known learn(_CONTEXT const& frame, _CONTEXT const& caller) {
    Known known;
    known.counter = frame.Rip;
    known.size = caller.Rsp - frame.Rsp;
    auto const* const end = reinterpret_cast<std::uint64_t const*>(caller.Rsp);
    std::uint64_t const words = std::min(known.size / sizeof(std::uint64_t), kWindowWords);
    for (std::size_t i = 0; i < kRegisters; ++i) {
      if (caller.*kSaved[i] == frame.*kSaved[i]) continue;
      for (std::uint64_t at = words; at > 0; --at) {
        if (*(end - at) == caller.*kSaved[i]) known.savedAt[i] = at;
      }
      require(known.savedAt[i] != 0, "a frame has the registers that it changes");
    }
    return known;
  }
};

// The look-ups of known addresses bare: a table with what was told of each before, found by the address, and a caller's record
// that it is copied to. As return addresses stand for their call, each look-up asks what this thread walked last.
class KnownAddresses {
 public:
  static void learn(LookUps const& lookUps, std::vector<Addresses> const& places) {
    for (Addresses const& addresses : places) {
      for (std::uint64_t const address : addresses) learn(lookUps, address);
    }
  }
  static LookUps lookUps() { return {nullptr, &symbol, &line}; }

 private:
  struct Known {
    std::uint64_t address;
    std::string name;
    std::uint64_t symbolStart;
    debug_help::Line64 line;
  };
  static constexpr std::size_t kBits = 14;
  static inline std::vector<std::unique_ptr<Known const>> slots_{std::size_t{1} << kBits};
  static inline thread_local std::uint64_t lastReturnAddress_ = 0;

  static std::unique_ptr<Known const>& slotOf(std::uint64_t address) {
    std::size_t i = (address * 0x9E3779B97F4A7C15) >> (64 - kBits);
    while (slots_[i] != nullptr && slots_[i]->address != address) i = (i + 1) % slots_.size();
    return slots_[i];
  }
  static void learn(LookUps const& lookUps, std::uint64_t address) {
    SymbolBlock block;
    std::uint64_t distance = 0;
    require(lookUps.symbol(lookUps.process, address, &distance, block.get()) != 0, "the address has a symbol");
    slotOf(address).reset(new Known{address, block.get()->name, block.get()->address, lookUps.lineOf(address)});
  }
  static Known const& find(std::uint64_t counter) {
    return *slotOf(counter == lastReturnAddress_ ? counter - 1 : counter);
  }

  static debug_help::Bool symbol(void*, std::uint64_t address, std::uint64_t* distance, debug_help::Symbol64* symbol) {
    Known const& known = find(address);
    *distance = address - known.symbolStart;
    symbol->address = known.symbolStart;
    symbol->size = symbol->flags = 0;
    std::size_t const size = std::min<std::size_t>(known.name.size(), symbol->maxNameLength - 1);
    std::memcpy(symbol->name, known.name.data(), size);
    symbol->name[size] = '\0';
    return 1;
  }
  static debug_help::Bool line(void*, std::uint64_t address, ulong32* distance, debug_help::Line64* line) {
    Known const& known = find(address);
    *distance = static_cast<ulong32>(address - known.line.address);
    *line = known.line;
    return 1;
  }
};

// Whether the machine has debug data of the system's libraries, which may be large and compressed, must not count.
bool hasDebugData(void const* address) {
  Dl_info module = {};
  require(dladdr(address, &module) != 0, "a frame lies in a module");
  return std::string_view(module.dli_fname).rfind("/usr/", 0) != 0 &&
         std::string_view(module.dli_fname).rfind("/lib", 0) != 0;
}

// Of one place each, innermost first and in the middle of their calls, without the functions of the system's libraries.
// They are the same in each process that is forked from this one.
std::vector<Addresses> addressesInApplication() {
  std::vector<Addresses> places;
  callInApplication([&] {
    std::array<void*, 60> frames;
    int const count = backtrace(frames.data(), static_cast<int>(frames.size()));
    std::size_t found = 0;
    Addresses addresses;
    for (int i = 0; i < count && found < addresses.size(); ++i) {
      void const* const frame = frames[static_cast<std::size_t>(i)];
      if (hasDebugData(frame)) addresses[found++] = reinterpret_cast<std::uint64_t>(frame) - 1;
    }
    require(found == addresses.size(), "a stack is deep enough");
    places.push_back(addresses);
  });
  return places;
}

// Finds the lines of one place after the other, as an application asks for stacks of many places: the processor would
// learn each branch of a search for always the same addresses. The first call, which is not timed, finds those of all.
template <class Lines>
auto inTurn(std::vector<Addresses> const& places, Lines lines) {
  return [&places, lines, next = std::size_t{0}, isFirst = true]() mutable {
    if (std::exchange(isFirst, false)) {
      std::string all;
      for (Addresses const& each : places) all += lines(each);
      return all;
    }
    if (next == places.size()) next = 0;
    return lines(places[next++]);
  };
}

}  // namespace

void addDiagnostics() {
  static DebugHelp const help;
  static PlainDwfl const dwfl;
  static auto const unwind =
      find<int (*)(void**, int)>(dlopen("libunwind.so.8", RTLD_NOW | RTLD_LOCAL), "unw_backtrace");
  static backtrace_state* const state = backtrace_create_state(nullptr, 0, nullptr, nullptr);
  static std::vector<Addresses> const places = addressesInApplication();
  // Nothing has been walked or looked up yet.
  static FreshProcesses const processes({[] { return help.lines(places[0]); },
                                         [] {
                                           Dwfl* const session = dwfl.open();
                                           std::string result = dwfl.lines(session, places[0]);
                                           dwfl.close(session);
                                           return result;
                                         }});

  // As that of the debug help, the function is known only when the program runs.
  static debug_help::StackWalk64 bareStep = KnownFrames::learntFrom(help.stackWalk());
  keep(bareStep);
  deeply<kFrames>([&] {
    Addresses frames;
    for (int i = 0; i < 2; ++i) {  // learnt, and known
      Addresses bare;
      help.capture(frames, i == 0 ? bareStep : help.stackWalk());
      help.capture(bare, bareStep);
      require(std::equal(frames.begin() + 1, frames.end(), bare.begin() + 1), "both steps find the same frames");
    }
    return 0;
  });

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
      .add(PEER("libunwind",
                [] {
                  void* frames[kFrames];
                  return deeply<kFrames>([&] { return unwind(frames, kFrames); });
                }))
      .add("floor", [] {
        Addresses frames;
        return deeply<kFrames>([&] { return help.capture(frames, bareStep); });
      });

  Row("call stack: function and line of 20 frames, first time")
      .addOnce("KVBase", processes, 0)
      .addOnce(PEER("libdwfl", processes, 1));

  KnownAddresses::learn(help.lookUps(), places);
  static LookUps bare = KnownAddresses::lookUps();
  // As those of the debug help, the functions are known only when the program runs.
  keep(bare);
  Row("call stack: function and line of 20 frames, again")
      .add("KVBase", inTurn(places, [](Addresses const& each) { return help.lines(each); }))
      .add(PEER("libdwfl",
                inTurn(places, [session = dwfl.open()](Addresses const& each) { return dwfl.lines(session, each); })))
      .add(PEER("libbacktrace", inTurn(places, [](Addresses const& each) { return linesByBacktrace(state, each); })))
      .add("floor", inTurn(places, [](Addresses const& each) { return bare.lines(each); }));
}

}  // namespace bench
}  // namespace KV_1_1
