// SPDX-License-Identifier: MIT
#include <fcntl.h>

#include <climits>
#include <cstring>

#include "kvbase/kernels/utf8.h"
#include "kvbase/platform/internal/native_backends.h"
#include "kvbase/platform/linux/files/read_file.h"
#include "kvbase/platform/linux/locale/environment_languages.h"
#include "kvbase/platform/linux/locale/language_table.h"

namespace KV_1_1 {
namespace platform {

namespace {

constexpr ulong32 kLanguageMask = 0x0000FFFF;
constexpr ulong32 kSortMask = 0x000F0000;

// The only group of languages. Its number is that of Western Europe and the United States on Windows.
constexpr ulong32 kOnlyGroup = 1;

// Zero until it is first asked for or set, so that no thread pays for a locale that it does not use.
thread_local ulong32 localeOfThread = 0;

// Puts the language in place that the user or the system has chosen where the id means just that.
ulong32 resolved(ulong32 language) {
  switch (language) {
    case 0x0000:  // neutral
    case 0x0400:  // the user's choice
    case 0x0C00:
    case 0x1000:  // a custom language, of which there is none
    case 0x1400:
      return userLanguageOfEnvironment();
    case 0x0800:
      return systemLanguageOfEnvironment();
    default:
      return language;
  }
}

// Languages have only one sort order here, so any other is dropped.
Language const* languageOfLocale(ulong32 locale) {
  bool const isLocale = (locale & ~(kLanguageMask | kSortMask)) == 0;
  return isLocale ? findLanguage(resolved(locale & kLanguageMask)) : nullptr;
}

wstring decodedArgument(char const* bytes, std::size_t size) {
  int const n = static_cast<int>(size);
  wstring units(static_cast<std::size_t>(strings::decodeUtf8(bytes, n, nullptr, 0)), KVW('\0'));
  if (!units.empty()) strings::decodeUtf8(bytes, n, &units[0], static_cast<int>(units.size()));
  return units;
}

}  // namespace

ulong32 NativeLocales::threadLocale() {
  if (localeOfThread == 0) localeOfThread = userLanguageOfEnvironment();
  return localeOfThread;
}

bool NativeLocales::setThreadLocale(ulong32 locale) {
  Language const* const language = languageOfLocale(locale);
  if (language == nullptr) return false;
  localeOfThread = language->standard;
  return true;
}

std::uint16_t NativeLocales::userUiLanguage() {
  return userUiLanguageOfEnvironment();
}

std::uint16_t NativeLocales::userLanguage() {
  return userLanguageOfEnvironment();
}

std::uint16_t NativeLocales::systemUiLanguage() {
  return systemLanguageOfEnvironment();
}

std::uint16_t NativeLocales::systemLanguage() {
  return systemLanguageOfEnvironment();
}

bool NativeLocales::languageAbbreviation(ulong32 locale, wstring& abbreviation) {
  Language const* const language = languageOfLocale(locale);
  if (language == nullptr) return false;
  abbreviation.assign(language->abbreviation, language->abbreviation + 3);
  return true;
}

bool NativeLocales::enumerateLanguageGroups(LanguageGroupCallback callback, void* context) {
  callback(kOnlyGroup, context);
  return true;
}

bool NativeLocales::enumerateLocales(ulong32 group, LocaleCallback callback, void* context) {
  if (group != kOnlyGroup) return false;
  for (Language const* language = languagesBegin(); language != languagesEnd(); ++language) {
    if (!language->isNeutral() && !callback(language->id, context)) break;
  }
  return true;
}

bool NativeLocales::commandLine(std::vector<wstring>& arguments) {
  // What main is given is not at hand: initialisers of a library may ask before it has started.
  FileBytes bytes;
  bool const isRead = readFile(AT_FDCWD, "/proc/self/cmdline", kAnyLength, bytes);
  if (!isRead || bytes.size() == 0 || bytes.size() > INT_MAX) return false;
  std::vector<wstring> found;
  char const* const end = bytes.data() + bytes.size();
  for (char const* begin = bytes.data(); begin != end;) {
    auto const left = static_cast<std::size_t>(end - begin);
    std::size_t const size = strnlen(begin, left);
    found.push_back(decodedArgument(begin, size));
    begin += size == left ? size : size + 1;
  }
  arguments.swap(found);
  return true;
}

void NativeLocales::setControlsLanguage(std::uint16_t) {}

}  // namespace platform
}  // namespace KV_1_1
