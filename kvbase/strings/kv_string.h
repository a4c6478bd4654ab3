// SPDX-License-Identifier: MIT
//
// The text of the library: a handle of one pointer to a shared payload (string_val.h), used like a value.
//
//   String name(KVW("scan001"));
//   String copy = name;                     // one atomic increment, no text copied
//   name[4] = KVW('9');                     // name gets a payload of its own; copy still reads "scan001"
//   String file = name + KVW(".dat");       // one new payload of exact size
//
// NIL and EMPTY. A String without payload is NIL: there is no text. An empty text is something else, and operations
// keep the two apart. String::NIL and String::EMPTY are the constants; an empty text built by a constructor has a
// payload of its own and behaves like EMPTY. Each operation says below what it makes of NIL.
//
// Length and NUL. A length counts units (text_unit.h). Nearly every reading operation works on the text up to its first NUL;
// the length may count inner NULs that a constructor was given. Where a size goes with a text pointer, the rule is:
//   -1           the text is measured up to its first NUL
//   0            no units
//   1 and more   that many units; if the last of them is a NUL, it is dropped, so that a counted terminator is no text
// REQUIRES: no other negative size.
//
// Thread rule: Strings that share a payload may be copied and dropped on any threads. One String object belongs to one
// thread while any thread changes it. Even const reads may store a newly measured length in the shared payload.
// Failure: std::bad_alloc when memory is exhausted or a text would be longer than INT_MAX units; the receiver then keeps
// its old value.
//
// Each section below names the source that defines it.
#pragma once

#include <iosfwd>
#include <type_traits>
#include <utility>

#include "kvbase/export.h"
#include "kvbase/strings/code_page.h"
#include "kvbase/strings/internal/printf_argument.h"
#include "kvbase/strings/string_buffer.h"
#include "kvbase/strings/string_val.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {

class Module;

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

  // The new payload is taken before the old one is released.
  String& operator=(String const& other) noexcept {
    if (payload_ != other.payload_) String(other).swap(*this);
    return *this;
  }
  String& operator=(String&& other) noexcept {
    String(std::move(other)).swap(*this);
    return *this;
  }

  // --- Units (string_value.cpp) --------------------------------------------------------------------------------------

  // The place of a unit, for writing: the String stops sharing and its length is measured anew when next asked for. A
  // NUL written ends the text there. NIL gives outOfRange, whatever the index; nothing else is checked.
  // REQUIRES: the index lies in the text or at its terminator.
  wchar& operator[](int index);
  // The length in units; 0 for NIL.
  int length() const { return payload_ != nullptr ? payload_->length() : 0; }
  // The text; an empty text for NIL, never null. Valid until this String changes.
  operator wchar const*() const { return payload_ != nullptr ? payload_->stringValue() : emptyText(); }
  // A String is no truth value: NIL and EMPTY would both be true through the pointer. Ask for length() or compare to
  // NIL.
  explicit operator bool() const = delete;

  // The text in the ANSI code page and in UTF-8, converted once and cached in the payload; null for NIL, an empty text
  // if the conversion fails. Valid until the payload goes or is written to.
  char const* stringAnsi() const { return payload_ != nullptr ? payload_->stringAnsi() : nullptr; }
  char const* stringUTF8() const { return payload_ != nullptr ? payload_->stringUTF8() : nullptr; }
  // The text for calls that take a path: the wide text itself, an empty text for NIL.
  wchar const* stringPath() const { return *this; }

  // An array through which an outside call fills this String (string_buffer.h). With `keep` it starts with the present
  // text and has room for it at least.
  // REQUIRES: without `keep` a size that is not negative; not NIL when an array with `keep` is taken.
  StringBuffer buffer(int size, bool keep = false);

  // Appends by building a new payload. A null text does nothing. On NIL the rule for sizes holds.
  // COMPAT: on any other String -1 measures and other sizes are taken as they are, a counted terminator included.
  void write(wchar const* text, int size);

  // --- Comparison (string_value.cpp) ---------------------------------------------------------------------------------
  // Unit by unit as unsigned values, up to the first difference or the first NUL. NIL stands before every text, the empty
  // one included, and equals only NIL (or a null pointer).

  // -1, 0 or 1.
  int compare(String const& other) const;
  int compare(wchar const* text) const;
  int compare(wchar const* text) { return static_cast<String const*>(this)->compare(text); }
  // Against the text of one unit; NUL is the empty text. NIL gives -1.
  int compare(wchar ch) const;
  // The same text? Unlike compare, two known lengths that differ are unequal without a look at the units, so a text
  // with an inner NUL equals no shorter one.
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

  // --- Cutting and testing (string_value.cpp) ------------------------------------------------------------------------

  // The units from `start` up to, but not including, the position `end`. A start below 0 is 0, one behind the end is
  // the length; an end below 0 or behind the end is the length. EMPTY if nothing remains, for NIL too; shares this
  // payload if all of it remains.
  //   "abc".substr(1, 2)  => "b"      "abc".substr(1, -1) => "bc"
  //   "abc".substr(2, 1)  => EMPTY    NIL.substr(0, -1)   => EMPTY
  String substr(int start, int end = -1) const;
  // Without leading and trailing white space (isspace). NIL stays NIL; with nothing to cut the payload is shared; with
  // everything cut the result is EMPTY.
  // COMPAT: only cutting from the left empties a text: of white space alone, trim(false, true) leaves the first unit.
  //   " a b ".trim(true, true) => "a b"      "  ".trim(true, false) => EMPTY
  String trim(bool left = true, bool right = true) const;
  // True for an empty or NIL prefix, on NIL too.
  bool startsWith(String const& prefix) const;
  // COMPAT: false for an empty or NIL suffix, the reverse of startsWith.
  bool endsWith(String const& suffix) const { return endsWith(suffix, false); }
  bool endsWith(String const& suffix, bool ignoreCase) const;

  // --- Search (string_search.cpp) ------------------------------------------------------------------------------------
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

  // --- Replacement (string_replace.cpp) ------------------------------------------------------------------------------
  // The result is the number of replacements.

  // Overwrites units in place up to the first NUL, after unsharing. NIL and an empty text: 0. A NUL `from` matches
  // nothing; a NUL `to` ends the text at its first place, though all matches count. Units are counted even if `from` and
  // `to` are the same.
  int replace(wchar from, wchar to);
  // Replaces from left to right without overlap; what was put in is not searched again. A null or empty `from` changes
  // nothing; a null `to` deletes. Without a match the payload stays as it is, shared or not. An empty text becomes a
  // share of EMPTY if `from` is not empty, and so does one of which nothing remains.
  // COMPAT: NIL becomes EMPTY too.
  //   "aaa".replace("aa", "b") => 1, "ba"      "aba".replace("a", "aa") => 2, "aabaa"
  int replace(wchar const* from, wchar const* to);
  // REQUIRES (both): `from` is not NIL. A NIL `to` deletes.
  int replace(String const& from, String const& to);
  int replace(String const& from, wchar const* to);
  int replace(wchar const* from, String const& to);

  // --- Values as text (string_format.cpp) ----------------------------------------------------------------------------
  // Each appends the text of a value by building a new payload; NIL becomes that text. A float or double that is not 0 has
  // as many significant digits as show a fixed number of places around its integer part; the decimal point is that of
  // the C locale.
  //   NIL << 5 << KVW("mm")     => "5mm"
  //   float:  1234.5678f        => "1234.56775"        1.5e-7f => "1.5e-07"        0.0f => "0"
  //   double: 2.0 / 3           => "0.66666667"        1e10    => "10000000000"    NaN  => "nan"     -infinity => "-inf"

  // Integers as decimal text, the char types too: 65 is "65", not a letter. On Linux a long of 64 bits is printed
  // whole.
  String& operator+=(signed char value) { return *this += static_cast<long long>(value); }
  String& operator+=(unsigned char value) { return *this += static_cast<unsigned long long>(value); }
  String& operator+=(short value) { return *this += static_cast<long long>(value); }
  String& operator+=(unsigned short value) { return *this += static_cast<unsigned long long>(value); }
  String& operator+=(int value) { return *this += static_cast<long long>(value); }
  String& operator+=(unsigned int value) { return *this += static_cast<unsigned long long>(value); }
  String& operator+=(long value) { return *this += static_cast<long long>(value); }
  String& operator+=(unsigned long value) { return *this += static_cast<unsigned long long>(value); }
  String& operator+=(long long value);
  String& operator+=(unsigned long long value);
  // "true" or "false".
  String& operator+=(bool value);
  // That unit; NUL is the empty text.
  String& operator+=(wchar value);
  // Null appends nothing and leaves NIL as NIL.
  String& operator+=(wchar const* text);
  // NIL appends nothing; on NIL the payload is shared.
  String& operator+=(String const& other);
  String& operator+=(float value);
  String& operator+=(double value);
  // Texts and units of other kinds, and pointers, would otherwise convert to an integer or bool.
  String& operator+=(char32_t) = delete;
  String& operator+=(ForeignUnit) = delete;
  template <class T, class = std::enable_if_t<!std::is_same<std::remove_const_t<T>, wchar>::value>>
  String& operator+=(T*) = delete;
  template <class T, class Class>
  String& operator+=(T Class::*) = delete;

  // The same as += of the same type.
  template <class T>
  auto operator<<(T const& value) -> decltype(*this += value) {
    return *this += value;
  }

  // --- The number at the end (string_parse.cpp) ----------------------------------------------------------------------
  // The digits at the very end of a text are its index: scan012 has 12.

  // 0 without digits and for NIL; at most 2147483647.
  unsigned int getIndex() const;
  // Replaces the index; zeros at its front are lost. 0 removes the index, unless nothing else remains.
  //   scan012, 5 => scan5      scan012, 0 => scan      012, 0 => 0      NIL, 5 => 5
  void setIndex(unsigned int index);
  // One more and one less, in at least as many digits, in wrapping 32-bit arithmetic.
  // COMPAT: without an index both append "1", and a minus sign takes the place of a digit.
  //   file009 => file010      file99 => file100      file => file1
  //   file10  => file09       file0  => file-1       file => file1
  void incrementIndex();
  void decrementIndex();

  // --- Values from text (string_parse.cpp) ---------------------------------------------------------------------------
  // The String is its own input: each operator takes a value from the front, and the String keeps what remains. There is
  // no failure state: without a value the result is 0 (false, NUL) and the String becomes EMPTY. Numbers begin at
  // findAlphaNum(0); what is in front of that is dropped.

  // Drops units that are not graphic from the front; a text without any graphic unit stays. NIL stays.
  void eatwhite();

  // Signed types, and unsigned short: saturating at int (long, long long: at 64 bits), then cut to the type's width; a
  // long takes 32 bits.
  // COMPAT: what remains begins at findNonSignedDigit. A leading plus is not consumed, so "+5" stays for ever; minus
  // signs inside are.
  //   "12 34" => 12, " 34"      "5-3" => 5, EMPTY      "1.5" => 1, ".5"      "abc" => 0, "abc"
  String& operator>>(signed char& value);
  String& operator>>(short& value);
  String& operator>>(unsigned short& value);
  String& operator>>(int& value);
  String& operator>>(long& value);
  String& operator>>(long long& value);
  // Unsigned types: saturating at 32 bits (unsigned long long: at 64), "-1" is the largest value. What remains begins
  // where the number ends.
  // COMPAT: for unsigned long and unsigned long long the stored length of what remains is too large by the number of
  // units dropped in front (if that is one unit, it is right). The text up to the first NUL is right.
  String& operator>>(unsigned char& value);
  String& operator>>(unsigned int& value);
  String& operator>>(unsigned long& value);
  String& operator>>(unsigned long long& value);
  // Decimal and hexadecimal numbers, inf and nan. The decimal point is that of the C locale.
  //   "1.5e3 x" => 1500, " x"
  String& operator>>(double& value);
  String& operator>>(float& value);
  // "true" and "false" without regard to case; letters behind them remain. Another word is false and remains, with all
  // that is in front of it.
  // COMPAT: of a number only its first unit is consumed: "10 x" => true, "0 x".
  String& operator>>(bool& value);
  // The first graphic unit.
  String& operator>>(wchar& value);
  // A quoted text if the first unit is a double quote, otherwise a line; nothing is skipped. A line ends before a line
  // feed, which is dropped. A quoted text ends at a quote that no backslash protects, or at the end of the text; escapes
  // are kept (escToControls). The token of NIL is NIL.
  // COMPAT: one backslash protects a quote, two or more do not, even if their number is odd.
  String& operator>>(String& token);

  // --- Escapes (string_escape.cpp) -----------------------------------------------------------------------------------
  //   line feed \n      carriage return \r      double quote \"      backslash \\      U+0080 and above \uXXXX

  // Puts escapes in place of the units of the table; a text without any keeps sharing. Without `unicode` units from
  // U+0080 on stay.
  // COMPAT: even then room for their escapes is made, 5 units for each. If that is no more than the length, that many of
  // the text's own first units come in front of the result; otherwise the text reads unchanged.
  void controlsToEsc(bool unicode);
  // Puts units in place of their escapes, \uXXXX only with `unicode` (otherwise it stays); digits may be of either
  // case. -1 on success. A backslash at the very end stays. A decoded NUL ends the text.
  // A bad escape gives the index of its backslash, and what was decoded before it is escaped again.
  // COMPAT: that restores the text exactly, unless a \u escape stood for an ASCII unit, was left alone, or had digits in
  // lower case.
  int escToControls(bool unicode);

  // --- Display (string_display.cpp) ----------------------------------------------------------------------------------

  // The text in at most `limit` units: the first `head` units (0: none; negative: all), "...", and as much of the end
  // as fits. Where there are slashes, the front ends behind its last one, unless that is its first or second unit, and
  // the end begins at its first one. Texts that fit are shared, NIL too. The front and the dots are never given up, so
  // the result may be longer than the limit.
  // COMPAT: with room for exactly 48 units the end is not moved to a slash.
  //   "C:/data/projects/2020/march/scans/scan0001.dat".shortenString(30, 10) => "C:/data/.../scans/scan0001.dat"
  String shortenString(int limit, int head) const;

  // --- Printf (string_printf.cpp) ------------------------------------------------------------------------------------

  // Replaces the text by the formatted one, of at most 32768 units; what is longer is cut there. NIL becomes a string.
  // A String argument is printed by %ls, NIL as an empty text; the receiver may be an argument. An `l` in a format
  // means 32 bits on every system, `ll` and `I64` 64. With a faulty format, and where memory runs out while a long
  // argument is printed, the text is what was printed before. The formatted text is assigned by a StringBuffer: memory
  // exhausted at that point ends the process.
  //   message.printf(KVW("%ls: %08x"), name, 255)  => "scan001: 000000ff"
  template <class... Arguments>
  void printf(wchar const* format, Arguments const&... arguments) {
    static_assert((strings::isPrintable<Arguments>() && ...),
                  "printf takes numbers, Strings and texts of wchar or char");
    printf_apply(format, strings::printfArgument(arguments)...);
  }

  // --- Resources (modules/string_table.cpp) --------------------------------------------------------------------------

  // The entry `id` of a module's string table: that of its translation library, or else that of the module itself. If
  // there is none, and both systems count an empty one as none, the text is "Error loading string resource!". Never NIL.
  // StringResource (string_resource.h) loads an entry when it is first needed.
  static String loadFromResource(unsigned int id, Module const& module);

 private:
  friend struct StringAccess;

  void acquire() noexcept {
    if (payload_ != nullptr) payload_->ref();
  }
  void swap(String& other) noexcept { std::swap(payload_, other.payload_); }

  // Gives this String a payload of its own if it shares one.
  void unshare();
  // Shares the payload of `other`.
  // REQUIRES: neither is NIL.
  void takeOverDataFrom(String const& other);
  // compareEquality where neither length nor first unit decides.
  // REQUIRES: neither is NIL.
  bool equalsUnits(String const& other) const;
  void printf_apply(wchar const* format, ...);
  // What NIL shows as its text.
  static wchar const* emptyText();

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

// Writes the text in the ANSI code page with the stream's width and fill, without quotes or escapes. NIL and an empty
// text leave the stream alone, its width too.
KVBASE_API std::basic_ostream<char>& operator<<(std::basic_ostream<char>& stream, String const& text);
// Reads a token in the ANSI code page, white space before it being skipped: a word up to white space, or the text
// between double quotes, in which a backslash drops out and protects the char behind it. A text that the page cannot
// decode gives NIL; a stream at its end an empty text, and the stream has failed. The stream's flags stay. The text is NIL
// while the token is read, and stays so if an exception ends that.
KVBASE_API std::basic_istream<char>& operator>>(std::basic_istream<char>& stream, String& text);

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
