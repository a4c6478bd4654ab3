// SPDX-License-Identifier: MIT
#include "kvbase/platform/backend.h"

#include "kvbase/platform/internal/native_backends.h"

namespace KV_1_1 {
namespace platform {

namespace {

NativeDebug theDebug;
NativeErrors theErrors;
NativeFiles theFiles;
NativeFramework theFramework;
NativeLocales theLocales;
NativeModules theModules;
NativeSettings theSettings;
NativeShell theShell;
NativeText theText;

}  // namespace

Backends current = {&theDebug,   &theErrors,   &theFiles, &theFramework, &theLocales,
                    &theModules, &theSettings, &theShell, &theText};

DebugApi& nativeDebug() {
  return theDebug;
}

ErrorApi& nativeErrors() {
  return theErrors;
}

FileApi& nativeFiles() {
  return theFiles;
}

FrameworkApi& nativeFramework() {
  return theFramework;
}

LocaleApi& nativeLocales() {
  return theLocales;
}

ModuleApi& nativeModules() {
  return theModules;
}

SettingsApi& nativeSettings() {
  return theSettings;
}

ShellApi& nativeShell() {
  return theShell;
}

TextApi& nativeText() {
  return theText;
}

}  // namespace platform
}  // namespace KV_1_1
