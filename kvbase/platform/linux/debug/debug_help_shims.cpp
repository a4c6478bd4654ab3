// SPDX-License-Identifier: MIT
//
// The functions of "dbghelp.dll" by way of libdw. There is one session for the process, so the process handle says
// nothing; it is what the caller was given for this process.
#include "kvbase/platform/linux/debug/debug_help_shims.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "kvbase/platform/debug_help.h"
#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/linux/debug/debug_session.h"
#include "kvbase/platform/linux/debug/frame_steps.h"
#include "kvbase/platform/linux/debug/guarded.h"
#include "kvbase/platform/linux/debug/resolved_addresses.h"
#include "kvbase/platform/linux/errors/last_error.h"

namespace KV_1_1 {
namespace platform {

namespace {

using debug_help::Bool;

Bool symInitialize(void*, char const* searchPath, Bool) {
  return guarded([&]() -> Bool {
    DebugSession& session = DebugSession::instance();
    auto const lock = session.lock();
    session.setSearchPath(searchPath);
    if (session.begin()) return 1;
    setLastErrorOfThread(kNotEnoughMemory);
    return 0;
  });
}

// The session is common to all that have been initialised, and stays for the next one.
Bool symCleanup(void*) {
  return 1;
}

ulong32 symGetOptions() {
  DebugSession& session = DebugSession::instance();
  auto const lock = session.lock();
  return session.options;
}

ulong32 symSetOptions(ulong32 options) {
  DebugSession& session = DebugSession::instance();
  auto const lock = session.lock();
  return session.options = options;
}

std::uint64_t baseAt(std::uint64_t address) {
  DebugSession& session = DebugSession::instance();
  auto const lock = session.lock();
  DebugSession::Module const* const module = session.moduleAt(address);
  if (module == nullptr) setLastErrorOfThread(kModuleNotFound);
  return module == nullptr ? 0 : module->loaded.start;
}

std::uint64_t symGetModuleBase64(void*, std::uint64_t address) {
  return guarded([&] { return baseAt(address); });
}

// The loader's list of modules is complete, so a module is known or is not there.
std::uint64_t symLoadModule64(void*, void*, char const*, char const*, std::uint64_t base, ulong32) {
  return guarded([&]() -> std::uint64_t {
    if (baseAt(base) == base && base != 0) return base;
    setLastErrorOfThread(kModuleNotFound);
    return 0;
  });
}

// The part of a module that belongs together with an address, relative to the module, as the tables of Windows have it.
struct FunctionTableEntry {
  std::uint32_t start;
  std::uint32_t end;
  std::uint32_t unwindData;
};
thread_local FunctionTableEntry functionTableEntry;

void* findFunctionTableEntry(std::uint64_t address) {
  DebugSession& session = DebugSession::instance();
  auto const lock = session.lock();
  DebugSession::Module const* const module = session.moduleAt(address);
  LibdwFunctions const& libdw = session.libdw();
  if (module == nullptr || module->handle == nullptr || !libdw.canLearn()) return nullptr;
  Dwarf_Addr bias = 0;
  Dwarf_CFI* const tables = libdw.exceptionFrames(module->handle, &bias);
  Dwarf_Frame* frame = nullptr;
  if (tables == nullptr || libdw.frameOfAddress(tables, address - bias, &frame) != 0) return nullptr;
  Dwarf_Addr start = 0;
  Dwarf_Addr end = 0;
  libdw.frameInfo(frame, &start, &end, nullptr);
  free(frame);
  functionTableEntry = {static_cast<std::uint32_t>(start + bias - module->loaded.start),
                        static_cast<std::uint32_t>(end + bias - module->loaded.start), 0};
  return &functionTableEntry;
}

void* symFunctionTableAccess64(void*, std::uint64_t address) {
  return guarded([&]() -> void* {
    void* const entry = findFunctionTableEntry(address);
    if (entry == nullptr) setLastErrorOfThread(kModuleNotFound);
    return entry;
  });
}

Bool symGetModuleInfo64(void*, std::uint64_t address, debug_help::ModuleInfo64* info) {
  return guarded([&]() -> Bool {
    if (info == nullptr || info->sizeOfStruct != sizeof *info) return failWith(kInvalidParameter);
    return moduleInfoAt(address, *info);
  });
}

ulong32 unDecorateSymbolName(char const* name, char* output, ulong32 capacity, ulong32 flags) {
  return guarded([&]() -> ulong32 {
    if (name == nullptr || output == nullptr) return 0;
    return undecorate(name, output, capacity, (flags & debug_help::kUndecorateNameOnly) != 0);
  });
}

Bool symGetSearchPath(void*, char* path, ulong32 capacity) {
  return guarded([&]() -> Bool {
    DebugSession& session = DebugSession::instance();
    auto const lock = session.lock();
    std::string const& text = session.searchPath();
    if (path == nullptr || capacity == 0) return failWith(kInvalidParameter);
    path[text.copy(path, capacity - 1)] = '\0';
    return 1;
  });
}

Bool stackWalk64(ulong32 machine, void* process, void*, debug_help::StackFrame64* frame, void* context,
                 debug_help::ReadProcessMemory64 readMemory, debug_help::FunctionTableAccess64,
                 debug_help::GetModuleBase64, debug_help::TranslateAddress64) {
  return guarded([&]() -> Bool {
    bool const isValid = machine == debug_help::kMachineX64 && frame != nullptr && context != nullptr;
    if (!isValid) return failWith(kInvalidParameter);
    return stepFrame(*frame, *static_cast<_CONTEXT*>(context), process, readMemory);
  });
}

using Function = void (*)();

struct Shim {
  char const* name;
  Function function;
  bool (LibdwFunctions::*isAvailable)() const;
};

Shim const* shims(std::size_t& count) {
  static Shim const kShims[] = {
      {"SymInitialize", reinterpret_cast<Function>(&symInitialize), &LibdwFunctions::canList},
      {"SymCleanup", reinterpret_cast<Function>(&symCleanup), &LibdwFunctions::canList},
      {"StackWalk64", reinterpret_cast<Function>(&stackWalk64), &LibdwFunctions::canStep},
      {"SymGetOptions", reinterpret_cast<Function>(&symGetOptions), &LibdwFunctions::canList},
      {"SymSetOptions", reinterpret_cast<Function>(&symSetOptions), &LibdwFunctions::canList},
      {"SymFunctionTableAccess64", reinterpret_cast<Function>(&symFunctionTableAccess64), &LibdwFunctions::canList},
      {"SymGetLineFromAddr64", reinterpret_cast<Function>(&symGetLineFromAddr64), &LibdwFunctions::canLine},
      {"SymGetModuleBase64", reinterpret_cast<Function>(&symGetModuleBase64), &LibdwFunctions::canList},
      {"SymGetModuleInfo64", reinterpret_cast<Function>(&symGetModuleInfo64), &LibdwFunctions::canList},
      {"SymGetSymFromAddr64", reinterpret_cast<Function>(&symGetSymFromAddr64), &LibdwFunctions::canName},
      {"UnDecorateSymbolName", reinterpret_cast<Function>(&unDecorateSymbolName), &LibdwFunctions::canList},
      {"SymLoadModule64", reinterpret_cast<Function>(&symLoadModule64), &LibdwFunctions::canList},
      {"SymGetSearchPath", reinterpret_cast<Function>(&symGetSearchPath), &LibdwFunctions::canList},
  };
  count = sizeof kShims / sizeof *kShims;
  return kShims;
}

}  // namespace

void (*debugHelpFunction(LibdwFunctions const& libdw, char const* name))() {
  std::size_t count = 0;
  Shim const* const all = shims(count);
  Shim const* const found =
      std::find_if(all, all + count, [name](Shim const& shim) { return strcmp(shim.name, name) == 0; });
  return found != all + count && (libdw.*found->isAvailable)() ? found->function : nullptr;
}

}  // namespace platform
}  // namespace KV_1_1
