// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstddef>

#include "kvbase/kernels/text_kernels.h"
#include "kvbase/strings/internal/text_builder.h"
#include "kvbase/strings/internal/text_view.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

namespace {

using strings::kernels;

// Calls `visit` with the position of each match at or behind `from`, from left to right and without overlap.
template <class Visit>
void forEachMatch(TextView text, int from, TextView wanted, Visit visit) {
  while (from < lengthOf(text)) {
    int const at = kernels().findText(text.data() + from, lengthOf(text) - from, wanted.data(), lengthOf(wanted));
    if (at < 0) return;
    visit(from + at);
    from += at + lengthOf(wanted);
  }
}

}  // namespace

int String::replace(wchar from, wchar to) {
  if (payload_ == nullptr || payload_->str()[0] == 0) return 0;
  int const length = lengthOf(terminatedViewOf(*this));
  unshare();
  payload_->length_ = StringVal::kUnknown;
  return from != 0 ? kernels().replaceUnit(payload_->str(), length, from, to) : 0;
}

int String::replace(wchar const* from, wchar const* to) {
  if (from == nullptr || *from == 0) return 0;
  if (length() == 0) {
    *this = EMPTY;
    return 0;
  }
  TextView const text = terminatedViewOf(*this);
  TextView const wanted = viewOf(from);
  int const size = lengthOf(wanted);

  // The matches are found first and replaced afterwards, so that the result is one block of exact size. Those that do
  // not fit into the array are found again.
  constexpr int kRemembered = 256;
  int places[kRemembered];
  int count = 0;
  int rest = 0;
  forEachMatch(text, 0, wanted, [&](int at) {
    if (count < kRemembered) places[count] = at;
    ++count;
    rest = at + size;
  });
  if (count == 0) return 0;

  TextView const added = to != nullptr ? viewOf(to) : TextView();
  // What remains behind the last match follows the rule for sizes: a last NUL is dropped.
  int const end = lengthOf(text) - (rest < lengthOf(text) && text.back() == 0 ? 1 : 0);
  long long const newLength = end + (static_cast<long long>(lengthOf(added)) - size) * count;
  if (newLength == 0 && to == nullptr) {
    *this = EMPTY;
    return count;
  }
  TextBuilder result(newLength);
  int copied = 0;
  auto const copyUntil = [&](int position) {
    result.append(TextView(text.data() + copied, static_cast<std::size_t>(position - copied)));
  };
  auto const put = [&](int at) {
    copyUntil(at);
    result.append(added);
    copied = at + size;
  };
  std::for_each_n(places, std::min(count, kRemembered), put);
  if (count > kRemembered) forEachMatch(text, copied, wanted, put);
  copyUntil(end);
  result.finish().swap(*this);
  return count;
}

int String::replace(String const& from, String const& to) {
  return replace(from.payload_->stringValue(), to);
}

int String::replace(String const& from, wchar const* to) {
  return replace(from.payload_->stringValue(), to);
}

int String::replace(wchar const* from, String const& to) {
  return replace(from, to.payload_ != nullptr ? to.payload_->stringValue() : nullptr);
}

}  // namespace KV_1_1
