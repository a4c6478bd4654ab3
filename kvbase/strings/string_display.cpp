// SPDX-License-Identifier: MIT
#include <algorithm>
#include <climits>
#include <new>

#include "kvbase/kernels/text_kernels.h"
#include "kvbase/strings/internal/text_builder.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

namespace {

constexpr int kDotCount = 3;

struct TextPart {
  wchar const* units;
  int length;
};

// With this much room for the tail it is not moved to a slash. Required, however odd.
constexpr long long kUnmovedBudget = 48;

// The length of a part of a text by the rule for sizes: a last NUL is dropped.
int partLength(wchar const* part, int length) {
  return length > 0 && part[length - 1] == 0 ? length - 1 : length;
}

// How much of the front is kept: up to its last slash, unless that stands at one of the first two places or at the end.
int frontLength(wchar const* text, int length, int head) {
  int const front = head < 0 || head >= length ? length : partLength(text, head);
  int const slash = strings::kernels().findLastUnit(text, KVW('/'), front);
  return slash >= 2 && slash + 1 < head ? slash + 1 : front;
}

// The tail of at most `budget` units, from its first slash on, if it has one.
TextPart tailOf(wchar const* text, int length, long long budget) {
  if (budget <= 0) return {text, 0};
  int const start = static_cast<int>(std::max(length - budget, 0ll));
  TextPart tail = {text + start, partLength(text + start, length - start)};
  int const slash = strings::kernels().findUnit(tail.units, KVW('/'), tail.length);
  bool const found = slash > 0 && slash < tail.length && tail.units[slash] == KVW('/');
  if (!found || budget == kUnmovedBudget) return tail;
  return {tail.units + slash, partLength(tail.units + slash, tail.length - slash)};
}

}  // namespace

String String::shortenString(int limit, int head) const {
  int const length = this->length();
  if (length <= limit) return *this;
  wchar const* const text = *this;
  int const front = frontLength(text, length, head);
  TextPart const tail = tailOf(text, length, static_cast<long long>(limit) - front - kDotCount);
  if (front > INT_MAX - kDotCount - tail.length) throw std::bad_alloc();
  TextBuilder result(front + kDotCount + tail.length);
  return result.append(text, front).append(KVW("..."), kDotCount).append(tail.units, tail.length).finish();
}

}  // namespace KV_1_1
