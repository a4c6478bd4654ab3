// SPDX-License-Identifier: MIT
//
// Comparisons and searches as a program would write them for itself: a loop over vectors of eight units, which every x86-64
// processor has, by the rule that a NUL ends a text. The work of contestants called "floor".
#pragma once

#include <emmintrin.h>

#include <algorithm>

#include "benchmarks/texts.h"

namespace KV_1_1 {
namespace bench {

// Index of the first of n units, at least eight, for which a vector of the test's results is not zero; n if there is none.
// test(i) gives the results of the eight units from i on.
template <class Test>
inline int firstOf(int n, Test test) {
  for (int i = 0;; i = std::min(i + 8, n - 8)) {
    unsigned int const found = static_cast<unsigned int>(_mm_movemask_epi8(test(i)));
    if (found != 0) return i + static_cast<int>(__builtin_ctz(found)) / 2;
    if (i == n - 8) return n;
  }
}

inline __m128i eightUnits(wchar const* text) {
  return _mm_loadu_si128(reinterpret_cast<__m128i const*>(text));
}

inline __m128i areEqual(__m128i units, int unit) {
  return _mm_cmpeq_epi16(units, _mm_set1_epi16(static_cast<short>(unit)));
}

// Where two texts differ or end.
inline int bareMismatch(BareText const& a, BareText const& b) {
  return firstOf(static_cast<int>(std::min(a.size(), b.size())), [first = a.text(), second = b.text()](int i) {
    __m128i const units = eightUnits(first + i);
    return areEqual(_mm_and_si128(units, _mm_cmpeq_epi16(units, eightUnits(second + i))), 0);
  });
}

inline bool bareEqual(BareText const& a, BareText const& b) {
  if (a.size() != b.size() || a.text()[0] != b.text()[0]) return false;
  int const at = bareMismatch(a, b);
  return a.text()[at] == b.text()[at];
}

inline Order bareOrder(BareText const& a, BareText const& b) {
  int const at = bareMismatch(a, b);
  return {static_cast<int>(a.text()[at]) - static_cast<int>(b.text()[at])};
}

inline int bareFind(BareText const& text, wchar unit) {
  int const at = firstOf(static_cast<int>(text.size()), [units = text.text(), unit](int i) {
    return _mm_or_si128(areEqual(eightUnits(units + i), unit), areEqual(eightUnits(units + i), 0));
  });
  return text.text()[at] == unit ? at : -1;
}

// The wanted text ends at its NUL and has three units at least; its first and its last unit mark a candidate.
inline int bareFind(BareText const& text, wchar const* wanted) {
  int const size = static_cast<int>(std::char_traits<wchar>::length(wanted));
  int const starts = static_cast<int>(text.size()) - size + 1;
  wchar const* const units = text.text();
  for (int at = 0; starts - at >= 8; ++at) {
    at += firstOf(starts - at, [first = units + at, wanted, size](int i) {
      __m128i const ends = _mm_and_si128(areEqual(eightUnits(first + i), wanted[0]),
                                         areEqual(eightUnits(first + i + size - 1), wanted[size - 1]));
      return _mm_or_si128(ends, areEqual(eightUnits(first + i), 0));
    });
    if (at == starts || units[at] == 0) return -1;
    if (std::equal(wanted + 1, wanted + size - 1, units + at + 1)) return at;
  }
  return -1;
}

// The first digit; other scripts have digits too, so a unit beyond ASCII would be looked up.
inline int bareFindDigit(BareText const& text) {
  int const at = firstOf(static_cast<int>(text.size()), [units = text.text()](int i) {
    __m128i const eight = eightUnits(units + i);
    __m128i const isDigit = _mm_and_si128(_mm_cmpgt_epi16(eight, _mm_set1_epi16(KVW('0') - 1)),
                                          _mm_cmplt_epi16(eight, _mm_set1_epi16(KVW('9') + 1)));
    return _mm_or_si128(isDigit, _mm_or_si128(_mm_cmpgt_epi16(eight, _mm_set1_epi16(0x7F)),
                                              _mm_cmplt_epi16(eight, _mm_setzero_si128())));
  });
  return at < static_cast<int>(text.size()) ? at : -1;
}

}  // namespace bench
}  // namespace KV_1_1
