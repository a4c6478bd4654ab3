// SPDX-License-Identifier: MIT
//
// The scalar kernels. They define the results of the vector kernels, which use them for short ranges. Everything has
// internal linkage: each source that includes this is compiled for another processor.
#pragma once

#include "kvbase/kernels/text_kernels.h"
#include "kvbase/kernels/utf8_character.h"
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
  while (i < n && a[i] == b[i] && a[i] != 0) ++i;
  return i;
}

inline int mismatchIgnoringCaseScalar(wchar const* a, wchar const* b, int n) {
  int i = 0;
  while (i < n && foldScalar(a[i]) == foldScalar(b[i]) && a[i] != 0) ++i;
  return i;
}

inline int findUnitScalar(wchar const* text, wchar unit, int n) {
  int i = 0;
  while (i < n && text[i] != unit && text[i] != 0) ++i;
  return i;
}

inline int findLastUnitScalar(wchar const* text, wchar unit, int n) {
  while (n > 0 && text[n - 1] != unit) --n;
  return n - 1;
}

inline int findTextScalar(wchar const* text, int n, wchar const* needle, int m) {
  int const end = findUnitScalar(text, 0, n);
  for (int i = 0; i <= end - m; ++i) {
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

inline int utf16SizeScalar(char const* bytes, int n) {
  int size = 0;
  for (int i = 0; i < n;) {
    Utf8Character const character = readUtf8(bytes + i, n - i);
    size += character.code < 0x10000 ? 1 : 2;
    i += character.bytes;
  }
  return size;
}

inline int fromUtf8Scalar(char const* bytes, int n, wchar* units, int /*room*/) {
  wchar* end = units;
  for (int i = 0; i < n;) {
    Utf8Character const character = readUtf8(bytes + i, n - i);
    end = writeUtf16(character.code, end);
    i += character.bytes;
  }
  return static_cast<int>(end - units);
}

// --- Pages with one byte a character ---------------------------------------------------------------------------------

inline int findBeyondLatin1Scalar(wchar const* units, int n) {
  int i = 0;
  while (i < n && units[i] <= 0xFF) ++i;
  return i;
}

inline bool isIn(ByteRange range, unsigned int number) {
  return number >= range.low && number <= range.high;
}

inline int widenScalar(char const* bytes, int n, ByteRange except, wchar* units) {
  int i = 0;
  for (; i < n && !isIn(except, static_cast<unsigned char>(bytes[i])); ++i) {
    units[i] = static_cast<unsigned char>(bytes[i]);
  }
  return i;
}

inline int narrowScalar(wchar const* units, int n, ByteRange except, char* bytes) {
  int i = 0;
  for (; i < n && units[i] <= 0xFF && !isIn(except, units[i]); ++i) bytes[i] = static_cast<char>(units[i]);
  return i;
}

}  // namespace
}  // namespace strings
}  // namespace KV_1_1
