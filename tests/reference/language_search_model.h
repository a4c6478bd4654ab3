// SPDX-License-Identifier: MIT
//
// The search for a module's language and its file, step by step and without shortcuts. It asks the same questions of the
// platform in the same order as the library does, so results and logs are comparable.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "kvbase/platform/locale_api.h"
#include "kvbase/platform/module_api.h"
#include "kvbase/platform/settings_api.h"
#include "kvbase/platform/shell_api.h"

namespace KV_1_1 {
namespace testing {

struct LanguageSearchModel {
  struct Result {
    wstring path;
    unsigned short langId;
  };

  static wstring lower(wstring text) {
    for (wchar& unit : text) {
      if (unit >= 'A' && unit <= 'Z') unit = static_cast<wchar>(unit + 'a' - 'A');
    }
    return text;
  }

  // Behind the last of `unit`; npos if there is none.
  static std::size_t behindLast(wstring const& text, wchar unit) {
    std::size_t found = wstring::npos;
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (text[i] == unit) found = i + 1;
    }
    return found;
  }

  static wstring longPathOf(wstring const& path) {
    wstring longPath;
    return platform::modules().longPath(path.c_str(), longPath) ? longPath : path;
  }

  static wstring fileOf(wstring const& path) {
    std::size_t const begin = behindLast(path, '\\');
    return begin == wstring::npos ? path : path.substr(begin);
  }

  static wstring stemOf(wstring const& path) {
    wstring const file = fileOf(path);
    std::size_t const dot = behindLast(file, '.');
    return dot == wstring::npos ? file : file.substr(0, dot - 1);
  }

  static wstring commandLine() {
    std::vector<wstring> arguments;
    if (!platform::locales().commandLine(arguments)) return wstring();
    for (wstring const& argument : arguments) {
      std::size_t const size = argument.size();
      if (size < 6 || size > 9) continue;
      wstring const head = lower(argument.substr(0, 6));
      if (head == KVW("-lang=") || head == KVW("/lang=")) return argument.substr(6);
    }
    return wstring();
  }

  static wstring registry() {
    platform::SettingsApi& settings = platform::settings();
    wstring path;
    if (!platform::modules().modulePath(platform::modules().program(), path)) return wstring();
    wstring const stem = stemOf(longPathOf(path));
    std::vector<platform::SettingsKey> keys = {settings.currentUser()};
    for (wstring const& level :
         {wstring(KVW("Software")), wstring(KVW("VOLQ")), stem, wstring(KVW("Settings")), wstring(KVW("10.0"))}) {
      platform::SettingsKey const key = settings.openKey(keys.back(), level.c_str());
      if (key == nullptr) break;
      keys.push_back(key);
    }
    wstring result;
    if (keys.size() == 6) {
      wchar value[5] = {};
      ulong32 type = 0;
      ulong32 size = 8;
      bool const read = settings.readValue(keys.back(), KVW("GUILanguage"), type, value, size);
      if (read && (type == 1 || type == 2)) result = value;
      if (result.size() > 3) result.clear();
    }
    while (keys.size() > 1) {
      settings.closeKey(keys.back());
      keys.pop_back();
    }
    return result;
  }

  static wstring forced() {
    wstring const abbrev = commandLine();
    return !abbrev.empty() ? abbrev : registry();
  }

  static unsigned short idOf(wstring const& abbrev) {
    struct Search {
      wstring wanted;
      unsigned short id;
    } search = {lower(abbrev), 0xFFFF};
    auto const visitLocale = [](ulong32 locale, void* context) {
      auto& found = *static_cast<Search*>(context);
      wstring name;
      if (platform::locales().languageAbbreviation(locale, name) && lower(name) == found.wanted) {
        found.id = static_cast<unsigned short>(locale);
      }
      return found.id == 0xFFFF;
    };
    struct Visitor {
      platform::LocaleApi::LocaleCallback visitLocale;
      Search* search;
    } visitor = {visitLocale, &search};
    auto const visitGroup = [](ulong32 group, void* context) {
      auto& visit = *static_cast<Visitor*>(context);
      platform::locales().enumerateLocales(group, visit.visitLocale, visit.search);
      return visit.search->id == 0xFFFF;
    };
    platform::locales().enumerateLanguageGroups(visitGroup, &visitor);
    return search.id;
  }

  static wstring queriedText(void const* block, wstring const& query, wstring const& otherwise) {
    void const* value = nullptr;
    ulong32 length = 0;
    if (!platform::modules().queryVersion(block, query.c_str(), value, length)) return otherwise;
    return value == nullptr || length == 0 ? otherwise : wstring(static_cast<wchar const*>(value));
  }

