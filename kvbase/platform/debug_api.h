// SPDX-License-Identifier: MIT
//
// The seam to what a program asks about itself when something has gone wrong: the debug channel, a question to the user,
// the state of its threads, its memory, and the libraries that know its symbols.
//
// Texts here are narrow: bytes of the ANSI code page on Windows, of UTF-8 on Linux. Paths are those of the system.
//
// Thread rule: any method may be called from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "kvbase/platform/backend.h"
#include "kvbase/platform/types.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

// Texts given to the debugging services have fewer bytes than this; the terminator is counted.
constexpr std::size_t kDebugTextCapacity = 1024;

// The answers to a question, and its style: abort, retry or ignore, with the sign of an error, in front of the
// program's windows.
constexpr int kAnswerAbort = 3;
constexpr int kAnswerRetry = 4;
constexpr int kAnswerIgnore = 5;
constexpr ulong32 kAbortRetryIgnore = 0x12012;

struct SystemVersion {
  ulong32 major = 0;
  ulong32 minor = 0;
  ulong32 build = 0;
  std::string servicePack;
  std::uint16_t suiteMask = 0;
  std::uint8_t productType = 0;
};

class DebugApi {
 public:
  // Writes a text to the debug channel: that of the debugger on Windows, the system log on Linux.
  virtual void output(char const* text) = 0;
  virtual void output(wchar const* text) = 0;
  // Shows a message and waits for the answer. Anything else than one of the three answers: the question could not be put.
  virtual int ask(wchar const* message, wchar const* title, ulong32 style) = 0;
  // Stops in the debugger; without one the process ends as the system decides.
  virtual void breakIntoDebugger() = 0;

  // Loads a library of the debugging services: a path, or the bare name "dbghelp.dll", "kernel32.dll", "tlhelp32.dll" or
  // "psapi.dll". Null if there is none. Linux has the first two bare names: the library of its own that does the same
  // service stands behind them, and nothing is found if that is missing. Must be released with freeLibrary.
  virtual HINSTANCE loadLibrary(wchar const* path) = 0;
  // A function of such a library, with the type that debug_help.h gives for its name; null if it has none.
  virtual void (*function(HINSTANCE library, char const* name))() = 0;
  virtual bool freeLibrary(HINSTANCE library) = 0;
  // Closes a snapshot (debug_help::CreateToolhelp32Snapshot).
  virtual bool closeHandle(void* handle) = 0;

  // The handles of this process and of the calling thread; both are constants that stand for whoever uses them.
  virtual void* currentProcess() = 0;
  virtual ulong32 currentProcessId() = 0;
  virtual void* currentThread() = 0;
  // Stops and continues another thread. The results are the counts of suspensions before, or 0xFFFFFFFF on failure;
  // resuming the calling thread has no effect.
  virtual ulong32 suspendThread(void* thread) = 0;
  virtual ulong32 resumeThread(void* thread) = 0;
  // The registers of a suspended thread. `context` has its flags set (debug_help::kContextFull).
  virtual bool threadContext(void* thread, _CONTEXT& context) = 0;
  // The function that stores the registers that its caller has after the call. It is called through the pointer, since
  // the registers of any other frame would be of no use.
  virtual void (*contextCapture())(_CONTEXT* context) = 0;
  // Copies memory of a process. False if not all of it can be read; `bytesRead` says how much was.
  virtual bool readMemory(void* process, std::uint64_t address, void* buffer, std::size_t size,
                          std::size_t& bytesRead) = 0;

  // The path of the program, by the two kinds of text. False on failure; the text is then unchanged.
  virtual bool programPath(wstring& path) = 0;
  virtual bool programPath(std::string& path) = 0;
  virtual bool currentDirectory(std::string& path) = 0;
  // A variable of the environment. False if it is not set, is empty, or does not fit: a narrow value into
  // kDebugTextCapacity, a wide one, on Windows, into 4096 units. The text is then unchanged.
  virtual bool environmentVariable(wchar const* name, wstring& value) = 0;
  virtual bool environmentVariable(char const* name, std::string& value) = 0;
  virtual bool userName(std::string& name) = 0;
  virtual bool systemVersion(SystemVersion& version) = 0;

  // The size of the version resource of a file, 0 if there is none, and a copy of it, for ModuleApi::queryVersion.
  virtual ulong32 versionInfoSize(char const* file) = 0;
  virtual bool versionInfo(char const* file, ulong32 size, void* block) = 0;

 protected:
  // Backends are never destroyed through this interface.
  ~DebugApi() = default;
};

}  // namespace platform
}  // namespace KV_1_1
