// SPDX-License-Identifier: MIT
#include <algorithm>
#include <climits>
#include <new>

#include "kvbase/kernels/text_kernels.h"
#include "kvbase/strings/internal/text_builder.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

namespace {

using strings::kernels;

// Calls `visit` with the position of each match at or behind `from`, from left to right and without overlap.
template <class Visit>
void forEachMatch(wchar const* text, int from, int length, wchar const* wanted, int size, Visit visit) {
  while (from < length) {
    int const at = kernels().findText(text + from, length - from, wanted, size);
    if (at < 0) return;
    visit(from + at);
    from += at + size;
  }
}

}  // namespace

int String::replace(wchar from, wchar to) {
  if (payload_ == nullptr || payload_->str()[0] == 0) return 0;
  int const length = textLength();
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
  wchar const* const text = *this;
  int const length = textLength();
  int const size = kernels().length(from);

  // The matches are found first and put in place then, so that the result is one block of exact size. Those that do not
  // fit in here are found again.
  constexpr int kRemembered = 256;
  int places[kRemembered];
  int count = 0;
  int rest = 0;
  forEachMatch(text, 0, length, from, size, [&](int at) {
    if (count < kRemembered) places[count] = at;
    ++count;
    rest = at + size;
  });
  if (count == 0) return 0;

  int const added = to != nullptr ? kernels().length(to) : 0;
  // What remains behind the last match follows the rule for sizes: a last NUL is dropped.
  int const end = rest < length && text[length - 1] == 0 ? length - 1 : length;
  long long const newLength = end + (static_cast<long long>(added) - size) * count;
  if (newLength > INT_MAX) throw std::bad_alloc();
  if (newLength == 0 && to == nullptr) {
    *this = EMPTY;
    return count;
  }
  TextBuilder result(static_cast<int>(newLength));
  int copied = 0;
  auto const put = [&](int at) {
    result.append(text + copied, at - copied);
    if (to != nullptr) result.append(to, added);
    copied = at + size;
  };
  std::for_each_n(places, std::min(count, kRemembered), put);
  if (count > kRemembered) forEachMatch(text, copied, length, from, size, put);
  result.append(text + copied, end - copied);
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
