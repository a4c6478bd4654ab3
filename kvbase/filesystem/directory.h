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

// A directory path: a root, whether it starts there, and the levels below, kept as one text. The names and texts that it
// gives are new Strings. See FileSystemItem for ownership, threads and failure.
//
//   text              full name           absolute   root           levels
//   C:\a\b            C:\a\b\             yes        C:             a, b
//   c:/a/../b//       C:\b\               yes        C:             b
//   C:a               C:a\                no         C:             a
//   \a                \a\                 yes        NIL            a
//   a\.\..\b          a\.\..\b\           no         NIL            a, ., .., b
//   \\srv\share\x     \\srv\share\x\      yes        \\srv\share    x
//   (empty or NIL)    .\                  no         NIL            none
class KVBASE_API Directory : public FileSystemItem {
 public:
  // The relative path to the current directory: ".\".
  Directory() {}
  // Shares the text; the new object is unowned.
  Directory(Directory const& other);
  Directory& operator=(Directory const& other);

  // --- Parsing (path_parsing.cpp) ------------------------------------------------------------------------------------

  // Reads a path text up to its first NUL. Slashes are backslashes; doubled and trailing separators are dropped; an
  // absolute path with a drive or without any root is normalised, a relative path and a share keep "." and "..". The
  // prefixes "\\?\UNC\" and "\\?\" are cut. COMPAT: they are compared with case, so "\\?\unc\srv\share" is a relative
  // path. Null, with a message, for an invalid name in any level, an invalid drive letter, a share without server and
  // name, and ".." beyond the root.
  static SmartPtr<Directory> fromString(String const& text);
  // The same from UTF-8; null is NIL.
  static SmartPtr<Directory> fromUTF8(char const* text);
  static SmartPtr<Directory> fromUTF8(std::string const& text);

  // --- Texts (path_text.cpp) -----------------------------------------------------------------------------------------

  // Root, separator if absolute, and each level with a separator behind it; ".\" if that is nothing.
  String const getFullName() const override;
  //   C:\a\ => \\?\C:\a\      \\srv\share\ => \\?\UNC\srv\share\      \a\ => \\?\\a\      a\ => a\ (no prefix)
  String getFullNameUnicode() const override;
  //   C:\a\ => C:/a/      \\srv\share\ => //srv/share/      .\ => ./
  String const getFullNameUnix() const override;
  // The last level; "." if there are none, for a root directory too.
  String const getName() const override;
  // Replaces the last level. "." and ".." are valid names. COMPAT: nothing happens, and there is no message, if there
  // is no level or the name is invalid.
  void setName(String const& name) override;

  // --- Algebra (path_algebra.cpp) ------------------------------------------------------------------------------------

  // "C:", "\\srv\share" or NIL.
  String getRoot() const;
  bool isAbsolute() const { return absolute_; }
  // The path without its last level; null if there are no levels. COMPAT: the level is cut whatever it is, so the
  // parent of "a\.." is "a".
  SmartPtr<Directory const> getParent() const;
  // With one more level, not normalised: "." and ".." stay. Null, with a message, for an invalid name.
  SmartPtr<Directory const> appendLevel(String const& level) const;
  // With the levels of a relative path behind its own, normalised even if the result is relative. The root of `path` is
  // ignored. Null, with a message, for an absolute path and for ".." beyond the first level.
  //   C:\a + ..\b => C:\b\      a + .. => .\      C:\a + ..\.. => null
  SmartPtr<Directory const> appendPath(Directory const& path) const;
  // Like appendPath, but for any path: an absolute one is taken as if it were relative, null gives this object. COMPAT:
  // where ".." leads beyond the first level there is a message, and the result is the path without any level.
  SmartPtr<Directory const> combine(SmartPtr<Directory const> const& path) const;
  // The file of the same name in the combined directory; null for null, and for a file whose name is invalid.
  SmartPtr<File const> combine(SmartPtr<File const> const& file) const;
  // This object if it is absolute, also without a drive; otherwise its levels behind those of the current directory of
  // the process, or of its drive. Null, with a message, if there is no such current directory, if its text is no valid
  // path, or if ".." leads beyond its root.
  SmartPtr<Directory const> makeAbsolute() const;
  // The relative path from `reference` to this directory, both made absolute first: ".." for each level of the
  // reference behind the common ones, then what remains of this path. Levels compare without case. With different
  // drives the absolute form of this path. COMPAT: only drives are compared, so two shares, or a share and a path
  // without a drive, give a relative path that leads nowhere. Null, with a message, if either has no absolute form.
  //   C:\a\b from C:\A\c\d => ..\..\b\      C:\a\b from itself => .\      C:\a\b from D:\x => C:\a\b\ (another drive)
  // REQUIRES: the reference is not null.
  SmartPtr<Directory const> makeRelative(SmartPtr<Directory const> const& reference) const;
  // Whether this full name occurs in the item's full name. A directory contains itself; "C:\a\" does not contain
  // "C:\ab\". COMPAT: it may occur anywhere, and case counts: "\a\" contains "C:\a\b", "\A\" does not.
  bool contains(FileSystemItem const& item) const;
  // Root and levels compared without case, nothing normalised. If one path is absolute and the other is not, the
  // relative one is made absolute first. Never looks at the disk. COMPAT: the default path and the parsed "." differ,
  // although their full names are equal.
  ComparisonResult equals(SmartPtr<Directory const> const& other) const;

  // --- The disk (directory_operations.cpp) ---------------------------------------------------------------------------

