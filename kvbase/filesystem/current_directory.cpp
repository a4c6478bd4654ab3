// SPDX-License-Identifier: MIT
#include "kvbase/filesystem/internal/current_directory.h"

#include "kvbase/platform/file_api.h"

namespace KV_1_1 {

String currentDirectory(wchar drive) {
  platform::FileApi& files = platform::files();
  wstring path;
  bool const isKnown =
      drive != 0 ? files.currentDirectoryOfDrive(drive - KVW('A') + 1, path) : files.currentDirectory(path);
  return isKnown ? String(path.c_str()) : String::NIL;
}

}  // namespace KV_1_1
