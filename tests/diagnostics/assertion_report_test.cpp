// SPDX-License-Identifier: MIT
//
// The default handler.
#include <gtest/gtest.h>

#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <set>
#include <thread>

#include "kvbase/strings/kv_string.h"
#include "tests/diagnostics/assertion_support.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/narrow_text.h"
#include "tests/support/scripted_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

using diagnostics::assertionNesting;

// --- The message and the title ---------------------------------------------------------------------------------------

struct MessageRow {
  char const* name;
  char const* expression;
  char const* comment;
  char const* file;
  unsigned int line;
  char const* function;
  std::string message;
  std::string title;
};

class AssertionMessage : public AssertionTest, public ::testing::WithParamInterface<MessageRow> {};

TEST_P(AssertionMessage, GoesToTheChannelThenToStandardErrorThenToTheUser) {
  MessageRow const& row = GetParam();
  EXPECT_EQ(report(row.expression, row.comment, row.file, row.line, row.function),
            Log({"output " + row.message, "ask " + row.title + "|" + row.message + "|73746"}));
  EXPECT_EQ(written, row.message);
  EXPECT_EQ(assertionNesting, 0U);
}

static_assert(platform::kAbortRetryIgnore == 0x12012 && 0x12012 == 73746, "the style of the question");

MessageRow const kMessageRows[] = {
    {"WithoutComment", "1 < 0", nullptr, "scan.cpp", 7, "readHeader",
     "Assertion 1 < 0 failed.\nIn file scan.cpp:7 in function readHeader.", "scan.cpp:7"},
    {"WithComment", "1 < 0", "hello", "scan.cpp", 7, "readHeader",
     "Assertion 1 < 0 failed.\nIn file scan.cpp:7 in function readHeader.\n\"hello\"", "scan.cpp:7"},
    {"WithEmptyComment", "1 < 0", "", "scan.cpp", 7, "readHeader",
     "Assertion 1 < 0 failed.\nIn file scan.cpp:7 in function readHeader.\n\"\"", "scan.cpp:7"},
    {"CommentWithQuotesAndLines", "x", "\"a\"\nb", "f", 1, "g",
     "Assertion x failed.\nIn file f:1 in function g.\n\"\"a\"\nb\"", "f:1"},
    {"AllArgumentsNull", nullptr, nullptr, nullptr, 3, nullptr, "Assertion  failed.\nIn file :3 in function .", ":3"},
    {"AllArgumentsEmpty", "", nullptr, "", 3, "", "Assertion  failed.\nIn file :3 in function .", ":3"},
    {"NoExpression", nullptr, "c", "f", 1, "g", "Assertion  failed.\nIn file f:1 in function g.\n\"c\"", "f:1"},
    {"NoFile", "x", "c", nullptr, 1, "g", "Assertion x failed.\nIn file :1 in function g.\n\"c\"", ":1"},
    {"NoFunction", "x", "c", "f", 1, nullptr, "Assertion x failed.\nIn file f:1 in function .\n\"c\"", "f:1"},
    {"LineZero", "x", nullptr, "f", 0, "g", "Assertion x failed.\nIn file f:0 in function g.", "f:0"},
    {"GreatestLine", "x", nullptr, "f", UINT_MAX, "g", "Assertion x failed.\nIn file f:4294967295 in function g.",
     "f:4294967295"},
    {"PathOfTheFile", "x", nullptr, "C:\\src\\a b\\scan.cpp", 12, "kv::Scan::read()",
     "Assertion x failed.\nIn file C:\\src\\a b\\scan.cpp:12 in function kv::Scan::read().",
     "C:\\src\\a b\\scan.cpp:12"},
};
INSTANTIATE_TEST_SUITE_P(Rows, AssertionMessage, ::testing::ValuesIn(kMessageRows),
                         [](auto const& row) { return std::string(row.param.name); });

class AssertionReport : public AssertionTest {};

// That the debug channel comes before the question is seen in the log of AssertionDebug.
TEST_F(AssertionReport, StandardErrorIsWrittenBeforeTheQuestionIsPut) {
  struct Asking : AssertionDebug {
    int ask(wchar const* message, wchar const* title, ulong32 style) override {
      writtenBefore = ::testing::internal::GetCapturedStderr();
      ::testing::internal::CaptureStderr();
      return AssertionDebug::ask(message, title, style);
    }
    void output(wchar const* text) override {
      writtenBeforeOutput = ::testing::internal::GetCapturedStderr();
      ::testing::internal::CaptureStderr();
      AssertionDebug::output(text);
    }
    std::string writtenBefore;
    std::string writtenBeforeOutput;
  } asking;
  platform::ScopedBackend<platform::DebugApi> const backend(asking);
  report("x", nullptr, "f", 1, "g");
  EXPECT_EQ(asking.writtenBeforeOutput, "");
  EXPECT_EQ(asking.writtenBefore, "Assertion x failed.\nIn file f:1 in function g.");
  EXPECT_EQ(written, "");
}

