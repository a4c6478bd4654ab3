// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <vector>

#include "kvbase/filesystem/file_system_iterator.h"

namespace KV_1_1 {

// The interface of FileIterator over a list that the caller holds.
class KVBASE_API FileCollectionIterator : public FileIterator {
 public:
  // A copy has its own list and position.
  FileCollectionIterator(FileCollectionIterator const&) = default;
  FileCollectionIterator& operator=(FileCollectionIterator const&) = default;

  // Shares the files and copies the list. COMPAT: the current directory is searched once, for nothing.
  // REQUIRES: the process has a current directory.
  static SmartPtr<FileCollectionIterator> create(std::vector<SmartPtr<File const>> const& files);

  // The elements in their order, then null. COMPAT: a null element comes as null, which looks like the end.
  SmartPtr<File const> getNext() override;

  KVBASE_DECLARE_CLASS(FileCollectionIterator, KVBASE_API);

 protected:
  FileCollectionIterator(std::vector<SmartPtr<File const>> const& files, Directory const& directory);
  ~FileCollectionIterator() override;

 private:
  std::vector<SmartPtr<File const>> files_;
  std::size_t given_ = 0;  // the number of elements given so far
};

}  // namespace KV_1_1
