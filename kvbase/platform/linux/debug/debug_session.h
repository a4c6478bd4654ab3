// SPDX-License-Identifier: MIT
//
// What libdw knows about the modules of this process. It is kept until the library ends, so that the next walker finds
// what the last one has learnt. There are two sessions of libdw: one for the modules that are never unloaded, and one for
// the others, which is ended when any of them has been unloaded.
//
// Thread rule: everything but the two functions for the lock is called under the lock.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "kvbase/platform/debug_help.h"
#include "kvbase/platform/linux/debug/libdw.h"
#include "kvbase/platform/linux/debug/loaded_modules.h"
#include "kvbase/platform/linux/debug/module_lines.h"
#include "kvbase/platform/linux/debug/symbol_index.h"

namespace KV_1_1 {
namespace platform {

class DebugSession {
 public:
  struct Module {
    LoadedModule loaded;
    debug_help::ModuleInfo64 record = {};  // as callers get it, but for the type of its symbols
    bool isProgram = false;
    bool isOpen = false;  // its symbols have been asked for
    SymbolIndex symbols;  // read when it is opened
    ModuleLines lines;
    Dwfl* session = nullptr;  // of `handle`
    Dwfl_Module* handle = nullptr;
    std::vector<char> image;  // the contents, where its file cannot be used
  };

  static DebugSession& instance();
  DebugSession() = default;
  ~DebugSession();
  DebugSession(DebugSession const&) = delete;
  DebugSession& operator=(DebugSession const&) = delete;

  std::unique_lock<std::mutex> lock() { return std::unique_lock<std::mutex>(mutex_); }

  // Takes the library into use if it can list modules and none is in use yet. It stays loaded.
  void use(LibdwFunctions const& functions);
  // Begins the session of the permanent modules if there is none. False if that is not possible.
  bool begin();
  LibdwFunctions const& libdw() const { return libdw_; }

  // The module at an address; null if there is none. It is valid until the next call.
  Module* moduleAt(std::uint64_t address);
  // Forgets all modules but the permanent ones if any has been unloaded.
  void forgetUnloaded();
  // The number of times that modules have been forgotten.
  std::uint32_t generation() const { return generation_; }

  // The search path for files with debug data: folders separated by semicolons.
  void setSearchPath(char const* path);
  std::string const& searchPath() const { return searchPath_; }

  ulong32 options = 0;

 private:
  bool report();
  void report(std::vector<LoadedModule>& loaded, bool permanent);
  Module* knownModuleAt(std::uint64_t address);
  int findElf(std::uint64_t base, char** fileName, Elf** contents);
  int findDebugData(Dwfl_Module* handle, char const* file, char const* link, std::uint32_t checksum, char** path);
  static int findElfOf(Dwfl_Module*, void**, char const*, Dwarf_Addr base, char** fileName, Elf** contents);
  static int findDebugDataOf(Dwfl_Module* handle, void**, char const*, Dwarf_Addr, char const* file, char const* link,
                             GElf_Word checksum, char** path);
  static Dwfl_Callbacks const kCallbacks;

  std::mutex mutex_;
  void* library_ = nullptr;
  LibdwFunctions libdw_ = {};
  Dwfl* permanent_ = nullptr;
  Dwfl* others_ = nullptr;
  LoadCounts counts_;
  std::uint32_t generation_ = 1;
  // By address. Each has a place of its own, since libdw may call back while modules are added.
  std::vector<std::unique_ptr<Module>> modules_;
  std::string searchPath_;
};

}  // namespace platform
}  // namespace KV_1_1
