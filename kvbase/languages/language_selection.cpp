// SPDX-License-Identifier: MIT
#include "kvbase/languages/language_selection.h"

#include <set>

#include "kvbase/languages/internal/language_search.h"
#include "kvbase/modules/module.h"
#include "kvbase/platform/locale_api.h"

namespace KV_1_1 {

struct CodeModule {
  static HINSTANCE of(Module const& module) { return module.codeModule_; }
};

unsigned short GetCurrentLangId(Module const& module) {
  ModuleLanguages const& languages = moduleLanguages();
  auto const found = languages.find(reinterpret_cast<std::uintptr_t>(CodeModule::of(module)));
  return found != languages.end() ? found->second : kNoLanguage;
}

std::vector<wstring> GetUsedLangAbbrevs() {
  wchar const* const forced = GetForcedLangAbbrev();
  if (forced != nullptr) return {forced};

  platform::LocaleApi& locales = platform::locales();
  unsigned short const langIds[] = {locales.userUiLanguage(), locales.userLanguage(), locales.systemUiLanguage(),
                                    locales.systemLanguage(), kFallbackLanguage};
  std::vector<wstring> abbrevs;
  std::set<unsigned short> seen;
  for (unsigned short const langId : langIds) {
    wstring abbrev;
    bool const isNew = seen.insert(langId).second;
    if (isNew && locales.languageAbbreviation(langId, abbrev) && !abbrev.empty()) abbrevs.push_back(abbrev);
  }
  return abbrevs;
}

}  // namespace KV_1_1
