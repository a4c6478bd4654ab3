// SPDX-License-Identifier: MIT
//
// Modules of the process are listed by one of two services and made known to the debug-help library.
#include <cstring>

#include "kvbase/diagnostics/internal/narrow_copy.h"
#include "kvbase/diagnostics/internal/stack_walker_impl.h"
#include "kvbase/diagnostics/internal/symbol_type_text.h"
#include "kvbase/platform/debug_api.h"
#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/module_api.h"
#include "kvbase/platform/scoped_handle.h"

namespace platform = KV_1_1::platform;
namespace debug_help = KV_1_1::platform::debug_help;
using KV_1_1::ulong32;
using KV_1_1::wchar;
using namespace KV_1_1::diagnostics;

namespace {

// Each of the blocks in which psapi lists handles and writes names.
constexpr ulong32 kPsapiCapacity = 8096;

struct LibraryTraits {
  using Value = HINSTANCE;
  static Value none() { return nullptr; }
  static void close(Value library) { platform::debug().freeLibrary(library); }
};
using Library = platform::ScopedHandle<LibraryTraits>;

struct SnapshotTraits {
  using Value = void*;
  static Value none() { return reinterpret_cast<void*>(static_cast<std::intptr_t>(-1)); }
  static void close(Value snapshot) { platform::debug().closeHandle(snapshot); }
};
using Snapshot = platform::ScopedHandle<SnapshotTraits>;

template <class Function>
bool load(Function& function, Library const& library, char const* name) {
  function = reinterpret_cast<Function>(platform::debug().function(library.get(), name));
  return function != nullptr;
}

struct SnapshotService {
  Library library;
  debug_help::CreateToolhelp32Snapshot create = nullptr;
  debug_help::Module32First first = nullptr;
  debug_help::Module32Next next = nullptr;

  // False, with nothing loaded, if no library has the service.
  bool find() {
    for (wchar const* const name : {KVW("kernel32.dll"), KVW("tlhelp32.dll")}) {
      library = Library(platform::debug().loadLibrary(name));
      if (library && loadFunctions()) return true;
    }
    library = Library();
    return false;
  }

 private:
  bool loadFunctions() {
    bool const hasCreate = load(create, library, "CreateToolhelp32Snapshot");
    bool const hasFirst = load(first, library, "Module32First");
    return load(next, library, "Module32Next") && hasFirst && hasCreate;
  }
};

struct PsapiService {
  Library library;
  debug_help::EnumProcessModules enumerate = nullptr;
  debug_help::GetModuleFileNameExA fileName = nullptr;
  debug_help::GetModuleBaseNameA baseName = nullptr;
  debug_help::GetModuleInformation information = nullptr;

  bool find() {
    library = Library(platform::debug().loadLibrary(KVW("psapi.dll")));
    if (!library) return false;
    bool const hasEnumerate = load(enumerate, library, "EnumProcessModules");
    bool const hasFileName = load(fileName, library, "GetModuleFileNameExA");
    bool const hasBaseName = load(baseName, library, "GetModuleBaseNameA");
    return load(information, library, "GetModuleInformation") && hasEnumerate && hasFileName && hasBaseName;
  }
};

std::uint64_t addressOf(void const* pointer) {
  return static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(pointer));
}

std::uint32_t readAt(void const* record, std::size_t offset) {
  std::uint32_t value = 0;
  std::memcpy(&value, static_cast<char const*>(record) + offset, sizeof value);
  return value;
}

// The file version of a module, 16 bits for each part; 0 if it has none or it cannot be read.
std::uint64_t fileVersionOf(char const* image) {
  // Where the fixed part of a version resource has the two halves.
  constexpr std::size_t kHigh = 8;
  constexpr std::size_t kLow = 12;

  ulong32 const size = platform::debug().versionInfoSize(image);
  HeapText const block = size != 0 ? allocateText(size) : nullptr;
  void const* fixed = nullptr;
  ulong32 length = 0;
  bool const found = block != nullptr && platform::debug().versionInfo(image, size, block.get()) &&
                     platform::modules().queryVersion(block.get(), KVW("\\"), fixed, length);
  if (!found || fixed == nullptr || length < kLow + sizeof(std::uint32_t)) return 0;
  return std::uint64_t{readAt(fixed, kHigh)} << 32 | readAt(fixed, kLow);
}

}  // namespace

