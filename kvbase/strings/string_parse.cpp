// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "kvbase/export.h"
#include "kvbase/kernels/text_kernels.h"
#include "kvbase/strings/internal/character_class.h"
#include "kvbase/strings/internal/number_text.h"
#include "kvbase/strings/internal/text_builder.h"
#include "kvbase/strings/internal/text_view.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

namespace {

using strings::DecimalText;
using strings::hasClass;
using strings::Parsed;

wchar const* unitsOf(String const& text) {
  return text;
}

// Whether the text begins with the lower-case word, without regard to case.
bool beginsWith(wchar const* text, wchar const* word) {
  while (*word != 0 && strings::foldCase(*text) == *word) ++text, ++word;
  return *word == 0;
}

// COMPAT: one backslash in front escapes a quote, two do not, and no more than two are looked at.
bool isEscapedAt(wchar const* text, int quote) {
  return text[quote - 1] == KVW('\\') && !(quote >= 2 && text[quote - 2] == KVW('\\'));
}

// Where the digits at the end begin; the length if there are none.
int indexStart(TextView text) {
  std::size_t start = text.size();
  while (start > 0 && hasClass(text[start - 1], platform::kDigit)) --start;
  return static_cast<int>(start);
}

// COMPAT: a text without index gets 1 by a step down, too.
DecimalText steppedIndex(TextView index, int step) {
  if (index.empty()) return DecimalText(1ll);
  std::uint32_t const stepped =
      static_cast<std::uint32_t>(strings::readInt(index.data()).value) + static_cast<std::uint32_t>(step);
  return DecimalText(static_cast<long long>(static_cast<std::int32_t>(stepped)));
}

// COMPAT: a stepped text ends at its first NUL. Of an index behind that only the digits by which it grows are seen.
void stepIndex(String& text, int step) {
  int const start = indexStart(viewOf(text));
  TextView const index = viewOf(text).substr(static_cast<std::size_t>(start));
  DecimalText const decimal = steppedIndex(index, step);
  int const growth = decimal.length() - lengthOf(index);
  if (growth <= 0) {
    decimal.writeTo(std::fill_n(&text[start], -growth, KVW('0')));
    return;
  }
  wchar digits[DecimalText::kLongest];
  decimal.writeTo(digits);
  TextView const front = upToNul(viewOf(text).substr(0, static_cast<std::size_t>(start)));
  int const added = lengthOf(front) == start ? decimal.length() : growth;
  TextBuilder longer(static_cast<long long>(front.size()) + added);
  longer.append(front).append(TextView(digits + decimal.length() - added, static_cast<std::size_t>(added)));
  text = longer.finish();
}

// Runs the conversion at the first unit of a number or word, or gives 0 and empties the text if there is none.
template <class Value, class Convert>
void extract(String& text, Value& value, Convert convert) {
  int const start = text.findAlphaNum(0);
  if (start < 0) {
    value = Value();
    text = String::EMPTY;
  } else {
    convert(start);
  }
}

// A signed number at the front of a text, and where what remains begins; at the length if nothing does.
template <class Number>
struct FrontNumber {
  Number value;
  int end;
};

// COMPAT: the end of a signed number is searched for separately and can differ from the end of the conversion: minus
// signs inside belong to the number, a leading plus does not.
template <class Number>
KVBASE_NEVER_INLINE FrontNumber<Number> findSigned(String const& text, Parsed<Number> (*read)(wchar const*)) {
  int const start = text.findAlphaNum(0);
  if (start < 0) return {0, text.length()};
  wchar const* const units = text;
  Parsed<Number> const number = read(units + start);
  // Its sign and its ASCII digits need no search.
  int const searched = units[start] == KVW('+') ? start : static_cast<int>(number.end - units);
  int const end = text.findNonSignedDigit(searched);
  return {number.value, end >= 0 ? end : text.length()};
}

// Most texts begin with a few ASCII digits, and what stands behind them ends the number by all rules.
template <class Number>
inline FrontNumber<Number> readSigned(String const& text, Parsed<Number> (*read)(wchar const*)) {
  constexpr int kMostDigits = 9;  // of which each number is an int
  if (text.length() == 0) return {0, 0};
  std::uint64_t number = 0;
  wchar const* const end = strings::readAsciiDigits(text, number);
  auto const digits = end - unitsOf(text);
  bool const isBrief = digits > 0 && digits <= kMostDigits && *end < 0x80 && *end != KVW('-');
  return isBrief ? FrontNumber<Number>{static_cast<Number>(number), static_cast<int>(digits)} : findSigned(text, read);
}

template <class Number>
Number extractSigned(String& text, Parsed<Number> (*read)(wchar const*)) {
  FrontNumber<Number> const number = readSigned(text, read);
  int const rest = text.length() - number.end;
  if (rest > 0) {
    text = String(unitsOf(text) + number.end, rest);
  } else {
    text = String::EMPTY;
  }
  return number.value;
}

// What remains behind an unsigned number.
// COMPAT: the stored length is `surplus` units too large.
String remainder(TextView text, int from, int surplus) {
  TextView const rest = text.substr(static_cast<std::size_t>(from));
  // The first surplus unit is the terminator, which the rule for sizes drops if it is the last.
  if (surplus <= 1) return String(rest.data(), lengthOf(rest) + surplus);
  TextBuilder longer(static_cast<long long>(rest.size()) + surplus);
  longer.append(rest).append(KVW('\0'));
  std::fill_n(longer.extend(surplus - 1), surplus - 1, KVW(' '));
  return longer.finish();
}

enum EndRule { kEndExact, kEndOvershoots };

template <class Value, class Read>
void extractUnsigned(String& text, Value& value, Read read, EndRule rule) {
  extract(text, value, [&](int start) {
    auto const number = read(unitsOf(text) + start);
    value = static_cast<Value>(number.value);
    int const end = static_cast<int>(number.end - unitsOf(text));
    text = remainder(viewOf(text), end, rule == kEndOvershoots ? start : 0);
  });
}

// Takes a token between double quotes from a text that begins with the first of them.
void extractQuoted(String& text, String& token) {
  String quoted(unitsOf(text) + 1);
  int end = quoted.find(KVW('"'), 0);
  while (end > 0 && isEscapedAt(quoted, end)) end = quoted.find(KVW('"'), end + 1);
  String rest = String::EMPTY;
  if (end >= 0) {
    rest = String(unitsOf(quoted) + end + 1);
    quoted[end] = 0;
  }
  token = std::move(quoted);
  text = std::move(rest);
}

}  // namespace

