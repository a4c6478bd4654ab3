// SPDX-License-Identifier: MIT
//
// Real modules, translation libraries and help files on the disk. Languages, settings and the folder of common files are
// the test's, so that the machine does not matter.
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <stdexcept>

#include "kvbase/languages/internal/product_identity.h"
#include "kvbase/languages/translation.h"
#include "tests/languages/language_world.h"
#include "tests/support/module_files.h"

namespace KV_1_1 {
namespace testing {
namespace {

constexpr char kProductFolder[] = "common/Scan Works/Scan Tool/2.1.0.7/";

class LanguageModules : public ::testing::Test {
 public:
  LanguageModules() {
    LanguageWorld::forget();
    locales.abbreviations = {{kGerman, KVW("DEU")}, {kFrench, KVW("ABC")}};
    locales.groups = {{1, {kGerman, kFrench}}};
    shell.commonFiles = folder.text(KVW("common"));
  }
  ~LanguageModules() override { LanguageWorld::forget(); }

  // The library with this stem below the folder, loaded until the end of the test.
  HINSTANCE loadModule(std::string const& fixture, std::string const& stem) {
    copyModule(folder, fixture, stem);
    loaded_ = std::make_unique<LoadedModule>(folder.path(moduleFile(stem)));
    return loaded_->handle();
  }
  wstring moduleText(std::string const& stem) const { return folder.text(widen(moduleFile(stem))); }

  // What came of a translation: its text 100, "the module" or "null". It is released.
  static std::string outcome(HINSTANCE module, HINSTANCE translation) {
    if (translation == module) return "the module";
    if (translation == nullptr) return "null";
    wstring text;
    platform::modules().stringTableEntry(translation, 100, text);
    EXPECT_TRUE(platform::modules().freeLibrary(translation));
    return narrow(text);
  }
  static std::string translationOf(HINSTANCE module, unsigned short language = kNoLanguage) {
    return outcome(module, LoadTranslationDLL(module, language));
  }

  TempFolder folder;
  ScriptedLocales locales;
  ScriptedSettings settings;
  ScriptedShell shell;

