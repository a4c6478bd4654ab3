// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include <unicode/uchar.h>

#include "kvbase/platform/linux/small_buffer.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

// The upper case of one unit. Names are compared in upper case.
inline wchar upperCased(wchar unit) {
  if (unit < 0x80) return unit >= 'a' && unit <= 'z' ? static_cast<wchar>(unit - 0x20) : unit;
  return static_cast<wchar>(u_toupper(unit));
}

// A search pattern for names, which ignores case:
//   *    any number of units
//   ?    one unit; COMPAT: also none at the end of a name or before its last dot
//   *.*  COMPAT: every name, with or without a dot
//
//   "scan??.dat" matches scan01.dat, Scan1.DAT and scan.dat, not scan001.dat
class Wildcard {
 public:
  Wildcard(wchar const* pattern, std::size_t size);

  // Takes time proportional to the length of the name; in the worst case times the longest text between two asterisks.
  bool matches(wchar const* name, std::size_t size) const;

 private:
  SmallBuffer<wchar, 128> pattern_;  // in upper case
  bool matchesEverything_;
};

}  // namespace platform
}  // namespace KV_1_1
