// SPDX-License-Identifier: MIT
//
// substr, trim, startsWith, endsWith and concatenation, and which results share a payload.
#include <gtest/gtest.h>

#include "tests/strings/string_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

// How a result relates to the String it came from.
std::string relation(String const& result, String const& source) {
  return !isNil(result) && shares(result, source) ? "shares" : state(result);
}

TEST(StringCutting, Substr) {
  wchar const azb[] = {KVW('a'), 0, KVW('b'), KVW('c')};
  String const abc(KVW("abc"));
  String const inner(azb, 4);
  String const own(KVW(""));
  struct Row {
    char const* name;
    String const& text;
    int start;
    int end;
    char const* expected;
  } const rows[] = {
      {"whole", abc, 0, -1, "shares"},
      {"whole by its length", abc, 0, 3, "shares"},
      {"whole by a large end", abc, 0, 99, "shares"},
      {"whole by a negative start", abc, -3, -1, "shares"},
      {"without the first unit", abc, 1, -1, "\"bc\""},
      {"one unit", abc, 1, 2, "\"b\""},
      {"without the last unit", abc, 0, 2, "\"ab\""},
      {"negative start, end in the text", abc, -5, 2, "\"ab\""},
      {"end before start", abc, 2, 1, "EMPTY"},
      {"end at start", abc, 1, 1, "EMPTY"},
      {"end 0", abc, -3, 0, "EMPTY"},
      {"start behind the end", abc, 5, 99, "EMPTY"},
      {"start at the end", abc, 3, -1, "EMPTY"},
      {"any negative end is the length", abc, 1, -7, "\"bc\""},
      {"largest numbers", abc, 2147483647, 2147483647, "EMPTY"},
      {"smallest start", abc, -2147483647 - 1, 2, "\"ab\""},
      {"NIL whole", String::NIL, 0, -1, "EMPTY"},
      {"NIL in part", String::NIL, 1, 2, "EMPTY"},
      {"EMPTY", String::EMPTY, 0, -1, "shares"},
      {"an empty text of its own", own, 0, -1, "EMPTY"},
      {"inner NUL inside", inner, 0, 3, "\"a\\0b\""},
      {"inner NUL last is dropped", inner, 0, 2, "\"a\""},
      {"behind an inner NUL", inner, 2, -1, "\"bc\""},
      {"inner NUL first", inner, 1, -1, "\"\\0bc\""},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(relation(row.text.substr(row.start, row.end), row.text), row.expected);
  }
}

TEST(StringCutting, Trim) {
  String const inner = stringOf(wstring({KVW(' '), KVW('a'), wchar(0), KVW(' ')}));
  String const nulFirst = stringOf(wstring({wchar(0), KVW(' '), KVW('a')}));
  struct Row {
    char const* name;
    String text;
    char const* both;
    char const* left;
    char const* right;
  } const rows[] = {
      {"NIL", String::NIL, "NIL", "NIL", "NIL"},
      {"EMPTY", String::EMPTY, "shares", "shares", "shares"},
      {"an empty text of its own", String(KVW("")), "shares", "shares", "shares"},
      {"nothing to cut", String(KVW("a b")), "shares", "shares", "shares"},
      {"one unit", String(KVW("a")), "shares", "shares", "shares"},
      {"both sides", String(KVW("  a b ")), "\"a b\"", "\"a b \"", "\"  a b\""},
      {"left only", String(KVW(" a")), "\"a\"", "\"a\"", "shares"},
      {"right only", String(KVW("a ")), "\"a\"", "shares", "\"a\""},
      {"blanks", String(KVW("   ")), "EMPTY", "EMPTY", "\" \""},
      {"blanks that differ", String(KVW("\t \n")), "EMPTY", "EMPTY", "\"\t\""},
      {"one blank", String(KVW(" ")), "EMPTY", "EMPTY", "shares"},
      {"every white unit of ASCII", String(KVW("\t\n\v\f\r a")), "\"a\"", "\"a\"", "shares"},
      {"controls are not white",
       String(KVW("\x1B"
                  "a\x7F")),
       "shares", "shares", "shares"},
      {"first unit NUL", nulFirst, "shares", "shares", "shares"},
      {"behind an inner NUL the blank goes, and the NUL with it", inner, "\"a\"", "\"a\\0 \"", "\" a\""},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(relation(row.text.trim(true, true), row.text), row.both);
    EXPECT_EQ(relation(row.text.trim(true, false), row.text), row.left);
    EXPECT_EQ(relation(row.text.trim(false, true), row.text), row.right);
    EXPECT_EQ(relation(row.text.trim(false, false), row.text), isNil(row.text) ? "NIL" : "shares");
  }
}

