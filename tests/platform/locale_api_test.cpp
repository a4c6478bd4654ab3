// SPDX-License-Identifier: MIT
//
// Languages, locales of threads and the command line, for the native backend of either system, in whatever language the
// tests run.
#include "kvbase/platform/locale_api.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

platform::LocaleApi& locales() {
  return platform::nativeLocales();
}

std::string abbreviationOf(ulong32 locale) {
  wstring abbreviation = KVW("unchanged");
  bool const isKnown = locales().languageAbbreviation(locale, abbreviation);
  EXPECT_TRUE(isKnown || abbreviation == KVW("unchanged")) << locale;
  return narrow(abbreviation);
}

// A new thread has a locale that no other test has set.
void inNewThread(std::function<void()> const& work) {
  std::thread(work).join();
}

using GroupsOfLocales = std::vector<std::pair<ulong32, std::vector<ulong32>>>;

// Everything that the enumerations give.
GroupsOfLocales allLocales() {
  std::vector<ulong32> groups;
  auto const collect = [](ulong32 value, void* context) {
    static_cast<std::vector<ulong32>*>(context)->push_back(value);
    return true;
  };
  EXPECT_TRUE(locales().enumerateLanguageGroups(collect, &groups));
  GroupsOfLocales result;
  for (ulong32 const group : groups) {
    std::vector<ulong32> members;
    EXPECT_TRUE(locales().enumerateLocales(group, collect, &members)) << group;
    result.emplace_back(group, members);
  }
  return result;
}

struct AbbreviationRow {
  char const* test;
  ulong32 locale;
  char const* abbreviation;
};

class LocaleApiAbbreviationTest : public ::testing::TestWithParam<AbbreviationRow> {};

TEST_P(LocaleApiAbbreviationTest, IsThatOfTheLanguage) {
  EXPECT_EQ(abbreviationOf(GetParam().locale), GetParam().abbreviation);
}

constexpr AbbreviationRow kAbbreviations[] = {
    {"EnglishOfTheUnitedStates", 1033, "ENU"},
    {"EnglishOfBritain", 2057, "ENG"},
    {"German", 1031, "DEU"},
    {"GermanOfAustria", 3079, "DEA"},
    {"GermanOfSwitzerland", 2055, "DES"},
    {"French", 1036, "FRA"},
    {"FrenchOfCanada", 3084, "FRC"},
    {"Italian", 1040, "ITA"},
    {"SpanishInModernSort", 3082, "ESN"},
    {"SpanishInTraditionalSort", 1034, "ESP"},
    {"Japanese", 1041, "JPN"},
    {"Korean", 1042, "KOR"},
    {"ChineseSimplified", 2052, "CHS"},
    {"ChineseTraditional", 1028, "CHT"},
    {"ChineseOfHongKong", 3076, "ZHH"},
    {"Russian", 1049, "RUS"},
    {"PortugueseOfBrazil", 1046, "PTB"},
    {"Portuguese", 2070, "PTG"},
    {"Swedish", 1053, "SVE"},
    {"Turkish", 1055, "TRK"},
    {"GermanWithoutSublanguage", 7, "DEU"},
    {"EnglishWithoutSublanguage", 9, "ENU"},
    {"SpanishWithoutSublanguage", 10, "ESN"},
    {"ChineseWithoutSublanguage", 4, "CHS"},
    {"ScriptWithoutSublanguage", 0x7C04, "ZHH"},
    {"GermanInPhoneBookOrder", 0x10407, "DEU"},
    {"UnknownPrimaryLanguage", 0x03FF, "unchanged"},
    {"UnknownSublanguage", 0xFC09, "unchanged"},
    {"NoLanguage", 0xFFFF, "unchanged"},
    {"MoreThanALocale", 0x00100407, "unchanged"},
    {"AllBits", 0xFFFFFFFF, "unchanged"},
};
INSTANTIATE_TEST_SUITE_P(Languages, LocaleApiAbbreviationTest, ::testing::ValuesIn(kAbbreviations),
                         [](auto const& row) { return row.param.test; });

