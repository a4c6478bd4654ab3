// SPDX-License-Identifier: MIT
//
// Which types String::printf takes, and in what form they reach the format. Installed, since printf is a template.
#pragma once

#include <type_traits>

#include "kvbase/text_unit.h"

namespace KV_1_1 {

class String;

namespace strings {

template <class Argument>
constexpr bool isPrintable() {
  using Plain = std::decay_t<Argument>;
  using Target = std::remove_cv_t<std::remove_pointer_t<Plain>>;
  return std::is_same<Plain, String>::value || std::is_arithmetic<Plain>::value || std::is_enum<Plain>::value ||
         (std::is_pointer<Plain>::value && (std::is_same<Target, wchar>::value || std::is_same<Target, char>::value ||
                                            std::is_same<Target, void>::value));
}

// A String as its text, an empty one for NIL; a long double as a double, which is what %Lf means to the runtime of Windows,
// whatever the compiler makes of the type; everything else as it is.
template <class Argument>
decltype(auto) printfArgument(Argument const& argument) {
  if constexpr (std::is_same<Argument, String>::value) {
    return static_cast<wchar const*>(argument);
  } else if constexpr (std::is_same<Argument, long double>::value) {
    return static_cast<double>(argument);
  } else {
    return (argument);
  }
}

}  // namespace strings
}  // namespace KV_1_1
