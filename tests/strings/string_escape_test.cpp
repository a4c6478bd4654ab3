// SPDX-License-Identifier: MIT
//
// Escapes of line ends, quotes, backslashes and units beyond ASCII, in both directions.
#include <gtest/gtest.h>

#include <iterator>

#include "tests/reference/string_escape_model.h"
#include "tests/strings/string_support.h"
#include "tests/support/random_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

struct EscapeRow {
  char const* name;
  wchar const* text;
  wchar const* withUnicode;
  wchar const* without;
};

EscapeRow const kEscapeRows[] = {
    {"NIL", nullptr, nullptr, nullptr},
    {"empty", KVW(""), KVW(""), KVW("")},
    {"nothing to do", KVW("plain text"), KVW("plain text"), KVW("plain text")},
    {"quote, line feed, backslash", KVW("\"\n\\"), KVW("\\\"\\n\\\\"), KVW("\\\"\\n\\\\")},
    {"carriage return", KVW("a\rb"), KVW("a\\rb"), KVW("a\\rb")},
    {"a tab stays", KVW("a\tb"), KVW("a\tb"), KVW("a\tb")},
    {"other controls stay", KVW("\x01\x1F\x7F"), KVW("\x01\x1F\x7F"), KVW("\x01\x1F\x7F")},
    {"the first unit beyond ASCII", KVW("\u0080"), KVW("\\u0080"), KVW("\u0080")},
    {"e acute", KVW("\u00E9"), KVW("\\u00E9"), KVW("\u00E9")},
    {"a euro sign", KVW("\u20AC"), KVW("\\u20AC"), KVW("\u20AC")},
    {"the last unit", KVW("\uFFFF"), KVW("\\uFFFF"), KVW("\uFFFF")},
    {"a pair of surrogates", KVW("\U0001F600"), KVW("\\uD83D\\uDE00"), KVW("\U0001F600")},
    {"eight units, the last beyond ASCII", KVW("abcdefg\u00E9"), KVW("abcdefg\\u00E9"), KVW("abcdeabcdefg\u00E9")},
    {"five units, room for five", KVW("abcd\u00E9"), KVW("abcd\\u00E9"), KVW("abcd\u00E9abcd\u00E9")},
    {"four units, room for five", KVW("abc\u00E9"), KVW("abc\\u00E9"), KVW("abc\u00E9")},
    {"room in front of escapes", KVW("ab\n\u00E9xy"), KVW("ab\\n\\u00E9xy"), KVW("ab\n\u00E9xab\\n\u00E9xy")},
    {"too little text for the room", KVW("\n\u00E9"), KVW("\\n\\u00E9"), KVW("\n\u00E9")},
    {"two units beyond ASCII", KVW("0123456789\u00E9\u00E9"), KVW("0123456789\\u00E9\\u00E9"),
     KVW("01234567890123456789\u00E9\u00E9")},
};

TEST(StringEscape, ControlsToEsc) {
  for (EscapeRow const& row : kEscapeRows) {
    SCOPED_TRACE(row.name);
    for (bool const unicode : {true, false}) {
      String string(row.text);
      String const holder = string;
      string.controlsToEsc(unicode);
      EXPECT_EQ(spelled(string), spelled(String(unicode ? row.withUnicode : row.without)));
      EXPECT_EQ(spelled(holder), spelled(String(row.text)));
    }
  }
}

TEST(StringEscape, ControlsToEscWithNothingToDoKeepsThePayload) {
  for (String const& text : {String::EMPTY, String(KVW(""), 0), String(KVW("plain\ttext"))}) {
    for (bool const unicode : {true, false}) {
      String string = text;
      string.controlsToEsc(unicode);
      EXPECT_TRUE(shares(string, text));
    }
  }
}

struct DecodeRow {
  char const* name;
  wchar const* text;
  int result;
  wchar const* decoded;
};

