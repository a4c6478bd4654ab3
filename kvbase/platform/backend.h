// SPDX-License-Identifier: MIT
//
// The seam to the operating system. Everything that differs between systems is reached through one abstract class per
// group of calls (file_api.h, text_api.h, shell_api.h, error_api.h); platform/windows and platform/linux implement each
// of them once.
//
// The current backends are held in one constant-initialised record, so they can be called before the first initialiser
// of the library has run and after its last destructor.
#pragma once

#include <utility>

#include "kvbase/export.h"

namespace KV_1_1 {
namespace platform {

class ErrorApi;
class FileApi;
class ShellApi;
class TextApi;

struct Backends {
  FileApi* files;
  TextApi* text;
  ShellApi* shell;
  ErrorApi* errors;
};

// The backends in use: the native ones, unless a test has replaced one.
extern KVBASE_API Backends current;

inline FileApi& files() {
  return *current.files;
}
inline TextApi& text() {
  return *current.text;
}
inline ShellApi& shell() {
  return *current.shell;
}
inline ErrorApi& errors() {
  return *current.errors;
}

// The backends of the system the library was built for. They are never destroyed.
KVBASE_API FileApi& nativeFiles();
KVBASE_API TextApi& nativeText();
KVBASE_API ShellApi& nativeShell();
KVBASE_API ErrorApi& nativeErrors();

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
  static FileApi*& slot(FileApi*) { return current.files; }
  static TextApi*& slot(TextApi*) { return current.text; }
  static ShellApi*& slot(ShellApi*) { return current.shell; }
  static ErrorApi*& slot(ErrorApi*) { return current.errors; }

  Api* previous_;
};

}  // namespace platform
}  // namespace KV_1_1
