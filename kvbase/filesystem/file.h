// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string_view>

#include "kvbase/core/smart_ptr.h"
#include "kvbase/export.h"
#include "kvbase/filesystem/directory.h"
#include "kvbase/filesystem/file_system_item.h"
#include "kvbase/platform/types.h"
#include "kvbase/strings/kv_string.h"

class IProgress;

namespace KV_1_1 {

class FileIterator;
class FileSystemIterator;

// A file path: a directory, a base name, and the extension behind the last dot. See FileSystemItem for ownership,
// threads and failure.
//
//   name       base name   extension
//   a.txt      a           txt
//   a.b.c      a.b         c
//   b          b           EMPTY
//   .hidden    EMPTY       hidden
//
// REQUIRES: of a file without a directory, as makeAbsolute may give it, nothing is called but isAbsolute, makeAbsolute,
// getDirectory and what concerns its name alone.
class KVBASE_API File : public FileSystemItem {
 public:
  // Results of copy, which are plain numbers.
  enum : int { CopyOk = 0, CopyFailed = 18, CopyDiskFull = 221 };
  // Results of the read-only family.
  enum : int {
    ReadOnlyOk = 0,        // nothing was to be done, or the system was asked to do it
    ReadOnlyNoFile = 168,  // the attributes cannot be read, as those of a missing file
  };

  // Shares the directory and the texts; the new object is unowned.
  File(File const& other);
  File& operator=(File const& other);

  // --- Parsing (path_parsing.cpp) ------------------------------------------------------------------------------------

  // Splits at the last backslash, slash or colon and reads the directory in front. Null with the message of
  // Directory::fromString where that fails; null without a message for a NIL or empty text and for a name that is
  // invalid, "." or "..".
  //   a.txt => .\a.txt      C:b.txt => C:b.txt      a\ => null      a.txt:stream => null
  static SmartPtr<File> fromString(String const& text);
  // The same from its two parts; shares the directory.
  // REQUIRES: the directory is owned through SmartPtr, not an object on the stack.
  static SmartPtr<File> fromString(Directory const& directory, String const& name);

  // --- Texts (path_text.cpp) -----------------------------------------------------------------------------------------

  // The directory's name followed by getName.
  String const getFullName() const override;
  String getFullNameUnicode() const override;
  String const getFullNameUnix() const override;
  // Base name, and a dot and the extension unless that is NIL or empty.
  String const getName() const override;
  // Splits at the last dot; without one the extension is EMPTY. COMPAT: nothing is checked, so a name can hold
  // separators and wildcards; NIL gives a NIL base name.
  //   a. => base name a, extension EMPTY, so the name is a
  void setName(String const& name) override;

  // --- Algebra (path_algebra.cpp) ------------------------------------------------------------------------------------

  String const getBaseName() const { return baseName_; }
  String const getExtension() const { return extension_; }
  // Null only for a file that makeAbsolute gave without one.
  SmartPtr<Directory const> getDirectory() const { return directory_; }
  bool isAbsolute() const { return directory_ != nullptr && directory_->isAbsolute(); }
  // A copy with another extension. COMPAT: it is not checked, and a leading dot makes two dots.
  SmartPtr<File const> replaceExtension(String const& extension) const;
  // This object if it is absolute, else the same name in the directory made absolute. COMPAT: if the directory has no
  // absolute form the result is a file whose directory is null; of such a file, a new file without any name.
  SmartPtr<File const> makeAbsolute() const;
  // With its directory made relative (Directory::makeRelative); null where that is null.
  // REQUIRES: the reference is not null.
  SmartPtr<File const> makeRelative(SmartPtr<Directory const> const& reference) const;
  // The directories by Directory::equals, then base name and extension without case. COMPAT: a NIL extension and an
  // EMPTY one differ, although the full names are equal.
  ComparisonResult equals(SmartPtr<File const> const& other) const;

