// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/modules/module_files.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "kvbase/platform/linux/files/wildcard.h"
#include "kvbase/platform/module_api.h"
#include "tests/platform/linux/environment_variable.h"
#include "tests/platform/linux/files/file_support.h"
#include "tests/support/current_path.h"
#include "tests/support/module_files.h"
#include "tests/support/narrow_text.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

namespace fs = std::filesystem;

class ModuleFiles : public ::testing::Test {
 protected:
  // The name of the file that a name in the folder stands for; empty for none.
  std::string found(wstring const& name) const {
    platform::NativePath path;
    if (!platform::findModuleFile(folder.text(name).c_str(), path)) return "";
    EXPECT_EQ(path[path.size() - 1], '\0');
    return fs::path(path.data()).lexically_relative(folder.path()).string();
  }

  TempFolder folder;
};

TEST_F(ModuleFiles, TheExactNameComesFirst) {
  folder.write("toolABC.dll");
  folder.write("toolabc.dll");
  EXPECT_EQ(found(KVW("toolabc.dll")), "toolabc.dll");
  EXPECT_EQ(found(KVW("toolABC.dll")), "toolABC.dll");
}

TEST_F(ModuleFiles, ANameInAnotherCaseIsFound) {
  folder.write("toolDEU.dll");
  EXPECT_EQ(found(KVW("tooldeu.dll")), "toolDEU.dll");
  EXPECT_EQ(found(KVW("TOOLDEU.DLL")), "toolDEU.dll");
  EXPECT_EQ(found(KVW("tooldeu.dl")), "");
  EXPECT_EQ(found(KVW("tooldeu.dlll")), "");
}

TEST_F(ModuleFiles, OfSeveralInAnotherCaseTheFirstIsTaken) {
  folder.write("tOOL.dll");
  folder.write("Tool.dll");
  folder.write("TOol.dll");
  EXPECT_EQ(found(KVW("tool.dll")), "TOol.dll");
}

TEST_F(ModuleFiles, CaseIsIgnoredInAllScripts) {
  folder.write(fs::u8path("\u00C4\u03A9.dll"));
  EXPECT_EQ(found(KVW("\u00E4\u03C9.DLL")), fs::u8path("\u00C4\u03A9.dll").string());
}

TEST_F(ModuleFiles, ALetterMatchesAnyThatHasItsUpperCase) {
  folder.write("ITALIAN.dll");
  folder.write(fs::u8path("\u017Fpanish.dll"));
  EXPECT_EQ(found(KVW("\u0131talian.DLL")), "ITALIAN.dll");
  EXPECT_EQ(found(KVW("Spanish.DLL")), fs::u8path("\u017Fpanish.dll").string());
}

TEST_F(ModuleFiles, FoldersMustBeExact) {
  folder.write("Languages/tool.dll");
  EXPECT_EQ(found(KVW("Languages\\TOOL.dll")), "Languages/tool.dll");
  EXPECT_EQ(found(KVW("languages\\tool.dll")), "");
}

TEST_F(ModuleFiles, NamesThatAreNotUtf8DoNotEndTheSearch) {
  folder.write("\xFF\xFE.dll");
  folder.write("Tool.dll");
  EXPECT_EQ(found(KVW("tool.dll")), "Tool.dll");
}

TEST_F(ModuleFiles, ALinkToNothingIsNoFile) {
  fs::create_symlink("nowhere", folder.path("Tool.dll"));
  EXPECT_EQ(found(KVW("Tool.dll")), "");
  EXPECT_EQ(found(KVW("tool.dll")), "");
}

TEST_F(ModuleFiles, APathBelowAFileIsNone) {
  folder.write("tool.dll");
  EXPECT_EQ(found(KVW("tool.dll\\sub.dll")), "");
  EXPECT_EQ(found(KVW("none\\sub.dll")), "");
  EXPECT_EQ(found(KVW("tool.dll\\")), "");
}

TEST_F(ModuleFiles, ARelativeNameIsLookedForInTheCurrentDirectory) {
  folder.write("Tool.dll");
  CurrentPath const current(folder.path());
  platform::NativePath path;
  ASSERT_TRUE(platform::findModuleFile(KVW("TOOL.dll"), path));
  EXPECT_EQ(std::string(path.data()), "Tool.dll");
}

TEST_F(ModuleFiles, ABareNameIsThatOfAFileBesideTheProgramInAnyCase) {
  wstring name = widen(programFile().filename().string());
  for (wchar& unit : name) unit = platform::upperCased(unit);
  platform::NativePath path;
  ASSERT_TRUE(platform::findModuleFileByName(name.c_str(), path));
  EXPECT_EQ(fs::path(path.data()), programFile());
}

TEST_F(ModuleFiles, ANameWithAFolderOrADriveIsAPath) {
  folder.write("tool.dll");
  fs::create_directory_symlink(folder.path(), folder.path("c:"));
  EnvironmentVariable const drives("KVBASE_DRIVES", folder.path().c_str());
  CurrentPath const current(folder.path());
  platform::NativePath path;
  for (wchar const* const name : {KVW(".\\TOOL.dll"), KVW("./TOOL.dll"), KVW("C:TOOL.dll")}) {
    EXPECT_TRUE(platform::findModuleFileByName(name, path)) << narrow(name);
  }
  EXPECT_FALSE(platform::findModuleFileByName(KVW("tool.dll"), path)) << "a bare name is not that of a file here";
}

TEST_F(ModuleFiles, AFileWithoutTheRightToReadIsNotReadable) {
  folder.write("tool.dll");
  fs::permissions(folder.path("tool.dll"), fs::perms::none);
  inChild([&] {
    dropRights();
    EXPECT_FALSE(platform::nativeModules().isReadable(folder.text(KVW("tool.dll")).c_str()));
    EXPECT_EQ(platform::nativeModules().loadAsData(folder.text(KVW("tool.dll")).c_str()), nullptr);
  });
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
