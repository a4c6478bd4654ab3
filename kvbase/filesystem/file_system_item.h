// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/core/base_node.h"
#include "kvbase/export.h"
#include "kvbase/platform/types.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

// A mix-in without data and operations.
class KVMessages {};

// What a Directory and a File have in common: a parsed path, whose texts are built on demand. Nothing but the operations
// that say so reaches the disk.
//
// The notation is that of Windows on every system: "C:\a\b.txt", "\\server\share\x", "\a" (from the root of the current
// drive; on Linux the native root), relative paths with or without a drive. What stands on the disk of another system
// is mapped to it below this interface.
//
// Ownership: objects live on the heap under SmartPtr, nearly always as SmartPtr<Directory const> and
// SmartPtr<File const>. An operation that would change a path gives a new object.
// Thread rule: a path that nobody changes may be used on any threads. setName and assignment must not meet a reader.
// Failure: by result (null, false, a code); in places also by a message to reportError. Nothing is thrown but
// std::bad_alloc. Nothing is retried, nothing waits, and what was done before a failure stays done.
// Links on Linux: a name that ends in a separator, as every directory's does, stands for what the link leads to. A name
// that does not, as every file's, stands for the link itself if that leads to a directory or to nothing, and otherwise
// for the file that it leads to. A search gives a link as a file, so no walk leaves its tree through a link.
// COMPAT: the system gets the prefixed name, with which Windows takes paths of 260 code units and more, from most
// operations but not from stat, the read-only family, openWithDefaultApp, the flush in touch and all searches.
class KVBASE_API KVBASE_EMPTY_BASES FileSystemItem : public BaseNode, private KVMessages {
 public:
  // The result of Directory::equals and File::equals.
  enum ComparisonResult {
    Incomparable = 0,  // the other path is null or could not be made absolute
    Equal = 1,
    Different = 2,
  };

  FileSystemItem() {}
  FileSystemItem(FileSystemItem const& other) : BaseNode(other), KVMessages() {}
  // There are no fields to assign, and the reference count stays.
  FileSystemItem& operator=(FileSystemItem const&) { return *this; }

  // Whether the disk has an item of this kind under this name. A file is anything but a directory.
  virtual bool exists() const = 0;
  // The path for display; a directory ends in a separator.
  virtual String const getFullName() const = 0;
  // The same with the long-path prefix "\\?\" or "\\?\UNC\" if it is absolute.
  virtual String getFullNameUnicode() const = 0;
  // The same with slashes.
  virtual String const getFullNameUnix() const = 0;
  // The last level or the file's name.
  virtual String const getName() const = 0;
  // Changes the last level or the file's name in place.
  virtual void setName(String const& name) = 0;

  // --- The disk (item_queries.cpp) -----------------------------------------------------------------------------------

  // Whether the item is there and can be opened: 4 to read, 2 to write, 6 for both. COMPAT: other bits are ignored, so
  // with 0 or 8 it is opened without any access. False if exists() is. On Linux a file without the right to write for
  // its owner cannot be opened to write, whoever asks.
  bool access(int mode) const;
  // The status record of the C runtime, by the full name without the separator at its end. COMPAT: that of a root is
  // cut too, so "C:\" asks for "C:", the current directory of that drive, and "\" for the empty name, which fails.
  // False on failure and for a file of 2 GB or more; `status` is then left alone (on Windows as the runtime does it).
  bool stat(struct _stat64i32& status) const;
  // The times, in steps of 100 ns since the beginning of 1601, UTC. False on failure, with `time` left alone. Where the
  // file system has no creation time it is the older of the last write and the last change.
  // REQUIRES: the argument is not null.
  bool getCreationTime(FILETIME* time) const;
  bool getLastWriteTime(FILETIME* time) const;

  KVBASE_DECLARE_CLASS(FileSystemItem, KVBASE_API);

  // Every message of the path classes goes here. COMPAT: it does nothing, so the caller sees the result alone.
  static void reportError(String const& message);

 protected:
  ~FileSystemItem() override;
};

}  // namespace KV_1_1
