// SPDX-License-Identifier: MIT
//
// The inner loops of the string code, one unit at a time. Ranges are whole texts here.
#pragma once

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace reference {

inline wchar lowerCase(wchar unit) {
  return unit >= KVW('A') && unit <= KVW('Z') ? static_cast<wchar>(unit - KVW('A') + KVW('a')) : unit;
}

inline wstring lowerCase(wstring text) {
  for (wchar& unit : text) unit = lowerCase(unit);
  return text;
}

// `a` and `b` have the same size.
inline int mismatch(wstring const& a, wstring const& b) {
  std::size_t i = 0;
  while (i < a.size() && a[i] == b[i] && a[i] != 0) ++i;
  return static_cast<int>(i);
}

inline int mismatchIgnoringCase(wstring const& a, wstring const& b) {
  return mismatch(lowerCase(a), lowerCase(b));
}

inline int findUnit(wstring const& text, wchar wanted) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == wanted || text[i] == 0) return static_cast<int>(i);
  }
  return static_cast<int>(text.size());
}

inline int findLastUnit(wstring const& text, wchar wanted) {
  std::size_t const place = text.rfind(wanted);
  return place == wstring::npos ? -1 : static_cast<int>(place);
}

// Units beyond ASCII count as found.
inline int findRange(wstring const& text, wchar low, wchar high) {
  std::size_t i = 0;
  while (i < text.size() && text[i] <= 0x7F && !(low <= text[i] && text[i] <= high)) ++i;
  return static_cast<int>(i);
}

inline int replaceUnit(wstring& text, wchar from, wchar to) {
  int count = 0;
  for (std::size_t i = 0; i < text.size() && text[i] != 0; ++i) {
    if (text[i] != from) continue;
    text[i] = to;
    ++count;
  }
  return count;
}

}  // namespace reference
}  // namespace KV_1_1
