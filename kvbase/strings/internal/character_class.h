// SPDX-License-Identifier: MIT
//
// Classes of units as the isw... functions have them in the "C" locale: ASCII from a table here, the rest from the
// platform's tables.
#pragma once

#include <array>

#include "kvbase/platform/text_api.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace strings {

// Classes of the 128 ASCII units, as platform::CharacterClass bits.
extern std::array<unsigned char, 128> const kAsciiClasses;

inline bool hasClass(wchar unit, unsigned int classes) {
  return ((unit < 128 ? kAsciiClasses[unit] : platform::text().classesOf(unit)) & classes) != 0;
}

// A to Z as a to z, everything else as it is: the folding of the C runtime in its "C" locale, and the only one in the
// library.
constexpr wchar foldCase(wchar unit) {
  return unit >= KVW('A') && unit <= KVW('Z') ? static_cast<wchar>(unit + 32) : unit;
}

}  // namespace strings
}  // namespace KV_1_1
