// SPDX-License-Identifier: MIT
//
// How the tests of strings build Strings and look at them.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "kvbase/strings/kv_string.h"
#include "tests/reference/string_text_model.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {

// All units that the length counts, or nothing for NIL.
using reference::Text;

// The null pointer as a text, for what is overloaded by type.
constexpr wchar const* kNull = nullptr;

// -1, 0 or 1, as a comparison tells the order.
inline int signOf(int order) {
  return (order > 0) - (order < 0);
}

inline bool isNil(String const& string) {
  return string == String::NIL;
}

// Whether both hold one payload, or both are NIL.
inline bool shares(String const& a, String const& b) {
  return static_cast<wchar const*>(a) == static_cast<wchar const*>(b);
}

// A String with exactly these units and a payload of its own. The terminator is counted, so that a NUL at the end of the
// units is not taken for it.
inline String stringOf(wstring const& units) {
  return String(units.c_str(), static_cast<int>(units.size()) + 1);
}
inline String stringOf(Text const& text) {
  return text ? stringOf(*text) : String();
}

// All units that the length counts, inner NULs included; none for NIL.
inline wstring units(String const& string) {
  return wstring(static_cast<wchar const*>(string), static_cast<std::size_t>(string.length()));
}
// The text up to its first NUL, as most readers see it.
inline wstring visible(String const& string) {
  return wstring(static_cast<wchar const*>(string));
}
// The same two with NIL kept apart.
inline Text unitsOf(String const& string) {
  return isNil(string) ? Text() : Text(units(string));
}
inline Text textOf(String const& string) {
  return isNil(string) ? Text() : Text(visible(string));
}

// "NIL", or the text in quotes; NULs show as "\0".
inline std::string spelled(Text const& text) {
  if (!text) return "NIL";
  std::string shown;
  for (char const c : narrow(*text)) shown += c != 0 ? std::string(1, c) : std::string("\\0");
  return '"' + shown + '"';
}
inline std::string spelled(String const& string) {
  return spelled(unitsOf(string));
}
// The same, but "EMPTY" for the very payload of String::EMPTY.
inline std::string state(String const& string) {
  return shares(string, String::EMPTY) ? "EMPTY" : spelled(string);
}

// The three receivers without text.
struct EmptyReceiver {
  char const* name;
  String string;
};
inline std::array<EmptyReceiver, 3> emptyReceivers() {
  return {{{"NIL", String::NIL}, {"EMPTY", String::EMPTY}, {"an empty text of its own", String(KVW(""), 0)}}};
}

// Rounds of a comparison with a model.
constexpr int kRounds = 10000;

}  // namespace testing
}  // namespace KV_1_1
