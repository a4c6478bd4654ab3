// SPDX-License-Identifier: MIT
#include "kvbase/kernels/two_way_search.h"

#include <algorithm>

#include "kvbase/internal_assert.h"

namespace KV_1_1 {
namespace strings {

namespace {

// A text read from its front or from its back.
class Forward {
 public:
  Forward(wchar const* text, int) : text_(text) {}
  wchar operator[](int index) const { return text_[index]; }

 private:
  wchar const* text_;
};

class Backward {
 public:
  Backward(wchar const* text, int n) : last_(text + n - 1) {}
  wchar operator[](int index) const { return last_[-index]; }

 private:
  wchar const* last_;
};

struct Factorization {
  int cut;     // index of the last unit of the left part; -1 if that is empty
  int period;  // of the right part
};

// The maximal suffix of the needle for one order of units.
template <class Needle, class Less>
Factorization maximalSuffix(Needle needle, int m, Less less) {
  int suffix = -1;
  int candidate = 0;
  int offset = 1;
  int period = 1;
  while (candidate + offset < m) {
    wchar const a = needle[candidate + offset];
    wchar const b = needle[suffix + offset];
    if (less(a, b)) {
      candidate += offset;
      offset = 1;
      period = candidate - suffix;
    } else if (a == b) {
      if (offset == period) {
        candidate += period;
        offset = 1;
      } else {
        ++offset;
      }
    } else {
      suffix = candidate++;
      offset = period = 1;
    }
  }
  return {suffix, period};
}

template <class Needle>
Factorization criticalFactorization(Needle needle, int m) {
  Factorization const up = maximalSuffix(needle, m, [](wchar a, wchar b) { return a < b; });
  Factorization const down = maximalSuffix(needle, m, [](wchar a, wchar b) { return a > b; });
  return up.cut > down.cut ? up : down;
}

template <class Units>
int findTwoWay(Units text, int n, Units needle, int m) {
  KVBASE_ASSERT(m >= 1);
  Factorization const factors = criticalFactorization(needle, m);
  int const cut = factors.cut;
  bool periodic = true;
  for (int i = 0; i <= cut && periodic; ++i) periodic = needle[i] == needle[i + factors.period];
  int const shift = periodic ? factors.period : std::max(cut + 1, m - cut - 1) + 1;

  int remembered = -1;  // last index of the needle that is known to match, from the previous position
  for (int at = 0; at <= n - m;) {
    int i = std::max(cut, remembered) + 1;
    while (i < m && needle[i] == text[at + i]) ++i;
    if (i < m) {
      at += i - cut;
      remembered = -1;
      continue;
    }
    i = cut;
    while (i > remembered && needle[i] == text[at + i]) --i;
    if (i <= remembered) return at;
    at += shift;
    remembered = periodic ? m - shift - 1 : -1;
  }
  return -1;
}

}  // namespace

int findTextLinear(wchar const* text, int n, wchar const* needle, int m) {
  return findTwoWay(Forward(text, n), n, Forward(needle, m), m);
}

int findLastText(wchar const* text, int n, wchar const* needle, int m) {
  int const at = findTwoWay(Backward(text, n), n, Backward(needle, m), m);
  return at < 0 ? -1 : n - m - at;
}

}  // namespace strings
}  // namespace KV_1_1
