// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "kvbase/export.h"
#include "kvbase/platform/types.h"
#include "kvbase/text_unit.h"

class StackWalkerImpl;

// Walks the call stack of a thread. Each frame is resolved to symbol, source line and module, and handed to virtual
// callbacks, which print lines of text by default. A derived class overrides them:
//
//   class Printer : public StackWalker {
//     void OnOutput(char const* text) override { std::fputs(text, stdout); }
//   };
//   Printer().ShowCallstack(GetCurrentThread(), nullptr, nullptr, nullptr);
//
// The debug-help library is loaded at run time by the first walk: "dbghelp.dll" on Windows, libdw on Linux. Without it
// there are no walks, and nothing else is missing.
//
// Texts are narrow: bytes of the ANSI code page on Windows, of UTF-8 on Linux. Paths are those of the system.
//
// Failure: no exceptions of its own, also if memory runs out. What fails is told by OnDbgHelpErr, by the last error of
// the thread (1114: no usable library, 8: no memory) and by a result of 0. Exceptions of callbacks pass through a walk,
// which releases what it holds.
//
// Thread rule: one thread at a time may use a walker. All walkers share one read-memory routine, that of the latest
// ShowCallstack, so walks with different routines must not run at the same time. The debug-help library of Windows is
// made for one thread at a time, too.
class KVBASE_API StackWalker {
 public:
  // The option bits that have an effect. By default all of the six lowest bits are set.
  enum Option {
    // LoadModules reads the file version of each module for OnLoadModule.
    OptionFileVersion = 8,
    // LoadModules composes a search path for debug information; without it the library has a default of its own.
    OptionBuildSymbolPath = 16,
    OptionsDefault = 63
  };

  enum CallstackEntryType { EntryFirst = 0, EntryNext = 1, EntryLast = 2 };

  static constexpr int kTextCapacity = 1024;

  // A frame. Texts that are not known are empty; over-long ones are cut.
  struct CallstackEntry {
    unsigned long long address;               // the program counter; 0: no valid entry
    char name[kTextCapacity];                 // of the symbol, as it is stored
    char undecoratedName[kTextCapacity];      // without result and parameters: "N::C::method"
    char undecoratedFullName[kTextCapacity];  // the complete signature
    unsigned long long symbolDisplacement;    // bytes from the start of the symbol
    std::uint32_t lineDisplacement;           // bytes from the start of the line
    std::uint32_t lineNumber;
    char lineFileName[kTextCapacity];
    std::uint32_t symbolType;  // COMPAT: never filled; 0
    // COMPAT: "PDB", "DIA" and so on; like imageBase, it is that of the frame before if the module of this one is not
    // known. Null if none was known by now, and for a type without a text.
    char const* symbolTypeText;
    char moduleName[kTextCapacity];       // the short name
    unsigned long long imageBase;         // where the module is loaded
    char loadedImageName[kTextCapacity];  // the path of the module
  };

  // Reads memory for a walk: copies `size` bytes at `address` of the process, stores how many were copied and returns
  // whether that succeeded. `userData` is that of ShowCallstack.
  using ReadMemoryRoutine = int (*)(void* process, unsigned long long address, void* buffer, KV_1_1::ulong32 size,
                                    KV_1_1::ulong32* bytesRead, void* userData);

  // For a process, by default this one, of which `process` is a handle; on Linux only this process can be walked. Nothing
  // is loaded yet. The path, where debug information is searched for first, is copied; null: none. COMPAT: a path also sets
  // OptionBuildSymbolPath, whatever `options` says.
  explicit StackWalker(int options = OptionsDefault, char const* symbolPath = nullptr,
                       KV_1_1::ulong32 processId = currentProcessId(), void* process = currentProcess());
  // With the default options and no path.
  StackWalker(KV_1_1::ulong32 processId, void* process);
  // COMPAT: copies are shallow: both objects then own the same library and path, so only one of them may be destroyed.
  // Messages of loading go to the callbacks of the walker that was constructed, those of a walk to the walking one.
  StackWalker(StackWalker const& other);
  // COMPAT: shallow, too, and the library and the path of this object are not released.
  StackWalker& operator=(StackWalker const& other);
  // Ends the symbol handling of the process and releases the library.
  virtual ~StackWalker();

  // Loads the debug-help library and makes the modules of the process known to it, as the first walk does. Returns 1 if
  // that has been done, now or before. 0 on failure: without a usable library OnDbgHelpErr is called and the last error
  // is 1114; without memory for the search path it is 8; if no module could be listed it is not set. The next call then
  // tries everything again.
  //
  // The library is taken from "Debugging Tools for Windows" or "Debugging Tools for Windows 64-Bit" in the folder of
  // the environment variable ProgramFiles if it is there, unless there is a file with the program's path and ".local"
  // behind it; otherwise the system finds it.
  //
  // With OptionBuildSymbolPath, debug information is searched for in: the path of the constructor, the current folder,
  // the program's folder, the paths of the variables _NT_SYMBOL_PATH and _NT_ALTERNATE_SYMBOL_PATH, the folder of
  // SYSTEMROOT and its system32, and on the public server of Microsoft by way of the folder websymbols on the drive of
  // SYSTEMDRIVE. A path of 4096 bytes or more is cut.
  //
  // COMPAT: if the system gives no snapshot of the process's modules, the library of that service stays loaded.
  int LoadModules();

