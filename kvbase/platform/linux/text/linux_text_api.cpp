// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

#include <unicode/uchar.h>

#include "kvbase/platform/linux/text/wide_print.h"

namespace KV_1_1 {
namespace platform {

int NativeText::print(wchar* out, std::size_t capacity, wchar const* format, va_list arguments) {
  return widePrint(out, capacity, format, arguments);
}

unsigned int NativeText::classesOf(wchar unit) {
  bool const isSuperscriptDigit = unit == 0xB2 || unit == 0xB3 || unit == 0xB9;
  constexpr wchar kSoftHyphen = 0xAD;
  unsigned const category = U_MASK(u_charType(unit));
  return ((category & (U_GC_L_MASK | U_GC_NL_MASK)) != 0 ? kAlpha : 0u) |
         ((category & U_GC_ND_MASK) != 0 || isSuperscriptDigit ? kDigit : 0u) | (u_isUWhiteSpace(unit) ? kSpace : 0u) |
         (u_isgraph(unit) || unit == kSoftHyphen ? kGraphic : 0u);
}

}  // namespace platform
}  // namespace KV_1_1
