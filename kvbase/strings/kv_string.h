// SPDX-License-Identifier: MIT
//
// The text of the library: a handle of one pointer to a shared payload (string_val.h), used like a value.
//
//   String name(KVW("scan001"));
//   String copy = name;                     // one atomic increment, no text copied
//   name[4] = KVW('9');                     // name gets a payload of its own; copy still reads "scan001"
//   String file = name + KVW(".dat");       // one new payload of exact size
//
// NIL and EMPTY. A String without payload is NIL: there is no text. An empty text is something else, and operations keep
// the two apart. String::NIL and String::EMPTY are the constants; an empty text built by a constructor has a payload of
// its own and behaves like EMPTY. Each operation says below what it makes of NIL.
//
// Length and NUL. A length counts 16-bit units. Nearly every reading operation works on the text up to its first NUL; the
// length may count inner NULs that a constructor was given. Where a size goes with a text pointer, the rule is:
//   -1           the text is measured up to its first NUL
//   0            no units
//   1 and more   that many units; if the last of them is a NUL, it is dropped, so that a counted terminator is no text
// REQUIRES: no other negative size.
//
// Thread rule: Strings that share a payload may be copied and dropped on any threads. One String object belongs to one
// thread while any thread changes it. Even const reads may store a newly measured length in the shared payload.
// Failure: std::bad_alloc when memory is exhausted; the receiver then keeps its old value.
#pragma once

#include <type_traits>
#include <utility>

#include "kvbase/export.h"
#include "kvbase/strings/code_page.h"
#include "kvbase/strings/string_buffer.h"
#include "kvbase/strings/string_val.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {

class KVBASE_API String {
 public:
  // No string.
  static String const NIL;
  // The shared empty text.
  static String const EMPTY;
  // What operator[] on NIL refers to: writable, 7 until somebody writes to it.
  static wchar outOfRange;

  // NIL.
  constexpr String() noexcept : payload_(nullptr) {}
  // Shares the payload; NIL stays NIL.
  String(String const& other) noexcept : payload_(other.payload_) { acquire(); }
  // Takes the payload over; `other` becomes NIL.
  String(String&& other) noexcept : payload_(std::exchange(other.payload_, nullptr)) {}
  // Null gives NIL; otherwise a new payload with the units up to the first NUL.
  String(wchar const* text);
  // Null gives NIL; otherwise a new payload by the rule for sizes.
  String(wchar const* text, int size);
  // A new payload with `count` copies of the unit. The length is measured later, so copies of NUL give length 0.
  // REQUIRES: count is not negative.
  String(wchar ch, int count);
  // The narrow text decoded with its code page. A null text gives NIL, and so does one that cannot be converted.
  String(CodePageInterface text);
  ~String() {
    if (payload_ != nullptr) payload_->unref();
  }

  // Nothing if both hold the same payload; otherwise the new one is taken before the old one is released.
  String& operator=(String const& other) noexcept {
    if (payload_ != other.payload_) String(other).swap(*this);
    return *this;
  }
  String& operator=(String&& other) noexcept {
    String(std::move(other)).swap(*this);
    return *this;
  }

  // --- Units ---------------------------------------------------------------------------------------------------------

  // The place of a unit, for writing: the String stops sharing and its length is measured anew when next asked for. A NUL
  // written ends the text there. NIL gives outOfRange, whatever the index; nothing else is checked.
  // REQUIRES: the index lies in the text or at its terminator.
  wchar& operator[](int index);
  // The length in units; 0 for NIL.
  int length() const { return payload_ != nullptr ? payload_->length() : 0; }
  // The text; an empty text for NIL, never null. Valid until this String changes.
  operator wchar const*() const { return payload_ != nullptr ? payload_->stringValue() : emptyText(); }
  // A String is no truth value: NIL and EMPTY would both be true through the pointer. Ask for length() or compare to NIL.
  explicit operator bool() const = delete;

  // The text in the ANSI code page and in UTF-8, converted once and cached in the payload; null for NIL, an empty text
  // if the conversion fails. Valid until the payload goes or is written to.
  char const* stringAnsi() const;
  char const* stringUTF8() const;
  // The text for calls that take a path: the wide text itself, an empty text for NIL.
  wchar const* stringPath() const { return *this; }

  // An array through which an outside call fills this String (string_buffer.h). With `keep` it starts with the present
  // text and has room for it at least.
  // REQUIRES: not NIL when an array with `keep` is taken.
  StringBuffer buffer(int size, bool keep = false);

  // Appends by building a new payload. A null text does nothing. On NIL the rule for sizes holds; on any other String -1
  // measures and other sizes are taken as they stand, a counted terminator included. That is meant to stay so.
  void write(wchar const* text, int size);

  // --- Comparison ----------------------------------------------------------------------------------------------------
  // Unit by unit as unsigned values, up to the first difference or the first NUL. NIL stands before every text, the empty
  // one included, and equals only NIL (or a null pointer).