  // Walks the stack of `thread`, innermost frame first, and calls OnCallstackEntry for each frame. With a context the walk
  // starts there and the thread is left alone. Without one it starts here for the value of GetCurrentThread(); any other
  // thread (on Linux its id, from gettid, as a pointer) is suspended for the whole walk, callbacks included, so they must
  // not wait for it. A thread that is suspended inside malloc or the loader may hold what the walk needs, which then waits
  // for ever. COMPAT: a real handle of the calling thread counts as another thread, so on Windows it suspends the caller
  // for good; on Linux the thread cannot stop itself, and the result is 0.
  //
  // `readMemory` reads the stack; null: memory of the process is read. COMPAT: routine and `userData` stay in effect for
  // all walkers until the next call.
  //
  // Returns 1 if a walk was started, whatever became of it. 0 if there is no library (the last error is 1114), or the
  // registers of the thread cannot be read. If modules could not be listed, the walk is started all the same.
  //
  // A walk ends at a frame without return address: OnCallstackEntry gets that frame once more, as EntryLast, and the last
  // error is 0. It also ends if the next frame cannot be found, or its return address is its program counter; both are
  // told to OnDbgHelpErr, and there is no EntryLast. A symbol, line or module that is not found is told to OnDbgHelpErr,
  // too, and the walk goes on. COMPAT: the number of frames is not limited; a function that calls itself ends a walk,
  // because its frames have one address.
  int ShowCallstack(void* thread, _CONTEXT const* context, ReadMemoryRoutine readMemory, void* userData);

 protected:
  // Reads memory by the routine of the latest ShowCallstack, or else memory of the process. Walks read the stack by it.
  static int myReadProcMem(void* process, unsigned long long address, void* buffer, KV_1_1::ulong32 size,
                           KV_1_1::ulong32* bytesRead);

  // The callbacks. The default forms print one line each, two for OnSymInit, by calling OnOutput; lines end with a line
  // feed. A line of 1024 bytes or more is cut after 1023, so it has no line feed. Addresses are printed as the system
  // prints pointers: 16 upper-case hexadecimal digits on Windows, 0x and lower-case ones, (nil) for 0, on Linux.
  // REQUIRES: OnSymInit and OnLoadModule, and OnDbgHelpErr during LoadModules, start no walk of this walker: it would load
  // again, without end.
  //
  // The library has been loaded.
  //   SymInit: Symbol-SearchPath: '.;C:\tools;', symOptions: 530, UserName: 'ann'
  //   OS-Version: 6.1.7601 (Service Pack 1) 0x0-0x1
  virtual void OnSymInit(char const* searchPath, KV_1_1::ulong32 symOptions, char const* userName);
  // A module has been made known: path, short name, address, size; the error code or 0; kind and file of its debug
  // information; its file version, 16 bits for each of the four parts, highest first, 0 if not known.
  //   C:\tools\a.exe:a.exe (0000000140000000), size: 8192 (result: 0), SymType: 'DIA', PDB: '', fileVersion: 1.2.3.4
  virtual void OnLoadModule(char const* image, char const* module, unsigned long long base, KV_1_1::ulong32 size,
                            KV_1_1::ulong32 result, char const* symType, char const* pdbName,
                            unsigned long long fileVersion);
  // A frame. The default form prints nothing for EntryLast and for the address 0. COMPAT: it changes the entry: the name
  // becomes the fullest form that is known, missing texts are replaced by "(function-name not available)" and so on.
  //   C:\tools\a.cpp (12): main
  //   0000000140001000 (a): (filename not available): main
  virtual void OnCallstackEntry(CallstackEntryType type, CallstackEntry& entry);
  // Something failed: the function, the last error, and the program counter or 0.
  //   ERROR: SymGetLineFromAddr64, GetLastError: 487 (Address: 0000000140001000)
  virtual void OnDbgHelpErr(char const* function, KV_1_1::ulong32 lastError, unsigned long long address);
  // Writes a text to the debug channel: that of the debugger on Windows, the system log on Linux.
  virtual void OnOutput(char const* text);

  StackWalkerImpl* impl;  // the loaded library; null if there was no memory for it
  void* process;
  KV_1_1::ulong32 processId;
  int modulesLoaded;  // 1 once LoadModules has succeeded
  char* symbolPath;   // a copy; null: none
  int options;
  int spare = 0;  // COMPAT: copied, otherwise without use

 private:
  friend class StackWalkerImpl;

  static KV_1_1::ulong32 currentProcessId();
  static void* currentProcess();

  static ReadMemoryRoutine currentReadMemory;
  static void* currentUserData;
};