bool StackWalkerImpl::loadModulesThroughSnapshot(void* walkedProcess, ulong32 processId) {
  SnapshotService service;
  if (!service.find()) return false;
  Snapshot const snapshot(service.create(debug_help::kSnapshotModules, processId));
  if (!snapshot) {
    service.library.release();
    return false;
  }
  debug_help::ModuleEntry32 entry = {};
  entry.size = sizeof entry;
  int count = 0;
  for (bool more = service.first(snapshot.get(), &entry) != 0; more; more = service.next(snapshot.get(), &entry) != 0) {
    entry.path[sizeof entry.path - 1] = entry.moduleName[sizeof entry.moduleName - 1] = 0;
    loadModule(walkedProcess, entry.path, entry.moduleName, addressOf(entry.baseAddress), entry.baseSize);
    ++count;
  }
  return count > 0;
}

bool StackWalkerImpl::loadModulesThroughPsapi(void* walkedProcess) {
  PsapiService service;
  if (!service.find()) return false;
  constexpr ulong32 kHandleSize = sizeof(void*);
  std::unique_ptr<HINSTANCE[]> const modules(new (std::nothrow) HINSTANCE[kPsapiCapacity / kHandleSize]);
  HeapText const image = allocateText(kPsapiCapacity);
  HeapText const name = allocateText(kPsapiCapacity);
  if (modules == nullptr || image == nullptr || name == nullptr) return false;
  ulong32 needed = 0;
  if (service.enumerate(walkedProcess, modules.get(), kPsapiCapacity, &needed) == 0 || needed > kPsapiCapacity)
    return false;
  std::size_t const count = needed / kHandleSize;
  for (std::size_t i = 0; i < count; ++i) {
    // What cannot be had is empty, not that of the module before.
    debug_help::ModuleInformation information = {};
    image[0] = name[0] = 0;
    service.information(walkedProcess, modules[i], &information, sizeof information);
    service.fileName(walkedProcess, modules[i], image.get(), kPsapiCapacity);
    service.baseName(walkedProcess, modules[i], name.get(), kPsapiCapacity);
    image[kPsapiCapacity - 1] = name[kPsapiCapacity - 1] = 0;
    ulong32 const result =
        loadModule(walkedProcess, image.get(), name.get(), addressOf(information.base), information.size);
    if (result != 0) parent->OnDbgHelpErr("LoadModule", result, 0);
  }
  return count > 0;
}

ulong32 StackWalkerImpl::loadModule(void* walkedProcess, char const* image, char const* module, std::uint64_t base,
                                    ulong32 size) {
  // The library gets copies: its interface of old does not promise to leave the texts alone.
  HeapText const imageCopy = duplicate(image);
  HeapText const moduleCopy = duplicate(module);
  ulong32 result = 0;
  if (imageCopy == nullptr || moduleCopy == nullptr) {
    result = platform::kNotEnoughMemory;
  } else if (symLoadModule(walkedProcess, nullptr, imageCopy.get(), moduleCopy.get(), base, size) == 0) {
    result = platform::errors().lastError();
  }
  if (parent == nullptr) return result;
  bool const wantsVersion = imageCopy != nullptr && (parent->options & StackWalker::OptionFileVersion) != 0;
  std::uint64_t const version = wantsVersion ? fileVersionOf(imageCopy.get()) : 0;
  ModuleInfo info = {};
  bool const known = getModuleInfo(walkedProcess, base, info);
  char pdbName[sizeof info.loadedImageName] = "";
  if (known) copyText(pdbName, info.loadedImageName);
  parent->OnLoadModule(image, module, base, size, result,
                       known ? symbolTypeWhileLoading(info.symbolType) : symbolTypeWhileLoading(-1), pdbName, version);
  return result;
}
