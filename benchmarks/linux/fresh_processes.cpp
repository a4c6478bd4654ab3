// SPDX-License-Identifier: MIT
#include "fresh_processes.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include "benchmarks/support.h"

namespace KV_1_1 {
namespace bench {

namespace {

struct Message {
  double seconds;
  char text[100];
};

double processorTime() {
  timespec time = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

void answer(int socket, std::function<std::string()> const& work) {
  Message message = {};
  double const start = processorTime();
  std::string const text = work();
  message.seconds = processorTime() - start;
  text.copy(message.text, sizeof message.text - 1);
  require(send(socket, &message, sizeof message, 0) == sizeof message, "the result can be sent");
}

[[noreturn]] void serve(int socket, std::vector<std::function<std::string()>> const& works) {
  for (std::size_t work = 0; recv(socket, &work, sizeof work, 0) == sizeof work;) {
    pid_t const child = fork();
    if (child == 0) {
      answer(socket, works[work]);
      _exit(0);
    }
    int status = -1;
    if (waitpid(child, &status, 0) != child || status != 0) _exit(1);
  }
  _exit(0);
}

}  // namespace

FreshProcesses::FreshProcesses(std::vector<std::function<std::string()>> const& works) {
  int sockets[2];
  require(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets) == 0, "there are sockets");
  pid_t const server = fork();
  require(server >= 0, "there are processes");
  if (server == 0) {
    close(sockets[0]);
    serve(sockets[1], works);
  }
  close(sockets[1]);
  socket_ = sockets[0];
}

FreshProcesses::Result FreshProcesses::run(std::size_t work) const {
  Message message;
  require(send(socket_, &work, sizeof work, MSG_NOSIGNAL) == sizeof work, "the work can be asked for");
  require(recv(socket_, &message, sizeof message, 0) == sizeof message, "the work has been done");
  return {message.seconds, message.text};
}

Row& Row::addOnce(char const* contestant, FreshProcesses const& processes, std::size_t work) {
  addContestant(name_, contestant, [expected = expected_, label = label(contestant), &processes, work](long long n) {
    Measured measured = {};
    for (; measured.iterations < n; ++measured.iterations) {
      FreshProcesses::Result const result = processes.run(work);
      measured.nanoseconds += 1e9 * result.seconds;
      expect(*expected, u16string(result.text.begin(), result.text.end()), label);
    }
    return measured;
  });
  return *this;
}

}  // namespace bench
}  // namespace KV_1_1
