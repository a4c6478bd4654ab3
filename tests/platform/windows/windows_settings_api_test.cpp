// SPDX-License-Identifier: MIT
//
// Values in the registry that are no plain texts. Each test has a key of its own, which is removed at its end.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "kvbase/platform/settings_api.h"
#include "kvbase/platform/types.h"

namespace KV_1_1 {
namespace testing {
namespace {

class WindowsSettingsApiTest : public ::testing::Test {
 protected:
  WindowsSettingsApiTest() {
    std::random_device random;
    name_ = L"Software\\KVBase tests " + std::to_wstring(random()) + L"-" + std::to_wstring(random());
    EXPECT_EQ(
        RegCreateKeyExW(HKEY_CURRENT_USER, name_.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &registry_, nullptr),
        0);
    key_ = settings().openKey(settings().currentUser(), name_.c_str());
    EXPECT_NE(key_, nullptr);
  }
  ~WindowsSettingsApiTest() override {
    settings().closeKey(key_);
    EXPECT_EQ(RegCloseKey(registry_), 0);
    EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, name_.c_str()), 0);
  }

  static platform::SettingsApi& settings() { return platform::nativeSettings(); }

  void write(ulong32 type, void const* bytes, ulong32 size) {
    EXPECT_EQ(RegSetValueExW(registry_, L"GUILanguage", 0, type, static_cast<BYTE const*>(bytes), size), 0);
  }
  // Reads the value into eight bytes.
  bool read() {
    std::memset(data_, '#', sizeof data_);
    size_ = 4 * sizeof(wchar);
    return settings().readValue(key_, L"GUILanguage", type_, data_, size_);
  }
  std::wstring text() const { return std::wstring(data_, size_ / sizeof(wchar)); }

  std::wstring name_;
  HKEY registry_ = nullptr;
  platform::SettingsKey key_ = nullptr;
  wchar data_[5] = {};
  ulong32 type_ = 0;
  ulong32 size_ = 0;
};

TEST_F(WindowsSettingsApiTest, TextWithTerminator) {
  write(REG_SZ, L"deu", 8);
  EXPECT_TRUE(read());
  EXPECT_EQ(type_, platform::kTextValue);
  EXPECT_EQ(text(), std::wstring(L"deu\0", 4));
}

TEST_F(WindowsSettingsApiTest, ExpandableText) {
  write(REG_EXPAND_SZ, L"%x%", 8);
  EXPECT_TRUE(read());
  EXPECT_EQ(type_, platform::kExpandableTextValue);
  EXPECT_EQ(text(), std::wstring(L"%x%\0", 4)) << "it is not expanded";
}

TEST_F(WindowsSettingsApiTest, TextStoredWithoutTerminator) {
  write(REG_SZ, L"de", 4);
  EXPECT_TRUE(read());
  EXPECT_EQ(type_, platform::kTextValue);
  EXPECT_EQ(text().substr(0, 2), L"de");
}

TEST_F(WindowsSettingsApiTest, FourLettersDoNotFit) {
  write(REG_SZ, L"fran", 10);
  EXPECT_FALSE(read());
  EXPECT_EQ(data_[4], L'\x2323') << "nothing is written beyond the room";
}

TEST_F(WindowsSettingsApiTest, OtherTypesTellWhatTheyAre) {
  write(REG_BINARY, "\1\2\3", 3);
  EXPECT_TRUE(read());
  EXPECT_EQ(type_, static_cast<ulong32>(REG_BINARY));
  EXPECT_EQ(size_, 3u);
  ulong32 const number = 1031;
  write(REG_DWORD, &number, sizeof number);
  EXPECT_TRUE(read());
  EXPECT_EQ(type_, static_cast<ulong32>(REG_DWORD));
  EXPECT_EQ(size_, 4u);
}

TEST_F(WindowsSettingsApiTest, EmptyValue) {
  write(REG_SZ, L"", 2);
  EXPECT_TRUE(read());
  EXPECT_EQ(text(), std::wstring(1, L'\0'));
}

TEST_F(WindowsSettingsApiTest, NamesIgnoreCase) {
  write(REG_SZ, L"deu", 8);
  size_ = 8;
  EXPECT_TRUE(settings().readValue(key_, L"guilanguage", type_, data_, size_));
  platform::SettingsKey const software = settings().openKey(settings().currentUser(), L"SOFTWARE");
  EXPECT_NE(software, nullptr);
  settings().closeKey(software);
}

TEST_F(WindowsSettingsApiTest, KeysAreOpenedForReadingOnly) {
  BYTE const byte = 0;
  EXPECT_NE(RegSetValueExW(static_cast<HKEY>(key_), L"x", 0, REG_BINARY, &byte, 1), 0);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