TEST_F(AssertionReport, LongTextsAreComplete) {
  std::string const expression(100000, 'e');
  std::string const comment(70000, 'c');
  std::string const file(5000, 'f');
  std::string const function(5000, 'g');
  std::string const message =
      "Assertion " + expression + " failed.\nIn file " + file + ":1 in function " + function + ".\n\"" + comment + "\"";
  EXPECT_EQ(report(expression.c_str(), comment.c_str(), file.c_str(), 1, function.c_str()),
            Log({"output " + message, "ask " + file + ":1|" + message + "|73746"}));
  EXPECT_EQ(written, message);
}

// A report in a process whose code page is not UTF-8 has one byte for each of these letters.
TEST_F(AssertionReport, TextsAreInTheAnsiCodePage) {
  ScriptedText text;
  text.ansi = 1252;
  platform::ScopedBackend<platform::TextApi> const backend(text);
  std::string const message = "Assertion ä failed.\nIn file ö:1 in function ü.\n\"ß\"";
  EXPECT_EQ(report("\xE4", "\xDF", "\xF6", 1, "\xFC"), Log({"output " + message, "ask ö:1|" + message + "|73746"}));
  EXPECT_EQ(written, "Assertion \xE4 failed.\nIn file \xF6:1 in function \xFC.\n\"\xDF\"");
}

// What cannot be decoded is missing from the message; what cannot be encoded is not written to the stream.
TEST_F(AssertionReport, TextThatCannotBeConvertedAddsNothing) {
  std::string const whole = "Assertion x failed.\nIn file f:1 in function g.\n\"c\"";
  int undecoded = 0;
  int unencoded = 0;
  for (int n = 1;; ++n) {
    ScriptedText text;
    text.ansi = 1252;
    text.failAt = n;
    platform::ScopedBackend<platform::TextApi> const backend(text);
    Log const log = report("x", "c", "f", 1, "g");
    if (text.calls < n) break;
    ASSERT_EQ(log.size(), 2U) << n;
    bool const isWhole = log[0] == "output " + whole;
    ++(isWhole ? unencoded : undecoded);
    EXPECT_EQ(written.size(), isWhole ? 0 : whole.size() - 1) << n;
  }
  // The size and the text of each of four arguments, and of the message.
  EXPECT_EQ(undecoded, 8);
  EXPECT_EQ(unencoded, 2);
}

TEST_F(AssertionReport, PercentSignsAreDirectivesOnStandardErrorOnly) {
  std::string const message = "Assertion n%d == 50% failed.\nIn file %s.cpp:1 in function %n%%.\n\"100% done, 5 %\"";
  EXPECT_EQ(report("n%d == 50%", "100% done, 5 %", "%s.cpp", 1, "%n%%"),
            Log({"output " + message, "ask %s.cpp:1|" + message + "|73746"}));
  // "% f" is a directive that the expression and the text behind it make together.
  EXPECT_EQ(written, "Assertion n == 50ailed.\nIn file .cpp:1 in function %.\n\"100one, 5 %\"");
}

// --- The standard error stream ---------------------------------------------------------------------------------------

// The standard error stream of the child process is a full device, or closed where the system has none; the question is
// still put.
TEST(AssertionReportDeathTest, FullDiskBehindStandardErrorStopsNothing) {
  EXPECT_EXIT(
      {
        AssertionDebug debug;
        platform::ScopedBackend<platform::DebugApi> const backend(debug);
        bool const opened = std::freopen("/dev/full", "w", stderr) != nullptr;
        if (opened) std::setvbuf(stderr, nullptr, _IONBF, 0);
        __assert_fail_x("x", nullptr, "f", 1, "g");
        bool const failed = !opened || std::ferror(stderr) != 0;
        bool const asked = debug.calls("output") == 1 && debug.calls("ask") == 1;
        __assert_fail_x("x", nullptr, "f", 2, "g");
        std::_Exit(failed && asked && debug.calls("ask") == 2 ? 42 : 1);
      },
      ::testing::ExitedWithCode(42), "");
}

