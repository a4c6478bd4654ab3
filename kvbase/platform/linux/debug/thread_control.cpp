// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/debug/thread_control.h"

#include <errno.h>
#include <semaphore.h>
#include <signal.h>
#include <sys/syscall.h>
#include <time.h>
#include <ucontext.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <mutex>

#include "kvbase/core/lazy.h"
#include "kvbase/platform/debug_help.h"
#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/linux/debug/debug_session.h"
#include "kvbase/platform/linux/errors/last_error.h"

namespace KV_1_1 {
namespace platform {

namespace {

// How often it is checked whether a thread that has not answered yet still runs.
constexpr int kPollMilliseconds = 20;

// A thread that is to stop. The handler of a signal that comes too late must still find the record, so the records are
// never freed, and one that nobody waits for any more is given back by the handler.
struct StoppedThread {
  enum State { kFree, kRequested, kStopped, kAbandoned };
  std::atomic<int> state{kFree};
  pid_t thread = 0;
  ulong32 count = 0;
  // Initialised, so that the records are so before the first constructor runs.
  sem_t hasStopped = {};
  sem_t mayGoOn = {};
  greg_t registers[__NGREG] = {};
};
constexpr std::size_t kMostThreads = 64;
StoppedThread stoppedThreads[kMostThreads];
std::mutex threadsMutex;

pid_t idOf(void* thread) {
  return static_cast<pid_t>(reinterpret_cast<std::intptr_t>(thread));
}

bool isOwn(void* thread) {
  return thread == GetCurrentThread() || idOf(thread) == static_cast<pid_t>(syscall(SYS_gettid));
}

int sendSignal(pid_t thread, int signal) {
  return static_cast<int>(syscall(SYS_tgkill, getpid(), thread, signal));
}

bool hasEnded(pid_t thread) {
  return sendSignal(thread, 0) != 0;
}

void waitFor(sem_t& semaphore) {
  while (sem_wait(&semaphore) != 0 && errno == EINTR) {
  }
}

// Runs on the thread that is to stop; calls only what is safe in a handler.
void stopHere(int, siginfo_t* information, void* context) {
  int const error = errno;
  auto* const record = static_cast<StoppedThread*>(information->si_value.sival_ptr);
  bool const isOurs =
      information->si_code == SI_QUEUE && record >= stoppedThreads && record < stoppedThreads + kMostThreads;
  if (!isOurs) return;
  memcpy(record->registers, static_cast<ucontext_t const*>(context)->uc_mcontext.gregs, sizeof record->registers);
  int expected = StoppedThread::kRequested;
  if (record->state.compare_exchange_strong(expected, StoppedThread::kStopped)) {
    sem_post(&record->hasStopped);
    waitFor(record->mayGoOn);
  }
  // Nobody uses the record any more: the one who stopped the thread has let it go on, or has given up before.
  record->state.store(StoppedThread::kFree, std::memory_order_release);
  errno = error;
}

// The signal that stops threads, with its handler for the life of the library.
class StopSignal {
 public:
  StopSignal() {
    for (int number = SIGRTMAX; number >= SIGRTMIN && number_ == 0; --number) {
      struct sigaction current = {};
      if (sigaction(number, nullptr, &current) == 0 && current.sa_handler == SIG_DFL) number_ = number;
    }
    struct sigaction action = {};
    action.sa_sigaction = &stopHere;
    action.sa_flags = SA_SIGINFO | SA_RESTART;
    sigfillset(&action.sa_mask);
    if (number_ != 0 && sigaction(number_, &action, nullptr) != 0) number_ = 0;
  }
  // A signal that is still to come must not end the process.
  ~StopSignal() {
    if (number_ != 0) signal(number_, SIG_IGN);
  }
  StopSignal(StopSignal const&) = delete;
  StopSignal& operator=(StopSignal const&) = delete;

  bool send(StoppedThread& record) const {
    siginfo_t information = {};
    information.si_code = SI_QUEUE;
    information.si_pid = getpid();
    information.si_uid = getuid();
    information.si_value.sival_ptr = &record;
    return number_ != 0 && syscall(SYS_rt_tgsigqueueinfo, getpid(), record.thread, number_, &information) == 0;
  }

