// SPDX-License-Identifier: MIT
//
// The language that the common controls are told.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/shared/modules/controls_language.h"
#include "tests/shared/modules/module_report.h"
#include "tests/support/module_files.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

// The tool is the program with German beside it, and a library as well.
class ModuleControlsWindows : public ::testing::Test {
 protected:
  ModuleControlsWindows() {
    std::filesystem::copy_file(programFile(), program);
    copyModule(folder, "tool", "tool");
    copyTranslation(folder, "tooldeu", "tooldeu");
  }

  TempFolder folder;
  std::filesystem::path const program = folder.path("tool.exe");
};

TEST_F(ModuleControlsWindows, TheProgramTellsThemItsLanguage) {
  EXPECT_EQ(factsOfReport(program, {"-", "-controls", "-lang=deu"})["controls"], "1031");
}

TEST_F(ModuleControlsWindows, TheCallersLanguageComesBeforeThatOfTheFile) {
  // The file is the German one, for the forced language is the only one looked for.
  Facts facts = factsOfReport(program, {"-", "-controls", "-language=3079", "-lang=deu"});
  EXPECT_EQ(facts["translation for 3079"], "Guten Tag");
  EXPECT_EQ(facts["controls"], "3079");
}

TEST_F(ModuleControlsWindows, ALibraryTellsThemNothing) {
  std::string const library = folder.path(moduleFile("tool")).u8string();
  Facts facts = factsOfReport(program, {library, "-controls", "-lang=deu"});
  EXPECT_EQ(facts["text 100"], "Guten Tag");
  EXPECT_EQ(facts["controls"], controlsLanguage());
}

TEST_F(ModuleControlsWindows, AProgramWithoutATranslationTellsThemNothing) {
  EXPECT_EQ(factsOfReport(program, {"-", "-controls", "-lang=xyz"})["controls"], controlsLanguage());
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
