// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/platform/text_api.h"

namespace KV_1_1 {
namespace platform {

// Forwards each call to the system or its C runtime; no decisions of its own.
class WindowsTextApi final : public TextApi {
 public:
  constexpr WindowsTextApi() = default;

  unsigned int ansiCodePage() override;
  int decode(unsigned int codePage, char const* bytes, int size, wchar* units, int capacity) override;
  int encode(unsigned int codePage, wchar const* units, int size, char* bytes, int capacity) override;
  int print(wchar* out, std::size_t capacity, wchar const* format, va_list arguments) override;
  unsigned int classesOf(wchar unit) override;
};

}  // namespace platform
}  // namespace KV_1_1
