// SPDX-License-Identifier: MIT
//
// The language in which real modules speak, as the command line, the settings and the user's languages of real processes
// decide.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "kvbase/platform/locale_api.h"
#include "tests/shared/modules/common_files.h"
#include "tests/shared/modules/module_report.h"
#include "tests/shared/modules/started_module.h"
#include "tests/support/temp_folder.h"
#include "tests/support/user_setting.h"

namespace KV_1_1 {
namespace testing {
namespace {

namespace fs = std::filesystem;

// The tool in German and in a language that no system knows. The user's languages may be any.
class ModuleLanguageFiles : public ::testing::Test {
 protected:
  ModuleLanguageFiles() {
    copyModule(folder, "tool", "tool");
    copyTranslation(folder, "tooldeu", "tooldeu");
    copyTranslation(folder, "toolabc", "toolabc");
  }
  std::string tool() const { return folder.path(moduleFile("tool")).u8string(); }

  // The facts of a fresh process that starts the tool; the arguments stand behind the report's own.
  Facts facts(std::vector<std::string> const& arguments, fs::path const& program = programFile()) const {
    std::vector<std::string> all = {tool()};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return factsOfReport(program, all);
  }
  // The text 100 of the tool when it starts in this process. Its language is no fact here: that of an earlier start stays.
  std::string greeting() const {
    StartedModule module(folder.path(moduleFile("tool")));
    return textOf(module.module(), 100);
  }
  // What the translation is that the tool, once started here, gives for a language.
  std::string translationFor(unsigned short language) const {
    StartedModule module(folder.path(moduleFile("tool")));
    return greetingOfTranslation(module.instance(), language);
  }
  static std::string usedLanguages() {
    std::string used;
    for (wstring const& abbreviation : GetUsedLangAbbrevs()) used += (used.empty() ? "" : " ") + narrow(abbreviation);
    return used;
  }

