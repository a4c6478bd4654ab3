// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

#include "kvbase/platform/linux/errors/last_error.h"

namespace KV_1_1 {
namespace platform {

ulong32 NativeDebug::lastError() {
  return lastErrorOfThread();
}

void NativeDebug::setLastError(ulong32 code) {
  setLastErrorOfThread(code);
}

// The texts are constants; whoever gets one only reads it.
wchar* NativeDebug::errorText(ulong32 code) {
  return const_cast<wchar*>(textOfCode(code));
}

void NativeDebug::freeErrorText(wchar*) {}

}  // namespace platform
}  // namespace KV_1_1
