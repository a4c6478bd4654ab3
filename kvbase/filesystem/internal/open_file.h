// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/platform/file_api.h"
#include "kvbase/platform/scoped_handle.h"

namespace KV_1_1 {

struct OpenFileTraits {
  using Value = platform::FileHandle;
  static Value none() { return platform::invalidFile(); }
  static void close(Value file) { platform::files().closeFile(file); }
};
// A file opened by FileApi::openFile, which the destructor closes.
using OpenFile = platform::ScopedHandle<OpenFileTraits>;

}  // namespace KV_1_1
