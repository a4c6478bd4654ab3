// SPDX-License-Identifier: MIT
//
// Types and lengths of the registry value that forces a language.
#include <gtest/gtest.h>

#include <string>

#include "kvbase/kvbase.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

TEST(ModuleSettingsWindows, TypesAndLengthsOfTheValue) {
  std::wstring const key = L"Software\\VOLQ\\kvbase_module_tests";
  std::wstring const settings = key + L"\\Settings\\10.0";
  struct Row {
    char const* name;
    DWORD type;
    std::wstring data;  // with its terminators
    bool forces;
  };
  Row const rows[] = {
      {"text", REG_SZ, std::wstring(L"deu\0", 4), true},
      {"text without terminator", REG_SZ, L"deu", true},
      {"expandable text", REG_EXPAND_SZ, std::wstring(L"deu\0", 4), true},
      {"two letters", REG_SZ, std::wstring(L"de\0", 3), true},
      {"binary", REG_BINARY, std::wstring(L"deu\0", 4), false},
      {"number", REG_DWORD, L"de", false},
      {"several texts", REG_MULTI_SZ, std::wstring(L"deu\0", 4), false},
      {"four letters", REG_SZ, std::wstring(L"deut\0", 5), false},
      {"four letters without terminator", REG_SZ, L"deut", false},
      {"empty", REG_SZ, std::wstring(L"\0", 1), false},
      {"nothing", REG_SZ, L"", false},
  };
  std::vector<std::wstring> const unforced = GetUsedLangAbbrevs();
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, settings.c_str(), L"GUILanguage", row.type, row.data.data(),
                              static_cast<DWORD>(row.data.size() * sizeof(wchar_t))),
              0);
    std::vector<std::wstring> const used = GetUsedLangAbbrevs();
    if (row.forces) {
      ASSERT_EQ(used.size(), 1u);
      EXPECT_EQ(narrow(used[0]), narrow(std::wstring(row.data.substr(0, 4).c_str())));
    } else {
      EXPECT_EQ(used, unforced);
    }
  }
  EXPECT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, key.c_str()), 0);
  EXPECT_EQ(GetUsedLangAbbrevs(), unforced);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
