// SPDX-License-Identifier: MIT
//
// What a process sees whose environment has the languages that a suite is named after. Each suite is run in that
// environment and in no other.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "kvbase/languages/language_selection.h"
#include "kvbase/platform/locale_api.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

using Texts = std::vector<std::string>;

constexpr std::uint16_t kEnglish = 1033;
constexpr std::uint16_t kGerman = 1031;
constexpr std::uint16_t kFrench = 1036;
constexpr std::uint16_t kJapanese = 1041;

platform::LocaleApi& locales() {
  return platform::locales();
}

std::string abbreviationOf(std::uint16_t language) {
  wstring abbreviation;
  return locales().languageAbbreviation(language, abbreviation) ? narrow(abbreviation) : "none";
}

// The abbreviations of the four languages.
Texts abbreviations() {
  return {abbreviationOf(locales().userUiLanguage()), abbreviationOf(locales().userLanguage()),
          abbreviationOf(locales().systemUiLanguage()), abbreviationOf(locales().systemLanguage())};
}

Texts usedAbbreviations() {
  Texts used;
  for (wstring const& abbreviation : GetUsedLangAbbrevs()) used.push_back(narrow(abbreviation));
  return used;
}

void expectLanguages(std::uint16_t user, std::uint16_t system) {
  EXPECT_EQ(locales().userUiLanguage(), user);
  EXPECT_EQ(locales().userLanguage(), user);
  EXPECT_EQ(locales().systemUiLanguage(), system);
  EXPECT_EQ(locales().systemLanguage(), system);
}

void expectThreadLocale(std::uint16_t user) {
  EXPECT_EQ(locales().threadLocale(), user);
  std::thread([user] { EXPECT_EQ(locales().threadLocale(), user); }).join();
}

TEST(InEnglish, LanguagesAreEnglish) {
  expectLanguages(kEnglish, kEnglish);
  EXPECT_EQ(abbreviations(), (Texts{"ENU", "ENU", "ENU", "ENU"}));
}

TEST(InEnglish, ThreadsStartInEnglish) {
  expectThreadLocale(kEnglish);
}

TEST(InEnglish, OnlyEnglishIsUsed) {
  EXPECT_EQ(usedAbbreviations(), Texts{"ENU"});
}

TEST(InGerman, LanguagesAreGerman) {
  expectLanguages(kGerman, kGerman);
  EXPECT_EQ(abbreviations(), (Texts{"DEU", "DEU", "DEU", "DEU"}));
}

TEST(InGerman, ThreadsStartInGerman) {
  expectThreadLocale(kGerman);
}

TEST(InGerman, GermanAndEnglishAreUsed) {
  EXPECT_EQ(usedAbbreviations(), (Texts{"DEU", "ENU"}));
}

TEST(InJapanese, LanguagesAreJapanese) {
  expectLanguages(kJapanese, kJapanese);
  EXPECT_EQ(abbreviations(), (Texts{"JPN", "JPN", "JPN", "JPN"}));
}

TEST(InJapanese, ThreadsStartInJapanese) {
  expectThreadLocale(kJapanese);
}

TEST(InJapanese, JapaneseAndEnglishAreUsed) {
  EXPECT_EQ(usedAbbreviations(), (Texts{"JPN", "ENU"}));
}

TEST(InGermanOnFrench, UserIsGermanAndSystemFrench) {
  expectLanguages(kGerman, kFrench);
  EXPECT_EQ(abbreviations(), (Texts{"DEU", "DEU", "FRA", "FRA"}));
}

TEST(InGermanOnFrench, ThreadsStartInTheLanguageOfTheUser) {
  expectThreadLocale(kGerman);
}

TEST(InGermanOnFrench, TheUserComesBeforeTheSystem) {
  EXPECT_EQ(usedAbbreviations(), (Texts{"DEU", "FRA", "ENU"}));
}

TEST(InEnglishOnGerman, UserIsEnglishAndSystemGerman) {
  expectLanguages(kEnglish, kGerman);
  EXPECT_EQ(abbreviations(), (Texts{"ENU", "ENU", "DEU", "DEU"}));
}

TEST(InEnglishOnGerman, ThreadsStartInTheLanguageOfTheUser) {
  expectThreadLocale(kEnglish);
}

TEST(InEnglishOnGerman, EnglishIsNotUsedTwice) {
  EXPECT_EQ(usedAbbreviations(), (Texts{"ENU", "DEU"}));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