  // -1, 0 or 1.
  int compare(String const& other) const;
  int compare(wchar const* text) const;
  int compare(wchar const* text) { return static_cast<String const*>(this)->compare(text); }
  // Against the text of one unit; NUL is the empty text. NIL gives -1.
  int compare(wchar ch) const;
  // The same text? Unlike compare, two known lengths that differ are unequal without a look at the units, so a text with
  // an inner NUL equals no shorter one.
  bool compareEquality(String const& other) const {
    if (payload_ == other.payload_) return true;
    if (payload_ == nullptr || other.payload_ == nullptr) return false;
    // Most texts that differ do so in length or in their first unit.
    int const length = payload_->lazyLength();
    int const otherLength = other.payload_->lazyLength();
    if (length != otherLength && length >= 0 && otherLength >= 0) return false;
    if (payload_->at(0) != other.payload_->at(0)) return false;
    return equalsUnits(other);
  }

  // On a String that may change, these two forms also merge: if the texts are equal, this String shares the payload of
  // `other` from then on.
  // REQUIRES: not both NIL.
  int compare(String const& other);
  bool compareEquality(String const& other);

  // Negative, 0 or positive, with A to Z taken as a to z and nothing else folded. The lower-case forms are compared, so
  // "_" stands before "A".
  int compareIgnoreCase(String const& other) const;
  int compareIgnoreCase(wchar const* text) const;
  // Against the text of one unit. NIL gives -1.
  int compareIgnoreCase(wchar ch) const;

  // --- Cutting and testing -------------------------------------------------------------------------------------------

  // The units from `start` up to, but not including, the position `end`. A start below 0 is 0, one behind the end is the
  // length; an end below 0 or behind the end is the length. EMPTY if nothing remains, for NIL too; shares this payload if
  // all of it remains.
  //   "abc".substr(1, 2)  => "b"      "abc".substr(1, -1) => "bc"
  //   "abc".substr(2, 1)  => EMPTY    NIL.substr(0, -1)   => EMPTY
  String substr(int start, int end = -1) const;
  // Without leading and trailing white space (isspace). NIL stays NIL; with nothing to cut the payload is shared; with
  // everything cut, from either side, the result is EMPTY.
  //   " a b ".trim(true, true) => "a b"      "  ".trim(true, false) => EMPTY
  String trim(bool left = true, bool right = true) const;
  // True for an empty or NIL prefix, on NIL too.
  bool startsWith(String const& prefix) const;
  // False for an empty or NIL suffix, the reverse of startsWith. That is meant to stay so.
  bool endsWith(String const& suffix) const { return endsWith(suffix, false); }
  bool endsWith(String const& suffix, bool ignoreCase) const;

  // --- Search --------------------------------------------------------------------------------------------------------
  // Positions count units from the start of the text; -1 is not found. Text searches are case-sensitive and end at the
  // first NUL behind `from`. Every search gives -1 for NIL, for a negative `from` and for one not below the length.

  // First occurrence at or behind `from`; -1 for a null or empty text.
  int find(wchar const* text, int from = 0) const;
  // First such unit at or behind `from`; a NUL finds the terminator.
  int find(wchar ch, int from = 0) const;
  // Last occurrence, overlapping ones counted: "aa" in "aaa" => 1. -1 for a null or empty text.
  // REQUIRES: this String is not NIL, unlike the other searches.
  int findLastOf(wchar const* text) const;
  // Last such unit from `from` to the end: `from` is where the searched range starts. A NUL finds the terminator.
  int findLastOf(wchar ch, int from = 0) const;

  // First unit of a class at or behind `from`. These go by the length: inner NULs do not end them.
  // A letter; no letter.
  int findAlpha(int from = 0) const;
  int findNonAlpha(int from = 0) const;
  // A letter, a digit or one of + - . (so the start of a number counts as of a word); none of these.
  int findAlphaNum(int from = 0) const;
  int findNonAlphaNum(int from = 0) const;
  // A digit other than `except`; NUL excepts nothing.
  int findDigit(int from = 0, wchar except = 0) const;
  int findNonDigit(int from = 0) const;
  // A digit or minus, plus does not count; neither.
  int findSignedDigit(int from = 0) const;
  int findNonSignedDigit(int from = 0) const;
  // A digit or one of + - . E e.
  int findNumeric(int from = 0) const;
  // A unit that is not graphic, control units included (trim goes by isspace instead); a graphic unit.
  int findWS(int from = 0) const;
  int findNonWS(int from = 0) const;

  // --- Replacement ---------------------------------------------------------------------------------------------------
  // The result is the number of replacements.

