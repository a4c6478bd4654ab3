// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "kvbase/core/smart_ptr.h"
#include "kvbase/export.h"
#include "kvbase/filesystem/file_system_item.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

class DirectoryIterator;
class File;
class FileIterator;
class FileSystemIterator;
class KVFileProgressInterface;

// A directory path: a root, whether it starts there, and the levels below. See FileSystemItem for ownership, threads
// and failure.
//
//   text                      absolute   root           levels     full name
//   C:\a\b                    yes        C:             a, b       C:\a\b\ .
//   c:/a/../b//               yes        C:             b          C:\b\ .
//   C:a                       no         C:             a          C:a\ .
//   \a                        yes        NIL            a          \a\ .
//   a\.\..\b                  no         NIL            a ., .. b  a\.\..\b\ .
//   \\srv\share\x             yes        \\srv\share    x          \\srv\share\x\ .
//   (empty or NIL)            no         NIL                       .\ .
class KVBASE_API Directory : public FileSystemItem {
 public:
  // The relative path to the current directory: ".\".
  Directory() {}
  // Shares the texts of the levels; the new object is unowned.
  Directory(Directory const& other);
  Directory& operator=(Directory const& other);

  // --- Parsing (path_parsing.cpp) ------------------------------------------------------------------------------------

  // Reads a path text up to its first NUL. Slashes are backslashes; doubled and trailing separators are dropped; an
  // absolute path with a drive or without any root is normalised, a relative path and a share keep "." and "..". The
  // prefixes "\\?\UNC\" and "\\?\" are cut, compared exactly: "\\?\unc\srv\share" is a relative path. Null, with a
  // message, for an invalid name in any level, an invalid drive letter, a share without server and name, and ".."
  // beyond the root.
  static SmartPtr<Directory> fromString(String const& text);
  // The same from UTF-8; null is NIL.
  static SmartPtr<Directory> fromUTF8(char const* text);
  static SmartPtr<Directory> fromUTF8(std::string const& text);

  // --- Texts (path_text.cpp) -----------------------------------------------------------------------------------------

  // Root, separator if absolute, and each level with a separator behind it; ".\" if that is nothing.
  String const getFullName() const override;
  //   C:\a\ => \\?\C:\a\      \\srv\share\ => \\?\UNC\srv\share\      \a\ => \\?\\a\      a\ => a\ .
  String getFullNameUnicode() const override;
  //   C:\a\ => C:/a/      \\srv\share\ => //srv/share/      .\ => ./
  String const getFullNameUnix() const override;
  // The last level; "." if there are none, for a root directory too.
  String const getName() const override;
  // Replaces the last level. Nothing happens, without a message, if there is none or the name is invalid; "." and ".."
  // are valid.
  void setName(String const& name) override;

  // --- Algebra (path_algebra.cpp) ------------------------------------------------------------------------------------

  // "C:", "\\srv\share" or NIL.
  String getRoot() const { return root_; }
  bool isAbsolute() const { return absolute_; }
  // Without the last level, whatever it is: the parent of "a\.." is "a". Null if there are no levels.
  SmartPtr<Directory const> getParent() const;
  // With one more level, not normalised: "." and ".." stay. Null, with a message, for an invalid name.
  SmartPtr<Directory const> appendLevel(String const& level) const;
  // With the levels of a relative path behind its own, normalised even if the result is relative. The root of `path` is
  // ignored. Null, with a message, for an absolute path and for ".." beyond the first level.
  //   C:\a + ..\b => C:\b\      a + .. => .\      C:\a + ..\.. => null
  SmartPtr<Directory const> appendPath(Directory const& path) const;
  // The same for any path, absolute ones taken as if relative; null gives this object. Where ".." leads beyond the
  // first level there is a message, and the path as far as it got is the result. That is meant to stay so.
  SmartPtr<Directory const> combine(SmartPtr<Directory const> const& path) const;
  // The file's directory combined, and its name; null for null.
  SmartPtr<File const> combine(SmartPtr<File const> const& file) const;
  // This object if it is absolute, also without a drive; otherwise behind the current directory of the process, or of
  // the drive. Null, with a message, if there is no such current directory or ".." leads beyond its root.
  SmartPtr<Directory const> makeAbsolute() const;
  // The way from `reference` to this directory, both made absolute first: ".." for each level of the reference behind
  // the common ones, then what remains of this path. Levels compare without case. With different drives the absolute
  // form of this path. Server and share are not compared, nor a drive-less path told from another: a way is built
  // between any two of them. That is meant to stay so. Null, with a message, if either has no absolute form.
  //   C:\a\b from C:\A\c\d => ..\..\b\      C:\a\b from itself => .\      C:\a\b from D:\x => C:\a\b\ .
  // REQUIRES: the reference is not null.
  SmartPtr<Directory const> makeRelative(SmartPtr<Directory const> const& reference) const;
  // Whether this full name occurs in the item's full name, anywhere and with case: "\a\" contains "C:\a\b". That is
  // meant to stay so. A directory contains itself; "C:\a\" does not contain "C:\ab\".
  bool contains(FileSystemItem const& item) const;
  // Root and levels compared without case, nothing normalised. If one path is absolute and the other is not, the
  // relative one is made absolute first. Never looks at the disk. A NIL root differs from an EMPTY one.
  ComparisonResult equals(SmartPtr<Directory const> const& other) const;

