// SPDX-License-Identifier: MIT
//
// Every operation with its first allocation failing, then its second, and so on: each time std::bad_alloc comes out, the
// receiver is as it was, and nothing is left over. Only the commit of a StringBuffer, and so of printf, is not swept:
// memory exhausted there ends the process.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "kvbase/platform/text_api.h"
#include "tests/strings/string_operations.h"
#include "tests/strings/string_support.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/scripted_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

// Runs the operation with every allocation failing once. Gives the number of allocations.
int sweep(StringOperation const& operation, String const& text, bool isShared) {
  AllocationSweep sweep(0);
  while (sweep.next()) {
    // A narrow copy made before the failure belongs to the payload, so a shared payload does not last longer than the run.
    String const original = stringOf(unitsOf(text));
    String receiver = isShared ? original : stringOf(unitsOf(text));
    sweep.run([&] { operation.run(receiver); });
    if (sweep.failed()) EXPECT_EQ(state(receiver), state(text));
    EXPECT_EQ(state(original), state(text));
  }
  return sweep.failures();
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
