// SPDX-License-Identifier: MIT
#include <windows.h>

#include "tests/shared/loader.h"

void* loadLibrary() {
  return LoadLibraryW(L"KVBase.dll");
}

bool unloadLibrary(void* library) {
  return FreeLibrary(static_cast<HMODULE>(library)) != 0;
}

bool isLibraryLoaded() {
  return GetModuleHandleW(L"KVBase.dll") != nullptr;
}
