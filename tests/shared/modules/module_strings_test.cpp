// SPDX-License-Identifier: MIT
//
// Texts from the string tables of real modules and translation libraries.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "kvbase/strings/string_resource.h"
#include "tests/shared/modules/started_module.h"
#include "tests/support/temp_folder.h"
#include "tests/support/thread_locale.h"
#include "tests/support/user_setting.h"

namespace KV_1_1 {
namespace testing {
namespace {

class ModuleStringFiles : public ::testing::Test {
 protected:
  ModuleStringFiles() {
    copyModule(folder, "tool", "tool");
    copyTranslation(folder, "toolabc", "toolabc");
    UserSetting const setting(kProgram, "abc");
    tool.reset(new StartedModule(folder.path(moduleFile("tool"))));
  }
  Module const& module() { return tool->module(); }

  TempFolder folder;
  ThreadLocale const english{1033};
  std::unique_ptr<StartedModule> tool;
};

std::string valueOf(StringResource const& resource) {
  return narrow(static_cast<String const&>(resource));
}

TEST_F(ModuleStringFiles, TextsOfTranslationAndModule) {
  struct Row {
    char const* name;
    unsigned int id;
    char const* text;
  };
  Row const rows[] = {
      {"both: the translation", 100, "Hallo"},
      {"only in the module, in a block of the translation", 102, "Only in the module"},
      {"only in the module, in a block of its own", 300, "Gr\xC3\xB6\xC3\x9F\x65 \xC2\xBD \xF0\x9F\x98\x80"},
      {"only in the translation", 200, "\xC3\x9C\x62\x65rsetzt f\xC3\xBCr \xF0\x9F\x98\x80"},
      {"last of a block", 4095, "Ende"},
      {"last of all", 65535, "Last"},
      {"an empty entry counts as missing", 103, "Error loading string resource!"},
      {"missing in a block that is there", 104, "Error loading string resource!"},
      {"missing block", 5000, "Error loading string resource!"},
      {"0", 0, "Error loading string resource!"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(textOf(module(), row.id), row.text);
    EXPECT_EQ(valueOf(StringResource(row.id, module())), row.text);
  }
}

TEST_F(ModuleStringFiles, ATextIsLoadedOnceAndKept) {
  StringResource greeting(100, module());
  StringResource const farewell(101, module());
  EXPECT_EQ(valueOf(greeting), "Hallo");
  StringResource const copy = greeting;
  // Without the translation a new load would give the text of the module.
  tool->owner().end();
  std::filesystem::remove(folder.path("toolabc.dll"));
  ASSERT_TRUE(tool->owner().start(tool->instance()));
  EXPECT_EQ(valueOf(greeting), "Hallo");
  EXPECT_EQ(valueOf(copy), "Hallo");
  EXPECT_EQ(valueOf(farewell), "Good-bye");
  greeting = StringResource(100, module());
  EXPECT_EQ(valueOf(greeting), "Hello");
}

TEST_F(ModuleStringFiles, TheTextOfAFailedLoadIsKeptToo) {
  StringResource const text(5000, module());
  EXPECT_EQ(valueOf(text), "Error loading string resource!");
  EXPECT_EQ(valueOf(text), "Error loading string resource!");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
