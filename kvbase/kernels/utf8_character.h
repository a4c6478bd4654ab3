// SPDX-License-Identifier: MIT
//
// Single characters of UTF-8 and UTF-16. Everything has internal linkage, because sources compiled for several
// processors include this.
#pragma once

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace strings {
namespace {

constexpr wchar kReplacement = 0xFFFD;

inline bool isHighSurrogate(wchar unit) {
  return (unit & 0xFC00) == 0xD800;
}

inline bool isLowSurrogate(wchar unit) {
  return (unit & 0xFC00) == 0xDC00;
}

// One character of UTF-16, and how many units it took; a lone surrogate is U+FFFD.
struct Utf16Character {
  unsigned int code;
  int units;
  bool isValid;
};

inline Utf16Character readUtf16(wchar const* units, int n) {
  wchar const unit = units[0];
  if ((unit & 0xF800) != 0xD800) return {unit, 1, true};
  if (!isHighSurrogate(unit) || n < 2 || !isLowSurrogate(units[1])) return {kReplacement, 1, false};
  return {0x10000u + ((unit - 0xD800u) << 10) + (units[1] - 0xDC00u), 2, true};
}

inline int utf8Bytes(unsigned int code) {
  return code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
}

// Writes a character as UTF-8, at most four bytes, and returns their end.
inline char* writeUtf8(unsigned int code, char* bytes) {
  auto const byte = [](unsigned int value) { return static_cast<char>(static_cast<unsigned char>(value)); };
  switch (utf8Bytes(code)) {
    case 1:
      *bytes++ = byte(code);
      return bytes;
    case 2:
      *bytes++ = byte(0xC0 | code >> 6);
      break;
    case 3:
      *bytes++ = byte(0xE0 | code >> 12);
      *bytes++ = byte(0x80 | (code >> 6 & 0x3F));
      break;
    default:
      *bytes++ = byte(0xF0 | code >> 18);
      *bytes++ = byte(0x80 | (code >> 12 & 0x3F));
      *bytes++ = byte(0x80 | (code >> 6 & 0x3F));
  }
  *bytes++ = byte(0x80 | (code & 0x3F));
  return bytes;
}

// The bytes of the sequence that begins with this byte; 0 if none does.
inline int utf8SequenceSize(unsigned int lead) {
  if (lead < 0x80) return 1;
  if (lead < 0xC2 || lead > 0xF4) return 0;
  return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

// One character of UTF-8 and how many bytes it took. A piece that begins a valid sequence but does not complete it, and
// a byte that begins none, is U+FFFD and not valid.
struct Utf8Character {
  unsigned int code;
  int bytes;
  bool isValid;
};

// REQUIRES: n is at least 1.
inline Utf8Character readUtf8(char const* text, int n) {
  auto const* const bytes = reinterpret_cast<unsigned char const*>(text);
  unsigned int const lead = bytes[0];
  if (lead < 0x80) return {lead, 1, true};
  int const size = utf8SequenceSize(lead);
  if (size == 0 || n < 2) return {kReplacement, 1, false};
  // The second byte's range excludes overlong forms, surrogates and what lies beyond U+10FFFF.
  unsigned int const lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  unsigned int const highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  if (bytes[1] < lowest || bytes[1] > highest) return {kReplacement, 1, false};
  unsigned int code = (lead & (0x7Fu >> size)) << 6 | (bytes[1] & 0x3Fu);
  // The most frequent size needs no loop.
  if (size == 2) return {code, 2, true};
  for (int i = 2; i < size; ++i) {
    if (n <= i || (bytes[i] & 0xC0) != 0x80) return {kReplacement, i, false};
    code = code << 6 | (bytes[i] & 0x3Fu);
  }
  return {code, size, true};
}

// Writes a character as UTF-16, at most two units, and returns their end.
inline wchar* writeUtf16(unsigned int code, wchar* units) {
  if (code < 0x10000) {
    *units++ = static_cast<wchar>(code);
    return units;
  }
  *units++ = static_cast<wchar>(0xD800 + ((code - 0x10000) >> 10));
  *units++ = static_cast<wchar>(0xDC00 + (code & 0x3FF));
  return units;
}

}  // namespace
}  // namespace strings
}  // namespace KV_1_1
