// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

namespace KV_1_1 {
namespace platform {

ulong32 NativeLocales::threadLocale() {
  return 1033;
}

bool NativeLocales::setThreadLocale(ulong32) {
  return false;
}

std::uint16_t NativeLocales::userUiLanguage() {
  return 1033;
}

std::uint16_t NativeLocales::userLanguage() {
  return 1033;
}

std::uint16_t NativeLocales::systemUiLanguage() {
  return 1033;
}

std::uint16_t NativeLocales::systemLanguage() {
  return 1033;
}

bool NativeLocales::languageAbbreviation(ulong32, wstring&) {
  return false;
}

bool NativeLocales::enumerateLanguageGroups(LanguageGroupCallback, void*) {
  return false;
}

bool NativeLocales::enumerateLocales(ulong32, LocaleCallback, void*) {
  return false;
}

bool NativeLocales::commandLine(std::vector<wstring>&) {
  return false;
}

void NativeLocales::setControlsLanguage(std::uint16_t) {}

}  // namespace platform
}  // namespace KV_1_1
