// SPDX-License-Identifier: MIT
//
// The seam to what a system knows about text: code pages, the printf of 16-bit text, and the classes of characters
// beyond ASCII. UTF-8 is not here, because the library converts it itself; narrow_text.h converts by any code page.
//
// Thread rule: any method may be called from any thread.
#pragma once

#include <cstdarg>
#include <cstddef>

#include "kvbase/platform/backend.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

// Classes of characters, as bits; those of the isw... functions of the C runtime in its "C" locale.
enum CharacterClass : unsigned {
  kAlpha = 0x1,
  kDigit = 0x2,
  kSpace = 0x4,
  kGraphic = 0x8,
};

class TextApi {
 public:
  // The code page that the number 0 stands for, one setting for the whole process. On Linux 65001, unless the
  // environment variable KVBASE_ANSI_CODEPAGE named another at the first call.
  virtual unsigned int ansiCodePage() = 0;

  // Decodes `size` bytes of a code page other than UTF-8 into units. With `capacity` 0 nothing is written and the
  // result is the number of units needed; otherwise it is the number of units written. 0 on failure: no bytes, an
  // unknown code page, too little room. Invalid bytes are replaced.
  virtual int decode(unsigned int codePage, char const* bytes, int size, wchar* units, int capacity) = 0;

  // Encodes `size` units as bytes of a code page other than UTF-8. Characters that the code page does not have become
  // ones that look alike, if the system knows any, or else its default character, as a rule "?". The results are those of
  // decode, in bytes.
  virtual int encode(unsigned int codePage, wchar const* units, int size, char* bytes, int capacity) = 0;

  // Prints at most `capacity` units to `out`: %ls, %s and %S as in the wide printf of Windows (%ls and %s take 16-bit
  // text, %hs and %S narrow text), `l` of an integer is 32 bits, `L` of a float is a double. A terminator is written only
  // if there is room for it. Returns the number of units without terminator, or -1 if the text was cut or the format is
  // wrong; what had been written by then stays, with the terminator. (For a wrong format the runtime of Windows first calls
  // its handler of invalid parameters, which by default ends the process.)
  virtual int print(wchar* out, std::size_t capacity, wchar const* format, va_list arguments) = 0;

  // The classes of a unit beyond ASCII, as a combination of CharacterClass bits.
  virtual unsigned int classesOf(wchar unit) = 0;

 protected:
  // Backends are never destroyed through this interface.
  ~TextApi() = default;
};

}  // namespace platform
}  // namespace KV_1_1
