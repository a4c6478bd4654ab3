// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstddef>
#include <cstring>

#include "kvbase/kernels/text_kernels.h"
#include "kvbase/strings/internal/character_class.h"
#include "kvbase/strings/internal/string_access.h"
#include "kvbase/strings/internal/text_builder.h"
#include "kvbase/strings/internal/text_view.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

namespace {

constexpr wchar kEmptyText[] = KVW("");

using Mismatch = int (*)(wchar const*, wchar const*, int);

// Where the texts first differ; any index at which both have a NUL if they do not.
int findDifference(TextView a, TextView b, Mismatch mismatch) {
  int const at = mismatch(a.data(), b.data(), std::min(lengthOf(a), lengthOf(b)));
  if (a.data()[at] == b.data()[at]) return at;
  // A difference counts only if the texts did not end before it.
  return strings::kernels().findUnit(a.data(), 0, at);
}

int compareTexts(TextView a, TextView b) {
  int const at = findDifference(a, b, strings::kernels().mismatch);
  wchar const unitOfA = a.data()[at];
  wchar const unitOfB = b.data()[at];
  return unitOfA == unitOfB ? 0 : unitOfA < unitOfB ? -1 : 1;
}

int compareTextsIgnoringCase(TextView a, TextView b) {
  int const at = findDifference(a, b, strings::kernels().mismatchIgnoringCase);
  return static_cast<int>(strings::foldCase(a.data()[at])) - static_cast<int>(strings::foldCase(b.data()[at]));
}

}  // namespace

wchar const* String::emptyText() {
  return kEmptyText;
}

String::String(wchar const* text) : String(text, -1) {}

String::String(wchar const* text, int size) : payload_(nullptr) {
  if (text != nullptr) payload_ = StringVal::construct(text, size, -1);
}

String::String(wchar ch, int count) : payload_(StringVal::construct(kEmptyText, 0, count)) {
  std::fill_n(payload_->str(), count, ch);
  payload_->str()[count] = 0;
  payload_->length_ = StringVal::kUnknown;
}

String::String(CodePageInterface text) : payload_(StringVal::constructUsingCodepage(text, -1, -1)) {}

StringBuffer String::buffer(int size, bool keep) {
  return StringBuffer(*this, size, keep);
}

void String::unshare() {
  if (payload_ == nullptr || payload_->inqRefCount() <= 1) return;
  StringAccess::adopt(StringVal::construct(payload_->str(), payload_->length(), -1)).swap(*this);
}

void String::takeOverDataFrom(String const& other) {
  other.payload_->ref();
  payload_->unref();
  payload_ = other.payload_;
}

wchar& String::operator[](int index) {
  if (payload_ == nullptr) return outOfRange;
  unshare();
  return (*payload_)[index];
}

void String::write(wchar const* text, int size) {
  if (text == nullptr) return;
  StringVal* sum = payload_ != nullptr ? payload_->concatenation(text, size) : StringVal::construct(text, size, -1);
  StringAccess::adopt(sum).swap(*this);
}

int String::compare(String const& other) const {
  if (payload_ == other.payload_) return 0;
  if (payload_ == nullptr) return -1;
  if (other.payload_ == nullptr) return 1;
  return compareTexts(terminatedViewOf(*this), terminatedViewOf(other));
}

int String::compare(wchar const* text) const {
  if (text == nullptr) return payload_ == nullptr ? 0 : 1;
  if (payload_ == nullptr) return -1;
  return compareTexts(terminatedViewOf(*this), viewOf(text));
}

int String::compare(wchar ch) const {
  wchar const text[] = {ch, 0};
  return compare(text);
}

int String::compare(String const& other) {
  int const order = static_cast<String const*>(this)->compare(other);
  if (order == 0) takeOverDataFrom(other);
  return order;
}

bool String::equalsUnits(String const& other) const {
  TextView const own = terminatedViewOf(*this);
  TextView const others = terminatedViewOf(other);
  if (own.size() != others.size()) return compareTexts(own, others) == 0;
  // If all units agree, it does not matter whether a NUL is among them. A difference is located within its part only.
  constexpr int kPart = 2048;
  wchar const* const a = own.data();
  wchar const* const b = others.data();
  int const units = lengthOf(own);
  for (int from = 0; from < units;) {
    int const size = std::min(kPart, units - from);
    if (std::memcmp(a + from, b + from, static_cast<std::size_t>(size) * sizeof(wchar)) != 0) {
      int const at = from + strings::kernels().mismatch(a + from, b + from, size);
      return strings::kernels().findUnit(a, 0, at) < at;
    }
    from += size;
  }
  return true;
}

