// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/platform/shell_api.h"

namespace KV_1_1 {
namespace platform {

// The desktop by its own tools, where they are there: xdg-open opens, a message by dbus-send has the file browser show
// an item. Paths and addresses are arguments of these tools, never part of a script. Nothing started here is a child
// of the process, whatever the application does with SIGCHLD.
//
// An item list is the address ("file:///home/x/a%20b.txt") of the item.
class LinuxShellApi final : public ShellApi {
 public:
  constexpr LinuxShellApi() = default;

  std::intptr_t open(wchar const* verb, wchar const* file, wchar const* directory, int show) override;
  ItemList itemListFromPath(wchar const* path) override;
  std::int32_t showItem(ItemList item) override;
  void freeItemList(ItemList item) override;
};

}  // namespace platform
}  // namespace KV_1_1
