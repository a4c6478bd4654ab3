// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/platform/shell_api.h"

namespace KV_1_1 {
namespace platform {

// Forwards each call to the system; no decisions of its own.
class WindowsShellApi final : public ShellApi {
 public:
  constexpr WindowsShellApi() = default;

  std::intptr_t open(wchar const* verb, wchar const* file, wchar const* directory, int show) override;
  ItemList itemListFromPath(wchar const* path) override;
  std::int32_t showItem(ItemList item) override;
  void freeItemList(ItemList item) override;
};

}  // namespace platform
}  // namespace KV_1_1
