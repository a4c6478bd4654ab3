// SPDX-License-Identifier: MIT
//
// UTF-8 as the library converts it, alike on every system. Each longest piece of bytes that begins a valid sequence but
// does not complete it, each byte that cannot begin one, and each lone surrogate becomes U+FFFD.
#pragma once

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace strings {

// Both functions work in two steps: with capacity 0 they return the size of the result; with a capacity that suffices
// they convert and return the size written. 0 on failure: nothing to convert, too little room, a result beyond the range
// of int.
int decodeUtf8(char const* bytes, int size, wchar* units, int capacity);
int encodeUtf8(wchar const* units, int size, char* bytes, int capacity);

}  // namespace strings
}  // namespace KV_1_1
