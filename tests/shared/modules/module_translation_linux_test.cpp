// SPDX-License-Identifier: MIT
//
// Translations that only a file system of Linux can have.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "kvbase/platform/module_api.h"
#include "tests/shared/modules/started_module.h"
#include "tests/support/temp_folder.h"
#include "tests/support/user_setting.h"

namespace KV_1_1 {
namespace testing {
namespace {

namespace fs = std::filesystem;

class TranslationFilesLinux : public ::testing::Test {
 protected:
  TranslationFilesLinux() {
    copyModule(folder, "tool", "tool");
    copyModule(folder, "no_version", "bare");
  }
  // The text 100 of a module that is started.
  std::string greeting(char const* name) {
    StartedModule module(folder.path(moduleFile(name)));
    return textOf(module.module(), 100);
  }

  TempFolder folder;
  UserSetting const setting{kProgram, "abc"};
};

TEST_F(TranslationFilesLinux, APipeIsNoTranslationAndDoesNotBlock) {
  ASSERT_EQ(mkfifo(folder.path("toolabc.dll").c_str(), 0600), 0);
  ASSERT_EQ(mkfifo(folder.path("bareabc.dll").c_str(), 0600), 0);
  EXPECT_EQ(greeting("tool"), "Hello");
  EXPECT_EQ(greeting("bare"), "No version");
}

TEST_F(TranslationFilesLinux, AFileWithoutTheRightToReadIsNotTaken) {
  copyTranslation(folder, "toolabc", "toolabc");
  fs::permissions(folder.path("toolabc.dll"), fs::perms::none);
  // The administrator may read everything.
  EXPECT_EQ(greeting("tool"), geteuid() == 0 ? "Hallo" : "Hello");
}

TEST_F(TranslationFilesLinux, LinksLeadToTranslations) {
  copyTranslation(folder, "toolabc", "elsewhere");
  fs::create_symlink("elsewhere.dll", folder.path("toolabc.dll"));
  EXPECT_EQ(greeting("tool"), "Hallo");
  fs::remove(folder.path("elsewhere.dll"));
  EXPECT_EQ(greeting("tool"), "Hello");
}

TEST_F(TranslationFilesLinux, TheExactNameComesBeforeOthersInAnotherCase) {
  copyTranslation(folder, "toolabc", "toolABC");
  EXPECT_EQ(greeting("tool"), "Hallo");
  copyTranslation(folder, "tooldeu", "toolabc");
  EXPECT_EQ(greeting("tool"), "Guten Tag");
}

TEST_F(TranslationFilesLinux, ATranslationThatVanishesWhileItIsLoadedKeepsItsTexts) {
  copyTranslation(folder, "toolabc", "toolabc");
  StartedModule tool(folder.path(moduleFile("tool")));
  fs::remove(folder.path("toolabc.dll"));
  EXPECT_EQ(textOf(tool.module(), 100), "Hallo");
}

TEST_F(TranslationFilesLinux, ATranslationThatShrinksWhileItIsLoadedLeavesTheTextsOfTheModule) {
  copyTranslation(folder, "toolabc", "toolabc");
  StartedModule tool(folder.path(moduleFile("tool")));
  fs::resize_file(folder.path("toolabc.dll"), 0);
  EXPECT_EQ(textOf(tool.module(), 300), "Gr\xC3\xB6\xC3\x9F\x65 \xC2\xBD \xF0\x9F\x98\x80");
  EXPECT_EQ(textOf(tool.module(), 102), "Only in the module");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
