// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <random>
#include <string>
#include <system_error>
#include <utility>

namespace KV_1_1 {
namespace bench {

// A new folder, removed by the destructor. It lies on a file system in memory if there is one, so that the speed of the
// disk does not affect the times. Wine shows that of Linux on the drive of the working directory.
class ScratchFolder {
 public:
  ScratchFolder() {
    namespace fs = std::filesystem;
    fs::path const memory = "/dev/shm";
    fs::path const folder = fs::absolute(fs::exists(memory) ? memory : fs::temp_directory_path()) /
                            ("kvbase-bench-" + std::to_string(std::random_device()()));
    if (!fs::create_directory(folder)) throw fs::filesystem_error("no new folder", folder, std::error_code());
    path_ = folder.string();
  }
  ScratchFolder(ScratchFolder&& other) : path_(std::move(other.path_)) { other.path_.clear(); }
  ScratchFolder& operator=(ScratchFolder&&) = delete;
  ~ScratchFolder() {
    std::error_code ignored;
    if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
  }

  std::string const& path() const { return path_; }
  std::string path(char const* below) const { return path_ + '/' + below; }

 private:
  std::string path_;
};

}  // namespace bench
}  // namespace KV_1_1
