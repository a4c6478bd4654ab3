// SPDX-License-Identifier: MIT
#include "kvbase/diagnostics/stack_walker.h"

#include <cstring>
#include <new>

#include "kvbase/diagnostics/internal/narrow_copy.h"
#include "kvbase/diagnostics/internal/stack_walker_impl.h"
#include "kvbase/diagnostics/internal/symbol_search_path.h"
#include "kvbase/platform/debug_api.h"
#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"

namespace platform = KV_1_1::platform;
using KV_1_1::ulong32;
using namespace KV_1_1::diagnostics;

namespace {

// Resumes a thread when its walk is over.
class ThreadResumption {
 public:
  explicit ThreadResumption(void* thread) : thread_(thread) {}
  ~ThreadResumption() { platform::debug().resumeThread(thread_); }
  ThreadResumption(ThreadResumption const&) = delete;
  ThreadResumption& operator=(ThreadResumption const&) = delete;

 private:
  void* thread_;
};

}  // namespace

StackWalker::ReadMemoryRoutine StackWalker::currentReadMemory = nullptr;
void* StackWalker::currentUserData = nullptr;

ulong32 StackWalker::currentProcessId() {
  return platform::debug().currentProcessId();
}

void* StackWalker::currentProcess() {
  return platform::debug().currentProcess();
}

StackWalker::StackWalker(int optionBits, char const* path, ulong32 walkedProcessId, void* walkedProcess)
    : impl(new (std::nothrow) StackWalkerImpl(this, walkedProcess)),
      process(walkedProcess),
      processId(walkedProcessId),
      modulesLoaded(0),
      symbolPath(path != nullptr ? duplicate(path).release() : nullptr),
      options(path != nullptr ? optionBits | OptionBuildSymbolPath : optionBits) {}

StackWalker::StackWalker(ulong32 walkedProcessId, void* walkedProcess)
    : StackWalker(OptionsDefault, nullptr, walkedProcessId, walkedProcess) {}

StackWalker::StackWalker(StackWalker const& other) = default;

StackWalker& StackWalker::operator=(StackWalker const& other) = default;

StackWalker::~StackWalker() {
  delete[] symbolPath;
  delete impl;
}

int StackWalker::LoadModules() {
  if (impl == nullptr) {
    platform::errors().setLastError(platform::kLibraryInitFailed);
    return 0;
  }
  if (modulesLoaded != 0) return 1;
  HeapText path;
  if ((options & OptionBuildSymbolPath) != 0) {
    path = composeSymbolSearchPath(symbolPath);
    if (path == nullptr) {
      platform::errors().setLastError(platform::kNotEnoughMemory);
      return 0;
    }
  }
  bool const initialized = impl->initialize(path.get());
  path.reset();
  if (!initialized) {
    OnDbgHelpErr("Error while initializing dbghelp.dll", 0, 0);
    platform::errors().setLastError(platform::kLibraryInitFailed);
    return 0;
  }
  bool const listed = impl->loadModulesThroughSnapshot(process, processId) || impl->loadModulesThroughPsapi(process);
  if (listed) modulesLoaded = 1;
  return listed ? 1 : 0;
}

// The registers of this function are where a walk of the calling thread starts, so it must not have returned by then.
int StackWalker::ShowCallstack(void* thread, _CONTEXT const* context, ReadMemoryRoutine readMemory, void* userData) {
  if (modulesLoaded == 0) LoadModules();
  if (impl == nullptr || impl->library == nullptr) {
    platform::errors().setLastError(platform::kLibraryInitFailed);
    return 0;
  }
  currentReadMemory = readMemory;
  currentUserData = userData;

  _CONTEXT start;
  if (context != nullptr) {
    start = *context;
    impl->walk(*this, thread, start);
    return 1;
  }
  bool const isCaller = thread == platform::debug().currentThread();
  if (!isCaller) platform::debug().suspendThread(thread);
  // The calling thread is resumed, too: that has no effect.
  ThreadResumption const resumption(thread);
  std::memset(&start, 0, sizeof start);
  start.ContextFlags = platform::debug_help::kContextFull;
  if (isCaller) {
    platform::debug().contextCapture()(&start);
  } else if (!platform::debug().threadContext(thread, start)) {
    return 0;
  }
  impl->walk(*this, thread, start);
  return 1;
}

int StackWalker::myReadProcMem(void* process, unsigned long long address, void* buffer, ulong32 size,
                               ulong32* bytesRead) {
  if (currentReadMemory != nullptr)
    return currentReadMemory(process, address, buffer, size, bytesRead, currentUserData);
  std::size_t read = 0;
  bool const complete = platform::debug().readMemory(process, address, buffer, size, read);
  *bytesRead = static_cast<ulong32>(read);
  return complete ? 1 : 0;
}
