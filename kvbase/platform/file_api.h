// SPDX-License-Identifier: MIT
//
// The seam to files and folders. The vocabulary is that of the Windows calls, in names of its own, for their names are
// macros there. Every path is a NUL-terminated text in the notation of this library: backslashes, drives, shares, the
// prefix "\\?\".
//
// A call that fails leaves its reason as the last error of the thread (error_api.h); one that succeeds leaves that
// alone, unless its contract says otherwise.
//
// Links (on Windows: as the system does). A name that ends in a separator looks through a link. One that does not sees
// the link itself where it leads to a directory or to nothing, and else the file that it leads to.
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
// The attributes of an item that is not there or cannot be asked.
constexpr ulong32 kInvalidAttributes = 0xFFFFFFFF;

// What one query tells about an item without opening it.
struct FileInfo {
  ulong32 attributes;
  std::uint64_t size;  // in bytes; what the system says for a directory
  // In units of 100 ns since the beginning of 1601, UTC. Where a file system knows no creation time, the older of the
  // times of the last write and of the last change of the item stands for it.
  std::uint64_t creationTime = 0;
  std::uint64_t lastWriteTime = 0;
};

// One entry of a directory search.
struct FindData {
  ulong32 attributes;
  wchar name[260];  // NUL-terminated, without folder
};

// A running search; only the backend that gave it knows what it is.
using SearchHandle = void*;
// No search.
inline SearchHandle invalidSearch() {
  return reinterpret_cast<SearchHandle>(static_cast<std::intptr_t>(-1));
}

// What is asked of openFile: access as bits (none: that the item is there), what others may do with the item meanwhile,
// what is to be there before, and flags.
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

// What is asked of openDescriptor.
constexpr int kDescriptorReadWrite = 0x2;
constexpr int kDescriptorShareAll = 0x40;
constexpr int kDescriptorPermission = 0x180;  // a file made is one to read and to write

// Called while a file is copied: its size, the bytes copied so far, and what was given to copyFile. The result 0 lets
// the copy go on.
using CopyProgress = ulong32 (*)(std::int64_t total, std::int64_t transferred, void* data);
constexpr ulong32 kProgressContinue = 0;

// A flag of copyFile.
constexpr ulong32 kCopyFailIfExists = 0x1;

class FileApi {
 public:
  // --- Queries -------------------------------------------------------------------------------------------------------

  // The attributes of an item, kInvalidAttributes if there is none or it cannot be asked.
  virtual ulong32 getAttributes(wchar const* path) = 0;
  // Sets the attributes. On Linux only the read-only bit of files counts: it takes the rights to write from everybody
  // or gives the owner's back; whatever else is asked is done by doing nothing.
  virtual bool setAttributes(wchar const* path, ulong32 attributes) = 0;

  // Attributes, size and times in one query. False if there is no such item or it cannot be asked; `info` is then left
  // alone.
  virtual bool getInfo(wchar const* path, FileInfo& info) = 0;

  // The status record of the C runtime, which looks through links in any case. 0 is success; `status` is otherwise left
  // alone (on Windows: as the runtime does), also where the size does not fit into its 32 bits. Leaves no last error.
  virtual int getStatus(wchar const* path, struct _stat64i32& status) = 0;

  // 1 for an existing directory without entries, 0 for any other item and for none.
  virtual int isDirectoryEmpty(wchar const* path) = 0;

  // --- Open files ----------------------------------------------------------------------------------------------------

  // Opens an item. invalidFile() on failure: there is none and `disposition` is kOpenExisting; the access is
  // not granted, be it because the file is read-only; a directory without kFlagBackupSemantics. With kOpenAlways a
  // missing file is made, and the last error after success is kNoError for a file that was made, kAlreadyExists for one
  // that was there. A file opened must be closed with closeFile.
  virtual FileHandle openFile(wchar const* path, ulong32 access, ulong32 share, ulong32 disposition, ulong32 flags) = 0;
  virtual bool closeFile(FileHandle file) = 0;
  // Sets the time of the last write of a file opened for writing, in the unit of FileInfo; its other times stay.
  virtual bool setLastWriteTime(FileHandle file, std::uint64_t time) = 0;
  // The time now, in the unit of FileInfo.
  virtual std::uint64_t systemTime() = 0;

  // Opens a file by the C runtime; -1 on failure. Leaves no last error, as do the two calls below.
  virtual int openDescriptor(wchar const* path, int flags, int share, int permission) = 0;
  // Has everything written to the disk. 0 is success.
  virtual int commitDescriptor(int descriptor) = 0;
  // 0 is success.
  virtual int closeDescriptor(int descriptor) = 0;

  // --- Changes -------------------------------------------------------------------------------------------------------

  // Copies contents, attributes and time of the last write. `progress`, if not null, is called with nothing copied, as
  // the copy goes on and with everything copied; for an empty file once. Fails if the target exists and `flags` says
  // so, or is read-only, or is the source itself. No half-made target stays. On Linux a link that leads to a directory
  // or to nothing is copied as a link, holes of a file stay holes, and what is neither file nor link is refused.
  virtual bool copyFile(wchar const* source, wchar const* target, CopyProgress progress, void* data, ulong32 flags) = 0;
  // Moves or renames an item; between file systems files only. Fails if the target exists and is another item. A link
  // is moved itself.
  virtual bool moveFile(wchar const* source, wchar const* target) = 0;
  // Deletes a file or a link itself. Fails for a directory and for a read-only file.
  virtual bool deleteFile(wchar const* path) = 0;
  // Makes one directory. kAlreadyExists if there is an item of that name, whatever its kind.
  virtual bool createDirectory(wchar const* path) = 0;
  // Removes an empty directory; a link to a directory is removed itself, with or without a separator at its end.
  virtual bool removeDirectory(wchar const* path) = 0;

  // --- Searches ------------------------------------------------------------------------------------------------------

  // Starts a search for `pattern`: the text of a directory, its last separator included, and one name that may hold the
  // wildcards * and ?. Fills `data` with the first match. invalidSearch() if nothing matches or the directory is
  // missing or unreadable; `data` is then unspecified. Matching is without case; the matches include "." and ".."
  // (where the pattern matches them). The order is the system's, the same for each search of an unchanged directory.
  // The attributes tell directories, links and hidden items; on Linux they do not tell read-only files, which would
  // need a query for each, and a link never is a directory. A search started must be ended with findClose.
  virtual SearchHandle findFirst(wchar const* pattern, FindData& data) = 0;
  // Fills `data` with the next match. False at the end, on an error and for a search that has been closed.
  virtual bool findNext(SearchHandle search, FindData& data) = 0;
  // Ends a search and frees what it held. False for a search that has been closed; on Linux that does nothing, on
  // Windows it is the system's fault to find.
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
