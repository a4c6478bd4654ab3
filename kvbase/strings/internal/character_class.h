// SPDX-License-Identifier: MIT
//
// Classes of units by the rules of the isw... functions in the "C" locale: ASCII from a table here, the rest from the
// platform's tables.
#pragma once

#include <array>

#include "kvbase/platform/text_api.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace strings {

// Classes of the 128 ASCII units, as platform::CharacterClass bits.
extern std::array<unsigned char, 128> const kAsciiClasses;

// hasClass of a unit beyond ASCII.
bool hasClassBeyondAscii(wchar unit, unsigned int classes);

inline bool hasClass(wchar unit, unsigned int classes) {
  return unit < 128 ? (kAsciiClasses[unit] & classes) != 0 : hasClassBeyondAscii(unit, classes);
}

// Maps A to Z to a to z and leaves all other units alone, as the C runtime does in its "C" locale. The library folds case
// in no other way.
constexpr wchar foldCase(wchar unit) {
  return unit >= KVW('A') && unit <= KVW('Z') ? static_cast<wchar>(unit + 32) : unit;
}

}  // namespace strings
}  // namespace KV_1_1
