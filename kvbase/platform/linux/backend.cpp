// SPDX-License-Identifier: MIT
#include "kvbase/platform/backend.h"

#include "kvbase/platform/linux/linux_debug_api.h"
#include "kvbase/platform/linux/linux_file_api.h"
#include "kvbase/platform/linux/linux_shell_api.h"
#include "kvbase/platform/linux/linux_text_api.h"

namespace KV_1_1 {
namespace platform {

namespace {

// Constant-initialised and trivially destroyed, hence there at any time.
LinuxFileApi theFiles;
LinuxTextApi theText;
LinuxShellApi theShell;
LinuxDebugApi theDebug;

}  // namespace

Backends current = {&theFiles, &theText, &theShell, &theDebug};

FileApi& nativeFiles() {
  return theFiles;
}

TextApi& nativeText() {
  return theText;
}

ShellApi& nativeShell() {
  return theShell;
}

DebugApi& nativeDebug() {
  return theDebug;
}

}  // namespace platform
}  // namespace KV_1_1
