// SPDX-License-Identifier: MIT
#include "tests/shared/modules/run_program.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace KV_1_1 {
namespace testing {

int runProgram(std::filesystem::path const& program, std::vector<std::string> const& arguments) {
  std::vector<std::string> words = {program.string()};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(&word[0]);
  argv.push_back(nullptr);

  pid_t child = 0;
  int status = 0;
  if (posix_spawn(&child, program.c_str(), nullptr, nullptr, argv.data(), environ) != 0) return -1;
  if (waitpid(child, &status, 0) != child) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace testing
}  // namespace KV_1_1
