// SPDX-License-Identifier: MIT
//
// Taking truth values, single units, quoted texts and lines from the front of a text, and dropping white space from it.
#include <gtest/gtest.h>

#include <iterator>

#include "tests/reference/string_parse_model.h"
#include "tests/strings/string_support.h"
#include "tests/support/random_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

TEST(StringParseToken, Bool) {
  struct Row {
    char const* name;
    wchar const* text;
    bool value;
    wchar const* rest;
  };
  Row const rows[] = {
      {"NIL", nullptr, false, KVW("")},
      {"empty", KVW(""), false, KVW("")},
      {"blanks", KVW("  "), false, KVW("")},
      {"true in capitals", KVW("TRUE x"), true, KVW(" x")},
      {"false", KVW("False"), false, KVW("")},
      {"only four units count", KVW("truest"), true, KVW("st")},
      {"only five units count", KVW("falsehood"), false, KVW("hood")},
      {"another word stays", KVW("maybe"), false, KVW("maybe")},
      {"another word stays with what is before", KVW(" ,maybe"), false, KVW(" ,maybe")},
      {"what is before a word goes", KVW(" ,true x"), true, KVW(" x")},
      {"too short for true", KVW("tru"), false, KVW("tru")},
      {"too short for false", KVW(" fals"), false, KVW(" fals")},
      {"zero", KVW("0"), false, KVW("")},
      {"seven", KVW("7"), true, KVW("")},
      {"one unit of a number", KVW("10 x"), true, KVW("0 x")},
      {"a sign", KVW("-1"), true, KVW("1")},
      {"a sign without number", KVW("-x"), false, KVW("x")},
      {"a plus", KVW("+0"), false, KVW("0")},
      {"a full stop", KVW(".5"), false, KVW("5")},
      {"zeros in front", KVW("007"), true, KVW("07")},
      {"behind separators", KVW(" ,1 x"), true, KVW(" x")},
      {"too large", KVW("99999999999"), true, KVW("9999999999")},
      {"an Arabic digit", KVW("\u0661"), true, KVW("")},
      {"a superscript has no value", KVW("\u00B2x"), false, KVW("x")},
      {"a letter beyond ASCII", KVW("\u00E9"), false, KVW("\u00E9")},
      {"no folding beyond ASCII", KVW("\uFF54rue"), false, KVW("\uFF54rue")},
      {"a long s is no s", KVW("fal\u017Fe"), false, KVW("fal\u017Fe")},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    String string(row.text);
    String const holder = string;
    bool value = !row.value;
    EXPECT_EQ(&(string >> value), &string);
    EXPECT_EQ(value, row.value);
    EXPECT_EQ(spelled(string), spelled(Text(row.rest)));
    EXPECT_EQ(spelled(holder), spelled(String(row.text)));
  }
}

TEST(StringParseToken, AWordThatIsNoTruthValueIsUnsharedAllTheSame) {
  String const holder(KVW(" maybe"));
  String string = holder;
  bool value = true;
  string >> value;
  EXPECT_FALSE(shares(string, holder));
}

TEST(StringParseToken, Unit) {
  struct Row {
    char const* name;
    wchar const* text;
    wchar value;
    wchar const* rest;
  };
  Row const rows[] = {
      {"NIL", nullptr, 0, KVW("")},
      {"empty", KVW(""), 0, KVW("")},
      {"blanks", KVW(" \t\n "), 0, KVW("")},
      {"the first", KVW("abc"), KVW('a'), KVW("bc")},
      {"behind blanks and controls",
       KVW(" \x01\t\x7F"
           "a b"),
       KVW('a'), KVW(" b")},
      {"punctuation", KVW(" ,x"), KVW(','), KVW("x")},
      {"the last", KVW(" x"), KVW('x'), KVW("")},
      {"behind a wide blank", KVW("\u3000\u00A0x"), KVW('x'), KVW("")},
      {"beyond ASCII",
       KVW("\u3000\u4E2D"
           "a"),
       0x4E2D, KVW("a")},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    String string(row.text);
    String const holder = string;
    wchar value = KVW('?');
    EXPECT_EQ(&(string >> value), &string);
    EXPECT_EQ(value, row.value);
    EXPECT_EQ(spelled(string), spelled(Text(row.rest)));
    EXPECT_EQ(spelled(holder), spelled(String(row.text)));
    if (row.value == 0 || *row.rest == 0) EXPECT_TRUE(shares(string, String::EMPTY));
  }
}

struct TokenRow {
  char const* name;
  wchar const* text;
  wchar const* token;
  wchar const* rest;
};

