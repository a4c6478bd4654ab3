// SPDX-License-Identifier: MIT
//
// The vector kernels, written once for any width. A vector type V offers kUnits, Half (a narrower vector, or void) and the
// few operations used below; a mask has two bits a unit, the lowest unit in the lowest bits. Everything has internal
// linkage: each source that includes this is compiled for another processor.
//
// Ends that do not fill a vector are covered by one that overlaps what has been looked at before; only a range shorter
// than the narrowest vector is left to the scalar kernels.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "kvbase/export.h"
#include "kvbase/platform/bits.h"
#include "kvbase/strings/internal/scalar_kernels.h"
#include "kvbase/strings/internal/text_kernels.h"
#include "kvbase/strings/internal/two_way_search.h"

namespace KV_1_1 {
namespace strings {
namespace {

inline int firstUnit(unsigned int mask) {
  return platform::lowestBit(mask) / 2;
}

// The bits of the units before the first one in the mask.
inline unsigned int unitsBefore(unsigned int mask) {
  return (mask & (0u - mask)) - 1;
}

template <class V>
constexpr bool kNarrowest = std::is_void<typename V::Half>::value;

template <class V>
KVBASE_READS_ALIGNED_BLOCKS int length(wchar const* text) {
  constexpr std::uintptr_t kBytes = V::kUnits * sizeof(wchar);
  std::uintptr_t const skipped = reinterpret_cast<std::uintptr_t>(text) % kBytes;
  char const* block = reinterpret_cast<char const*>(text) - skipped;
  unsigned int zeros = V::mask(V::equal(V::loadAligned(block), V::zero())) >> skipped;
  if (zeros != 0) return firstUnit(zeros);
  do {
    block += kBytes;
    zeros = V::mask(V::equal(V::loadAligned(block), V::zero()));
  } while (zeros == 0);
  return static_cast<int>((block - reinterpret_cast<char const*>(text)) / static_cast<int>(sizeof(wchar))) +
         firstUnit(zeros);
}

// Index of the first of n units that the test finds; n if there is none. test(i) gives a vector with all bits set for each
// unit found among the V::kUnits units from i on. n is at least V::kUnits.
template <class V, class Test>
int firstFound(int n, Test test) {
  constexpr int kUnits = V::kUnits;
  int i = 0;
  // Long texts go four vectors to a branch.
  for (; i + 4 * kUnits <= n; i += 4 * kUnits) {
    auto const found =
        V::either(V::either(test(i), test(i + kUnits)), V::either(test(i + 2 * kUnits), test(i + 3 * kUnits)));
    if (V::mask(found) != 0) break;
  }
  for (; i + kUnits <= n; i += kUnits) {
    if (unsigned int const found = V::mask(test(i))) return i + firstUnit(found);
  }
  if (i < n) {
    i = n - kUnits;
    if (unsigned int const found = V::mask(test(i))) return i + firstUnit(found);
  }
  return n;
}

// Four to seven units, as two overlapping words of four.
inline int mismatchOfFew(wchar const* a, wchar const* b, int n) {
  std::uint64_t wordA;
  std::uint64_t wordB;
  std::memcpy(&wordA, a, sizeof wordA);
  std::memcpy(&wordB, b, sizeof wordB);
  int const start = wordA != wordB ? 0 : n - 4;
  return start + mismatchScalar(a + start, b + start, n - start);
}

template <class V>
int mismatch(wchar const* a, wchar const* b, int n) {
  if (n >= V::kUnits) {
    return firstFound<V>(n, [a, b](int i) { return V::inverse(V::equal(V::load(a + i), V::load(b + i))); });
  }
  if constexpr (kNarrowest<V>) {
    return n >= 4 ? mismatchOfFew(a, b, n) : mismatchScalar(a, b, n);
  } else {
    return mismatch<typename V::Half>(a, b, n);
  }
}

template <class V>
typename V::Register folded(typename V::Register units) {
  auto const upper = V::both(V::greater(units, V::of(KVW('A') - 1)), V::greater(V::of(KVW('Z') + 1), units));
  return V::sum(units, V::both(upper, V::of(32)));
}

template <class V>
int mismatchIgnoringCase(wchar const* a, wchar const* b, int n) {
  if (n >= V::kUnits) {
    return firstFound<V>(
        n, [a, b](int i) { return V::inverse(V::equal(folded<V>(V::load(a + i)), folded<V>(V::load(b + i)))); });
  }
  if constexpr (kNarrowest<V>) {
    return mismatchIgnoringCaseScalar(a, b, n);
  } else {
    return mismatchIgnoringCase<typename V::Half>(a, b, n);
  }
}

template <class V>
int findUnit(wchar const* text, wchar unit, int n) {
  if (n >= V::kUnits) {
    auto const wanted = V::of(unit);
    return firstFound<V>(n, [text, wanted](int i) {
      auto const units = V::load(text + i);
      return V::either(V::equal(units, wanted), V::equal(units, V::zero()));
    });
  }
  if constexpr (kNarrowest<V>) {
    return findUnitScalar(text, unit, n);
  } else {
    return findUnit<typename V::Half>(text, unit, n);
  }
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

// Where the needle may stand: its first and its last unit are in place. The middle is compared then. A text on which that
// goes wrong too often is left to the linear search.
template <class V>
int findText(wchar const* text, int n, wchar const* needle, int m) {
  if (m > n) return -1;
  int const starts = n - m + 1;
  if (starts < V::kUnits) {
    if constexpr (kNarrowest<V>) {
      return findTextScalar(text, n, needle, m);
    } else {
      return findText<typename V::Half>(text, n, needle, m);
    }
  }
  if (findUnit<V>(text, 0, m - 1) < m - 1) return -1;
  auto const first = V::of(needle[0]);
  auto const last = V::of(needle[m - 1]);
  long long wasted = 0;
  for (int next = 0; next < starts;) {
    // The last vector overlaps the one before it.
    int const i = next + V::kUnits <= starts ? next : starts - V::kUnits;
    auto const ends = V::load(text + i + m - 1);
    auto const places = V::both(V::equal(V::load(text + i), first), V::equal(ends, last));
    auto const nul = V::equal(ends, V::zero());
    if (V::mask(V::either(places, nul)) != 0) {
      unsigned int const nulMask = V::mask(nul);
      unsigned int candidates = V::mask(places) & ~0u << 2 * (next - i);
      if (nulMask != 0) candidates &= unitsBefore(nulMask);
      for (; candidates != 0; candidates &= candidates - 1, candidates &= candidates - 1) {
        int const at = i + firstUnit(candidates);
        int const matched = m > 2 ? mismatch<V>(text + at + 1, needle + 1, m - 2) : 0;
        if (m <= 2 || matched == m - 2) return at;
        wasted += matched;
        if (wasted > 8ll * (at + m)) {
          int const end = at + findUnit<V>(text + at, 0, n - at);
          int const found = findTextLinear(text + at, end - at, needle, m);
          return found < 0 ? -1 : at + found;
        }
      }
      if (nulMask != 0) return -1;
    }
    next = i + V::kUnits;
  }
  return -1;
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
  long long size = 0;
  int i = 0;
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
    // Other characters come in runs too: no new vector before this many of them.
    for (int stop = i + V::kUnits < n ? i + V::kUnits : n; i < stop;) {
      Utf16Character const character = readUtf16(units + i, n - i);
      end = writeUtf8(character.code, end);
      i += character.units;
    }
  }
  return end - bytes;
}

template <class V>
int utf16Size(char const* bytes, int n) {
  auto const* const data = reinterpret_cast<unsigned char const*>(bytes);
  int size = 0;
  for (int i = 0; i < n;) {
    for (; i + V::kUnits <= n && V::isAscii(bytes + i); i += V::kUnits) size += V::kUnits;
    for (int stop = i + V::kUnits < n ? i + V::kUnits : n; i < stop;) {
      Utf8Character const character = readUtf8(data + i, n - i);
      size += character.code < 0x10000 ? 1 : 2;
      i += character.bytes;
    }
  }
  return size;
}

template <class V>
int fromUtf8(char const* bytes, int n, wchar* units) {
  auto const* const data = reinterpret_cast<unsigned char const*>(bytes);
  wchar* end = units;
  for (int i = 0; i < n;) {
    for (; i + V::kUnits <= n && V::isAscii(bytes + i); i += V::kUnits, end += V::kUnits) {
      V::store(end, V::loadNarrow(bytes + i));
    }
    for (int stop = i + V::kUnits < n ? i + V::kUnits : n; i < stop;) {
      Utf8Character const character = readUtf8(data + i, n - i);
      end = writeUtf16(character.code, end);
      i += character.bytes;
    }
  }
  return static_cast<int>(end - units);
}

template <class V>
constexpr TextKernels kVectorKernels = {
    &length<V>,      &mismatch<V>,     &mismatchIgnoringCase<V>,
    &findUnit<V>,    &findLastUnit<V>, &findText<V>,
    &replaceUnit<V>, &utf8Size<V>,     &toUtf8<V>,
    &utf16Size<V>,   &fromUtf8<V>,
};

}  // namespace
}  // namespace strings
}  // namespace KV_1_1