  // --- The disk (file_operations.cpp, file_copy.cpp) -----------------------------------------------------------------

  bool exists() const override;

  // Copies contents, attributes and time of the last write: CopyOk, CopyDiskFull, or CopyFailed for any other reason,
  // such as a target that exists when `overwrite` is false, a target that is read-only or is this very file, a missing
  // folder. A failed copy leaves no half-made file. The progress gets the part that is done, from 0 to 1, on this
  // thread, and cannot stop the copy. The last value is 1. COMPAT: for an empty file the only value is not a number.
  // The progress may be null; it is not kept.
  // REQUIRES: the target is not null.
  int copy(SmartPtr<File const> target, bool overwrite, std::shared_ptr<IProgress> progress) const;
  int copy(SmartPtr<File const> target, bool overwrite) const;
  // Copies into a directory under this name. The new file, null on failure.
  // REQUIRES: the directory is not null.
  SmartPtr<File const> copy(SmartPtr<Directory const> directory, bool overwrite) const;

  // Moves or renames. False for null; false, with a message, if it fails, as onto another file that exists.
  bool move(SmartPtr<File const> target) const;
  // True if there is no such file, or no longer. COMPAT: true also for the name of a directory, which stays. False,
  // with a message, if it cannot be deleted; a read-only file cannot.
  bool remove() const;
  // Makes an empty file if there is none, else sets the time of its last write to now. False if it cannot be opened to
  // write or the time cannot be set. COMPAT: the file is then opened once more and flushed to the disk; whether that
  // succeeds does not count.
  bool touch() const;

  // On Linux: whether its owner has no right to write. COMPAT: true for a missing file too.
  bool isReadOnly() const;
  // ReadOnlyNoFile or ReadOnlyOk. The system is asked only if something is to change. COMPAT: ReadOnlyOk even if it
  // refuses.
  int setAsReadOnly() const;
  int unsetAsReadOnly() const;
  int setReadOnly(bool readOnly) const;

  // The size in bytes, without opening the file; for a directory of that name what the system gives. False on failure,
  // with `size` left alone.
  bool getFileSize(ULARGE_INTEGER& size) const;
  // Whether both sizes are known and equal. COMPAT: this very object is equal without a look at the disk, even if the
  // file is missing.
  // REQUIRES: `other` is not null.
  bool hasEqualSize(SmartPtr<File const> const& other) const;

  // Has the desktop open the file with the program meant for it, without waiting for it. False if there is no such
  // file, program or desktop. COMPAT: the system's answer 32 counts as success here, though not in
  // Directory::openInExplorer, and the working directory is the text "%HOMEPATH%", not expanded.
  bool openWithDefaultApp() const;
  // The same for a path or an address; NIL fails.
  static bool openWithDefaultApp(String const& name);
  // Has the desktop's file browser show the folder with this file selected. False for a relative path, a missing file,
  // or without a file browser.
  bool showInExplorer() const;

  // Makes the directories above this file that are missing, from the top down. True if there is nothing to make. False
  // at the first failure, with the message of Directory::create; what was made stays.
  bool createParentDirectories() const;

  // --- Class ---------------------------------------------------------------------------------------------------------

  KVBASE_DECLARE_CLASS(File, KVBASE_API);

 protected:
  ~File() override;

 private:
  friend class Directory;
  friend class FileIterator;
  friend class FileSystemIterator;
  friend class SystemName;

  // Base name and extension NIL, in a default directory.
  File();
  // Base name and extension NIL, in this directory, which may be null.
  explicit File(SmartPtr<Directory const> directory);

  // The two-argument fromString for a directory that may be null; and for a name that is no String yet.
  static SmartPtr<File> inDirectory(Directory const* directory, String const& name);
  static SmartPtr<File> named(SmartPtr<Directory const> directory, std::basic_string_view<wchar> name);

  String baseName_;
  SmartPtr<Directory const> directory_;
  String extension_;
};

}  // namespace KV_1_1
