// SPDX-License-Identifier: MIT
//
// The seam to the operating system. Everything that differs between systems is reached through one abstract class per
// group of calls (file_api.h, text_api.h, module_api.h and so on); platform/windows and platform/linux implement each
// of them once.
//
// The current backends are held in one constant-initialised record, so they can be called before the first initialiser
// of the library has run and after its last destructor.
#pragma once

#include <utility>

#include "kvbase/export.h"

namespace KV_1_1 {
namespace platform {

class DebugApi;
class ErrorApi;
class FileApi;
class FrameworkApi;
class LocaleApi;
class ModuleApi;
class SettingsApi;
class ShellApi;
class TextApi;

struct Backends {
  DebugApi* debug;
  ErrorApi* errors;
  FileApi* files;
  FrameworkApi* framework;
  LocaleApi* locales;
  ModuleApi* modules;
  SettingsApi* settings;
  ShellApi* shell;
  TextApi* text;
};

// The backends in use: the native ones, unless a test has replaced one.
extern KVBASE_API Backends current;

inline DebugApi& debug() {
  return *current.debug;
}
inline ErrorApi& errors() {
  return *current.errors;
}
inline FileApi& files() {
  return *current.files;
}
inline FrameworkApi& framework() {
  return *current.framework;
}
inline LocaleApi& locales() {
  return *current.locales;
}
inline ModuleApi& modules() {
  return *current.modules;
}
inline SettingsApi& settings() {
  return *current.settings;
}
inline ShellApi& shell() {
  return *current.shell;
}
inline TextApi& text() {
  return *current.text;
}

// The backends of the system the library was built for. They are never destroyed.
KVBASE_API DebugApi& nativeDebug();
KVBASE_API ErrorApi& nativeErrors();
KVBASE_API FileApi& nativeFiles();
KVBASE_API FrameworkApi& nativeFramework();
KVBASE_API LocaleApi& nativeLocales();
KVBASE_API ModuleApi& nativeModules();
KVBASE_API SettingsApi& nativeSettings();
KVBASE_API ShellApi& nativeShell();
KVBASE_API TextApi& nativeText();

// Puts another backend in place for a scope; scopes may nest.
//
//   ScriptedFiles script;
//   platform::ScopedBackend<platform::FileApi> scope(script);
//
// Thread rule: the replacement is process-wide, so no other thread may be inside the library when a scope begins or
// ends.
template <class Api>
class ScopedBackend {
 public:
  explicit ScopedBackend(Api& replacement) : previous_(std::exchange(slot(), &replacement)) {}
  ~ScopedBackend() { slot() = previous_; }
  ScopedBackend(ScopedBackend const&) = delete;
  ScopedBackend& operator=(ScopedBackend const&) = delete;

 private:
  static Api*& slot() { return slot(static_cast<Api*>(nullptr)); }
  static DebugApi*& slot(DebugApi*) { return current.debug; }
  static ErrorApi*& slot(ErrorApi*) { return current.errors; }
  static FileApi*& slot(FileApi*) { return current.files; }
  static FrameworkApi*& slot(FrameworkApi*) { return current.framework; }
  static LocaleApi*& slot(LocaleApi*) { return current.locales; }
  static ModuleApi*& slot(ModuleApi*) { return current.modules; }
  static SettingsApi*& slot(SettingsApi*) { return current.settings; }
  static ShellApi*& slot(ShellApi*) { return current.shell; }
  static TextApi*& slot(TextApi*) { return current.text; }

  Api* previous_;
};

}  // namespace platform
}  // namespace KV_1_1
