// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstddef>
#include <cstring>

#include "kvbase/export.h"
#include "kvbase/kernels/front_search.h"
#include "kvbase/strings/internal/character_class.h"
#include "kvbase/strings/internal/string_access.h"
#include "kvbase/strings/internal/text_builder.h"
#include "kvbase/strings/internal/text_view.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

namespace {

constexpr wchar kEmptyText[] = KVW("");

int orderOf(wchar a, wchar b) {
  return a == b ? 0 : a < b ? -1 : 1;
}

int orderIgnoringCase(wchar a, wchar b) {
  return static_cast<int>(strings::foldCase(a)) - static_cast<int>(strings::foldCase(b));
}

bool isSpace(wchar unit) {
  return strings::hasClass(unit, platform::kSpace);
}

int compareTexts(TextView a, TextView b) {
  int const at = strings::mismatchFromFront(a.data(), b.data(), std::min(lengthOf(a), lengthOf(b)));
  return orderOf(a.data()[at], b.data()[at]);
}

int compareTextsIgnoringCase(TextView a, TextView b) {
  int const at = strings::mismatchIgnoringCaseFromFront(a.data(), b.data(), std::min(lengthOf(a), lengthOf(b)));
  return orderIgnoringCase(a.data()[at], b.data()[at]);
}

// What can be compared of two texts: the units before the end of the shorter one. -1 if that is not known, because a length is
// not, or because no NUL stands at it (see terminatedViewOf).
inline int commonUnits(String const& a, String const& b) {
  StringVal const& first = *StringAccess::payload(a);
  StringVal const& second = *StringAccess::payload(b);
  int const units = std::min(first.lazyLength(), second.lazyLength());
  return units >= 0 && (first.at(units) == 0 || second.at(units) == 0) ? units : -1;
}

// Whether that is known and little.
bool isShort(int commonUnits) {
  return static_cast<unsigned int>(commonUnits) <= strings::kInPlaceUnits;
}

// For texts that are long or of unknown length. Those that begin alike are equal for the most part, and memcmp tells that
// fastest. If all units agree, it does not matter whether a NUL is among them. A difference is located within its part only.
KVBASE_NEVER_INLINE bool equalTexts(String const& first, String const& second) {
  TextView const a = terminatedViewOf(first);
  TextView const b = terminatedViewOf(second);
  if (a.size() != b.size()) return compareTexts(a, b) == 0;
  constexpr std::size_t kPart = 2048;
  for (std::size_t same = 0; same < a.size(); same += kPart) {
    std::size_t const size = std::min(kPart, a.size() - same);
    if (std::memcmp(a.data() + same, b.data() + same, size * sizeof(wchar)) != 0) {
      return upToNul(a.substr(0, same)).size() < same || compareTexts(a.substr(same), b.substr(same)) == 0;
    }
  }
  return true;
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
  wchar const* const a = payload_->str();
  wchar const* const b = other.payload_->str();
  int at = strings::mismatchInFront(a, b);
  if (at == strings::kFrontUnits) {
    int const units = commonUnits(*this, other);
    if (!isShort(units)) return compareTexts(terminatedViewOf(*this), terminatedViewOf(other));
    at = strings::mismatchInPlaceBehindFront(a, b, units);
  }
  return orderOf(a[at], b[at]);
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
  wchar const* const a = payload_->str();
  wchar const* const b = other.payload_->str();
  int at = strings::mismatchInFront(a, b);
  if (at == strings::kFrontUnits) {
    int const units = commonUnits(*this, other);
    if (!isShort(units)) return equalTexts(*this, other);
    at = strings::mismatchInPlaceBehindFront(a, b, units);
  }
  return a[at] == b[at];
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
  wchar const* const a = payload_->str();
  wchar const* const b = other.payload_->str();
  int at = strings::mismatchIgnoringCaseInFront(a, b);
  if (at == strings::kFrontUnits) {
    int const units = commonUnits(*this, other);
    if (units < 0) return compareTextsIgnoringCase(terminatedViewOf(*this), terminatedViewOf(other));
    at = strings::mismatchIgnoringCaseBehindFront(a, b, units);
  }
  return orderIgnoringCase(a[at], b[at]);
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
  wchar const* begin = payload_->str();
  wchar const* end = begin + length;
  // Most texts have nothing to cut.
  while (left && begin < end && isSpace(*begin)) ++begin;
  // COMPAT: nothing is cut from behind beyond the first unit that remains, so of blanks alone one stays.
  while (right && end - begin > 1 && isSpace(end[-1])) --end;
  int const units = static_cast<int>(end - begin);
  return units == length ? *this : units != 0 ? String(begin, units) : EMPTY;
}

bool String::startsWith(String const& prefix) const {
  int const units = prefix.length();
  if (units > length()) return false;
  if (units == 0) return true;
  wchar const* const own = payload_->str();
  wchar const* const others = prefix.payload_->str();
  int const at = strings::mismatchFromFront(own, others, units);
  if (at == units) return true;
  // Behind an inner NUL the texts are compared on.
  return own[at] == others[at] && std::memcmp(own, others, static_cast<std::size_t>(units) * sizeof(wchar)) == 0;
}

bool String::endsWith(String const& suffix, bool ignoreCase) const {
  int const units = suffix.length();
  if (units == 0 || units > length()) return false;
  wchar const* const end = payload_->str() + payload_->length() - units;
  wchar const* const wanted = suffix.payload_->str();
  int const at = ignoreCase ? strings::mismatchIgnoringCaseFromFront(end, wanted, units)
                            : strings::mismatchFromFront(end, wanted, units);
  // An inner NUL ends both texts.
  return at == units || (end[at] == 0 && wanted[at] == 0);
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
