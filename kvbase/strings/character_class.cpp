// SPDX-License-Identifier: MIT
#include "kvbase/strings/internal/character_class.h"

#include <array>

#include "kvbase/export.h"
namespace KV_1_1 {
namespace strings {

namespace {

constexpr unsigned char classesOfAscii(unsigned int unit) {
  unsigned int classes = 0;
  if ((unit >= 'A' && unit <= 'Z') || (unit >= 'a' && unit <= 'z')) classes |= platform::kAlpha;
  if (unit >= '0' && unit <= '9') classes |= platform::kDigit;
  if (unit == ' ' || (unit >= 9 && unit <= 13)) classes |= platform::kSpace;
  if (unit > ' ' && unit < 127) classes |= platform::kGraphic;
  return static_cast<unsigned char>(classes);
}

constexpr std::array<unsigned char, 128> makeTable() {
  std::array<unsigned char, 128> table{};
  for (unsigned int unit = 0; unit < 128; ++unit) table[unit] = classesOfAscii(unit);
  return table;
}

}  // namespace

std::array<unsigned char, 128> const kAsciiClasses = makeTable();

// Not inlined, so that the loops over ASCII stay small.
KVBASE_NEVER_INLINE bool hasClassBeyondAscii(wchar unit, unsigned int classes) {
  return (platform::text().classesOf(unit) & classes) != 0;
}

}  // namespace strings
}  // namespace KV_1_1
