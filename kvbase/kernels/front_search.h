// SPDX-License-Identifier: MIT
//
// Searches in place, with the instructions of every processor: most texts are short or decided at their front, and a call
// through the table of kernels would take longer than the work. Of long texts only the first vector is looked at in place.
// Results and requirements are those of the kernels.
#pragma once

#include <algorithm>
#include <cstdint>

#include "kvbase/export.h"
#include "kvbase/kernels/sse2_vector.h"
#include "kvbase/kernels/text_kernels.h"
#include "kvbase/kernels/vector_kernels.h"

namespace KV_1_1 {
namespace strings {
namespace {

// --- The first vector alone: both texts can be read that far, also behind their NUL ------------------------------------

constexpr int kFrontUnits = Sse2Vector::kUnits;

// Index of the first unit for which the test gives zero; kFrontUnits if there is none.
template <class Test>
inline int firstZeroInFront(Test test) {
  unsigned int const found =
      zeros<Sse2Vector>(test(Sse2Vector(), [](wchar const* text) { return Sse2Vector::load(text); }));
  return found != 0 ? firstUnit(found) : kFrontUnits;
}

inline int mismatchInFront(wchar const* a, wchar const* b) {
  return firstZeroInFront(differsOrEnds(a, b));
}

inline int mismatchIgnoringCaseInFront(wchar const* a, wchar const* b) {
  return firstZeroInFront(differsOrEndsIgnoringCase(a, b));
}

// --- Short texts in place, long ones by the kernels ----------------------------------------------------------------------

constexpr int kInPlaceUnits = 64;

// firstZero of n units where none of the first vector is zero: two vectors a branch, the last of which overlap those before
// them.
// REQUIRES: n is at least kFrontUnits.
template <class Test>
inline int firstZeroInPlaceBehindFront(int n, Test test) {
  constexpr int kStep = 2 * kFrontUnits;
  auto const isZeroAt = [test](int i) {
    auto const units = test(Sse2Vector(), [i](wchar const* text) { return Sse2Vector::load(text + i); });
    return Sse2Vector::equal(units, Sse2Vector::zero());
  };
  if (n < kStep) {
    unsigned int const found = Sse2Vector::mask(isZeroAt(n - kFrontUnits));
    return found != 0 ? n - kFrontUnits + firstUnit(found) : n;
  }
  for (int i = kFrontUnits; i < n; i += kStep) {
    int const start = std::min(i, n - kStep);
    unsigned int const found = Sse2Vector::maskOfTwo(isZeroAt(start), isZeroAt(start + kFrontUnits));
    if (found != 0) return start + platform::lowestBit(found);
  }
  return n;
}

// Where the texts do not differ or end in the first vector.
// REQUIRES: n is at least kFrontUnits.
inline int mismatchInPlaceBehindFront(wchar const* a, wchar const* b, int n) {
  return firstZeroInPlaceBehindFront(n, differsOrEnds(a, b));
}

// Where no unit of the range is in the first vector. The call is made here, with numbers: a test has two words, which the
// calling convention of Windows passes through memory, and waiting for them takes as long as the search.
// REQUIRES: n is at least kFrontUnits.
KVBASE_NEVER_INLINE inline int rangeInPlaceBehindFront(wchar const* text, int n, int low, int high) {
  return firstZeroInPlaceBehindFront(n, isInRange(text, low, high));
}

// Folding takes so many instructions that wider vectors win even in short texts.
inline int mismatchIgnoringCaseBehindFront(wchar const* a, wchar const* b, int n) {
  return kFrontUnits + kernels().mismatchIgnoringCase(a + kFrontUnits, b + kFrontUnits, n - kFrontUnits);
}

// --- From the first unit on --------------------------------------------------------------------------------------------

// firstZero, with behindFront() as the search where none of the first vector is zero.
template <class Test, class BehindFront>
inline int firstZeroFromFront(int n, Test test, BehindFront behindFront) {
  if (n <= kFrontUnits) return firstZeroOfFew<Sse2Vector>(n, test);
  int const at = firstZeroInFront(test);
  return at < kFrontUnits ? at : behindFront();
}

// Units before the first NUL. Two aligned vectors hold all of a short text; the second is read only if no NUL came before.
KVBASE_READS_ALIGNED_BLOCKS inline int lengthFromFront(wchar const* text) {
  constexpr std::uintptr_t kBytes = kFrontUnits * sizeof(wchar);
  std::uintptr_t const skipped = reinterpret_cast<std::uintptr_t>(text) % kBytes;
  char const* const block = reinterpret_cast<char const*>(text) - skipped;
  unsigned int found = zeros<Sse2Vector>(Sse2Vector::loadAligned(block)) >> skipped;
  if (found != 0) return firstUnit(found);
  found = zeros<Sse2Vector>(Sse2Vector::loadAligned(block + kBytes));
  if (found != 0) return firstUnit(found) + static_cast<int>((kBytes - skipped) / sizeof(wchar));
  return kernels().length(text);
}

// Prefixes and suffixes, most of which are decided here: what lies behind is left to the kernels.
inline int mismatchFromFront(wchar const* a, wchar const* b, int n) {
  if (n < kFew) return mismatchScalar(a, b, n);
  return firstZeroFromFront(n, differsOrEnds(a, b), [=] {
    return kFrontUnits + kernels().mismatch(a + kFrontUnits, b + kFrontUnits, n - kFrontUnits);
  });
}

inline int mismatchIgnoringCaseFromFront(wchar const* a, wchar const* b, int n) {
  if (n < kFew) return mismatchIgnoringCaseScalar(a, b, n);
  return firstZeroFromFront(n, differsOrEndsIgnoringCase(a, b),
                            [=] { return mismatchIgnoringCaseBehindFront(a, b, n); });
}

inline int findUnitFromFront(wchar const* text, wchar unit, int n) {
  if (n < kFew) return findUnitScalar(text, unit, n);
  auto const test = isUnitOrEnd(text, unit);
  return firstZeroFromFront(n, test, [=] {
    if (n <= kInPlaceUnits) return firstZeroInPlaceBehindFront(n, test);
    return kFrontUnits + kernels().findUnit(text + kFrontUnits, unit, n - kFrontUnits);
  });
}

// A text that is found in the first vector is found here, the first and the last unit of the needle marking candidates.
inline int findTextFromFront(wchar const* text, int n, wchar const* needle, int m) {
  using V = Sse2Vector;
  if (n - m < kFrontUnits) return kernels().findText(text, n, needle, m);
  auto const units = V::load(text);
  if (zeros<V>(units) != 0) return kernels().findText(text, n, needle, m);
  auto const first = V::equal(units, V::of(needle[0]));
  unsigned int candidates = V::mask(V::bitAnd(first, V::equal(V::load(text + m - 1), V::of(needle[m - 1]))));
  while (candidates != 0) {
    int const at = firstUnit(candidates);
    candidates &= ~(3u << 2 * at);
    if (m <= 2 || mismatchFromFront(text + at + 1, needle + 1, m - 2) == m - 2) return at;
  }
  int const found = kernels().findText(text + kFrontUnits, n - kFrontUnits, needle, m);
  return found < 0 ? -1 : found + kFrontUnits;
}

inline int findRangeFromFront(wchar const* text, int n, wchar low, wchar high) {
  if (n < kFew) return findRangeScalar(text, n, low, high);
  return firstZeroFromFront(n, isInRange(text, low, high), [=] {
    if (n <= kInPlaceUnits) return rangeInPlaceBehindFront(text, n, low, high);
    return kFrontUnits + kernels().findRange(text + kFrontUnits, n - kFrontUnits, low, high);
  });
}

}  // namespace
}  // namespace strings
}  // namespace KV_1_1
