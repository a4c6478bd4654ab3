// SPDX-License-Identifier: MIT
//
// How a path of the library reads as a path of the system, and back.
//
//   \home\x            <-> /home/x
//   x\y                 -> x/y
//   \\?\<path>          -> the same, as it stands: no "." or "..", no "/" as separator
//   C:\x               <-> <drives>/c:/x
//   C:x                 -> the current directory of drive C, then x
//   \\server\share\x    -> <drives>/unc/server/share/x        (\\?\UNC\server\share\x too)
//
// <drives> is a folder of links: $KVBASE_DRIVES, else kvbase/drives below the user's configuration folder. The names of
// drives, servers and shares stand there in lower case. No such link: no such drive.
//
// "." and ".." are taken out of the text as Windows does it, without asking the disk: a\..\b is b, whether there is an
// a or not and wherever it leads. A separator at the end is kept.
#pragma once

#include <cstddef>

#include "kvbase/platform/linux/files/name_mapping.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

// Maps a text of `size` units to a NUL-terminated path. False, with the last error, if no item can have that name:
// kInvalidName, or kPathNotFound for the empty text and a drive that is not there; `path` is then unspecified.
bool mapPath(wchar const* text, std::size_t size, NativePath& path);

// On what a path of the system stands, and how much of it that root takes.
struct Root {
  enum class Kind { kNative, kDrive, kShare };
  Kind kind;
  std::size_t size;
};
Root rootOf(char const* path);

// Whether the text starts with \\?\ .
bool isVerbatim(wchar const* text, std::size_t size);

// The absolute path `bytes` of the system in the library's notation, behind `prefix` ("C:" or nothing).
wstring textOfPath(wchar const* prefix, char const* bytes, std::size_t size);

// The current directory as the system tells it, NUL-terminated. False if it cannot be told.
bool nativeCurrentDirectory(NativePath& path);

// What the current directory of a drive ('a' to 'z') is below the root of the drive: "/x/y", or nothing if it is that
// root or lies elsewhere. False if there is no such drive.
bool nativeDirectoryOfDrive(char letter, NativePath& below);

}  // namespace platform
}  // namespace KV_1_1
