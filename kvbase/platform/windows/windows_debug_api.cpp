// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

#include "kvbase/platform/types.h"

namespace KV_1_1 {
namespace platform {

ulong32 NativeDebug::lastError() {
  return GetLastError();
}

void NativeDebug::setLastError(ulong32 code) {
  SetLastError(code);
}

wchar* NativeDebug::errorText(ulong32 code) {
  wchar* text = nullptr;
  // With this flag the function takes the address of a pointer for the buffer.
  FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, 0,
                 reinterpret_cast<wchar*>(&text), 0, nullptr);
  return text;
}

void NativeDebug::freeErrorText(wchar* text) {
  LocalFree(text);
}

}  // namespace platform
}  // namespace KV_1_1
