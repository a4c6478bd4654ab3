// SPDX-License-Identifier: MIT
//
// Kernels whose first vector is looked at in place, with the instructions of every processor: most texts are short or
// decided at their front, and a call through the table would take longer than the work. What lies behind the first vector
// is left to the kernels of the table. Results and requirements are those of the kernels.
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

// --- The first vector, then the kernels --------------------------------------------------------------------------------

// firstZero, with behind(i) as the search that begins at unit i.
template <class Test, class Behind>
inline int firstZeroFromFront(int n, Test test, Behind behind) {
  if (n <= kFrontUnits) return firstZeroOfFew<Sse2Vector>(n, test);
  int const at = firstZeroInFront(test);
  return at < kFrontUnits ? at : kFrontUnits + behind(kFrontUnits);
}

inline int mismatchFromFront(wchar const* a, wchar const* b, int n) {
  if (n < kFew) return mismatchScalar(a, b, n);
  return firstZeroFromFront(n, differsOrEnds(a, b), [=](int i) { return kernels().mismatch(a + i, b + i, n - i); });
}

inline int mismatchIgnoringCaseFromFront(wchar const* a, wchar const* b, int n) {
  if (n < kFew) return mismatchIgnoringCaseScalar(a, b, n);
  return firstZeroFromFront(n, differsOrEndsIgnoringCase(a, b),
                            [=](int i) { return kernels().mismatchIgnoringCase(a + i, b + i, n - i); });
}

inline int findUnitFromFront(wchar const* text, wchar unit, int n) {
  if (n < kFew) return findUnitScalar(text, unit, n);
  return firstZeroFromFront(n, isUnitOrEnd(text, unit),
                            [=](int i) { return kernels().findUnit(text + i, unit, n - i); });
}

inline int findRangeFromFront(wchar const* text, int n, wchar low, wchar high) {
  if (n < kFew) return findRangeScalar(text, n, low, high);
  return firstZeroFromFront(n, isInRange(text, low, high),
                            [=](int i) { return kernels().findRange(text + i, n - i, low, high); });
}

}  // namespace
}  // namespace strings
}  // namespace KV_1_1
