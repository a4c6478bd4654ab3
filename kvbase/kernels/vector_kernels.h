// SPDX-License-Identifier: MIT
//
// The vector kernels, written once for any width. A vector type V offers kUnits, Half (a narrower vector, or void) and
// the few operations used below. A mask has two bits per unit, those of the first unit lowest. Everything has internal
// linkage: each source that includes this is compiled for another processor.
//
// A rest that does not fill a vector is covered by a vector that overlaps the units before it. Ranges below kFew units
// are left to the scalar kernels.
#pragma once

#include <emmintrin.h>

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "kvbase/export.h"
#include "kvbase/internal_assert.h"
#include "kvbase/kernels/scalar_kernels.h"
#include "kvbase/kernels/two_way_search.h"
#include "kvbase/platform/bits.h"

namespace KV_1_1 {
namespace strings {
namespace {

inline int firstUnit(unsigned int mask) {
  return platform::lowestBit(mask) / 2;
}

template <class V>
constexpr bool kNarrowest = std::is_void<typename V::Half>::value;

template <class V>
constexpr unsigned int kAllUnits = ~0u >> (32 - 2 * V::kUnits);

// The mask of the units that are zero.
template <class V>
unsigned int zeros(typename V::Register units) {
  return V::mask(V::equal(units, V::zero()));
}

// The minimum of four vectors, unit by unit: zero where any of them is zero.
template <class V>
typename V::Register minOf(typename V::Register a, typename V::Register b, typename V::Register c,
                           typename V::Register d) {
  return V::min(V::min(a, b), V::min(c, d));
}

template <class V>
KVBASE_READS_ALIGNED_BLOCKS int length(wchar const* text) {
  constexpr std::uintptr_t kBytes = V::kUnits * sizeof(wchar);
  std::uintptr_t const address = reinterpret_cast<std::uintptr_t>(text);
  std::uintptr_t const skipped = address % kBytes;
  char const* block = reinterpret_cast<char const*>(text) - skipped;
  unsigned int found = zeros<V>(V::loadAligned(block)) >> skipped;
  if (found != 0) return firstUnit(found);
  block += kBytes;
  // Four vectors per branch, once they are aligned as a group and so lie in one page.
  for (; reinterpret_cast<std::uintptr_t>(block) % (4 * kBytes) != 0; block += kBytes) {
    found = zeros<V>(V::loadAligned(block));
    if (found != 0) break;
  }
  if (found == 0) {
    while (zeros<V>(minOf<V>(V::loadAligned(block), V::loadAligned(block + kBytes), V::loadAligned(block + 2 * kBytes),
                             V::loadAligned(block + 3 * kBytes))) == 0) {
      block += 4 * kBytes;
    }
    while ((found = zeros<V>(V::loadAligned(block))) == 0) block += kBytes;
  }
  return static_cast<int>((block - reinterpret_cast<char const*>(text)) / static_cast<int>(sizeof(wchar))) +
         firstUnit(found);
}

// Ranges below this are left to the scalar kernels.
constexpr int kFew = 4;

// Index of the first of n units for which the test gives zero; n if there is none. test(V(), load) gives a vector of
// results, where load(text) loads the units of a text that are to be tested. This one is for half a vector to a whole one.
template <class V, class Test>
inline int firstZeroOfFew(int n, Test test) {
  KVBASE_ASSERT(n >= V::kUnits / 2 && n <= V::kUnits);
  unsigned int const found = zeros<V>(test(V(), [n](wchar const* text) { return V::loadEnds(text, n); }));
  if (found == 0) return n;
  int const unit = firstUnit(found);
  return unit < V::kUnits / 2 ? unit : unit + n - V::kUnits;
}

// The same for any n.
// REQUIRES: n is at least kFew.
template <class V, class Test>
int firstZero(int n, Test test) {
  KVBASE_ASSERT(n >= kFew);
  constexpr int kUnits = V::kUnits;
  if (n < kUnits) {
    if constexpr (!kNarrowest<V>) {
      if (n < kUnits / 2) return firstZeroOfFew<typename V::Half>(n, test);
    }
    return firstZeroOfFew<V>(n, test);
  }
  auto const at = [test](int i) { return test(V(), [i](wchar const* text) { return V::load(text + i); }); };
  int i = 0;
  // Long texts take four vectors per branch.
  for (; n - i >= 4 * kUnits; i += 4 * kUnits) {
    if (zeros<V>(minOf<V>(at(i), at(i + kUnits), at(i + 2 * kUnits), at(i + 3 * kUnits))) != 0) break;
  }
  for (; n - i >= kUnits; i += kUnits) {
    if (unsigned int const found = zeros<V>(at(i))) return i + firstUnit(found);
  }
  if (i < n) {
    i = n - kUnits;
    if (unsigned int const found = zeros<V>(at(i))) return i + firstUnit(found);
  }
  return n;
}

// From so many units on it pays to look at a front of a text first, so that the vectors behind it are aligned.
constexpr int kLong = 512;

// How many units behind an aligned place a text begins.
template <class V>
int unitsBehindAligned(wchar const* text) {
  return static_cast<int>(reinterpret_cast<std::uintptr_t>(text) / sizeof(wchar) % V::kUnits);
}

// firstZero by aligned vectors of `text`, if it is long. testFrom(i) gives the test for the texts from i on.
template <class V, class TestFrom>
int firstZeroAligned(wchar const* text, int n, TestFrom testFrom) {
  if (n < kLong) return firstZero<V>(n, testFrom(0));
  int const front = 2 * V::kUnits - unitsBehindAligned<V>(text);
  int const at = firstZero<V>(front, testFrom(0));
  return at < front ? at : front + firstZero<V>(n - front, testFrom(front));
}

// Tests for firstZero. Those of two texts give zero where the units differ or both are NUL.
inline auto differsOrEnds(wchar const* a, wchar const* b) {
  return [a, b](auto v, auto load) {
    auto const units = load(a);
    return decltype(v)::bitAnd(units, decltype(v)::equal(units, load(b)));
  };
}

template <class V>
typename V::Register folded(typename V::Register units) {
  auto const upper = V::bitAnd(V::greater(units, V::of(KVW('A') - 1)), V::greater(V::of(KVW('Z') + 1), units));
  return V::add(units, V::bitAnd(upper, V::of(32)));
}

inline auto differsOrEndsIgnoringCase(wchar const* a, wchar const* b) {
  return [a, b](auto v, auto load) {
    using W = decltype(v);
    auto const units = folded<W>(load(a));
    return W::bitAnd(units, W::equal(units, folded<W>(load(b))));
  };
}

inline auto isUnitOrEnd(wchar const* text, wchar unit) {
  return [text, unit](auto v, auto load) {
    using W = decltype(v);
    auto const units = load(text);
    return W::min(units, W::bitXor(units, W::of(unit)));
  };
}

// Zero for a unit of the range and for one beyond ASCII. The limits are ints, because g++ hands over a test that holds two
// units by way of memory and reads both at once, for which the processor waits.
inline auto isInRange(wchar const* text, int low, int high) {
  return [text, low, high](auto v, auto load) {
    using W = decltype(v);
    auto const units = load(text);
    // Moved so that the range begins at the smallest signed number.
    auto const moved = W::add(units, W::of(0x8000 - low));
    auto const isOutside = W::greater(moved, W::of(high - low - 0x8000));
    return W::bitAnd(isOutside, W::equal(W::bitAnd(units, W::of(0xFF80)), W::zero()));
  };
}

template <class V>
int mismatch(wchar const* a, wchar const* b, int n) {
  return n < kFew ? mismatchScalar(a, b, n)
                  : firstZeroAligned<V>(a, n, [=](int i) { return differsOrEnds(a + i, b + i); });
}

template <class V>
int mismatchIgnoringCase(wchar const* a, wchar const* b, int n) {
  return n < kFew ? mismatchIgnoringCaseScalar(a, b, n) : firstZero<V>(n, differsOrEndsIgnoringCase(a, b));
}

template <class V>
int findUnit(wchar const* text, wchar unit, int n) {
  if (n < kFew) return findUnitScalar(text, unit, n);
  if (unit == 0) {
    return firstZeroAligned<V>(text, n, [=](int i) { return [=](auto, auto load) { return load(text + i); }; });
  }
  return firstZeroAligned<V>(text, n, [=](int i) { return isUnitOrEnd(text + i, unit); });
}

template <class V>
int findLastUnit(wchar const* text, wchar unit, int n) {
  constexpr int kUnits = V::kUnits;
  auto const wanted = V::of(unit);
  auto const unlike = [text, wanted](int i) { return V::bitXor(V::load(text + i), wanted); };
  while (n >= 4 * kUnits && zeros<V>(minOf<V>(unlike(n - kUnits), unlike(n - 2 * kUnits), unlike(n - 3 * kUnits),
                                              unlike(n - 4 * kUnits))) == 0) {
    n -= 4 * kUnits;
  }
  for (; n >= kUnits; n -= kUnits) {
    unsigned int const found = zeros<V>(unlike(n - kUnits));
    if (found != 0) return n - kUnits + platform::highestBit(found) / 2;
  }
  return findLastUnitScalar(text, unit, n);
}

// Looks for candidates, at which the first, the last and a middle unit of the needle match, and compares the other units
// there. When too many units have been compared in vain, the linear search takes over.
template <class V>
int findText(wchar const* text, int n, wchar const* needle, int m) {
  KVBASE_ASSERT(m >= 1);
  int const starts = n - m + 1;
  wchar const first = needle[0];
  wchar const middle = needle[m / 2];
  wchar const last = needle[m - 1];
  long long wasted = 0;
  for (int at = 0; at < starts; ++at) {
    wchar const* const rest = text + at;
    int const few = starts - at;
    if (few < kFew) {
      int const found = findTextScalar(rest, n - at, needle, m);
      return found < 0 ? -1 : at + found;
    }
    // Zero marks a candidate or a NUL. At a NUL the search ends: the needle holds none, so no match goes across it.
    auto const two = [rest, first, last, m](auto v, auto load) {
      using W = decltype(v);
      auto const units = load(rest);
      return W::min(units, W::bitOr(W::bitXor(units, W::of(first)), W::bitXor(load(rest + m - 1), W::of(last))));
    };
    at += m > 2 ? firstZero<V>(few,
                               [rest, first, middle, last, m](auto v, auto load) {
                                 using W = decltype(v);
                                 auto const units = load(rest);
                                 auto const ends = W::bitOr(W::bitXor(units, W::of(first)),
                                                            W::bitXor(load(rest + m - 1), W::of(last)));
                                 return W::min(units, W::bitOr(ends, W::bitXor(load(rest + m / 2), W::of(middle))));
                               })
                : firstZero<V>(few, two);
    if (at == starts || text[at] == 0) return -1;
    int const matched = m > 2 ? mismatch<V>(text + at + 1, needle + 1, m - 2) : 0;
    if (m <= 2 || matched == m - 2) return at;
    wasted += matched;
    if (wasted > 8ll * (at + m)) {
      int const end = at + findUnit<V>(text + at, 0, n - at);
      int const found = findTextLinear(text + at, end - at, needle, m);
      return found < 0 ? -1 : at + found;
    }
  }
  return -1;
}

template <class V>
int findRange(wchar const* text, int n, wchar low, wchar high) {
  KVBASE_ASSERT(low <= high && high < 0x80);
  return n < kFew ? findRangeScalar(text, n, low, high)
                  : firstZeroAligned<V>(text, n, [=](int i) { return isInRange(text + i, low, high); });
}

template <class V>
int replaceUnit(wchar* text, int n, wchar from, wchar to) {
  KVBASE_ASSERT(from != 0);
  auto const old = V::of(from);
  auto const fresh = V::of(to);
  // Each lane counts its own matches in 16 bits, which hold the count of 0x7FFF vectors.
  constexpr int kMostUnits = 0x7FFE * V::kUnits;
  int count = 0;
  int i = 0;
  for (bool ended = false; !ended && n - i >= V::kUnits;) {
    auto counts = V::zero();
    int const last = n - V::kUnits - i < kMostUnits ? n - V::kUnits : i + kMostUnits;
    for (; i <= last; i += V::kUnits) {
      auto const units = V::load(text + i);
      ended = V::mask(V::equal(units, V::zero())) != 0;
      if (ended) break;
      auto const hits = V::equal(units, old);
      V::store(text + i, V::select(hits, fresh, units));
      counts = V::sub(counts, hits);
    }
    count += V::sumOfUnits(counts);
  }
  return count + replaceUnitScalar(text + i, n - i, from, to);
}

}  // namespace
}  // namespace strings
}  // namespace KV_1_1
