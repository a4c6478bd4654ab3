// SPDX-License-Identifier: MIT
//
// What every operation makes of a receiver without text: NIL, the EMPTY payload, and an empty text of its own.
#include "tests/strings/string_operations.h"

#include <gtest/gtest.h>

#include "tests/strings/string_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

// The answer, and the receiver's state if it is another one than before.
std::string outcome(StringOperation const& operation, String& receiver, wchar const* payload) {
  std::string const before = shown(receiver, payload);
  std::string const answer = shown(operation.run(receiver), payload);
  std::string const after = shown(receiver, payload);
  return after == before ? answer : answer + "; " + after;
}

TEST(StringOperations, OnReceiversWithoutText) {
  ASSERT_EQ(String::outOfRange, 7);
  for (StringOperation const& operation : stringOperations()) {
    SCOPED_TRACE(operation.name);
    if (operation.without.nil != nullptr) {
      String nil;
      EXPECT_EQ(outcome(operation, nil, nullptr), operation.without.nil);
    }
    String empty = String::EMPTY;
    EXPECT_EQ(outcome(operation, empty, nullptr), operation.without.empty);
    EXPECT_EQ(String::EMPTY.length(), 0);

    // A new payload cannot come to lie where the old one was: it is built before the old one is released.
    String own(KVW(""));
    EXPECT_EQ(outcome(operation, own, own), operation.without.own);
  }
  EXPECT_EQ(state(String::NIL), "NIL");
  EXPECT_EQ(state(String::EMPTY), "EMPTY");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