TEST(AssertionReportDeathTest, FailuresAreReportedWhileTheProcessEnds) {
  EXPECT_EXIT(
      {
        static AssertionDebug* const debug = new AssertionDebug;
        static platform::ScopedBackend<platform::DebugApi>* const backend =
            new platform::ScopedBackend<platform::DebugApi>(*debug);
        EXPECT_NE(backend, nullptr);
        debug->answer = platform::kAnswerIgnore;
        std::atexit([] {
          __assert_fail_x("x", nullptr, "ignored.cpp", 1, "atEnd");
          __assert_fail_x("x", nullptr, "shown.cpp", 2, "atEnd");
          std::fprintf(stderr, " (%d questions)", debug->calls("ask"));
        });
        __assert_fail_x("x", nullptr, "ignored.cpp", 1, "running");
        std::exit(0);
      },
      ::testing::ExitedWithCode(0),
      "^Assertion x failed.\nIn file ignored.cpp:1 in function running."
      "Assertion x failed.\nIn file shown.cpp:2 in function atEnd. .2 questions.$");
}

// --- Abort -----------------------------------------------------------------------------------------------------------

[[noreturn]] void failAndAbort() {
  static AssertionDebug debug;
  debug.answer = platform::kAnswerAbort;
  platform::ScopedBackend<platform::DebugApi> const backend(debug);
  std::atexit([] { std::fputs("end code was run", stderr); });
  __assert_fail_x("x", nullptr, "f", 1, "g");
  std::_Exit(1);
}

TEST(AssertionReportDeathTest, AbortEndsTheProcess) {
  EXPECT_DEATH(failAndAbort(), "^Assertion x failed.\nIn file f:1 in function g.$");
}

TEST(AssertionReportDeathTest, AbortRaisesTheSignalAndEndsWithStatus3IfThatComesBack) {
  EXPECT_EXIT(
      {
        std::signal(SIGABRT, [](int signal) { std::fprintf(stderr, "<signal %s>", signal == SIGABRT ? "ABRT" : "?"); });
        failAndAbort();
      },
      ::testing::ExitedWithCode(3), "in function g.<signal ABRT>$");
}

TEST(AssertionReportDeathTest, AbortEndsWithStatus3IfTheSignalIsIgnored) {
  EXPECT_EXIT(
      {
        std::signal(SIGABRT, SIG_IGN);
        failAndAbort();
      },
      ::testing::ExitedWithCode(3), "in function g.$");
}

// --- Retry, and no answer --------------------------------------------------------------------------------------------

TEST_F(AssertionReport, RetryStopsInTheDebuggerAndGoesOn) {
  std::string const file = freshFile();
  debug.answer = platform::kAnswerRetry;
  Log const log = report("x", nullptr, file.c_str(), 1, "g");
  ASSERT_EQ(log.size(), 3U);
  EXPECT_EQ(log[2], "breakIntoDebugger");
  EXPECT_EQ(debug.breaks, 1);
  EXPECT_TRUE(isShown(file, 1)) << "the site is not ignored";
}

TEST_F(AssertionReport, AnyOtherAnswerGoesOn) {
  std::string const file = freshFile();
  for (int answer : {0, 1, 2, 6, 7, 10, 11, -1, INT_MIN, INT_MAX}) {
    debug.answer = answer;
    EXPECT_EQ(report("x", nullptr, file.c_str(), 1, "g").size(), 2U) << answer;
  }
  EXPECT_EQ(debug.breaks, 0);
}

// --- Ignore ----------------------------------------------------------------------------------------------------------

TEST_F(AssertionReport, IgnoredSiteShowsNothingAtAll) {
  std::string const a = freshFile();
  std::string const b = freshFile();
  EXPECT_TRUE(isShown(a, 7, platform::kAnswerIgnore));
  EXPECT_TRUE(isShown(a, 8));
  EXPECT_TRUE(isShown(b, 7));
  EXPECT_EQ(report("x", "c", a.c_str(), 7, "g"), Log());
  EXPECT_EQ(written, "");
}

TEST_F(AssertionReport, IgnoredSiteIsFileAndLineWhateverTheExpression) {
  std::string const file = freshFile();
  EXPECT_TRUE(isShown(file, 7, platform::kAnswerIgnore));
  EXPECT_EQ(report("another", "comment", std::string(file).c_str(), 7, "elsewhere"), Log());
}

