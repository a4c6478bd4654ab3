// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

#include "kvbase/platform/types.h"

namespace KV_1_1 {
namespace platform {

static_assert(kTextValue == REG_SZ && kExpandableTextValue == REG_EXPAND_SZ, "as on Windows");
static_assert(KEY_READ == 0x20019, "read access as required");

SettingsKey NativeSettings::currentUser() {
  return HKEY_CURRENT_USER;
}

SettingsKey NativeSettings::openKey(SettingsKey parent, wchar const* name) {
  HKEY key = nullptr;
  return RegOpenKeyExW(static_cast<HKEY>(parent), name, 0, KEY_READ, &key) == ERROR_SUCCESS ? key : nullptr;
}

bool NativeSettings::readValue(SettingsKey key, wchar const* name, ulong32& type, void* data, ulong32& size) {
  return RegQueryValueExW(static_cast<HKEY>(key), name, nullptr, &type, static_cast<BYTE*>(data), &size) ==
         ERROR_SUCCESS;
}

void NativeSettings::closeKey(SettingsKey key) {
  RegCloseKey(static_cast<HKEY>(key));
}

}  // namespace platform
}  // namespace KV_1_1