TokenRow const kTokenRows[] = {
    {"NIL", nullptr, nullptr, KVW("")},
    {"empty", KVW(""), KVW(""), KVW("")},
    {"the first of two lines", KVW("one\ntwo"), KVW("one"), KVW("two")},
    {"the last line", KVW("two"), KVW("two"), KVW("")},
    {"a carriage return stays", KVW("one\r\ntwo"), KVW("one\r"), KVW("two")},
    {"an empty line", KVW("\ntwo"), KVW(""), KVW("two")},
    {"a line feed at the end", KVW("one\n"), KVW("one"), KVW("")},
    {"nothing is skipped", KVW("  one \ntwo"), KVW("  one "), KVW("two")},
    {"a quote that is not first", KVW(" \"a\" b"), KVW(" \"a\" b"), KVW("")},
    {"quoted", KVW("\"a b\" c"), KVW("a b"), KVW(" c")},
    {"quoted, line feeds inside", KVW("\"a\nb\"\nc"), KVW("a\nb"), KVW("\nc")},
    {"quoted and empty", KVW("\"\" c"), KVW(""), KVW(" c")},
    {"quoted, nothing behind", KVW("\"a\""), KVW("a"), KVW("")},
    {"an escaped quote stays escaped", KVW("\"a\\\"b\" c"), KVW("a\\\"b"), KVW(" c")},
    {"an escaped quote in front", KVW("\"\\\"b\" c"), KVW("\\\"b"), KVW(" c")},
    {"an escaped backslash closes", KVW("\"a\\\\\" c"), KVW("a\\\\"), KVW(" c")},
    {"three backslashes close as two do", KVW("\"a\\\\\\\" c"), KVW("a\\\\\\"), KVW(" c")},
    {"two backslashes in front", KVW("\"\\\\\" c"), KVW("\\\\"), KVW(" c")},
    {"unterminated", KVW("\"a b"), KVW("a b"), KVW("")},
    {"unterminated, escaped quote last", KVW("\"a\\\""), KVW("a\\\""), KVW("")},
    {"a quote alone", KVW("\""), KVW(""), KVW("")},
    {"a backslash and a quote", KVW("\"\\\""), KVW("\\\""), KVW("")},
};

TEST(StringParseToken, QuotedTextsAndLines) {
  for (TokenRow const& row : kTokenRows) {
    SCOPED_TRACE(row.name);
    String string(row.text);
    String const holder = string;
    String token(KVW("old"));
    EXPECT_EQ(&(string >> token), &string);
    EXPECT_EQ(spelled(token), spelled(row.token != nullptr ? Text(row.token) : Text()));
    EXPECT_EQ(spelled(string), spelled(Text(row.rest)));
    EXPECT_EQ(spelled(holder), spelled(String(row.text)));
  }
}

// What brackets on NIL refer to is no text.
TEST(StringParseToken, NilIsNotQuoted) {
  String nil;
  nil[0] = KVW('"');
  String token(KVW("old"));
  nil >> token;
  String::outOfRange = 7;
  EXPECT_EQ(state(token), "NIL");
  EXPECT_EQ(state(nil), "EMPTY");
}

TEST(StringParseToken, LinesOneAfterTheOther) {
  String string(KVW("one\ntwo"));
  String line;
  string >> line;
  EXPECT_EQ(spelled(line), "\"one\"");
  EXPECT_EQ(spelled(string), "\"two\"");
  string >> line;
  EXPECT_EQ(spelled(line), "\"two\"");
  EXPECT_TRUE(shares(string, String::EMPTY));
  string >> line;
  EXPECT_EQ(spelled(line), "\"\"");
  EXPECT_TRUE(shares(string, String::EMPTY));
}

TEST(StringParseToken, TheLastLineTakesThePayload) {
  String string(KVW("a line"));
  wchar const* const text = string;
  String line;
  string >> line;
  EXPECT_EQ(static_cast<wchar const*>(line), text);
  EXPECT_TRUE(shares(string, String::EMPTY));
}

TEST(StringParseToken, ATokenIntoItsOwnSource) {
  String string(KVW("one\ntwo"));
  string >> string;
  EXPECT_FALSE(isNil(string));
  String quoted(KVW("\"one\" two"));
  quoted >> quoted;
  EXPECT_FALSE(isNil(quoted));
}

