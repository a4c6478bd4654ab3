// SPDX-License-Identifier: MIT
#include "kvbase/filesystem/file_system_iterator.h"

#include "kvbase/filesystem/internal/path_names.h"
#include "kvbase/modules/client_module.h"

namespace KV_1_1 {

// The search is started last: if anything throws before, there is nothing to close.
FileSystemIterator::FileSystemIterator(Directory const& directory, String const& pattern)
    : directory_(&directory),
      findData_(),
      findHandle_(platform::files().findFirst(directory.getFullName() + pattern, findData_)) {
  finished_ = findHandle_ == platform::invalidSearch();
}

FileSystemIterator::FileSystemIterator(FileSystemIterator const& other)
    : BaseNode(other),
      finished_(other.finished_),
      directory_(other.directory_),
      findData_(other.findData_),
      findHandle_(other.findHandle_) {}

FileSystemIterator& FileSystemIterator::operator=(FileSystemIterator const& other) {
  finished_ = other.finished_;
  directory_ = other.directory_;
  findData_ = other.findData_;
  findHandle_ = other.findHandle_;
  return *this;
}

FileSystemIterator::~FileSystemIterator() {
  if (findHandle_ != platform::invalidSearch()) platform::files().findClose(findHandle_);
}

void FileSystemIterator::next() {
  if (platform::files().findNext(findHandle_, findData_)) return;
  platform::files().findClose(findHandle_);
  findHandle_ = platform::invalidSearch();
  finished_ = true;
}

bool FileSystemIterator::atDots() const {
  return dotsIn(findData_.name) != 0;
}

SmartPtr<FileSystemItem const> FileSystemIterator::getNext() {
  while (!finished_ && atDots()) next();
  if (finished_) return nullptr;
  SmartPtr<FileSystemItem const> item;
  if (atDirectory()) {
    item = directory_->appendLevel(findData_.name);
  } else {
    item = File::named(directory_, viewOf(findData_.name));
  }
  next();
  return item;
}

SmartPtr<Directory const> DirectoryIterator::getNext() {
  while (!finished_ && (atDots() || !atDirectory())) next();
  if (finished_) return nullptr;
  SmartPtr<Directory const> item = directory_->appendLevel(findData_.name);
  next();
  return item;
}

SmartPtr<File const> FileIterator::getNext() {
  while (!finished_ && atDirectory()) next();
  if (finished_) return nullptr;
  SmartPtr<File const> item = File::named(directory_, viewOf(findData_.name));
  next();
  return item;
}

DirectoryIterator::~DirectoryIterator() = default;

FileIterator::~FileIterator() = default;

KVBASE_REGISTER_CLASS(FileSystemIterator, BaseNode)
KVBASE_REGISTER_CLASS(DirectoryIterator, FileSystemIterator)
KVBASE_REGISTER_CLASS(FileIterator, FileSystemIterator)

}  // namespace KV_1_1
