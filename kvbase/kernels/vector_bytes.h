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

template <class V>
bool isLatin1(typename V::Register units) {
  return zeros<V>(V::bitAnd(units, V::of(0xFF00))) == kAllUnits<V>;
}

template <class V>
int findBeyondLatin1(wchar const* units, int n) {
  constexpr int kUnits = V::kUnits;
  int i = 0;
  for (; i + 4 * kUnits <= n; i += 4 * kUnits) {
    auto const front = V::bitOr(V::load(units + i), V::load(units + i + kUnits));
    auto const back = V::bitOr(V::load(units + i + 2 * kUnits), V::load(units + i + 3 * kUnits));
    if (!isLatin1<V>(V::bitOr(front, back))) break;
  }
  while (i + kUnits <= n && isLatin1<V>(V::load(units + i))) i += kUnits;
  return i + findBeyondLatin1Scalar(units + i, n - i);
}

// A test of whether any byte of a register lies in a range. The range is moved to the lowest signed numbers, so one
// comparison tells.
template <class V>
class RangeTest {
 public:
  explicit RangeTest(ByteRange range)
      : offset_(V::bytesOf(0x80 - range.low)), end_(V::bytesOf(range.high - range.low - 0x80)) {}

  bool operator()(typename V::Register bytes) const {
    return V::mask(V::greaterBytes(V::addBytes(bytes, offset_), end_)) != kAllUnits<V>;
  }

 private:
  typename V::Register offset_;
  typename V::Register end_;  // the last byte of the range
};

template <class V>
int widen(char const* bytes, int n, ByteRange except, wchar* units) {
  constexpr int kBytes = 2 * V::kUnits;
  RangeTest<V> const hasException(except);
  int i = 0;
  for (; i + kBytes <= n; i += kBytes) {
    auto const block = V::loadBytes(bytes + i);
    if (hasException(block)) break;
    V::storeWidened(units + i, block);
  }
  if constexpr (kNarrowest<V>) {
    return i + widenScalar(bytes + i, n - i, except, units + i);
  } else {
    return i + widen<typename V::Half>(bytes + i, n - i, except, units + i);
  }
}

template <class V>
int narrow(wchar const* units, int n, ByteRange except, char* bytes) {
  constexpr int kBytes = 2 * V::kUnits;
  RangeTest<V> const hasException(except);
  int i = 0;
  for (; i + kBytes <= n; i += kBytes) {
    auto const front = V::load(units + i);
    auto const back = V::load(units + i + V::kUnits);
    if (!isLatin1<V>(V::bitOr(front, back))) break;
    auto const block = V::narrowed(front, back);
    if (hasException(block)) break;
    V::storeBytes(bytes + i, block);
  }
  if constexpr (kNarrowest<V>) {
    return i + narrowScalar(units + i, n - i, except, bytes + i);
  } else {
    return i + narrow<typename V::Half>(units + i, n - i, except, bytes + i);
  }
}

}  // namespace
}  // namespace strings
}  // namespace KV_1_1
