// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

#include <memory>

#include "kvbase/platform/types.h"

namespace KV_1_1 {
namespace platform {

ulong32 NativeErrors::lastError() {
  return GetLastError();
}

void NativeErrors::setLastError(ulong32 code) {
  SetLastError(code);
}

bool NativeErrors::errorText(ulong32 code, wstring& text) {
  wchar* system = nullptr;
  // With this flag the function takes the address of a pointer for the buffer.
  FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, 0,
                 reinterpret_cast<wchar*>(&system), 0, nullptr);
  auto const release = [](wchar* allocated) { LocalFree(allocated); };
  std::unique_ptr<wchar, decltype(release)> const owner(system, release);
  if (system != nullptr) text = system;
  return system != nullptr;
}

}  // namespace platform
}  // namespace KV_1_1
