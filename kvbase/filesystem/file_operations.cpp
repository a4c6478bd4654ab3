// SPDX-License-Identifier: MIT
#include "kvbase/filesystem/file.h"
#include "kvbase/platform/file_api.h"

namespace KV_1_1 {

bool File::exists() const {
  ulong32 const attributes = platform::files().getAttributes(getFullNameUnicode());
  return attributes != platform::kInvalidAttributes && (attributes & platform::kAttributeDirectory) == 0;
}

bool File::getFileSize(ULARGE_INTEGER& size) const {
  platform::FileInfo info;
  if (!platform::files().getInfo(getFullNameUnicode(), info)) return false;
  size.QuadPart = info.size;
  return true;
}

}  // namespace KV_1_1
