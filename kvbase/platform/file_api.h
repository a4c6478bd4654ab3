// SPDX-License-Identifier: MIT
//
// The seam to files and folders. The methods correspond to Windows calls but have names of their own, because Windows
// defines macros of those names. Every path is a NUL-terminated text in the notation of this library: backslashes,
// drives, shares, the prefix "\\?\".
//
// A call that fails sets the last error of the thread to its reason (error_api.h); one that succeeds leaves it
// unchanged, unless its contract says otherwise.
//
// Links on Linux: a path that ends in a separator follows a link. Any other path names the link itself if it leads to a
// directory or to nothing, and otherwise the file that it leads to. On Windows links behave as the system has them.
//
// Thread rule: any method may be called from any thread; a search, a file or a descriptor belongs to one thread at a
// time.
#pragma once

#include <cstdint>

#include "kvbase/platform/backend.h"
#include "kvbase/platform/types.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

// Attribute bits of an item.
constexpr ulong32 kAttributeReadOnly = 0x1;
constexpr ulong32 kAttributeHidden = 0x2;
constexpr ulong32 kAttributeDirectory = 0x10;
constexpr ulong32 kAttributeNormal = 0x80;
constexpr ulong32 kAttributeReparsePoint = 0x400;
// The attributes of an item that does not exist or cannot be queried.
constexpr ulong32 kInvalidAttributes = 0xFFFFFFFF;

// The result of one query of an item, without opening it.
struct FileInfo {
  ulong32 attributes;
  std::uint64_t size;  // in bytes; for a directory whatever the system reports
  // In units of 100 ns since the beginning of 1601, UTC. Where a file system records no creation time, this is the
  // older of the times of the last write and of the last change of the item.
  std::uint64_t creationTime = 0;
  std::uint64_t lastWriteTime = 0;
};

// One entry of a directory search.
struct FindData {
  ulong32 attributes;
  wchar name[260];  // NUL-terminated, without folder
};

// A running search; only the backend that returned it knows what it is.
using SearchHandle = void*;
// No search.
inline SearchHandle invalidSearch() {
  return reinterpret_cast<SearchHandle>(static_cast<std::intptr_t>(-1));
}

// Arguments of openFile: access, as bits (0 only checks that the item exists); sharing, what other processes may do
// with the item while it is open; disposition, whether the item must exist; flags.
constexpr ulong32 kAccessRead = 0x80000000;
constexpr ulong32 kAccessWrite = 0x40000000;
constexpr ulong32 kShareRead = 0x1;
constexpr ulong32 kShareWrite = 0x2;
constexpr ulong32 kShareDelete = 0x4;
constexpr ulong32 kOpenExisting = 3;
constexpr ulong32 kOpenAlways = 4;
constexpr ulong32 kFlagBackupSemantics = 0x02000000;  // directories may be opened

// An open file, never null; only the backend that returned it knows what it is.
using FileHandle = void*;
// No file.
inline FileHandle invalidFile() {
  return reinterpret_cast<FileHandle>(static_cast<std::intptr_t>(-1));
}

// Arguments of openDescriptor.
constexpr int kDescriptorReadWrite = 0x2;
constexpr int kDescriptorShareAll = 0x40;
constexpr int kDescriptorPermission = 0x180;  // a created file may be read and written

// Called while a file is copied, with its size, the bytes copied so far, and the data passed to copyFile. The result
// kProgressContinue continues the copy, any other cancels it.
using CopyProgress = ulong32 (*)(std::int64_t total, std::int64_t transferred, void* data);
constexpr ulong32 kProgressContinue = 0;

// A flag of copyFile.
constexpr ulong32 kCopyFailIfExists = 0x1;

class FileApi {
 public:
  // --- Queries -------------------------------------------------------------------------------------------------------

  // The attributes of an item, kInvalidAttributes if it does not exist or cannot be queried.
  virtual ulong32 getAttributes(wchar const* path) = 0;
  // Sets the attributes. COMPAT: on Linux only the read-only bit of files has an effect: setting it removes every right
  // to write, clearing it returns the owner's. All other attributes are ignored with success.
  virtual bool setAttributes(wchar const* path, ulong32 attributes) = 0;

  // Attributes, size and times in one query. False if the item does not exist or cannot be queried; `info` is then
  // unchanged.
  virtual bool getInfo(wchar const* path, FileInfo& info) = 0;

