// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/core/base_node.h"
#include "kvbase/export.h"
#include "kvbase/platform/types.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

// A mix-in without data and operations.
class KVMessages {};

// What a Directory and a File have in common: a path held as fields, whose texts are built on demand. Nothing but the
// operations that say so reaches the disk.
//
// The notation is that of Windows on every system: "C:\a\b.txt", "\\server\share\x", "\a" (from the root of the current
// drive; on Linux the native root), relative paths with or without a drive. What stands on the disk of another system
// is mapped to it below this interface.
//
// Ownership: objects live on the heap under SmartPtr, nearly always as SmartPtr<Directory const> and
// SmartPtr<File const>. An operation that would change a path gives a new object.
// Thread rule: a path that nobody changes may be used on any threads. setName and assignment must not meet a reader.
// Failure: by result (null, false, a code); in places also by a message to reportError. Nothing is thrown but
// std::bad_alloc. Nothing is retried, nothing waits, and what was done before a failure stays done. Links on Linux: a
// name that ends in a separator, as every directory's does, looks through a link. One that does not, as every file's,
// is the link itself where it leads to a directory or to nothing, and else the file that it leads to. In a search a
// link is a file. So no walk leaves its tree through a link.
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
  // Does nothing: there are no fields here, and the count stays.
  FileSystemItem& operator=(FileSystemItem const&) { return *this; }

  mZClass const* getClassType() const override;

  // Asks the disk: is there such an item of this kind? A file is anything but a directory.
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

  // Whether the item is there and can be opened: 4 to read, 2 to write, 6 for both; other bits count for nothing, so 0
  // and 8 ask for no access at all. False if exists() is. On Linux a file without the right to write for its owner
  // cannot be opened to write, whoever asks.
  bool access(int mode) const;
  // The status record of the C runtime. The separator at the end of the full name is cut first, and so is that of a
  // root: "C:" asks for "C:", the current directory of that drive, and "" for nothing, which fails. That is meant to
  // stay so. `status` is left alone on failure (on Windows: as the runtime does); a file of more than 2 GB has no such
  // record.
  bool stat(struct _stat64i32& status) const;
  // The times, in units of 100 ns since the beginning of 1601, UTC. False if the disk does not tell; `time` is then
  // left alone. Where a file system knows no creation time, the older of the last write and the last change stands for
  // it.
  // REQUIRES: the argument is not null.
  bool getCreationTime(FILETIME* time) const;
  bool getLastWriteTime(FILETIME* time) const;

  static mZClass const* Class();
  static void initStatics();
  static void clearStatics();

  // Where every message of the path classes goes. Does nothing: the result of the operation is all that its caller
  // sees.
  static void reportError(String const& message);

  class ClassCreator;

 protected:
  ~FileSystemItem() override;
};

class KVBASE_API FileSystemItem::ClassCreator : public mZClass {
 public:
  using mZClass::mZClass;
  ~ClassCreator() override;
};

}  // namespace KV_1_1
