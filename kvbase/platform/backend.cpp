// SPDX-License-Identifier: MIT
#include "kvbase/platform/backend.h"

#include "kvbase/platform/internal/native_backends.h"

namespace KV_1_1 {
namespace platform {

namespace {

NativeFiles theFiles;
NativeText theText;
NativeShell theShell;
NativeDebug theDebug;

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