TEST(LocaleApiTest, LanguagesOfUserAndSystemAreKnown) {
  for (std::uint16_t const language : {locales().userUiLanguage(), locales().userLanguage(),
                                       locales().systemUiLanguage(), locales().systemLanguage()}) {
    EXPECT_GE(language, 0x400) << "never without a sublanguage";
    EXPECT_EQ(abbreviationOf(language).size(), 3u) << language;
  }
}

TEST(LocaleApiTest, PlaceholdersMeanTheLanguageInUse) {
  EXPECT_EQ(abbreviationOf(0), abbreviationOf(locales().userLanguage()));
  EXPECT_EQ(abbreviationOf(0x0400), abbreviationOf(locales().userLanguage()));
  EXPECT_EQ(abbreviationOf(0x0800), abbreviationOf(locales().systemLanguage()));
}

TEST(LocaleApiTest, ThreadStartsWithTheLocaleOfTheUser) {
  inNewThread([] { EXPECT_EQ(locales().threadLocale(), locales().userLanguage()); });
}

TEST(LocaleApiTest, ThreadLocaleIsSetForOneThread) {
  inNewThread([] {
    EXPECT_TRUE(locales().setThreadLocale(1041));
    EXPECT_EQ(locales().threadLocale(), 1041u);
    inNewThread([] {
      EXPECT_EQ(locales().threadLocale(), locales().userLanguage());
      EXPECT_TRUE(locales().setThreadLocale(1036));
    });
    EXPECT_EQ(locales().threadLocale(), 1041u);
    EXPECT_TRUE(locales().setThreadLocale(1041)) << "the same again";
    EXPECT_EQ(locales().threadLocale(), 1041u);
  });
}

TEST(LocaleApiTest, UnknownLocalesAreRefused) {
  inNewThread([] {
    EXPECT_TRUE(locales().setThreadLocale(1041));
    for (ulong32 const locale : {0x03FFul, 0xFC09ul, 0xFFFFul, 0x100407ul, 0x80000407ul, 0xFFFFFFFFul}) {
      EXPECT_FALSE(locales().setThreadLocale(static_cast<ulong32>(locale))) << locale;
      EXPECT_EQ(locales().threadLocale(), 1041u);
    }
  });
}

TEST(LocaleApiTest, NeutralLocalesBecomeTheirStandardLanguage) {
  inNewThread([] {
    EXPECT_TRUE(locales().setThreadLocale(7));
    EXPECT_EQ(locales().threadLocale(), 1031u);
    EXPECT_TRUE(locales().setThreadLocale(0x7C04));
    EXPECT_EQ(locales().threadLocale(), 0x0C04u);
    EXPECT_TRUE(locales().setThreadLocale(0x0400));
    EXPECT_EQ(locales().threadLocale(), locales().userLanguage());
    EXPECT_TRUE(locales().setThreadLocale(0x0800));
    EXPECT_EQ(locales().threadLocale(), locales().systemLanguage());
  });
}

TEST(LocaleApiTest, LanguageOfALocaleWithSortOrderIsKept) {
  inNewThread([] {
    EXPECT_TRUE(locales().setThreadLocale(0x10407));
    EXPECT_EQ(locales().threadLocale() & 0xFFFF, 0x0407u);
    ulong32 const set = locales().threadLocale();
    EXPECT_TRUE(locales().setThreadLocale(1033));
    EXPECT_TRUE(locales().setThreadLocale(set)) << "what the thread had is accepted again";
    EXPECT_EQ(locales().threadLocale(), set);
  });
}

TEST(LocaleApiTest, EveryLocaleOfTheEnumerationCanBeSetAndHasAnAbbreviation) {
  GroupsOfLocales const groups = allLocales();
  inNewThread([&groups] {
    for (auto const& group : groups) {
      for (ulong32 const locale : group.second) {
        EXPECT_TRUE(locales().setThreadLocale(locale)) << locale;
        EXPECT_EQ(locales().threadLocale() & 0xFFFF, locale & 0xFFFF);
        EXPECT_EQ(abbreviationOf(locale).size(), 3u) << locale;
      }
    }
  });
}

