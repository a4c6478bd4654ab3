// SPDX-License-Identifier: MIT
//
// The scalar kernels: what the vector kernels must agree with, and what they finish short ends with. Everything has
// internal linkage: each source that includes this is compiled for another processor.
#pragma once

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace strings {
namespace {

inline wchar foldScalar(wchar unit) {
  return unit >= KVW('A') && unit <= KVW('Z') ? static_cast<wchar>(unit + 32) : unit;
}

inline int lengthScalar(wchar const* text) {
  int n = 0;
  while (text[n] != 0) ++n;
  return n;
}

inline int mismatchScalar(wchar const* a, wchar const* b, int n) {
  int i = 0;
  while (i < n && a[i] == b[i]) ++i;
  return i;
}

inline int mismatchIgnoringCaseScalar(wchar const* a, wchar const* b, int n) {
  int i = 0;
  while (i < n && foldScalar(a[i]) == foldScalar(b[i])) ++i;
  return i;
}

inline int findUnitScalar(wchar const* text, wchar unit, int n) {
  int i = 0;
  while (i < n && text[i] != unit && text[i] != 0) ++i;
  return i;
}

inline int findLastUnitScalar(wchar const* text, wchar unit, int n) {
  int last = -1;
  for (int i = 0; i < n; ++i) {
    if (text[i] == unit) last = i;
    if (text[i] == 0) break;
  }
  return last;
}

inline int findTextScalar(wchar const* text, int n, wchar const* needle, int m) {
  int const end = findUnitScalar(text, 0, n);
  for (int i = 0; i + m <= end; ++i) {
    if (mismatchScalar(text + i, needle, m) == m) return i;
  }
  return -1;
}

inline int findRangeScalar(wchar const* text, int n, wchar low, wchar high) {
  int i = 0;
  while (i < n && (text[i] < low || text[i] > high) && text[i] < 0x80) ++i;
  return i;
}

inline int replaceUnitScalar(wchar* text, int n, wchar from, wchar to) {
  int count = 0;
  for (int i = 0; i < n && text[i] != 0; ++i) {
    if (text[i] != from) continue;
    text[i] = to;
    ++count;
  }
  return count;
}

// --- UTF-8 -----------------------------------------------------------------------------------------------------------

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
};

inline Utf16Character readUtf16(wchar const* units, int n) {
  wchar const unit = units[0];
  if ((unit & 0xF800) != 0xD800) return {unit, 1};
  if (!isHighSurrogate(unit) || n < 2 || !isLowSurrogate(units[1])) return {kReplacement, 1};
  return {0x10000u + ((unit - 0xD800u) << 10) + (units[1] - 0xDC00u), 2};
}

inline int utf8Bytes(unsigned int code) {
  return code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
}

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

inline long long utf8SizeScalar(wchar const* units, int n) {
  long long size = 0;
  for (int i = 0; i < n;) {
    Utf16Character const character = readUtf16(units + i, n - i);
    size += utf8Bytes(character.code);
    i += character.units;
  }
  return size;
}

inline long long toUtf8Scalar(wchar const* units, int n, char* bytes) {
  char* end = bytes;
  for (int i = 0; i < n;) {
    Utf16Character const character = readUtf16(units + i, n - i);
    end = writeUtf8(character.code, end);
    i += character.units;
  }
  return end - bytes;
}

// One character of UTF-8 and how many bytes it took. A piece that begins a sequence but does not complete it, and a
// byte that begins none, is U+FFFD.
struct Utf8Character {
  unsigned int code;
  int bytes;
};

inline Utf8Character readUtf8(unsigned char const* bytes, int n) {
  unsigned int const lead = bytes[0];
  if (lead < 0x80) return {lead, 1};
  if (lead < 0xC2 || lead > 0xF4) return {kReplacement, 1};
  int const size = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  // The second byte's range excludes overlong forms, surrogates and what lies beyond U+10FFFF.
  unsigned int const lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  unsigned int const highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  if (n < 2 || bytes[1] < lowest || bytes[1] > highest) return {kReplacement, 1};
  unsigned int code = (lead & (0x7Fu >> size)) << 6 | (bytes[1] & 0x3Fu);
  for (int i = 2; i < size; ++i) {
    if (n <= i || (bytes[i] & 0xC0) != 0x80) return {kReplacement, i};
    code = code << 6 | (bytes[i] & 0x3Fu);
  }
  return {code, size};
}

inline wchar* writeUtf16(unsigned int code, wchar* units) {
  if (code < 0x10000) {
    *units++ = static_cast<wchar>(code);
    return units;
  }
  *units++ = static_cast<wchar>(0xD800 + ((code - 0x10000) >> 10));
  *units++ = static_cast<wchar>(0xDC00 + (code & 0x3FF));
  return units;
}

inline int utf16SizeScalar(char const* bytes, int n) {
  auto const* const data = reinterpret_cast<unsigned char const*>(bytes);
  int size = 0;
  for (int i = 0; i < n;) {
    Utf8Character const character = readUtf8(data + i, n - i);
    size += character.code < 0x10000 ? 1 : 2;
    i += character.bytes;
  }
  return size;
}

inline int fromUtf8Scalar(char const* bytes, int n, wchar* units) {
  auto const* const data = reinterpret_cast<unsigned char const*>(bytes);
  wchar* end = units;
  for (int i = 0; i < n;) {
    Utf8Character const character = readUtf8(data + i, n - i);
    end = writeUtf16(character.code, end);
    i += character.bytes;
  }
  return static_cast<int>(end - units);
}

}  // namespace
}  // namespace strings
}  // namespace KV_1_1