  // Worlds of the model have no version resource without a table of translations, or one of English in Unicode.
  static wstring productFolder(HINSTANCE module) {
    wstring folder;
    if (!platform::shell().commonProgramFiles(folder)) return wstring();
    if (folder.empty() || folder[folder.size() - 1] != '\\') folder += KVW("\\");
    wstring path;
    if (!platform::modules().modulePath(module, path)) return wstring();
    wstring const file = fileOf(path);
    ulong32 handle = 0;
    ulong32 const size = platform::modules().versionInfoSize(file.c_str(), handle);
    if (size == 0) return wstring();
    std::vector<unsigned char> block(size);
    if (!platform::modules().versionInfo(file.c_str(), handle, size, block.data())) return wstring();
    wstring const prefix = KVW("\\StringFileInfo\\040904b0\\");
    void const* table = nullptr;
    ulong32 length = 0;
    if (!platform::modules().queryVersion(block.data(), KVW("\\VarFileInfo\\Translation"), table, length)) {
      throw std::runtime_error("VerQueryValue failed");
    }
    folder += queriedText(block.data(), prefix + KVW("CompanyName"), KVW("VOLQ Fabrication GmbH")) + KVW("\\");
    folder += queriedText(block.data(), prefix + KVW("ProductName"), KVW("custom product")) + KVW("\\");
    return folder + queriedText(block.data(), prefix + KVW("ProductVersion"), KVW("internal")) + KVW("\\");
  }

  // The pieces of `format` between percent signs, put together again. False if an argument is asked for that is not there.
  static bool print(wstring const& format, wstring const& argument, wstring& out) {
    std::vector<wstring> pieces(1);
    for (wchar const unit : format) {
      if (unit == '%') {
        pieces.push_back(wstring());
      } else {
        pieces.back() += unit;
      }
    }
    out = pieces[0];
    int arguments = 1;
    for (std::size_t i = 1; i < pieces.size(); ++i) {
      if (pieces[i].empty() && i + 1 < pieces.size()) {
        out += KVW("%") + pieces[i + 1];
        ++i;
      } else if (pieces[i].substr(0, 2) == KVW("ls") && arguments-- == 1) {
        out += argument + pieces[i].substr(2);
      } else {
        return false;
      }
    }
    return out.size() < 260;
  }

  static bool exists(std::vector<wstring> const& entries, wstring const& abbrev, wstring& path) {
    for (wstring const& entry : entries) {
      wstring candidate;
      if (!print(entry, abbrev, candidate) || !platform::modules().isReadable(candidate.c_str())) continue;
      path = candidate;
      return true;
    }
    return false;
  }

  static Result find(HINSTANCE module, wstring const& pattern, bool prefix, unsigned short preferred) {
    platform::LocaleApi& locales = platform::locales();
    Result const none = {wstring(), 0xFFFF};
    wstring path;
    if (!platform::modules().modulePath(module, path)) return none;
    path = longPathOf(path);
    wstring const folder = path.substr(0, path.size() - fileOf(path).size());
    std::vector<wstring> entries;
    if (!folder.empty()) {
      entries.push_back(folder);
      entries.push_back(folder + KVW("languages\\"));
    }
    wstring const product = productFolder(module);
    if (!product.empty()) entries.push_back(product);
    for (wstring& entry : entries) entry += prefix ? stemOf(path) + pattern : pattern;

    wstring const abbrev = forced();
    if (!abbrev.empty()) {
      wstring found;
      exists(entries, abbrev, found);
      return {found, idOf(abbrev)};
    }

    std::vector<unsigned short> candidates;
    if (preferred != 0xFFFF) candidates.push_back(preferred);
    candidates.push_back(locales.userUiLanguage());
    candidates.push_back(locales.userLanguage());
    candidates.push_back(locales.systemUiLanguage());
    candidates.push_back(locales.systemLanguage());
    bool hasEnglish = false;
    for (unsigned short const id : candidates) hasEnglish = hasEnglish || id == 1033;
    if (!hasEnglish) candidates.push_back(1033);

    unsigned short previous = 0xFFFF;
    for (unsigned short const candidate : candidates) {
      if (candidate == 1033) return none;
      if (candidate == previous) continue;
      previous = candidate;
      wstring found, name;
      if (locales.languageAbbreviation(candidate, name) && exists(entries, name, found)) return {found, candidate};
      unsigned short const primary = candidate & 0x3FF;
      if (primary == candidate) continue;
      if (locales.languageAbbreviation(primary, name) && exists(entries, name, found)) return {found, primary};
    }
    return none;
  }

  static std::vector<wstring> used() {
    platform::LocaleApi& locales = platform::locales();
    wstring const abbrev = forced();
    if (!abbrev.empty()) return {abbrev};
    std::vector<unsigned short> ids = {locales.userUiLanguage(), locales.userLanguage(), locales.systemUiLanguage(),
                                       locales.systemLanguage(), 1033};
    std::vector<wstring> result;
    for (std::size_t i = 0; i < ids.size(); ++i) {
      bool isKnown = false;
      for (std::size_t k = 0; k < i; ++k) isKnown = isKnown || ids[k] == ids[i];
      wstring name;
      if (!isKnown && locales.languageAbbreviation(ids[i], name) && !name.empty()) result.push_back(name);
    }
    return result;
  }
};

}  // namespace testing
}  // namespace KV_1_1
