// SPDX-License-Identifier: MIT
//
// Debugging services that return what the test says and record each call.
//
//   ScriptedDebug debug;
//   debug.answer = platform::kAnswerIgnore;
//   debug.libraries["psapi.dll"]["EnumProcessModules"] = reinterpret_cast<ScriptedDebug::Function>(&enumerate);
//   debug.variables["SYSTEMDRIVE"] = "C:";
//   debug.userNameText.reset();                       // userName fails
//   platform::ScopedBackend<platform::DebugApi> scope(debug);
//   EXPECT_EQ(debug.log, Log({"loadLibrary psapi.dll", ...}));
//
// What the script does not name is missing. With `recording` off it does not allocate but for the texts that it returns.
#pragma once

#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "kvbase/platform/debug_api.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {

class ScriptedDebug : public platform::DebugApi {
 public:
  using Log = std::vector<std::string>;
  using Function = void (*)();
  using Functions = std::map<std::string, Function, std::less<>>;
  template <class Value>
  using ByName = std::map<std::string, Value, std::less<>>;

  virtual ~ScriptedDebug() = default;

  Log log;  // the method's name and its arguments, texts as they are
  bool recording = true;

  // --- The channel, the question and the debugger ---
  std::vector<std::string> outputs;  // everything written to the channel, as UTF-8
  int answer = 0;                    // the result of ask
  int breaks = 0;

  // --- Libraries ---
  std::map<wstring, Functions, std::less<>> libraries;
  std::map<HINSTANCE, int> loaded;  // how often each library is loaded at present
  int openHandles = 0;              // snapshots and so on; what opens one counts it

  // --- Threads ---
  void* const process = handle(0x11);
  ulong32 const processId = 4711;
  void* const thread = handle(0x22);
  bool suspends = true;                  // suspendThread
  bool readsContext = true;              // threadContext
  int resumed = 0;                       // the calls of resumeThread
  _CONTEXT threadRegisters{};            // the result of threadContext and of contextCapture, but for the flags
  static inline ulong32 flagsAsked = 0;  // the flags that either was called with

  // --- Memory ---
  std::uint64_t memoryAddress = 0;
  std::string memory;

  // --- Texts ---
  std::optional<wstring> programPathText = KVW("C:\\app\\tool.exe");
  std::optional<std::string> narrowProgramPath = "C:\\app\\tool.exe";
  std::optional<std::string> currentDirectoryText = "C:\\work";
  std::optional<std::string> userNameText = "ann";
  ByName<std::string> variables;  // asked for with narrow names
  std::map<wstring, wstring, std::less<>> wideVariables;
  std::optional<platform::SystemVersion> version;
  ByName<std::string> versionBlocks;  // by file
  bool readsVersions = true;          // versionInfo

  // The handle of a library of the script.
  HINSTANCE library(wchar const* name) {
    auto const found = libraries.find(wstring(name));
    return found == libraries.end() ? nullptr : reinterpret_cast<HINSTANCE>(&*found);
  }
  // Whether everything that was loaded has been freed.
  bool allFreed() const {
    for (auto const& entry : loaded) {
      if (entry.second != 0) return false;
    }
    return openHandles == 0;
  }
  // How often a method has been called.
  int calls(std::string const& method) const {
    int count = 0;
    for (std::string const& entry : log) count += entry.compare(0, entry.find(' '), method) == 0 ? 1 : 0;
    return count;
  }
  template <class... Parts>
  void note(Parts const&... parts) {
    if (!recording) return;
    std::string entry;
    (append(entry, parts), ...);
    log.push_back(entry);
  }

  void output(char const* text) override {
    if (recording) outputs.push_back(text);
  }
  void output(wchar const* text) override {
    if (recording) outputs.push_back(narrow(text));
  }
  int ask(wchar const* message, wchar const* title, ulong32 style) override {
    note("ask ", title, "|", message, "|", style);
    return answer;
  }
  void breakIntoDebugger() override {
    note("breakIntoDebugger");
    ++breaks;
  }

