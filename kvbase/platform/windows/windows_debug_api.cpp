// SPDX-License-Identifier: MIT
#include "kvbase/platform/windows/windows_debug_api.h"

#include "kvbase/platform/types.h"

namespace KV_1_1 {
namespace platform {

ulong32 WindowsDebugApi::lastError() {
  return GetLastError();
}

void WindowsDebugApi::setLastError(ulong32 code) {
  SetLastError(code);
}

wchar* WindowsDebugApi::errorText(ulong32 code) {
  wchar* text = nullptr;
  // With this flag the function takes the address of a pointer for the buffer.
  FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, 0,
                 reinterpret_cast<wchar*>(&text), 0, nullptr);
  return text;
}

void WindowsDebugApi::freeErrorText(wchar* text) {
  LocalFree(text);
}

}  // namespace platform
}  // namespace KV_1_1
