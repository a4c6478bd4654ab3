// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstddef>

#include "kvbase/kernels/text_kernels.h"
#include "kvbase/strings/internal/text_builder.h"
#include "kvbase/strings/internal/text_view.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

namespace {

constexpr std::size_t kDotCount = 3;

// COMPAT: with exactly this much room for the tail it is not moved to a slash.
constexpr long long kUnmovedBudget = 48;

// The front of a text by the rule for sizes: a last NUL is dropped.
TextView part(TextView text, std::size_t size) {
  return text.substr(0, size > 0 && text[size - 1] == 0 ? size - 1 : size);
}

// The front that is kept: up to its last slash, unless that stands at one of the first two places or at the end.
TextView frontOf(TextView text, int head) {
  TextView const front = head < 0 || head >= lengthOf(text) ? text : part(text, static_cast<std::size_t>(head));
  TextView const visible = upToNul(front);
  int const slash = strings::kernels().findLastUnit(visible.data(), KVW('/'), lengthOf(visible));
  return slash >= 2 && slash + 1 < head ? front.substr(0, static_cast<std::size_t>(slash) + 1) : front;
}

// The tail of at most `budget` units, from its first slash on, if it has one.
TextView tailOf(TextView text, long long budget) {
  if (budget <= 0) return TextView();
  TextView rest = text.substr(static_cast<std::size_t>(std::max(lengthOf(text) - budget, 0ll)));
  TextView const tail = part(rest, rest.size());
  int const slash = strings::kernels().findUnit(tail.data(), KVW('/'), lengthOf(tail));
  bool const found = slash > 0 && slash < lengthOf(tail) && tail.data()[slash] == KVW('/');
  if (!found || budget == kUnmovedBudget) return tail;
  rest = tail.substr(static_cast<std::size_t>(slash));
  return part(rest, rest.size());
}

}  // namespace

String String::shortenString(int limit, int head) const {
  if (length() <= limit) return *this;
  TextView const text = viewOf(*this);
  TextView const front = frontOf(text, head);
  TextView const tail = tailOf(text, static_cast<long long>(limit) - lengthOf(front) - static_cast<int>(kDotCount));
  TextBuilder result(static_cast<long long>(front.size() + kDotCount + tail.size()));
  return result.append(front).append(TextView(KVW("..."), kDotCount)).append(tail).finish();
}

}  // namespace KV_1_1
