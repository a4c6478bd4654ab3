// SPDX-License-Identifier: MIT
//
// Settings of the user, for the native backend of either system. Each test has a key of its own.
#include "kvbase/platform/settings_api.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <vector>

#include "tests/support/narrow_text.h"
#include "tests/support/user_setting.h"

namespace KV_1_1 {
namespace testing {
namespace {

platform::SettingsApi& settings() {
  return platform::nativeSettings();
}

std::string newProgram() {
  std::random_device random;
  return "kvbase-test-" + std::to_string(random()) + '-' + std::to_string(random());
}

// A program with a stored language, and its keys opened one inside the other as the library opens them.
class SettingsApiTest : public ::testing::Test {
 protected:
  ~SettingsApiTest() override {
    while (!keys_.empty()) closeLast();
  }

  // Opens the keys below the current user that lead to the settings of `program`; false if one is missing.
  bool openAll(std::string const& program) {
    platform::SettingsKey parent = settings().currentUser();
    for (wstring const& name : {wstring(KVW("Software")), wstring(KVW("VOLQ")), widen(program),
                                wstring(KVW("Settings")), wstring(KVW("10.0"))}) {
      parent = settings().openKey(parent, name.c_str());
      if (parent == nullptr) return false;
      keys_.push_back(parent);
    }
    return true;
  }
  void closeLast() {
    settings().closeKey(keys_.back());
    keys_.pop_back();
  }

  // The value "GUILanguage" read from the last key into eight bytes, up to its terminator; "none" if it cannot be read.
  std::string read(wchar const* name = KVW("GUILanguage")) {
    std::array<wchar, 5> data = {};
    ulong32 type = 0;
    ulong32 size = 4 * sizeof(wchar);
    if (!settings().readValue(keys_.back(), name, type, data.data(), size)) return "none";
    EXPECT_EQ(type, platform::kTextValue);
    EXPECT_EQ(size, (wstring(data.data()).size() + 1) * sizeof(wchar)) << "with the terminator";
    return narrow(data.data());
  }

  std::string const program_ = newProgram();
  std::vector<platform::SettingsKey> keys_;
};

TEST_F(SettingsApiTest, StoredTextIsRead) {
  UserSetting const setting(program_, "deu");
  ASSERT_TRUE(openAll(program_));
  EXPECT_EQ(read(), "deu");
  EXPECT_EQ(read(), "deu") << "again from the same key";
}

TEST_F(SettingsApiTest, ShorterTextIsRead) {
  UserSetting const setting(program_, "de");
  ASSERT_TRUE(openAll(program_));
  EXPECT_EQ(read(), "de");
}

TEST_F(SettingsApiTest, EmptyTextIsRead) {
  UserSetting const setting(program_, "");
  ASSERT_TRUE(openAll(program_));
  EXPECT_EQ(read(), "");
}

TEST_F(SettingsApiTest, TextLongerThanTheRoomIsNotRead) {
  UserSetting const setting(program_, "fran");
  ASSERT_TRUE(openAll(program_));
  std::array<wchar, 5> data;
  data.fill(KVW('#'));
  ulong32 type = 0;
  ulong32 size = 4 * sizeof(wchar);
  EXPECT_FALSE(settings().readValue(keys_.back(), KVW("GUILanguage"), type, data.data(), size));
  EXPECT_EQ(data[4], KVW('#')) << "nothing is written beyond the room";
  size = 5 * sizeof(wchar);
  EXPECT_TRUE(settings().readValue(keys_.back(), KVW("GUILanguage"), type, data.data(), size));
  EXPECT_EQ(wstring(data.data()), KVW("fran"));
}

TEST_F(SettingsApiTest, MissingValueIsNotRead) {
  UserSetting const setting(program_, "deu");
  ASSERT_TRUE(openAll(program_));
  EXPECT_EQ(read(KVW("Language")), "none");
  closeLast();
  EXPECT_EQ(read(), "none") << "the value is in the key below";
}

TEST_F(SettingsApiTest, MissingKeyIsNotOpened) {
  EXPECT_FALSE(openAll(program_));
  UserSetting const setting(program_, "deu");
  EXPECT_EQ(settings().openKey(settings().currentUser(), widen(program_).c_str()), nullptr);
}

TEST_F(SettingsApiTest, ValueIsNoKey) {
  UserSetting const setting(program_, "deu");
  ASSERT_TRUE(openAll(program_));
  EXPECT_EQ(settings().openKey(keys_.back(), KVW("GUILanguage")), nullptr);
}

TEST_F(SettingsApiTest, KeyOutlivesItsParents) {
  UserSetting const setting(program_, "deu");
  ASSERT_TRUE(openAll(program_));
  std::rotate(keys_.begin(), keys_.end() - 1, keys_.end());
  while (keys_.size() > 1) closeLast();
  EXPECT_EQ(read(), "deu");
}

TEST_F(SettingsApiTest, KeyIsOpenedMoreThanOnce) {
  UserSetting const setting(program_, "deu");
  ASSERT_TRUE(openAll(program_));
  ASSERT_TRUE(openAll(program_));
  EXPECT_EQ(read(), "deu");
  for (int i = 0; i < 5; ++i) closeLast();
  EXPECT_EQ(read(), "deu");
}

TEST_F(SettingsApiTest, NameLeadsThroughSeveralKeys) {
  UserSetting const setting(program_, "deu");
  wstring const name = KVW("Software\\VOLQ\\") + widen(program_) + KVW("\\Settings\\10.0");
  keys_.push_back(settings().openKey(settings().currentUser(), name.c_str()));
  ASSERT_NE(keys_.back(), nullptr);
  EXPECT_EQ(read(), "deu");
}

TEST_F(SettingsApiTest, EmptyNameOpensTheKeyItself) {
  UserSetting const setting(program_, "deu");
  ASSERT_TRUE(openAll(program_));
  keys_.push_back(settings().openKey(keys_.back(), KVW("")));
  ASSERT_NE(keys_.back(), nullptr);
  EXPECT_EQ(read(), "deu");
}

TEST_F(SettingsApiTest, CurrentUserIsOneKey) {
  EXPECT_NE(settings().currentUser(), nullptr);
  EXPECT_EQ(settings().currentUser(), settings().currentUser());
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
