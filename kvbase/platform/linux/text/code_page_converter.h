// SPDX-License-Identifier: MIT
#pragma once

#include <unicode/ucnv.h>

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

// The conversion of one code page of Windows by ICU: it knows every page that ICU has a table for. Opening a converter
// takes some microseconds.
//
// Thread rule: one thread at a time.
class CodePageConverter {
 public:
  // Not open if ICU does not have the code page, or it is a form of UTF-16, which is no narrow text.
  explicit CodePageConverter(unsigned int codePage);
  ~CodePageConverter() { ucnv_close(converter_); }
  CodePageConverter(CodePageConverter const&) = delete;
  CodePageConverter& operator=(CodePageConverter const&) = delete;

  bool isOpen() const { return converter_ != nullptr; }
  // Whether each character of the page is one byte, whatever stands before it.
  bool isOneByte() const;

  // The contracts of TextApi::decode and encode.
  // REQUIRES (both): the converter is open, the size is at least 1 and the capacity is not negative.
  int decode(char const* bytes, int size, wchar* units, int capacity);
  int encode(wchar const* units, int size, char* bytes, int capacity);

 private:
  UConverter* converter_;
  bool rotatesControls_ = false;
};

}  // namespace platform
}  // namespace KV_1_1
