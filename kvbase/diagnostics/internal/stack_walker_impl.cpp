// SPDX-License-Identifier: MIT
#include "kvbase/diagnostics/internal/stack_walker_impl.h"

#include <string>

#include "kvbase/diagnostics/internal/narrow_copy.h"
#include "kvbase/platform/debug_api.h"
#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"

namespace platform = KV_1_1::platform;
using KV_1_1::ulong32;
using namespace KV_1_1::diagnostics;

namespace {

// Lines are loaded, and critical errors fail instead of asking the user.
constexpr ulong32 kSymOptions = 0x210;

// The library may write a longer record than it was asked for.
constexpr std::size_t kModuleInfoCapacity = 4096;

}  // namespace

StackWalkerImpl::StackWalkerImpl(StackWalker* walker, void* walkedProcess) : parent(walker), process(walkedProcess) {}

StackWalkerImpl::~StackWalkerImpl() {
  if (symCleanup != nullptr) symCleanup(process);
  freeLibrary();
  delete[] searchPath;
}

bool StackWalkerImpl::initialize(char const* path) {
  if (parent == nullptr || !loadLibrary()) return false;
  if (!loadFunctions()) {
    freeLibrary();
    symCleanup = nullptr;
    return false;
  }
  if (path != nullptr) {
    delete[] searchPath;
    searchPath = duplicate(path).release();
  }
  if (symInitialize(process, searchPath, 0) == 0)
    parent->OnDbgHelpErr("SymInitialize", platform::errors().lastError(), 0);
  reportStart(symSetOptions(symGetOptions() | kSymOptions));
  return true;
}

void StackWalkerImpl::reportStart(ulong32 symOptions) {
  char path[platform::kDebugTextCapacity] = {};
  if (symGetSearchPath != nullptr && symGetSearchPath(process, path, sizeof path) == 0)
    parent->OnDbgHelpErr("SymGetSearchPath", platform::errors().lastError(), 0);
  path[sizeof path - 1] = 0;
  std::string user;
  readText([&] { return platform::debug().userName(user); });
  parent->OnSymInit(path, symOptions, user.c_str());
}

StackWalkerImpl::ModuleInfo* StackWalkerImpl::moduleRecord(HeapText& buffer) const {
  if (symGetModuleInfo == nullptr) {
    platform::errors().setLastError(platform::kLibraryInitFailed);
    return nullptr;
  }
  if (buffer == nullptr) buffer = allocateText(kModuleInfoCapacity);
  if (buffer == nullptr) platform::errors().setLastError(platform::kNotEnoughMemory);
  return reinterpret_cast<ModuleInfo*>(buffer.get());
}

bool StackWalkerImpl::fillModuleRecord(void* walkedProcess, std::uint64_t address, ModuleInfo& record) const {
  record.sizeOfStruct = sizeof record;
  if (symGetModuleInfo(walkedProcess, address, &record) != 0) return true;
  platform::errors().setLastError(platform::kLibraryInitFailed);
  return false;
}

bool StackWalkerImpl::getModuleInfo(void* walkedProcess, std::uint64_t address, ModuleInfo& info) const {
  info.sizeOfStruct = sizeof info;
  HeapText buffer;
  ModuleInfo* const record = moduleRecord(buffer);
  if (record == nullptr) return false;
  *record = info;
  if (!fillModuleRecord(walkedProcess, address, *record)) return false;
  info = *record;
  info.sizeOfStruct = sizeof info;
  return true;
}
