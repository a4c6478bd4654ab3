// SPDX-License-Identifier: MIT
#include "kvbase/languages/language_selection.h"

#include <gtest/gtest.h>

#include "kvbase/languages/translation.h"
#include "kvbase/modules/client_module.h"
#include "tests/languages/language_world.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/module_instances.h"

namespace KV_1_1 {
namespace testing {
namespace {

Texts used() {
  Texts texts;
  for (wstring const& abbrev : GetUsedLangAbbrevs()) texts.push_back(narrow(abbrev));
  return texts;
}

TEST(LanguageSelection, FourTimesEnglishIsOneLanguage) {
  LanguageWorld world;
  EXPECT_EQ(used(), Texts({"ENU"}));
}

TEST(LanguageSelection, LanguagesInTheirOrderWithEnglishAtTheEnd) {
  LanguageWorld world;
  world.setLanguages(kGerman, kFrench, kJapanese, kAustrian);
  EXPECT_EQ(used(), Texts({"DEU", "FRA", "JPN", "DEA", "ENU"}));
  EXPECT_EQ(world.askedIds(), Texts({"1031", "1036", "1041", "3079", "1033"}));
}

TEST(LanguageSelection, AnIdThatReturnsIsSkipped) {
  LanguageWorld world;
  world.setLanguages(kGerman, kFrench, kGerman, kFrench);
  EXPECT_EQ(used(), Texts({"DEU", "FRA", "ENU"}));
  EXPECT_EQ(world.askedIds(), Texts({"1031", "1036", "1033"}));
}

TEST(LanguageSelection, EnglishKeepsThePlaceOfItsFirstAppearance) {
  LanguageWorld world;
  world.setLanguages(kEnglish, kGerman, kEnglish, kFrench);
  EXPECT_EQ(used(), Texts({"ENU", "DEU", "FRA"}));
}

TEST(LanguageSelection, TwoIdsWithOneAbbreviationGiveItTwice) {
  LanguageWorld world;
  world.locales.abbreviations[kAustrian] = KVW("DEU");
  world.setLanguages(kGerman, kAustrian, kEnglish, kEnglish);
  EXPECT_EQ(used(), Texts({"DEU", "DEU", "ENU"}));
}

TEST(LanguageSelection, AnIdWithoutAbbreviationIsLeftOutAndNotAskedForAgain) {
  LanguageWorld world;
  world.locales.abbreviations.erase(kGerman);
  world.locales.abbreviations[kFrench].clear();
  world.setLanguages(kGerman, kFrench, kGerman, kFrench);
  EXPECT_EQ(used(), Texts({"ENU"}));
  EXPECT_EQ(world.askedIds(), Texts({"1031", "1036", "1033"}));
  world.locales.failures = {"languageAbbreviation"};
  EXPECT_EQ(used(), Texts());
}

TEST(LanguageSelection, PrimaryLanguagesAndFilesDoNotMatter) {
  LanguageWorld world;
  world.setLanguages(kGerman, kGerman, kGerman, kGerman);
  used();
  EXPECT_EQ(world.askedIds(), Texts({"1031", "1033"}));
  EXPECT_EQ(world.probes(), Texts());
}

TEST(LanguageSelection, AFileIsNotLookedForBehindEnglishThoughTheLanguageIsUsed) {
  LanguageWorld world;
  world.setLanguages(kEnglish, kEnglish, kGerman, kGerman);
  world.modules.files = {KVW("C:\\app\\toolDEU.dll")};
  EXPECT_EQ(FindLanguageFile(world.tool(), KVW("%ls.dll"), true, kNoLanguage).langId, kNoLanguage);
  EXPECT_EQ(used(), Texts({"ENU", "DEU"}));
}

TEST(LanguageSelection, AForcedLanguageStandsAloneAsItWasTyped) {
  LanguageWorld world;
  world.setLanguages(kGerman, kFrench, kJapanese, kAustrian);
  world.setRegistry(KVW("xyz"));
  EXPECT_EQ(used(), Texts({"xyz"}));
  world.setArguments({KVW("/LANG=dE")});
  EXPECT_EQ(used(), Texts({"dE"}));
  EXPECT_EQ(world.askedIds(), Texts());
}

TEST(LanguageSelection, ANeverTranslatedModuleHasNoLanguage) {
  LanguageWorld world;
  ModuleOwner owner;
  EXPECT_EQ(GetCurrentLangId(owner.module()), kNoLanguage);
  EXPECT_EQ(moduleLanguages().size(), 0u);
}

TEST(LanguageSelection, TheLanguageOfAModuleIsThatOfTheSearchForItsTranslation) {
  LanguageWorld world;
  ModuleOwner tool, program;
  setInstances(tool.module(), world.tool(), nullptr);
  setInstances(program.module(), world.program(), nullptr);
  world.locales.userUi = kAustrian;
  world.modules.files = {KVW("C:\\app\\toolGER.dll"), KVW("C:\\app\\progDEA.dll")};
  LoadTranslationDLL(world.tool(), kNoLanguage);
  EXPECT_EQ(GetCurrentLangId(tool.module()), kAnyGerman);
  EXPECT_EQ(GetCurrentLangId(program.module()), kNoLanguage);
  LoadTranslationDLL(world.program(), kNoLanguage);
  EXPECT_EQ(GetCurrentLangId(program.module()), kAustrian);
}

// The module's own handle counts, not that of the translation.
TEST(LanguageSelection, TheHandleOfTheTranslationDoesNotMatter) {
  LanguageWorld world;
  ModuleOwner tool;
  setInstances(tool.module(), world.tool(), world.program());
  moduleLanguages()[reinterpret_cast<std::uintptr_t>(world.program())] = kFrench;
  EXPECT_EQ(GetCurrentLangId(tool.module()), kNoLanguage);
  moduleLanguages()[reinterpret_cast<std::uintptr_t>(world.tool())] = kGerman;
  EXPECT_EQ(GetCurrentLangId(tool.module()), kGerman);
}

TEST(LanguageSelection, AFailingAllocationAnywherePassesAndReleasesEverything) {
  for (bool const isForced : {false, true}) {
    SCOPED_TRACE(isForced);
    LanguageWorld world;
    world.setLanguages(kGerman, kFrench, kJapanese, kAustrian);
    if (isForced) world.setArguments({KVW("-lang=deu")});
    for (AllocationSweep sweep; sweep.next();) {
      sweep.run([] { GetUsedLangAbbrevs(); });
      world.clearLogs();
      LanguageWorld::forget();
    }
    EXPECT_EQ(used().front(), isForced ? "deu" : "DEU");
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
