// SPDX-License-Identifier: MIT
#include "kvbase/languages/translation.h"

#include "kvbase/languages/internal/language_search.h"
#include "kvbase/languages/internal/product_identity.h"
#include "kvbase/modules/internal/module_path.h"
#include "kvbase/platform/locale_api.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

HINSTANCE LoadTranslationDLL(HINSTANCE module, unsigned short language) {
  wstring path;
  if (!platform::modules().modulePath(module, path) || !makeLongPath(path)) return module;
  FileVersionQuad const version = GetFileVersionQuad(path);
  LanguageFile const file = FindLanguageFile(module, KVW("%ls.dll"), /*prefixModuleName=*/true, language);
  if (GetFileVersionQuad(file.path) != version) return module;

  unsigned short const controlsLanguage = language != kNoLanguage ? language : file.langId;
  if (controlsLanguage != kNoLanguage && module == platform::modules().program()) {
    platform::locales().setControlsLanguage(controlsLanguage);
  }
  // The first language recorded for a module stays.
  moduleLanguages().emplace(reinterpret_cast<std::uintptr_t>(module), file.langId);
  return file.path.empty() ? module : platform::modules().loadAsData(file.path.c_str());
}

wstring LocateHelpFile(HINSTANCE module, unsigned short, bool isStandardUi) {
  wstring modulePath;
  if (!platform::modules().modulePath(module, modulePath) || !makeLongPath(modulePath)) return wstring();
  String const path(modulePath.c_str());
  int const dot = path.findLastOf(KVW('.'));
  String const base = dot >= 0 ? path.substr(0, dot) : path;
  wstring const candidate = wstring(base) + (isStandardUi ? KVW(".pdf") : KVW("_ClassicUI.pdf"));
  return platform::modules().isReadable(candidate.c_str()) ? candidate : wstring();
}

}  // namespace KV_1_1
