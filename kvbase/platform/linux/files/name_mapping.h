// SPDX-License-Identifier: MIT
//
// The mapping between the name of an item on disk, any bytes except NUL and '/', and a name that Windows allows.
//
//   "scan.txt"   <-> scan.txt           UTF-8 is decoded
//   "a:b"        <-> a U+F03A b         a byte that Windows forbids in a name becomes U+F000 plus the byte:
//   "end."       <-> end U+F02E         \ : * ? < > " | and 0x01 to 0x1F, a dot or blank at the end,
//   "\xE4"       <-> U+F0E4             bytes that are not UTF-8, and the bytes of a character U+F000 to U+F0FF itself
//
// The mapping is one to one: each name on disk has its own text, and a text that no name maps to is refused. "." and
// ".." map to themselves.
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

// Maps the bytes of a name. Writes at most `size` units, without terminator, and returns their number.
std::size_t nameFromNative(char const* bytes, std::size_t size, wchar* units);

// Appends the bytes of a name to `path`. False if no name on disk maps to it, also for ".", ".." and the empty name;
// `path` may then have grown.
bool appendNativeName(wchar const* name, std::size_t size, NativePath& path);

}  // namespace platform
}  // namespace KV_1_1
