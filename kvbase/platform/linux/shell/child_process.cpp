// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/shell/child_process.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "kvbase/platform/linux/files/descriptor.h"
#include "kvbase/platform/linux/files/name_mapping.h"

namespace KV_1_1 {
namespace platform {

namespace {

// File actions and attributes for posix_spawn. The calls that fill them fail only when memory runs out.
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
    int error =
        output < 0 ? openNull(STDOUT_FILENO) : posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
    if (error == 0) error = openNull(STDIN_FILENO);
    if (error == 0) error = openNull(STDERR_FILENO);
    if (error == 0) error = posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    return error;
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
    return posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }

  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
  int error_ = 0;
};

// The path of a tool that PATH leads to, NUL-terminated; it contains a separator. Returns 0, or the errno of the
// failure.
int findTool(char const* name, NativePath& path) {
  char const* const variable = getenv("PATH");
  int error = ENOENT;
  for (char const* folder = variable != nullptr ? variable : "/bin:/usr/bin";; ++folder) {
    std::size_t const size = strcspn(folder, ":");
    path.resize(0);
    // An empty folder is the current one.
    path.append(folder, size);
    path.append(size != 0 ? "/" : "./", size != 0 ? 1 : 2);
    path.append(name, strlen(name) + 1);
    struct stat status;
    bool const isThere = stat(path.data(), &status) == 0;
    if (isThere && S_ISREG(status.st_mode) && faccessat(AT_FDCWD, path.data(), X_OK, AT_EACCESS) == 0) return 0;
    if (isThere || errno == EACCES) error = EACCES;
    folder += size;
    if (*folder == '\0') return error;
  }
}

// Waits for a child to end. True if it succeeded, or if nobody can tell: another thread has collected it, or the
// application ignores SIGCHLD.
bool succeeds(pid_t child) {
  int status = 0;
  pid_t ended;
  do {
    ended = waitpid(child, &status, 0);
  } while (ended < 0 && errno == EINTR);
  return ended < 0 || status == 0;
}

}  // namespace

// setsid forks the tool and ends at once, which makes the system the tool's parent. posix_spawn starts it without a
// copy of this process's memory, so a large application starts a tool as fast as a small one.
int startTool(char const* const arguments[], int output) {
  NativePath path;
  int error = findTool(arguments[0], path);
  if (error != 0) return error;
  SpawnSettings const settings(output);
  if (settings.error() != 0) return settings.error();
  SmallBuffer<char*, 16> command;
  for (char const* word : {"setsid", "--fork", "--", static_cast<char const*>(path.data())}) {
    command.push(const_cast<char*>(word));
  }
  do {
    command.push(const_cast<char*>(*++arguments));
  } while (*arguments != nullptr);
  pid_t child;
  error = posix_spawn(&child, "/usr/bin/setsid", settings.actions(), settings.attributes(), command.data(), environ);
  if (error != 0) return error;
  return succeeds(child) ? 0 : EAGAIN;
}

// The output is a file, not a pipe: a pipe ends only when all those have closed it that the tool leaves running.
ToolResult runTool(char const* const arguments[], char const* variable) {
  ToolResult result;
  NativePath path;
  Descriptor const output(memfd_create("output", MFD_CLOEXEC));
  if (!output || findTool(arguments[0], path) != 0) return result;
  SpawnSettings const settings(output.get());
  SmallBuffer<char*, 16> command;
  for (std::size_t i = 0; i == 0 || arguments[i - 1] != nullptr; ++i) {
    command.push(const_cast<char*>(arguments[i]));
  }
  SmallBuffer<char*, 128> environment;
  for (char** each = environ; *each != nullptr; ++each) {
    bool const isReplaced = variable != nullptr && strncmp(*each, variable, strcspn(variable, "=") + 1) == 0;
    if (!isReplaced) environment.push(*each);
  }
  if (variable != nullptr) environment.push(const_cast<char*>(variable));
  environment.push(nullptr);
  pid_t child;
  result.started = settings.error() == 0 && posix_spawn(&child, path.data(), settings.actions(), settings.attributes(),
                                                        command.data(), environment.data()) == 0;
  if (!result.started) return result;
  int status = 0;
  pid_t ended;
  do {
    ended = waitpid(child, &status, 0);
  } while (ended < 0 && errno == EINTR);
  if (ended == child && WIFEXITED(status)) result.status = WEXITSTATUS(status);
  char bytes[4096];
  off_t const size = lseek(output.get(), 0, SEEK_END);
  off_t const begin = size > off_t{sizeof bytes} ? size - off_t{sizeof bytes} : 0;
  ssize_t const count = pread(output.get(), bytes, sizeof bytes, begin);
  if (count > 0) result.output.assign(bytes, static_cast<std::size_t>(count));
  return result;
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
