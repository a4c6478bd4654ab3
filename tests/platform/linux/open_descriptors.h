// SPDX-License-Identifier: MIT
#pragma once

#include <fcntl.h>

#include <cstddef>
#include <filesystem>
#include <iterator>

namespace KV_1_1 {
namespace testing {

// The number of descriptors that this process has open.
inline std::size_t openDescriptors() {
  std::filesystem::directory_iterator const entries("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

// Those of them that a program started by this process would have open too.
inline std::size_t inheritedDescriptors() {
  std::size_t n = 0;
  for (int descriptor = 0; descriptor < 1024; ++descriptor) {
    int const flags = fcntl(descriptor, F_GETFD);
    n += flags >= 0 && (flags & FD_CLOEXEC) == 0;
  }
  return n;
}

}  // namespace testing
}  // namespace KV_1_1
