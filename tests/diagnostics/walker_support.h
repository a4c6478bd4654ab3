// SPDX-License-Identifier: MIT
//
// A walker that records its callbacks, and a test with a scripted debug-help library.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kvbase/diagnostics/stack_walker.h"
#include "tests/support/scripted_debug_help.h"
#include "tests/support/scripted_errors.h"
#include "tests/support/scripted_files.h"
#include "tests/support/scripted_modules.h"

namespace KV_1_1 {
namespace testing {

using Texts = std::vector<std::string>;

//   OnSymInit path|530|ann
//   OnLoadModule image|module|base|size|result|type|pdb|version
//   EntryFirst 4096
//   OnDbgHelpErr StackWalk64|487|4096
class RecordingWalker : public StackWalker {
 public:
  using StackWalker::StackWalker;
  using Member = StackWalker;

  Texts log;
  std::vector<CallstackEntry> entries;

  // Those that begin with a word.
  Texts logged(std::string const& word) const {
    Texts found;
    for (std::string const& text : log) {
      if (text.compare(0, word.size(), word) == 0) found.push_back(text);
    }
    return found;
  }
  int walk() { return ShowCallstack(GetCurrentThread(), nullptr, nullptr, nullptr); }

  int optionBits() const { return options; }
  int spareValue() const { return spare; }
  void setSpare(int value) { spare = value; }
  char const* path() const { return symbolPath; }
  StackWalkerImpl* implementation() const { return impl; }
  // Gives up what a shallow copy owns, too.
  void disown() {
    impl = nullptr;
    symbolPath = nullptr;
  }
  using StackWalker::myReadProcMem;

 protected:
  void OnSymInit(char const* searchPath, ulong32 symOptions, char const* userName) override {
    add("OnSymInit ", searchPath, symOptions, userName);
  }
  void OnLoadModule(char const* image, char const* module, unsigned long long base, ulong32 size, ulong32 result,
                    char const* symType, char const* pdbName, unsigned long long fileVersion) override {
    add("OnLoadModule ", image, module, base, size, result, symType, pdbName, fileVersion);
  }
  void OnCallstackEntry(CallstackEntryType type, CallstackEntry& entry) override {
    constexpr char const* kNames[] = {"EntryFirst ", "EntryNext ", "EntryLast "};
    add(kNames[type], entry.address);
    if (keepsEntries) entries.push_back(entry);
  }
  void OnDbgHelpErr(char const* function, ulong32 lastError, unsigned long long address) override {
    add("OnDbgHelpErr ", function, lastError, address);
  }
  void OnOutput(char const* text) override { add("OnOutput ", text); }

 private:
  static std::string shown(char const* text) { return text; }
  template <class Number>
  static std::string shown(Number number) {
    return std::to_string(number);
  }
  template <class First, class... Others>
  void add(char const* callback, First first, Others... others) {
    std::string text = callback + shown(first);
    ((text += '|', text += shown(others)), ...);
    log.push_back(text);
  }

 public:
  bool keepsEntries = true;
};

class ScriptedWalk : public ::testing::Test {
 protected:
  // The callbacks with which a walk begins, and LoadModules, if the script says nothing else.
  static Texts started() { return {"OnSymInit path in effect|530|ann", loadedTool()}; }
  static std::string loadedTool() { return "OnLoadModule C:\\app\\tool.exe|tool.exe|4194304|8192|0|-unknown-||0"; }
  // Those callbacks followed by `further`.
  static Texts after(Texts const& further) {
    Texts all = started();
    all.insert(all.end(), further.begin(), further.end());
    return all;
  }
  Texts calls(std::string const& word) const {
    Texts found;
    for (std::string const& text : help.log) {
      if (text.compare(0, word.size(), word) == 0) found.push_back(text);
    }
    return found;
  }

  ScriptedErrors errors;
  ScriptedDebugHelp help;
  ScriptedFiles files;
  ScriptedModules modules;

 private:
  platform::ScopedBackend<platform::ErrorApi> errorScope_{errors};
  platform::ScopedBackend<platform::DebugApi> debugScope_{help};
  platform::ScopedBackend<platform::FileApi> fileScope_{files};
  platform::ScopedBackend<platform::ModuleApi> moduleScope_{modules};
};

}  // namespace testing
}  // namespace KV_1_1
