// SPDX-License-Identifier: MIT
//
// The seam to the settings of the current user: named values in a tree of named keys. On Windows this is the registry
// below HKEY_CURRENT_USER; on Linux a key is a folder and a value is a file of UTF-8 text, below the user's
// configuration folder.
//
// Thread rule: any method may be called from any thread; a key belongs to one thread at a time.
#pragma once

#include "kvbase/platform/backend.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

// An open key; only the backend that opened it knows what it is. Null is none.
using SettingsKey = void*;

// Types of values.
constexpr ulong32 kTextValue = 1;
constexpr ulong32 kExpandableTextValue = 2;

class SettingsApi {
 public:
  // The key that all keys of the current user lie in. It is not closed.
  virtual SettingsKey currentUser() = 0;
  // Opens a key below another for reading. Names separated by backslashes lead through several keys; the empty name
  // leads to the key itself. Windows ignores the case of names, Linux does not. Null if there is no such key. Must be
  // released with closeKey; the parent may be closed before.
  virtual SettingsKey openKey(SettingsKey parent, wchar const* name) = 0;
  // Copies the value `name` of a key to `data` and stores its type and its size in bytes. On entry `size` is the room in
  // `data`; a longer value is not copied, and the call fails. A text has a terminator if the value has been stored with
  // one. False on failure; `data` may then have changed.
  virtual bool readValue(SettingsKey key, wchar const* name, ulong32& type, void* data, ulong32& size) = 0;
  virtual void closeKey(SettingsKey key) = 0;

 protected:
  // Backends are never destroyed through this interface.
  ~SettingsApi() = default;
};

}  // namespace platform
}  // namespace KV_1_1
