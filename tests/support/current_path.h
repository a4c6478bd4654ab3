// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace KV_1_1 {
namespace testing {

// Makes a folder the current directory of the process while it lives.
class CurrentPath {
 public:
  explicit CurrentPath(std::filesystem::path const& path) { std::filesystem::current_path(path); }
  ~CurrentPath() { std::filesystem::current_path(previous_); }
  CurrentPath(CurrentPath const&) = delete;
  CurrentPath& operator=(CurrentPath const&) = delete;

 private:
  std::filesystem::path const previous_ = std::filesystem::current_path();
};

}  // namespace testing
}  // namespace KV_1_1
