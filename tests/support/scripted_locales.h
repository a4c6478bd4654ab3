// SPDX-License-Identifier: MIT
//
// Languages, a thread's locale and a command line that exist only in the test. It records each change and each question
// that can fail.
//
//   ScriptedLocales locales;
//   locales.userUi = 1031;
//   locales.abbreviations[1031] = KVW("DEU");
//   locales.groups = {{1, {1033, 1031}}};
//   locales.arguments = {KVW("tool.exe"), KVW("-lang=deu")};
//   platform::ScopedBackend<platform::LocaleApi> scope(locales);
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "kvbase/platform/locale_api.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {

class ScriptedLocales final : public platform::LocaleApi {
 public:
  using Log = std::vector<std::string>;

  Log log;
  bool logging = true;             // without it no call needs memory
  std::set<std::string> failures;  // the names of methods that always fail
  int failAt = 0;                  // the call that fails, counted from 1 in the log; 0 for none
  ulong32 thread = 1033;
  std::uint16_t userUi = 1033;
  std::uint16_t user = 1033;
  std::uint16_t systemUi = 1033;
  std::uint16_t system = 1033;
  std::map<ulong32, wstring> abbreviations;  // all other ids have none
  std::vector<std::pair<ulong32, std::vector<ulong32>>> groups;
  std::vector<wstring> arguments;
  std::vector<std::uint16_t> controlsLanguages;  // in the order of the calls

  ulong32 threadLocale() override { return thread; }
  bool setThreadLocale(ulong32 locale) override {
    if (!enter("setThreadLocale", std::to_string(locale))) return false;
    thread = locale;
    return true;
  }
  std::uint16_t userUiLanguage() override { return userUi; }
  std::uint16_t userLanguage() override { return user; }
  std::uint16_t systemUiLanguage() override { return systemUi; }
  std::uint16_t systemLanguage() override { return system; }
  bool languageAbbreviation(ulong32 locale, wstring& abbreviation) override {
    auto const found = abbreviations.find(locale);
    if (!enter("languageAbbreviation", std::to_string(locale)) || found == abbreviations.end()) return false;
    abbreviation = found->second;
    return true;
  }
  bool enumerateLanguageGroups(LanguageGroupCallback callback, void* context) override {
    if (!enter("enumerateLanguageGroups", "")) return false;
    for (auto const& group : groups) {
      if (!callback(group.first, context)) break;
    }
    return true;
  }
  bool enumerateLocales(ulong32 wanted, LocaleCallback callback, void* context) override {
    if (!enter("enumerateLocales", std::to_string(wanted))) return false;
    for (auto const& group : groups) {
      if (group.first != wanted) continue;
      for (ulong32 const locale : group.second) {
        if (!callback(locale, context)) return true;
      }
    }
    return true;
  }
  bool commandLine(std::vector<wstring>& result) override {
    if (!enter("commandLine", "")) return false;
    result = arguments;
    return true;
  }
  void setControlsLanguage(std::uint16_t language) override { controlsLanguages.push_back(language); }

 private:
  bool enter(char const* method, std::string const& arguments_) {
    if (!logging) return failures.empty() || failures.count(method) == 0;
    log.push_back(arguments_.empty() ? method : method + (' ' + arguments_));
    return failures.count(method) == 0 && log.size() != static_cast<std::size_t>(failAt);
  }
};

}  // namespace testing
}  // namespace KV_1_1
