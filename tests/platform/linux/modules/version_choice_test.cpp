// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/modules/version_choice.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kvbase/platform/module_api.h"
#include "tests/support/pe_image.h"
#include "tests/support/scripted_locales.h"

namespace KV_1_1 {
namespace testing {
namespace {

using platform::ByteRange;
using platform::PeResources;
using platform::ResourceKey;

constexpr int kNoChoice = -1;

// The language that is chosen among the versions of a resource; kNoChoice for no version.
int chosen(std::vector<int> const& languages, std::uint16_t wanted, platform::LocaleApi& locales) {
  PeImage image;
  for (int const language : languages) image.add(KVW("T"), KVW("N"), language, std::to_string(language));
  std::string const bytes = image.build();
  PeResources resources;
  PeResources::Directory versions;
  EXPECT_TRUE(resources.open(ByteRange(bytes.data(), bytes.size())));
  EXPECT_TRUE(resources.findVersions(ResourceKey(KVW("T")), ResourceKey(KVW("N")), versions));
  PeResources::Version const version = platform::chooseVersion(resources, versions, wanted, locales);
  ByteRange content;
  if (version == 0 || !resources.bytesOf(version, content)) return kNoChoice;
  return std::stoi(std::string(reinterpret_cast<char const*>(content.memory()), content.size()));
}

struct Row {
  char const* name;
  std::vector<int> languages;
  ulong32 thread;
  std::uint16_t user, system;
  int expected;
};

class VersionWithoutLanguage : public ::testing::TestWithParam<Row> {};

TEST_P(VersionWithoutLanguage, IsThatOfTheFirstLanguageInTheOrder) {
  Row const& row = GetParam();
  ScriptedLocales locales;
  locales.thread = row.thread;
  locales.user = row.user;
  locales.system = row.system;
  EXPECT_EQ(chosen(row.languages, 0, locales), row.expected);
}

INSTANTIATE_TEST_SUITE_P(
    All, VersionWithoutLanguage,
    ::testing::Values(Row{"neutral_before_all_others", {0, 1031, 1033}, 1031, 1031, 1031, 0},
                      Row{"language_of_the_thread", {7, 1031, 1033, 1036}, 1036, 1031, 1041, 1036},
                      Row{"not_the_primary_language_of_the_thread", {12, 1033}, 1036, 1031, 1031, 1033},
                      Row{"sort_order_of_the_thread_does_not_count", {1031, 1033}, 0x10407, 1033, 1033, 1031},
                      Row{"language_of_the_user", {7, 1031, 1033}, 1041, 1031, 1041, 1031},
                      Row{"primary_language_of_the_user", {7, 1033, 1036}, 1041, 1031, 1036, 7},
                      Row{"language_of_the_system", {7, 1033, 1036}, 1041, 1042, 1036, 1036},
                      Row{"primary_language_of_the_system", {12, 1033}, 1041, 1042, 1036, 12},
                      Row{"English", {9, 1031, 1033}, 1041, 1041, 1041, 1033},
                      Row{"the_first", {1034, 1042}, 1031, 1031, 1031, 1034},
                      Row{"the_first_when_only_primary_English_is_there", {9, 1041}, 1033, 1031, 1031, 9},
                      Row{"the_only_one", {1042}, 1031, 1031, 1031, 1042}),
    [](::testing::TestParamInfo<Row> const& row) { return std::string(row.param.name); });

TEST(VersionOfALanguage, IsThatOfItsPrimaryLanguageOrANeutralOneElse) {
  ScriptedLocales locales;
  EXPECT_EQ(chosen({0, 12, 1036}, 1036, locales), 1036);
  EXPECT_EQ(chosen({0, 12, 1031}, 1036, locales), 12);
  EXPECT_EQ(chosen({0, 1031}, 1036, locales), 0);
  EXPECT_EQ(chosen({1031, 1033}, 1036, locales), kNoChoice) << "no default takes its place";
  EXPECT_EQ(chosen({1033}, 1036, locales), kNoChoice) << "not even a single version";
  EXPECT_EQ(chosen({1031, 2055}, 7, locales), kNoChoice) << "no sublanguage takes the place of a primary language";
}

TEST(VersionOfALanguage, DefaultsStandForTheLanguagesOfTheUserAndOfTheSystem) {
  constexpr std::uint16_t kUserDefault = 0x400, kSystemDefault = 0x800;
  ScriptedLocales locales;
  locales.thread = 1041;
  locales.user = 1031;
  locales.system = 1036;
  EXPECT_EQ(chosen({1031, 1034, 1036, 1041}, kUserDefault, locales), 1041);
  EXPECT_EQ(chosen({1031, 1034, 1036, 1041}, kSystemDefault, locales), 1036);
  EXPECT_EQ(chosen({1034, 1041}, kSystemDefault, locales), 1034) << "the first, not that of the thread";
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