 private:
  int number_ = 0;
};

StopSignal const& stopSignal() {
  static Lazy<StopSignal> all;
  return all.get();
}

StoppedThread* findStopped(pid_t thread) {
  for (StoppedThread& record : stoppedThreads) {
    if (record.thread == thread && record.state.load() == StoppedThread::kStopped && record.count > 0) return &record;
  }
  return nullptr;
}

StoppedThread* takeFree() {
  for (StoppedThread& record : stoppedThreads) {
    int const state = record.state.load(std::memory_order_acquire);
    bool const isLost = state == StoppedThread::kAbandoned && hasEnded(record.thread);
    if (state == StoppedThread::kFree || isLost) return &record;
  }
  return nullptr;
}

// False if the thread has ended or does not answer in time.
bool waitUntilStopped(StoppedThread& record) {
  for (int waited = 0; waited < threadAnswerMilliseconds; waited += kPollMilliseconds) {
    timespec limit;
    clock_gettime(CLOCK_MONOTONIC, &limit);
    limit.tv_nsec += kPollMilliseconds * 1000000L;
    if (limit.tv_nsec >= 1000000000) {
      limit.tv_nsec -= 1000000000;
      ++limit.tv_sec;
    }
    int result;
    do {
      result = sem_clockwait(&record.hasStopped, CLOCK_MONOTONIC, &limit);
    } while (result != 0 && errno == EINTR);
    if (result == 0) return true;
    if (hasEnded(record.thread)) break;
  }
  int expected = StoppedThread::kRequested;
  if (record.state.compare_exchange_strong(expected, StoppedThread::kAbandoned)) return false;
  waitFor(record.hasStopped);
  return true;
}

ulong32 failure(ulong32 code) {
  setLastErrorOfThread(code);
  return kThreadFailure;
}

}  // namespace

int threadAnswerMilliseconds = 2000;

ulong32 suspendOtherThread(void* thread) {
  pid_t const id = idOf(thread);
  if (isOwn(thread) || id <= 0) return failure(kInvalidParameter);
  // A thread that is stopped while it has the lock of the session would block the walk over its stack.
  auto const sessionLock = DebugSession::instance().lock();
  std::lock_guard<std::mutex> const lock(threadsMutex);
  StoppedThread* record = findStopped(id);
  if (record != nullptr) return record->count++;
  record = takeFree();
  if (record == nullptr) return failure(kNotEnoughMemory);
  record->thread = id;
  record->count = 0;
  sem_init(&record->hasStopped, 0, 0);
  sem_init(&record->mayGoOn, 0, 0);
  record->state.store(StoppedThread::kRequested);
  if (!stopSignal().send(*record)) {
    record->state.store(StoppedThread::kFree);
    return failure(kInvalidHandle);
  }
  // A thread that is about to end may still take the signal.
  if (!waitUntilStopped(*record)) return failure(hasEnded(id) ? kInvalidHandle : kAccessDenied);
  return record->count++;
}

ulong32 resumeOtherThread(void* thread) {
  if (isOwn(thread)) return 0;
  pid_t const id = idOf(thread);
  if (id <= 0 || hasEnded(id)) return failure(kInvalidHandle);
  std::lock_guard<std::mutex> const lock(threadsMutex);
  StoppedThread* const record = findStopped(id);
  if (record == nullptr) return 0;
  ulong32 const before = record->count--;
  if (before == 1) sem_post(&record->mayGoOn);
  return before;
}

bool registersOfThread(void* thread, _CONTEXT& context) {
  std::lock_guard<std::mutex> const lock(threadsMutex);
  StoppedThread const* const record = findStopped(idOf(thread));
  if (record == nullptr) return failWith(kInvalidHandle);
  greg_t const* const values = record->registers;
  struct Place {
    int from;
    std::uint64_t _CONTEXT::*to;
  };
  static constexpr Place kPlaces[] = {{REG_RAX, &_CONTEXT::Rax}, {REG_RCX, &_CONTEXT::Rcx}, {REG_RDX, &_CONTEXT::Rdx},
                                      {REG_RBX, &_CONTEXT::Rbx}, {REG_RSP, &_CONTEXT::Rsp}, {REG_RBP, &_CONTEXT::Rbp},
                                      {REG_RSI, &_CONTEXT::Rsi}, {REG_RDI, &_CONTEXT::Rdi}, {REG_R8, &_CONTEXT::R8},
                                      {REG_R9, &_CONTEXT::R9},   {REG_R10, &_CONTEXT::R10}, {REG_R11, &_CONTEXT::R11},
                                      {REG_R12, &_CONTEXT::R12}, {REG_R13, &_CONTEXT::R13}, {REG_R14, &_CONTEXT::R14},
                                      {REG_R15, &_CONTEXT::R15}, {REG_RIP, &_CONTEXT::Rip}};
  for (Place const& place : kPlaces) context.*place.to = static_cast<std::uint64_t>(values[place.from]);
  context.EFlags = static_cast<std::uint32_t>(values[REG_EFL]);
  return true;
}

}  // namespace platform
}  // namespace KV_1_1
