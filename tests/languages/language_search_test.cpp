// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <ostream>
#include <stdexcept>

#include "tests/languages/language_world.h"
#include "tests/support/allocation_failure.h"

namespace KV_1_1 {
namespace testing {
namespace {

constexpr wchar kPattern[] = KVW("%ls.dll");

// "path id" of a search for the translation of tool.dll.
std::string textOf(LanguageFile const& file) {
  return narrow(file.path) + ' ' + std::to_string(file.langId);
}
std::string find(LanguageWorld const& world, unsigned short preferred = kNoLanguage) {
  return textOf(FindLanguageFile(world.tool(), kPattern, /*prefixModuleName=*/true, preferred));
}

// --- The id of an abbreviation ------------------------------------------------------------------------------------------

TEST(LanguageSearch, AnAbbreviationIsFoundInAnyCase) {
  LanguageWorld world;
  for (wchar const* abbrev : {KVW("deu"), KVW("DEU"), KVW("dEu")}) EXPECT_EQ(GetLangIdOfAbbrev(abbrev), kGerman);
  EXPECT_EQ(GetLangIdOfAbbrev(KVW("de")), kNoLanguage);
  EXPECT_EQ(GetLangIdOfAbbrev(KVW("deut")), kNoLanguage);
  EXPECT_EQ(GetLangIdOfAbbrev(KVW("")), kNoLanguage);
}

TEST(LanguageSearch, OnlyAsciiLettersHaveACase) {
  LanguageWorld world;
  world.locales.abbreviations[kGerman] = KVW("D\u00c4U");
  EXPECT_EQ(GetLangIdOfAbbrev(KVW("d\u00c4u")), kGerman);
  EXPECT_EQ(GetLangIdOfAbbrev(KVW("d\u00e4u")), kNoLanguage);
}

TEST(LanguageSearch, TheFirstLocaleWithTheAbbreviationEndsBothEnumerations) {
  LanguageWorld world;
  world.locales.abbreviations[kFrench] = KVW("DEU");
  EXPECT_EQ(GetLangIdOfAbbrev(KVW("deu")), kGerman);
  EXPECT_EQ(world.locales.log, Texts({"enumerateLanguageGroups", "enumerateLocales 1", "languageAbbreviation 1033",
                                      "languageAbbreviation 1031"}));
}

TEST(LanguageSearch, AllGroupsAreSearched) {
  LanguageWorld world;
  EXPECT_EQ(GetLangIdOfAbbrev(KVW("jpn")), kJapanese);
  EXPECT_EQ(GetLangIdOfAbbrev(KVW("xyz")), kNoLanguage);
  EXPECT_EQ(world.locales.log.back(), "languageAbbreviation 1041");
}

TEST(LanguageSearch, TheIdIsTheLow16BitsOfTheLocale) {
  LanguageWorld world;
  world.locales.groups = {{1, {0x10407}}};
  world.locales.abbreviations[0x10407] = KVW("DEP");
  EXPECT_EQ(GetLangIdOfAbbrev(KVW("dep")), kGerman);
}

TEST(LanguageSearch, ALocaleWithoutAbbreviationIsPassedOver) {
  LanguageWorld world;
  world.locales.abbreviations.erase(kEnglish);
  EXPECT_EQ(GetLangIdOfAbbrev(KVW("deu")), kGerman);
}

// Such an id is the same as none, so the search goes on.
TEST(LanguageSearch, ALocaleThatEndsInNoLanguageIsPassedOver) {
  LanguageWorld world;
  world.locales.groups = {{1, {0x1FFFF, kGerman}}};
  world.locales.abbreviations[0x1FFFF] = KVW("DEU");
  EXPECT_EQ(GetLangIdOfAbbrev(KVW("deu")), kGerman);
}

TEST(LanguageSearch, WithoutAnEnumerationNoAbbreviationIsKnown) {
  LanguageWorld world;
  for (char const* method : {"enumerateLanguageGroups", "enumerateLocales", "languageAbbreviation"}) {
    SCOPED_TRACE(method);
    world.locales.failures = {method};
    EXPECT_EQ(GetLangIdOfAbbrev(KVW("deu")), kNoLanguage);
  }
}

TEST(LanguageSearch, AGroupThatCannotBeEnumeratedIsPassedOver) {
  LanguageWorld world;
  world.locales.failAt = 2;
  EXPECT_EQ(GetLangIdOfAbbrev(KVW("deu")), kNoLanguage);
  world.locales.log.clear();
  EXPECT_EQ(GetLangIdOfAbbrev(KVW("jpn")), kJapanese);
}

TEST(LanguageSearch, CallbacksWithoutContextOrAbbreviationEndTheEnumeration) {
  LanguageWorld world;
  LangIdSearch search;
  EXPECT_FALSE(SearchLanguageGroup(1, nullptr));
  EXPECT_FALSE(SearchLocale(kGerman, nullptr));
  EXPECT_FALSE(SearchLanguageGroup(1, &search));
  EXPECT_FALSE(SearchLocale(kGerman, &search));
  EXPECT_EQ(world.locales.log, Texts());
  EXPECT_EQ(GetLangIdOfAbbrev(nullptr), kNoLanguage);
}

TEST(LanguageSearch, CallbacksTellWhetherToGoOn) {
  LanguageWorld world;
  LangIdSearch search;
  search.abbrev = KVW("deu");
  EXPECT_TRUE(SearchLocale(kEnglish, &search));
  EXPECT_FALSE(SearchLocale(kGerman, &search));
  EXPECT_EQ(search.langId, kGerman);
  search = LangIdSearch();
  search.abbrev = KVW("jpn");
  EXPECT_TRUE(SearchLanguageGroup(1, &search));
  EXPECT_FALSE(SearchLanguageGroup(7, &search));
  EXPECT_EQ(search.langId, kJapanese);
}

// --- Where the file is looked for ---------------------------------------------------------------------------------------

TEST(LanguageSearch, FoldersInTheirOrder) {
  LanguageWorld world;
  world.setProduct();
  world.locales.userUi = kAnyGerman;
  EXPECT_EQ(find(world), " 65535");
  EXPECT_EQ(world.probes(), Texts({"C:\\app\\toolGER.dll", "C:\\app\\languages\\toolGER.dll",
                                   "C:\\Common\\Acme\\Scan\\2.1\\toolGER.dll"}));
}

TEST(LanguageSearch, TheFirstFolderWithTheFileCounts) {
  wchar const* const files[] = {KVW("C:\\Common\\Acme\\Scan\\2.1\\toolGER.dll"), KVW("C:\\app\\languages\\toolGER.dll"),
                                KVW("C:\\app\\toolGER.dll")};
  LanguageWorld world;
  world.setProduct();
  world.locales.userUi = kAnyGerman;
  for (wchar const* file : files) {
    world.modules.files.insert(file);
    EXPECT_EQ(find(world), narrow(file) + " 7");
  }
}

TEST(LanguageSearch, WithoutProductFolderTwoFoldersRemain) {
  LanguageWorld world;
  world.locales.userUi = kAnyGerman;
  EXPECT_EQ(find(world), " 65535");
  EXPECT_EQ(world.probes(), Texts({"C:\\app\\toolGER.dll", "C:\\app\\languages\\toolGER.dll"}));
}

TEST(LanguageSearch, WithoutABackslashInThePathOnlyTheProductFolderIsSearched) {
  LanguageWorld world;
  world.modules.paths[world.tool()] = KVW("tool.dll");
  world.locales.userUi = kAnyGerman;
  EXPECT_EQ(find(world), " 65535");
  EXPECT_EQ(world.probes(), Texts());
  world.setProduct();
  EXPECT_EQ(find(world), " 65535");
  EXPECT_EQ(world.probes(), Texts({"C:\\Common\\Acme\\Scan\\2.1\\toolGER.dll"}));
}

TEST(LanguageSearch, WithoutThePathOfTheModuleNothingIsAsked) {
  LanguageWorld world;
  world.setArguments({KVW("-lang=deu")});
  world.modules.failures = {"modulePath"};
  EXPECT_EQ(find(world, kGerman), " 65535");
  EXPECT_EQ(world.modules.log, Texts({"modulePath"}));
  EXPECT_EQ(world.locales.log, Texts());
  EXPECT_EQ(world.shell.log, Texts());
}

TEST(LanguageSearch, TheLongFormOfThePathIsUsedIfThereIsOne) {
  LanguageWorld world;
  world.modules.paths[world.tool()] = KVW("C:\\APPLIC~1\\LONGTO~1.DLL");
  world.modules.longPaths[KVW("C:\\APPLIC~1\\LONGTO~1.DLL")] = KVW("C:\\applications\\longtool.dll");
  world.locales.userUi = kAnyGerman;
  find(world);
  EXPECT_EQ(world.probes().front(), "C:\\applications\\longtoolGER.dll");
  world.modules.log.clear();
  world.modules.failures = {"longPath"};
  find(world);
  EXPECT_EQ(world.probes().front(), "C:\\APPLIC~1\\LONGTO~1GER.dll");
}

struct NameRow {
  char const* name;
  wchar const* module;
  bool prefix;
  char const* probe;
};

void PrintTo(NameRow const& row, std::ostream* out) {
  *out << row.name;
}

NameRow const kNameRows[] = {
    {"WithModuleName", KVW("C:\\app\\tool.dll"), true, "C:\\app\\toolGER.dll"},
    {"WithoutModuleName", KVW("C:\\app\\tool.dll"), false, "C:\\app\\GER.dll"},
    {"TwoDots", KVW("C:\\app\\tool.x.dll"), true, "C:\\app\\tool.xGER.dll"},
    {"NoDot", KVW("C:\\app\\tool"), true, "C:\\app\\toolGER.dll"},
    {"DotInTheFolder", KVW("C:\\my.app\\tool"), true, "C:\\my.app\\toolGER.dll"},
    {"LinuxModule", KVW("\\opt\\app\\tool.so"), true, "\\opt\\app\\toolGER.dll"},
    // Percent signs in the folder and in the module's name belong to the format.
    {"TwoPercentSigns", KVW("C:\\100%%\\a%%b.dll"), true, "C:\\100%\\a%bGER.dll"},
    {"FourPercentSigns", KVW("C:\\%%%%\\a.dll"), true, "C:\\%%\\aGER.dll"},
    {"OnePercentSign", KVW("C:\\100%\\tool.dll"), true, ""},
    // "%%ls": the sign joins that of the pattern, so no abbreviation is asked for.
    {"PercentSignAtTheEndOfTheStem", KVW("C:\\app\\tool%.dll"), true, "C:\\app\\tool%ls.dll"},
    {"ThreePercentSigns", KVW("C:\\%%%a\\tool.dll"), true, ""},
    {"NumberConversion", KVW("C:\\%d\\tool.dll"), true, ""},
    {"TextConversion", KVW("C:\\%s\\tool.dll"), true, ""},
    {"WideTextConversionTakesTheArgumentOfTheName", KVW("C:\\%ls\\tool.dll"), true, ""},
    {"WidthAndPrecision", KVW("C:\\%5.3ls\\tool.dll"), true, ""},
    {"WritingConversion", KVW("C:\\%n\\tool.dll"), true, ""},
    {"NameBesideThatIsNotUsed", KVW("C:\\app\\tool%.dll"), false, "C:\\app\\GER.dll"},
};

class LanguageSearchNames : public ::testing::TestWithParam<NameRow> {};

TEST_P(LanguageSearchNames, OfTheFile) {
  NameRow const& row = GetParam();
  LanguageWorld world;
  world.modules.paths[world.tool()] = row.module;
  world.locales.userUi = kAnyGerman;
  FindLanguageFile(world.tool(), kPattern, row.prefix, kNoLanguage);
  Texts const probes = world.probes();
  EXPECT_EQ(probes.empty() ? "" : probes.front(), row.probe);
}

INSTANTIATE_TEST_SUITE_P(Rows, LanguageSearchNames, ::testing::ValuesIn(kNameRows),
                         [](auto const& row) { return std::string(row.param.name); });

TEST(LanguageSearch, AConversionInOneFolderLeavesTheOthersAlone) {
  LanguageWorld world;
  world.setProduct();
  world.modules.paths[world.tool()] = KVW("C:\\100%\\tool.dll");
  world.locales.userUi = kAnyGerman;
  find(world);
  EXPECT_EQ(world.probes(), Texts({"C:\\Common\\Acme\\Scan\\2.1\\toolGER.dll"}));
}

TEST(LanguageSearch, AConversionInTheProductFolderCountsAsNotFound) {
  LanguageWorld world;
  world.setProduct();
  world.setText(KVW("tool.dll"), KVW("CompanyName"), KVW("%s"));
  world.locales.userUi = kAnyGerman;
  find(world);
  EXPECT_EQ(world.probes(), Texts({"C:\\app\\toolGER.dll", "C:\\app\\languages\\toolGER.dll"}));
}

TEST(LanguageSearch, APathOf260UnitsDoesNotFit) {
  LanguageWorld world;
  world.locales.userUi = kAnyGerman;
  // "C:\<folder>\toolGER.dll", and ten units more in "languages\".
  wstring const folder(259 - 15, KVW('f'));
  world.modules.paths[world.tool()] = KVW("C:\\") + folder + KVW("\\tool.dll");
  find(world);
  EXPECT_EQ(world.probes(), Texts({"C:\\" + narrow(folder) + "\\toolGER.dll"}));
  EXPECT_EQ(world.probes()[0].size(), 259u);
  world.modules.log.clear();
  world.modules.paths[world.tool()] = KVW("C:\\f") + folder + KVW("\\tool.dll");
  find(world);
  EXPECT_EQ(world.probes(), Texts());
}

TEST(LanguageSearch, FailuresOfTheProductFolderPass) {
  LanguageWorld world;
  world.setText(KVW("tool.dll"), KVW("CompanyName"), KVW("Acme"));
  world.setArguments({KVW("-lang=deu")});
  std::string failure;
  try {
    find(world);
  } catch (std::runtime_error const& error) {
    failure = error.what();
  }
  EXPECT_EQ(failure, "VerQueryValue failed");
  // The folders are made first, so nothing has been asked about languages.
  EXPECT_EQ(world.locales.log, Texts());
}

// --- A forced language --------------------------------------------------------------------------------------------------

TEST(LanguageSearch, AForcedLanguageNamesTheFileAsItWasTyped) {
  LanguageWorld world;
  world.setArguments({KVW("-LANG=dEu")});
  world.modules.files = {KVW("C:\\app\\tooldEu.dll"), KVW("C:\\app\\toolDEU.dll")};
  EXPECT_EQ(find(world), "C:\\app\\tooldEu.dll 1031");
}

TEST(LanguageSearch, AForcedLanguageWithoutFileHasItsIdAndNoPath) {
  LanguageWorld world;
  world.setArguments({KVW("-lang=deu")});
  EXPECT_EQ(find(world), " 1031");
  EXPECT_EQ(world.probes(), Texts({"C:\\app\\tooldeu.dll", "C:\\app\\languages\\tooldeu.dll"}));
}

TEST(LanguageSearch, AForcedLanguageThatIsUnknownHasNoId) {
  LanguageWorld world;
  world.setArguments({KVW("-lang=abc")});
  EXPECT_EQ(find(world), " 65535");
  world.modules.files = {KVW("C:\\app\\languages\\toolabc.dll")};
  EXPECT_EQ(find(world), "C:\\app\\languages\\toolabc.dll 65535");
}

TEST(LanguageSearch, AForcedLanguageDoesNotFallThrough) {
  LanguageWorld world;
  world.setArguments({KVW("-lang=deu")});
  world.setLanguages(kFrench, kFrench, kFrench, kFrench);
  world.modules.files = {KVW("C:\\app\\toolFRA.dll"), KVW("C:\\app\\toolJPN.dll"), KVW("C:\\app\\toolGER.dll")};
  EXPECT_EQ(find(world, kJapanese), " 1031");
}

TEST(LanguageSearch, EnglishCanBeForced) {
  LanguageWorld world;
  world.setArguments({KVW("-lang=enu")});
  world.modules.files = {KVW("C:\\app\\toolenu.dll")};
  EXPECT_EQ(find(world), "C:\\app\\toolenu.dll 1033");
}

TEST(LanguageSearch, TheSettingsForceALanguageUnlessTheCommandLineDoes) {
  LanguageWorld world;
  world.setRegistry(KVW("fra"));
  world.modules.files = {KVW("C:\\app\\toolfra.dll"), KVW("C:\\app\\tooldeu.dll")};
  EXPECT_EQ(find(world), "C:\\app\\toolfra.dll 1036");
  world.setRegistry(KVW("deu"));
  EXPECT_EQ(find(world), "C:\\app\\tooldeu.dll 1031");
  world.setArguments({KVW("-lang=fra")});
  EXPECT_EQ(find(world), "C:\\app\\toolfra.dll 1036");
}

TEST(LanguageSearch, SettingsThatDoNotCountLeaveTheLanguagesOfTheSystem) {
  for (int row = 0; row < 2; ++row) {
    LanguageWorld world;
    if (row == 0) world.setRegistry(3, ScriptedSettings::bytesOf(KVW("fra")));
    if (row == 1) world.setRegistry(KVW("fran"));
    world.locales.userUi = kGerman;
    world.modules.files = {KVW("C:\\app\\toolfra.dll"), KVW("C:\\app\\toolDEU.dll")};
    EXPECT_EQ(find(world), "C:\\app\\toolDEU.dll 1031");
  }
}

// --- Wanted languages ---------------------------------------------------------------------------------------------------

TEST(LanguageSearch, CandidatesInTheirOrderEachWithItsPrimaryLanguage) {
  LanguageWorld world;
  world.locales.abbreviations = {{0x0405, KVW("A")},  {5, KVW("a")},  {kGerman, KVW("B")},   {7, KVW("b")},
                                 {kFrench, KVW("C")}, {12, KVW("c")}, {kJapanese, KVW("D")}, {17, KVW("d")},
                                 {0x0413, KVW("E")},  {19, KVW("e")}};
  world.setLanguages(kGerman, kFrench, kJapanese, 0x0413);
  EXPECT_EQ(find(world, 0x0405), " 65535");
  Texts expected;
  for (char const* abbrev : {"A", "a", "B", "b", "C", "c", "D", "d", "E", "e"}) {
    for (char const* folder : {"C:\\app\\tool", "C:\\app\\languages\\tool"}) {
      expected.push_back(std::string(folder) + abbrev + ".dll");
    }
  }
  EXPECT_EQ(world.probes(), expected);
}

TEST(LanguageSearch, EachCandidateMayHaveTheFile) {
  struct {
    wchar const* file;
    char const* expected;
  } const rows[] = {{KVW("C:\\app\\languages\\toolNLD.dll"), "C:\\app\\languages\\toolNLD.dll 1043"},
                    {KVW("C:\\app\\toolJPN.dll"), "C:\\app\\toolJPN.dll 1041"},
                    {KVW("C:\\app\\toolFRA.dll"), "C:\\app\\toolFRA.dll 1036"},
                    {KVW("C:\\app\\toolDEU.dll"), "C:\\app\\toolDEU.dll 1031"},
                    {KVW("C:\\app\\toolCSY.dll"), "C:\\app\\toolCSY.dll 1029"}};
  LanguageWorld world;
  world.locales.abbreviations[0x0405] = KVW("CSY");
  world.locales.abbreviations[0x0413] = KVW("NLD");
  world.setLanguages(kGerman, kFrench, kJapanese, 0x0413);
  // The files are added from the least to the most wanted.
  for (auto const& row : rows) {
    world.modules.files.insert(row.file);
    EXPECT_EQ(find(world, 0x0405), row.expected);
  }
}

TEST(LanguageSearch, AFileOfThePrimaryLanguageHasItsId) {
  LanguageWorld world;
  world.locales.userUi = kAustrian;
  world.modules.files = {KVW("C:\\app\\toolGER.dll")};
  EXPECT_EQ(find(world), "C:\\app\\toolGER.dll 7");
}

TEST(LanguageSearch, AFullIdIsTriedInAllFoldersBeforeItsPrimaryLanguage) {
  LanguageWorld world;
  world.setProduct();
  world.locales.userUi = kAustrian;
  world.modules.files = {KVW("C:\\app\\toolGER.dll"), KVW("C:\\Common\\Acme\\Scan\\2.1\\toolDEA.dll")};
  EXPECT_EQ(find(world), "C:\\Common\\Acme\\Scan\\2.1\\toolDEA.dll 3079");
}

TEST(LanguageSearch, ThePrimaryLanguageIsTriedThoughTheFullIdHasNoAbbreviation) {
  LanguageWorld world;
  world.locales.abbreviations.erase(kAustrian);
  world.locales.userUi = kAustrian;
  world.modules.files = {KVW("C:\\app\\toolGER.dll")};
  EXPECT_EQ(find(world), "C:\\app\\toolGER.dll 7");
}

TEST(LanguageSearch, ALanguageWithoutAnyAbbreviationIsPassedOver) {
  LanguageWorld world;
  world.setLanguages(0x0C77, kFrench, kEnglish, kEnglish);
  world.modules.files = {KVW("C:\\app\\toolFRA.dll")};
  EXPECT_EQ(find(world), "C:\\app\\toolFRA.dll 1036");
  EXPECT_EQ(world.askedIds(), Texts({"3191", "119", "1036"}));
}

TEST(LanguageSearch, APrimaryLanguageIsTriedOnce) {
  LanguageWorld world;
  world.locales.userUi = kAnyGerman;
  find(world);
  EXPECT_EQ(world.askedIds(), Texts({"7"}));
}

TEST(LanguageSearch, ACandidateEqualToThePreviousOneIsPassedOver) {
  LanguageWorld world;
  world.setLanguages(kGerman, kGerman, kGerman, kEnglish);
  find(world, kGerman);
  EXPECT_EQ(world.askedIds(), Texts({"1031", "7"}));
}

TEST(LanguageSearch, ACandidateThatReturnsLaterIsTriedAgain) {
  LanguageWorld world;
  world.setLanguages(kGerman, kFrench, kGerman, kEnglish);
  find(world);
  EXPECT_EQ(world.askedIds(), Texts({"1031", "7", "1036", "12", "1031", "7"}));
}

TEST(LanguageSearch, NoLanguageAtTheBeginningEqualsTheStartValue) {
  LanguageWorld world;
  world.setLanguages(kNoLanguage, kGerman, kNoLanguage, kEnglish);
  find(world);
  EXPECT_EQ(world.askedIds(), Texts({"1031", "7", "65535", "1023"}));
}

TEST(LanguageSearch, EnglishEndsTheSearchWhereverItStands) {
  unsigned short const others[] = {0x0405, kGerman, kFrench, kJapanese, 0x0413};
  Texts const asked = {"1029", "5", "1031", "7", "1036", "12", "1041", "17", "1043", "19"};
  for (std::size_t english = 0; english < 5; ++english) {
    SCOPED_TRACE(english);
    LanguageWorld world;
    unsigned short ids[5];
    for (std::size_t i = 0; i < 5; ++i) ids[i] = i == english ? kEnglish : others[i];
    world.setLanguages(ids[1], ids[2], ids[3], ids[4]);
    // A file of English is not looked for, nor one of a language behind it.
    world.modules.files = {KVW("C:\\app\\toolENU.dll")};
    EXPECT_EQ(find(world, ids[0]), " 65535");
    EXPECT_EQ(world.askedIds(), Texts(asked.begin(), asked.begin() + static_cast<std::ptrdiff_t>(2 * english)));
  }
}

TEST(LanguageSearch, EnglishPreferredEndsTheSearchAtOnce) {
  LanguageWorld world;
  world.setLanguages(kGerman, kGerman, kGerman, kGerman);
  world.modules.files = {KVW("C:\\app\\toolENU.dll"), KVW("C:\\app\\toolDEU.dll")};
  EXPECT_EQ(find(world, kEnglish), " 65535");
  EXPECT_EQ(world.probes(), Texts());
}

TEST(LanguageSearch, WithoutEnglishTheSearchEndsBehindTheLastCandidate) {
  LanguageWorld world;
  world.setLanguages(kGerman, kGerman, kFrench, kFrench);
  world.modules.files = {KVW("C:\\app\\toolENU.dll")};
  EXPECT_EQ(find(world), " 65535");
  EXPECT_EQ(world.askedIds(), Texts({"1031", "7", "1036", "12"}));
}

TEST(LanguageSearch, OtherEnglishIsALanguageLikeAnyOther) {
  LanguageWorld world;
  world.locales.abbreviations[2057] = KVW("ENG");
  world.locales.abbreviations[9] = KVW("ENU");
  world.locales.userUi = 2057;
  world.modules.files = {KVW("C:\\app\\toolENU.dll")};
  EXPECT_EQ(find(world), "C:\\app\\toolENU.dll 9");
}

// --- Failing allocations ------------------------------------------------------------------------------------------------

TEST(LanguageSearch, AFailingAllocationAnywherePassesAndReleasesEverything) {
  for (bool const isForced : {false, true}) {
    SCOPED_TRACE(isForced);
    LanguageWorld world;
    world.setProduct();
    world.setLanguages(kAustrian, kFrench, kJapanese, kGerman);
    world.modules.files = {KVW("C:\\app\\languages\\toolDEU.dll"), KVW("C:\\app\\languages\\tooldeu.dll")};
    if (isForced) world.setArguments({KVW("-lang=deu")});
    for (AllocationSweep sweep; sweep.next();) {
      sweep.run([&] { FindLanguageFile(world.tool(), kPattern, true, kNoLanguage); });
      world.clearLogs();
      LanguageWorld::forget();
    }
    EXPECT_EQ(find(world), isForced ? "C:\\app\\languages\\tooldeu.dll 1031" : "C:\\app\\languages\\toolDEU.dll 1031");
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
