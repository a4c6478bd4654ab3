// SPDX-License-Identifier: MIT
//
// Between the texts of the models and Strings.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "kvbase/strings/kv_string.h"
#include "tests/reference/values_text.h"
#include "tests/strings/string_support.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {

using value_model::Text;

// Rounds of a comparison with a model.
constexpr int kRounds = 100000;

// Exactly these units: the terminator is counted, so that NULs at the end are not taken for it.
inline String stringOf(wstring const& units) {
  return String(units.c_str(), static_cast<int>(units.size()) + 1);
}
inline String stringOf(Text const& text) {
  return text ? stringOf(*text) : String();
}
// All units that the length counts.
inline Text unitsOf(String const& string) {
  if (isNil(string)) return Text();
  return wstring(static_cast<wchar const*>(string), static_cast<std::size_t>(string.length()));
}
// The units up to the first NUL.
inline Text textOf(String const& string) {
  if (isNil(string)) return Text();
  return wstring(static_cast<wchar const*>(string));
}
inline bool share(String const& a, String const& b) {
  return static_cast<wchar const*>(a) == static_cast<wchar const*>(b);
}
inline std::string spelled(Text const& text) {
  return text ? "\"" + narrow(*text) + "\"" : "NIL";
}
inline std::string spelled(String const& string) {
  return spelled(unitsOf(string));
}

// The three receivers without text.
struct EmptyReceiver {
  char const* name;
  String string;
};
inline std::array<EmptyReceiver, 3> emptyReceivers() {
  return {{{"NIL", String::NIL}, {"EMPTY", String::EMPTY}, {"an empty text of its own", String(KVW(""), 0)}}};
}

}  // namespace testing
}  // namespace KV_1_1
