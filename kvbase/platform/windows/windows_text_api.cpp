// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

#include <stdio.h>
#include <wchar.h>
#include <wctype.h>

#include "kvbase/platform/types.h"

namespace KV_1_1 {
namespace platform {

unsigned int NativeText::ansiCodePage() {
  return GetACP();
}

int NativeText::decode(unsigned int codePage, char const* bytes, int size, wchar* units, int capacity) {
  return MultiByteToWideChar(codePage, 0, bytes, size, units, capacity);
}

int NativeText::encode(unsigned int codePage, wchar const* units, int size, char* bytes, int capacity) {
  return WideCharToMultiByte(codePage, 0, units, size, bytes, capacity, nullptr, nullptr);
}

// Of the runtime's print functions, this is the one that writes a terminator only if there is room for it.
int NativeText::print(wchar* out, std::size_t capacity, wchar const* format, va_list arguments) {
  return _vsnwprintf(out, capacity, format, arguments);
}

unsigned int NativeText::classesOf(wchar unit) {
  return (iswalpha(unit) ? kAlpha : 0u) | (iswdigit(unit) ? kDigit : 0u) | (iswspace(unit) ? kSpace : 0u) |
         (iswgraph(unit) ? kGraphic : 0u);
}

}  // namespace platform
}  // namespace KV_1_1
