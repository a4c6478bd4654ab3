// SPDX-License-Identifier: MIT
#include "kvbase/platform/backend.h"

#include "kvbase/platform/windows/windows_file_api.h"
#include "kvbase/platform/windows/windows_text_api.h"

namespace KV_1_1 {
namespace platform {

namespace {

// Constant-initialised and trivially destroyed, hence there at any time.
WindowsFileApi theFiles;
WindowsTextApi theText;

}  // namespace

Backends current = {&theFiles, &theText};

FileApi& nativeFiles() {
  return theFiles;
}

TextApi& nativeText() {
  return theText;
}

}  // namespace platform
}  // namespace KV_1_1
