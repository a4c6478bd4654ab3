// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/locale/locale_name.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

#include "kvbase/platform/linux/locale/language_table.h"
#include "tests/support/threads.h"

namespace KV_1_1 {
namespace testing {
namespace {

unsigned int languageOf(std::string const& name) {
  return platform::languageOfLocaleName(name.data(), name.size());
}

struct NameRow {
  char const* test;
  char const* name;
  unsigned int language;
};

class LocaleNameTest : public ::testing::TestWithParam<NameRow> {};

TEST_P(LocaleNameTest, LeadsToTheLanguage) {
  EXPECT_EQ(languageOf(GetParam().name), GetParam().language);
}

constexpr NameRow kNames[] = {
    {"LanguageAndRegion", "de_DE", 0x0407},
    {"WithCharacterSet", "de_DE.UTF-8", 0x0407},
    {"WithUnusualCharacterSet", "zh_CN.gb18030", 0x0804},
    {"WithModifier", "es_ES@euro", 0x0C0A},
    {"WithCharacterSetAndModifier", "de_AT.ISO-8859-15@euro", 0x0C07},
    {"LanguageAlone", "de", 0x0407},
    {"LanguageAloneOfManyRegions", "en", 0x0409},
    {"PortugueseAloneIsThatOfBrazil", "pt", 0x0416},
    {"SpanishAloneIsTheModernSort", "es", 0x0C0A},
    {"LanguageWithCharacterSet", "fr.UTF-8", 0x040C},
    {"OtherRegion", "en_GB", 0x0809},
    {"RegionOfOneLanguage", "de_LU", 0x1007},
    {"NumericRegion", "es_419", 0x580A},
    {"RegionWithoutOwnLanguage", "en_DK.UTF-8", 0x0409},
    {"RegionWithoutOwnAbbreviation", "en_ID", 0x0409},
    {"OtherRegionWithoutOwnAbbreviation", "fr_029", 0x040C},
    {"UnknownRegion", "de_XX", 0x0407},
    {"UnknownRegionOfALanguageKnownOnlyWithItsOwn", "quc_XX", 0x0486},
    {"UpperAndLowerCaseAreAlike", "DE_de", 0x0407},
    {"HyphensAreSeparatorsToo", "de-AT", 0x0C07},
    {"ScriptAndRegion", "zh_Hant_HK", 0x0C04},
    {"ScriptAlone", "zh-Hant", 0x0404},
    {"ChineseAloneIsSimplified", "zh", 0x0804},
    {"ChineseOfTaiwanIsTraditional", "zh_TW", 0x0404},
    {"SerbianIsCyrillic", "sr_RS", 0x281A},
    {"SerbianAloneIsCyrillic", "sr", 0x281A},
    {"SerbianLatinByModifier", "sr_RS@latin", 0x241A},
    {"SerbianLatinByScript", "sr_Latn_RS", 0x241A},
    {"SerbianOfMontenegroIsLatin", "sr_ME", 0x2C1A},
    {"UzbekIsLatin", "uz_UZ", 0x0443},
    {"UzbekCyrillicByModifier", "uz_UZ@cyrillic", 0x0843},
    {"AzerbaijaniIsLatin", "az_AZ", 0x042C},
    {"AzerbaijaniAlone", "az", 0x042C},
    {"BosnianIsLatin", "bs_BA", 0x141A},
    {"PunjabiOfPakistan", "pa_PK", 0x0846},
    {"MongolianOfMongolia", "mn_MN", 0x0450},
    {"ScriptWithoutOwnLanguage", "be_BY@latin", 0x0423},
    {"ValencianByModifier", "ca_ES@valencia", 0x0803},
    {"ValencianWithCharacterSet", "ca_ES.UTF-8@valencia", 0x0803},
    {"CatalanWithOtherModifier", "ca_ES@euro", 0x0403},
    {"ValencianWithoutRegion", "ca@valencia", 0x0803},
    {"ValencianOfAnotherRegion", "ca_AD@valencia", 0x0403},
    {"ValenciaOfAnotherLanguage", "en@valencia", 0x0409},
    {"OldCodeOfHebrew", "iw_IL", 0x040D},
    {"NorwegianByItsOldCode", "no_NO", 0x0414},
    {"Bokmal", "nb_NO", 0x0414},
    {"Nynorsk", "nn_NO", 0x0814},
    {"CentralKurdish", "ckb_IQ", 0x0492},
    {"ThreeLetters", "fil_PH", 0x0464},
    {"Portable", "C", 0x0409},
    {"PortableByItsOtherName", "POSIX", 0x0409},
    {"PortableWithCharacterSet", "C.UTF-8", 0x0409},
    {"Empty", "", 0},
    {"UnknownLanguage", "tlh", 0},
    {"UnknownLanguageWithRegion", "xx_YY", 0},
    {"KnownRegionOfUnknownLanguage", "zz_DE", 0},
    {"LanguageWithoutAbbreviation", "la_VA", 0},
    {"LanguageWithoutId", "eo", 0},
    {"WordForALanguage", "german", 0},
    {"OneLetter", "d", 0},
    {"LowerCaseC", "c", 0},
    {"Digits", "12_34", 0},
    {"RegionOfOneLetter", "de_D", 0},
    {"RegionOfLetterAndDigit", "de_D3", 0},
    {"RegionOfThreeLetters", "de_DEU", 0},
    {"EmptyRegion", "de_", 0},
    {"EmptyLanguage", "_DE", 0},
    {"EmptyRegionBehindScript", "zh_Hant_", 0},
    {"TooManyPieces", "zh_Hant_HK_X", 0},
    {"TooManyPiecesWithoutScript", "de_DE_X", 0},
    {"AModifierThatIsNoneByItsSign", "sr_RS_latin", 0},
    {"CharacterSetOnly", ".UTF-8", 0},
    {"ModifierOnly", "@euro", 0},
    {"BlankInside", "de DE", 0},
    {"BlankBefore", " de_DE", 0},
    {"LineEndBehind", "de_DE\n", 0},
    {"NoUtf8", "de_DE.\xFF\xFE", 0},
    {"Path", "/usr/lib/locale/de_DE", 0},
    {"Percent", "%s%n", 0},
};
INSTANTIATE_TEST_SUITE_P(Names, LocaleNameTest, ::testing::ValuesIn(kNames),
                         [](auto const& row) { return row.param.test; });

TEST(LocaleNameLimit, OverlongNamesHaveNoLanguage) {
  EXPECT_EQ(languageOf("de_DE." + std::string(121, 'x')), 0x0407u);
  EXPECT_EQ(languageOf("de_DE." + std::string(122, 'x')), 0u);
  EXPECT_EQ(languageOf(std::string(1 << 20, 'd')), 0u);
  EXPECT_EQ(languageOf(std::string(100, 'd') + "_DE"), 0u);
}

TEST(LocaleNameLimit, NamesEndAtTheirSizeWhateverIsBehind) {
  EXPECT_EQ(platform::languageOfLocaleName("de_AT", 2), 0x0407);
  EXPECT_EQ(platform::languageOfLocaleName("de_AT:fr", 5), 0x0C07);
  EXPECT_EQ(platform::languageOfLocaleName("C.UTF-8", 1), 0x0409);
  EXPECT_TRUE(platform::isPortableLocale("CC", 1));
  EXPECT_FALSE(platform::isPortableLocale("CC", 2));
  EXPECT_FALSE(platform::isPortableLocale("C@x", 3));
}

TEST(LocaleNameLimit, InnerNulHasNoLanguage) {
  EXPECT_EQ(languageOf(std::string("de\0DE", 5)), 0u);
}

TEST(LocaleNameLimit, ANameHasItsLanguageWhateverWasAskedForBefore) {
  std::vector<std::pair<std::string, unsigned int>> const names = {
      {"de_DE", 0x0407}, {"de_AT", 0x0C07}, {"de", 0x0407},         {"xx_XX", 0},
      {"/usr", 0},       {"C", 0x0409},     {"fr_FR.UTF-8", 0x040C}};
  for (auto const& before : names) {
    for (auto const& name : names) {
      EXPECT_EQ(languageOf(before.first), before.second);
      EXPECT_EQ(languageOf(name.first), name.second) << name.first << " after " << before.first;
    }
  }
}

TEST(LocaleNameConcurrency, EachThreadGetsTheLanguageOfItsOwnName) {
  std::pair<char const*, unsigned int> const names[kThreads] = {
      {"de_DE", 0x0407}, {"fr_FR", 0x040C}, {"ja_JP", 0x0411}, {"de_AT", 0x0C07}};
  onThreads([&names](int thread) {
    for (int i = 0; i < 2000; ++i) EXPECT_EQ(languageOf(names[thread].first), names[thread].second);
  });
}

TEST(LocaleNameLimit, AnyBytesLeadToNoneOrToALanguageOfTheTable) {
  std::mt19937 random(7);
  char const pieces[] =
      "deDEenzhHantlatinsr__..@@-- \n\xFF\x80"
      "019";
  std::uniform_int_distribution<std::size_t> piece(0, sizeof pieces - 1);
  std::uniform_int_distribution<std::size_t> size(0, 12);
  for (int i = 0; i < 20000; ++i) {
    std::string name(size(random), ' ');
    for (char& c : name) c = pieces[piece(random)];
    unsigned int const language = languageOf(name);
    if (language == 0) continue;
    platform::Language const* const found = platform::findLanguage(language);
    ASSERT_NE(found, nullptr) << name;
    ASSERT_FALSE(found->isNeutral()) << name;
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
