// SPDX-License-Identifier: MIT
//
// The seam to the desktop. Where there is none, every method fails by its value.
//
// Thread rule: any method may be called from any thread; an item list belongs to one thread at a time.
#pragma once

#include <cstdint>

#include "kvbase/platform/backend.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

// How the window of a started program shows.
constexpr int kShowNormal = 1;
constexpr int kShowDefault = 10;

// What the file browser is told about an item; only the backend that gave it knows what it is. Null: none.
using ItemList = void*;

class ShellApi {
 public:
  // Has the desktop open `file`, a path or an address such as "https://...", with the program that is meant for it.
  // `verb` (null: the usual one), `directory` (null: the current one) and `show` are passed on; on Linux they count for
  // nothing. More than 32 is success; anything else is the code of a failure, kFileNotFound and kPathNotFound among
  // them, and 31 where there is no program for it or no desktop. Does not wait for the program.
  virtual std::intptr_t open(wchar const* verb, wchar const* file, wchar const* directory, int show) = 0;

  // The item of an absolute path, for showItem; null if there is none. To be released with freeItemList.
  virtual ItemList itemListFromPath(wchar const* path) = 0;
  // Has the file browser show the folder of the item with the item selected. 0 is success.
  virtual std::int32_t showItem(ItemList item) = 0;
  // Releases an item list; null is allowed.
  virtual void freeItemList(ItemList item) = 0;

 protected:
  // Backends are never destroyed through this interface.
  ~ShellApi() = default;
};

}  // namespace platform
}  // namespace KV_1_1