// The language of the first locale that has the abbreviation, as a search finds it.
TEST(LocaleApiTest, EnumerationFindsTheCommonLanguages) {
  std::map<std::string, ulong32> first;
  for (auto const& group : allLocales()) {
    for (ulong32 const locale : group.second) first.emplace(abbreviationOf(locale), locale & 0xFFFF);
  }
  struct Row {
    char const* abbreviation;
    ulong32 language;
  };
  Row const rows[] = {{"DEU", 1031}, {"ENU", 1033}, {"ENG", 2057}, {"FRA", 1036}, {"ITA", 1040}, {"ESN", 3082},
                      {"JPN", 1041}, {"KOR", 1042}, {"CHS", 2052}, {"CHT", 1028}, {"RUS", 1049}, {"PTB", 1046}};
  for (Row const& row : rows) EXPECT_EQ(first[row.abbreviation], row.language) << row.abbreviation;
  EXPECT_EQ(first.count("QQQ"), 0u);
}

TEST(LocaleApiTest, EnumerationHasOnlyLanguagesWithSublanguage) {
  std::set<ulong32> seen;
  for (auto const& group : allLocales()) {
    for (ulong32 const locale : group.second) {
      EXPECT_TRUE((locale & 0xFFFF) >= 0x400 || (locale & 0xFFFF) == 0x7F) << locale;
      seen.insert(locale);
    }
  }
  EXPECT_GT(seen.size(), 200u);
}

struct StopAfter {
  int calls;
  int left;
};

bool countDown(ulong32, void* context) {
  auto& stop = *static_cast<StopAfter*>(context);
  ++stop.calls;
  return --stop.left > 0;
}

TEST(LocaleApiTest, EnumerationEndsWhenTheCallbackSaysSo) {
  StopAfter groups = {0, 1};
  locales().enumerateLanguageGroups(&countDown, &groups);
  EXPECT_EQ(groups.calls, 1);
  ulong32 const group = allLocales().front().first;
  for (int const wanted : {1, 2, 5}) {
    StopAfter members = {0, wanted};
    locales().enumerateLocales(group, &countDown, &members);
    EXPECT_EQ(members.calls, wanted);
  }
}

TEST(LocaleApiTest, UnknownGroupHasNoLocales) {
  StopAfter members = {0, 1000};
  locales().enumerateLocales(0xFFFF, &countDown, &members);
  EXPECT_EQ(members.calls, 0);
}

TEST(LocaleApiTest, CommandLineHasTheArgumentsOfThisProcess) {
  std::vector<std::string> const expected = ::testing::internal::GetArgvs();
  std::vector<wstring> arguments = {KVW("old")};
  ASSERT_TRUE(locales().commandLine(arguments));
  ASSERT_EQ(arguments.size(), expected.size());
  EXPECT_FALSE(arguments[0].empty());
  for (std::size_t i = 1; i < expected.size(); ++i) EXPECT_EQ(narrow(arguments[i]), expected[i]);
}

TEST(LocaleApiTest, ControlsLanguageChangesNoLanguageOfTheThread) {
  inNewThread([] {
    ulong32 const before = locales().threadLocale();
    locales().setControlsLanguage(1041);
    locales().setControlsLanguage(locales().userUiLanguage());
    EXPECT_EQ(locales().threadLocale(), before);
  });
}

TEST(LocaleApiConcurrencyTest, ThreadsDoNotSeeTheLocalesOfOthers) {
  constexpr ulong32 kLocales[] = {1031, 1033, 1036, 1041};
  std::vector<std::thread> threads;
  for (ulong32 const locale : kLocales) {
    threads.emplace_back([locale] {
      for (int i = 0; i < 1000; ++i) {
        EXPECT_TRUE(locales().setThreadLocale(locale));
        EXPECT_EQ(locales().threadLocale(), locale);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
