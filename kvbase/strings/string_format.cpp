// SPDX-License-Identifier: MIT
#include <cmath>

#include "kvbase/strings/internal/number_text.h"
#include "kvbase/strings/internal/text_builder.h"
#include "kvbase/strings/internal/text_view.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

namespace {

// How many significant digits a value is shown with: those of its integer part and a fixed number more, or a fixed number
// where there is no integer part.
struct Digits {
  int ofFraction;         // for an absolute value below 1
  int behindIntegerPart;  // added to the decimal logarithm, rounded up
};

template <class Value>
int precisionFor(Value value, Digits digits) {
  if (value == 0) return 1;
  Value const logarithm = std::log10(std::fabs(value));
  return logarithm < 0 ? digits.ofFraction : static_cast<int>(std::ceil(logarithm)) + digits.behindIntegerPart;
}

template <class Value>
void appendFloating(String& receiver, Value value, Digits digits) {
  if (std::isnan(value)) {
    receiver += KVW("nan");
  } else if (std::isinf(value)) {
    receiver += value > 0 ? KVW("inf") : KVW("-inf");
  } else {
    wchar text[320];
    int const units = strings::printGeneral(value, precisionFor(value, digits), text, 320);
    receiver.write(text, units);
  }
}

void appendInteger(String& receiver, strings::DecimalText text) {
  TextBuilder sum(static_cast<long long>(receiver.length()) + text.length());
  text.writeTo(sum.append(viewOf(receiver)).extend(text.length()));
  receiver = sum.finish();
}

}  // namespace

String& String::operator+=(long long value) {
  appendInteger(*this, strings::DecimalText(value));
  return *this;
}

String& String::operator+=(unsigned long long value) {
  appendInteger(*this, strings::DecimalText(value));
  return *this;
}

String& String::operator+=(bool value) {
  return *this += value ? KVW("true") : KVW("false");
}

String& String::operator+=(wchar value) {
  wchar const text[] = {value, 0};
  return *this += text;
}

String& String::operator+=(wchar const* text) {
  write(text, -1);
  return *this;
}

String& String::operator+=(String const& other) {
  if (other.payload_ == nullptr) return *this;
  if (payload_ == nullptr) return *this = other;
  write(other, other.length());
  return *this;
}

String& String::operator+=(float value) {
  appendFloating(*this, value, {4, 5});
  return *this;
}

String& String::operator+=(double value) {
  appendFloating(*this, value, {8, 9});
  return *this;
}

}  // namespace KV_1_1
