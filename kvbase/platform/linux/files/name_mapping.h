// SPDX-License-Identifier: MIT
//
// How the name of an item on disk, any bytes but NUL and '/', reads as a name of Windows, and back.
//
//   "scan.txt"   <-> scan.txt           UTF-8 is text
//   "a:b"        <-> a U+F03A b         what Windows cannot hold in a name is U+F000 plus the byte:
//   "end."       <-> end U+F02E         \ : * ? < > " | and 0x01 to 0x1F, a dot or blank at the end,
//   "\xE4"       <-> U+F0E4             bytes that are not UTF-8, and the bytes of a character U+F000 to U+F0FF itself
//
// The mapping is one to one: each name on disk has its own text, and a text that is the picture of no name is refused,
// never taken for another one. "." and ".." map to themselves.
#pragma once

#include <cstddef>

#include "kvbase/platform/linux/small_buffer.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

using NativePath = SmallBuffer<char, 512>;

// Whether a name, in bytes or in units, is "." or "..".
template <class Unit>
constexpr bool isDots(Unit const* name, std::size_t size) {
  return (size == 1 || size == 2) && name[0] == '.' && name[size - 1] == '.';
}

// Writes at most `size` units, without terminator, and returns how many.
std::size_t nameFromNative(char const* bytes, std::size_t size, wchar* units);

// Appends the bytes of a name. False if no name on disk reads so, "." and ".." and the empty name included; `path` may
// then have got longer.
bool appendNativeName(wchar const* name, std::size_t size, NativePath& path);

}  // namespace platform
}  // namespace KV_1_1
