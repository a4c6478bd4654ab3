// SPDX-License-Identifier: MIT
//
// The seam to files and folders. The vocabulary is that of the Windows calls, in names of its own, for their names are
// macros there. Every path is a NUL-terminated text in the notation of this library: backslashes, drives, shares, the
// prefix "\\?\".
//
// Thread rule: any method may be called from any thread; a search belongs to one thread at a time.
#pragma once

#include <cstdint>

#include "kvbase/platform/backend.h"
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

class FileApi {
 public:
  // The attributes of an item, kInvalidAttributes if there is none or it cannot be asked.
  // A name that ends in a separator looks through a link. One that does not sees the link itself where it leads to a
  // directory or to nothing (on Windows: as the system does).
  virtual ulong32 getAttributes(wchar const* path) = 0;

  // Attributes and size in one query, with the same rule for links. False if there is no such item or it cannot be
  // asked; `info` is then left alone.
  virtual bool getInfo(wchar const* path, FileInfo& info) = 0;

  // Starts a search for `pattern`: the text of a directory, its last separator included, and one name that may hold the
  // wildcards * and ?. Fills `data` with the first match. invalidSearch() if nothing matches or the directory is
  // missing or unreadable; `data` is then unspecified. Matching is without case; the matches include "." and ".."
  // (where the pattern matches them). The order is the system's, the same for each search of an unchanged directory.
  // The attributes tell directories, links and hidden items; on Linux they do not tell read-only files, which would need a
  // query for each, and a link never is a directory.
  // A search started must be ended with findClose.
  virtual SearchHandle findFirst(wchar const* pattern, FindData& data) = 0;
  // Fills `data` with the next match. False at the end, on an error and for a search that has been closed.
  virtual bool findNext(SearchHandle search, FindData& data) = 0;
  // Ends a search and frees what it held. False for a search that has been closed; on Linux that does nothing, on
  // Windows it is the system's fault to find.
  virtual bool findClose(SearchHandle search) = 0;

  // The current directory of the process, as an absolute path in the notation of this library. The text is NUL-terminated
  // and is to be released with freeText; null on failure.
  virtual wchar* currentDirectory() = 0;
  // The same for one drive: 1 is A, 2 is B and so on up to 26. Null if there is no such drive.
  virtual wchar* currentDirectoryOfDrive(int drive) = 0;
  // Releases a text given by this backend; null is allowed.
  virtual void freeText(wchar* text) = 0;

 protected:
  // Backends are never destroyed through this interface.
  ~FileApi() = default;
};

}  // namespace platform
}  // namespace KV_1_1
