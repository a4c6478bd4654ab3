// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/export.h"

namespace KV_1_1 {

// Narrow text tagged with the code page it is in, for building a String from it:
//
//   String name(CodePageInterface(bytes, 1252));
//   String title(UTF8Interface(bytes));
//
// The text is NUL-terminated, is not owned and may be null. Code page 0 is the process's ANSI code page, 65001 is
// UTF-8.
class CodePageInterface {
 public:
  CodePageInterface(char const* text, unsigned int codePage) : codePage_(codePage), text_(text) {}

  unsigned int codePage() const { return codePage_; }
  char const* data() const { return text_; }

 private:
  unsigned int codePage_;
  char const* text_;
};

// Narrow text in UTF-8.
class UTF8Interface : public CodePageInterface {
 public:
  UTF8Interface(char const* text) : CodePageInterface(text, 65001) {}
};

}  // namespace KV_1_1
