// SPDX-License-Identifier: MIT
//
// The language that the example speaks, in real processes of the program as it is built: by its command line, by the user's
// settings, and by the user's language, for which there is a suite for each.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tests/shared/modules/run_program.h"
#include "tests/support/module_files.h"
#include "tests/support/temp_folder.h"
#include "tests/support/user_setting.h"

namespace KV_1_1 {
namespace testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr char kEnglish[] = "Nothing is renamed.";
constexpr char kGerman[] = "Es wird nichts umbenannt.";
constexpr char kEnglishHelp[] = "scanshelf lists what is in a folder: ";
constexpr char kGermanHelp[] = "scanshelf zeigt, was in einem Ordner liegt: ";

std::string const kTranslation = "languages/scanshelfdeu.dll";

fs::path programFolder() {
  return programFile().parent_path();
}

struct Outcome {
  int status;
  std::string text;
};

std::string textOf(fs::path const& file) {
  std::ostringstream bytes;
  bytes << std::ifstream(file, std::ios::binary).rdbuf();
  std::string text = bytes.str();
  text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
  return text;
}

// Runs the program on a folder with one file, whose name every language can write.
Outcome outcomeIn(TempFolder const& folder, fs::path const& program, std::vector<std::string> arguments) {
  folder.write("scans/scan009.dat", std::string(1536, 'x'));
  arguments.push_back(folder.path("scans").u8string());
  int const status = runProgram(program, arguments, folder.path("output.txt"));
  return {status, textOf(folder.path("output.txt"))};
}

// A program with what it needs beside it, under a name of the test's own: settings go by the name of the program.
class Installed {
 public:
  Installed() : stem_("scanshelf" + std::to_string(std::random_device()())) {
    fs::copy_file(programFolder() / ("scanshelf" + programFile().extension().string()), program());
    fs::copy_file(programFolder() / moduleFile("KVBase"), folder_.path(moduleFile("KVBase")));
  }

  std::string const& stem() const { return stem_; }
  fs::path program() const { return folder_.path(stem_ + programFile().extension().string()); }
  // Its German translation, in a folder below it or, for an empty name, in its own.
  fs::path translation(std::string const& below) const { return folder_.path(below) / (stem_ + "deu.dll"); }
  void installTranslation(std::string const& below) const {
    fs::create_directories(folder_.path(below));
    fs::copy_file(programFolder() / kTranslation, translation(below));
  }
  Outcome run(std::vector<std::string> const& arguments) const { return outcomeIn(folder_, program(), arguments); }

 private:
  TempFolder folder_;
  std::string const stem_;
};

// The program where it was built.
Outcome outcomeOf(std::vector<std::string> const& arguments) {
  TempFolder folder;
  return outcomeIn(folder, programFolder() / ("scanshelf" + programFile().extension().string()), arguments);
}

// Gives a translation library another build number: the third of the four numbers of its file version.
void changeBuildNumber(fs::path const& library) {
  std::string bytes;
  {
    std::ostringstream stream;
    stream << std::ifstream(library, std::ios::binary).rdbuf();
    bytes = stream.str();
  }
  std::size_t const fixedPart = bytes.find("\xBD\x04\xEF\xFE");
  ASSERT_NE(fixedPart, std::string::npos);
  ++bytes[fixedPart + 14];
  std::ofstream(library, std::ios::binary) << bytes;
}

// --- The command line ---------------------------------------------------------------------------------------------------

TEST(ScanshelfLanguage, AnOptionChoosesGerman) {
  for (char const* option : {"-lang=deu", "-LANG=DEU", "/lang=Deu"}) {
    Outcome const outcome = outcomeOf({"--renumber", option});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.text, HasSubstr(kGerman)) << option;
  }
}

TEST(ScanshelfLanguage, AnOptionChoosesEnglish) {
  EXPECT_THAT(outcomeOf({"-lang=enu", "-r"}).text, HasSubstr(kEnglish));
}