  TempFolder folder;
};

// The cases that depend on the languages of the user and of the system; they are run with several.
class UserLanguageFiles : public ModuleLanguageFiles {};

// --- Command line ---

TEST_F(ModuleLanguageFiles, TheCommandLineForcesALanguage) {
  struct Row {
    std::vector<std::string> arguments;
    char const* greeting;
    char const* language;
    char const* used;
  };
  Row const rows[] = {
      {{"-lang=deu"}, "Guten Tag", "1031", "deu"},
      {{"other", "/LanG=aBc", "-lang=deu"}, "Hallo", "65535", "aBc"},
      // Without a file there is no other choice.
      {{"-lang=fra"}, "Hello", "65535", "fra"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.arguments));
    Facts forced = facts(row.arguments);
    EXPECT_EQ(forced["text 100"], row.greeting);
    EXPECT_EQ(forced["language"], row.language);
    EXPECT_EQ(forced["used languages"], row.used);
  }
}

TEST_F(ModuleLanguageFiles, AnOptionOfFourLettersForcesNothing) {
  Facts unforced = facts({"-lang=fran"});
  EXPECT_EQ(unforced["text 100"], greeting());
  EXPECT_EQ(unforced["used languages"], usedLanguages());
}

TEST_F(ModuleLanguageFiles, AForcedLanguageIsUsedAsTyped) {
  // Where the system tells cases apart, the exact name comes first.
  fs::remove(folder.path("tooldeu.dll"));
  copyTranslation(folder, "toolabc", "toolDEU");
  for (char const* typed : {"DEU", "deu"}) {
    UserSetting const setting(kProgram, typed);
    EXPECT_EQ(greeting(), "Hallo") << typed;
    EXPECT_EQ(usedLanguages(), typed);
  }
}

TEST_F(ModuleLanguageFiles, TheProgramSpeaksItToo) {
  fs::path const program = folder.path("tool.exe");
  fs::copy_file(programFile(), program);
  Facts german = factsOfReport(program, {"-", "-lang=deu"});
  EXPECT_EQ(german["name"], "tool");
  EXPECT_EQ(german["language"], "1031");
  EXPECT_EQ(german["text 100"], "Guten Tag");
  EXPECT_EQ(german["text 102"], "Only in the module");
}

// --- Settings ---

TEST_F(ModuleLanguageFiles, TheSettingsForceALanguage) {
  {
    UserSetting const setting(kProgram, "deu");
    EXPECT_EQ(greeting(), "Guten Tag");
    Facts german = facts({});
    EXPECT_EQ(german["language"], "1031");
    EXPECT_EQ(german["used languages"], "deu");
  }
  {
    // The next module that starts sees another value.
    UserSetting const setting(kProgram, "abc");
    EXPECT_EQ(greeting(), "Hallo");
  }
  {
    UserSetting const setting(kProgram, "xyz");
    EXPECT_EQ(greeting(), "Hello");
  }
}

TEST_F(ModuleLanguageFiles, TheCommandLineComesBeforeTheSettings) {
  UserSetting const setting(kProgram, "deu");
  EXPECT_EQ(greeting(), "Guten Tag");
  EXPECT_EQ(facts({"-lang=abc"})["text 100"], "Hallo");
  EXPECT_EQ(facts({"-lang=xyz"})["text 100"], "Hello");
}

TEST_F(ModuleLanguageFiles, AValueOfFourLettersOrNoneForcesNothing) {
  std::string const unforcedGreeting = greeting();
  std::string const unforcedLanguages = usedLanguages();
  for (char const* value : {"", "deut", "a longer text than any abbreviation"}) {
    SCOPED_TRACE(value);
    UserSetting const setting(kProgram, value);
    EXPECT_EQ(greeting(), unforcedGreeting);
    EXPECT_EQ(usedLanguages(), unforcedLanguages);
  }
}

TEST_F(ModuleLanguageFiles, TheSettingsAreThoseOfTheProgramsName) {
  struct Row {
    char const* file;
    char const* name;
  };
  Row const rows[] = {
      {"kvbase-plain", "kvbase-plain"}, {"kvbase.two.exe", "kvbase.two"}, {"kvbase-one.exe", "kvbase-one"}};
  for (Row const& row : rows) {
    SCOPED_TRACE(row.file);
    fs::path const program = folder.path(row.file);
    fs::copy_file(programFile(), program);
    UserSetting const setting(row.name, "deu");
    EXPECT_EQ(facts({}, program)["text 100"], "Guten Tag");
  }
  UserSetting const setting("kvbase-plain-other", "abc");
  EXPECT_EQ(facts({}, folder.path("kvbase-plain"))["text 100"], greeting());
}

// --- The user's and the system's languages ---

// The ids of the system, without repetition, as GetUsedLangAbbrevs has them.
std::vector<unsigned short> languagesInUse() {
  platform::LocaleApi& locales = platform::nativeLocales();
  std::vector<unsigned short> languages;
  std::set<unsigned short> seen;
  for (unsigned short const language : {locales.userUiLanguage(), locales.userLanguage(), locales.systemUiLanguage(),
                                        locales.systemLanguage(), std::uint16_t(1033)}) {
    if (seen.insert(language).second) languages.push_back(language);
  }
  return languages;
}
std::string abbreviationOf(unsigned short language) {
  wstring text;
  EXPECT_TRUE(platform::nativeLocales().languageAbbreviation(language, text)) << language;
  return narrow(text);
}

TEST_F(UserLanguageFiles, UsedLanguagesAreThoseOfUserAndSystem) {
  std::string expected;
  for (unsigned short const language : languagesInUse()) {
    expected += (expected.empty() ? "" : " ") + abbreviationOf(language);
  }
  EXPECT_EQ(usedLanguages(), expected);
}

// Each language before English has its file in turn; it is taken where no language before it has one.
TEST_F(UserLanguageFiles, TheFirstOfThemThatHasAFileIsTaken) {
  fs::remove(folder.path("tooldeu.dll"));
  bool behindEnglish = false;
  for (unsigned short const language : languagesInUse()) {
    behindEnglish = behindEnglish || language == 1033;
    std::string const file = "tool" + abbreviationOf(language);
    SCOPED_TRACE(file);
    copyTranslation(folder, "toolabc", file);
    EXPECT_EQ(greeting(), behindEnglish ? "Hello" : "Hallo");
    fs::remove(folder.path(file + ".dll"));
  }
}

TEST_F(UserLanguageFiles, TheLanguageIsThatOfTheFile) {
  fs::remove(folder.path("tooldeu.dll"));
  unsigned short const language = languagesInUse().front();
  copyTranslation(folder, "toolabc", "tool" + abbreviationOf(language));
  EXPECT_EQ(facts({})["language"], language == 1033 ? "65535" : std::to_string(language));
}

TEST_F(UserLanguageFiles, ThePrimaryLanguageIsTakenWhereTheExactOneHasNoFile) {
  unsigned short const language = languagesInUse().front();
  unsigned short const primary = language & 0x3FF;
  std::string const abbreviation = abbreviationOf(primary);
  fs::remove(folder.path("tooldeu.dll"));
  copyTranslation(folder, "toolabc", "tool" + abbreviation);
  Facts found = facts({});
  // The abbreviation of a language is that of its principal country too.
  bool const same = abbreviation == abbreviationOf(language);
  unsigned short const expected = language == 1033 ? 0xFFFF : same ? language : primary;
  EXPECT_EQ(found["language"], std::to_string(expected));
  EXPECT_EQ(found["text 100"], language == 1033 ? "Hello" : "Hallo");
}

// --- Languages that the caller asks for ---

TEST_F(UserLanguageFiles, TheFirstLanguageRecordedStays) {
  copyTranslation(folder, "toolabc", "toolfra");
  Facts facts = this->facts({"-language=1031", "-language=1036"});
  EXPECT_EQ(facts["translation for 1031"], "Guten Tag");
  EXPECT_EQ(facts["translation for 1036"], "Hallo");
  // The start of the module has recorded the user's language, if that has a file.
  std::string const ofTheStart = this->facts({})["language"];
  EXPECT_EQ(facts["language"], ofTheStart != "65535" ? ofTheStart : "1031");
}

TEST_F(ModuleLanguageFiles, ALanguageOfAnotherCountryTakesThePrimaryOne) {
  // German of Austria is DEA, and German alone is DEU.
  EXPECT_EQ(translationFor(3079), "Guten Tag");
}

TEST_F(UserLanguageFiles, EnglishHasNoFile) {
  copyTranslation(folder, "toolabc", "toolenu");
  EXPECT_EQ(translationFor(1033), "the module");
}

TEST_F(UserLanguageFiles, AForcedLanguageComesBeforeThatOfTheCaller) {
  EXPECT_EQ(translationFor(1031), "Guten Tag");
  {
    UserSetting const setting(kProgram, "abc");
    EXPECT_EQ(translationFor(1031), "Hallo");
  }
  UserSetting const setting(kProgram, "xyz");
  EXPECT_EQ(translationFor(1031), "the module");
}

TEST_F(ModuleLanguageFiles, AnotherBuildIsNotRecorded) {
  // The system knows the language, so its id would be seen.
  copyTranslation(folder, "otherbuild", "toolfra");
  Facts facts = this->facts({"-lang=fra"});
  EXPECT_EQ(facts["text 100"], "Hello");
  EXPECT_EQ(facts["language"], "65535");
}

TEST_F(ModuleLanguageFiles, AModuleThatWasNotStartedHasNoLanguage) {
  ModuleOwner owner;
  EXPECT_EQ(GetCurrentLangId(owner.module()), 0xFFFF);
}

// --- Folders ---

TEST_F(ModuleLanguageFiles, FoldersInTheirOrder) {
  CommonFiles const common;
  fs::path const product = common.path() / "Scan Works/Scan Tool/2.1.0.7";
  UserSetting const setting(kProgram, "xyz");
  EXPECT_EQ(greeting(), "Hello");
  fs::create_directories(product);
  fs::copy_file(folder.path("toolabc.dll"), product / "toolxyz.dll");
  EXPECT_EQ(greeting(), "Hallo");
  copyTranslation(folder, "tooldeu", "languages/toolxyz");
  EXPECT_EQ(greeting(), "Guten Tag");
  // One that does not fit is taken all the same, and then it is not used.
  copyTranslation(folder, "otherbuild", "toolxyz");
  EXPECT_EQ(greeting(), "Hello");
}

TEST_F(ModuleLanguageFiles, APercentSignInAFolderIsAConversion) {
  UserSetting const setting(kProgram, "abc");
  struct Row {
    char const* folder;
    char const* translation;
    char const* greeting;
  };
  Row const rows[] = {
      {"50% off", "50% off/toolabc", "Hello"}, {"a%lsb", "a%lsb/toolabc", "Hello"}, {"a%lsb", "aabcb/toolabc", "Hello"},
      {"a%db", "a%db/toolabc", "Hello"},       {"a%", "a%/toolabc", "Hello"},       {"100%%", "100%%/toolabc", "Hello"},
      {"100%%", "100%/toolabc", "Hallo"},      {"plain", "plain/toolabc", "Hallo"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(std::string(row.folder) + ", " + row.translation);
    TempFolder place;
    copyModule(place, "tool", std::string(row.folder) + "/tool");
    copyTranslation(place, "toolabc", row.translation);
    StartedModule tool(place.path(moduleFile(std::string(row.folder) + "/tool")));
    EXPECT_EQ(textOf(tool.module(), 100), row.greeting);
  }
}

// --- One file for every system ---

TEST(TranslationOfEverySystem, ItsReportIsTheSameOnEachSystem) {
  TempFolder folder;
  copyModule(folder, "tool", "tool");
  copyTranslation(folder, "toolabc", "toolabc");
  std::ifstream expected(fixtureFolder() / "toolabc.txt", std::ios::binary);
  std::string const report = textOfReport(
      programFile(),
      {folder.path(moduleFile("tool")).u8string(), "-version=" + folder.path("toolabc.dll").u8string(), "-lang=abc"});
  EXPECT_EQ(report, std::string((std::istreambuf_iterator<char>(expected)), std::istreambuf_iterator<char>()));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
