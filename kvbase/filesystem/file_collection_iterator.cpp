// SPDX-License-Identifier: MIT
#include "kvbase/filesystem/file_collection_iterator.h"

#include "kvbase/core/internal/library_class.h"

namespace KV_1_1 {

// The search that the base starts plays no part.
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

FileCollectionIterator::ClassCreator::~ClassCreator() = default;

mZClass const* FileCollectionIterator::getClassType() const {
  return Class();
}

mZClass const* FileCollectionIterator::Class() {
  static LibraryClass<ClassCreator> record(KVW("FileCollectionIterator"), &FileIterator::Class);
  return record.get();
}

void FileCollectionIterator::initStatics() {}

void FileCollectionIterator::clearStatics() {}

}  // namespace KV_1_1
