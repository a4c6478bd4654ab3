// SPDX-License-Identifier: MIT
//
// The function of a library that the system calls when the library has been loaded and before it is unloaded.
#pragma once

#include "kvbase/platform/types.h"

// KVBASE_ENTRY_FUNCTION(attach, detach) defines it, at global scope, in one source of a library:
//   bool attach(HINSTANCE instance) noexcept   if it gives false the load fails, and detach is called
//   void detach() noexcept
// Off Windows, where the system knows no such function, it defines nothing; see ModuleEntry. In a program nothing calls it.
#if defined(_WIN32)
// After a failed attach the run time calls the detach part.
#define KVBASE_ENTRY_FUNCTION(attach, detach)                                 \
  extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {  \
    if (reason == DLL_PROCESS_ATTACH) return attach(instance) ? TRUE : FALSE; \
    if (reason == DLL_PROCESS_DETACH) detach();                               \
    return TRUE;                                                              \
  }                                                                           \
  static_assert(true, "")
#else
#define KVBASE_ENTRY_FUNCTION(attach, detach) static_assert(true, "")
#endif
