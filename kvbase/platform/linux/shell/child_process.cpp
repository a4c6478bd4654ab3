// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/shell/child_process.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "kvbase/platform/linux/files/descriptor.h"

// clone() by its other name, which the thread sanitizer does not replace: it would take the new process for one with a
// memory of its own and prepare that for its new life, while it is ours.
extern "C" int __clone(int (*function)(void*), void* stack, int flags, void* data, ...) noexcept;

namespace KV_1_1 {
namespace platform {

namespace {

// How a tool is to be started. The calls that fill it fail only for want of memory.
class SpawnSettings {
 public:
  explicit SpawnSettings(int output) {
    posix_spawn_file_actions_init(&actions_);
    posix_spawnattr_init(&attributes_);
    error_ = setStreams(output);
    if (error_ == 0) error_ = setSignals();
  }
  ~SpawnSettings() {
    posix_spawnattr_destroy(&attributes_);
    posix_spawn_file_actions_destroy(&actions_);
  }
  SpawnSettings(SpawnSettings const&) = delete;
  SpawnSettings& operator=(SpawnSettings const&) = delete;

  int error() const { return error_; }
  posix_spawn_file_actions_t const* actions() const { return &actions_; }
  posix_spawnattr_t const* attributes() const { return &attributes_; }

 private:
  // The output comes first: where the application has closed its standard streams, `output` may itself be 0 or 2.
  int setStreams(int output) {
    int const error =
        output < 0 ? openNull(STDOUT_FILENO) : posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
    if (error != 0) return error;
    int const inputError = openNull(STDIN_FILENO);
    return inputError != 0 ? inputError : openNull(STDERR_FILENO);
  }
  int openNull(int stream) {
    return posix_spawn_file_actions_addopen(&actions_, stream, "/dev/null",
                                            stream == STDIN_FILENO ? O_RDONLY : O_WRONLY, 0);
  }

  int setSignals() {
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawnattr_setsigdefault(&attributes_, &all);
    return posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }

  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
  int error_ = 0;
};

struct Launch {
  char const* const* arguments;
  SpawnSettings const& settings;
  int error;
};

// Runs in the process between this one and the tool. It shares our memory, and our thread stands still meanwhile.
int launchTool(void* data) {
  auto& launch = *static_cast<Launch*>(data);
  pid_t tool;
  launch.error = posix_spawnp(&tool, launch.arguments[0], launch.settings.actions(), launch.settings.attributes(),
                              const_cast<char* const*>(launch.arguments), environ);
  return 0;
}

// Lets no handler of the application run in the process between.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &previous_);
  }
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }
  SignalsBlocked(SignalsBlocked const&) = delete;
  SignalsBlocked& operator=(SignalsBlocked const&) = delete;

 private:
  sigset_t previous_;
};

}  // namespace

// The tool is a grandchild, so that the system and not the application takes note of its end. The process between makes
// that end as soon as the tool runs. It shares our memory, so that a large application starts a tool as fast as a small
// one; and its own end sends no signal, so that wait() and SIGCHLD of the application do not know it.
int startTool(char const* const arguments[], int output) {
  SpawnSettings const settings(output);
  if (settings.error() != 0) return settings.error();
  Launch launch{arguments, settings, 0};
  alignas(16) char stack[32 * 1024];
  SignalsBlocked const blocked;
  pid_t const between = __clone(&launchTool, stack + sizeof stack, CLONE_VM | CLONE_VFORK, &launch);
  if (between < 0) return errno;
  waitpid(between, nullptr, static_cast<int>(__WCLONE));
  return launch.error;
}

bool toolAnswers(char const* const arguments[], int milliseconds) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return false;
  Descriptor const answer(ends[0]);
  {
    Descriptor const output(ends[1]);
    if (startTool(arguments, output.get()) != 0) return false;
  }
  sigset_t all;
  sigfillset(&all);  // no signal cuts the wait short
  timespec const limit{milliseconds / 1000, milliseconds % 1000 * 1000000L};
  pollfd request{answer.get(), POLLIN, 0};
  char byte;
  return ppoll(&request, 1, &limit, &all) == 1 && read(answer.get(), &byte, 1) == 1;
}

}  // namespace platform
}  // namespace KV_1_1
