// SPDX-License-Identifier: MIT
//
// Translations that another program keeps for itself.
#include <gtest/gtest.h>

#include "kvbase/platform/module_api.h"
#include "tests/shared/modules/started_module.h"
#include "tests/support/temp_folder.h"
#include "tests/support/user_setting.h"

namespace KV_1_1 {
namespace testing {
namespace {

// A file that is open in such a way that nobody else may open it.
class LockedFile {
 public:
  explicit LockedFile(std::filesystem::path const& file)
      : handle_(CreateFileW(file.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr)) {
    EXPECT_NE(handle_, INVALID_HANDLE_VALUE) << file;
  }
  ~LockedFile() { CloseHandle(handle_); }
  LockedFile(LockedFile const&) = delete;
  LockedFile& operator=(LockedFile const&) = delete;

 private:
  HANDLE const handle_;
};

TEST(TranslationFilesWindows, ALockedFileCountsAsReadableButHasNoVersion) {
  UserSetting const setting(kProgram, "abc");
  TempFolder folder;
  copyModule(folder, "tool", "tool");
  copyModule(folder, "no_version", "bare");
  copyTranslation(folder, "toolabc", "toolabc");
  copyTranslation(folder, "unversioned", "bareabc");
  LoadedModule const tool(folder.path(moduleFile("tool")));
  LoadedModule const bare(folder.path(moduleFile("bare")));
  {
    LockedFile const first(folder.path("toolabc.dll"));
    LockedFile const second(folder.path("bareabc.dll"));
    EXPECT_TRUE(platform::modules().isReadable(folder.text(KVW("toolabc.dll")).c_str()));
    EXPECT_EQ(LoadTranslationDLL(tool.handle(), 0xFFFF), tool.handle());
    EXPECT_EQ(LoadTranslationDLL(bare.handle(), 0xFFFF), nullptr);
  }
  HINSTANCE const translation = LoadTranslationDLL(tool.handle(), 0xFFFF);
  EXPECT_NE(translation, tool.handle());
  EXPECT_TRUE(platform::modules().freeLibrary(translation));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