  HINSTANCE loadLibrary(wchar const* path) override {
    note("loadLibrary ", path);
    for (auto& library : libraries) {
      if (library.first != path) continue;
      auto* const handle = reinterpret_cast<HINSTANCE>(&library);
      ++loaded[handle];
      return handle;
    }
    return nullptr;
  }
  void (*function(HINSTANCE library, char const* name))() override {
    note("function ", name);
    Functions const& functions = recordOf(library).second;
    auto const found = functions.find(name);
    return found == functions.end() ? nullptr : found->second;
  }
  bool freeLibrary(HINSTANCE library) override {
    note("freeLibrary ", recordOf(library).first);
    return --loaded[library] >= 0;
  }
  bool closeHandle(void*) override {
    note("closeHandle");
    return --openHandles >= 0;
  }

  void* currentProcess() override { return process; }
  ulong32 currentProcessId() override { return processId; }
  void* currentThread() override { return handle(-2); }
  ulong32 suspendThread(void* asked) override {
    note("suspendThread ", nameOf(asked));
    return suspends ? 0 : 0xFFFFFFFF;
  }
  ulong32 resumeThread(void* asked) override {
    note("resumeThread ", nameOf(asked));
    ++resumed;
    return 0;
  }
  bool threadContext(void* asked, _CONTEXT& context) override {
    note("threadContext ", nameOf(asked));
    flagsAsked = context.ContextFlags;
    if (readsContext) context = threadRegisters;
    return readsContext;
  }
  void (*contextCapture())(_CONTEXT* context) override {
    note("contextCapture");
    captured() = threadRegisters;
    return [](_CONTEXT* context) {
      flagsAsked = context->ContextFlags;
      *context = captured();
    };
  }
  bool readMemory(void*, std::uint64_t address, void* buffer, std::size_t size, std::size_t& bytesRead) override {
    note("readMemory ", address, " ", size);
    bytesRead = 0;
    if (address < memoryAddress || address > memoryAddress + memory.size()) return false;
    bytesRead = memory.copy(static_cast<char*>(buffer), size, static_cast<std::size_t>(address - memoryAddress));
    return bytesRead == size;
  }

  bool programPath(wstring& path) override { return give(programPathText, path); }
  bool programPath(std::string& path) override { return give(narrowProgramPath, path); }
  bool currentDirectory(std::string& path) override { return give(currentDirectoryText, path); }
  bool environmentVariable(wchar const* name, wstring& value) override {
    note("environmentVariable ", name);
    return lookUp(wideVariables, name, value);
  }
  bool environmentVariable(char const* name, std::string& value) override {
    note("environmentVariable ", name);
    return lookUp(variables, name, value);
  }
  bool userName(std::string& name) override { return give(userNameText, name); }
  bool systemVersion(platform::SystemVersion& found) override {
    if (version) found = *version;
    return version.has_value();
  }
  ulong32 versionInfoSize(char const* file) override {
    note("versionInfoSize ", file);
    auto const found = versionBlocks.find(file);
    return found == versionBlocks.end() ? 0 : static_cast<ulong32>(found->second.size());
  }
  bool versionInfo(char const* file, ulong32 size, void* block) override {
    note("versionInfo ", file, " ", size);
    auto const found = versionBlocks.find(file);
    if (!readsVersions || found == versionBlocks.end()) return false;
    std::memcpy(block, found->second.data(), size);
    return true;
  }

  static void* handle(std::intptr_t value) { return reinterpret_cast<void*>(value); }

 private:
  using Library = std::map<wstring, Functions, std::less<>>::value_type;

  static Library& recordOf(HINSTANCE library) { return *reinterpret_cast<Library*>(library); }
  static _CONTEXT& captured() {
    static _CONTEXT registers;
    return registers;
  }

  char const* nameOf(void* asked) const { return asked == thread ? "other" : asked == handle(-2) ? "self" : "unknown"; }
  static void append(std::string& entry, char const* text) { entry += text == nullptr ? "(null)" : text; }
  static void append(std::string& entry, std::string const& text) { entry += text; }
  static void append(std::string& entry, wchar const* text) { entry += text == nullptr ? "(null)" : narrow(text); }
  static void append(std::string& entry, wstring const& text) { entry += narrow(text); }
  template <class Number>
  static void append(std::string& entry, Number number) {
    entry += std::to_string(number);
  }

  template <class Text>
  static bool give(std::optional<Text> const& script, Text& text) {
    if (script) text = *script;
    return script.has_value();
  }
  template <class Map, class Unit, class Text>
  static bool lookUp(Map const& script, Unit const* name, Text& value) {
    auto const found = script.find(name);
    if (found == script.end()) return false;
    value = found->second;
    return true;
  }
};

}  // namespace testing
}  // namespace KV_1_1
