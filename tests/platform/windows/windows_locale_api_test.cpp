// SPDX-License-Identifier: MIT
//
// The calls of this system, and the table of languages for systems that have no such calls: it was made of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "kvbase/platform/linux/locale/language_table.h"
#include "kvbase/platform/locale_api.h"
#include "kvbase/platform/types.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

// Ids that stand for the language in use, and change with it.
bool isPlaceholder(ulong32 id) {
  return id == 0 || id == 0x0400 || id == 0x0800 || id == 0x0C00 || id == 0x1000 || id == 0x1400;
}

std::string abbreviationByWindows(ulong32 id) {
  wstring abbreviation;
  bool const isKnown = platform::nativeLocales().languageAbbreviation(id, abbreviation);
  return !isKnown || abbreviation == KVW("ZZZ") ? "none" : narrow(abbreviation);
}

TEST(WindowsLanguageTable, HasTheAbbreviationOfEachId) {
  for (ulong32 id = 0; id <= 0xFFFF; ++id) {
    if (isPlaceholder(id)) continue;
    platform::Language const* const row = platform::findLanguage(id);
    EXPECT_EQ(row == nullptr ? "none" : row->abbreviation, abbreviationByWindows(id)) << std::hex << id;
  }
}

TEST(WindowsLanguageTable, HasTheStandardLanguageOfEachNeutralId) {
  for (auto const* row = platform::languagesBegin(); row != platform::languagesEnd(); ++row) {
    EXPECT_EQ(row->standard, ConvertDefaultLocale(row->id)) << std::hex << row->id;
  }
}

TEST(WindowsLanguageTable, HasTheLanguagesOfTheEnumeration) {
  std::set<ulong32> expected;
  for (auto const* row = platform::languagesBegin(); row != platform::languagesEnd(); ++row) {
    if (!row->isNeutral()) expected.insert(row->id);
  }
  std::vector<ulong32> groups;
  std::vector<ulong32> members;
  auto const collect = [](ulong32 value, void* context) {
    static_cast<std::vector<ulong32>*>(context)->push_back(value);
    return true;
  };
  platform::nativeLocales().enumerateLanguageGroups(collect, &groups);
  for (ulong32 const group : groups) platform::nativeLocales().enumerateLocales(group, collect, &members);
  std::set<ulong32> languages;
  for (ulong32 const locale : members) {
    if (abbreviationByWindows(locale) != "none") languages.insert(locale & 0xFFFF);
  }
  EXPECT_EQ(languages, expected);
}

TEST(WindowsLocaleApiTest, LanguagesAreThoseOfTheSystem) {
  platform::LocaleApi& locales = platform::nativeLocales();
  EXPECT_EQ(locales.userUiLanguage(), GetUserDefaultUILanguage());
  EXPECT_EQ(locales.userLanguage(), GetUserDefaultLangID());
  EXPECT_EQ(locales.systemUiLanguage(), GetSystemDefaultUILanguage());
  EXPECT_EQ(locales.systemLanguage(), GetSystemDefaultLangID());
  EXPECT_EQ(locales.threadLocale(), GetThreadLocale());
}

TEST(WindowsLocaleApiTest, ThreadLocaleIsThatOfTheSystem) {
  platform::LocaleApi& locales = platform::nativeLocales();
  ulong32 const previous = locales.threadLocale();
  EXPECT_TRUE(locales.setThreadLocale(1041));
  EXPECT_EQ(GetThreadLocale(), 1041u);
  EXPECT_FALSE(locales.setThreadLocale(0x10409)) << "a sort order that the language does not have";
  EXPECT_EQ(GetThreadLocale(), 1041u);
  EXPECT_TRUE(locales.setThreadLocale(previous));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
