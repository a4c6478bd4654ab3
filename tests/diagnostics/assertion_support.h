// SPDX-License-Identifier: MIT
//
// Debugging services for assertion reports, and a test that reports through them.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "kvbase/diagnostics/assertion.h"
#include "kvbase/diagnostics/internal/assertion_nesting.h"
#include "tests/support/scripted_debug.h"

namespace KV_1_1 {
namespace testing {

// The channel's texts stand in the log, too, so that their order among the calls can be seen.
class AssertionDebug : public ScriptedDebug {
 public:
  void output(char const* text) override { note("narrow output ", text); }
  void output(wchar const* text) override { note("output ", text); }
};

// Sets the handler back at its end.
class ScopedHandler {
 public:
  explicit ScopedHandler(AssertionFailureHandler handler) : previous_(__get_assertion_failure_handler()) {
    __set_assertion_failure_handler(handler);
  }
  ~ScopedHandler() { __set_assertion_failure_handler(previous_); }
  ScopedHandler(ScopedHandler const&) = delete;
  ScopedHandler& operator=(ScopedHandler const&) = delete;

 private:
  AssertionFailureHandler previous_;
};

// The file name of a site that no test has reported before, in this run or a repeated one.
inline std::string freshFile() {
  static int count = 0;
  return "file" + std::to_string(++count) + ".cpp";
}

// A line of the file whose name is null, which all tests share.
inline unsigned int freshLine() {
  static unsigned int line = 1000;
  return ++line;
}

class AssertionTest : public ::testing::Test {
 protected:
  using Log = ScriptedDebug::Log;

  AssertionDebug debug;

  // The calls of a report, without those of reports before it. What it writes to the standard error stream is in
  // `written` then.
  Log report(char const* expression, char const* comment, char const* file, unsigned int line, char const* function) {
    debug.log.clear();
    ::testing::internal::CaptureStderr();
    __assert_fail_x(expression, comment, file, line, function);
    written = ::testing::internal::GetCapturedStderr();
    return debug.log;
  }
  // Whether a failure at this site is reported, with this answer to the question.
  bool isShown(char const* file, unsigned int line, int answer = 0) {
    debug.answer = answer;
    return !report("x", nullptr, file, line, "f").empty();
  }
  bool isShown(std::string const& file, unsigned int line, int answer = 0) {
    return isShown(file.c_str(), line, answer);
  }

  std::string written;

 private:
  platform::ScopedBackend<platform::DebugApi> scope_{debug};
};

}  // namespace testing
}  // namespace KV_1_1
