// SPDX-License-Identifier: MIT
#include <windows.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/shared/loader.h"

namespace {

std::wstring fileOf(std::string const& stem) {
  wchar_t program[MAX_PATH] = {};
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  return (std::filesystem::path(program).parent_path() / (stem + ".dll")).make_preferred().wstring();
}

// The system's own libraries take a second to come and go.
void keepSystemLibraries() {
  static bool const done = [] {
    for (wchar_t const* name : {L"advapi32", L"comctl32", L"dbghelp", L"ole32", L"psapi", L"shell32", L"version"}) {
      LoadLibraryW(name);
    }
    return true;
  }();
  static_cast<void>(done);
}

}  // namespace

void* loadLibrary(std::string const& stem) {
  keepSystemLibraries();
  return LoadLibraryW(fileOf(stem).c_str());
}

bool unloadLibrary(void* library) {
  return FreeLibrary(static_cast<HMODULE>(library)) != 0;
}

bool isLibraryLoaded(std::string const& stem) {
  return GetModuleHandleW(fileOf(stem).c_str()) != nullptr;
}

void (*functionOf(void* library, char const* name))() {
  return reinterpret_cast<void (*)()>(reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name)));
}

long long allocatedBytes() {
  std::vector<HANDLE> heaps(GetProcessHeaps(0, nullptr) + 16);
  heaps.resize(GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data()));
  long long bytes = 0;
  for (HANDLE const heap : heaps) {
    if (HeapLock(heap) == 0) continue;
    PROCESS_HEAP_ENTRY entry = {};
    while (HeapWalk(heap, &entry) != 0) {
      if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) bytes += entry.cbData;
    }
    HeapUnlock(heap);
  }
  return bytes;
}

// The run time of mingw leaves 800 bytes, 2500 if an exception has been thrown, and the reserve for exceptions of 73 KB,
// which KVBase releases.
long long leakOfRunTime(bool isClient) {
  return isClient ? 80000 : 3072;
}

int heldObjects() {
  DWORD handles = 0;
  return GetProcessHandleCount(GetCurrentProcess(), &handles) != 0 ? static_cast<int>(handles) : -1;
}
