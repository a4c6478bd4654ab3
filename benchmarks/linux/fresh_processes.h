// SPDX-License-Identifier: MIT
//
// Work that a process does only once, because it remembers the result. Each measurement is made in a process of its own,
// forked from one that has done no such work.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace KV_1_1 {
namespace bench {

class FreshProcesses {
 public:
  // Forks the process that the others are forked from. It ends when this process does.
  explicit FreshProcesses(std::vector<std::function<std::string()>> const& works);

  struct Result {
    double seconds;  // processor time
    std::string text;
  };
  // Does one of the works in a new process. Its result has at most 100 characters.
  Result run(std::size_t work) const;

 private:
  int socket_;
};

}  // namespace bench
}  // namespace KV_1_1
