// SPDX-License-Identifier: MIT
#include "kvbase/filesystem/internal/current_directory.h"

#include <memory>

#include "kvbase/platform/file_api.h"

namespace KV_1_1 {

String currentDirectory(wchar drive) {
  platform::FileApi& files = platform::files();
  auto const release = [&files](wchar* text) { files.freeText(text); };
  wchar* const text = drive != 0 ? files.currentDirectoryOfDrive(drive - KVW('A') + 1) : files.currentDirectory();
  std::unique_ptr<wchar, decltype(release)> const owner(text, release);
  return String(text);
}

}  // namespace KV_1_1
