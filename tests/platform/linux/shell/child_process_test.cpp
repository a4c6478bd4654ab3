// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/shell/child_process.h"

#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <future>
#include <string>

#include "kvbase/platform/linux/files/descriptor.h"
#include "tests/platform/linux/shell/fake_desktop.h"
#include "tests/platform/linux/shell/signal_action.h"
#include "tests/support/current_path.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

class ChildProcess : public ::testing::Test {
 protected:
  FakeDesktop desktop_;
  char const* const command_[3] = {"tool", "x", nullptr};
};

class SignalMask {
 public:
  explicit SignalMask(sigset_t const& mask) { pthread_sigmask(SIG_SETMASK, &mask, &previous_); }
  ~SignalMask() { pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }
  SignalMask(SignalMask const&) = delete;
  SignalMask& operator=(SignalMask const&) = delete;

 private:
  sigset_t previous_;
};

TEST_F(ChildProcess, TellsWhyAToolDoesNotRun) {
  EXPECT_EQ(platform::startTool(command_), ENOENT);
  EXPECT_FALSE(platform::toolAnswers(command_, 10000));
  EXPECT_FALSE(hasChildren());
}

TEST_F(ChildProcess, ToolIsTheFirstExecutableOnThePath) {
  desktop_.install("tool", kReport);
  TempFolder other;
  other.makeFolder("folder/tool");
  other.write("data/tool");
  std::filesystem::permissions(other.path("data/tool"), std::filesystem::perms::owner_read);
  std::string const skipped =
      other.path("none").string() + ':' + other.path("folder").string() + ':' + other.path("data").string();
  std::string const found = getenv("PATH");
  {
    EnvironmentVariable const path("PATH", skipped.c_str());
    EXPECT_EQ(platform::startTool(command_), EACCES);
  }
  EnvironmentVariable const path("PATH", (skipped + ':' + found).c_str());
  EXPECT_EQ(platform::startTool(command_), 0);
  EXPECT_EQ(desktop_.nextCall(), (Call{"tool", "x"}));
}

TEST_F(ChildProcess, AnEmptyEntryOfThePathIsTheCurrentFolder) {
  desktop_.install("tool", "echo here\n");
  CurrentPath const current(getenv("PATH"));
  EnvironmentVariable const path("PATH", ":/none");
  EXPECT_TRUE(platform::toolAnswers(command_, 10000));
}

TEST_F(ChildProcess, WithoutAPathTheFoldersOfTheSystemAreSearched) {
  EnvironmentVariable const path("PATH", nullptr);
  char const* const command[] = {"true", nullptr};
  EXPECT_EQ(platform::runTool(command).status, 0);
}

TEST_F(ChildProcess, VariableReplacesThatOfTheApplication) {
  EnvironmentVariable const path("PATH", nullptr);
  EnvironmentVariable const replaced("KVBASE_TEST", "old");
  EnvironmentVariable const kept("KVBASE_TEST_2", "kept");
  char const* const command[] = {"printenv", "KVBASE_TEST", "KVBASE_TEST_2", nullptr};
  EXPECT_EQ(platform::runTool(command, "KVBASE_TEST=new").output, "new\nkept\n");
  EXPECT_EQ(platform::runTool(command).output, "old\nkept\n");
}

TEST_F(ChildProcess, MaskStays) {
  desktop_.install("tool", kReport);
  sigset_t mask;
  sigemptyset(&mask);
  sigaddset(&mask, SIGUSR1);
  SignalMask const scope(mask);
  EXPECT_EQ(platform::startTool(command_), 0);
  sigset_t after;
  pthread_sigmask(SIG_SETMASK, nullptr, &after);
  EXPECT_TRUE(sigismember(&after, SIGUSR1));
  EXPECT_FALSE(sigismember(&after, SIGUSR2));
  EXPECT_EQ(desktop_.nextCall(), (Call{"tool", "x"}));
}

TEST_F(ChildProcess, ToolHasNoSignalBlockedOrIgnored) {
  desktop_.install("tool", R"(
set --
while read -r key value; do
  case $key in SigBlk:|SigIgn:) set -- "$@" "$value";; esac
done </proc/self/status
)" + std::string(kReport));
  SignalAction const noPipe(SIGPIPE, SIG_IGN);
  SignalAction const noInterrupt(SIGINT, SIG_IGN);
  sigset_t mask;
  sigfillset(&mask);
  {
    SignalMask const scope(mask);
    EXPECT_EQ(platform::startTool(command_), 0);
  }
  Call const call = desktop_.nextCall();
  ASSERT_EQ(call.size(), 3u);
  // The bits of the signals 1 to 31. The ones after them are used by the C library.
  EXPECT_EQ(std::stoull(call[1], nullptr, 16) & 0x7FFFFFFF, 0u);
  EXPECT_EQ(std::stoull(call[2], nullptr, 16) & 0x7FFFFFFF, 0u);
}

