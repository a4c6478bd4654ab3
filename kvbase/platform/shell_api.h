// SPDX-License-Identifier: MIT
//
// The seam to the desktop. Where there is none, every method returns its failure value.
//
// Thread rule: any method may be called from any thread; an item list belongs to one thread at a time.
#pragma once

#include <cstdint>

#include "kvbase/platform/backend.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

// How the window of a started program is shown.
constexpr int kShowNormal = 1;
constexpr int kShowDefault = 10;

// The file browser's name for an item; only the backend that returned it knows what it is. Null is none.
using ItemList = void*;

class ShellApi {
 public:
  // Opens `file`, a path or an address such as "https://...", with its default program and does not wait for it. `verb`
  // (null: the default one), `directory` (null: the current one) and `show` are ignored on Linux. A result above 32 is
  // success; any other is the code of a failure, for example kFileNotFound, kPathNotFound, or 31 if there is no program
  // for the file or no desktop. On Linux success means that xdg-open has been started; what comes of that is not known.
  virtual std::intptr_t open(wchar const* verb, wchar const* file, wchar const* directory, int show) = 0;

  // The item of an absolute path, for showItem; null if there is none. Must be released with freeItemList.
  virtual ItemList itemListFromPath(wchar const* path) = 0;
  // Shows the folder of the item in the file browser, with the item selected. 0 is success.
  virtual std::int32_t showItem(ItemList item) = 0;
  // Releases an item list; null is allowed.
  virtual void freeItemList(ItemList item) = 0;

  // Stores the folder for files that the programs of a machine share. It need not exist. False if the system has none;
  // `folder` is then unchanged. On Linux it is \usr\share, unless the environment variable KVBASE_COMMON_FILES holds
  // another path in the notation of the library.
  virtual bool commonProgramFiles(wstring& folder) = 0;

 protected:
  // Backends are never destroyed through this interface.
  ~ShellApi() = default;
};

}  // namespace platform
}  // namespace KV_1_1
