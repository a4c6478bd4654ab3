// SPDX-License-Identifier: MIT
#pragma once

#include <cstdarg>

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

// The size prefix of a conversion, which says how its argument is passed.
enum class Size { kDefault, kChar, kShort, kLong, kLongLong, kWide };

constexpr int kNoPrecision = -1;

// One conversion specification; the width is not negative.
struct Spec {
  bool left = false, plus = false, blank = false, alternate = false, zero = false;
  int width = 0;
  int precision = kNoPrecision;
  Size size = Size::kDefault;
  wchar conversion = 0;
};

// A va_list in a struct, which can be passed by reference even where va_list is an array type.
struct Arguments {
  va_list list;
};

// Parses the conversion after a per cent sign, takes the values of asterisks from the arguments, and moves `format`
// past it. False if it is incomplete or has a number that exceeds int. The conversion letter itself is not checked.
bool parseSpec(wchar const*& format, Arguments& arguments, Spec& spec);

}  // namespace platform
}  // namespace KV_1_1
