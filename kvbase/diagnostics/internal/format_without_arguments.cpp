// SPDX-License-Identifier: MIT
#include "kvbase/diagnostics/internal/format_without_arguments.h"

#include <cstring>

namespace KV_1_1 {
namespace diagnostics {

namespace {

constexpr char kFlags[] = "-+ #0";
constexpr char kDigits[] = "0123456789";
constexpr char kConversions[] = "diouxXcCsSpnaAeEfFgGZ";
// Those of Windows, too; a longer one stands before its beginning.
constexpr char const* kLengths[] = {"hh", "h", "ll", "l", "j", "z", "t", "L", "w", "I64", "I32", "I"};

char const* skipNumber(char const* text) {
  return *text == '*' ? text + 1 : text + std::strspn(text, kDigits);
}

char const* skipLength(char const* text) {
  for (char const* length : kLengths) {
    std::size_t const size = std::strlen(length);
    if (std::strncmp(text, length, size) == 0) return text + size;
  }
  return text;
}

// Behind the directive whose percent sign stands before the text; null if it is none.
char const* skipDirective(char const* text) {
  text += std::strspn(text, kFlags);
  text = skipNumber(text);
  if (*text == '.') text = skipNumber(text + 1);
  text = skipLength(text);
  // strchr would find the terminator, too.
  return *text != '\0' && std::strchr(kConversions, *text) != nullptr ? text + 1 : nullptr;
}

}  // namespace

std::string formatWithoutArguments(char const* format) {
  std::string text;
  while (char const* const percent = std::strchr(format, '%')) {
    text.append(format, percent);
    format = percent + 1;
    if (char const* const end = skipDirective(format)) {
      format = end;
      continue;
    }
    text += '%';
    if (*format == '%') ++format;
  }
  return text += format;
}

}  // namespace diagnostics
}  // namespace KV_1_1
