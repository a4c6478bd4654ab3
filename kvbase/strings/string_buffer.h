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
// The String is left alone until the end of the buffer, which then replaces its text by what the array holds up to its
// first NUL: a wide array as it stands, a narrow one decoded in the ANSI code page (a failed conversion gives NIL). An
// array to which nothing was written gives an empty text, not NIL. Without an array nothing happens.
//
// Lifetime: an array lives until the next conversion or the end of the buffer; the String must outlive the buffer.
// Thread rule: buffer and String belong to one thread until the end of the buffer.
// Failure: std::bad_alloc from a conversion, the earlier array being gone by then. Memory exhausted at the end of the
// buffer ends the process.
class KVBASE_API StringBuffer {
 public:
  // The copy is for the same String, with the same size, and has no array of its own: it changes the String only if an
  // array is taken from the copy.
  StringBuffer(StringBuffer const& other);
  StringBuffer& operator=(StringBuffer const&) = delete;
  ~StringBuffer();

  // A new array of size + 1 units or chars, with a NUL at its first and last place; the others are not set. An earlier
  // array is freed, with what was written to it. With `keep` it starts with the String's present text; narrow text must
  // then fit into the size, which counts units.
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
