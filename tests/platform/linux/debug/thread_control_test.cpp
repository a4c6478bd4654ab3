// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "kvbase/platform/debug_api.h"
#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/linux/debug/thread_control.h"
#include "tests/platform/linux/debug/debug_help.h"
#include "tests/support/threads.h"

namespace KV_1_1 {
namespace testing {

namespace worked {

std::atomic<bool> shallEnd;
std::atomic<unsigned> rounds;

__attribute__((noinline)) void spin() {
  while (!shallEnd.load(std::memory_order_relaxed)) rounds.fetch_add(1, std::memory_order_relaxed);
}

__attribute__((noinline)) void spinDeeper(int depth) {
  if (depth > 0) {
    spinDeeper(depth - 1);
  } else {
    spin();
  }
  rounds.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace worked

namespace {

constexpr ulong32 kFailure = 0xFFFFFFFF;

// A thread that counts rounds until the end of the scope.
class Worker {
 public:
  explicit Worker(bool blocksSignals = false) {
    worked::shallEnd = false;
    worked::rounds = 0;
    thread_ = std::thread([this, blocksSignals] {
      sigset_t all;
      sigfillset(&all);
      if (blocksSignals) pthread_sigmask(SIG_BLOCK, &all, nullptr);
      id_ = static_cast<pid_t>(syscall(SYS_gettid));
      worked::spinDeeper(3);
    });
    while (worked::rounds < 1000) std::this_thread::yield();
  }
  ~Worker() { end(); }
  Worker(Worker const&) = delete;
  Worker& operator=(Worker const&) = delete;

  void end() {
    worked::shallEnd = true;
    if (!thread_.joinable()) return;
    thread_.join();
    // The system takes the thread from its table a moment later.
    while (syscall(SYS_tgkill, getpid(), id_.load(), 0) == 0) std::this_thread::yield();
  }
  void* handle() const { return reinterpret_cast<void*>(static_cast<std::intptr_t>(id_)); }

 private:
  std::thread thread_;
  std::atomic<pid_t> id_{0};
};

// A thread has little time to answer in a scope.
class ShortAnswerTime {
 public:
  explicit ShortAnswerTime(int milliseconds = 20) { platform::threadAnswerMilliseconds = milliseconds; }
  ~ShortAnswerTime() { platform::threadAnswerMilliseconds = before_; }
  ShortAnswerTime(ShortAnswerTime const&) = delete;
  ShortAnswerTime& operator=(ShortAnswerTime const&) = delete;

 private:
  int const before_ = platform::threadAnswerMilliseconds;
};

// Waits for a round, as long as a busy machine may need.
bool makesRounds() {
  unsigned const before = worked::rounds;
  auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (worked::rounds == before && std::chrono::steady_clock::now() < end) std::this_thread::yield();
  return worked::rounds != before;
}

// Gives the thread many occasions to make a round.
bool standsStill() {
  unsigned const before = worked::rounds;
  for (int i = 0; i < 1000; ++i) std::this_thread::yield();
  return worked::rounds == before;
}

TEST(LinuxThreadControl, SuspendedThreadStandsStillAndGoesOn) {
  Worker const worker;
  EXPECT_EQ(platform::nativeDebug().suspendThread(worker.handle()), 0u);
  EXPECT_TRUE(standsStill());
  EXPECT_EQ(platform::nativeDebug().resumeThread(worker.handle()), 1u);
  EXPECT_TRUE(makesRounds());
}

TEST(LinuxThreadControl, SuspensionsAreCounted) {
  Worker const worker;
  EXPECT_EQ(platform::nativeDebug().suspendThread(worker.handle()), 0u);
  EXPECT_EQ(platform::nativeDebug().suspendThread(worker.handle()), 1u);
  EXPECT_EQ(platform::nativeDebug().resumeThread(worker.handle()), 2u);
  EXPECT_TRUE(standsStill());
  EXPECT_EQ(platform::nativeDebug().resumeThread(worker.handle()), 1u);
  EXPECT_TRUE(makesRounds());
  EXPECT_EQ(platform::nativeDebug().resumeThread(worker.handle()), 0u);
}

TEST(LinuxThreadControl, StackOfASuspendedThreadIsWalked) {
  DebugHelp help;
  Worker const worker;
  for (int i = 0; i < 5; ++i) {
    ASSERT_EQ(platform::nativeDebug().suspendThread(worker.handle()), 0u);
    _CONTEXT context = emptyContext();
    EXPECT_TRUE(platform::nativeDebug().threadContext(worker.handle(), context));
    std::vector<Frame> const frames = help.walk(context);
    bool const endsInOrder = help.endsInOrder;
    EXPECT_EQ(platform::nativeDebug().resumeThread(worker.handle()), 1u);
    int const spin = indexOf(frames, "KV_1_1::testing::worked::spin");
    ASSERT_GE(spin, 0);
    ASSERT_GE(static_cast<int>(frames.size()), spin + 5);
    for (int above = 1; above <= 4; ++above) {
      EXPECT_EQ(frames[static_cast<std::size_t>(spin + above)].bareName, "KV_1_1::testing::worked::spinDeeper");
    }
    EXPECT_TRUE(endsInOrder);
  }
}

TEST(LinuxThreadControl, ThreadThatHasEndedIsAFailure) {
  Worker worker;
  worker.end();
  EXPECT_EQ(platform::nativeDebug().suspendThread(worker.handle()), kFailure);
  EXPECT_EQ(platform::nativeErrors().lastError(), platform::kInvalidHandle);
  EXPECT_EQ(platform::nativeDebug().resumeThread(worker.handle()), kFailure);
  _CONTEXT context = emptyContext();
  EXPECT_FALSE(platform::nativeDebug().threadContext(worker.handle(), context));
}

TEST(LinuxThreadControl, ThreadThatBlocksAllSignalsIsAFailureAfterATime) {
  Worker worker(/*blocksSignals=*/true);
  ShortAnswerTime const shortTime;
  EXPECT_EQ(platform::nativeDebug().suspendThread(worker.handle()), kFailure);
  EXPECT_EQ(platform::nativeErrors().lastError(), platform::kAccessDenied);
  EXPECT_TRUE(makesRounds());
}

// There is room for 64 threads that stand still or may still answer.
TEST(LinuxThreadControl, ThreadsThatEndWithoutAnAnswerTakeNoRoom) {
  for (int i = 0; i < 64; ++i) {
    Worker const worker(/*blocksSignals=*/true);
    ShortAnswerTime const none(0);
    EXPECT_EQ(platform::nativeDebug().suspendThread(worker.handle()), kFailure);
  }
  Worker const worker;
  EXPECT_EQ(platform::nativeDebug().suspendThread(worker.handle()), 0u);
  EXPECT_EQ(platform::nativeDebug().resumeThread(worker.handle()), 1u);
}

// The signal that nobody waits for any more arrives when the thread takes it.
TEST(LinuxThreadControl, AnswerThatComesTooLateDoesNoHarm) {
  std::atomic<int> step{0};
  std::atomic<pid_t> id{0};
  std::thread thread([&] {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before);
    id = static_cast<pid_t>(syscall(SYS_gettid));
    step = 1;
    while (step == 1) std::this_thread::yield();
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    step = 3;
    while (step == 3) std::this_thread::yield();
  });
  while (step == 0) std::this_thread::yield();
  void* const handle = reinterpret_cast<void*>(static_cast<std::intptr_t>(id.load()));
  {
    ShortAnswerTime const shortTime;
    EXPECT_EQ(platform::nativeDebug().suspendThread(handle), kFailure);
  }
  step = 2;
  while (step == 2) std::this_thread::yield();
  EXPECT_EQ(platform::nativeDebug().suspendThread(handle), 0u);
  EXPECT_EQ(platform::nativeDebug().resumeThread(handle), 1u);
  step = 4;
  thread.join();
}

TEST(LinuxThreadControl, CallingThreadCannotStopItself) {
  void* const self = reinterpret_cast<void*>(static_cast<std::intptr_t>(syscall(SYS_gettid)));
  EXPECT_EQ(platform::nativeDebug().suspendThread(self), kFailure);
  EXPECT_EQ(platform::nativeDebug().suspendThread(platform::nativeDebug().currentThread()), kFailure);
  EXPECT_EQ(platform::nativeDebug().suspendThread(nullptr), kFailure);
}

TEST(LinuxThreadControl, ResumingTheCallingThreadHasNoEffect) {
  EXPECT_EQ(platform::nativeDebug().resumeThread(platform::nativeDebug().currentThread()), 0u);
}

TEST(LinuxThreadControl, RegistersOfAThreadThatRunsAreRefused) {
  Worker const worker;
  _CONTEXT context = emptyContext();
  EXPECT_FALSE(platform::nativeDebug().threadContext(worker.handle(), context));
  EXPECT_FALSE(platform::nativeDebug().threadContext(platform::nativeDebug().currentThread(), context));
}

TEST(LinuxThreadControl, HandlersOfTheApplicationStay) {
  // A thread is stopped once, so that the signal is chosen.
  {
    Worker const worker;
    platform::nativeDebug().suspendThread(worker.handle());
    platform::nativeDebug().resumeThread(worker.handle());
  }
  static std::atomic<int> calls;
  calls = 0;
  struct sigaction action = {};
  struct sigaction previous = {};
  action.sa_handler = [](int) { ++calls; };
  ASSERT_EQ(sigaction(SIGRTMIN, &action, &previous), 0);
  Worker const worker;
  EXPECT_EQ(platform::nativeDebug().suspendThread(worker.handle()), 0u);
  EXPECT_EQ(platform::nativeDebug().resumeThread(worker.handle()), 1u);
  raise(SIGRTMIN);
  EXPECT_EQ(calls, 1);
  sigaction(SIGRTMIN, &previous, nullptr);
}

TEST(LinuxThreadControlConcurrency, ManyThreadsStopTheSameOne) {
  Worker const worker;
  onThreads([&](int) {
    for (int i = 0; i < 50; ++i) {
      EXPECT_NE(platform::nativeDebug().suspendThread(worker.handle()), kFailure);
      _CONTEXT context = emptyContext();
      EXPECT_TRUE(platform::nativeDebug().threadContext(worker.handle(), context));
      EXPECT_NE(platform::nativeDebug().resumeThread(worker.handle()), kFailure);
    }
  });
  EXPECT_TRUE(makesRounds());
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
