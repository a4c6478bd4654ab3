// SPDX-License-Identifier: MIT
//
// The vector kernels for pages with one byte a character; see vector_kernels.h for the vector type V. They work on
// registers of 2 * V::kUnits bytes.
#pragma once

#include "kvbase/kernels/scalar_kernels.h"
#include "kvbase/kernels/text_kernels.h"
#include "kvbase/kernels/vector_kernels.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace strings {
namespace {

// Whether no unit is beyond the limit, which is a power of two less one.
template <class V, int kLimit>
bool areWithin(typename V::Register units) {
  return zeros<V>(V::bitAnd(units, V::of(0xFFFF - kLimit))) == kAllUnits<V>;
}

// First index below n that holds a unit beyond the limit; n if there is none.
template <class V, int kLimit>
int findBeyond(wchar const* units, int n) {
  constexpr int kUnits = V::kUnits;
  constexpr int kPair = 2 * kUnits;
  int i = 0;
  for (; n - i >= 2 * kPair; i += 2 * kPair) {
    auto const front = V::bitOr(V::load(units + i), V::load(units + i + kUnits));
    auto const back = V::bitOr(V::load(units + i + kPair), V::load(units + i + kPair + kUnits));
    if (!areWithin<V, kLimit>(V::bitOr(front, back))) break;
  }
  while (n - i >= kUnits && areWithin<V, kLimit>(V::load(units + i))) i += kUnits;
  if (i < n && i > n - kUnits && n >= kUnits && areWithin<V, kLimit>(V::load(units + n - kUnits))) return n;
  while (i < n && units[i] <= kLimit) ++i;
  return i;
}

template <class V>
int findBeyondLatin1(wchar const* units, int n) {
  return findBeyond<V, 0xFF>(units, n);
}

// A test of whether any byte of a register lies in a range.
template <class V>
class RangeTest {
 public:
  explicit RangeTest(ByteRange range)
      : offset_(V::bytesOf(0x80 - range.low)), end_(V::bytesOf(range.high - range.low - 0x80)) {}

  bool operator()(typename V::Register bytes) const { return V::mask(outside(bytes)) != kAllUnits<V>; }

  // All bits of a byte outside the range are set, none of another. The range is moved to the lowest signed numbers, so
  // one comparison tells.
  typename V::Register outside(typename V::Register bytes) const {
    return V::greaterBytes(V::addBytes(bytes, offset_), end_);
  }

 private:
  typename V::Register offset_;
  typename V::Register end_;  // the last byte of the range
};

// Where nothing but ASCII is to be copied, one test a block does.
constexpr bool isBeyondAscii(ByteRange range) {
  return range.low == 0x80 && range.high == 0xFF;
}

// Copies blocks of a register from the front, copies(i) the one at byte i, until one is not copied; returns how many bytes
// were. A rest that does not fill a register is covered by one that overlaps the bytes before it; the vectors of the units of
// a long text are aligned.
template <class V, class Copies>
int copyBlocks(wchar const* units, int n, Copies copies) {
  constexpr int kBytes = 2 * V::kUnits;
  int i = 0;
  if (n >= kLong && copies(0)) i = kBytes - unitsBehindAligned<V>(units);
  while (n - i >= kBytes && copies(i)) i += kBytes;
  bool const isRestCopied = i < n && i > n - kBytes && n >= kBytes && copies(n - kBytes);
  return isRestCopied ? n : i;
}

// What is left of both, a text shorter than a register too, goes to the narrower vector.
template <class V>
int widen(char const* bytes, int n, ByteRange except, wchar* units) {
  RangeTest<V> const hasException(except);
  int const i = copyBlocks<V>(units, n, [&](int at) {
    if (hasException(V::loadBytes(bytes + at))) return false;
    V::storeWidened(units + at, bytes + at);
    return true;
  });
  if (i == n) return n;
  if constexpr (kNarrowest<V>) {
    return i + widenScalar(bytes + i, n - i, except, units + i);
  } else {
    return i + widen<typename V::Half>(bytes + i, n - i, except, units + i);
  }
}

template <class V>
int narrow(wchar const* units, int n, ByteRange except, char* bytes) {
  RangeTest<V> const hasException(except);
  bool const isAsciiWanted = isBeyondAscii(except);
  int const i = copyBlocks<V>(units, n, [&](int at) {
    auto const front = V::load(units + at);
    auto const back = V::load(units + at + V::kUnits);
    auto const both = V::bitOr(front, back);
    if (isAsciiWanted ? !areWithin<V, 0x7F>(both) : !areWithin<V, 0xFF>(both)) return false;
    auto const block = V::narrowed(front, back);
    if (!isAsciiWanted && hasException(block)) return false;
    V::storeBytes(bytes + at, block);
    return true;
  });
  if (i == n) return n;
  if constexpr (kNarrowest<V>) {
    return i + narrowScalar(units + i, n - i, except, bytes + i);
  } else {
    return i + narrow<typename V::Half>(units + i, n - i, except, bytes + i);
  }
}

}  // namespace
}  // namespace strings
}  // namespace KV_1_1