// --- The number at the end -------------------------------------------------------------------------------------------

unsigned int String::getIndex() const {
  TextView const text = viewOf(*this);
  int const start = indexStart(text);
  return start < lengthOf(text) ? static_cast<unsigned int>(strings::readInt(text.data() + start).value) : 0;
}

void String::setIndex(unsigned int index) {
  int const start = indexStart(viewOf(*this));
  static_cast<void>((*this)[start]);  // the text stops sharing and ends at its first NUL
  String named = substr(0, start);
  if (index != 0 || named.length() == 0) named += static_cast<unsigned long long>(index);
  named.swap(*this);
}

void String::incrementIndex() {
  stepIndex(*this, 1);
}

void String::decrementIndex() {
  stepIndex(*this, -1);
}

// --- Extraction ------------------------------------------------------------------------------------------------------

void String::eatwhite() {
  int const start = findNonWS(0);
  if (start > 0) *this = String(payload_->str() + start, length() - start);
}

String& String::operator>>(signed char& value) {
  value = static_cast<signed char>(extractSigned(*this, strings::readInt));
  return *this;
}

String& String::operator>>(short& value) {
  value = static_cast<short>(extractSigned(*this, strings::readInt));
  return *this;
}

String& String::operator>>(unsigned short& value) {
  value = static_cast<unsigned short>(extractSigned(*this, strings::readInt));
  return *this;
}

String& String::operator>>(int& value) {
  value = extractSigned(*this, strings::readInt);
  return *this;
}

String& String::operator>>(long& value) {
  value = static_cast<std::int32_t>(extractSigned(*this, strings::readInt64));
  return *this;
}

String& String::operator>>(long long& value) {
  value = extractSigned(*this, strings::readInt64);
  return *this;
}

String& String::operator>>(unsigned char& value) {
  extractUnsigned(*this, value, strings::readUnsigned32, kEndExact);
  return *this;
}

String& String::operator>>(unsigned int& value) {
  extractUnsigned(*this, value, strings::readUnsigned32, kEndExact);
  return *this;
}

String& String::operator>>(unsigned long& value) {
  extractUnsigned(*this, value, strings::readUnsigned32, kEndOvershoots);
  return *this;
}

String& String::operator>>(unsigned long long& value) {
  extractUnsigned(*this, value, strings::readUnsigned64, kEndOvershoots);
  return *this;
}

String& String::operator>>(double& value) {
  extract(*this, value, [&](int start) {
    auto const number = strings::readDouble(unitsOf(*this) + start);
    value = number.value;
    *this = String(number.end);
  });
  return *this;
}

String& String::operator>>(float& value) {
  double wide = 0;
  *this >> wide;
  value = static_cast<float>(wide);
  return *this;
}

String& String::operator>>(bool& value) {
  extract(*this, value, [&](int start) {
    wchar const* const text = &(*this)[start];
    bool const isWord = hasClass(*text, platform::kAlpha);
    value = isWord ? beginsWith(text, KVW("true")) : strings::readInt(text).value != 0;
    if (!isWord) {
      *this = substr(start + 1, -1);
    } else if (value) {
      *this = substr(start + 4, -1);
    } else if (beginsWith(text, KVW("false"))) {
      *this = substr(start + 5, -1);
    }
  });
  return *this;
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
  if (payload_ != nullptr && (*this)[0] == KVW('"')) {
    extractQuoted(*this, token);
    return *this;
  }
  int const end = find(KVW('\n'), 0);
  String line = end >= 0 ? String(payload_->str(), end) : *this;
  String rest = end >= 0 ? String(payload_->str() + end + 1, length() - end - 1) : EMPTY;
  line.swap(token);
  rest.swap(*this);
  return *this;
}

}  // namespace KV_1_1
