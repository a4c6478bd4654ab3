// SPDX-License-Identifier: MIT
//
// The code unit of the library's texts. A "unit" is always one UTF-16 code unit: an unsigned number of 16 bits, half a
// character where two make a surrogate pair. Lengths and positions count units. Nothing but the conversions looks at
// pairs, and texts may hold lone surrogates.
//
//   wchar        wchar_t on Windows, char16_t elsewhere (where wchar_t has 32 bits)
//   wstring      std::basic_string<wchar>; this is std::wstring on Windows
//   KVW("text")  a literal of that unit: KVW("C:\\scans"), KVW('c')
//   ulong32      an unsigned integer of 32 bits where the Windows interface has `unsigned long`
//
// Off Windows do not pass these texts to the wcs... or isw... functions of the C library: they work on 32-bit units.
#pragma once

#include <cstdint>
#include <string>

#if defined(_WIN32)
#define KVW(literal) L##literal
#else
#define KVW(literal) u##literal
#endif

namespace KV_1_1 {

#if defined(_WIN32)
using wchar = wchar_t;
using ulong32 = unsigned long;
// The character type that looks like a unit but belongs to other texts; String refuses it.
using ForeignUnit = char16_t;
#else
using wchar = char16_t;
using ulong32 = std::uint32_t;
using ForeignUnit = wchar_t;
#endif
using wstring = std::basic_string<wchar>;

static_assert(sizeof(wchar) == 2, "a unit has 16 bits");
static_assert(sizeof(ulong32) == 4, "ulong32 has 32 bits");

}  // namespace KV_1_1
