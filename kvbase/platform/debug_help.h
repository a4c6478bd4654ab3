// SPDX-License-Identifier: MIT
//
// The functions of the debug-help library and of the services that list modules, as they are found at run time by
// library and name, and the records that they fill. They have the layout and the names that they have on Windows, in a
// namespace of their own, so that the same code calls them on every system: off Windows the backend gives functions of
// the same form (see debug_api.h).
#pragma once

#include <cstdint>

#include "kvbase/platform/types.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {
namespace debug_help {

// Results that are true or false, as on Windows.
using Bool = int;

constexpr ulong32 kMachineX64 = 0x8664;
constexpr ulong32 kContextFull = 0x10000b;
constexpr int kFlatAddress = 3;
constexpr ulong32 kUndecorateNameOnly = 0x1000;
constexpr ulong32 kUndecorateComplete = 0;
constexpr ulong32 kSnapshotModules = 8;

struct Address64 {
  std::uint64_t offset;
  std::uint16_t segment;
  int mode;
};

struct StackFrame64 {
  Address64 programCounter;
  Address64 returnAddress;
  Address64 frame;
  Address64 stack;
  Address64 backingStore;
  void* functionTableEntry;
  std::uint64_t parameters[4];
  Bool far_;
  Bool virtual_;
  std::uint64_t reserved[3];
  std::uint64_t kernelHelp[14];
};

struct Symbol64 {
  ulong32 sizeOfStruct;  // 32
  std::uint64_t address;
  ulong32 size;
  ulong32 flags;
  ulong32 maxNameLength;
  char name[1];
};

struct Line64 {
  ulong32 sizeOfStruct;  // 40
  void* key;
  ulong32 lineNumber;
  char* fileName;
  std::uint64_t address;
};

// The first 584 bytes of the record, which is the size that is asked for.
struct ModuleInfo64 {
  ulong32 sizeOfStruct;  // 584
  std::uint64_t baseOfImage;
  ulong32 imageSize;
  ulong32 timeDateStamp;
  ulong32 checkSum;
  ulong32 symbolCount;
  int symbolType;
  char moduleName[32];
  char imageName[256];
  char loadedImageName[256];
};

struct ModuleEntry32 {
  ulong32 size;  // 568
  ulong32 moduleId;
  ulong32 processId;
  ulong32 globalUsage;
  ulong32 processUsage;
  unsigned char* baseAddress;
  ulong32 baseSize;
  HINSTANCE module;
  char moduleName[256];
  char path[260];
};

struct ModuleInformation {
  void* base;
  ulong32 size;
  void* entryPoint;
};

static_assert(sizeof(StackFrame64) == 264, "as on Windows");
static_assert(sizeof(Symbol64) == 32 && sizeof(Line64) == 40, "as on Windows");
static_assert(sizeof(ModuleInfo64) == 584, "as on Windows");
static_assert(sizeof(ModuleEntry32) == 568 && sizeof(ModuleInformation) == 24, "as on Windows");

using ReadProcessMemory64 = Bool (*)(void* process, std::uint64_t address, void* buffer, ulong32 size,
                                     ulong32* bytesRead);
using FunctionTableAccess64 = void* (*)(void* process, std::uint64_t address);
using GetModuleBase64 = std::uint64_t (*)(void* process, std::uint64_t address);
using TranslateAddress64 = std::uint64_t (*)(void* process, void* thread, Address64* address);

// The functions of "dbghelp.dll".
using SymInitialize = Bool (*)(void* process, char const* searchPath, Bool invadeProcess);
using SymCleanup = Bool (*)(void* process);
using StackWalk64 = Bool (*)(ulong32 machine, void* process, void* thread, StackFrame64* frame, void* context,
                             ReadProcessMemory64 readMemory, FunctionTableAccess64 functionTable,
                             GetModuleBase64 moduleBase, TranslateAddress64 translate);
using SymGetOptions = ulong32 (*)();
using SymSetOptions = ulong32 (*)(ulong32 options);
using SymFunctionTableAccess64 = FunctionTableAccess64;
using SymGetLineFromAddr64 = Bool (*)(void* process, std::uint64_t address, ulong32* displacement, Line64* line);
using SymGetModuleBase64 = GetModuleBase64;
using SymGetModuleInfo64 = Bool (*)(void* process, std::uint64_t address, ModuleInfo64* info);
using SymGetSymFromAddr64 = Bool (*)(void* process, std::uint64_t address, std::uint64_t* displacement,
                                     Symbol64* symbol);
using UnDecorateSymbolName = ulong32 (*)(char const* name, char* output, ulong32 capacity, ulong32 flags);
using SymLoadModule64 = std::uint64_t (*)(void* process, void* file, char const* image, char const* module,
                                          std::uint64_t base, ulong32 size);
using SymGetSearchPath = Bool (*)(void* process, char* path, ulong32 capacity);

// The functions of "kernel32.dll" or "tlhelp32.dll".
using CreateToolhelp32Snapshot = void* (*)(ulong32 flags, ulong32 processId);
using Module32First = Bool (*)(void* snapshot, ModuleEntry32* entry);
using Module32Next = Bool (*)(void* snapshot, ModuleEntry32* entry);

// The functions of "psapi.dll".
using EnumProcessModules = Bool (*)(void* process, HINSTANCE* modules, ulong32 size, ulong32* needed);
using GetModuleInformation = Bool (*)(void* process, HINSTANCE module, ModuleInformation* information, ulong32 size);
using GetModuleFileNameExA = ulong32 (*)(void* process, HINSTANCE module, char* name, ulong32 capacity);
using GetModuleBaseNameA = ulong32 (*)(void* process, HINSTANCE module, char* name, ulong32 capacity);

}  // namespace debug_help
}  // namespace platform
}  // namespace KV_1_1
