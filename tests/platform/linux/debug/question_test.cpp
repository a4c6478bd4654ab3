// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "kvbase/platform/debug_api.h"
#include "tests/platform/linux/debug/terminal.h"
#include "tests/platform/linux/environment_variable.h"
#include "tests/platform/linux/shell/fake_desktop.h"
#include "tests/platform/linux/shell/signal_action.h"

namespace KV_1_1 {
namespace testing {
namespace {

using platform::kAbortRetryIgnore;
using platform::kAnswerAbort;
using platform::kAnswerIgnore;
using platform::kAnswerRetry;

constexpr wchar const* kMessage =
    KVW("Assertion <b>n > 0</b> & `\\n` failed.\n\"50%\t$HOME\" \u00E4\u00A7\x1B[2J\u009B3J\x7F");
constexpr wchar const* kTitle = KVW("-scan.cpp:7");

int ask() {
  return platform::nativeDebug().ask(kMessage, kTitle, kAbortRetryIgnore);
}

// A process of its own, which `ask`s in a session of its own: without a terminal, or with a new one.
class Asker : public Terminal {
 public:
  explicit Asker(bool hasTerminal) {
    if (hasTerminal) {
      terminal_ = platform::Descriptor(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
      EXPECT_EQ(grantpt(terminal_.get()), 0);
      EXPECT_EQ(unlockpt(terminal_.get()), 0);
    }
    char const* const name = hasTerminal ? ptsname(terminal_.get()) : nullptr;
    process_ = fork();
    if (process_ != 0) return;
    setsid();
    // Opened by the leader of a session, a terminal becomes that of the session.
    if (name != nullptr && open(name, O_RDWR) < 0) _exit(99);
    // So that the terminal is lost when the test closes it.
    terminal_ = platform::Descriptor();
    _exit(ask());
  }
  ~Asker() {
    if (process_ <= 0) return;
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }
  Asker(Asker const&) = delete;
  Asker& operator=(Asker const&) = delete;

  // Sends a signal once the process reads, or at once if its system calls may not be looked at.
  void signalWhileItReads(int number) {
    std::string call;
    do {
      call.clear();
      std::ifstream("/proc/" + std::to_string(process_) + "/syscall") >> call;
    } while (!call.empty() && call != std::to_string(SYS_read));
    EXPECT_EQ(kill(process_, number), 0);
  }

  // As an application does that draws on the whole terminal: a line then ends as the key sends it.
  void setRaw() {
    termios mode;
    EXPECT_EQ(tcgetattr(terminal_.get(), &mode), 0);
    cfmakeraw(&mode);
    EXPECT_EQ(tcsetattr(terminal_.get(), TCSANOW, &mode), 0);
  }

  // The answer that the process has got; negative if it was ended by a signal.
  int answer() {
    int status = 0;
    EXPECT_EQ(waitpid(process_, &status, 0), process_);
    process_ = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

 private:
  pid_t process_ = 0;
};

class LinuxQuestion : public ::testing::Test {
 protected:
  FakeDesktop desktop_;
  EnvironmentVariable const display_{"DISPLAY", ":7"};
  EnvironmentVariable const wayland_{"WAYLAND_DISPLAY", nullptr};
};

struct AnswerRow {
  char const* word;
  int status;
  int answer;
};
constexpr AnswerRow kAnswers[] = {{"Abort", 0, kAnswerAbort}, {"Retry", 1, kAnswerRetry}, {"Ignore", 2, kAnswerIgnore}};

TEST_F(LinuxQuestion, ButtonOfZenityIsTheAnswer) {
  for (AnswerRow const& row : kAnswers) {
    desktop_.install("zenity", std::string("echo ") + row.word + "\nexit 1\n");
    EXPECT_EQ(ask(), row.answer) << row.word;
  }
}

TEST_F(LinuxQuestion, ZenityGetsTheTextsWithBackslashesEscaped) {
  desktop_.install("zenity", std::string(kReport) + "echo Ignore\n");
  EXPECT_EQ(ask(), kAnswerIgnore);
  Call const call = desktop_.nextCall();
  EXPECT_THAT(call, ::testing::Contains("--no-markup"));
  EXPECT_THAT(call, ::testing::Contains("--title=-scan.cpp:7"));
  EXPECT_THAT(call,
              ::testing::Contains(
                  "--text=Assertion <b>n > 0</b> & `\\\\n` failed.\n\"50%\t$HOME\" \u00E4\u00A7\x1B[2J\u009B3J\x7F"));
}

// The library of its windows may write there too.
TEST_F(LinuxQuestion, AnswerOfZenityIsALineOfItsOutput) {
  desktop_.install("zenity", "echo 'Abort of nothing'\necho 'No Abort'\necho Retry\necho 'at the end'\nexit 1\n");
  EXPECT_EQ(ask(), kAnswerRetry);
}

TEST_F(LinuxQuestion, ClosedWindowIsNoAnswerAndEndsTheQuestion) {
  EnvironmentVariable const status("ZENITY_ESC", "1");
  desktop_.install("zenity", "exit \"$ZENITY_ESC\"\n");
  desktop_.install("kdialog", "exit 0\n");
  EXPECT_EQ(ask(), 0);
}

TEST_F(LinuxQuestion, StatusOfKdialogIsTheAnswer) {
  for (AnswerRow const& row : kAnswers) {
    desktop_.install("kdialog", "exit " + std::to_string(row.status) + '\n');
    EXPECT_EQ(ask(), row.answer) << row.word;
  }
}

TEST_F(LinuxQuestion, KdialogGetsNoMarkUpFromTheText) {
  desktop_.install("kdialog", kReport);
  EXPECT_EQ(ask(), kAnswerAbort);
  Call const call = desktop_.nextCall();
  ASSERT_FALSE(call.empty());
  EXPECT_EQ(call.back(),
            "<qt>Assertion &lt;b&gt;n &gt; 0&lt;/b&gt; &amp; `&#92;n` failed.<br/>\"50%\t$HOME\" "
            "\u00E4\u00A7\x1B[2J\u009B3J\x7F</qt>");
}

TEST_F(LinuxQuestion, ToolThatCannotShowAWindowLeavesTheQuestionToTheNext) {
  desktop_.install("kdialog", "exit 1\n");
  // 1 without the display, 255 for an option or a file that is missing.
  for (char const* status : {"1", "255"}) {
    desktop_.install("zenity", std::string("exit ") + status + '\n');
    EXPECT_EQ(ask(), kAnswerRetry) << status;
  }
}

TEST_F(LinuxQuestion, ToolThatCrashesLeavesTheQuestionToTheNext) {
  desktop_.install("zenity", "kill -SEGV $$\n");
  desktop_.install("kdialog", "exit 2\n");
  EXPECT_EQ(ask(), kAnswerIgnore);
}

TEST_F(LinuxQuestion, KdialogThatCrashesOrFailsIsNoAnswer) {
  for (char const* end : {"kill -SEGV $$\n", "exit 3\n"}) {
    desktop_.install("kdialog", end);
    Asker asker(/*hasTerminal=*/false);
    EXPECT_EQ(asker.answer(), 0) << end;
  }
}

TEST_F(LinuxQuestion, ToolMayTakeItsTime) {
  desktop_.install("zenity", std::string(kReport) + kWait + "echo Retry\n");
  Asker asker(/*hasTerminal=*/false);
  EXPECT_EQ(desktop_.nextCall().front(), "zenity");
  desktop_.letGoOn();
  EXPECT_EQ(asker.answer(), kAnswerRetry);
}

// The user ends a tool that shows nothing; there is no terminal to ask on.
TEST_F(LinuxQuestion, HangingToolThatIsKilledIsNoAnswer) {
  desktop_.install("zenity", "printf '%s\\0' $$ '' >\"${0%/*}/calls\"\n" + std::string(kWait));
  Asker asker(/*hasTerminal=*/false);
  Call const call = desktop_.nextCall();
  ASSERT_FALSE(call.empty());
  EXPECT_EQ(kill(std::stoi(call[0]), SIGKILL), 0);
  EXPECT_EQ(asker.answer(), 0);
}

TEST_F(LinuxQuestion, NoDisplayStartsNoTool) {
  desktop_.install("zenity", "echo Abort\n");
  for (char const* name : {static_cast<char const*>(nullptr), ""}) {
    EnvironmentVariable const display("DISPLAY", name);
    Asker asker(/*hasTerminal=*/false);
    EXPECT_EQ(asker.answer(), 0);
  }
}

TEST_F(LinuxQuestion, WaylandIsADisplayToo) {
  EnvironmentVariable const display("DISPLAY", nullptr);
  EnvironmentVariable const wayland("WAYLAND_DISPLAY", "wayland-0");
  desktop_.install("zenity", "echo Abort\n");
  EXPECT_EQ(ask(), kAnswerAbort);
}

TEST_F(LinuxQuestion, OnlyOneStyleIsAsked) {
  desktop_.install("zenity", "echo Abort\n");
  EXPECT_EQ(platform::nativeDebug().ask(kMessage, kTitle, 0), 0);
}

TEST_F(LinuxQuestion, ApplicationMayIgnoreTheEndOfItsChildren) {
  desktop_.install("zenity", "echo Retry\n");
  auto const previous = signal(SIGCHLD, SIG_IGN);
  EXPECT_EQ(ask(), kAnswerRetry);
  signal(SIGCHLD, previous);
}

constexpr char kQuestionPrompt[] = "[a]bort, [r]etry, [i]gnore? ";

TEST_F(LinuxQuestion, TerminalAsksUntilItGetsAnAnswer) {
  Asker asker(/*hasTerminal=*/true);
  std::string const text = asker.readUpTo(kQuestionPrompt);
  EXPECT_THAT(text, ::testing::HasSubstr("-scan.cpp:7"));
  EXPECT_THAT(text, ::testing::HasSubstr("Assertion <b>n > 0</b> & `\\n` failed."));
  asker.type("x\n");
  asker.readUpTo(kQuestionPrompt);
  asker.type("\n");
  asker.readUpTo(kQuestionPrompt);
  asker.type("r\n");
  EXPECT_EQ(asker.answer(), kAnswerRetry);
}

TEST_F(LinuxQuestion, TerminalTakesLettersOfEitherCase) {
  struct {
    char const* typed;
    int answer;
  } const rows[] = {{"A\n", kAnswerAbort}, {" ignore\n", kAnswerIgnore}, {"abort\n", kAnswerAbort}};
  for (auto const& row : rows) {
    Asker asker(/*hasTerminal=*/true);
    asker.readUpTo(kQuestionPrompt);
    asker.type(row.typed);
    EXPECT_EQ(asker.answer(), row.answer) << row.typed;
  }
}

TEST_F(LinuxQuestion, TerminalGetsNoControlCharacters) {
  Asker asker(/*hasTerminal=*/true);
  std::string const text = asker.readUpTo(kQuestionPrompt);
  EXPECT_THAT(text, ::testing::HasSubstr("50%\t$HOME\" \u00E4\u00A7?[2J?3J?\r\n"));
  EXPECT_EQ(text.find('\x1B'), std::string::npos);
  asker.type("i\n");
  EXPECT_EQ(asker.answer(), kAnswerIgnore);
}

TEST_F(LinuxQuestion, SignalsDoNotEndTheQuestion) {
  SignalAction const action(SIGUSR1, [](int) {
    platform::Descriptor const terminal(open("/dev/tty", O_WRONLY | O_CLOEXEC));
    EXPECT_EQ(write(terminal.get(), "!", 1), 1);
  });
  Asker asker(/*hasTerminal=*/true);
  asker.readUpTo(kQuestionPrompt);
  asker.signalWhileItReads(SIGUSR1);
  asker.readUpTo("!");  // what was typed before would end the call in place of the signal
  asker.type("r\n");
  EXPECT_EQ(asker.answer(), kAnswerRetry);
}

TEST_F(LinuxQuestion, TerminalMayBeInRawMode) {
  Asker asker(/*hasTerminal=*/true);
  asker.readUpTo(kQuestionPrompt);
  asker.setRaw();
  asker.type("r\r");
  EXPECT_EQ(asker.answer(), kAnswerRetry);
}

TEST_F(LinuxQuestion, EndOfTheTerminalsInputIsNoAnswer) {
  Asker asker(/*hasTerminal=*/true);
  asker.readUpTo(kQuestionPrompt);
  asker.type("\x04");
  EXPECT_EQ(asker.answer(), 0);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
