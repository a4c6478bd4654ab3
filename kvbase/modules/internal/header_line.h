// SPDX-License-Identifier: MIT
//
// Lines of a header of symbols: from bytes to units, and from units to what the line says. SymbolTable tells what the
// format is.
#pragma once

#include "kvbase/strings/internal/text_view.h"
#include "kvbase/strings/kv_string.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {

struct HeaderLine {
  enum Kind {
    kNothing,    // no definition
    kFaulty,     // no definition, but a fault
    kNumber,     // `name` is `number`
    kReference,  // `name` has the number of `token`
  };

  Kind kind = kNothing;
  // Parts of the line.
  TextView name;
  TextView token;
  unsigned int number = 0;
};

// Reads whatever does not depend on other lines.
// REQUIRES: the line holds no NUL.
HeaderLine readHeaderLine(TextView line);

// Reads lines in the ANSI code page, which is that of the reader's construction.
class LineReader {
 public:
  // Lines have fewer bytes.
  static constexpr int kLimit = 255;

  LineReader();
  LineReader(LineReader const&) = delete;
  LineReader& operator=(LineReader const&) = delete;

  // What readHeaderLine makes of a line of `size` bytes, none of them NUL but the one behind them; valid until the next
  // call. A line that cannot be converted is empty.
  // REQUIRES: size is below kLimit.
  HeaderLine read(char const* bytes, int size);

 private:
  bool readPlain(char const* bytes, int size, HeaderLine& line);
  TextView decode(char const* bytes, int size);

  bool isUtf8_;
  bool isTransparent_;
  wchar units_[kLimit];
  String converted_;
};

}  // namespace KV_1_1
