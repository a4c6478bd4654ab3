// SPDX-License-Identifier: MIT
#include "tests/support/user_setting.h"

#include <gtest/gtest.h>

#include "kvbase/platform/types.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {

struct UserSetting::Store {
  wstring const program;
};

UserSetting::UserSetting(std::string const& program, std::string const& language)
    : store_(new Store{L"Software\\VOLQ\\" + widen(program)}) {
  wstring const key = store_->program + L"\\Settings\\10.0";
  wstring const value = widen(language);
  EXPECT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, key.c_str(), L"GUILanguage", REG_SZ, value.c_str(),
                            static_cast<DWORD>((value.size() + 1) * sizeof(wchar))),
            0);
}

UserSetting::~UserSetting() {
  EXPECT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, store_->program.c_str()), 0);
}

}  // namespace testing
}  // namespace KV_1_1
