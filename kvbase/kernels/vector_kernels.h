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
#include "kvbase/kernels/text_kernels.h"
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
// results, where load(text) loads the units of a text that are to be tested.
// REQUIRES: n is at least kFew.
template <class V, class Test>
int firstZero(int n, Test test) {
  KVBASE_ASSERT(n >= kFew);
  constexpr int kUnits = V::kUnits;
  if (n < kUnits) {
    if constexpr (!kNarrowest<V>) {
      if (n < kUnits / 2) return firstZero<typename V::Half>(n, test);
    }
    unsigned int const found = zeros<V>(test(V(), [n](wchar const* text) { return V::loadEnds(text, n); }));
    if (found == 0) return n;
    int const unit = firstUnit(found);
    return unit < kUnits / 2 ? unit : unit + n - kUnits;
  }
  auto const at = [test](int i) { return test(V(), [i](wchar const* text) { return V::load(text + i); }); };
  int i = 0;
  // Long texts take four vectors per branch.
  for (; i + 4 * kUnits <= n; i += 4 * kUnits) {
    if (zeros<V>(minOf<V>(at(i), at(i + kUnits), at(i + 2 * kUnits), at(i + 3 * kUnits))) != 0) break;
  }
  for (; i + kUnits <= n; i += kUnits) {
    if (unsigned int const found = zeros<V>(at(i))) return i + firstUnit(found);
  }
  if (i < n) {
    i = n - kUnits;
    if (unsigned int const found = zeros<V>(at(i))) return i + firstUnit(found);
  }
  return n;
}

template <class V>
int mismatch(wchar const* a, wchar const* b, int n) {
  if (n < kFew) return mismatchScalar(a, b, n);
  return firstZero<V>(n, [a, b](auto v, auto load) { return decltype(v)::equal(load(a), load(b)); });
}

template <class V>
typename V::Register folded(typename V::Register units) {
  auto const upper = V::bitAnd(V::greater(units, V::of(KVW('A') - 1)), V::greater(V::of(KVW('Z') + 1), units));
  return V::add(units, V::bitAnd(upper, V::of(32)));
}

template <class V>
int mismatchIgnoringCase(wchar const* a, wchar const* b, int n) {
  if (n < kFew) return mismatchIgnoringCaseScalar(a, b, n);
  return firstZero<V>(n, [a, b](auto v, auto load) {
    using W = decltype(v);
    return W::equal(folded<W>(load(a)), folded<W>(load(b)));
  });
}

