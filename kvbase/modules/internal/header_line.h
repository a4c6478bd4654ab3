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

// Converts lines from the ANSI code page, which is that of the decoder's construction.
class LineDecoder {
 public:
  // Lines have fewer bytes.
  static constexpr int kLimit = 255;

  LineDecoder();
  LineDecoder(LineDecoder const&) = delete;
  LineDecoder& operator=(LineDecoder const&) = delete;

  // The units of a line of `size` bytes, none of them NUL; valid until the next call. No units if it cannot be converted,
  // or if it cannot be a definition.
  // REQUIRES: size is below kLimit.
  TextView decode(char const* bytes, int size);

 private:
  bool isUtf8_;
  bool isTransparent_;
  wchar units_[kLimit];
  String converted_;
};

}  // namespace KV_1_1
