// SPDX-License-Identifier: MIT
//
// The iterators that Directory's find functions give:
//
//   SmartPtr<FileIterator> files = folder->findFiles(KVW("*.txt"));
//   while (SmartPtr<File const> file = files->getNext()) use(*file);
//
// A null item is the end. COMPAT: an entry whose name is invalid here (on Windows one can end in a blank or a dot)
// comes as null too, and a further getNext goes on behind it. Hidden entries are given like all others, "." and ".."
// never.
//
// Thread rule: one iterator belongs to one thread at a time; several iterators on one directory may run side by side.
#pragma once

#include "kvbase/core/base_node.h"
#include "kvbase/core/smart_ptr.h"
#include "kvbase/export.h"
#include "kvbase/filesystem/directory.h"
#include "kvbase/filesystem/file.h"
#include "kvbase/platform/file_api.h"

namespace KV_1_1 {

// Files and directories. COMPAT: a copy shares the handle of the running search, so copy and source disturb each other
// and the first to end closes it: keep an iterator in its SmartPtr and do not copy it.
class KVBASE_API FileSystemIterator : public BaseNode {
 public:
  FileSystemIterator(FileSystemIterator const& other);
  // COMPAT: the search that this iterator held is not closed.
  FileSystemIterator& operator=(FileSystemIterator const& other);

  // The next item; null at the end. COMPAT: not virtual, so through this class an iterator of files gives directories
  // too.
  SmartPtr<FileSystemItem const> getNext();

  KVBASE_DECLARE_CLASS(FileSystemIterator, KVBASE_API);

 protected:
  friend class Directory;

  // Starts the search; an iterator that finds nothing is finished at once.
  // REQUIRES: the directory is owned through SmartPtr.
  FileSystemIterator(Directory const& directory, String const& pattern);
  ~FileSystemIterator() override;

  // Moves to the next entry; at the end, or on an error, the search is closed and the iterator finished.
  void next();
  bool atDirectory() const { return (findData_.attributes & platform::kAttributeDirectory) != 0; }
  bool atDots() const;

  bool finished_;
  SmartPtr<Directory const> directory_;
  platform::FindData findData_;  // the entry to look at next
  platform::SearchHandle findHandle_;
};

// Directories only.
class KVBASE_API DirectoryIterator : public FileSystemIterator {
 public:
  DirectoryIterator(DirectoryIterator const&) = default;
  DirectoryIterator(DirectoryIterator&& other) : DirectoryIterator(static_cast<DirectoryIterator const&>(other)) {}
  DirectoryIterator& operator=(DirectoryIterator const&) = default;
  DirectoryIterator& operator=(DirectoryIterator&& other) {
    return *this = static_cast<DirectoryIterator const&>(other);
  }
  ~DirectoryIterator() override;

  // The next directory; null at the end.
  SmartPtr<Directory const> getNext();

  KVBASE_DECLARE_CLASS(DirectoryIterator, KVBASE_API);

 private:
  friend class Directory;

  DirectoryIterator(Directory const& directory, String const& pattern) : FileSystemIterator(directory, pattern) {}
};

// Files only; on Linux a link that leads to a directory is a file.
class KVBASE_API FileIterator : public FileSystemIterator {
 public:
  FileIterator(FileIterator const&) = default;
  FileIterator(FileIterator&& other) : FileIterator(static_cast<FileIterator const&>(other)) {}
  FileIterator& operator=(FileIterator const&) = default;
  FileIterator& operator=(FileIterator&& other) { return *this = static_cast<FileIterator const&>(other); }
  ~FileIterator() override;

  // The next file; null at the end.
  virtual SmartPtr<File const> getNext();

  KVBASE_DECLARE_CLASS(FileIterator, KVBASE_API);

 protected:
  friend class Directory;

  FileIterator(Directory const& directory, String const& pattern) : FileSystemIterator(directory, pattern) {}
};

}  // namespace KV_1_1
