// SPDX-License-Identifier: MIT
#pragma once

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

}  // namespace testing
}  // namespace KV_1_1
