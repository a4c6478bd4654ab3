// SPDX-License-Identifier: MIT
#include "tests/support/stored_setting.h"

#include <gtest/gtest.h>

#include "kvbase/platform/types.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {

struct StoredSetting::Store {
  wstring const program;
};

StoredSetting::StoredSetting(std::string const& program, std::string const& text)
    : store_(new Store{L"Software\\VOLQ\\" + widen(program)}) {
  wstring const key = store_->program + L"\\Settings\\10.0";
  wstring const value = widen(text);
  EXPECT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, key.c_str(), L"GUILanguage", REG_SZ, value.c_str(),
                            static_cast<DWORD>((value.size() + 1) * sizeof(wchar))),
            0);
}

StoredSetting::~StoredSetting() {
  EXPECT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, store_->program.c_str()), 0);
}

}  // namespace testing
}  // namespace KV_1_1
