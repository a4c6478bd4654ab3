// SPDX-License-Identifier: MIT
//
// Searches for texts, for units and for classes of units.
#include <gtest/gtest.h>

#include <cstdint>

#include "tests/reference/string_search.h"
#include "tests/strings/string_support.h"
#include "tests/support/random_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

constexpr int kSmallest = INT32_MIN;
constexpr int kLargest = INT32_MAX;

TEST(StringSearch, FindText) {
  wchar const inner[] = {KVW('a'), 0, KVW('b'), KVW('a')};
  struct Row {
    char const* name;
    String text;
    wchar const* wanted;
    int from;
    int expected;
  } const rows[] = {
      {"at the start", String(KVW("abab")), KVW("ab"), 0, 0},
      {"further on", String(KVW("abab")), KVW("ab"), 1, 2},
      {"at the very position", String(KVW("abab")), KVW("ab"), 2, 2},
      {"none further on", String(KVW("abab")), KVW("ab"), 3, -1},
      {"the last unit", String(KVW("abc")), KVW("c"), 0, 2},
      {"whole text", String(KVW("abc")), KVW("abc"), 0, 0},
      {"longer than the text", String(KVW("abc")), KVW("abcd"), 0, -1},
      {"case matters", String(KVW("abc")), KVW("B"), 0, -1},
      {"overlapping start", String(KVW("aab")), KVW("ab"), 0, 1},
      {"false start", String(KVW("ababac")), KVW("abac"), 0, 2},
      {"empty text", String(KVW("abc")), KVW(""), 0, -1},
      {"empty text in an empty text", String::EMPTY, KVW(""), 0, -1},
      {"null", String(KVW("abc")), nullptr, 0, -1},
      {"null in NIL", String::NIL, nullptr, 0, -1},
      {"NIL", String::NIL, KVW("a"), 0, -1},
      {"EMPTY", String::EMPTY, KVW("a"), 0, -1},
      {"from is negative", String(KVW("abc")), KVW("a"), -1, -1},
      {"from is the smallest", String(KVW("abc")), KVW("a"), kSmallest, -1},
      {"from is the length", String(KVW("abc")), KVW("c"), 3, -1},
      {"from is beyond", String(KVW("abc")), KVW("a"), kLargest, -1},
      {"an inner NUL ends the search", String(inner, 4), KVW("b"), 0, -1},
      {"behind an inner NUL it goes on", String(inner, 4), KVW("a"), 1, -1},
      {"from behind an inner NUL", String(inner, 4), KVW("a"), 2, 3},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.expected, row.text.find(row.wanted, row.from));
  }
}

TEST(StringSearch, FindUnit) {
  wchar const inner[] = {KVW('a'), 0, KVW('b'), KVW('a')};
  struct Row {
    char const* name;
    String text;
    wchar wanted;
    int from;
    int first;
    int last;
  } const rows[] = {
      {"positions count from the start", String(KVW("xbxb")), KVW('b'), 2, 3, 3},
      {"two of them", String(KVW("abab")), KVW('b'), 0, 1, 3},
      {"the range starts at from", String(KVW("abab")), KVW('a'), 1, 2, 2},
      {"from at the last one", String(KVW("abab")), KVW('b'), 3, 3, 3},
      {"from behind the last one", String(KVW("abax")), KVW('b'), 2, -1, -1},
      {"none", String(KVW("abc")), KVW('x'), 0, -1, -1},
      {"case matters", String(KVW("abc")), KVW('A'), 0, -1, -1},
      {"NUL finds the terminator", String(KVW("abc")), 0, 0, 3, 3},
      {"NUL from inside", String(KVW("abc")), 0, 2, 3, 3},
      {"NUL at the length", String(KVW("abc")), 0, 3, -1, -1},
      {"NUL in EMPTY", String::EMPTY, 0, 0, -1, -1},
      {"NIL", String::NIL, KVW('a'), 0, -1, -1},
      {"NUL in NIL", String::NIL, 0, 0, -1, -1},
      {"from is negative", String(KVW("abc")), KVW('a'), -1, -1, -1},
      {"from is the smallest", String(KVW("abc")), KVW('a'), kSmallest, -1, -1},
      {"from is the length", String(KVW("abc")), KVW('c'), 3, -1, -1},
      {"from is beyond", String(KVW("abc")), KVW('c'), kLargest, -1, -1},
      {"an inner NUL ends the search", String(inner, 4), KVW('a'), 0, 0, 0},
      {"NUL finds an inner one", String(inner, 4), 0, 0, 1, 1},
      {"from behind an inner NUL", String(inner, 4), KVW('a'), 2, 3, 3},
      {"NUL behind an inner one", String(inner, 4), 0, 2, 4, 4},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.first, row.text.find(row.wanted, row.from));
    EXPECT_EQ(row.last, row.text.findLastOf(row.wanted, row.from));
  }
}

