// SPDX-License-Identifier: MIT
//
// Searches in place, with the instructions of every processor: most texts are short or decided at their front, and a call
// through the table of kernels would take longer than the work. Of long texts only the first vector is looked at in place.
// Results and requirements are those of the kernels.
#pragma once

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

// --- Behind the first vector: short texts in place, long ones by the kernels --------------------------------------------

constexpr int kInPlaceUnits = 64;

// firstZero of n units where none of the first vector is zero, with behind(i) as the search that begins at unit i. The last
// vector overlaps the one before it.
// REQUIRES: n is at least kFrontUnits.
template <class Test, class Behind>
inline int firstZeroBehindFront(int n, Test test, Behind behind) {
  if (n > kInPlaceUnits) return kFrontUnits + behind(kFrontUnits);
  for (int i = kFrontUnits; i < n; i += kFrontUnits) {
    int const start = i + kFrontUnits <= n ? i : n - kFrontUnits;
    auto const load = [start](wchar const* text) { return Sse2Vector::load(text + start); };
    unsigned int const found = zeros<Sse2Vector>(test(Sse2Vector(), load));
    if (found != 0) return start + firstUnit(found);
  }
  return n;
}

inline int mismatchBehindFront(wchar const* a, wchar const* b, int n) {
  return firstZeroBehindFront(n, differsOrEnds(a, b), [=](int i) { return kernels().mismatch(a + i, b + i, n - i); });
}

// Folding takes so many instructions that wider vectors win even in short texts.
inline int mismatchIgnoringCaseBehindFront(wchar const* a, wchar const* b, int n) {
  return kFrontUnits + kernels().mismatchIgnoringCase(a + kFrontUnits, b + kFrontUnits, n - kFrontUnits);
}

// Whether n units are the same, NULs among them or not. No vector waits for the one before it.
// REQUIRES: n is at least kFrontUnits.
inline bool areSameInPlace(wchar const* a, wchar const* b, int n) {
  auto const sameAt = [=](int i) { return Sse2Vector::equal(Sse2Vector::load(a + i), Sse2Vector::load(b + i)); };
  auto same = sameAt(n - kFrontUnits);
  for (int i = 0; i < n - kFrontUnits; i += kFrontUnits) same = Sse2Vector::bitAnd(same, sameAt(i));
  return Sse2Vector::mask(same) == kAllUnits<Sse2Vector>;
}

// --- From the first unit on --------------------------------------------------------------------------------------------

// firstZero, with behindFront() as the search where none of the first vector is zero.
template <class Test, class BehindFront>
inline int firstZeroFromFront(int n, Test test, BehindFront behindFront) {
  if (n <= kFrontUnits) return firstZeroOfFew<Sse2Vector>(n, test);
  int const at = firstZeroInFront(test);
  return at < kFrontUnits ? at : behindFront();
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
    return firstZeroBehindFront(n, test, [=](int i) { return kernels().findUnit(text + i, unit, n - i); });
  });
}

inline int findRangeFromFront(wchar const* text, int n, wchar low, wchar high) {
  if (n < kFew) return findRangeScalar(text, n, low, high);
  auto const test = isInRange(text, low, high);
  return firstZeroFromFront(n, test, [=] {
    return firstZeroBehindFront(n, test, [=](int i) { return kernels().findRange(text + i, n - i, low, high); });
  });
}

}  // namespace
}  // namespace strings
}  // namespace KV_1_1
