// SPDX-License-Identifier: MIT
//
// ScriptedDebug with a debug-help library and the two services that list modules. A stack is a list of frames; symbols,
// lines and modules are found by exact address. It records each call.
//
//   ScriptedDebugHelp help;
//   help.frames = {{0x1000, 0x2000}, {0x2000, 0}};      // program counter and return address
//   help.symbols[0x1000] = {"_Z3runv", "run", "run()", 5};
//   help.lines[0x1000] = {"run.cpp", 12, 3};
//   help.modules[0x1000] = moduleInfo(3, "tool", 0x400000, "C:\\app\\tool.exe");
//   help.remove(KVW("dbghelp.dll"), "SymGetLineFromAddr64");
//   platform::ScopedBackend<platform::DebugApi> scope(help);
//
// One object at a time.
#pragma once

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "kvbase/platform/debug_help.h"
#include "kvbase/platform/error_api.h"
#include "tests/support/scripted_debug.h"

namespace KV_1_1 {
namespace testing {

template <std::size_t kSize>
void store(char (&field)[kSize], std::string const& text) {
  std::memset(field, 0, kSize);
  std::memcpy(field, text.data(), text.size() < kSize ? text.size() : kSize);
}

inline platform::debug_help::ModuleInfo64 moduleInfo(int symbolType, std::string const& name, std::uint64_t base,
                                                     std::string const& loadedImageName) {
  platform::debug_help::ModuleInfo64 info = {};
  info.symbolType = symbolType;
  info.baseOfImage = base;
  store(info.moduleName, name);
  store(info.loadedImageName, loadedImageName);
  return info;
}

class ScriptedDebugHelp : public ScriptedDebug {
 public:
  struct Frame {
    std::uint64_t programCounter;
    std::uint64_t returnAddress;
  };
  struct Symbol {
    std::string name;
    std::string undecorated;
    std::string complete;
    std::uint64_t displacement = 0;
  };
  struct Line {
    std::string file;
    ulong32 number;
    ulong32 displacement = 0;
    bool hasFile = true;
  };
  struct Module {
    std::string path;
    std::string name;
    std::uint64_t base;
    ulong32 size;
  };

  ScriptedDebugHelp();
  ~ScriptedDebugHelp() override;

  // Takes a function out of a library.
  void remove(wchar const* library, char const* function) { libraries.at(library).erase(function); }

  // --- The debug-help library ---
  bool initializes = true;
  bool hasSearchPath = true;
  std::string searchPath = "path in effect";
  ulong32 symOptions = 2;
  ulong32 optionsAfterSetting = 0;  // 0: what was set
  ulong32 error = 487;              // of whatever fails
  std::vector<Frame> frames;
  bool endless = false;  // the last frame again and again
  std::map<std::uint64_t, Symbol> symbols;
  std::map<std::uint64_t, Line> lines;
  std::map<std::uint64_t, platform::debug_help::ModuleInfo64> modules;
  std::map<std::string, ulong32, std::less<>> loadErrors;  // by path; by default a module is loaded
  // If set, StackWalk64 reads 4 bytes at this address by the routine it was given, and stores what came of it.
  std::uint64_t readsAt = 0;
  int readResult = -1;
  std::string bytesRead;
  platform::debug_help::StackFrame64 firstFrame{};  // as it came to the first step
  _CONTEXT firstContext{};
  void* contextGiven = nullptr;
  std::size_t steps = 0;

  // --- The snapshot service ---
  bool takesSnapshot = true;
  std::vector<Module> snapshot;

  // --- psapi ---
  bool enumerates = true;
  std::vector<Module> listed;
  ulong32 needed = 0;        // bytes that the service says it needs; 0: those of `listed`
  bool knowsModules = true;  // whether information and names of a handle can be had

  bool fail() {
    platform::errors().setLastError(error);
    return false;
  }
  static ScriptedDebugHelp& active();

  std::size_t nextModule = 0;
};

}  // namespace testing
}  // namespace KV_1_1
