// SPDX-License-Identifier: MIT
//
// Start and end of modules that are real files.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "kvbase/platform/module_api.h"
#include "tests/shared/modules/started_module.h"
#include "tests/support/temp_folder.h"
#include "tests/support/user_setting.h"

namespace KV_1_1 {
namespace testing {
namespace {

// The tool in a folder of its own, with the language "abc" forced.
class ModuleStartFiles : public ::testing::Test {
 protected:
  ModuleStartFiles() { copyModule(folder, "tool", "tool"); }

  TempFolder folder;
  UserSetting const setting{kProgram, "abc"};
};

std::string nameOf(Module const& module) {
  return narrow(module.getModuleName());
}
unsigned int symbol(Module const& module, char const* name) {
  return module.getResourceSymbols().lookupSymbol(String(widen(name).c_str()));
}
bool hasNoSymbols(Module const& module) {
  return &module.getResourceSymbols() == &SymbolTable::EMPTY;
}
constexpr unsigned int kUnknown = 0xFFFFFFFF;

TEST_F(ModuleStartFiles, AModuleHasItsNameAndItsSymbols) {
  StartedModule tool(folder.path(moduleFile("tool")));
  EXPECT_EQ(nameOf(tool.module()), "tool");
  EXPECT_EQ(symbol(tool.module(), "IDS_GREETING"), 100u);
  EXPECT_EQ(symbol(tool.module(), "idd_scan"), 300u);
  EXPECT_EQ(tool.module().getResourceSymbols().lookupValue(300).size(), 2u);
}

TEST_F(ModuleStartFiles, AModuleWithoutAHeaderHasNoSymbols) {
  copyModule(folder, "no_metadata", "bare");
  StartedModule bare(folder.path(moduleFile("bare")));
  EXPECT_EQ(nameOf(bare.module()), "bare");
  EXPECT_TRUE(hasNoSymbols(bare.module()));
  EXPECT_EQ(symbol(bare.module(), "IDS_GREETING"), kUnknown);
}

TEST_F(ModuleStartFiles, AFaultyHeaderIsDiscardedWhole) {
  copyModule(folder, "faulty_header", "faulty");
  StartedModule faulty(folder.path(moduleFile("faulty")));
  EXPECT_EQ(nameOf(faulty.module()), "faulty");
  EXPECT_TRUE(hasNoSymbols(faulty.module()));
  EXPECT_EQ(symbol(faulty.module(), "IDS_GREETING"), kUnknown);
}

TEST_F(ModuleStartFiles, TheHeaderOfATranslationReplacesThatOfTheModule) {
  copyTranslation(folder, "toolabc", "toolabc");
  StartedModule tool(folder.path(moduleFile("tool")));
  EXPECT_EQ(symbol(tool.module(), "IDS_TRANSLATOR"), 200u);
  EXPECT_EQ(symbol(tool.module(), "IDS_FAREWELL"), kUnknown);
}

TEST_F(ModuleStartFiles, ATranslationWithoutAHeaderLeavesThatOfTheModule) {
  copyTranslation(folder, "tooldeu", "toolabc");
  StartedModule tool(folder.path(moduleFile("tool")));
  EXPECT_EQ(textOf(tool.module(), 100), "Guten Tag");
  EXPECT_EQ(symbol(tool.module(), "IDS_FAREWELL"), 101u);
}

TEST_F(ModuleStartFiles, AFaultyHeaderOfATranslationHidesThatOfTheModule) {
  copyTranslation(folder, "faultyheader", "toolabc");
  StartedModule tool(folder.path(moduleFile("tool")));
  EXPECT_TRUE(hasNoSymbols(tool.module()));
}

TEST_F(ModuleStartFiles, TheNameEndsAtTheLastDot) {
  copyModule(folder, "tool", "tool.two");
  copyTranslation(folder, "toolabc", "tool.twoabc");
  StartedModule tool(folder.path(moduleFile("tool.two")));
  EXPECT_EQ(nameOf(tool.module()), "tool.two");
  EXPECT_EQ(textOf(tool.module(), 100), "Hallo");
}

TEST_F(ModuleStartFiles, ANameWithoutADotIsWhole) {
  copyFixture(folder, moduleFile("tool"), "my.folder/plain");
  copyTranslation(folder, "toolabc", "my.folder/plainabc");
  StartedModule tool(folder.path("my.folder/plain"));
  EXPECT_EQ(nameOf(tool.module()), "plain");
  EXPECT_EQ(textOf(tool.module(), 100), "Hallo");
}

TEST_F(ModuleStartFiles, ANameKeepsItsCase) {
  copyModule(folder, "tool", "ToolBox");
  copyTranslation(folder, "toolabc", "TOOLBOXAbc");
  StartedModule tool(folder.path(moduleFile("ToolBox")));
  EXPECT_EQ(nameOf(tool.module()), "ToolBox");
  EXPECT_EQ(textOf(tool.module(), 100), "Hallo");
}

TEST_F(ModuleStartFiles, StartingTwiceOrWithoutAnInstanceDoesNothing) {
  copyModule(folder, "no_metadata", "bare");
  LoadedModule const bare(folder.path(moduleFile("bare")));
  StartedModule tool(folder.path(moduleFile("tool")));
  EXPECT_FALSE(tool.owner().start(bare.handle()));
  EXPECT_FALSE(tool.owner().start(nullptr));
  EXPECT_EQ(nameOf(tool.module()), "tool");
  EXPECT_FALSE(hasNoSymbols(tool.module()));

  ModuleOwner other;
  EXPECT_FALSE(other.start(nullptr));
  EXPECT_EQ(nameOf(other.module()), "");
}

TEST_F(ModuleStartFiles, AfterTheEndTheNameStaysAndTheSymbolsGo) {
  copyTranslation(folder, "toolabc", "toolabc");
  StartedModule tool(folder.path(moduleFile("tool")));
  for (int round = 0; round < 2; ++round) {
    tool.owner().end();
    EXPECT_EQ(nameOf(tool.module()), "tool");
    EXPECT_TRUE(hasNoSymbols(tool.module()));
  }
}

TEST_F(ModuleStartFiles, AModuleThatHasEndedStartsAgain) {
  copyTranslation(folder, "toolabc", "toolabc");
  copyModule(folder, "no_metadata", "bare");
  LoadedModule const bare(folder.path(moduleFile("bare")));
  StartedModule tool(folder.path(moduleFile("tool")));
  tool.owner().end();
  EXPECT_TRUE(tool.owner().start(tool.instance()));
  EXPECT_EQ(symbol(tool.module(), "IDS_TRANSLATOR"), 200u);
  EXPECT_EQ(textOf(tool.module(), 100), "Hallo");
  tool.owner().end();
  // Nothing but the flag decides, so the same object can become another module.
  EXPECT_TRUE(tool.owner().start(bare.handle()));
  EXPECT_EQ(nameOf(tool.module()), "bare");
  EXPECT_TRUE(hasNoSymbols(tool.module()));
}

TEST_F(ModuleStartFiles, TheEndReleasesTheTranslation) {
  copyTranslation(folder, "toolabc", "toolabc");
  {
    StartedModule tool(folder.path(moduleFile("tool")));
    EXPECT_EQ(textOf(tool.module(), 100), "Hallo");
  }
  // A system that locks the files of loaded libraries would refuse.
  EXPECT_TRUE(std::filesystem::remove(folder.path("toolabc.dll")));
  StartedModule tool(folder.path(moduleFile("tool")));
  EXPECT_EQ(textOf(tool.module(), 100), "Hello");
}

TEST_F(ModuleStartFiles, TheProgramIsAModuleToo) {
  ModuleOwner program;
  ASSERT_TRUE(program.start(platform::modules().program()));
  EXPECT_EQ(nameOf(program.module()), "kvbase_module_tests");
  EXPECT_EQ(symbol(program.module(), "IDS_FAREWELL"), 101u);
  EXPECT_EQ(textOf(program.module(), 100), "Hello");
  program.end();
}

// The library itself, as any program sees it.
TEST(LibraryModuleFiles, TheLibraryIsTheFirstModule) {
  Module const& library = *Module::begin();
  EXPECT_EQ(nameOf(library), "KVBase");
  EXPECT_EQ(symbol(library, "IDC_LENGTH"), 4112u);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
