// SPDX-License-Identifier: MIT
//
// How the tests of strings look at a String.
#pragma once

#include <string>

#include "kvbase/strings/kv_string.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {

inline bool isNil(String const& string) {
  return string == String::NIL;
}

// Whether both hold one payload. NIL holds none, so it shares with nobody.
inline bool shares(String const& a, String const& b) {
  return !isNil(a) && !isNil(b) && static_cast<wchar const*>(a) == static_cast<wchar const*>(b);
}

// All units that the length counts, inner NULs included.
inline wstring units(String const& string) {
  return wstring(static_cast<wchar const*>(string), static_cast<std::size_t>(string.length()));
}

// The text as seen by readers that stop at the first NUL.
inline wstring visible(String const& string) {
  return wstring(static_cast<wchar const*>(string));
}

// A String with exactly these units and a payload of its own. A NUL at the end would be dropped, so the text has none.
inline String make(wstring const& text) {
  return String(text.c_str(), static_cast<int>(text.size()));
}

// "NIL", "EMPTY" (its very payload), or the text in quotes; NULs show as "\0".
inline std::string state(String const& string) {
  if (isNil(string)) return "NIL";
  if (shares(string, String::EMPTY)) return "EMPTY";
  std::string shown;
  for (char const c : narrow(units(string))) shown += c != 0 ? std::string(1, c) : std::string("\\0");
  return '"' + shown + '"';
}

}  // namespace testing
}  // namespace KV_1_1
