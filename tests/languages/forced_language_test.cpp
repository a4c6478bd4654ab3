// SPDX-License-Identifier: MIT
//
// The language that the command line or the user's settings force.
#include <gtest/gtest.h>

#include <ostream>

#include "tests/languages/language_world.h"
#include "tests/support/allocation_failure.h"

namespace KV_1_1 {
namespace testing {
namespace {

struct ArgumentRow {
  char const* name;
  std::vector<wstring> arguments;
  char const* expected;
};

void PrintTo(ArgumentRow const& row, std::ostream* out) {
  *out << row.name;
}

ArgumentRow const kArgumentRows[] = {
    {"NoArguments", {}, "(null)"},
    {"Dash", {KVW("-lang=deu")}, "deu"},
    {"Slash", {KVW("/lang=deu")}, "deu"},
    {"UpperCaseName", {KVW("-LANG=deu")}, "deu"},
    {"MixedCaseIsKeptInTheAbbreviation", {KVW("/LaNg=DeU")}, "DeU"},
    {"OneLetter", {KVW("-lang=d")}, "d"},
    {"TwoLetters", {KVW("-lang=de")}, "de"},
    {"AnyCharacters", {KVW("-lang=\u00e4%\\")}, "\xC3\xA4%\\"},
    {"BehindOthers", {KVW("a.txt"), KVW("-x"), KVW(""), KVW("-lang=deu")}, "deu"},
    {"TheFirstCounts", {KVW("-lang=fra"), KVW("/lang=deu")}, "fra"},
    {"NothingBehindItStopsTheWalk", {KVW("-lang="), KVW("-lang=fra")}, "(null)"},
    {"FourLettersArePassedOver", {KVW("-lang=fran"), KVW("/lang=fra")}, "fra"},
    {"FourLettersAlone", {KVW("-lang=fran")}, "(null)"},
    {"FiveCharacters", {KVW("-lang")}, "(null)"},
    {"NoSign", {KVW("lang=deu")}, "(null)"},
    {"TwoDashes", {KVW("--lang=d")}, "(null)"},
    {"OtherSign", {KVW("+lang=deu")}, "(null)"},
    {"OtherName", {KVW("-long=deu")}, "(null)"},
    {"Colon", {KVW("-lang:deu")}, "(null)"},
    {"BlankInFront", {KVW(" -lang=de")}, "(null)"},
    {"OnlyAsciiFolds", {KVW("-l\u00c1ng=deu"), KVW("-\uff4cang=deu")}, "(null)"},
};

class ForcedLanguageArguments : public ::testing::TestWithParam<ArgumentRow> {};

TEST_P(ForcedLanguageArguments, GiveTheAbbreviation) {
  LanguageWorld world;
  world.setArguments(GetParam().arguments);
  EXPECT_EQ(shown(GetCommandLineLangAbbrev()), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, ForcedLanguageArguments, ::testing::ValuesIn(kArgumentRows),
                         [](auto const& row) { return std::string(row.param.name); });

TEST(ForcedLanguage, TheProgramsOwnNameMayBeTheOption) {
  LanguageWorld world;
  world.locales.arguments = {KVW("-lang=deu"), KVW("-lang=fra")};
  EXPECT_EQ(shown(GetCommandLineLangAbbrev()), "deu");
}

TEST(ForcedLanguage, WithoutACommandLineThereIsNone) {
  LanguageWorld world;
  world.setArguments({KVW("-lang=deu")});
  world.locales.failures = {"commandLine"};
  EXPECT_EQ(GetCommandLineLangAbbrev(), nullptr);
  world.locales.failures.clear();
  EXPECT_EQ(shown(GetCommandLineLangAbbrev()), "deu");
}

TEST(ForcedLanguage, TheCommandLineIsReadUntilItHasGivenALanguage) {
  LanguageWorld world;
  world.setArguments({KVW("-lang=")});
  EXPECT_EQ(GetCommandLineLangAbbrev(), nullptr);
  EXPECT_EQ(GetCommandLineLangAbbrev(), nullptr);
  EXPECT_EQ(world.locales.log, Texts(2, "commandLine"));
  world.setArguments({KVW("-lang=de")});
  EXPECT_EQ(GetCommandLineLangAbbrev(), commandLineSlot);
  world.setArguments({KVW("-lang=fra")});
  EXPECT_EQ(GetCommandLineLangAbbrev(), commandLineSlot);
  EXPECT_EQ(shown(commandLineSlot), "de");
  EXPECT_EQ(world.locales.log, Texts(3, "commandLine"));
}

// --- Settings -----------------------------------------------------------------------------------------------------------

TEST(ForcedLanguage, SettingsAreOpenedLevelByLevelAndClosedInReverse) {
  LanguageWorld world;
  world.setRegistry(KVW("deu"));
  EXPECT_EQ(GetRegistryLangAbbrev(), registrySlot);
  EXPECT_EQ(shown(registrySlot), "deu");
  std::string const volq = "Software\\VOLQ", prog = volq + "\\prog", settings = prog + "\\Settings",
                    version = settings + "\\10.0";
  EXPECT_EQ(world.settings.log, Texts({"open Software", "open " + volq, "open " + prog, "open " + settings,
                                       "open " + version, "read " + version + "|GUILanguage", "close " + version,
                                       "close " + settings, "close " + prog, "close " + volq, "close Software"}));
}

TEST(ForcedLanguage, AMissingKeyOnAnyLevelGivesNoneAndClosesTheOthers) {
  std::string const levels[] = {"Software", "Software\\VOLQ", "Software\\VOLQ\\prog", "Software\\VOLQ\\prog\\Settings",
                                "Software\\VOLQ\\prog\\Settings\\10.0"};
  for (int missing = 0; missing < 5; ++missing) {
    SCOPED_TRACE(levels[missing]);
    LanguageWorld world;
    world.setRegistry(KVW("deu"));
    ASSERT_EQ(shown(GetRegistryLangAbbrev()), "deu");
    world.settings.log.clear();
    world.settings.keys.erase(levels[missing]);
    EXPECT_EQ(GetRegistryLangAbbrev(), nullptr);
    EXPECT_EQ(shown(registrySlot), "");
    Texts expected;
    for (int i = 0; i <= missing; ++i) expected.push_back("open " + levels[i]);
    for (int i = missing - 1; i >= 0; --i) expected.push_back("close " + levels[i]);
    EXPECT_EQ(world.settings.log, expected);
    EXPECT_EQ(world.settings.openKeys, 0);
  }
}

struct ValueRow {
  char const* name;
  ulong32 type;
  std::string bytes;
  char const* expected;
};

void PrintTo(ValueRow const& row, std::ostream* out) {
  *out << row.name;
}

std::string unterminated(wstring const& text) {
  return std::string(reinterpret_cast<char const*>(text.data()), text.size() * sizeof(wchar));
}

ValueRow const kValueRows[] = {
    {"Text", 1, ScriptedSettings::bytesOf(KVW("deu")), "deu"},
    {"ExpandableText", 2, ScriptedSettings::bytesOf(KVW("DEU")), "DEU"},
    {"NoType", 0, ScriptedSettings::bytesOf(KVW("deu")), "(null)"},
    {"Binary", 3, ScriptedSettings::bytesOf(KVW("deu")), "(null)"},
    {"Number", 4, unterminated(KVW("de")), "(null)"},
    {"ListOfTexts", 7, ScriptedSettings::bytesOf(KVW("de")), "(null)"},
    {"EmptyText", 1, ScriptedSettings::bytesOf(KVW("")), "(null)"},
    {"NoBytes", 1, "", "(null)"},
    {"OneLetter", 1, ScriptedSettings::bytesOf(KVW("d")), "d"},
    {"TwoLetters", 1, ScriptedSettings::bytesOf(KVW("de")), "de"},
    {"ThreeLettersWithoutTerminator", 1, unterminated(KVW("deu")), "deu"},
    {"FourLettersWithTerminator", 1, ScriptedSettings::bytesOf(KVW("fran")), "(null)"},
    {"FourLettersWithoutTerminator", 1, unterminated(KVW("fran")), "(null)"},
    {"OddNumberOfBytes", 1, std::string("d\0e", 3), "de"},
    {"TextBehindATerminator", 1, std::string("d\0\0\0u\0\0\0", 8), "d"},
};

class ForcedLanguageValues : public ::testing::TestWithParam<ValueRow> {};

TEST_P(ForcedLanguageValues, OfTheSettings) {
  LanguageWorld world;
  world.setRegistry(GetParam().type, GetParam().bytes);
  EXPECT_EQ(shown(GetRegistryLangAbbrev()), GetParam().expected);
  // What does not count leaves nothing behind.
  EXPECT_EQ(registrySlot[0] == 0, GetParam().expected == std::string("(null)"));
  EXPECT_EQ(registrySlot[3], 0);
  EXPECT_EQ(world.settings.openKeys, 0);
}

INSTANTIATE_TEST_SUITE_P(Rows, ForcedLanguageValues, ::testing::ValuesIn(kValueRows),
                         [](auto const& row) { return std::string(row.param.name); });

TEST(ForcedLanguage, AMissingValueGivesNone) {
  LanguageWorld world;
  world.setRegistry(KVW("deu"));
  world.settings.values.clear();
  EXPECT_EQ(GetRegistryLangAbbrev(), nullptr);
  EXPECT_EQ(world.settings.openKeys, 0);
}

// All keys exist; reading fails after it has changed the memory.
class SpoilingSettings final : public platform::SettingsApi {
 public:
  platform::SettingsKey currentUser() override { return this; }
  platform::SettingsKey openKey(platform::SettingsKey, wchar const*) override { return this; }
  bool readValue(platform::SettingsKey, wchar const*, ulong32& type, void* data, ulong32& size) override {
    type = platform::kTextValue;
    std::memset(data, 'x', size);
    return false;
  }
  void closeKey(platform::SettingsKey) override {}
};

TEST(ForcedLanguage, AFailedReadLeavesNothingInTheSlot) {
  LanguageWorld world;
  SpoilingSettings settings;
  platform::ScopedBackend<platform::SettingsApi> const scope(settings);
  EXPECT_EQ(GetRegistryLangAbbrev(), nullptr);
  EXPECT_EQ(wstring(registrySlot, 4), wstring(4, KVW('\0')));
}

struct StemRow {
  char const* name;
  wchar const* program;
  char const* stem;
};

void PrintTo(StemRow const& row, std::ostream* out) {
  *out << row.name;
}

StemRow const kStemRows[] = {
    {"Ending", KVW("C:\\app\\prog.exe"), "prog"},
    {"NoDotGivesTheWholeName", KVW("C:\\app\\prog"), "prog"},
    {"TwoDots", KVW("C:\\app\\prog.x.exe"), "prog.x"},
    {"DotInAFolder", KVW("C:\\my.app\\prog"), "prog"},
    {"NoFolder", KVW("prog.exe"), "prog"},
    {"OnlyAnEnding", KVW("C:\\app\\.exe"), ""},
};

class ForcedLanguageStems : public ::testing::TestWithParam<StemRow> {};

TEST_P(ForcedLanguageStems, NameTheKeyOfTheProgram) {
  LanguageWorld world;
  world.modules.paths[world.program()] = GetParam().program;
  world.setRegistry(1, ScriptedSettings::bytesOf(KVW("deu")), GetParam().stem);
  EXPECT_EQ(shown(GetRegistryLangAbbrev()), "deu");
}

INSTANTIATE_TEST_SUITE_P(Rows, ForcedLanguageStems, ::testing::ValuesIn(kStemRows),
                         [](auto const& row) { return std::string(row.param.name); });

TEST(ForcedLanguage, TheKeyHasTheLongFormOfTheProgramsName) {
  LanguageWorld world;
  world.modules.paths[world.program()] = KVW("C:\\app\\LONGPR~1.EXE");
  world.modules.longPaths[KVW("C:\\app\\LONGPR~1.EXE")] = KVW("C:\\app\\longprogram.exe");
  world.setRegistry(1, ScriptedSettings::bytesOf(KVW("deu")), "longprogram");
  world.setRegistry(1, ScriptedSettings::bytesOf(KVW("fra")), "LONGPR~1");
  EXPECT_EQ(shown(GetRegistryLangAbbrev()), "deu");
  world.modules.failures = {"longPath"};
  EXPECT_EQ(shown(GetRegistryLangAbbrev()), "fra");
}

TEST(ForcedLanguage, WithoutThePathOfTheProgramTheSettingsAreNotRead) {
  LanguageWorld world;
  world.setRegistry(KVW("deu"));
  ASSERT_EQ(shown(GetRegistryLangAbbrev()), "deu");
  world.settings.log.clear();
  world.modules.failures = {"modulePath"};
  EXPECT_EQ(GetRegistryLangAbbrev(), nullptr);
  EXPECT_EQ(world.settings.log, Texts());
}

TEST(ForcedLanguage, EachCallReadsTheSettingsAgain) {
  LanguageWorld world;
  world.setRegistry(KVW("deu"));
  wchar const* const first = GetRegistryLangAbbrev();
  world.setRegistry(KVW("f"));
  EXPECT_EQ(GetRegistryLangAbbrev(), first);
  EXPECT_EQ(wstring(first, 4), wstring(KVW("f\0\0\0"), 4));
  world.settings.values.clear();
  EXPECT_EQ(GetRegistryLangAbbrev(), nullptr);
  EXPECT_EQ(shown(first), "");
}

TEST(ForcedLanguage, TheCommandLineStandsBeforeTheSettings) {
  LanguageWorld world;
  EXPECT_EQ(GetForcedLangAbbrev(), nullptr);
  world.setRegistry(KVW("deu"));
  EXPECT_EQ(GetForcedLangAbbrev(), registrySlot);
  world.settings.log.clear();
  world.setArguments({KVW("-lang=fra")});
  EXPECT_EQ(GetForcedLangAbbrev(), commandLineSlot);
  EXPECT_EQ(shown(commandLineSlot), "fra");
  EXPECT_EQ(world.settings.log, Texts());
}

TEST(ForcedLanguage, AFailingAllocationLeavesNoKeyOpen) {
  LanguageWorld world;
  world.setRegistry(KVW("deu"));
  for (AllocationSweep sweep; sweep.next();) {
    // Closing a key does not fail, whatever happens to the log of it.
    sweep.runRecovering([] { GetForcedLangAbbrev(); });
    EXPECT_EQ(world.settings.openKeys, 0);
    EXPECT_EQ(shown(commandLineSlot), "");
    if (!sweep.failed()) EXPECT_EQ(shown(registrySlot), "deu");
    world.clearLogs();
    LanguageWorld::forget();
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
