// SPDX-License-Identifier: MIT
#include <cstddef>

#include "kvbase/kernels/front_search.h"
#include "kvbase/kernels/two_way_search.h"
#include "kvbase/strings/internal/character_class.h"
#include "kvbase/strings/internal/text_view.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

namespace {

using platform::kAlpha;
using platform::kDigit;
using platform::kGraphic;
using strings::hasClass;
using strings::kernels;

bool isAlphaNum(wchar unit) {
  return hasClass(unit, kAlpha | kDigit) || unit == KVW('+') || unit == KVW('-') || unit == KVW('.');
}

bool isSignedDigit(wchar unit) {
  return hasClass(unit, kDigit) || unit == KVW('-');
}

bool isNumeric(wchar unit) {
  return isSignedDigit(unit) || unit == KVW('+') || unit == KVW('.') || unit == KVW('E') || unit == KVW('e');
}

// Converts a position in the part of a text behind `from` to one in the whole text.
int inWholeText(int position, int from) {
  return position < 0 ? -1 : position + from;
}

template <class Accept>
int findClass(String const& text, int from, Accept accept) {
  int const end = text.length();
  if (from < 0) return -1;
  wchar const* const units = text;
  for (int i = from; i < end; ++i) {
    if (accept(units[i])) return i;
  }
  return -1;
}

// For a class whose ASCII members lie in a range: only units of that range and units beyond ASCII are looked up.
template <class Accept>
int findClassInRange(String const& text, int from, wchar low, wchar high, Accept accept) {
  int const end = text.length();
  if (from < 0) return -1;
  wchar const* const units = text;
  for (int i = from; i < end; ++i) {
    i += strings::findRangeFromFront(units + i, end - i, low, high);
    if (i < end && accept(units[i])) return i;
  }
  return -1;
}

}  // namespace

int String::find(wchar const* text, int from) const {
  if (text == nullptr || *text == 0 || from < 0 || from >= length()) return -1;
  TextView const part = terminatedViewOf(*this).substr(static_cast<std::size_t>(from));
  TextView const wanted = viewOf(text);
  return inWholeText(strings::findTextFromFront(part.data(), lengthOf(part), wanted.data(), lengthOf(wanted)), from);
}

int String::find(wchar ch, int from) const {
  if (from < 0 || from >= length()) return -1;
  TextView const part = terminatedViewOf(*this).substr(static_cast<std::size_t>(from));
  int const at = strings::findUnitFromFront(part.data(), ch, lengthOf(part));
  // If the unit was not found, `at` is the index of a NUL, which is what a search for NUL finds.
  return part.data()[at] == ch ? at + from : -1;
}

int String::findLastOf(wchar const* text) const {
  if (text == nullptr || *text == 0) return -1;
  TextView const units = viewOf(payload_->stringValue());
  TextView const wanted = viewOf(text);
  return strings::findLastText(units.data(), lengthOf(units), wanted.data(), lengthOf(wanted));
}

int String::findLastOf(wchar ch, int from) const {
  if (from < 0 || from >= length()) return -1;
  TextView const part = upToNul(terminatedViewOf(*this).substr(static_cast<std::size_t>(from)));
  return inWholeText(ch != 0 ? kernels().findLastUnit(part.data(), ch, lengthOf(part)) : lengthOf(part), from);
}

int String::findAlpha(int from) const {
  return findClass(*this, from, [](wchar unit) { return hasClass(unit, kAlpha); });
}

int String::findNonAlpha(int from) const {
  return findClass(*this, from, [](wchar unit) { return !hasClass(unit, kAlpha); });
}

int String::findAlphaNum(int from) const {
  return findClass(*this, from, isAlphaNum);
}

int String::findNonAlphaNum(int from) const {
  return findClass(*this, from, [](wchar unit) { return !isAlphaNum(unit); });
}

int String::findDigit(int from, wchar except) const {
  return findClassInRange(*this, from, KVW('0'), KVW('9'),
                          [except](wchar unit) { return hasClass(unit, kDigit) && (except == 0 || unit != except); });
}

int String::findNonDigit(int from) const {
  return findClass(*this, from, [](wchar unit) { return !hasClass(unit, kDigit); });
}

int String::findSignedDigit(int from) const {
  return findClassInRange(*this, from, KVW('-'), KVW('9'), isSignedDigit);
}

int String::findNonSignedDigit(int from) const {
  return findClass(*this, from, [](wchar unit) { return !isSignedDigit(unit); });
}

int String::findNumeric(int from) const {
  return findClass(*this, from, isNumeric);
}

int String::findWS(int from) const {
  return findClass(*this, from, [](wchar unit) { return !hasClass(unit, kGraphic); });
}

int String::findNonWS(int from) const {
  return findClass(*this, from, [](wchar unit) { return hasClass(unit, kGraphic); });
}

}  // namespace KV_1_1
