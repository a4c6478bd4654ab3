// SPDX-License-Identifier: MIT
//
// Short texts of ASCII, converted in place with the instructions of every processor: most narrow texts are that, and a
// call through the table of kernels would take longer than the work.
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

// Whether all of a text is ASCII, and it is neither too short nor too long for the functions below.
inline bool isShortAscii(wchar const* units, int n) {
  if (n < kHalf || n > kLongestInPlace || units[0] >= 0x80) return false;
  auto all = Sse2Vector::zero();
  forEachBlock<kHalf>(n, [&](int i) { all = Sse2Vector::bitOr(all, Sse2Vector::load(units + i)); });
  return areWithin<Sse2Vector, 0x7F>(all);
}

inline bool isShortAscii(char const* bytes, int n) {
  if (n < kHalf || n > kLongestInPlace || (bytes[0] & 0x80) != 0) return false;
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

}  // namespace
}  // namespace strings
}  // namespace KV_1_1
