// SPDX-License-Identifier: MIT
#include "kvbase/filesystem/directory.h"
#include "kvbase/platform/file_api.h"

namespace KV_1_1 {

bool Directory::exists() const {
  ulong32 const attributes = platform::files().getAttributes(getFullNameUnicode());
  return attributes != platform::kInvalidAttributes && (attributes & platform::kAttributeDirectory) != 0;
}

bool Directory::isDirectory() const {
  return Directory::exists();
}

}  // namespace KV_1_1
