// SPDX-License-Identifier: MIT
//
// Short texts of ASCII, and those of characters that are the same numbers in a page with one byte a character, converted in
// place with the instructions of every processor: most narrow texts are that, and a call through the table of kernels would
// take longer than the work.
#pragma once

#include "kvbase/kernels/sse2_vector.h"
#include "kvbase/kernels/vector_bytes.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace strings {
namespace {

constexpr int kHalf = Sse2Vector::kUnits;
constexpr int kWhole = 2 * kHalf;
constexpr int kLongestInPlace = 96;  // of units or bytes

// Works on each block of a text; the last one overlaps the one before it.
template <int kBlock, class Work>
inline void forEachBlock(int n, Work work) {
  for (int i = 0; i < n - kBlock; i += kBlock) work(i);
  work(n - kBlock);
}

// Whether a text is neither too short nor too long for the functions below.
inline bool isShort(int n) {
  return n >= kHalf && n <= kLongestInPlace;
}

// --- ASCII -------------------------------------------------------------------------------------------------------------

// Whether a text is short, and all of it ASCII.
inline bool isShortAscii(wchar const* units, int n) {
  if (!isShort(n) || units[0] >= 0x80) return false;
  auto all = Sse2Vector::zero();
  forEachBlock<kHalf>(n, [&](int i) { all = Sse2Vector::bitOr(all, Sse2Vector::load(units + i)); });
  return areWithin<Sse2Vector, 0x7F>(all);
}

inline bool isShortAscii(char const* bytes, int n) {
  if (!isShort(n) || (bytes[0] & 0x80) != 0) return false;
  if (n < kWhole) return Sse2Vector::isAscii(bytes) && Sse2Vector::isAscii(bytes + n - kHalf);
  auto all = Sse2Vector::zero();
  forEachBlock<kWhole>(n, [&](int i) { all = Sse2Vector::bitOr(all, Sse2Vector::loadBytes(bytes + i)); });
  return Sse2Vector::mask(all) == 0;
}

inline void narrowShortAscii(wchar const* units, int n, char* bytes) {
  forEachBlock<kHalf>(n, [=](int i) { Sse2Vector::storeNarrow(bytes + i, Sse2Vector::load(units + i)); });
}

inline void widenShortAscii(char const* bytes, int n, wchar* units) {
  if (n < kWhole) {
    forEachBlock<kHalf>(n, [=](int i) { Sse2Vector::store(units + i, Sse2Vector::loadNarrow(bytes + i)); });
  } else {
    forEachBlock<kWhole>(n, [=](int i) { Sse2Vector::storeWidened(units + i, bytes + i); });
  }
}

// --- Pages with one byte a character -----------------------------------------------------------------------------------

// Works on two halves of a block at a time; a text below a block has them at its ends.
template <class Work>
inline void forEachTwoHalves(int n, Work work) {
  if (n < kWhole) return work(0, n - kHalf);
  forEachBlock<kWhole>(n, [=](int i) { work(i, i + kHalf); });
}

// Whether a text is short, and no unit beyond U+00FF.
inline bool isShortLatin1(wchar const* units, int n) {
  if (!isShort(n)) return false;
  auto all = Sse2Vector::zero();
  forEachTwoHalves(n, [&](int i, int j) {
    all = Sse2Vector::bitOr(all, Sse2Vector::bitOr(Sse2Vector::load(units + i), Sse2Vector::load(units + j)));
  });
  return areWithin<Sse2Vector, 0xFF>(all);
}

// Copies a short text as widen does, if no byte is of the range; otherwise it is false, and the units are anything.
inline bool widenShort(char const* bytes, int n, ByteRange except, wchar* units) {
  if (!isShort(n)) return false;
  RangeTest<Sse2Vector> const range(except);
  auto plain = Sse2Vector::bytesOf(0xFF);
  forEachTwoHalves(n, [&](int i, int j) {
    auto const front = Sse2Vector::loadNarrow(bytes + i);
    auto const back = Sse2Vector::loadNarrow(bytes + j);
    plain = Sse2Vector::bitAnd(plain, range.outside(Sse2Vector::narrowed(front, back)));
    Sse2Vector::store(units + i, front);
    Sse2Vector::store(units + j, back);
  });
  return Sse2Vector::mask(plain) == kAllUnits<Sse2Vector>;
}

// Copies a short text as narrow does, if no unit is beyond U+00FF or of the range; otherwise it is false, and the bytes are
// anything.
inline bool narrowShort(wchar const* units, int n, ByteRange except, char* bytes) {
  if (!isShort(n)) return false;
  RangeTest<Sse2Vector> const range(except);
  auto all = Sse2Vector::zero();
  auto plain = Sse2Vector::bytesOf(0xFF);
  forEachTwoHalves(n, [&](int i, int j) {
    auto const front = Sse2Vector::load(units + i);
    auto const back = Sse2Vector::load(units + j);
    all = Sse2Vector::bitOr(all, Sse2Vector::bitOr(front, back));
    plain = Sse2Vector::bitAnd(plain, range.outside(Sse2Vector::narrowed(front, back)));
    Sse2Vector::storeNarrow(bytes + i, front);
    Sse2Vector::storeNarrow(bytes + j, back);
  });
  return Sse2Vector::mask(plain) == kAllUnits<Sse2Vector> && areWithin<Sse2Vector, 0xFF>(all);
}

}  // namespace
}  // namespace strings
}  // namespace KV_1_1
