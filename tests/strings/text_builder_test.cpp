// SPDX-License-Identifier: MIT
#include "kvbase/strings/internal/text_builder.h"

#include <gtest/gtest.h>

#include <climits>
#include <new>

namespace KV_1_1 {
namespace testing {
namespace {

TEST(TextBuilderLimit, MoreThanIntMaxUnitsThrow) {
  EXPECT_THROW(TextBuilder(INT_MAX + 1ll), std::bad_alloc);
  EXPECT_THROW(TextBuilder(2ll * INT_MAX), std::bad_alloc);
  EXPECT_THROW(TextBuilder(1ll << 32), std::bad_alloc);
}

TEST(TextBuilderFinish, FewerUnitsThanAnnouncedAreTheText) {
  TextBuilder builder(5);
  String const text = builder.append(viewOf(KVW("ab"))).append(KVW('c')).finish();
  EXPECT_EQ(text, KVW("abc"));
  EXPECT_EQ(text.length(), 3);
}

#if defined(KVBASE_CHECKED)
TEST(TextBuilderDeathTest, OverrunStopsTheProcess) {
  TextBuilder builder(2);
  builder.append(KVW('a'));
  EXPECT_DEATH(builder.append(viewOf(KVW("bc"))), "violated: units >= 0");
  EXPECT_DEATH(builder.append(KVW('b')).append(KVW('c')), "violated: units >= 0");
}
#endif

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
