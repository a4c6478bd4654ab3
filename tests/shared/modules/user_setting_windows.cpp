// SPDX-License-Identifier: MIT
#include "tests/shared/modules/user_setting.h"

#include <gtest/gtest.h>

#include "kvbase/platform/types.h"

namespace KV_1_1 {
namespace testing {

struct UserSetting::Store {
  std::wstring const program;
};

UserSetting::UserSetting(std::string const& program, std::string const& language)
    : store_(new Store{L"Software\\VOLQ\\" + std::wstring(program.begin(), program.end())}) {
  std::wstring const key = store_->program + L"\\Settings\\10.0";
  std::wstring const text(language.begin(), language.end());
  EXPECT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, key.c_str(), L"GUILanguage", REG_SZ, text.c_str(),
                            static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))),
            0);
}

UserSetting::~UserSetting() {
  EXPECT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, store_->program.c_str()), 0);
}

}  // namespace testing
}  // namespace KV_1_1
