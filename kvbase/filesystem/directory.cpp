// SPDX-License-Identifier: MIT
#include "kvbase/filesystem/directory.h"

#include <utility>

#include "kvbase/modules/client_module.h"

namespace KV_1_1 {

Directory::Directory(bool absolute, int rootUnits, String path)
    : absolute_(absolute), rootUnits_(rootUnits), path_(std::move(path)) {}

Directory::Directory(Directory const& other)
    : FileSystemItem(other), absolute_(other.absolute_), rootUnits_(other.rootUnits_), path_(other.path_) {}

Directory& Directory::operator=(Directory const& other) {
  absolute_ = other.absolute_;
  rootUnits_ = other.rootUnits_;
  path_ = other.path_;
  return *this;
}

Directory::~Directory() = default;

KVBASE_REGISTER_CLASS(Directory, FileSystemItem)

}  // namespace KV_1_1
