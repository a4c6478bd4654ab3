// SPDX-License-Identifier: MIT
//
// printf of 16-bit text; the contract is that of TextApi::print.
//
//   %[flags][width][.precision][size]conversion
//   flags        - + blank # 0              width, precision   a number or *
//   conversion   d i u o x X   integers:    hh h l (32 bits) ll I64 I32 I z j t
//                e E f F g G a A            L for the same
//                c s                        16-bit; narrow with h
//                C S                        narrow; 16-bit with l or w
//                p                          16 upper-case digits
//                %                          the sign itself
// Narrow text is decoded by code page 0. Any other conversion, also %n, is a wrong format.
//
// COMPAT: as in the runtime of Windows, L means a double too, and the default NaN is printed as nan(ind).
#pragma once

#include <cstdarg>
#include <cstddef>

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

int widePrint(wchar* out, std::size_t capacity, wchar const* format, va_list arguments);

}  // namespace platform
}  // namespace KV_1_1
