// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

namespace KV_1_1 {
namespace platform {

SettingsKey NativeSettings::currentUser() {
  return nullptr;
}

SettingsKey NativeSettings::openKey(SettingsKey, wchar const*) {
  return nullptr;
}

bool NativeSettings::readValue(SettingsKey, wchar const*, ulong32&, void*, ulong32&) {
  return false;
}

void NativeSettings::closeKey(SettingsKey) {}

}  // namespace platform
}  // namespace KV_1_1
