// SPDX-License-Identifier: MIT
#include "kvbase/languages/internal/language_search.h"

#include <algorithm>
#include <vector>

#include "kvbase/core/lazy.h"
#include "kvbase/languages/internal/product_identity.h"
#include "kvbase/modules/internal/module_path.h"
#include "kvbase/platform/locale_api.h"
#include "kvbase/strings/internal/character_class.h"

namespace KV_1_1 {

namespace {

// Room for a path, its terminator counted.
constexpr std::size_t kPathCapacity = platform::kModulePathCapacity;

bool equalsIgnoreCase(wstring const& a, wstring const& b) {
  auto const matches = [](wchar left, wchar right) { return strings::foldCase(left) == strings::foldCase(right); };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), matches);
}

// Runs a callback of an enumeration: its failure is kept for the caller and ends the enumeration.
template <class Visit>
bool guarded(void* context, Visit visit) {
  auto* const search = static_cast<LangIdSearch*>(context);
  if (search == nullptr || search->abbrev == nullptr) return false;
  try {
    visit(*search);
  } catch (...) {
    search->failure = std::current_exception();
  }
  return search->langId == kNoLanguage && search->failure == nullptr;
}

// A bounded print of the format `entry` with the abbreviation as its only argument. False if it asks for another
// argument or does not fit.
bool formatEntry(wstring const& entry, wstring const& abbrev, wstring& path) {
  bool isUsed = false;
  path.clear();
  for (std::size_t i = 0; i < entry.size(); ++i) {
    if (entry[i] != KVW('%')) {
      path += entry[i];
    } else if (entry.compare(i + 1, 1, KVW("%")) == 0) {
      path += KVW('%');
      i += 1;
    } else if (!isUsed && entry.compare(i + 1, 2, KVW("ls")) == 0) {
      path += abbrev;
      isUsed = true;
      i += 2;
    } else {
      return false;
    }
  }
  return path.size() < kPathCapacity;
}

// The formats of all paths at which the file may be.
std::vector<wstring> entriesOf(HINSTANCE module, wstring const& modulePath, wstring const& pattern,
                               bool prefixModuleName) {
  std::vector<wstring> entries;
  wstring const folder = folderOf(modulePath);
  if (!folder.empty()) entries = {folder, folder + KVW("languages\\")};
  wstring const productFolder = GetProductCommonFolder(module, /*withVersion=*/true);
  if (!productFolder.empty()) entries.push_back(productFolder);

  wstring const name = prefixModuleName ? stemOf(modulePath) + pattern : pattern;
  for (wstring& entry : entries) entry += name;
  return entries;
}

bool findReadable(std::vector<wstring> const& entries, wstring const& abbrev, wstring& path) {
  for (wstring const& entry : entries) {
    if (formatEntry(entry, abbrev, path) && platform::modules().isReadable(path.c_str())) return true;
  }
  path.clear();
  return false;
}

bool findInLanguage(std::vector<wstring> const& entries, unsigned short langId, LanguageFile& file) {
  wstring abbrev;
  if (!platform::locales().languageAbbreviation(langId, abbrev)) return false;
  if (!findReadable(entries, abbrev, file.path)) return false;
  file.langId = langId;
  return true;
}

LanguageFile findForced(std::vector<wstring> const& entries, wchar const* abbrev) {
  LanguageFile file;
  findReadable(entries, abbrev, file.path);
  file.langId = GetLangIdOfAbbrev(abbrev);
  return file;
}

LanguageFile findWanted(std::vector<wstring> const& entries, unsigned short preferredLang) {
  platform::LocaleApi& locales = platform::locales();
  // The preferred language may be kNoLanguage, which the first comparison below passes over.
  unsigned short const candidates[] = {preferredLang, locales.userUiLanguage(), locales.userLanguage(),
                                       locales.systemUiLanguage(), locales.systemLanguage()};
  LanguageFile file;
  unsigned short previous = kNoLanguage;
  for (unsigned short const candidate : candidates) {
    if (candidate == kFallbackLanguage) break;
    if (candidate == previous) continue;
    previous = candidate;
    if (findInLanguage(entries, candidate, file)) break;
    unsigned short const primary = candidate & kPrimaryLanguageMask;
    if (primary != candidate && findInLanguage(entries, primary, file)) break;
  }
  return file;
}

}  // namespace

bool SearchLocale(ulong32 locale, void* context) {
  return guarded(context, [locale](LangIdSearch& search) {
    wstring abbrev;
    if (!platform::locales().languageAbbreviation(locale, abbrev)) return;
    if (equalsIgnoreCase(abbrev, search.abbrev)) search.langId = static_cast<unsigned short>(locale & 0xFFFF);
  });
}

bool SearchLanguageGroup(ulong32 group, void* context) {
  return guarded(
      context, [group](LangIdSearch& search) { platform::locales().enumerateLocales(group, &SearchLocale, &search); });
}

unsigned short GetLangIdOfAbbrev(wchar const* abbrev) {
  LangIdSearch search;
  search.abbrev = abbrev;
  platform::locales().enumerateLanguageGroups(&SearchLanguageGroup, &search);
  if (search.failure != nullptr) std::rethrow_exception(search.failure);
  return search.langId;
}

LanguageFile FindLanguageFile(HINSTANCE module, wstring const& pattern, bool prefixModuleName,
                              unsigned short preferredLang) {
  wstring path;
  if (!platform::modules().modulePath(module, path)) return LanguageFile();
  makeLongPath(path);
  std::vector<wstring> const entries = entriesOf(module, path, pattern, prefixModuleName);
  wchar const* const forced = GetForcedLangAbbrev();
  return forced != nullptr ? findForced(entries, forced) : findWanted(entries, preferredLang);
}

ModuleLanguages& moduleLanguages() {
  static Lazy<ModuleLanguages> languages;
  return languages.get();
}

}  // namespace KV_1_1
