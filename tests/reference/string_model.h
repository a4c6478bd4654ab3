// SPDX-License-Identifier: MIT
//
// What a String that is not NIL makes of its operations, on plain texts and the slow and obvious way. A text is given
// with all the units that its length counts.
#pragma once

#include "tests/reference/string_search.h"
#include "tests/reference/text_kernels.h"

namespace KV_1_1 {
namespace reference {

// What readers see that stop at the first NUL.
inline wstring visible(wstring const& text) {
  return wstring(text.c_str());
}

// The rule for sizes: a NUL in the last place is no text.
inline wstring bySizeRule(wstring text) {
  if (!text.empty() && text.back() == 0) text.pop_back();
  return text;
}

inline int compare(wstring const& a, wstring const& b) {
  for (int i = 0;; ++i) {
    if (at(a, i) != at(b, i)) return at(a, i) < at(b, i) ? -1 : 1;
    if (at(a, i) == 0) return 0;
  }
}

inline int compareIgnoreCase(wstring const& a, wstring const& b) {
  return compare(lowerCase(a), lowerCase(b));
}

// Of two texts whose lengths are known.
inline bool equal(wstring const& a, wstring const& b) {
  return a.size() == b.size() && compare(a, b) == 0;
}

inline wstring substr(wstring const& text, int start, int end) {
  int const length = static_cast<int>(text.size());
  if (start < 0) start = 0;
  if (start > length) start = length;
  if (end < 0 || end > length) end = length;
  if (end <= start) return wstring();
  if (end - start == length) return text;
  return bySizeRule(text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start)));
}

inline wstring trim(wstring const& text, bool left, bool right) {
  if (at(text, 0) == 0) return text;
  int first = 0;
  int last = static_cast<int>(text.size()) - 1;
  while (left && first <= last && isSpace(at(text, first))) ++first;
  while (right && last > first && isSpace(at(text, last))) --last;
  // An end of 0 is the position, not a missing argument.
  return last < first ? wstring() : substr(text, first, last + 1);
}

inline bool startsWith(wstring const& text, wstring const& prefix) {
  return text.size() >= prefix.size() && text.substr(0, prefix.size()) == prefix;
}

inline bool endsWith(wstring const& text, wstring const& suffix, bool ignoreCase) {
  if (suffix.empty() || text.size() < suffix.size()) return false;
  wstring const end = text.substr(text.size() - suffix.size());
  return (ignoreCase ? compareIgnoreCase(end, suffix) : compare(end, suffix)) == 0;
}

// `from` and `to` hold no NUL, `from` is not empty. The text becomes the result.
inline int replace(wstring& text, wstring const& from, wstring const& to) {
  wstring result;
  int count = 0;
  int at = 0;
  for (int match = find(text, from, at); match >= 0; match = find(text, from, at)) {
    result += text.substr(static_cast<std::size_t>(at), static_cast<std::size_t>(match - at)) + to;
    at = match + static_cast<int>(from.size());
    ++count;
  }
  text = result + text.substr(static_cast<std::size_t>(at));
  return count;
}

}  // namespace reference
}  // namespace KV_1_1
