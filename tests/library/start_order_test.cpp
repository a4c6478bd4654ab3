// SPDX-License-Identifier: MIT
//
// The library is up before the first static object of whoever uses it, and stays up until the last one is gone.
#include <gtest/gtest.h>

#include "kvbase/kvbase.h"

namespace {

using KV_1_1::String;

struct EarlyUser {
  String const empty = String::EMPTY;
  String const text = String(KVW(" early ")).trim();
  KV_1_1::mZClass const* const root = KV_1_1::BaseNode::Class();

  // Using the library here would crash, or be seen by a sanitizer, if it were gone already.
  ~EarlyUser() { (text + KVW(" and late")).trim(); }
} const earlyUser;

TEST(StartOrderTest, LibraryIsUpBeforeStaticsOfItsUser) {
  EXPECT_TRUE(earlyUser.empty != String::NIL);
  EXPECT_EQ(static_cast<KV_1_1::wchar const*>(String::EMPTY), static_cast<KV_1_1::wchar const*>(earlyUser.empty));
  EXPECT_TRUE(earlyUser.text == KVW("early"));
  EXPECT_NE(nullptr, earlyUser.root);
}

}  // namespace
