// SPDX-License-Identifier: MIT
//
// What several threads may do at once with Strings on one payload: copy and drop them, read the text, and change copies.
#include <gtest/gtest.h>

#include <atomic>

#include "kvbase/strings/string_val.h"
#include "tests/strings/string_operations.h"
#include "tests/strings/string_support.h"
#include "tests/support/threads.h"

namespace KV_1_1 {
namespace testing {
namespace {

TEST(StringConcurrency, CountsAreRightAtTheEnd) {
  StringVal* const payload = StringVal::construct(KVW("shared"), -1, -1);
  std::atomic<int> destroyed{0};
  onThreads([payload, &destroyed](int) {
    for (int i = 0; i < 20000; ++i) {
      payload->ref();
      if (payload->unref()) ++destroyed;
    }
  });
  EXPECT_EQ(destroyed, 0);
  EXPECT_EQ(payload->inqRefCount(), 1u);
  EXPECT_TRUE(payload->unref());
}

TEST(StringConcurrency, ExactlyOneThreadDropsTheLastReference) {
  for (int round = 0; round < 50; ++round) {
    StringVal* const payload = StringVal::construct(KVW("shared"), -1, -1);
    for (int i = 1; i < kThreads; ++i) payload->ref();
    std::atomic<int> destroyed{0};
    onThreads([payload, &destroyed](int) {
      if (payload->unref()) ++destroyed;
    });
    ASSERT_EQ(destroyed, 1);
  }
}

// The answer and what becomes of a copy. An operation that keeps the payload runs on the given String itself.
std::string outcomeOfCopy(StringOperation const& operation, String& text) {
  String copy = text;
  std::string const answer = shown(operation.run(operation.effect == StringOperation::kKeeps ? text : copy), text);
  return answer + "; " + state(copy);
}

TEST(StringConcurrency, EveryOperationOnOnePayload) {
  for (StringOperation const& operation : stringOperations()) {
    SCOPED_TRACE(operation.name);
    String text(operation.text);
    // The first call also makes the narrow copies, which threads share from then on.
    std::string const expected = outcomeOfCopy(operation, text);
    std::atomic<int> wrong{0};
    onThreads([&](int) {
      for (int i = 0; i < 20; ++i) {
        if (outcomeOfCopy(operation, text) != expected) ++wrong;
      }
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(spelled(text), spelled(String(operation.text)));
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
