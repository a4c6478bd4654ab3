// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/files/wildcard.h"

#include <algorithm>

namespace KV_1_1 {
namespace platform {

Wildcard::Wildcard(wchar const* pattern, std::size_t size) {
  pattern_.resize(size);
  std::transform(pattern, pattern + size, pattern_.data(), upperCased);
  bool const isStarDotStar = size == 3 && pattern[0] == '*' && pattern[1] == '.' && pattern[2] == '*';
  if (isStarDotStar) pattern_.resize(1);
  matchesEverything_ = pattern_.size() == 1 && pattern_[0] == '*';
}

// On a mismatch only the last asterisk is extended by one unit. An earlier one has already matched at the first
// possible position, and a later position would never leave more units for the rest. This holds with ? too, because the
// number of units that it takes depends only on the position in the name.
bool Wildcard::matches(wchar const* name, std::size_t size) const {
  if (matchesEverything_) return true;
  std::size_t lastDot = size;
  while (lastDot > 0 && name[lastDot - 1] != '.') --lastDot;
  lastDot = lastDot == 0 ? size : lastDot - 1;

  constexpr auto kNone = static_cast<std::size_t>(-1);
  std::size_t const end = pattern_.size();
  std::size_t p = 0, n = 0;
  std::size_t afterStar = kNone, resume = 0;
  for (;;) {
    if (p < end && pattern_[p] == '*') {
      afterStar = ++p;
      resume = n;
    } else if (p < end && pattern_[p] == '?') {
      ++p;
      if (n != size && n != lastDot) ++n;
    } else if (p < end && n < size && pattern_[p] == upperCased(name[n])) {
      ++p;
      ++n;
    } else if (p == end && n == size) {
      return true;
    } else {
      if (afterStar == kNone || resume == size) return false;
      p = afterStar;
      n = ++resume;
    }
  }
}

}  // namespace platform
}  // namespace KV_1_1
