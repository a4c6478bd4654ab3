// SPDX-License-Identifier: MIT
//
// A snapshot of the modules of this process, as "kernel32.dll" gives it.
#include <unistd.h>

#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "kvbase/platform/debug_help.h"
#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/linux/debug/debug_help_functions.h"
#include "kvbase/platform/linux/debug/debug_help_shims.h"
#include "kvbase/platform/linux/debug/loaded_modules.h"
#include "kvbase/platform/linux/errors/last_error.h"

namespace KV_1_1 {
namespace platform {

namespace {

using debug_help::Bool;
using debug_help::ModuleEntry32;

struct Snapshot {
  std::vector<LoadedModule> modules;
  std::size_t next = 0;
};

void* invalidHandle() {
  return reinterpret_cast<void*>(static_cast<std::intptr_t>(-1));
}

void* createSnapshot(ulong32 flags, ulong32 processId) {
  try {
    bool const isOwn = processId == 0 || processId == static_cast<ulong32>(getpid());
    if (flags != debug_help::kSnapshotModules || !isOwn) {
      setLastErrorOfThread(isOwn ? kInvalidParameter : kAccessDenied);
      return invalidHandle();
    }
    auto snapshot = std::make_unique<Snapshot>();
    snapshot->modules = loadedModules();
    return snapshot.release();
  } catch (std::bad_alloc const&) {
    setLastErrorOfThread(kNotEnoughMemory);
    return invalidHandle();
  }
}

Bool nextEntry(void* handle, ModuleEntry32* entry) {
  if (handle == nullptr || handle == invalidHandle()) return failWith(kInvalidHandle);
  if (entry == nullptr || entry->size != sizeof *entry) return failWith(kInvalidParameter);
  Snapshot& snapshot = *static_cast<Snapshot*>(handle);
  if (snapshot.next == snapshot.modules.size()) return failWith(kNoMoreFiles);
  LoadedModule const& module = snapshot.modules[snapshot.next++];
  *entry = ModuleEntry32();
  entry->size = sizeof *entry;
  entry->moduleId = 1;
  entry->processId = static_cast<ulong32>(getpid());
  entry->globalUsage = 0xFFFF;
  entry->processUsage = 0xFFFF;
  entry->baseAddress = reinterpret_cast<unsigned char*>(module.start);
  entry->baseSize = static_cast<ulong32>(module.end - module.start);
  entry->module = reinterpret_cast<HINSTANCE>(module.start);
  module.path.copy(entry->moduleName, sizeof entry->moduleName - 1, module.path.rfind('/') + 1);
  module.path.copy(entry->path, sizeof entry->path - 1);
  return 1;
}

Bool firstEntry(void* handle, ModuleEntry32* entry) {
  if (handle == nullptr || handle == invalidHandle()) return failWith(kInvalidHandle);
  static_cast<Snapshot*>(handle)->next = 0;
  return nextEntry(handle, entry);
}

}  // namespace

void (*snapshotFunction(char const* name))() {
  using AnyFunction = void (*)();
  if (strcmp(name, "CreateToolhelp32Snapshot") == 0) return reinterpret_cast<AnyFunction>(&createSnapshot);
  if (strcmp(name, "Module32First") == 0) return reinterpret_cast<AnyFunction>(&firstEntry);
  if (strcmp(name, "Module32Next") == 0) return reinterpret_cast<AnyFunction>(&nextEntry);
  return nullptr;
}

bool closeModuleSnapshot(void* handle) {
  if (handle == nullptr || handle == invalidHandle()) return failWith(kInvalidHandle);
  delete static_cast<Snapshot*>(handle);
  return true;
}

}  // namespace platform
}  // namespace KV_1_1
