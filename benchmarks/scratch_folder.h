// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace KV_1_1 {
namespace bench {

// A new folder, removed by the destructor. It lies on a file system in memory if there is one, so that the speed of the
// disk does not affect the times.
class ScratchFolder {
 public:
  ScratchFolder() {
    namespace fs = std::filesystem;
    fs::path const base = fs::exists("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path();
    path_ = (base / "kvbase-bench-XXXXXX").string();
    if (mkdtemp(path_.data()) == nullptr) throw fs::filesystem_error("no folder", fs::path(path_), std::error_code());
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
