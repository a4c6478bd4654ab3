// SPDX-License-Identifier: MIT
//
// The vector kernels, written once for any width. A vector type V offers kUnits, Half (a narrower vector, or void) and
// the few operations used below; a mask has two bits a unit, the lowest unit in the lowest bits. Everything has
// internal linkage: each source that includes this is compiled for another processor.
//
// Ends that do not fill a vector are covered by one that overlaps what has been looked at before; only a range shorter
// than the narrowest vector is left to the scalar kernels.
#pragma once

#include <emmintrin.h>

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "kvbase/export.h"
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

// The zero units of a vector.
template <class V>
unsigned int zeros(typename V::Register units) {
  return V::mask(V::equal(units, V::zero()));
}

// The smaller units of four vectors: one that is zero in any of them is zero in the result.
template <class V>
typename V::Register least(typename V::Register a, typename V::Register b, typename V::Register c,
                           typename V::Register d) {
  return V::lesser(V::lesser(a, b), V::lesser(c, d));
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
  // Four vectors to a branch, once they are aligned together and so lie in one page.
  for (; reinterpret_cast<std::uintptr_t>(block) % (4 * kBytes) != 0; block += kBytes) {
    found = zeros<V>(V::loadAligned(block));
    if (found != 0) break;
  }
  if (found == 0) {
    while (zeros<V>(least<V>(V::loadAligned(block), V::loadAligned(block + kBytes), V::loadAligned(block + 2 * kBytes),
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
  // Long texts go four vectors to a branch.
  for (; i + 4 * kUnits <= n; i += 4 * kUnits) {
    if (zeros<V>(least<V>(at(i), at(i + kUnits), at(i + 2 * kUnits), at(i + 3 * kUnits))) != 0) break;
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
  auto const upper = V::both(V::greater(units, V::of(KVW('A') - 1)), V::greater(V::of(KVW('Z') + 1), units));
  return V::sum(units, V::both(upper, V::of(32)));
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
    return W::lesser(units, W::unlike(units, W::of(unit)));
  });
}

template <class V>
int findLastUnit(wchar const* text, wchar unit, int n) {
  auto const wanted = V::of(unit);
  int last = -1;
  int i = 0;
  for (; i + V::kUnits <= n; i += V::kUnits) {
    auto const units = V::load(text + i);
    auto const hits = V::equal(units, wanted);
    auto const nul = V::equal(units, V::zero());
    if (V::mask(V::either(hits, nul)) == 0) continue;
    if (V::mask(nul) != 0) break;
    last = i + platform::highestBit(V::mask(hits)) / 2;
  }
  int const rest = findLastUnitScalar(text + i, unit, n - i);
  return rest >= 0 ? i + rest : last;
}

// Where the needle may stand: its first and last unit are in place, and one in its middle. What is between them is
// compared then. A text on which that goes wrong too often is left to the linear search.
template <class V>
int findText(wchar const* text, int n, wchar const* needle, int m) {
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
    // Zero is a place for the needle, or a NUL: it ends the text, and no needle that stands before it can contain it.
    auto const two = [rest, first, last, m](auto v, auto load) {
      using W = decltype(v);
      auto const units = load(rest);
      return W::lesser(units, W::either(W::unlike(units, W::of(first)), W::unlike(load(rest + m - 1), W::of(last))));
    };
    at += m > 2 ? firstZero<V>(few,
                               [rest, first, middle, last, m](auto v, auto load) {
                                 using W = decltype(v);
                                 auto const units = load(rest);
                                 auto const ends = W::either(W::unlike(units, W::of(first)),
                                                             W::unlike(load(rest + m - 1), W::of(last)));
                                 return W::lesser(units, W::either(ends, W::unlike(load(rest + m / 2), W::of(middle))));
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

// Units beyond ASCII are found on either side of the signed comparison: as numbers below zero, or above the range.
template <class V>
int findRange(wchar const* text, int n, wchar low, wchar high) {
  if (n < kFew) return findRangeScalar(text, n, low, high);
  return firstZero<V>(n, [text, low, high](auto v, auto load) {
    using W = decltype(v);
    auto const units = load(text);
    auto const beyond = W::either(W::greater(W::zero(), units), W::greater(units, W::of(0x7F)));
    auto const outside = W::either(W::greater(W::of(low), units), W::greater(units, W::of(high)));
    return W::both(outside, W::inverse(beyond));
  });
}

template <class V>
int replaceUnit(wchar* text, int n, wchar from, wchar to) {
  auto const old = V::of(from);
  auto const fresh = V::of(to);
  int count = 0;
  int i = 0;
  while (i + V::kUnits <= n) {
    // Each lane counts its own matches, and 16 bits hold those of this many vectors.
    auto counts = V::zero();
    bool ended = false;
    for (int vectors = 0; vectors < 0x7FFF && i + V::kUnits <= n && !ended; ++vectors) {
      auto const units = V::load(text + i);
      ended = V::mask(V::equal(units, V::zero())) != 0;
      if (ended) break;
      auto const hits = V::equal(units, old);
      V::store(text + i, V::choose(hits, fresh, units));
      counts = V::difference(counts, hits);
      i += V::kUnits;
    }
    count += V::sumOfUnits(counts);
    if (ended) break;
  }
  return count + replaceUnitScalar(text + i, n - i, from, to);
}

// --- UTF-8: runs of ASCII go by vectors, everything else character by character. ---------------------------------------

// Size of UTF-16 text in UTF-8: a byte for each unit, one more from U+0080 and from U+0800 on, two less for a pair.
template <class V>
long long utf8Size(wchar const* units, int n) {
  int i = 0;
  while (i + V::kUnits <= n &&
         V::mask(V::equal(V::both(V::load(units + i), V::of(0xFF80)), V::zero())) == kAllUnits<V>) {
    i += V::kUnits;
  }
  long long size = i;  // of ASCII so far
  // One unit more than the vector is read, to see the other half of a pair.
  while (i + V::kUnits < n) {
    auto counts = V::zero();
    int const start = i;
    for (int vectors = 0; vectors < 0x1FFF && i + V::kUnits < n; ++vectors, i += V::kUnits) {
      auto const block = V::load(units + i);
      auto const long2 = V::inverse(V::equal(V::both(block, V::of(0xFF80)), V::zero()));
      auto const long3 = V::inverse(V::equal(V::both(block, V::of(0xF800)), V::zero()));
      auto const high = V::equal(V::both(block, V::of(0xFC00)), V::of(0xD800));
      auto const low = V::equal(V::both(V::load(units + i + 1), V::of(0xFC00)), V::of(0xDC00));
      auto const pair = V::both(high, low);
      counts = V::difference(counts, V::sum(long2, long3));
      counts = V::sum(counts, V::sum(pair, pair));
    }
    size += i - start + V::sumOfUnits(counts);
  }
  // A pair cut here comes out right: its first half was counted as one byte, and alone its second half counts as three.
  return size + utf8SizeScalar(units + i, n - i);
}

template <class V>
long long toUtf8(wchar const* units, int n, char* bytes) {
  char* end = bytes;
  for (int i = 0; i < n;) {
    for (; i + V::kUnits <= n; i += V::kUnits, end += V::kUnits) {
      auto const block = V::load(units + i);
      if (V::mask(V::inverse(V::equal(V::both(block, V::of(0xFF80)), V::zero()))) != 0) break;
      V::storeNarrow(end, block);
    }
    if constexpr (V::kConvertsRuns) {
      // Of eight units at a time more bytes are written than count; those of the units behind make room for them.
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
    // Other characters come in runs too: no new vector before this many of them.
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
      // Blocks of fewer units are written whole; the 24 bytes behind them hold eight more at least, which make room.
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