TEST(ScanshelfLanguage, ALanguageWithoutTranslationLeavesEnglish) {
  for (char const* option : {"-lang=fra", "-lang=xyz"}) {
    Outcome const outcome = outcomeOf({option, "-r"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.text, HasSubstr(kEnglish)) << option;
  }
}

TEST(ScanshelfLanguage, HelpIsInTheLanguageChosen) {
  EXPECT_THAT(outcomeOf({"--help", "-lang=deu"}).text, StartsWith(kGermanHelp));
  EXPECT_THAT(outcomeOf({"--help", "-lang=enu"}).text, StartsWith(kEnglishHelp));
}

TEST(ScanshelfLanguage, ComplaintsAreInTheLanguageChosen) {
  Outcome const outcome = outcomeOf({"--fast", "-lang=deu"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.text, "scanshelf: Die Option '--fast' gibt es nicht.\n'scanshelf --help' hilft weiter.\n");
}

TEST(ScanshelfLanguage, NumbersAreWrittenAsTheLanguageDoes) {
  EXPECT_THAT(outcomeOf({"-lang=deu"}).text, HasSubstr("1 Datei passt zu *, zusammen 1,5 KB;"));
  EXPECT_THAT(outcomeOf({"-lang=enu"}).text, HasSubstr("1 file matches *, 1.5 KB in all;"));
}

// --- The settings -------------------------------------------------------------------------------------------------------

TEST(ScanshelfLanguage, ASettingChoosesGerman) {
  Installed const scanshelf;
  scanshelf.installTranslation("languages");
  UserSetting const setting(scanshelf.stem(), "deu");
  EXPECT_THAT(scanshelf.run({"-r"}).text, HasSubstr(kGerman));
}

TEST(ScanshelfLanguage, AnOptionComesBeforeASetting) {
  Installed const scanshelf;
  scanshelf.installTranslation("languages");
  UserSetting const setting(scanshelf.stem(), "deu");
  EXPECT_THAT(scanshelf.run({"-r", "-lang=enu"}).text, HasSubstr(kEnglish));
}

TEST(ScanshelfLanguage, ASettingOfAnotherProgramIsIgnored) {
  Installed const scanshelf;
  scanshelf.installTranslation("languages");
  UserSetting const setting(scanshelf.stem() + "x", "fra");
  EXPECT_THAT(scanshelf.run({"-r", "-lang=deu"}).text, HasSubstr(kGerman));
  EXPECT_THAT(scanshelf.run({"--resources"}).text, Not(HasSubstr("fra")));
}

// --- The translation library --------------------------------------------------------------------------------------------

TEST(ScanshelfTranslation, IsFoundBesideTheProgramAndInItsFolder) {
  for (char const* below : {"", "languages"}) {
    Installed const scanshelf;
    scanshelf.installTranslation(below);
    EXPECT_THAT(scanshelf.run({"-r", "-lang=deu"}).text, HasSubstr(kGerman)) << below;
  }
}

TEST(ScanshelfTranslation, WithoutItTheProgramSpeaksEnglish) {
  Installed const scanshelf;
  Outcome const outcome = scanshelf.run({"-r", "-lang=deu"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.text, HasSubstr(kEnglish));
  EXPECT_THAT(scanshelf.run({"--help", "-lang=deu"}).text, StartsWith(kEnglishHelp));
}

TEST(ScanshelfTranslation, OfAnotherVersionIsNotUsed) {
  Installed const scanshelf;
  scanshelf.installTranslation("languages");
  changeBuildNumber(scanshelf.translation("languages"));
  Outcome const outcome = scanshelf.run({"-r", "-lang=deu"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.text, HasSubstr(kEnglish));
  EXPECT_THAT(scanshelf.run({"-s", "-lang=deu"}).text, Not(HasSubstr("deu.dll")));
}

// --- The report on resources --------------------------------------------------------------------------------------------

TEST(ScanshelfResources, EnglishNeedsNoTranslation) {
  std::string const program = "scanshelf" + programFile().extension().string();
  std::string const report = outcomeOf({"--resources", "-lang=enu"}).text;
  EXPECT_THAT(report,
              AllOf(HasSubstr(moduleFile("KVBase") + " "), HasSubstr(program + " "), Not(HasSubstr("deu.dll"))));
  EXPECT_THAT(report, HasSubstr("10.0.0.9505       65  DEU         neutral\n"));
  EXPECT_THAT(report, HasSubstr("ENU         ENU\n"));
  EXPECT_THAT(report, HasSubstr("Languages wanted, in this order: enu.\n"
                                "KVBase speaks its own language, without a translation.\n"
                                "scanshelf speaks its own language, without a translation.\n"));
  EXPECT_THAT(report, AllOf(HasSubstr("IDR_MAINFRAME "), HasSubstr("IDS_ONE_FILE "), HasSubstr("  1 file\n"),
                            EndsWith(" more)\n")));
}

TEST(ScanshelfResources, GermanComesFromTheTranslation) {
  std::string const report = outcomeOf({"--resources", "-lang=deu"}).text;
  EXPECT_THAT(report, HasSubstr("  languages\\scanshelfdeu.dll  1.0.0.0 "));
  EXPECT_THAT(report, HasSubstr("  nicht vorhanden  DEU\n"));
  EXPECT_THAT(report, HasSubstr("KVBase spricht die eigene Sprache, ohne \xC3\x9C"
                                "bersetzung.\n"
                                "scanshelf spricht DEU, aus der \xC3\x9C"
                                "bersetzungsbibliothek.\n"));
  EXPECT_THAT(report, AllOf(HasSubstr("  1 Datei\n"), EndsWith(" weitere)\n")));
}

TEST(ScanshelfResources, AllSymbolsAreShownOnRequest) {
  std::string const report = outcomeOf({"--resources", "--all", "-lang=enu"}).text;
  EXPECT_THAT(report, AllOf(HasSubstr(" IDC_CONTROL10 "), HasSubstr(" IDS_COLUMN_TEXT "), EndsWith("  Text\n")));
}

TEST(ScanshelfResources, ATranslationBesideTheProgramIsToldSo) {
  Installed const scanshelf;
  scanshelf.installTranslation("");
  EXPECT_THAT(scanshelf.run({"-s", "-lang=deu"}).text, HasSubstr("  " + scanshelf.stem() + "deu.dll "));
}

TEST(ScanshelfResources, NoPathIsShown) {
  std::string const folder = programFolder().u8string();
  EXPECT_THAT(outcomeOf({"-s", "-lang=deu"}).text, Not(HasSubstr(folder)));
}

// --- The user's language: each suite runs in an environment of its own ------------------------------------------------------

void expectLanguage(char const* sentence, char const* help) {
  EXPECT_THAT(outcomeOf({"-r"}).text, HasSubstr(sentence));
  EXPECT_THAT(outcomeOf({"--help"}).text, StartsWith(help));
}

TEST(ScanshelfInEnglish, SpeaksEnglish) {
  expectLanguage(kEnglish, kEnglishHelp);
  EXPECT_THAT(outcomeOf({"-s"}).text, HasSubstr("Languages wanted, in this order: ENU.\n"));
}

TEST(ScanshelfInEnglish, AnOptionChoosesGerman) {
  EXPECT_THAT(outcomeOf({"-r", "-lang=deu"}).text, HasSubstr(kGerman));
}

TEST(ScanshelfInGerman, SpeaksGerman) {
  expectLanguage(kGerman, kGermanHelp);
  EXPECT_THAT(outcomeOf({"-s"}).text, HasSubstr("in dieser Reihenfolge: DEU, ENU.\n"));
}

TEST(ScanshelfInGerman, AnOptionChoosesEnglish) {
  EXPECT_THAT(outcomeOf({"-r", "-lang=enu"}).text, HasSubstr(kEnglish));
}

TEST(ScanshelfInGerman, ASettingChoosesEnglish) {
  Installed const scanshelf;
  scanshelf.installTranslation("languages");
  UserSetting const setting(scanshelf.stem(), "enu");
  EXPECT_THAT(scanshelf.run({"-r"}).text, HasSubstr(kEnglish));
}

TEST(ScanshelfInAustrian, SpeaksTheGermanOfNoCountry) {
  expectLanguage(kGerman, kGermanHelp);
  EXPECT_THAT(outcomeOf({"-s"}).text, HasSubstr("  languages\\scanshelfdeu.dll "));
}

TEST(ScanshelfInJapanese, SpeaksEnglishForWantOfATranslation) {
  expectLanguage(kEnglish, kEnglishHelp);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