DecodeRow const kDecodeRows[] = {
    {"NIL", nullptr, -1, nullptr},
    {"empty", KVW(""), -1, KVW("")},
    {"no backslash", KVW("plain\n\"text\""), -1, KVW("plain\n\"text\"")},
    {"a lone backslash at the end", KVW("text\\"), -1, KVW("text\\")},
    {"only a backslash", KVW("\\"), -1, KVW("\\")},
    {"a lone backslash behind an escape", KVW("\\nx\\"), -1, KVW("\nx\\")},
    {"all short escapes", KVW("a\\nb\\rc\\\"d\\\\e"), -1, KVW("a\nb\rc\"d\\e")},
    {"two backslashes and a letter", KVW("\\\\n"), -1, KVW("\\n")},
    {"three backslashes and a letter", KVW("\\\\\\n"), -1, KVW("\\\n")},
    {"a wide unit", KVW("\\u20AC"), -1, KVW("\u20AC")},
    {"lower case digits", KVW("\\u20ac!"), -1, KVW("\u20AC!")},
    {"a wide unit between others", KVW("a\\u00E9\\nb"), -1, KVW("a\u00E9\nb")},
    {"the largest wide unit", KVW("\\uFFFFx"), -1, KVW("\uFFFFx")},
    {"full-width hexadecimal digits", KVW("\\u\uFF10\uFF10\uFF14\uFF11x"), -1, KVW("Ax")},
    {"a tab stays", KVW("\t\\n\t"), -1, KVW("\t\n\t")},
    {"a decoded NUL ends the text", KVW("a\\u0000b"), -1, KVW("a")},
    {"three digits", KVW("\\u00E"), 0, KVW("\\u00E")},
    {"three digits behind a text", KVW("ab\\u00E"), 2, KVW("ab\\u00E")},
    {"no digits", KVW("\\u"), 0, KVW("\\u")},
    {"a digit that is none", KVW("\\u00G0"), 0, KVW("\\u00G0")},
    {"Arabic digits are not hexadecimal", KVW("\\u\u0660\u0660\u0664\u0661"), 0, KVW("\\u\u0660\u0660\u0664\u0661")},
    {"an unknown letter", KVW("\\q"), 0, KVW("\\q")},
    {"capitals are unknown", KVW("\\N"), 0, KVW("\\N")},
    {"an unknown letter behind an escape", KVW("\\n\\q"), 2, KVW("\\n\\q")},
    {"behind a text and escapes", KVW("ab\\n\\\"c\\q tail\\n"), 7, KVW("ab\\n\\\"c\\q tail\\n")},
    {"behind a wide unit", KVW("\\u20AC\\q"), 6, KVW("\\u20AC\\q")},
    {"digits come back in upper case", KVW("\\u20ac\\q"), 6, KVW("\\u20AC\\q")},
    {"a bad wide escape behind a good one", KVW("x\\\\\\u12"), 3, KVW("x\\\\\\u12")},
};

TEST(StringEscape, EscToControls) {
  for (DecodeRow const& row : kDecodeRows) {
    SCOPED_TRACE(row.name);
    String string(row.text);
    String const holder = string;
    EXPECT_EQ(string.escToControls(true), row.result);
    EXPECT_EQ(spelled(string), spelled(String(row.decoded)));
    EXPECT_EQ(spelled(holder), spelled(String(row.text)));
  }
}

TEST(StringEscape, EscToControlsWithoutUnicode) {
  DecodeRow const rows[] = {
      {"NIL", nullptr, -1, nullptr},
      {"empty", KVW(""), -1, KVW("")},
      {"a wide unit stays", KVW("\\u00E9"), -1, KVW("\\u00E9")},
      {"its digits are not looked at", KVW("\\uxyz"), -1, KVW("\\uxyz")},
      {"a wide unit at the very end", KVW("\\u"), -1, KVW("\\u")},
      {"short escapes around it", KVW("\\n\\u00E9\\\""), -1, KVW("\n\\u00E9\"")},
      {"an unknown letter", KVW("\\n\\q"), 2, KVW("\\n\\q")},
      {"a bad escape directly behind it", KVW("\\u00E9\\q"), 6, KVW("\\u00E9\\q")},
  };
  for (DecodeRow const& row : rows) {
    SCOPED_TRACE(row.name);
    String string(row.text);
    String const holder = string;
    EXPECT_EQ(string.escToControls(false), row.result);
    EXPECT_EQ(spelled(string), spelled(String(row.decoded)));
    EXPECT_EQ(spelled(holder), spelled(String(row.text)));
  }
}

TEST(StringEscape, EscToControlsWithNothingToDoKeepsThePayload) {
  for (String const& text :
       {String::EMPTY, String(KVW(""), 0), String(KVW("plain")), String(KVW("\\")), String(KVW("ab\\"))}) {
    for (bool const unicode : {true, false}) {
      String string = text;
      EXPECT_EQ(string.escToControls(unicode), -1);
      EXPECT_TRUE(shares(string, text));
    }
  }
}

TEST(StringEscape, EscToControlsDecodesInPlace) {
  String string(KVW("a\\nb"));
  wchar const* const before = string;
  EXPECT_EQ(string.escToControls(true), -1);
  EXPECT_EQ(static_cast<wchar const*>(string), before);
  EXPECT_EQ(string.length(), 3);
}

