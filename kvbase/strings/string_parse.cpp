// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdint>

#include "kvbase/kernels/text_kernels.h"
#include "kvbase/strings/internal/character_class.h"
#include "kvbase/strings/internal/number_text.h"
#include "kvbase/strings/internal/text_builder.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

namespace {

using strings::DecimalText;
using strings::hasClass;

// Whether the text begins with the lower-case word, without regard to case.
bool beginsWith(wchar const* text, wchar const* word) {
  while (*word != 0 && strings::foldCase(*text) == *word) ++text, ++word;
  return *word == 0;
}

// A quote is escaped by one backslash before it; two stand for themselves, and no more than two are looked at.
bool isEscapedAt(wchar const* text, int quote) {
  return text[quote - 1] == KVW('\\') && !(quote >= 2 && text[quote - 2] == KVW('\\'));
}

}  // namespace

// --- The number at the end -------------------------------------------------------------------------------------------

int String::indexStart() const {
  int start = length();
  while (start > 0 && hasClass(payload_->at(start - 1), platform::kDigit)) --start;
  return start;
}

unsigned int String::getIndex() const {
  int const start = indexStart();
  return start < length() ? static_cast<unsigned int>(strings::readInt(payload_->str() + start)) : 0;
}

void String::setIndex(unsigned int index) {
  unshare();
  String named = substr(0, indexStart());
  if (index != 0 || named.length() == 0) named += static_cast<unsigned long long>(index);
  named.swap(*this);
}

void String::stepIndex(int step) {
  int const length = this->length();
  int const start = indexStart();
  if (start == length) {
    *this += KVW("1");
    return;
  }
  std::uint32_t const stepped =
      static_cast<std::uint32_t>(strings::readInt(payload_->str() + start)) + static_cast<std::uint32_t>(step);
  DecimalText const number(static_cast<long long>(static_cast<std::int32_t>(stepped)));
  int const zeros = std::max(length - start - number.length(), 0);
  if (start + number.length() > length) {
    TextBuilder(start + number.length())
        .append(*this, start)
        .append(number.units(), number.length())
        .finish()
        .swap(*this);
    return;
  }
  wchar* const run = &(*this)[start];
  std::copy_n(number.units(), number.length(), std::fill_n(run, zeros, KVW('0')));
}

void String::incrementIndex() {
  stepIndex(1);
}

void String::decrementIndex() {
  stepIndex(-1);
}

// --- Extraction ------------------------------------------------------------------------------------------------------

void String::eatwhite() {
  int const start = findNonWS(0);
  if (start > 0) *this = String(payload_->str() + start, length() - start);
}

// Runs the conversion at the first unit of a number or word, or gives 0 and empties the text if there is none.
template <class Value, class Convert>
String& String::extract(Value& value, Convert convert) {
  int const start = findAlphaNum(0);
  if (start < 0) {
    value = Value();
    return *this = EMPTY;
  }
  return convert(start);
}

// The end of a signed number is looked for apart from the conversion, and finds it elsewhere: signs inside count, a
// leading plus does not.
template <class Value, class Read>
String& String::extractSigned(Value& value, Read read) {
  return extract(value, [&](int start) -> String& {
    value = static_cast<Value>(read(payload_->str() + start));
    int const end = findNonSignedDigit(start);
    return *this = end < 0 ? EMPTY : String(payload_->str() + end, length() - end);
  });
}

// What remains behind an unsigned number; with `surplus`, the stored length is that many units too large.
String String::remainder(int from, int surplus) const {
  int const units = length() - from;
  if (surplus == 0) return String(payload_->str() + from, units);
  // The first unit too many is the terminator; the rule for sizes drops it where it is the last.
  if (surplus == 1) return String(payload_->str() + from, units + 1);
  TextBuilder rest(units + surplus);
  rest.append(payload_->str() + from, units).append(KVW('\0'));
  for (int i = 1; i < surplus; ++i) rest.append(KVW(' '));
  return rest.finish();
}

template <class Value, class Read>
String& String::extractUnsigned(Value& value, Read read, EndRule rule) {
  return extract(value, [&](int start) -> String& {
    auto const number = read(payload_->str() + start);
    value = static_cast<Value>(number.value);
    int const end = static_cast<int>(number.end - payload_->str());
    return *this = remainder(end, rule == kEndOvershoots ? start : 0);
  });
}

String& String::operator>>(signed char& value) {
  return extractSigned(value, strings::readInt);
}

String& String::operator>>(short& value) {
  return extractSigned(value, strings::readInt);
}

String& String::operator>>(unsigned short& value) {
  return extractSigned(value, strings::readInt);
}

String& String::operator>>(int& value) {
  return extractSigned(value, strings::readInt);
}

String& String::operator>>(long& value) {
  return extractSigned(value, [](wchar const* text) { return static_cast<std::int32_t>(strings::readInt64(text)); });
}

String& String::operator>>(long long& value) {
  return extractSigned(value, strings::readInt64);
}

String& String::operator>>(unsigned char& value) {
  return extractUnsigned(value, strings::readUnsigned32, kEndExact);
}

String& String::operator>>(unsigned int& value) {
  return extractUnsigned(value, strings::readUnsigned32, kEndExact);
}

String& String::operator>>(unsigned long& value) {
  return extractUnsigned(value, strings::readUnsigned32, kEndOvershoots);
}

String& String::operator>>(unsigned long long& value) {
  return extractUnsigned(value, strings::readUnsigned64, kEndOvershoots);
}

String& String::operator>>(double& value) {
  return extract(value, [&](int start) -> String& {
    auto const number = strings::readDouble(payload_->str() + start);
    value = number.value;
    return *this = String(number.end);
  });
}

String& String::operator>>(float& value) {
  double wide = 0;
  *this >> wide;
  value = static_cast<float>(wide);
  return *this;
}

String& String::operator>>(bool& value) {
  return extract(value, [&](int start) -> String& {
    wchar const* const text = &(*this)[start];
    if (!hasClass(*text, platform::kAlpha)) {
      value = strings::readInt(text) != 0;
      return *this = substr(start + 1, -1);
    }
    value = beginsWith(text, KVW("true"));
    if (value) return *this = substr(start + 4, -1);
    if (beginsWith(text, KVW("false"))) return *this = substr(start + 5, -1);
    return *this;
  });
}

String& String::operator>>(wchar& value) {
  int const start = findNonWS(0);
  if (start < 0) {
    value = 0;
    return *this = EMPTY;
  }
  value = (*this)[start];
  return *this = substr(start + 1, -1);
}

String& String::operator>>(String& token) {
  if (payload_ != nullptr && (*this)[0] == KVW('"')) return extractQuoted(token);
  int const end = find(KVW('\n'), 0);
  String line = end >= 0 ? String(payload_->str(), end) : *this;
  String rest = end >= 0 ? String(payload_->str() + end + 1, length() - end - 1) : EMPTY;
  line.swap(token);
  rest.swap(*this);
  return *this;
}

String& String::extractQuoted(String& token) {
  String quoted(payload_->str() + 1);
  int end = quoted.find(KVW('"'), 0);
  while (end > 0 && isEscapedAt(quoted, end)) end = quoted.find(KVW('"'), end + 1);
  String rest = EMPTY;
  if (end >= 0) {
    rest = String(quoted.payload_->str() + end + 1);
    quoted[end] = 0;
  }
  quoted.swap(token);
  rest.swap(*this);
  return *this;
}

}  // namespace KV_1_1