  // --- The disk (directory_operations.cpp) ---------------------------------------------------------------------------

  bool exists() const override;
  // The same question as exists.
  virtual bool isDirectory() const;
  // Whether it is there and has no entries. (The function of Windows behind it knows no path over 260 units: false.)
  bool isEmpty() const;

  // Makes the directory and all that are missing above it, a relative path below the current directory. True if it is
  // there already, and also if a file has its name, although there is no directory then. That is meant to stay so.
  // False, with a message, if the drive or share is missing or a level cannot be made; levels made by then stay.
  bool create() const;
  // Removes the directory; `recursive`, with all that is in it, stopping at the first item that cannot be removed. True
  // if it is not there. False, with a message, if it is not empty or cannot be removed. What was removed by then is
  // gone.
  bool remove(bool recursive) const;
  // Removes the files in it; `recursive`, first the directories with all that is in them. Read-only files are not made
  // writable: the first one ends it with false and a message. True if the directory is not there.
  bool removeContents(bool recursive) const;
  // Copies what is in this directory into `target`: first the directories in it, with their contents if `recursive`,
  // else empty; then the files. Stops with false, without a message, at the first file that cannot be copied, for
  // instance because it exists and `overwrite` is false. With `overwrite` a directory that cannot be made is forgiven;
  // its contents, if they are to be copied, end it all the same. That is meant to stay so. False if either directory is
  // missing; the target itself is not made. `progress`, if not null, is told of each file copied; it is neither kept
  // nor deleted. A target inside this directory is copied into itself, level by level, until a path is too long, which
  // ends it with false.
  // REQUIRES: the target is not null.
  bool copyContents(SmartPtr<Directory const> target, bool recursive, bool overwrite,
                    KVFileProgressInterface* progress) const;
  // Has the desktop's file browser show the directory. False for a relative path, a missing directory, or without a
  // desktop.
  bool openInExplorer() const;

  // --- Searches (directory_search.cpp) -------------------------------------------------------------------------------

  // A search of this directory, made absolute first, for one name pattern with the wildcards * and ?. Matching is
  // without case; "*.*" matches names without a dot too. The items found are absolute. Null, with a message, for a
  // pattern that is empty, ".", "..", ends in a blank or dot or holds any of <>:"\/| or a control unit; null also where
  // makeAbsolute gives null. A directory that is missing or unreadable gives an iterator without items.
  SmartPtr<FileSystemIterator> findContents(String const& pattern) const;
  SmartPtr<DirectoryIterator> findDirectories(String const& pattern) const;
  SmartPtr<FileIterator> findFiles(String const& pattern) const;

  // All matches of such searches: the matching directories, then the matching files, then, with `recursive`, the same
  // for each subdirectory, matching or not. Within a group the order is the system's. An invalid pattern gives nothing,
  // with a message for each level walked. On Linux a link is not walked; on Windows one that is a directory is, so a
  // circle ends only where the system ends it.
  std::vector<SmartPtr<FileSystemItem const>> collectContents(String const& pattern, bool recursive) const;
  std::vector<SmartPtr<Directory const>> collectDirectories(String const& pattern, bool recursive) const;
  std::vector<SmartPtr<File const>> collectFiles(String const& pattern, bool recursive) const;

  // --- Class ---------------------------------------------------------------------------------------------------------

  mZClass const* getClassType() const override;
  static mZClass const* Class();
  static void initStatics();
  static void clearStatics();
  class ClassCreator;

 protected:
  ~Directory() override;

 private:
  friend class File;

  // The forms of the full name: getFullName, getFullNameUnicode, getFullNameUnix.
  enum class Form { kPlain, kLong, kUnix };

  Directory(bool absolute, String root, std::vector<String> levels);

  // fromString in the caller's memory.
  // REQUIRES (all three): no NUL in the text.
  static SmartPtr<Directory> fromText(std::basic_string_view<wchar> text);
  // Without prefix; a share without its two leading separators too, and with what messages show behind the text.
  static SmartPtr<Directory> fromStringLocal(std::basic_string_view<wchar> text);
  static SmartPtr<Directory> fromStringUNC(std::basic_string_view<wchar> text, wchar const* behind);

  // The full name in a form, and the name of a file behind it.
  String text(Form form, String const& baseName, String const& extension) const;
  // Resolves "." and ".." in place. False, with a message, for ".." beyond the first level; the levels are then as far
  // as it got.
  bool normalize();
  // The capital letter of a drive root, 0 for any other root.
  wchar getDriveLetter() const;
  // A copy with the levels of `path` behind its own.
  SmartPtr<Directory> withLevelsOf(Directory const& path) const;

  template <class Iterator>
  SmartPtr<Iterator> find(String const& pattern) const;
  void collectContentsInternal(std::vector<SmartPtr<FileSystemItem const>>& output, String const& pattern,
                               bool recursive) const;
  void collectDirectoriesInternal(std::vector<SmartPtr<Directory const>>& output, String const& pattern,
                                  bool recursive) const;
  void collectFilesInternal(std::vector<SmartPtr<File const>>& output, String const& pattern, bool recursive) const;

  bool absolute_ = false;
  std::vector<String> levels_;
  String root_;
};

class KVBASE_API Directory::ClassCreator : public mZClass {
 public:
  using mZClass::mZClass;
  ~ClassCreator() override;
};

}  // namespace KV_1_1
