// SPDX-License-Identifier: MIT
//
// Every operation with its first allocation failing, then its second, and so on: each time std::bad_alloc comes out, the
// receiver is as it was, and nothing is left over. Only the commit of a StringBuffer, and so of printf, is not swept:
// memory exhausted there ends the process.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <new>

#include "kvbase/platform/text_api.h"
#include "tests/strings/string_operations.h"
#include "tests/strings/string_support.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/scripted_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

// A text without allocating.
struct Snapshot {
  explicit Snapshot(String const& string) : nil(isNil(string)), length(string.length()) {
    if (length < kRoom) std::memcpy(units, static_cast<wchar const*>(string), bytes());
  }
  bool operator==(Snapshot const& other) const {
    return nil == other.nil && length == other.length && std::memcmp(units, other.units, bytes()) == 0;
  }
  std::size_t bytes() const { return static_cast<std::size_t>(length) * sizeof(wchar); }

  static constexpr int kRoom = 256;
  bool nil;
  int length;
  wchar units[kRoom];
};

// Runs the operation with every allocation failing once. Gives the number of allocations.
int sweep(StringOperation const& operation, String const& text, bool isShared) {
  for (int failAt = 1;; ++failAt) {
    SCOPED_TRACE(failAt);
    String receiver = isShared ? text : stringOf(unitsOf(text));
    Snapshot const before(receiver);
    bool threw = false;
    bool isKept = false;

    AllocationFailure scope(failAt);
    try {
      operation.run(receiver);
    } catch (std::bad_alloc const&) {
      threw = true;
      isKept = before == Snapshot(receiver);
    }
    receiver = String::NIL;
    scope.end();

    EXPECT_EQ(threw, scope.failed());
    EXPECT_TRUE(!threw || isKept);
    // A narrow copy made before the failure belongs to the payload, which a shared receiver does not take along.
    if (!isShared) EXPECT_EQ(scope.live(), 0);
    EXPECT_EQ(scope.mismatched(), 0);
    EXPECT_TRUE(before == Snapshot(text));
    if (!scope.failed() || ::testing::Test::HasFailure()) return failAt - 1;
  }
}

TEST(StringAllocation, EveryOperationSurvivesExhaustedMemory) {
  ScriptedText ansi;
  ansi.ansi = 1252;
  platform::ScopedBackend<platform::TextApi> backend(ansi);
  for (StringOperation const& operation : stringOperations()) {
    if (operation.allocations == StringOperation::kFatal) continue;
    SCOPED_TRACE(operation.name);
    // What is built on first use is not the operation's.
    String warmUp(operation.text);
    operation.run(warmUp);
    EXPECT_EQ(sweep(operation, String(operation.text), true), operation.allocations);
    for (wchar const* text : {operation.text, KVW(" ab b 12"), KVW("b"), KVW("")}) {
      sweep(operation, String(text), false);
      sweep(operation, String(text), true);
    }
    if (operation.without.nil != nullptr) sweep(operation, String::NIL, true);
  }
}

using StringAllocationDeathTest = ::testing::Test;

TEST(StringAllocationDeathTest, ACommitWithoutMemoryEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
      {
        String text;
        StringBuffer* const buffer = new StringBuffer(text.buffer(10, false));
        static_cast<void>(static_cast<wchar*>(*buffer));
        AllocationFailure scope(1);
        try {
          delete buffer;
        } catch (std::bad_alloc const&) {
          // Not reached: nothing may come out of a destructor.
          std::exit(0);
        }
      },
      "");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
