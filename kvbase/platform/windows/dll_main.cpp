// SPDX-License-Identifier: MIT
//
// Without effect in a program that the library is linked into: nothing calls it there.
#include "kvbase/library/library_entry.h"

// After a failed attach the run time calls the detach part.
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) return KV_1_1::library::attach(instance) ? TRUE : FALSE;
  if (reason == DLL_PROCESS_DETACH) KV_1_1::library::detach();
  return TRUE;
}