template <class V>
int findUnit(wchar const* text, wchar unit, int n) {
  if (n < kFew) return findUnitScalar(text, unit, n);
  if (unit == 0) return firstZero<V>(n, [text](auto, auto load) { return load(text); });
  return firstZero<V>(n, [text, unit](auto v, auto load) {
    using W = decltype(v);
    auto const units = load(text);
    return W::min(units, W::bitXor(units, W::of(unit)));
  });
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

// Comparisons are signed: a unit beyond ASCII is either negative or above 0x7F.
template <class V>
int findRange(wchar const* text, int n, wchar low, wchar high) {
  KVBASE_ASSERT(low <= high && high < 0x80);
  if (n < kFew) return findRangeScalar(text, n, low, high);
  return firstZero<V>(n, [text, low, high](auto v, auto load) {
    using W = decltype(v);
    auto const units = load(text);
    auto const beyond = W::bitOr(W::greater(W::zero(), units), W::greater(units, W::of(0x7F)));
    auto const outside = W::bitOr(W::greater(W::of(low), units), W::greater(units, W::of(high)));
    return W::bitAnd(outside, W::bitNot(beyond));
  });
}

template <class V>
int replaceUnit(wchar* text, int n, wchar from, wchar to) {
  KVBASE_ASSERT(from != 0);
  auto const old = V::of(from);
  auto const fresh = V::of(to);
  int count = 0;
  int i = 0;
  while (i + V::kUnits <= n) {
    // Each lane counts its own matches in 16 bits, which hold the count of 0x7FFF vectors.
    auto counts = V::zero();
    bool ended = false;
    for (int vectors = 0; vectors < 0x7FFF && i + V::kUnits <= n && !ended; ++vectors) {
      auto const units = V::load(text + i);
      ended = V::mask(V::equal(units, V::zero())) != 0;
      if (ended) break;
      auto const hits = V::equal(units, old);
      V::store(text + i, V::select(hits, fresh, units));
      counts = V::sub(counts, hits);
      i += V::kUnits;
    }
    count += V::sumOfUnits(counts);
    if (ended) break;
  }
  return count + replaceUnitScalar(text + i, n - i, from, to);
}

// --- UTF-8: vectors for runs of ASCII and of similar characters, everything else character by character -----------------

// Size of UTF-16 text in UTF-8: a byte for each unit, one more from U+0080 and from U+0800 on, two less for a pair.
template <class V>
long long utf8Size(wchar const* units, int n) {
  int i = 0;
  while (i + V::kUnits <= n &&
         V::mask(V::equal(V::bitAnd(V::load(units + i), V::of(0xFF80)), V::zero())) == kAllUnits<V>) {
    i += V::kUnits;
  }
  long long size = i;  // of ASCII so far
  // One unit more than the vector is read, to see the other half of a pair.
  while (i + V::kUnits < n) {
    auto counts = V::zero();
    int const start = i;
    for (int vectors = 0; vectors < 0x1FFF && i + V::kUnits < n; ++vectors, i += V::kUnits) {
      auto const block = V::load(units + i);
      auto const long2 = V::bitNot(V::equal(V::bitAnd(block, V::of(0xFF80)), V::zero()));
      auto const long3 = V::bitNot(V::equal(V::bitAnd(block, V::of(0xF800)), V::zero()));
      auto const high = V::equal(V::bitAnd(block, V::of(0xFC00)), V::of(0xD800));
      auto const low = V::equal(V::bitAnd(V::load(units + i + 1), V::of(0xFC00)), V::of(0xDC00));
      auto const pair = V::bitAnd(high, low);
      counts = V::sub(counts, V::add(long2, long3));
      counts = V::add(counts, V::add(pair, pair));
    }
    size += i - start + V::sumOfUnits(counts);
  }
  // A pair split here still counts as four bytes: its first half was counted as one byte, and its second half alone
  // counts as three.
  return size + utf8SizeScalar(units + i, n - i);
}

template <class V>
long long toUtf8(wchar const* units, int n, char* bytes) {
  char* end = bytes;
  for (int i = 0; i < n;) {
    for (; i + V::kUnits <= n; i += V::kUnits, end += V::kUnits) {
      auto const block = V::load(units + i);
      if (V::mask(V::bitNot(V::equal(V::bitAnd(block, V::of(0xFF80)), V::zero()))) != 0) break;
      V::storeNarrow(end, block);
    }
    if constexpr (V::kConvertsRuns) {
      // Eight units at a time. More bytes are written than count; at least eight more units follow, so there is room.
      int size = 0;
      while (i + 16 <= n) {
        size = V::toShortUtf8(units + i, end);
        if (size == 0 && V::toLongUtf8(units + i, end)) size = 24;
        if (size == 0) break;
        i += 8;
        end += size;
        if (size == 8) break;
      }
      if (size == 8) continue;  // back to ASCII
    }
    // Other characters come in runs too, so the next vector is tried only behind as many of them as a vector has units.
    for (int stop = i + V::kUnits < n ? i + V::kUnits : n; i < stop;) {
      Utf16Character const character = readUtf16(units + i, n - i);
      end = writeUtf8(character.code, end);
      i += character.units;
    }
  }
  return end - bytes;
}

// Reads UTF-8 piece by piece. A Sink takes V::kUnits ASCII characters at a time by ascii(bytes), up to eight units at a
// time by units(block, count), and any one character by character(code).
template <class V, class Sink>
void readUtf8Text(char const* bytes, int n, Sink& sink) {
  for (int i = 0; i < n;) {
    for (; i + V::kUnits <= n && V::isAscii(bytes + i); i += V::kUnits) sink.ascii(bytes + i);
    if constexpr (V::kConvertsRuns) {
      __m128i block;
      for (; i + 28 <= n && V::fromLongUtf8(bytes + i, block); i += 24) sink.units(block, 8);
      // Blocks of fewer units are written whole. The 24 bytes behind them decode to at least eight units, so there is
      // room.
      for (int taken = 1; i + 40 <= n && taken != 0; i += taken) taken = V::fromShortUtf8(bytes + i, sink);
    }
    for (int stop = i + V::kUnits < n ? i + V::kUnits : n; i < stop;) {
      Utf8Character const character = readUtf8(bytes + i, n - i);
      sink.character(character.code);
      i += character.bytes;
    }
  }
}

template <class V>
struct UnitCounter {
  int size = 0;

  void ascii(char const*) { size += V::kUnits; }
  void units(__m128i, int count) { size += count; }
  void character(unsigned int code) { size += code < 0x10000 ? 1 : 2; }
};

template <class V>
struct UnitWriter {
  wchar* end;

  void ascii(char const* bytes) {
    V::store(end, V::loadNarrow(bytes));
    end += V::kUnits;
  }
  void units(__m128i block, int count) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(end), block);
    end += count;
  }
  void character(unsigned int code) { end = writeUtf16(code, end); }
};

template <class V>
int utf16Size(char const* bytes, int n) {
  UnitCounter<V> counter;
  readUtf8Text<V>(bytes, n, counter);
  return counter.size;
}

template <class V>
int fromUtf8(char const* bytes, int n, wchar* units) {
  UnitWriter<V> writer{units};
  readUtf8Text<V>(bytes, n, writer);
  return static_cast<int>(writer.end - units);
}

template <class V>
constexpr TextKernels kVectorKernels = {
    &length<V>,    &mismatch<V>,  &mismatchIgnoringCase<V>, &findUnit<V>, &findLastUnit<V>,
    &findText<V>,  &findRange<V>, &replaceUnit<V>,          &utf8Size<V>, &toUtf8<V>,
    &utf16Size<V>, &fromUtf8<V>,
};

}  // namespace
}  // namespace strings
}  // namespace KV_1_1
