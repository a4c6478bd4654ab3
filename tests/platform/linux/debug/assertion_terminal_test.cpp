// SPDX-License-Identifier: MIT
//
// Assertion reports of a process on a terminal, with the system's own question and break.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "kvbase/diagnostics/assertion.h"
#include "tests/platform/linux/debug/terminal.h"

namespace KV_1_1 {
namespace testing {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;

constexpr char kPrompt[] = "[i]gnore? ";

// A process that runs `work` with a new terminal for its input, its output and its errors.
class TerminalProcess : public Terminal {
 public:
  template <class Work>
  explicit TerminalProcess(Work work) {
    int terminal = -1;
    process_ = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (process_ != 0) {
      terminal_ = platform::Descriptor(terminal);
      return;
    }
    unsetenv("DISPLAY");
    unsetenv("WAYLAND_DISPLAY");
    rlimit const noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    work();
    _exit(0);
  }
  // A process that still reads is ended by the loss of its terminal.
  ~TerminalProcess() {
    terminal_ = platform::Descriptor();
    if (process_ > 0) wait();
  }
  TerminalProcess(TerminalProcess const&) = delete;
  TerminalProcess& operator=(TerminalProcess const&) = delete;

  int wait() {
    int status = 0;
    waitpid(process_, &status, 0);
    process_ = -1;
    return status;
  }

 private:
  pid_t process_;
};

void say(char const* text) {
  if (write(STDOUT_FILENO, text, strlen(text)) < 0) _exit(98);
}

void fail(unsigned int line) {
  __assert_fail_x("n % 2 == 0", "even", "terminal.cpp", line, "halve");
}

TEST(AssertionTerminal, IgnoredSiteIsNotShownAgain) {
  TerminalProcess process([] {
    fail(1);
    say("<first>");
    fail(1);
    say("<second>");
    fail(2);
    say("<other>");
  });
  constexpr char kReport[] = "Assertion n % 2 == 0 failed.\r\nIn file terminal.cpp:1 in function halve.\r\n\"even\"";
  // On the standard error stream, and as the message under its title.
  EXPECT_THAT(process.readUpTo(kPrompt),
              AllOf(HasSubstr(kReport), HasSubstr(std::string("terminal.cpp:1\r\n\r\n") + kReport), EndsWith(kPrompt)));
  process.type("i\n");
  EXPECT_EQ(process.readUpTo("<first>"), "i\r\n<first>");
  EXPECT_EQ(process.readUpTo("<second>"), "<second>");
  EXPECT_THAT(process.readUpTo(kPrompt), HasSubstr("terminal.cpp:2"));
  process.type("i\n");
  process.readUpTo("<other>");
  EXPECT_EQ(process.wait(), 0);
}

TEST(AssertionTerminal, RetryRaisesATrapAndGoesOn) {
  TerminalProcess process([] {
    signal(SIGTRAP, [](int) { say("<trap>"); });
    fail(1);
    say("<behind>");
    fail(1);
  });
  process.readUpTo(kPrompt);
  process.type("r\n");
  EXPECT_EQ(process.readUpTo("<behind>"), "r\r\n<trap><behind>");
  process.readUpTo(kPrompt);
  process.type("i\n");
  process.readUpTo("\n");
  EXPECT_EQ(process.wait(), 0);
}

TEST(AssertionTerminal, RetryWithoutADebuggerEndsTheProcess) {
  TerminalProcess process([] { fail(1); });
  process.readUpTo(kPrompt);
  process.type("r\n");
  int const status = process.wait();
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGTRAP);
}

TEST(AssertionTerminal, AbortRaisesTheSignalOfAbort) {
  TerminalProcess process([] { fail(1); });
  process.readUpTo(kPrompt);
  process.type("a\n");
  int const status = process.wait();
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGABRT);
}

TEST(AssertionTerminal, EndOfTheInputGoesOnWithoutIgnoring) {
  TerminalProcess process([] {
    fail(1);
    say("<first>");
    fail(1);
    say("<second>");
  });
  process.readUpTo(kPrompt);
  process.type("\x04");
  EXPECT_THAT(process.readUpTo("<first>"), EndsWith("<first>"));
  EXPECT_THAT(process.readUpTo(kPrompt), HasSubstr("terminal.cpp:1"));
  process.type("i\n");
  process.readUpTo("<second>");
  EXPECT_EQ(process.wait(), 0);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