// A \u escape of an ASCII unit is restored in a shorter form: the result is specified, the text afterwards is not.
TEST(StringEscape, EscapedAsciiBeforeABadEscape) {
  for (wchar const* const text :
       {KVW("\\u0041\\q"), KVW("\\u0041\\u0042\\u0043\\q"), KVW("\\u0000\\q"), KVW("\\u0000\\u0000x\\q")}) {
    String string(text);
    String const holder = string;
    EXPECT_EQ(string.escToControls(true), static_cast<int>(wstring(text).size()) - 2);
    EXPECT_FALSE(isNil(string));
    EXPECT_EQ(spelled(holder), spelled(String(text)));
  }
}

// --- Against the model -----------------------------------------------------------------------------------------------

void compareEscapes(Text const& text, bool unicode) {
  String const original = stringOf(text);
  String string = original;
  string.controlsToEsc(unicode);
  Text const escaped = reference::controlsToEsc(text, unicode);
  if (textOf(string) != (escaped ? Text(reference::visible(*escaped)) : escaped))
    FAIL() << "controlsToEsc(" << unicode << ") of " << spelled(text) << " gives " << spelled(string);

  string = original;
  int const result = string.escToControls(unicode);
  reference::Decoded const decoded = reference::escToControls(text, unicode);
  Text const expected = decoded.text ? Text(reference::visible(*decoded.text)) : decoded.text;
  if (result != decoded.result || (decoded.textSettled && textOf(string) != expected))
    FAIL() << "escToControls(" << unicode << ") of " << spelled(text) << " is " << result << " for " << decoded.result
           << " and gives " << spelled(string) << " for " << spelled(expected);
  if (unitsOf(original) != text) FAIL() << spelled(text) << " changed for another holder";
}

// Controls, quotes, wide units and pieces of escapes, most of them valid.
Text randomEscapes(RandomText& random, bool withNul) {
  static wstring const kPieces[] = {KVW("\\n"),     KVW("\\r"),   KVW("\\\""),   KVW("\\\\"),    KVW("\\u00E9"),
                                    KVW("\\u20ac"), KVW("\\u12"), KVW("\\q"),    KVW("\\"),      KVW("\n"),
                                    KVW("\r"),      KVW("\""),    KVW("u"),      KVW("n"),       KVW("\u20AC"),
                                    KVW("\\uD83D"), KVW("\\u"),   KVW("a"),      KVW("\\u0041"), KVW("bc"),
                                    KVW("\t"),      KVW("\\uFF"), KVW("\\u0000")};
  if (random.oneIn(200)) return Text();
  int const kinds = random.oneIn(3) ? static_cast<int>(std::size(kPieces)) : 6;
  wstring text;
  for (int pieces = random.below(9); pieces > 0; --pieces)
    text += random.oneIn(4) ? random.text(random.below(8), withNul ? RandomUnits::kAnyWithNul : RandomUnits::kAscii)
                            : kPieces[random.below(kinds)];
  return text;
}

// Both directions go by the length, so they also process what is behind a NUL.
TEST(StringEscape, RandomTextsAgreeWithTheModel) {
  RandomText random(280);
  for (int i = 0; i < kRounds; ++i) {
    Text const text = randomEscapes(random, random.oneIn(2));
    compareEscapes(text, true);
    compareEscapes(text, false);
    if (HasFatalFailure()) return;
  }
}

TEST(StringEscape, SampledUnitsAgreeWithTheModel) {
  for (wchar const code : sampledUnits()) {
    wstring const unit(1, code);
    compareEscapes(unit, true);
    compareEscapes(KVW("\\u12") + unit + KVW("4"), true);
    compareEscapes(KVW("\\n\\") + unit, false);
    compareEscapes(KVW("abcde") + unit, false);
    if (HasFatalFailure()) FAIL() << "unit " << code;
  }
}

TEST(StringEscape, LongTexts) {
  std::size_t const size = 1 << 16;
  wstring codes;
  while (codes.size() < size) codes += KVW("\\n\\u20AC");
  compareEscapes(codes, true);
  compareEscapes(codes + KVW("\\q"), true);
  compareEscapes(codes + KVW("\\q"), false);
  compareEscapes(wstring(size, 0x20AC), true);
  compareEscapes(wstring(size, 0x20AC), false);
  compareEscapes(wstring(size, KVW('\\')), true);
  compareEscapes(RandomText(283).text(static_cast<int>(size), RandomUnits::kAny), true);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