bool String::compareEquality(String const& other) {
  bool const equal = static_cast<String const*>(this)->compareEquality(other);
  if (equal) takeOverDataFrom(other);
  return equal;
}

int String::compareIgnoreCase(String const& other) const {
  if (other.payload_ == nullptr) return payload_ == nullptr ? 0 : 1;
  if (payload_ == nullptr) return -1;
  if (payload_ == other.payload_) return 0;
  return compareTextsIgnoringCase(terminatedViewOf(*this), terminatedViewOf(other));
}

int String::compareIgnoreCase(wchar const* text) const {
  if (text == nullptr) return payload_ == nullptr ? 0 : 1;
  if (payload_ == nullptr) return -1;
  return compareTextsIgnoringCase(terminatedViewOf(*this), viewOf(text));
}

int String::compareIgnoreCase(wchar ch) const {
  wchar const text[] = {ch, 0};
  return compareIgnoreCase(text);
}

String String::substr(int start, int end) const {
  int const length = this->length();
  start = std::min(std::max(start, 0), length);
  if (end < 0 || end > length) end = length;
  int const units = end - start;
  if (units <= 0) return EMPTY;
  if (units >= length) return *this;
  return String(payload_->str() + start, units);
}

String String::trim(bool left, bool right) const {
  if (payload_ == nullptr || payload_->str()[0] == 0) return *this;
  int const length = payload_->length();
  wchar const* const text = payload_->str();
  int first = 0;
  while (left && first < length && strings::hasClass(text[first], platform::kSpace)) ++first;
  int end = length;
  while (right && end > first && strings::hasClass(text[end - 1], platform::kSpace)) --end;
  if (first == 0 && end == length) return *this;
  return substr(first, end);
}

bool String::startsWith(String const& prefix) const {
  int const units = prefix.length();
  if (units > length()) return false;
  return units == 0 || strings::kernels().mismatch(payload_->str(), prefix.payload_->str(), units) == units;
}

bool String::endsWith(String const& suffix, bool ignoreCase) const {
  int const units = suffix.length();
  if (units == 0 || units > length()) return false;
  wchar const* const end = payload_->str() + payload_->length() - units;
  auto const mismatch = ignoreCase ? strings::kernels().mismatchIgnoringCase : strings::kernels().mismatch;
  int const at = mismatch(end, suffix, units);
  // An inner NUL ends both texts.
  return at == units || strings::kernels().findUnit(end, 0, at) < at;
}

namespace {

bool isNil(String const& text) {
  return StringAccess::payload(text) == nullptr;
}

}  // namespace

String operator+(String const& a, String const& b) {
  if (isNil(b)) return a;
  if (isNil(a)) return b;
  return StringAccess::adopt(StringAccess::payload(a)->concatenation(b, b.length()));
}

String operator+(String const& a, wchar const* b) {
  if (b == nullptr) return a;
  return isNil(a) ? String(b) : StringAccess::adopt(StringAccess::payload(a)->concatenation(b, -1));
}

String operator+(wchar const* a, String const& b) {
  if (a == nullptr) return b;
  TextView const front = viewOf(a);
  TextView const back = viewOf(b);
  return TextBuilder(static_cast<long long>(front.size() + back.size())).append(front).append(back).finish();
}

// A unit is appended as such: as a text on the stack it would be read back as a vector right after it was written, which
// stalls.
String operator+(String const& a, wchar b) {
  TextBuilder sum(a.length() + (b != 0 ? 1ll : 0ll));
  sum.append(viewOf(a));
  if (b != 0) sum.append(b);
  return sum.finish();
}

String operator+(wchar a, String const& b) {
  TextBuilder sum((a != 0 ? 1ll : 0ll) + b.length());
  if (a != 0) sum.append(a);
  return sum.append(viewOf(b)).finish();
}

}  // namespace KV_1_1
