// SPDX-License-Identifier: MIT
#pragma once

#include <kvbase/kvbase.h>

#include <filesystem>

namespace scanshelf {

// A new folder of its own among the temporary ones, removed at the end with all that is in it.
class TemporaryFolder {
 public:
  // Throws std::filesystem::filesystem_error.
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(TemporaryFolder const&) = delete;
  TemporaryFolder& operator=(TemporaryFolder const&) = delete;

  std::filesystem::path const& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// A tree of scans to look at, there as long as the object.
class SampleTree {
 public:
  // Throws std::filesystem::filesystem_error; nothing is left then.
  SampleTree();

  KV_1_1::SmartPtr<KV_1_1::Directory const> folder() const;

 private:
  TemporaryFolder root_;
};

}  // namespace scanshelf
