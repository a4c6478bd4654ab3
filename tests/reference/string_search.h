// SPDX-License-Identifier: MIT
//
// Searches in a text the slow and obvious way. A text is given with all the units that its length counts; for the
// readers that stop at a NUL it ends at the first one.
#pragma once

#include "kvbase/platform/text_api.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace reference {

// Beyond ASCII the classes are those of the system.
inline bool systemHas(wchar unit, unsigned int classes) {
  return unit >= 0x80 && (platform::nativeText().classesOf(unit) & classes) != 0;
}
inline bool isAlpha(wchar unit) {
  return (unit >= KVW('a') && unit <= KVW('z')) || (unit >= KVW('A') && unit <= KVW('Z')) ||
         systemHas(unit, platform::kAlpha);
}
inline bool isDigit(wchar unit) {
  return (unit >= KVW('0') && unit <= KVW('9')) || systemHas(unit, platform::kDigit);
}
inline bool isSpace(wchar unit) {
  return unit == KVW(' ') || (unit >= 9 && unit <= 13) || systemHas(unit, platform::kSpace);
}
inline bool isGraphic(wchar unit) {
  return (unit >= 0x21 && unit <= 0x7E) || systemHas(unit, platform::kGraphic);
}
inline bool isWordOrNumber(wchar unit) {
  return isAlpha(unit) || isDigit(unit) || unit == KVW('+') || unit == KVW('-') || unit == KVW('.');
}
inline bool isNumeric(wchar unit) {
  return isDigit(unit) || unit == KVW('+') || unit == KVW('-') || unit == KVW('.') || unit == KVW('e') ||
         unit == KVW('E');
}

// The unit at an index; the terminator behind the text.
inline wchar at(wstring const& text, int index) {
  return index < static_cast<int>(text.size()) ? text[static_cast<std::size_t>(index)] : wchar(0);
}

inline bool startsAt(wstring const& text, int index, wstring const& wanted) {
  return text.compare(static_cast<std::size_t>(index), wanted.size(), wanted) == 0;
}

inline bool inText(wstring const& text, int from) {
  return from >= 0 && from < static_cast<int>(text.size());
}

inline int find(wstring const& text, wchar wanted, int from) {
  if (!inText(text, from)) return -1;
  for (int i = from;; ++i) {
    if (at(text, i) == wanted) return i;
    if (at(text, i) == 0) return -1;
  }
}

inline int findLastOf(wstring const& text, wchar wanted, int from) {
  if (!inText(text, from)) return -1;
  int last = -1;
  for (int i = from;; ++i) {
    if (at(text, i) == wanted) last = i;
    if (at(text, i) == 0) return last;
  }
}

// `wanted` holds no NUL.
inline int find(wstring const& text, wstring const& wanted, int from) {
  if (wanted.empty() || !inText(text, from)) return -1;
  for (int i = from; at(text, i) != 0; ++i) {
    if (startsAt(text, i, wanted)) return i;
  }
  return -1;
}

inline int findLastOf(wstring const& text, wstring const& wanted) {
  int last = -1;
  if (wanted.empty()) return last;
  for (int i = 0; at(text, i) != 0; ++i) {
    if (startsAt(text, i, wanted)) last = i;
  }
  return last;
}

}  // namespace reference
}  // namespace KV_1_1
