// SPDX-License-Identifier: MIT
//
// Text conversion by code page number: UTF-8 by the library's own kernels, every other page by the platform. Both
// functions work in two steps: capacity 0 asks for the size, a second call with that size converts.
#pragma once

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace strings {

constexpr unsigned int kAnsiCodePage = 0;
constexpr unsigned int kUtf8CodePage = 65001;

// Decodes `size` bytes (-1: up to the terminator, which is converted too). Returns the number of units, 0 on failure:
// nothing to convert, a code page that the system does not have, too little room, a result beyond the range of int.
int decodeNarrow(unsigned int codePage, char const* bytes, int size, wchar* units, int capacity);

// Encodes `size` units. Returns the number of bytes, 0 on failure.
int encodeNarrow(unsigned int codePage, wchar const* units, int size, char* bytes, int capacity);

}  // namespace strings
}  // namespace KV_1_1
