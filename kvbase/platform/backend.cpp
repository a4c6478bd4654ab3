// SPDX-License-Identifier: MIT
#include "kvbase/platform/backend.h"

#include "kvbase/platform/internal/native_backends.h"

namespace KV_1_1 {
namespace platform {

namespace {

NativeFiles theFiles;
NativeText theText;
NativeShell theShell;
NativeErrors theErrors;

}  // namespace

Backends current = {&theFiles, &theText, &theShell, &theErrors};

FileApi& nativeFiles() {
  return theFiles;
}

TextApi& nativeText() {
  return theText;
}

ShellApi& nativeShell() {
  return theShell;
}

ErrorApi& nativeErrors() {
  return theErrors;
}

}  // namespace platform
}  // namespace KV_1_1
