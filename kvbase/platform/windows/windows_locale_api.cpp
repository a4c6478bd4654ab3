// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

#include <memory>

#include "kvbase/platform/types.h"

#include <commctrl.h>
#include <shellapi.h>

namespace KV_1_1 {
namespace platform {

namespace {

template <class Callback>
struct Enumeration {
  Callback callback;
  void* context;

  static Enumeration& from(LONG_PTR parameter) { return *reinterpret_cast<Enumeration*>(parameter); }
  LONG_PTR parameter() { return reinterpret_cast<LONG_PTR>(this); }
};
using GroupEnumeration = Enumeration<LocaleApi::LanguageGroupCallback>;
using LocaleEnumeration = Enumeration<LocaleApi::LocaleCallback>;

BOOL CALLBACK visitGroup(LGRPID group, LPWSTR, LPWSTR, DWORD, LONG_PTR parameter) {
  GroupEnumeration const& enumeration = GroupEnumeration::from(parameter);
  return enumeration.callback(group, enumeration.context) ? TRUE : FALSE;
}

BOOL CALLBACK visitLocale(LGRPID, LCID locale, LPWSTR, LONG_PTR parameter) {
  LocaleEnumeration const& enumeration = LocaleEnumeration::from(parameter);
  return enumeration.callback(locale, enumeration.context) ? TRUE : FALSE;
}

}  // namespace

ulong32 NativeLocales::threadLocale() {
  return GetThreadLocale();
}

bool NativeLocales::setThreadLocale(ulong32 locale) {
  return SetThreadLocale(locale) != 0;
}

std::uint16_t NativeLocales::userUiLanguage() {
  return GetUserDefaultUILanguage();
}

std::uint16_t NativeLocales::userLanguage() {
  return GetUserDefaultLangID();
}

std::uint16_t NativeLocales::systemUiLanguage() {
  return GetSystemDefaultUILanguage();
}

std::uint16_t NativeLocales::systemLanguage() {
  return GetSystemDefaultLangID();
}

bool NativeLocales::languageAbbreviation(ulong32 locale, wstring& abbreviation) {
  wchar buffer[4];
  if (GetLocaleInfoW(locale, LOCALE_SABBREVLANGNAME, buffer, 4) == 0) return false;
  abbreviation = buffer;
  return true;
}

bool NativeLocales::enumerateLanguageGroups(LanguageGroupCallback callback, void* context) {
  GroupEnumeration enumeration = {callback, context};
  return EnumSystemLanguageGroupsW(&visitGroup, LGRPID_SUPPORTED, enumeration.parameter()) != 0;
}

bool NativeLocales::enumerateLocales(ulong32 group, LocaleCallback callback, void* context) {
  LocaleEnumeration enumeration = {callback, context};
  return EnumLanguageGroupLocalesW(&visitLocale, group, 0, enumeration.parameter()) != 0;
}

bool NativeLocales::commandLine(std::vector<wstring>& arguments) {
  wchar const* const line = GetCommandLineW();
  if (line == nullptr) return false;
  int count = 0;
  auto const release = [](wchar** array) { LocalFree(array); };
  std::unique_ptr<wchar*, decltype(release)> const array(CommandLineToArgvW(line, &count), release);
  if (array == nullptr) return false;
  arguments.assign(array.get(), array.get() + count);
  return true;
}

void NativeLocales::setControlsLanguage(std::uint16_t language) {
  InitMUILanguage(language);
}

}  // namespace platform
}  // namespace KV_1_1
