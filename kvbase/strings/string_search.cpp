// SPDX-License-Identifier: MIT
#include "kvbase/kernels/text_kernels.h"
#include "kvbase/kernels/two_way_search.h"
#include "kvbase/strings/internal/character_class.h"
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

// A position in the part of a text behind `from`, as one in the whole text.
int inWholeText(int position, int from) {
  return position < 0 ? -1 : position + from;
}

}  // namespace

int String::find(wchar const* text, int from) const {
  if (text == nullptr || *text == 0 || from < 0 || from >= length()) return -1;
  wchar const* const units = payload_->str();
  return inWholeText(kernels().findText(units + from, textLength() - from, text, kernels().length(text)), from);
}

int String::find(wchar ch, int from) const {
  if (from < 0 || from >= length()) return -1;
  // The terminator is searched too: it is what a NUL finds.
  int const range = textLength() + 1 - from;
  wchar const* const units = payload_->str() + from;
  int const at = kernels().findUnit(units, ch, range);
  return at < range && units[at] == ch ? at + from : -1;
}

int String::findLastOf(wchar const* text) const {
  wchar const* const units = payload_->str();
  if (text == nullptr || *text == 0) return -1;
  return strings::findLastText(units, kernels().length(units), text, kernels().length(text));
}

int String::findLastOf(wchar ch, int from) const {
  if (from < 0 || from >= length()) return -1;
  return inWholeText(kernels().findLastUnit(payload_->str() + from, ch, textLength() + 1 - from), from);
}

template <class Accept>
int String::findClass(int from, Accept accept) const {
  int const end = length();
  if (from < 0) return -1;
  for (int i = from; i < end; ++i) {
    if (accept(payload_->str()[i])) return i;
  }
  return -1;
}

// For a class whose ASCII members lie in a range: only units in it, and those beyond ASCII, are asked.
template <class Accept>
int String::findClassInRange(int from, wchar low, wchar high, Accept accept) const {
  int const end = length();
  if (from < 0) return -1;
  for (int i = from; i < end; ++i) {
    i += kernels().findRange(payload_->str() + i, end - i, low, high);
    if (i < end && accept(payload_->str()[i])) return i;
  }
  return -1;
}

int String::findAlpha(int from) const {
  return findClass(from, [](wchar unit) { return hasClass(unit, kAlpha); });
}

int String::findNonAlpha(int from) const {
  return findClass(from, [](wchar unit) { return !hasClass(unit, kAlpha); });
}

int String::findAlphaNum(int from) const {
  return findClass(from, isAlphaNum);
}

int String::findNonAlphaNum(int from) const {
  return findClass(from, [](wchar unit) { return !isAlphaNum(unit); });
}

int String::findDigit(int from, wchar except) const {
  return findClassInRange(from, KVW('0'), KVW('9'),
                          [except](wchar unit) { return hasClass(unit, kDigit) && (except == 0 || unit != except); });
}

int String::findNonDigit(int from) const {
  return findClass(from, [](wchar unit) { return !hasClass(unit, kDigit); });
}

int String::findSignedDigit(int from) const {
  return findClassInRange(from, KVW('-'), KVW('9'), isSignedDigit);
}

int String::findNonSignedDigit(int from) const {
  return findClass(from, [](wchar unit) { return !isSignedDigit(unit); });
}

int String::findNumeric(int from) const {
  return findClass(from, isNumeric);
}

int String::findWS(int from) const {
  return findClass(from, [](wchar unit) { return !hasClass(unit, kGraphic); });
}

int String::findNonWS(int from) const {
  return findClass(from, [](wchar unit) { return hasClass(unit, kGraphic); });
}

}  // namespace KV_1_1
