// SPDX-License-Identifier: MIT
//
// A text backend for tests that sets the ANSI code page and makes conversions fail on request. Everything else is
// forwarded to the native backend.
//
//   ScriptedText text;
//   text.ansi = 932;       // what code page 0 means
//   text.failAt = 2;       // the second call of decode, encode or print fails
//   platform::ScopedBackend<platform::TextApi> scope(text);
#pragma once

#include "kvbase/platform/text_api.h"

namespace KV_1_1 {
namespace testing {

class ScriptedText final : public platform::TextApi {
 public:
  unsigned int ansi = platform::nativeText().ansiCodePage();
  int failAt = 0;  // counted from 1; 0: none fails
  int calls = 0;   // calls of decode, encode and print so far

  unsigned int ansiCodePage() override { return ansi; }
  int decode(unsigned int codePage, char const* bytes, int size, wchar* units, int capacity) override {
    return fails() ? 0 : platform::nativeText().decode(pageOf(codePage), bytes, size, units, capacity);
  }
  int encode(unsigned int codePage, wchar const* units, int size, char* bytes, int capacity) override {
    return fails() ? 0 : platform::nativeText().encode(pageOf(codePage), units, size, bytes, capacity);
  }
  int print(wchar* out, std::size_t capacity, wchar const* format, va_list arguments) override {
    return fails() ? -1 : platform::nativeText().print(out, capacity, format, arguments);
  }
  unsigned int classesOf(wchar unit) override { return platform::nativeText().classesOf(unit); }

 private:
  bool fails() { return ++calls == failAt; }
  unsigned int pageOf(unsigned int codePage) const { return codePage == 0 ? ansi : codePage; }
};

}  // namespace testing
}  // namespace KV_1_1
