// SPDX-License-Identifier: MIT
//
// Model of taking values from the front of a text. Each function gives the value and leaves what remains in `text`.
#pragma once

#include <cstdlib>

#include "tests/reference/string_text_model.h"

namespace KV_1_1 {
namespace reference {

// Where reading starts, -1 if nowhere: then the text is used up.
inline int startOrUseUp(Text& text) {
  int const start = findAlphaNum(text);
  if (start < 0) text = wstring();
  return start;
}

template <class Signed>
Signed takeSigned(Text& text) {
  int const start = startOrUseUp(text);
  if (start < 0) return 0;
  Signed const value = signedDecimal<Signed>(*text, static_cast<std::size_t>(start));
  int const end = findFirst(text, start, [](wchar unit) { return !isDigit(unit) && unit != static_cast<wchar>('-'); });
  text = end < 0 ? wstring() : bySizeRule(text->substr(static_cast<std::size_t>(end)));
  return value;
}

// `surplus` is by how much the stored length of what remains is too large: by the units dropped in front. But a single
// surplus unit is the old terminator and dropped.
template <class Unsigned>
Unsigned takeUnsigned(Text& text, int* surplus = nullptr) {
  if (surplus != nullptr) *surplus = 0;
  int const start = startOrUseUp(text);
  if (start < 0) return 0;
  Decimal const number = scanDecimal(*text, static_cast<std::size_t>(start));
  if (surplus == nullptr || start == 0) {
    text = bySizeRule(text->substr(number.end));
  } else {
    *surplus = start == 1 ? 0 : start;
    text = text->substr(number.end);
  }
  return unsignedDecimal<Unsigned>(number);
}

inline int take(Text& text, int*) {
  return takeSigned<int>(text);
}
inline short take(Text& text, short*) {
  return static_cast<short>(takeSigned<int>(text));
}
inline unsigned short take(Text& text, unsigned short*) {
  return static_cast<unsigned short>(takeSigned<int>(text));
}
inline signed char take(Text& text, signed char*) {
  return static_cast<signed char>(takeSigned<int>(text));
}
inline long take(Text& text, long*) {
  return static_cast<std::int32_t>(takeSigned<long long>(text));
}
inline long long take(Text& text, long long*) {
  return takeSigned<long long>(text);
}
inline unsigned int take(Text& text, unsigned int*) {
  return takeUnsigned<std::uint32_t>(text);
}
inline unsigned char take(Text& text, unsigned char*) {
  return static_cast<unsigned char>(takeUnsigned<std::uint32_t>(text));
}

// The C library reads the number from the ASCII units that it could consist of.
inline double take(Text& text, double*) {
  int const start = startOrUseUp(text);
  if (start < 0) return 0;
  std::string ascii;
  for (std::size_t i = static_cast<std::size_t>(start); i < text->size() && (*text)[i] != 0 && (*text)[i] < 0x80; ++i)
    ascii += static_cast<char>((*text)[i]);
  char* end = nullptr;
  double const number = std::strtod(ascii.c_str(), &end);
  double const value = end != ascii.c_str() ? number : 0;  // not every runtime gives +0 for a sign alone
  text = visible(text->substr(static_cast<std::size_t>(start) + static_cast<std::size_t>(end - ascii.c_str())));
  return value;
}
inline float take(Text& text, float*) {
  return static_cast<float>(take(text, static_cast<double*>(nullptr)));
}

// Without regard to case; `word` is in lower case.
inline bool beginsWithWord(wstring const& units, std::size_t from, std::string const& word) {
  for (std::size_t i = 0; i < word.size(); ++i) {
    wchar const unit = from + i < units.size() ? units[from + i] : wchar();
    wchar const folded = isBetween(unit, 'A', 'Z') ? static_cast<wchar>(unit - 'A' + 'a') : unit;
    if (folded != static_cast<wchar>(word[i])) return false;
  }
  return true;
}

inline bool take(Text& text, bool*) {
  int const start = startOrUseUp(text);
  if (start < 0) return false;
  std::size_t const at = static_cast<std::size_t>(start);
  if (!isAlpha((*text)[at])) {
    bool const value = signedDecimal<int>(*text, at) != 0;
    text = text->substr(at + 1);
    return value;
  }
  if (beginsWithWord(*text, at, "true")) {
    text = text->substr(at + 4);
    return true;
  }
  if (beginsWithWord(*text, at, "false")) text = text->substr(at + 5);
  return false;
}

inline wchar take(Text& text, wchar*) {
  int const start = findGraphic(text);
  if (start < 0) {
    text = wstring();
    return 0;
  }
  wchar const value = (*text)[static_cast<std::size_t>(start)];
  text = text->substr(static_cast<std::size_t>(start) + 1);
  return value;
}

inline int findUnit(wstring const& units, wchar unit, std::size_t from) {
  std::size_t const at = units.find(unit, from);
  return at == wstring::npos ? -1 : static_cast<int>(at);
}

inline Text takeQuoted(Text& text) {
  wstring target = text->substr(1);
  int p = findUnit(target, kQuote, 0);
  while (p > 0) {
    std::size_t const at = static_cast<std::size_t>(p);
    if (target[at - 1] != kBackslash) break;
    if (p - 2 >= 0 && target[at - 2] == kBackslash) break;
    p = findUnit(target, kQuote, at + 1);
  }
  if (p < 0) {
    text = wstring();
    return target;
  }
  text = target.substr(static_cast<std::size_t>(p) + 1);
  return target.substr(0, static_cast<std::size_t>(p));
}

inline Text takeToken(Text& text) {
  if (text && !text->empty() && text->front() == kQuote) return takeQuoted(text);
  int const p = text ? findUnit(*text, kLineFeed, 0) : -1;
  if (p < 0) {
    Text const line = text;
    text = wstring();
    return line;
  }
  wstring const line = text->substr(0, static_cast<std::size_t>(p));
  text = text->substr(static_cast<std::size_t>(p) + 1);
  return line;
}

// Drops what is not graphic from the front.
inline void eatWhite(Text& text) {
  int const start = findGraphic(text);
  if (start > 0) text = bySizeRule(text->substr(static_cast<std::size_t>(start)));
}

}  // namespace reference
}  // namespace KV_1_1
