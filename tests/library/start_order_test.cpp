// SPDX-License-Identifier: MIT
//
// The library is up before the first static object of whoever uses it, and stays up until the last one is gone.
#include <gtest/gtest.h>

#include "kvbase/kvbase.h"

namespace KV_1_1 {
namespace testing {
namespace {

struct EarlyUser {
  String const empty = String::EMPTY;
  String const text = String(KVW(" early ")).trim();
  mZClass const* const root = BaseNode::Class();

  // Using the library here would crash, or be seen by a sanitizer, if it were gone already.
  ~EarlyUser() { (text + KVW(" and late")).trim(); }
} const earlyUser;

TEST(StartOrder, LibraryIsUpBeforeStaticsOfItsUser) {
  EXPECT_TRUE(earlyUser.empty != String::NIL);
  EXPECT_EQ(static_cast<wchar const*>(String::EMPTY), static_cast<wchar const*>(earlyUser.empty));
  EXPECT_TRUE(earlyUser.text == KVW("early"));
  EXPECT_NE(earlyUser.root, nullptr);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
