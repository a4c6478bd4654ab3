// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/locale/language_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

namespace KV_1_1 {
namespace testing {
namespace {

TEST(LanguageTable, IdsAscend) {
  ASSERT_NE(platform::languagesBegin(), platform::languagesEnd());
  for (auto const* row = platform::languagesBegin() + 1; row != platform::languagesEnd(); ++row) {
    EXPECT_LT(row[-1].id, row->id);
  }
}

TEST(LanguageTable, EachAbbreviationHasThreeCapitals) {
  for (auto const* row = platform::languagesBegin(); row != platform::languagesEnd(); ++row) {
    EXPECT_EQ(std::strlen(row->abbreviation), 3u) << row->id;
    for (char const* c = row->abbreviation; *c != '\0'; ++c) EXPECT_TRUE(*c >= 'A' && *c <= 'Z') << row->id;
    EXPECT_STRNE(row->abbreviation, "ZZZ") << "an id without an abbreviation of its own";
  }
}

TEST(LanguageTable, EachNeutralIdStandsForALanguageOfTheSamePrimary) {
  for (auto const* row = platform::languagesBegin(); row != platform::languagesEnd(); ++row) {
    platform::Language const* const standard = platform::findLanguage(row->standard);
    ASSERT_NE(standard, nullptr) << row->id;
    EXPECT_FALSE(standard->isNeutral()) << row->id;
    EXPECT_EQ(standard->id & 0x3FF, row->id & 0x3FF);
  }
}

TEST(LanguageTable, FindsEachRowAndNothingElse) {
  auto const* row = platform::languagesBegin();
  for (ulong32 id = 0; id <= 0x10000; ++id) {
    bool const isRow = row != platform::languagesEnd() && row->id == id;
    ASSERT_EQ(platform::findLanguage(id), isRow ? row : nullptr) << id;
    if (isRow) ++row;
  }
  EXPECT_EQ(row, platform::languagesEnd());
  EXPECT_EQ(platform::findLanguage(0x10407), nullptr);
  EXPECT_EQ(platform::findLanguage(0xFFFFFFFF), nullptr);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