TEST(StringParseToken, EatWhite) {
  TokenRow const rows[] = {
      {"NIL", nullptr, nullptr, nullptr},
      {"empty", KVW(""), nullptr, KVW("")},
      {"blanks only stay", KVW("  "), nullptr, KVW("  ")},
      {"blanks go", KVW("  a"), nullptr, KVW("a")},
      {"controls go",
       KVW("\t\n\x01\x7F"
           "a b "),
       nullptr, KVW("a b ")},
      {"wide blanks go", KVW("\u3000\u00A0a"), nullptr, KVW("a")},
      {"nothing to do", KVW("a b"), nullptr, KVW("a b")},
  };
  for (TokenRow const& row : rows) {
    SCOPED_TRACE(row.name);
    String string(row.text);
    String const holder = string;
    string.eatwhite();
    EXPECT_EQ(spelled(string), spelled(String(row.rest)));
    EXPECT_EQ(spelled(holder), spelled(String(row.text)));
    EXPECT_EQ(shares(string, holder), spelled(string) == spelled(holder))
        << "with nothing to drop the payload stays shared";
  }
}

// --- Against the model -----------------------------------------------------------------------------------------------

void compareTokens(Text const& text) {
  String const original = stringOf(text);
  String string = original;
  String token(KVW("old"));
  string >> token;
  Text rest = text;
  Text const expected = reference::takeToken(rest);
  if (unitsOf(token) != expected)
    FAIL() << spelled(text) << " gives " << spelled(token) << " for " << spelled(expected);
  if (unitsOf(string) != rest) FAIL() << spelled(text) << " leaves " << spelled(string) << " for " << spelled(rest);

  string = original;
  string.eatwhite();
  rest = text;
  reference::eatWhite(rest);
  if (unitsOf(string) != rest) FAIL() << "eatwhite of " << spelled(text) << " gives " << spelled(string);

  string = original;
  wchar value = 1;
  string >> value;
  rest = text;
  wchar const expectedValue = reference::take(rest, static_cast<wchar*>(nullptr));
  if (value != expectedValue || unitsOf(string) != rest)
    FAIL() << "the unit of " << spelled(text) << " is " << static_cast<int>(value) << ", leaves " << spelled(string);
  if (unitsOf(original) != text) FAIL() << spelled(text) << " changed for another holder";
}

TEST(StringParseToken, RandomTextsAgreeWithTheModel) {
  static wchar const kUnits[] = {KVW('"'), KVW('\\'), KVW('\n'), KVW('a'), KVW(' '),
                                 KVW('"'), KVW('\\'), 0x3000,    0x20AC};
  RandomText random(268);
  for (int i = 0; i < kRounds; ++i) {
    Text text;
    if (!random.oneIn(200)) text = random.oneIn(2) ? wstring(1, KVW('"')) : wstring();
    for (int units = random.below(12); text && units > 0; --units)
      *text +=
          random.oneIn(10) ? random.unit(RandomUnits::kAny) : kUnits[random.below(static_cast<int>(std::size(kUnits)))];
    compareTokens(text);
    if (HasFatalFailure()) return;
  }
}

TEST(StringParseToken, SampledUnitsAgreeWithTheModel) {
  for (wchar const code : sampledUnits()) {
    wstring const unit(1, code);
    compareTokens(unit);
    compareTokens(unit + KVW("a"));
    compareTokens(KVW("\"") + unit + KVW("\"") + unit);
    if (HasFatalFailure()) FAIL() << "unit " << code;
  }
}

TEST(StringParseToken, LongTexts) {
  int const size = 1 << 16;
  compareTokens(wstring(size, KVW(' ')) + KVW("a"));
  compareTokens(KVW("\"") + wstring(size, KVW('\\')) + KVW("\" rest"));
  compareTokens(KVW("\"") + wstring(size, KVW('a')));
  compareTokens(wstring(size, KVW('a')) + KVW("\nb"));
  wstring escapedQuotes(1, KVW('"'));
  while (escapedQuotes.size() < size) escapedQuotes += KVW("a\\\"");
  compareTokens(escapedQuotes);
  compareTokens(RandomText(269).text(size, RandomUnits::kAny));
}

// A token ends at a NUL inside it.
TEST(StringParseToken, ANulEndsALineAndAQuotedText) {
  String string = stringOf(wstring(KVW("a\0\nb"), 4));
  String token;
  string >> token;
  EXPECT_EQ(spelled(textOf(token)), "\"a\"");
  string = stringOf(wstring(KVW("\"a\0\"b"), 5));
  string >> token;
  EXPECT_EQ(spelled(textOf(token)), "\"a\"");
  EXPECT_TRUE(shares(string, String::EMPTY));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
