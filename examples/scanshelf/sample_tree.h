// SPDX-License-Identifier: MIT
#pragma once

#include <kvbase/kvbase.h>

#include <filesystem>

namespace scanshelf {

// A new folder of its own among the temporary ones, removed at the end with all that is in it.
class TemporaryFolder {
 public:
  // Throws std::filesystem::filesystem_error, or a Complaint.
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(TemporaryFolder const&) = delete;
  TemporaryFolder& operator=(TemporaryFolder const&) = delete;

  // Throws a Complaint if something is left.
  void remove();

  std::filesystem::path const& path() const { return path_; }
  KV_1_1::SmartPtr<KV_1_1::Directory const> folder() const;

 private:
  std::filesystem::path path_;
};

// A tree of scans to look at, there as long as the object, and a place for its copy.
class SampleTree {
 public:
  // Throws std::filesystem::filesystem_error, or a Complaint; nothing is left then.
  SampleTree();

  KV_1_1::SmartPtr<KV_1_1::Directory const> folder() const;
  // A folder that is not there yet.
  KV_1_1::SmartPtr<KV_1_1::Directory const> copyFolder() const;

  // Removes the sample and its copy, and tells if it cannot: throws a Complaint.
  void remove() { root_.remove(); }

 private:
  TemporaryFolder root_;
};

}  // namespace scanshelf
