// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/core/interlocked_counter.h"
#include "kvbase/export.h"
#include "kvbase/strings/code_page.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {

// The payload behind a String: one block from malloc that holds a reference count, the length, two cached narrow copies
// and the units with their terminator. Users of the library work with String; this class is for code that builds
// payloads itself.
//
// The block has room for 8 units at least, and those behind a shorter text are defined, so that a comparison may read the
// first vector of any payload.
// Length: -1 while it is not known, because units may have been written; then the narrow copies are stale too. Apart
// from counted narrow text (see construct) a payload of known length has its terminator at that index. Units behind an
// inner NUL count towards the length, but the NUL ends the text for nearly every reader.
// Capacity: it is not stored, and a payload never grows; a caller who reserves more room than the length must fill it at
// once.
// Ownership: who gets a payload from construct, constructUsingCodepage or concatenation owns one reference.
// Thread rule: the count is atomic. A payload may be read on several threads while its length is known and none of them
// asks for a narrow copy for the first time. A payload with more than one owner is not written to.
// Failure: std::bad_alloc when memory is exhausted or a text would be longer than INT_MAX units, with nothing left
// allocated.
class KVBASE_API StringVal {
 public:
  // A payload of `length` units of the text; -1 measures up to the first NUL. A length of 1 or more whose last unit is
  // a NUL is taken one less, so a count that includes the terminator gives the same text.
  //   "ab\0", 3   => length 2
  //   "a\0\0", 3  => length 2, the inner NUL counted as text
  // The capacity counts units without terminator; -1 stands for the length.
  // REQUIRES: text is not null; capacity is -1 or not below the length; length is not below -1.
  static StringVal* construct(wchar const* text, int length, int capacity);

  // The same from narrow text in the process's ANSI code page; `length` counts bytes. Null if nothing can be converted:
  // for a length of 0, but not for an empty text with -1, which gives an empty payload.
  // COMPAT: with a length of 1 or more whose bytes do not map one to one to units (double-byte text), the length comes
  // out one short and the last unit lies behind it, where the narrow copies still have it. Pass -1 for exact lengths.
  static StringVal* construct(char const* text, int length, int capacity);
  // The same in the given code page; null also for a null text and for a code page that the system does not have.
  static StringVal* constructUsingCodepage(CodePageInterface text, int length, int capacity);

  // A new payload of exact size with this text and `length` units of the other behind it; -1 measures. This payload is
  // unchanged.
  // COMPAT: other lengths are taken as they are, so a counted terminator becomes text.
  StringVal* concatenation(wchar const* text, int length) const;

  // The length in units; measured, stored and the narrow copies dropped if it was not known.
  int length() const { return length_ != kUnknown ? length_ : measure(); }
  // The stored length, -1 if it is not known.
  int lazyLength() const { return length_; }
  // The number of owners, out of date as soon as it is read.
  unsigned int inqRefCount() const { return references_; }

  void ref() { ++references_; }
  // Gives a reference back; true if that destroyed the payload.
  bool unref() {
    if (references_-- != 1) return false;
    destruct(this);
    return true;
  }

  // Reverses the text in place; the length becomes unknown unless it is 0 or 1.
  // REQUIRES: the payload has one owner.
  void reverse();

  // The unit at an index.
  // REQUIRES (both): the index lies in the text or at its terminator.
  wchar at(int index) const { return str()[index]; }
  // The place of the unit; the length is unknown from then on, whether or not the caller writes.
  wchar& operator[](int index) {
    length_ = kUnknown;
    return str()[index];
  }
  wchar const* stringValue() const { return str(); }

  // The text in the ANSI code page and in UTF-8, converted once and cached; an empty narrow text where the text is
  // empty or cannot be converted, never null. Valid until the payload is destroyed or its length measured anew.
  // Characters that the code page does not have are replaced, see platform::TextApi::encode.
  char const* stringAnsi() const { return isCached(kAnsi) ? narrow_[kAnsi] : narrow(kAnsi); }
  char const* stringUTF8() const { return isCached(kUtf8) ? narrow_[kUtf8] : narrow(kUtf8); }
  // COMPAT: the same as stringAnsi, while String::stringPath is the wide text.
  char const* stringPath() const { return stringAnsi(); }

 private:
  friend class String;
  friend class TextBuilder;

  enum NarrowCopy { kAnsi = 0, kUtf8 = 1 };
  static constexpr int kUnknown = -1;

  StringVal(wchar const* text, int length, int capacity);
  ~StringVal();

  // An empty payload with room for `capacity` units and a terminator; std::bad_alloc beyond INT_MAX units.
  static StringVal* allocate(long long capacity);
  static StringVal* construct(void* place, wchar const* text, int length, int capacity);
  static StringVal* decode(CodePageInterface text, int length, int capacity);
  static void destruct(StringVal* payload);

  wchar* str() { return reinterpret_cast<wchar*>(this + 1); }
  wchar const* str() const { return reinterpret_cast<wchar const*>(this + 1); }
  int measure() const;
  void dropNarrowCopies() const;
  bool isCached(NarrowCopy which) const { return narrow_[which] != nullptr && length_ != kUnknown && *str() != 0; }
  char const* narrow(NarrowCopy which) const;
  char* newNarrow(NarrowCopy which) const;
  // Part of the compiled interface; does nothing.
  void validityCheck(unsigned int) const;

  InterlockedCounter references_;
  mutable int length_;
  mutable char* narrow_[2];
};

static_assert(sizeof(StringVal) == 24, "the units stand directly behind a header of 24 bytes");

}  // namespace KV_1_1
