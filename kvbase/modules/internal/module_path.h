// SPDX-License-Identifier: MIT
//
// The parts of a module's path: C:\app\tool.x.dll has the file name tool.x.dll and the stem tool.x.
#pragma once

#include "kvbase/platform/module_api.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {

// Replaces a path by its long form. False, with `path` unchanged, if it has none.
inline bool makeLongPath(wstring& path) {
  wstring longForm;
  if (!platform::modules().longPath(path.c_str(), longForm)) return false;
  path.swap(longForm);
  return true;
}

// Up to and including the last backslash; empty if there is none.
inline wstring folderOf(wstring const& path) {
  return path.substr(0, path.rfind(KVW('\\')) + 1);
}

// What lies behind the last backslash.
inline wstring fileNameOf(wstring const& path) {
  return path.substr(path.rfind(KVW('\\')) + 1);
}

// The file name up to its last dot; the whole name if it has none.
inline wstring stemOf(wstring const& path) {
  wstring const name = fileNameOf(path);
  return name.substr(0, name.rfind(KVW('.')));
}

}  // namespace KV_1_1