TEST(StringSearch, FindLastText) {
  wchar const inner[] = {KVW('a'), 0, KVW('a')};
  struct Row {
    char const* name;
    String text;
    wchar const* wanted;
    int expected;
  } const rows[] = {
      {"twice", String(KVW("abab")), KVW("ab"), 2},
      {"once", String(KVW("xab")), KVW("ab"), 1},
      {"overlapping", String(KVW("aaa")), KVW("aa"), 1},
      {"none", String(KVW("abc")), KVW("x"), -1},
      {"whole text", String(KVW("abc")), KVW("abc"), 0},
      {"longer than the text", String(KVW("abc")), KVW("abcd"), -1},
      {"empty text", String(KVW("abc")), KVW(""), -1},
      {"null", String(KVW("abc")), nullptr, -1},
      {"in EMPTY", String::EMPTY, KVW("a"), -1},
      {"empty text in EMPTY", String::EMPTY, KVW(""), -1},
      {"an inner NUL ends the search", String(inner, 3), KVW("a"), 0},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.expected, row.text.findLastOf(row.wanted));
  }
}

struct ClassSearch {
  char const* name;
  int (*search)(String const& text, int from);
  bool (*accepts)(wchar unit);
};

ClassSearch const kClassSearches[] = {
    {"findAlpha", [](String const& s, int from) { return s.findAlpha(from); }, &reference::isAlpha},
    {"findNonAlpha", [](String const& s, int from) { return s.findNonAlpha(from); },
     [](wchar u) { return !reference::isAlpha(u); }},
    {"findAlphaNum", [](String const& s, int from) { return s.findAlphaNum(from); }, &reference::isWordOrNumber},
    {"findNonAlphaNum", [](String const& s, int from) { return s.findNonAlphaNum(from); },
     [](wchar u) { return !reference::isWordOrNumber(u); }},
    {"findDigit", [](String const& s, int from) { return s.findDigit(from, 0); }, &reference::isDigit},
    {"findDigit but 0", [](String const& s, int from) { return s.findDigit(from, KVW('0')); },
     [](wchar u) { return reference::isDigit(u) && u != KVW('0'); }},
    {"findNonDigit", [](String const& s, int from) { return s.findNonDigit(from); },
     [](wchar u) { return !reference::isDigit(u); }},
    {"findSignedDigit", [](String const& s, int from) { return s.findSignedDigit(from); },
     [](wchar u) { return reference::isDigit(u) || u == KVW('-'); }},
    {"findNonSignedDigit", [](String const& s, int from) { return s.findNonSignedDigit(from); },
     [](wchar u) { return !reference::isDigit(u) && u != KVW('-'); }},
    {"findNumeric", [](String const& s, int from) { return s.findNumeric(from); }, &reference::isNumeric},
    {"findWS", [](String const& s, int from) { return s.findWS(from); },
     [](wchar u) { return !reference::isGraphic(u); }},
    {"findNonWS", [](String const& s, int from) { return s.findNonWS(from); }, &reference::isGraphic},
};

