// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/export.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {

class String;

// A scoped array through which a call that fills character arrays gives a String its new text:
//
//   String path;
//   GetModuleFileNameW(module, path.buffer(260), 260);   // path has its new text when the statement ends
//
// The String is unchanged until the buffer is destroyed. It then gets the text in the array up to the first NUL: a wide
// array as it is, a narrow one decoded in the ANSI code page (a failed conversion gives NIL). An array to which nothing
// was written gives an empty text, not NIL. Without an array nothing happens.
//
// Lifetime: an array lives until the next conversion or the destruction of the buffer; the String must outlive the
// buffer.
// Thread rule: buffer and String belong to one thread as long as the buffer lives.
// Failure: std::bad_alloc from a conversion, which has freed the earlier array by then. If memory is exhausted when the
// buffer is destroyed, the process ends.
class KVBASE_API StringBuffer {
 public:
  // The copy refers to the same String and has the same size, but no array: it changes the String only if an array is
  // taken from the copy.
  StringBuffer(StringBuffer const& other);
  StringBuffer& operator=(StringBuffer const&) = delete;
  ~StringBuffer();

  // A new array of size + 1 units or chars. Its first and last element are NUL, the others are not initialised. An
  // earlier array is freed, and what was written to it is lost. With `keep` the array starts with the String's present
  // text; of a narrow text only as much as the size, which counts units.
  // REQUIRES (both): with `keep` the String is not NIL.
  operator wchar*();
  operator char*();

 private:
  friend class String;

  StringBuffer(String& target, int size, bool keep);
  void freeArray();

  String& target_;
  void* array_ = nullptr;
  int size_;
  bool wide_ = false;
  bool keep_;
};

}  // namespace KV_1_1