TEST(StringCutting, StartsAndEndsWith) {
  struct Row {
    char const* name;
    String text;
    String part;
    bool starts;
    bool ends;
    bool endsIgnoringCase;
  } const rows[] = {
      {"NIL of NIL", String::NIL, String::NIL, true, false, false},
      {"EMPTY of NIL", String::NIL, String::EMPTY, true, false, false},
      {"an empty text of NIL", String::NIL, String(KVW("")), true, false, false},
      {"a text of NIL", String::NIL, String(KVW("a")), false, false, false},
      {"NIL of EMPTY", String::EMPTY, String::NIL, true, false, false},
      {"EMPTY of EMPTY", String::EMPTY, String::EMPTY, true, false, false},
      {"a text of EMPTY", String::EMPTY, String(KVW("a")), false, false, false},
      {"NIL of a text", String(KVW("abc")), String::NIL, true, false, false},
      {"EMPTY of a text", String(KVW("abc")), String::EMPTY, true, false, false},
      {"front", String(KVW("abc")), String(KVW("ab")), true, false, false},
      {"end", String(KVW("abc")), String(KVW("bc")), false, true, true},
      {"middle", String(KVW("abc")), String(KVW("b")), false, false, false},
      {"all of it", String(KVW("abc")), String(KVW("abc")), true, true, true},
      {"more than it", String(KVW("abc")), String(KVW("abcd")), false, false, false},
      {"more at the front", String(KVW("abc")), String(KVW("xabc")), false, false, false},
      {"other case at the front", String(KVW("abc")), String(KVW("AB")), false, false, false},
      {"other case at the end", String(KVW("abC")), String(KVW("Bc")), false, false, true},
      {"umlauts are not folded", stringOf(wstring(1, wchar(0xE4))), stringOf(wstring(1, wchar(0xC4))), false, false,
       false},
      {"punctuation beside the letters is not folded", String(KVW("a@[")), String(KVW("`{")), false, false, false},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.starts, row.text.startsWith(row.part));
    EXPECT_EQ(row.ends, row.text.endsWith(row.part));
    EXPECT_EQ(row.ends, row.text.endsWith(row.part, false));
    EXPECT_EQ(row.endsIgnoringCase, row.text.endsWith(row.part, true));
  }
}

TEST(StringCutting, AddingStrings) {
  String const nil;
  String const empty(KVW(""));
  String const ab(KVW("ab"));
  String const cd(KVW("cd"));
  String const inner = stringOf(wstring({KVW('x'), wchar(0), KVW('y')}));
  struct Row {
    char const* name;
    String const& a;
    String const& b;
    char const* expected;
    String const* shared;
  } const rows[] = {
      {"two texts", ab, cd, "\"abcd\"", nullptr},
      {"a NIL behind", ab, nil, "\"ab\"", &ab},
      {"a NIL in front", nil, ab, "\"ab\"", &ab},
      {"two NILs", nil, nil, "NIL", &nil},
      {"an empty text behind", ab, empty, "\"ab\"", nullptr},
      {"an empty text in front", empty, ab, "\"ab\"", nullptr},
      {"NIL and EMPTY", nil, String::EMPTY, "EMPTY", &String::EMPTY},
      {"EMPTY and NIL", String::EMPTY, nil, "EMPTY", &String::EMPTY},
      {"EMPTY and EMPTY", String::EMPTY, String::EMPTY, "\"\"", nullptr},
      {"twice the same", ab, ab, "\"abab\"", nullptr},
      {"inner NULs count", inner, inner, "\"x\\0yx\\0y\"", nullptr},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    String const sum = row.a + row.b;
    EXPECT_EQ(state(sum), row.expected);
    EXPECT_EQ(shares(sum, row.a), row.shared == &row.a);
    EXPECT_EQ(shares(sum, row.b), row.shared == &row.b);
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
