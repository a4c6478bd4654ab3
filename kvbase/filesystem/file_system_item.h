// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/core/base_node.h"
#include "kvbase/export.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

// A mix-in without data and operations.
class KVMessages {};

// What a Directory and a File have in common: a path held as fields, whose texts are built on demand. Nothing but the
// operations that say so reaches the disk.
//
// The notation is that of Windows on every system: "C:\a\b.txt", "\\server\share\x", "\a" (from the root of the current
// drive; on Linux the native root), relative paths with or without a drive. What stands on the disk of another system is
// mapped to it below this interface.
//
// Ownership: objects live on the heap under SmartPtr, nearly always as SmartPtr<Directory const> and
// SmartPtr<File const>. An operation that would change a path gives a new object.
// Thread rule: a path that nobody changes may be used on any threads. setName and assignment must not meet a reader.
// Failure: by result (null, false, a code); in places also by a message to reportError. Nothing is thrown but
// std::bad_alloc.
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

  static mZClass const* Class();
  static void initStatics();
  static void clearStatics();

  // Where every message of the path classes goes. Does nothing: the result of the operation is all that its caller sees.
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