TEST(StringSearch, EveryUnitIsInItsClasses) {
  for (ClassSearch const& row : kClassSearches) {
    SCOPED_TRACE(row.name);
    for (int unit = 1; unit <= 0xFFFF; ++unit) {
      wchar const text[] = {static_cast<wchar>(unit), 0};
      ASSERT_EQ(row.accepts(text[0]) ? 0 : -1, row.search(String(text, 1), 0)) << "unit " << unit;
    }
  }
}

TEST(StringSearch, ClassSearchesGoByTheLength) {
  wstring const text(
      {KVW('a'), KVW('1'), wchar(0), KVW(' '), KVW('-'), KVW('+'), KVW('.'), KVW('b'), KVW('E'), KVW('0')});
  String const string = stringOf(text);
  int const length = string.length();
  for (ClassSearch const& row : kClassSearches) {
    SCOPED_TRACE(row.name);
    for (int from = 0; from < length; ++from) {
      int expected = from;
      while (expected < length && !row.accepts(text[static_cast<std::size_t>(expected)])) ++expected;
      EXPECT_EQ(expected < length ? expected : -1, row.search(string, from)) << "from " << from;
    }
    for (int const from : {-1, kSmallest, length, length + 1, kLargest}) {
      EXPECT_EQ(row.search(string, from), -1) << "from " << from;
    }
  }
}

TEST(StringSearch, ClassSearchesInRandomTexts) {
  RandomText random(42);
  for (int round = 0; round < kRounds; ++round) {
    wstring const text = random.text(random.below(30), random.oneIn(3) ? RandomUnits::kAnyWithNul : RandomUnits::kFew);
    String const string = stringOf(text);
    int const from = random.between(-2, string.length() + 2);
    for (ClassSearch const& row : kClassSearches)
      ASSERT_EQ(row.search(string, from), reference::findFirst(text, from, row.accepts)) << row.name << ' ' << round;
  }
}

TEST(StringSearch, ClassesByName) {
  struct Row {
    char const* name;
    int found;
    int expected;
  } const rows[] = {
      {"a blank, then a signed number", String(KVW(" -5")).findAlphaNum(0), 1},
      {"a comma is no sign", String(KVW(", ")).findAlphaNum(0), -1},
      {"a full stop counts", String(KVW(",.")).findAlphaNum(0), 1},
      {"a plus counts", String(KVW(",+")).findAlphaNum(0), 1},
      {"none of these", String(KVW("a+1-.,b")).findNonAlphaNum(0), 5},
      {"first letter", String(KVW("12ab")).findAlpha(0), 2},
      {"first non-letter", String(KVW("ab12")).findNonAlpha(0), 2},
      {"a number with exponent", String(KVW("x1e5")).findNumeric(0), 1},
      {"the exponent alone", String(KVW("xe")).findNumeric(0), 1},
      {"a large exponent letter", String(KVW("xE")).findNumeric(0), 1},
      {"no numeric unit", String(KVW("xyz,")).findNumeric(0), -1},
      {"first digit that is not 0", String(KVW("0070")).findDigit(0, KVW('0')), 2},
      {"first digit", String(KVW("a070")).findDigit(0, 0), 1},
      {"digits only", String(KVW("123")).findNonDigit(0), -1},
      {"plus is no signed digit", String(KVW("+-5")).findSignedDigit(0), 1},
      {"plus ends signed digits", String(KVW("-5+")).findNonSignedDigit(0), 2},
      {"a control unit is white here", String(KVW("a\x01")).findWS(0), 1},
      {"first graphic unit",
       String(KVW(" \t\x01"
                  "b"))
           .findNonWS(0),
       3},
  };
  for (Row const& row : rows) EXPECT_EQ(row.expected, row.found) << row.name;
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