 private:
  platform::ScopedBackend<platform::LocaleApi> localesScope_{locales};
  platform::ScopedBackend<platform::SettingsApi> settingsScope_{settings};
  platform::ScopedBackend<platform::ShellApi> shellScope_{shell};
  std::unique_ptr<LoadedModule> loaded_;
};

// --- Product identity ---------------------------------------------------------------------------------------------------

struct ProductRow {
  char const* name;
  char const* fixture;
  char const* expected;  // below the common folder
};

void PrintTo(ProductRow const& row, std::ostream* out) {
  *out << row.name;
}

ProductRow const kProductRows[] = {
    {"AllTexts", "tool", "\\Scan Works\\Scan Tool\\2.1.0.7\\"},
    {"TextsWithoutValue", "empty_values", "\\VOLQ Fabrication GmbH\\Scan Tool\\internal\\"},
    {"AnEmptyTextIsAValue", "empty_text", "\\\\Scan Tool\\internal\\"},
    {"MissingTexts", "missing_values", "\\VOLQ Fabrication GmbH\\Scan Tool\\internal\\"},
    {"TwoTranslations", "two_translations", "\\Scanwerke\\Scanwerkzeug\\2.1\\"},
    {"TextsOfAnotherLanguage", "other_language", "\\VOLQ Fabrication GmbH\\custom product\\internal\\"},
    {"EmptyTable", "empty_translation_table", "\\VOLQ Fabrication GmbH\\custom product\\internal\\"},
    {"NoTable", "no_translation_table", "VerQueryValue failed"},
    {"NoVersionResource", "no_version", ""},
};

class LanguageModulesProducts : public LanguageModules, public ::testing::WithParamInterface<ProductRow> {};

TEST_P(LanguageModulesProducts, HaveTheirFolder) {
  std::string const fixture = GetParam().fixture;
  HINSTANCE const module = loadModule(fixture, "sub/" + fixture);
  std::string result;
  try {
    result = narrow(GetProductCommonFolder(module, /*withVersion=*/true));
  } catch (std::runtime_error const& error) {
    result = error.what();
  }
  bool const isFolder = GetParam().expected[0] == '\\';
  EXPECT_EQ(result, (isFolder ? narrow(shell.commonFiles) : "") + GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, LanguageModulesProducts, ::testing::ValuesIn(kProductRows),
                         [](auto const& row) { return std::string(row.param.name); });

TEST_F(LanguageModules, VersionsOfFiles) {
  copyModule(folder, "tool", "tool");
  copyModule(folder, "no_version", "plain");
  for (char const* name : {"toolabc", "tooldeu", "otherbuild", "unversioned"}) copyTranslation(folder, name, name);
  folder.write("garbage.dll", "MZ, but nothing behind it");
  folder.write("empty.dll");
  auto const version = [](wstring const& path) {
    FileVersionQuad const quad = GetFileVersionQuad(path);
    return std::to_string(quad.major) + '.' + std::to_string(quad.minor) + '.' + std::to_string(quad.build) + '.' +
           std::to_string(quad.revision);
  };
  EXPECT_EQ(version(moduleText("tool")), "1.2.3.4");
  EXPECT_EQ(version(folder.text(KVW("toolabc.dll"))), "1.2.3.4");
  EXPECT_EQ(version(folder.text(KVW("tooldeu.dll"))), "1.2.3.4");
  EXPECT_EQ(version(folder.text(KVW("otherbuild.dll"))), "1.2.3.5");
  EXPECT_EQ(version(moduleText("plain")), "0.0.0.0");
  for (wchar const* name :
       {KVW("unversioned.dll"), KVW("garbage.dll"), KVW("empty.dll"), KVW("missing.dll"), KVW("")}) {
    EXPECT_EQ(version(folder.text(name)), "0.0.0.0") << narrow(name);
  }
  EXPECT_EQ(version(wstring()), "0.0.0.0");
}

// --- Translations -------------------------------------------------------------------------------------------------------

TEST_F(LanguageModules, AForcedTranslationInTheSubfolder) {
  HINSTANCE const tool = loadModule("tool", "app/tool");
  copyTranslation(folder, "toolabc", "app/languages/toolabc");
  locales.arguments = {KVW("prog"), KVW("-lang=abc")};
  EXPECT_EQ(translationOf(tool), "Hallo");
  EXPECT_EQ(LanguageWorld::recorded(tool), "1036");
}

TEST_F(LanguageModules, AForcedTranslationOfAnUnknownLanguage) {
  HINSTANCE const tool = loadModule("tool", "app/tool");
  copyTranslation(folder, "toolabc", "app/toolabc");
  locales.arguments = {KVW("prog"), KVW("-lang=abc")};
  locales.abbreviations.erase(kFrench);
  EXPECT_EQ(translationOf(tool), "Hallo");
  EXPECT_EQ(LanguageWorld::recorded(tool), "65535");
}

TEST_F(LanguageModules, NamesOfTranslationsHaveNoCase) {
  HINSTANCE const tool = loadModule("tool", "app/tool");
  copyTranslation(folder, "toolabc", "app/toolabc");
  locales.arguments = {KVW("prog"), KVW("/LANG=aBC")};
  EXPECT_EQ(translationOf(tool), "Hallo");
}

TEST_F(LanguageModules, TheTranslationOfTheUsersLanguage) {
  HINSTANCE const tool = loadModule("tool", "app/tool");
  copyTranslation(folder, "tooldeu", "app/tooldeu");
  EXPECT_EQ(translationOf(tool), "the module");
  locales.userUi = kGerman;
  EXPECT_EQ(translationOf(tool), "Guten Tag");
  EXPECT_EQ(LanguageWorld::recorded(tool), "1031");
}

TEST_F(LanguageModules, ATranslationInTheFolderOfTheProduct) {
  HINSTANCE const tool = loadModule("tool", "app/tool");
  copyTranslation(folder, "tooldeu", std::string(kProductFolder) + "tooldeu");
  EXPECT_EQ(translationOf(tool, kGerman), "Guten Tag");
}

TEST_F(LanguageModules, AModuleWithTwoDotsInItsName) {
  HINSTANCE const tool = loadModule("tool", "app/tool.two");
  copyTranslation(folder, "tooldeu", "app/tool.twodeu");
  EXPECT_EQ(translationOf(tool, kGerman), "Guten Tag");
}

TEST_F(LanguageModules, ATranslationOfAnotherBuild) {
  HINSTANCE const tool = loadModule("tool", "app/tool");
  copyTranslation(folder, "otherbuild", "app/tooldeu");
  EXPECT_EQ(translationOf(tool, kGerman), "the module");
  EXPECT_EQ(LanguageWorld::recorded(tool), "none");
}

TEST_F(LanguageModules, AModuleWithoutVersionAndTranslation) {
  HINSTANCE const plain = loadModule("no_version", "app/plain");
  EXPECT_EQ(translationOf(plain, kGerman), "the module");
  EXPECT_EQ(LanguageWorld::recorded(plain), "65535");
}

TEST_F(LanguageModules, AModuleAndATranslationWithoutVersion) {
  HINSTANCE const plain = loadModule("no_version", "app/plain");
  copyTranslation(folder, "unversioned", "app/plaindeu");
  EXPECT_EQ(translationOf(plain, kGerman), "Ohne Version");
  EXPECT_EQ(LanguageWorld::recorded(plain), "1031");
}

TEST_F(LanguageModules, AFileThatIsNoLibrary) {
  HINSTANCE const plain = loadModule("no_version", "app/plain");
  folder.write("app/plaindeu.dll", "no library");
  EXPECT_EQ(translationOf(plain, kGerman), "null");
  EXPECT_EQ(LanguageWorld::recorded(plain), "1031");
}

TEST_F(LanguageModules, PercentSignsInTheFolderAreConversions) {
  HINSTANCE const tool = loadModule("tool", "a%%b/tool");
  copyTranslation(folder, "tooldeu", "a%%b/tooldeu");
  EXPECT_EQ(translationOf(tool, kGerman), "the module");
  copyTranslation(folder, "tooldeu", "a%b/tooldeu");
  EXPECT_EQ(translationOf(tool, kGerman), "Guten Tag");
}

TEST_F(LanguageModules, ALonePercentSignHidesTheFolder) {
  HINSTANCE const tool = loadModule("tool", "50%/tool");
  copyTranslation(folder, "tooldeu", "50%/tooldeu");
  EXPECT_EQ(translationOf(tool, kGerman), "the module");
}

TEST_F(LanguageModules, TheProgramIsAModuleToo) {
  HINSTANCE const program = platform::modules().program();
  locales.arguments = {KVW("prog"), KVW("-lang=xyz")};
  EXPECT_EQ(translationOf(program), "the module");
  EXPECT_EQ(LanguageWorld::recorded(program), "65535");
  EXPECT_EQ(translationOf(program, kGerman), "the module");
  EXPECT_EQ(locales.controlsLanguages, std::vector<std::uint16_t>({kGerman}));
}

// --- Help files ---------------------------------------------------------------------------------------------------------

TEST_F(LanguageModules, HelpFilesLieBesideTheModule) {
  HINSTANCE const tool = loadModule("tool", "my.folder/tool.two");
  EXPECT_EQ(narrow(LocateHelpFile(tool, kGerman, true)), "");
  folder.write("my.folder/tool.two.pdf");
  EXPECT_EQ(LocateHelpFile(tool, kNoLanguage, true), folder.text(KVW("my.folder\\tool.two.pdf")));
  EXPECT_EQ(narrow(LocateHelpFile(tool, kNoLanguage, false)), "");
  folder.write("my.folder/tool.two_ClassicUI.pdf");
  EXPECT_EQ(LocateHelpFile(tool, kGerman, false), folder.text(KVW("my.folder\\tool.two_ClassicUI.pdf")));
}

TEST_F(LanguageModules, NamesOfHelpFilesHaveNoCase) {
  HINSTANCE const tool = loadModule("tool", "app/tool");
  folder.write("app/TOOL.PDF");
  EXPECT_EQ(LocateHelpFile(tool, kNoLanguage, true), folder.text(KVW("app\\tool.pdf")));
}

TEST_F(LanguageModules, ADataModuleHasNoHelpFile) {
  copyTranslation(folder, "tooldeu", "tooldeu");
  folder.write("tooldeu.pdf");
  HINSTANCE const data = platform::modules().loadAsData(folder.text(KVW("tooldeu.dll")).c_str());
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(narrow(LocateHelpFile(data, kNoLanguage, true)), "");
  EXPECT_EQ(LoadTranslationDLL(data, kGerman), data);
  EXPECT_EQ(LanguageWorld::recorded(data), "none");
  EXPECT_TRUE(platform::modules().freeLibrary(data));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
