// SPDX-License-Identifier: MIT
#include "kvbase/filesystem/file_collection_iterator.h"

#include "kvbase/modules/client_module.h"

namespace KV_1_1 {

// The base starts a search whose items are never asked for.
FileCollectionIterator::FileCollectionIterator(std::vector<SmartPtr<File const>> const& files,
                                               Directory const& directory)
    : FileIterator(directory, String::EMPTY), files_(files) {}

FileCollectionIterator::~FileCollectionIterator() = default;

SmartPtr<FileCollectionIterator> FileCollectionIterator::create(std::vector<SmartPtr<File const>> const& files) {
  SmartPtr<Directory const> const here(new Directory);
  SmartPtr<Directory const> const absolute = here->makeAbsolute();
  return new FileCollectionIterator(files, *absolute);
}

SmartPtr<File const> FileCollectionIterator::getNext() {
  return given_ < files_.size() ? files_[given_++] : nullptr;
}

KVBASE_REGISTER_CLASS(FileCollectionIterator, FileIterator)

}  // namespace KV_1_1
