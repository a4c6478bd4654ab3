// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/platform/debug_api.h"

namespace KV_1_1 {
namespace platform {

// Forwards each call to the system; no decisions of its own.
class WindowsDebugApi final : public DebugApi {
 public:
  constexpr WindowsDebugApi() = default;

  ulong32 lastError() override;
  void setLastError(ulong32 code) override;
  wchar* errorText(ulong32 code) override;
  void freeErrorText(wchar* text) override;
};

}  // namespace platform
}  // namespace KV_1_1
