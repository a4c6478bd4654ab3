// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/linux_debug_api.h"

#include "kvbase/platform/linux/last_error.h"

namespace KV_1_1 {
namespace platform {

ulong32 LinuxDebugApi::lastError() {
  return lastErrorOfThread();
}

void LinuxDebugApi::setLastError(ulong32 code) {
  setLastErrorOfThread(code);
}

// The texts are constants; whoever gets one only reads it.
wchar* LinuxDebugApi::errorText(ulong32 code) {
  return const_cast<wchar*>(textOfCode(code));
}

void LinuxDebugApi::freeErrorText(wchar*) {}

}  // namespace platform
}  // namespace KV_1_1
