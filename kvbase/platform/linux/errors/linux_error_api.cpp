// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

#include "kvbase/platform/linux/errors/last_error.h"

namespace KV_1_1 {
namespace platform {

ulong32 NativeErrors::lastError() {
  return lastErrorOfThread();
}

void NativeErrors::setLastError(ulong32 code) {
  setLastErrorOfThread(code);
}

bool NativeErrors::errorText(ulong32 code, wstring& text) {
  wchar const* const known = textOfCode(code);
  if (known != nullptr) text = known;
  return known != nullptr;
}

}  // namespace platform
}  // namespace KV_1_1