  bool exists() const override;
  // The same as exists.
  virtual bool isDirectory() const;
  // Whether it is there and has no entries. False on Windows for a path of 260 code units or more, which the function
  // of the system does not take.
  bool isEmpty() const;

  // Makes the directory and all that are missing above it; a relative path lies below the current directory. True if it
  // is there already. COMPAT: true also if a file has its name, although there is no directory then. False, with a
  // message, if the drive or share is missing or a level cannot be made; levels made by then stay.
  bool create() const;
  // Removes the directory; `recursive`, with all that is in it, stopping at the first item that cannot be removed. True
  // if it is not there. False, with a message, if it is not empty or cannot be removed; what has been removed by then
  // stays removed.
  bool remove(bool recursive) const;
  // Removes the files in it; `recursive`, first the directories with all that is in them. Read-only files are not made
  // writable: the first one ends it with false and a message. True if the directory is not there.
  bool removeContents(bool recursive) const;
  // Copies what is in this directory into `target`: first the directories in it, with their contents if `recursive`,
  // else empty; then the files. False, without a message, if either directory is missing (the target is not made), and
  // at the first file that cannot be copied, for instance because it exists and `overwrite` is false. COMPAT: with
  // `overwrite` a directory that cannot be made is passed over, but if its contents are to be copied too, that fails,
  // as the directory is missing. COMPAT: a target inside this directory is copied into itself, level by level, until a
  // path is too long, which ends it with false. `progress`, if not null, is called for each file copied; it is neither
  // kept nor deleted.
  // REQUIRES: the target is not null.
  bool copyContents(SmartPtr<Directory const> target, bool recursive, bool overwrite,
                    KVFileProgressInterface* progress) const;
  // Has the desktop's file browser show the directory. False for a relative path, a missing directory, or without a
  // desktop.
  bool openInExplorer() const;

  // --- Searches (directory_search.cpp) -------------------------------------------------------------------------------

  // A search of this directory, made absolute first, for one name pattern with the wildcards * and ?. Matching is
  // without case; "*.*" matches names without a dot too. The items found are absolute. Null, with a message, for a
  // pattern that is empty, ".", "..", ends in a blank or dot or holds any of <>:"\/| or a code unit below 0x20; null
  // also where makeAbsolute gives null. A directory that is missing or unreadable gives an iterator without items.
  SmartPtr<FileSystemIterator> findContents(String const& pattern) const;
  SmartPtr<DirectoryIterator> findDirectories(String const& pattern) const;
  SmartPtr<FileIterator> findFiles(String const& pattern) const;

  // All matches of such searches: the matching directories, then the matching files, then, with `recursive`, the same
  // for each subdirectory, matching or not. Within a group the order is the system's. COMPAT: an invalid pattern gives
  // nothing, but the whole tree is walked, with a message for each search. On Linux a link is not followed; on Windows
  // one that is a directory is, so a cycle of links ends only at the system's limit.
  std::vector<SmartPtr<FileSystemItem const>> collectContents(String const& pattern, bool recursive) const;
  std::vector<SmartPtr<Directory const>> collectDirectories(String const& pattern, bool recursive) const;
  std::vector<SmartPtr<File const>> collectFiles(String const& pattern, bool recursive) const;

  // --- Class ---------------------------------------------------------------------------------------------------------

  KVBASE_DECLARE_CLASS(Directory, KVBASE_API);

 protected:
  ~Directory() override;

 private:
  friend class File;
  friend class SystemName;

  // The forms of the full name: getFullName, getFullNameUnicode, getFullNameUnix.
  enum class Form { kPlain, kLong, kUnix };

  // REQUIRES: the text is as path_ is; the root is its first units.
  Directory(bool absolute, int rootUnits, String path);

  // fromString without a copy of the text.
  // REQUIRES (all three): no NUL in the text.
  static SmartPtr<Directory> fromText(std::basic_string_view<wchar> text);
  // The text without its prefix; that of a share without its two leading separators, and with what messages show behind
  // it (null: nothing).
  static SmartPtr<Directory> fromStringLocal(std::basic_string_view<wchar> text);
  static SmartPtr<Directory> fromStringUNC(std::basic_string_view<wchar> text, wchar const* behind);

  // The root with the separator behind it, and the levels, each with a separator behind it.
  std::basic_string_view<wchar> front() const;
  std::basic_string_view<wchar> levels() const;
  // The full name in a form, followed by the name of a file. `start` gets its size and gives a builder for it.
  String text(Form form, String const& baseName, String const& extension) const;
  template <class Start>
  KVBASE_LOCAL auto build(Form form, String const& baseName, String const& extension, Start start) const;
  // Resolves "." and ".." in place. False, with a message, for ".." beyond the first level; there are no levels then.
  bool normalize();
  // The capital letter of a drive root, 0 for any other root.
  wchar getDriveLetter() const;
  // A copy with the levels of `path` behind its own.
  SmartPtr<Directory> withLevelsOf(Directory const& path) const;

  template <class Iterator>
  KVBASE_LOCAL SmartPtr<Iterator> find(String const& pattern) const;
  void collectContentsInternal(std::vector<SmartPtr<FileSystemItem const>>& output, String const& pattern,
                               bool recursive) const;
  void collectDirectoriesInternal(std::vector<SmartPtr<Directory const>>& output, String const& pattern,
                                  bool recursive) const;
  void collectFilesInternal(std::vector<SmartPtr<File const>>& output, String const& pattern, bool recursive) const;

  bool absolute_ = false;
  int rootUnits_ = 0;
  String path_;  // front and levels: the full name, but NIL or empty for that of the default path
};

}  // namespace KV_1_1
