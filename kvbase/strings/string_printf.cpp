// SPDX-License-Identifier: MIT
#include <cstdarg>

#include "kvbase/platform/text_api.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

namespace {

// The limit of a formatted text. Printing into an array of that size costs less than formatting twice.
constexpr int kPrintLimit = 32768;

}  // namespace

void String::printf_apply(wchar const* format, ...) {
  StringBuffer buffer(*this, kPrintLimit, false);
  wchar* const text = buffer;
  va_list arguments;
  va_start(arguments, format);
  // The result does not matter: what was printed before a fault stays, and the array's last NUL ends a text that was cut.
  platform::text().print(text, kPrintLimit, format, arguments);
  va_end(arguments);
}

}  // namespace KV_1_1
