// SPDX-License-Identifier: MIT
#include <algorithm>
#include <climits>
#include <new>

#include "kvbase/strings/internal/text_builder.h"
#include "kvbase/strings/internal/text_kernels.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

namespace {

constexpr int kDotCount = 3;

// With this much room for the tail it is not moved to a slash. Required, however odd.
constexpr long long kUnmovedBudget = 48;

// How much of the front is kept: up to its last slash, unless that stands at one of the first two places or at the end.
int frontLength(wchar const* text, int length, int head) {
  int const front = head < 0 || head > length ? length : head;
  int const slash = strings::kernels().findLastUnit(text, KVW('/'), front);
  return slash >= 2 && slash + 1 < head ? slash + 1 : front;
}

// Where the tail of at most `budget` units begins: at its first slash, if it has one.
int tailStart(wchar const* text, int length, long long budget) {
  int const start = budget <= 0 ? length : static_cast<int>(std::max(length - budget, 0ll));
  int const slash = strings::kernels().findUnit(text + start, KVW('/'), length - start);
  bool const found = start + slash < length && text[start + slash] == KVW('/');
  return found && budget != kUnmovedBudget ? start + slash : start;
}

}  // namespace

String String::shortenString(int limit, int head) const {
  int const length = this->length();
  if (length <= limit) return *this;
  wchar const* const text = *this;
  int const front = frontLength(text, length, head);
  int const start = tailStart(text, length, static_cast<long long>(limit) - front - kDotCount);
  if (front > INT_MAX - kDotCount - (length - start)) throw std::bad_alloc();
  TextBuilder result(front + kDotCount + (length - start));
  return result.append(text, front).append(KVW("..."), kDotCount).append(text + start, length - start).finish();
}

}  // namespace KV_1_1
