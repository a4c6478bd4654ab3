// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/platform/debug_api.h"

namespace KV_1_1 {
namespace platform {

// The last error that the other groups of this backend leave, and the texts of their codes.
class LinuxDebugApi final : public DebugApi {
 public:
  constexpr LinuxDebugApi() = default;

  ulong32 lastError() override;
  void setLastError(ulong32 code) override;
  wchar* errorText(ulong32 code) override;
  void freeErrorText(wchar* text) override;
};

}  // namespace platform
}  // namespace KV_1_1