  // Overwrites units in place up to the first NUL, after unsharing. NIL and an empty text: 0. A NUL `from` matches
  // nothing; a NUL `to` ends the text at its first place, though all matches count. Equal units count too.
  int replace(wchar from, wchar to);
  // Replaces from left to right without overlap; what was put in is not searched again. A null or empty `from` changes
  // nothing; a null `to` deletes. Without a match the payload stays as it is, shared or not; but NIL becomes EMPTY, and
  // an emptied text becomes EMPTY, with a non-empty `from`. That NIL becomes a string is meant to stay so.
  //   "aaa".replace("aa", "b") => 1, "ba"      "aba".replace("a", "aa") => 2, "aabaa"
  int replace(wchar const* from, wchar const* to);
  // REQUIRES (both): `from` is not NIL. A NIL `to` deletes.
  int replace(String const& from, String const& to);
  int replace(String const& from, wchar const* to);
  int replace(wchar const* from, String const& to);

  // --- Printf --------------------------------------------------------------------------------------------------------

  // Replaces the text by the formatted one, of at most 32768 units; what is longer is cut there. NIL becomes a string. A
  // String argument is printed by %ls, NIL as an empty text; the receiver may be an argument. An `l` in a format means 32
  // bits on every system, `ll` and `I64` 64. With a faulty format the text is what was printed before the fault. The
  // formatted text is put in place by a StringBuffer: memory exhausted at that point ends the process.
  //   message.printf(KVW("%ls: %08x"), name, 255)  => "scan001: 000000ff"
  template <class... Arguments>
  void printf(wchar const* format, Arguments const&... arguments) {
    static_assert((isPrintable<Arguments>() && ...), "printf takes numbers, Strings and texts of wchar or char");
    printf_apply(format, printfArgument(arguments)...);
  }

 private:
  friend class StringBuffer;
  friend class TextBuilder;
  friend KVBASE_API String operator+(String const& a, String const& b);
  friend KVBASE_API String operator+(String const& a, wchar const* b);
  friend KVBASE_API String operator+(wchar const* a, String const& b);

  // Takes over the reference that the caller owns; null gives NIL.
  static String adopt(StringVal* payload) noexcept {
    String string;
    string.payload_ = payload;
    return string;
  }

  void acquire() noexcept {
    if (payload_ != nullptr) payload_->ref();
  }
  void swap(String& other) noexcept { std::swap(payload_, other.payload_); }

  // Gives this String a payload of its own if it shares one.
  void unshare();
  // Shares the payload of `other`.
  // REQUIRES: neither is NIL.
  void takeOverDataFrom(String const& other);
  void printf_apply(wchar const* format, ...);

  static wchar const* emptyText();
  // How far the text reaches: an index that holds a NUL, and behind which nothing is read. Stores nothing.
  // REQUIRES (both): this String and `other` are not NIL.
  int textLength() const;
  bool equalsUnits(String const& other) const;
  template <class Accept>
  int findClass(int from, Accept accept) const;

  template <class Argument>
  static constexpr bool isPrintable() {
    using Plain = std::decay_t<Argument>;
    using Target = std::remove_cv_t<std::remove_pointer_t<Plain>>;
    return std::is_same<Plain, String>::value || std::is_arithmetic<Plain>::value || std::is_enum<Plain>::value ||
           (std::is_pointer<Plain>::value && (std::is_same<Target, wchar>::value || std::is_same<Target, char>::value ||
                                              std::is_same<Target, void>::value));
  }
  template <class Argument>
  static Argument const& printfArgument(Argument const& argument) {
    return argument;
  }
  static wchar const* printfArgument(String const& argument) { return argument; }

  StringVal* payload_;
};

static_assert(sizeof(String) == sizeof(void*), "a String is one pointer");

// Concatenation: a new payload of exact size. A NIL or null partner gives a share of the other one.
KVBASE_API String operator+(String const& a, String const& b);
KVBASE_API String operator+(String const& a, wchar const* b);
KVBASE_API String operator+(wchar const* a, String const& b);
// The unit is a text of one unit, NUL the empty text; so the result is never NIL.
KVBASE_API String operator+(String const& a, wchar b);
KVBASE_API String operator+(wchar a, String const& b);

// The rules of the const compareEquality and compare, with a null text for NIL.
inline bool operator==(String const& a, String const& b) {
  return a.compareEquality(b);
}
inline bool operator!=(String const& a, String const& b) {
  return !a.compareEquality(b);
}
inline bool operator<(String const& a, String const& b) {
  return a.compare(b) < 0;
}
inline bool operator>(String const& a, String const& b) {
  return a.compare(b) > 0;
}
inline bool operator<=(String const& a, String const& b) {
  return a.compare(b) <= 0;
}
inline bool operator>=(String const& a, String const& b) {
  return a.compare(b) >= 0;
}
inline bool operator==(String const& a, wchar const* b) {
  return a.compare(b) == 0;
}
inline bool operator!=(String const& a, wchar const* b) {
  return a.compare(b) != 0;
}
inline bool operator==(wchar const* a, String const& b) {
  return b.compare(a) == 0;
}
inline bool operator!=(wchar const* a, String const& b) {
  return b.compare(a) != 0;
}

}  // namespace KV_1_1
