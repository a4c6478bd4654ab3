// SPDX-License-Identifier: MIT
//
// Assertion reports as a program sees them in the shipped library.
#include <gtest/gtest.h>

#include <cstdlib>

#include "kvbase/kvbase.h"
#include "tests/support/scripted_debug.h"

namespace KV_1_1 {
namespace testing {
namespace {

int handlerCalls = 0;

// Set before the entry function of this program, so the library has come up before.
AssertionFailureHandler const handlerAtStart = __get_assertion_failure_handler();

TEST(SharedLibrary, HandlerOfTheProgramReplacesTheDefaultOne) {
  EXPECT_NE(handlerAtStart, nullptr);
  EXPECT_EQ(__get_assertion_failure_handler(), handlerAtStart);
  __set_assertion_failure_handler(
      [](char const*, char const*, char const*, unsigned int, char const*) { ++handlerCalls; });
  __assert_fail_x("x", nullptr, "f", 1, "g");
  EXPECT_EQ(handlerCalls, 1);
  __set_assertion_failure_handler(handlerAtStart);
}

TEST(SharedLibrary, DefaultHandlerReportsThroughTheSeam) {
  ScriptedDebug debug;
  debug.answer = platform::kAnswerIgnore;
  platform::ScopedBackend<platform::DebugApi> const scope(debug);
  ::testing::internal::CaptureStderr();
  __assert_fail_x("x", nullptr, "shared.cpp", 1, "g");
  __assert_fail_x("x", nullptr, "shared.cpp", 1, "g");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Assertion x failed.\nIn file shared.cpp:1 in function g.");
  EXPECT_EQ(debug.calls("ask"), 1);
}

// A static object of the program is destroyed before the library ends, and its destructor may still report.
struct Reporter {
  ScriptedDebug debug;
  platform::ScopedBackend<platform::DebugApi> scope{debug};
  ~Reporter() {
    __assert_fail_x("x", nullptr, "ignored.cpp", 1, "~Reporter");
    __assert_fail_x("x", nullptr, "shown.cpp", 1, "~Reporter");
  }
};

TEST(SharedLibraryDeathTest, StaticObjectsOfTheProgramReportUntilTheEnd) {
  EXPECT_EXIT(
      {
        static Reporter reporter;
        reporter.debug.answer = platform::kAnswerIgnore;
        __assert_fail_x("x", nullptr, "ignored.cpp", 1, "main");
        std::exit(0);
      },
      ::testing::ExitedWithCode(0),
      "^Assertion x failed.\nIn file ignored.cpp:1 in function main."
      "Assertion x failed.\nIn file shown.cpp:1 in function ~Reporter.$");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