TEST_F(AssertionReport, IgnoredSiteStaysIgnoredWhateverTheAnswerWouldBe) {
  std::string const file = freshFile();
  EXPECT_TRUE(isShown(file, 7, platform::kAnswerIgnore));
  for (int round = 0; round < 3; ++round) EXPECT_FALSE(isShown(file, 7, platform::kAnswerRetry));
  EXPECT_EQ(debug.breaks, 0);
}

TEST_F(AssertionReport, SeveralLinesOfAFileAreIgnored) {
  std::string const file = freshFile();
  for (unsigned int line : {9U, 3U, 0U, UINT_MAX}) EXPECT_TRUE(isShown(file, line, platform::kAnswerIgnore)) << line;
  for (unsigned int line : {9U, 3U, 0U, UINT_MAX}) EXPECT_FALSE(isShown(file, line)) << line;
  for (unsigned int line : {1U, 4U, 10U, UINT_MAX - 1}) EXPECT_TRUE(isShown(file, line)) << line;
}

TEST_F(AssertionReport, FileNamesAreComparedUnitByUnit) {
  std::string const file = "Dir\\" + freshFile();
  EXPECT_TRUE(isShown(file, 7, platform::kAnswerIgnore));
  EXPECT_TRUE(isShown("dir" + file.substr(3), 7)) << "another case";
  EXPECT_TRUE(isShown("Dir/" + file.substr(4), 7)) << "another separator";
  EXPECT_TRUE(isShown(file + " ", 7)) << "longer";
  EXPECT_TRUE(isShown(file.substr(0, file.size() - 1), 7)) << "shorter";
}

TEST_F(AssertionReport, NullAndEmptyFilesAreTwoSites) {
  unsigned int const line = freshLine();
  EXPECT_TRUE(isShown(nullptr, line, platform::kAnswerIgnore));
  EXPECT_FALSE(isShown(nullptr, line));
  EXPECT_TRUE(isShown("", line));
  unsigned int const other = freshLine();
  EXPECT_TRUE(isShown("", other, platform::kAnswerIgnore));
  EXPECT_FALSE(isShown("", other));
  EXPECT_TRUE(isShown(nullptr, other));
}

TEST_F(AssertionReport, FilesThatCannotBeConvertedAreOneSiteWithNull) {
  unsigned int const line = freshLine();
  std::string const file = freshFile();
  {
    ScriptedText text;
    text.ansi = 1252;
    text.failAt = 1;
    platform::ScopedBackend<platform::TextApi> const backend(text);
    EXPECT_TRUE(isShown(file, line, platform::kAnswerIgnore));
  }
  EXPECT_FALSE(isShown(nullptr, line));
  EXPECT_TRUE(isShown(file, line));
}

TEST_F(AssertionReport, SiteIgnoredOnOneThreadIsIgnoredOnAll) {
  std::string const file = freshFile();
  EXPECT_TRUE(isShown(file, 7, platform::kAnswerIgnore));
  bool shown = true;
  std::thread([&] { shown = isShown(file, 7); }).join();
  EXPECT_FALSE(shown);
}

TEST_F(AssertionReport, RandomFailuresAreShownUntilTheirSiteIsIgnored) {
  std::mt19937 random(2);
  std::string const prefix = freshFile();
  std::set<std::pair<std::string, unsigned int>> ignored;
  constexpr int kAnswers[] = {0, platform::kAnswerRetry, platform::kAnswerIgnore, 2};
  debug.recording = true;
  ::testing::internal::CaptureStderr();
  std::vector<std::string> wrong;
  for (int round = 0; round < 5000; ++round) {
    std::string const file = prefix + std::to_string(random() % 20);
    unsigned int const line = static_cast<unsigned int>(random() % 30);
    debug.answer = kAnswers[random() % 4];
    debug.log.clear();
    __assert_fail_x("x", nullptr, file.c_str(), line, "g");
    if (debug.log.empty() != (ignored.count({file, line}) != 0)) wrong.push_back(file + ":" + std::to_string(line));
    if (debug.answer == platform::kAnswerIgnore) ignored.insert({file, line});
  }
  ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(wrong, std::vector<std::string>());
  EXPECT_GT(ignored.size(), 300U);
}

// --- An assertion within the report, and memory ------------------------------------------------------------------------

