// SPDX-License-Identifier: MIT
#pragma once

#include <cstdarg>

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

// How an argument is passed.
enum class Size { kDefault, kChar, kShort, kLong, kLongLong, kLongDouble, kWide };

constexpr int kNoPrecision = -1;

// One conversion specification; the width is not negative.
struct Spec {
  bool left = false, plus = false, blank = false, alternate = false, zero = false;
  int width = 0;
  int precision = kNoPrecision;
  Size size = Size::kDefault;
  wchar conversion = 0;
};

// A va_list that can be handed on by reference whatever type it is.
struct Arguments {
  va_list list;
};

// Reads the conversion behind a per cent sign, asterisks from the arguments, and moves `format` behind it. False if it
// ends too early or has a number beyond an int; whether there is such a conversion is not asked.
bool parseSpec(wchar const*& format, Arguments& arguments, Spec& spec);

}  // namespace platform
}  // namespace KV_1_1
