// SPDX-License-Identifier: MIT
//
// The mapping between paths in the notation of the library and paths of the system.
//
//   \home\x            <-> /home/x
//   x\y                 -> x/y
//   \\?\<path>          -> the same, verbatim: "." and ".." and "/" have no special meaning
//   C:\x               <-> <drives>/c:/x
//   C:x                 -> the current directory of drive C, then x
//   \\server\share\x    -> <drives>/unc/server/share/x        (\\?\UNC\server\share\x too)
//
// <drives> is a folder of links: $KVBASE_DRIVES, else kvbase/drives below the user's configuration folder. The names of
// drives, servers and shares are in lower case there. A drive without a link does not exist.
//
// COMPAT: "." and ".." are resolved in the text, as on Windows, without looking at the disk: a\..\b is b, whether or
// not a exists and wherever it leads. A separator at the end is kept.
#pragma once

#include <cstddef>

#include "kvbase/platform/linux/files/name_mapping.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

// Maps a text of `size` units to a NUL-terminated path. False, with the last error set, if no item can have that name:
// kInvalidName, or kPathNotFound for the empty text and a drive that is not there; `path` is then unspecified.
bool mapPath(wchar const* text, std::size_t size, NativePath& path);
// The same for a NUL-terminated text.
bool mapPath(wchar const* text, NativePath& path);
// What mapPath does with a text that is not plain, and would do with any; tests compare the two.
bool mapPathByLevels(wchar const* text, std::size_t size, NativePath& path);

// The root of a path of the system and its size in bytes.
struct Root {
  enum class Kind { kNative, kDrive, kShare };
  Kind kind;
  std::size_t size;
};
Root rootOf(char const* path);

// The absolute path `bytes` of the system in the library's notation, behind `prefix` ("C:" or nothing).
wstring textOfPath(wchar const* prefix, char const* bytes, std::size_t size);

// The current directory of the process, NUL-terminated. False if it has been removed or cannot be determined.
bool nativeCurrentDirectory(NativePath& path);

// The current directory of a drive ('a' to 'z') relative to the root of the drive: "/x/y", or empty if it is that root
// or is not below it. Not NUL-terminated. False if there is no such drive.
bool nativeDirectoryOfDrive(char letter, NativePath& below);

}  // namespace platform
}  // namespace KV_1_1