TEST_F(AssertionReport, FailureWithinTheReportIsLost) {
  struct Failing : AssertionDebug {
    void output(wchar const* text) override {
      AssertionDebug::output(text);
      __assert_fail_x("inner", nullptr, "inner.cpp", 1, "output");
    }
    int ask(wchar const* message, wchar const* title, ulong32 style) override {
      __assert_fail_x("inner", nullptr, "inner.cpp", 2, "ask");
      std::thread([] { __assert_fail_x("inner", nullptr, "inner.cpp", 3, "another thread"); }).join();
      return AssertionDebug::ask(message, title, style);
    }
  } failing;
  platform::ScopedBackend<platform::DebugApi> const backend(failing);
  report("outer", nullptr, "f", 1, "g");
  EXPECT_EQ(failing.calls("output"), 1);
  EXPECT_EQ(failing.calls("ask"), 1);
  EXPECT_EQ(written, "Assertion outer failed.\nIn file f:1 in function g.");
}

// A debugger that counts its calls and allocates nothing.
struct CountingDebug : ScriptedDebug {
  void output(wchar const*) override { ++outputsSeen; }
  int ask(wchar const*, wchar const*, ulong32) override {
    ++questions;
    return answer;
  }
  int outputsSeen = 0;
  int questions = 0;
};

struct Attempt {
  bool threw = false;
  bool failed = false;
  int live = 0;
  unsigned int nesting = 0;
  int outputs = 0;
  int questions = 0;
  std::string written;
};

Attempt reportWithFailure(int n, char const* file, int answer) {
  Attempt attempt;
  CountingDebug debug;
  debug.answer = answer;
  platform::ScopedBackend<platform::DebugApi> const backend(debug);
  ::testing::internal::CaptureStderr();
  {
    AllocationFailure scope(n);
    try {
      __assert_fail_x("expression", "comment", file, 7, "function");
    } catch (std::bad_alloc const&) {
      attempt.threw = true;
    }
    scope.end();
    attempt.failed = scope.failed();
    attempt.live = scope.live();
  }
  attempt.written = ::testing::internal::GetCapturedStderr();
  attempt.nesting = assertionNesting;
  attempt.outputs = debug.outputsSeen;
  attempt.questions = debug.questions;
  assertionNesting = 0;
  return attempt;
}

TEST(AssertionAllocation, FailedAllocationRaisesBadAllocWithTheNestingLeftRaised) {
  std::string const file = freshFile();
  std::string const message = "Assertion expression failed.\nIn file " + file + ":7 in function function.\n\"comment\"";
  int withMessage = 0;
  for (int n = 1;; ++n) {
    Attempt const attempt = reportWithFailure(n, file.c_str(), 0);
    EXPECT_EQ(attempt.threw, attempt.failed) << n;
    EXPECT_EQ(attempt.live, 0) << n;
    EXPECT_EQ(attempt.nesting, attempt.failed ? 1U : 0U) << n;
    // What was written is complete, and stays.
    EXPECT_EQ(attempt.written, attempt.written.empty() ? "" : message) << n;
    EXPECT_EQ(attempt.questions, attempt.failed ? 0 : 1) << n;
    EXPECT_LE(attempt.written.empty() ? 0 : 1, attempt.outputs) << n;
    if (attempt.failed && !attempt.written.empty()) ++withMessage;
    if (!attempt.failed) break;
  }
  EXPECT_GT(withMessage, 0) << "the title is built after the message has been written";
}

TEST(AssertionAllocation, SiteThatCouldNotBeRememberedIsShownAgain) {
  std::string const file = freshFile();
  int unremembered = 0;
  for (int n = 1;; ++n) {
    Attempt const attempt = reportWithFailure(n, file.c_str(), platform::kAnswerIgnore);
    EXPECT_EQ(attempt.threw, attempt.failed) << n;
    if (attempt.failed && attempt.questions == 1) ++unremembered;
    if (!attempt.failed) {
      EXPECT_EQ(attempt.questions, 1);
      break;
    }
  }
  // The file's entry in the table, and the line's in its list.
  EXPECT_GE(unremembered, 1);
  EXPECT_EQ(reportWithFailure(0, file.c_str(), 0).questions, 0);
}

TEST(AssertionAllocation, FailuresAfterOneWithoutMemoryAreLost) {
  CountingDebug debug;
  platform::ScopedBackend<platform::DebugApi> const backend(debug);
  std::string const file = freshFile();
  bool threw = false;
  {
    AllocationFailure scope(1);
    try {
      __assert_fail_x("x", nullptr, file.c_str(), 7, "g");
    } catch (std::bad_alloc const&) {
      threw = true;
    }
  }
  EXPECT_TRUE(threw);
  __assert_fail_x("x", nullptr, file.c_str(), 8, "g");
  EXPECT_EQ(debug.questions, 0);
  EXPECT_EQ(assertionNesting, 1U);
  assertionNesting = 0;
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
