// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include <unicode/uchar.h>

#include "kvbase/platform/linux/small_buffer.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

// The upper case of one unit, as names are compared in it.
inline wchar upperCased(wchar unit) {
  if (unit < 0x80) return unit >= 'a' && unit <= 'z' ? static_cast<wchar>(unit - 0x20) : unit;
  return static_cast<wchar>(u_toupper(unit));
}

// A search pattern for names, without case:
//   *    any units, or none
//   ?    one unit; nothing at the end of a name or before its last dot
//   *.*  every name, as * is
//
//   "scan??.dat" matches scan01.dat, Scan1.DAT and scan.dat, not scan001.dat
class Wildcard {
 public:
  Wildcard(wchar const* pattern, std::size_t size);

  bool matchesEverything() const { return matchesEverything_; }
  // Needs time in proportion to the name, times the text between two asterisks at worst.
  bool matches(wchar const* name, std::size_t size) const;

 private:
  SmallBuffer<wchar, 128> pattern_;  // in upper case
  bool matchesEverything_;
};

}  // namespace platform
}  // namespace KV_1_1
