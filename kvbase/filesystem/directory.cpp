// SPDX-License-Identifier: MIT
#include "kvbase/filesystem/directory.h"

#include <utility>

#include "kvbase/modules/client_module.h"

namespace KV_1_1 {

Directory::Directory(bool absolute, String root, std::vector<String> levels)
    : absolute_(absolute), levels_(std::move(levels)), root_(std::move(root)) {}

Directory::Directory(Directory const& other)
    : FileSystemItem(other), absolute_(other.absolute_), levels_(other.levels_), root_(other.root_) {}

Directory& Directory::operator=(Directory const& other) {
  // The levels first: nothing has changed if there is no memory for them.
  levels_ = std::vector<String>(other.levels_);
  absolute_ = other.absolute_;
  root_ = other.root_;
  return *this;
}

Directory::~Directory() = default;

KVBASE_REGISTER_CLASS(Directory, FileSystemItem)

}  // namespace KV_1_1