  // The status record of the C runtime, which always follows links. 0 is success. -1 on failure, also if the size does
  // not fit into its 32 bits; `status` is then unchanged on Linux and unspecified on Windows. Does not set the last
  // error.
  virtual int getStatus(wchar const* path, struct _stat64i32& status) = 0;

  // 1 for an existing directory without entries, 0 for any other item and for none.
  virtual int isDirectoryEmpty(wchar const* path) = 0;

  // --- Open files ----------------------------------------------------------------------------------------------------

  // Opens an item; it must be closed with closeFile. invalidFile() on failure: the item is missing and `disposition` is
  // kOpenExisting, the access is denied (also because the file is read-only), or the item is a directory and
  // kFlagBackupSemantics is not set. With kOpenAlways a missing file is created; the last error after success is then
  // kNoError for a new file and kAlreadyExists for an existing one.
  virtual FileHandle openFile(wchar const* path, ulong32 access, ulong32 share, ulong32 disposition, ulong32 flags) = 0;
  virtual bool closeFile(FileHandle file) = 0;
  // Sets the time of the last write of a file opened for writing, in the unit of FileInfo. Its other times stay.
  virtual bool setLastWriteTime(FileHandle file, std::uint64_t time) = 0;
  // The current time, in the unit of FileInfo.
  virtual std::uint64_t systemTime() = 0;

  // Opens a file by the C runtime; -1 on failure. Its bytes are neither translated nor changed. Like the two calls below it
  // does not set the last error.
  virtual int openDescriptor(wchar const* path, int flags, int share, int permission) = 0;
  // Flushes everything written to the disk. 0 is success.
  virtual int commitDescriptor(int descriptor) = 0;
  // 0 is success.
  virtual int closeDescriptor(int descriptor) = 0;

  // --- Changes -------------------------------------------------------------------------------------------------------

  // Copies contents, attributes and time of the last write. `progress`, if not null, is called before the first byte,
  // during the copy and after the last byte; for an empty file once. Fails if the target exists and `flags` forbids it,
  // or is read-only, or is the source itself. After a failure no partial target remains. On Linux a link that leads to
  // a directory or to nothing is copied as a link, holes of a file stay holes, and anything that is neither file nor
  // link is refused.
  virtual bool copyFile(wchar const* source, wchar const* target, CopyProgress progress, void* data, ulong32 flags) = 0;
  // Moves or renames an item; between file systems only files and links. Fails if the target exists and is another
  // item. A link itself is moved, not what it leads to.
  virtual bool moveFile(wchar const* source, wchar const* target) = 0;
  // Deletes a file or a link itself. Fails for a directory and for a read-only file.
  virtual bool deleteFile(wchar const* path) = 0;
  // Creates one directory. Fails with kAlreadyExists if there is an item of that name, whatever its kind.
  virtual bool createDirectory(wchar const* path) = 0;
  // Removes an empty directory; a link to a directory is removed itself, with or without a separator at its end. Fails for
  // the root of a drive or share.
  virtual bool removeDirectory(wchar const* path) = 0;

  // --- Searches ------------------------------------------------------------------------------------------------------

  // Starts a search for `pattern`, a directory with its last separator and one name that may contain the wildcards *
  // and ?, and fills `data` with the first match. invalidSearch() if nothing matches or the directory is missing or
  // unreadable; `data` is then unspecified. A search must be ended with findClose.
  //
  // Matching ignores case; "." and ".." match like any other name. The order is the system's and the same for each
  // search of an unchanged directory. The attributes show directories, links and hidden items. On Linux they do not
  // show read-only files, which would need a query for each, and a link is never shown as a directory.
  virtual SearchHandle findFirst(wchar const* pattern, FindData& data) = 0;
  // Fills `data` with the next match. False at the end, on an error and for a search that has been closed.
  virtual bool findNext(SearchHandle search, FindData& data) = 0;
  // Ends a search and frees its memory. False for a search that has been closed already, which is detected reliably on
  // Linux only.
  virtual bool findClose(SearchHandle search) = 0;

  // --- Current directory ---------------------------------------------------------------------------------------------

  // Stores the current directory of the process in `path`, as an absolute path in the notation of this library. False
  // on failure; `path` is then unchanged.
  virtual bool currentDirectory(wstring& path) = 0;
  // The same for one drive: 1 is A, 2 is B and so on up to 26. False if there is no such drive.
  virtual bool currentDirectoryOfDrive(int drive, wstring& path) = 0;

 protected:
  // Backends are never destroyed through this interface.
  ~FileApi() = default;
};

}  // namespace platform
}  // namespace KV_1_1