TEST_F(ChildProcess, ToolHasItsOwnSessionAndNoStreams) {
  desktop_.install("tool", R"(
read -r pid name state parent group session rest </proc/self/stat
[ "$pid" = "$session" ] && set -- "$@" "own session"
for stream in 0 1 2; do
  [ /proc/self/fd/$stream -ef /dev/null ] && set -- "$@" "no $stream"
done
)" + std::string(kReport));
  EXPECT_EQ(platform::startTool(command_), 0);
  EXPECT_EQ(desktop_.nextCall(), (Call{"tool", "x", "own session", "no 0", "no 1", "no 2"}));
}

TEST_F(ChildProcess, AnswerIsWhatTheToolSays) {
  desktop_.install("tool", "echo here\n");
  EXPECT_TRUE(platform::toolAnswers(command_, 10000));
  desktop_.install("tool", "echo 'not here' >&2\n");
  EXPECT_FALSE(platform::toolAnswers(command_, 10000));
  desktop_.install("tool", "echo 'not here' >&2 && echo here\n");
  EXPECT_TRUE(platform::toolAnswers(command_, 10000));
}

// The signal comes once the application waits, or at once if its system calls may not be looked at.
TEST_F(ChildProcess, SignalsDoNotCutTheWaitForAnAnswerShort) {
  SignalAction const action(SIGUSR1, [](int) {});
  std::string const process = std::to_string(getpid());
  desktop_.install("tool", "while read -r call rest </proc/" + process + "/syscall && [ \"$call\" != " +
                               std::to_string(SYS_ppoll) + " ]; do :; done\nkill -USR1 " + process + "\necho here\n");
  EXPECT_TRUE(platform::toolAnswers(command_, 10000));
}

TEST_F(ChildProcess, AnswerIsNotAwaitedForEver) {
  desktop_.install("tool", std::string(kReport) + kWait + kReportEnd);
  std::size_t const descriptors = openDescriptors();
  EXPECT_FALSE(platform::toolAnswers(command_, 20));
  EXPECT_EQ(openDescriptors(), descriptors);
  EXPECT_EQ(desktop_.nextCall(), (Call{"tool", "x"}));
  desktop_.letGoOn();
  EXPECT_EQ(desktop_.nextCall(), Call{"end"});
}

// A browser may run for days: a socket or a lock of the application would stay taken.
TEST_F(ChildProcess, ToolGetsNoDescriptorOfTheApplication) {
  platform::Descriptor const opened(::open("/dev/null", O_RDONLY));
  platform::Descriptor const kept(fcntl(opened.get(), F_DUPFD, 100));
  ASSERT_TRUE(kept);
  desktop_.install("tool", "[ -e /proc/self/fd/" + std::to_string(kept.get()) + " ] || echo none\n");
  EXPECT_TRUE(platform::toolAnswers(command_, 10000));
  EXPECT_EQ(platform::runTool(command_).output, "none\n");
}

TEST_F(ChildProcess, ResultIsTheStatusAndTheEndOfTheOutput) {
  EXPECT_FALSE(platform::runTool(command_).started);
  desktop_.install("tool", "printf '%08192d\\nhere\\n' 1\necho 'not here' >&2\nexit 3\n");
  platform::ToolResult const result = platform::runTool(command_);
  EXPECT_TRUE(result.started);
  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(result.output, ::testing::EndsWith("01\nhere\n"));
  EXPECT_FALSE(hasChildren());
}

TEST_F(ChildProcess, ResultDoesNotWaitForWhatTheToolLeavesRunning) {
  desktop_.install("tool", std::string("{\n") + kWait + kReportEnd + "} &\necho here\n");
  auto run = std::async(std::launch::async, [this] { return platform::runTool(command_); });
  EXPECT_EQ(run.wait_for(std::chrono::seconds(10)), std::future_status::ready);
  desktop_.letGoOn();
  EXPECT_EQ(desktop_.nextCall(), Call{"end"});
  platform::ToolResult const result = run.get();
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "here\n");
}

// The library's descriptors may then have the numbers of the standard streams.
TEST_F(ChildProcess, ApplicationMayHaveClosedItsStreams) {
  desktop_.install("tool", "[ /proc/self/fd/0 -ef /dev/null ] && [ /proc/self/fd/2 -ef /dev/null ] && echo here\n");
  for (int closed = 1; closed < 8; ++closed) {
    pid_t const application = fork();
    ASSERT_NE(application, -1);
    if (application == 0) {
      for (int stream = 0; stream < 3; ++stream) {
        if ((closed >> stream & 1) != 0) close(stream);
      }
      _exit(platform::toolAnswers(command_, 10000) ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(application, &status, 0), application);
    EXPECT_EQ(status, 0) << "closed: " << closed;
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
