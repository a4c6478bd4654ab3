// SPDX-License-Identifier: MIT
#include "kvbase/diagnostics/assertion.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <stdexcept>
#include <thread>

#include "tests/diagnostics/assertion_support.h"
#include "tests/support/threads.h"

namespace KV_1_1 {
namespace testing {
namespace {

using diagnostics::assertionNesting;

struct Arguments {
  char const* expression;
  char const* comment;
  char const* file;
  unsigned int line;
  char const* function;
};

int handlerCalls = 0;
Arguments lastArguments;

void recordingHandler(char const* expression, char const* comment, char const* file, unsigned int line,
                      char const* function) {
  ++handlerCalls;
  lastArguments = {expression, comment, file, line, function};
}

void fail() {
  __assert_fail_x("x", nullptr, "test.cpp", 1, "fail");
}

class AssertionEntry : public ::testing::Test {
 protected:
  AssertionEntry() { handlerCalls = 0; }
};

TEST_F(AssertionEntry, HandlerIsTheDefaultOneFromTheStart) {
  EXPECT_NE(__get_assertion_failure_handler(), nullptr);
}

TEST_F(AssertionEntry, HandlerCanBeReplacedAndStoredBack) {
  AssertionFailureHandler const previous = __get_assertion_failure_handler();
  __set_assertion_failure_handler(&recordingHandler);
  EXPECT_EQ(__get_assertion_failure_handler(), &recordingHandler);
  __set_assertion_failure_handler(previous);
  EXPECT_EQ(__get_assertion_failure_handler(), previous);
  EXPECT_EQ(handlerCalls, 0);
}

TEST_F(AssertionEntry, HandlerGetsAllFiveArgumentsAsTheyAre) {
  ScopedHandler const scope(&recordingHandler);
  char const texts[] = "expression\0comment\0file\0function";
  char const* const comment = texts + 11;
  char const* const file = comment + 8;
  char const* const function = file + 5;
  __assert_fail_x(texts, comment, file, 4711, function);
  EXPECT_EQ(handlerCalls, 1);
  EXPECT_EQ(lastArguments.expression, texts);
  EXPECT_EQ(lastArguments.comment, comment);
  EXPECT_EQ(lastArguments.file, file);
  EXPECT_EQ(lastArguments.line, 4711U);
  EXPECT_EQ(lastArguments.function, function);
}

TEST_F(AssertionEntry, HandlerGetsNullArgumentsAndTheGreatestLine) {
  ScopedHandler const scope(&recordingHandler);
  __assert_fail_x(nullptr, nullptr, nullptr, UINT_MAX, nullptr);
  EXPECT_EQ(handlerCalls, 1);
  EXPECT_EQ(lastArguments.expression, nullptr);
  EXPECT_EQ(lastArguments.comment, nullptr);
  EXPECT_EQ(lastArguments.file, nullptr);
  EXPECT_EQ(lastArguments.line, UINT_MAX);
  EXPECT_EQ(lastArguments.function, nullptr);
}

TEST_F(AssertionEntry, NullHandlerSilencesReports) {
  AssertionDebug debug;
  platform::ScopedBackend<platform::DebugApi> const backend(debug);
  ScopedHandler const scope(nullptr);
  EXPECT_EQ(__get_assertion_failure_handler(), nullptr);
  ::testing::internal::CaptureStderr();
  fail();
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(debug.log, ScriptedDebug::Log());
  EXPECT_EQ(assertionNesting, 0U);
}

TEST_F(AssertionEntry, EveryFailureCallsTheHandlerAgain) {
  ScopedHandler const scope(&recordingHandler);
  for (int i = 0; i < 3; ++i) fail();
  EXPECT_EQ(handlerCalls, 3);
}

TEST_F(AssertionEntry, HandlerThatFailsItselfGetsNoSecondCall) {
  ScopedHandler const scope([](char const*, char const*, char const*, unsigned int, char const*) {
    ++handlerCalls;
    EXPECT_EQ(assertionNesting, 1U);
    fail();
    EXPECT_EQ(assertionNesting, 1U);
  });
  fail();
  EXPECT_EQ(handlerCalls, 1);
  EXPECT_EQ(assertionNesting, 0U);
  fail();
  EXPECT_EQ(handlerCalls, 2);
}

TEST_F(AssertionEntry, HandlerCanChainToTheDefaultOne) {
  static AssertionFailureHandler previous;
  previous = __get_assertion_failure_handler();
  AssertionDebug debug;
  platform::ScopedBackend<platform::DebugApi> const backend(debug);
  ScopedHandler const scope([](char const* expression, char const*, char const* file, unsigned int line,
                               char const* function) { previous(expression, "chained", file, line, function); });
  ::testing::internal::CaptureStderr();
  fail();
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "Assertion x failed.\nIn file test.cpp:1 in function fail.\n\"chained\"");
  EXPECT_EQ(debug.calls("ask"), 1);
}

TEST_F(AssertionEntry, HandlerThatReplacesItselfFinishesItsReport) {
  ScopedHandler const scope([](char const*, char const*, char const*, unsigned int, char const*) {
    handlerCalls += 10;
    __set_assertion_failure_handler(&recordingHandler);
  });
  fail();
  EXPECT_EQ(handlerCalls, 10);
  fail();
  EXPECT_EQ(handlerCalls, 11);
}

TEST_F(AssertionEntry, ExceptionOfAHandlerGoesThroughAndLaterFailuresAreLost) {
  ScopedHandler const scope([](char const*, char const*, char const*, unsigned int, char const*) {
    ++handlerCalls;
    throw std::runtime_error("thrown");
  });
  EXPECT_THROW(fail(), std::runtime_error);
  EXPECT_EQ(assertionNesting, 1U);
  fail();
  EXPECT_EQ(handlerCalls, 1);
  EXPECT_EQ(assertionNesting, 1U);
  assertionNesting = 0;
}

TEST(AssertionConcurrency, FailureOnAnotherThreadDuringAReportIsLost) {
  handlerCalls = 0;
  ScopedHandler const scope([](char const*, char const*, char const*, unsigned int, char const*) {
    ++handlerCalls;
    std::thread other(&fail);
    other.join();
  });
  fail();
  EXPECT_EQ(handlerCalls, 1);
  EXPECT_EQ(assertionNesting, 0U);
}

TEST(AssertionConcurrency, OneHandlerCallAtATimeIsInProgress) {
  // Neither is guarded, so that the thread sanitizer judges the guard of the entry point.
  static int calls;
  static int inProgress;
  calls = 0;
  inProgress = 0;
  ScopedHandler const scope([](char const*, char const*, char const*, unsigned int, char const*) {
    if (++inProgress == 1) ++calls;
    std::this_thread::yield();
    --inProgress;
  });
  onThreads([](int) {
    for (int i = 0; i < 5000; ++i) fail();
  });
  EXPECT_GE(calls, 1);
  EXPECT_LE(calls, kThreads * 5000);
  EXPECT_EQ(inProgress, 0);
  EXPECT_EQ(assertionNesting, 0U);
}

TEST(AssertionConcurrency, DefaultHandlerIgnoresSitesFromAnyThread) {
  AssertionDebug debug;
  debug.answer = platform::kAnswerIgnore;
  platform::ScopedBackend<platform::DebugApi> const backend(debug);
  std::string const file = freshFile();
  ::testing::internal::CaptureStderr();
  onThreads([&file](int thread) {
    for (unsigned int line = 0; line < 200; ++line) {
      __assert_fail_x("x", nullptr, file.c_str(), line % 20, thread % 2 == 0 ? "even" : "odd");
    }
  });
  ::testing::internal::GetCapturedStderr();
  // Those that were lost on all threads are shown now; after that, none is.
  for (unsigned int line = 0; line < 20; ++line) {
    ::testing::internal::CaptureStderr();
    __assert_fail_x("x", nullptr, file.c_str(), line, "main");
    ::testing::internal::GetCapturedStderr();
  }
  EXPECT_EQ(debug.calls("ask"), 20);
}

TEST(AssertionConcurrency, HandlerIsReplacedWhileOthersFail) {
  static std::atomic<int> first;
  static std::atomic<int> second;
  first = 0;
  second = 0;
  AssertionFailureHandler const handlers[] = {
      [](char const*, char const*, char const*, unsigned int, char const*) { ++first; },
      [](char const*, char const*, char const*, unsigned int, char const*) { ++second; }, nullptr};
  ScopedHandler const scope(handlers[0]);
  fail();
  onThreads([&handlers](int thread) {
    for (int i = 0; i < 3000; ++i) {
      if (thread == 0) __set_assertion_failure_handler(handlers[i % 3]);
      if (thread != 0) fail();
    }
  });
  __set_assertion_failure_handler(handlers[1]);
  fail();
  EXPECT_GE(first, 1);
  EXPECT_GE(second, 1);
  EXPECT_EQ(assertionNesting, 0U);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
