// SPDX-License-Identifier: MIT
#include "kvbase/filesystem/file.h"

#include <utility>

#include "kvbase/modules/client_module.h"

namespace KV_1_1 {

File::File() : directory_(new Directory) {}

File::File(SmartPtr<Directory const> directory) : directory_(std::move(directory)) {}

File::File(File const& other)
    : FileSystemItem(other), baseName_(other.baseName_), directory_(other.directory_), extension_(other.extension_) {}

File& File::operator=(File const& other) {
  baseName_ = other.baseName_;
  directory_ = other.directory_;
  extension_ = other.extension_;
  return *this;
}

File::~File() = default;

KVBASE_REGISTER_CLASS(File, FileSystemItem)

}  // namespace KV_1_1
