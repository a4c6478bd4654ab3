// SPDX-License-Identifier: MIT
//
// Taking numbers from the front of a text: tables of texts, values and what remains.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/strings/string_support.h"
#include "tests/support/comma_locale.h"

namespace KV_1_1 {
namespace testing {
namespace {

template <class T>
struct Row {
  char const* name;
  wchar const* text;
  T value;
  wchar const* rest;
};

template <class T, std::size_t N>
void expectTaken(Row<T> const (&rows)[N]) {
  for (Row<T> const& row : rows) {
    SCOPED_TRACE(row.name);
    String string(row.text);
    String const holder = string;
    T value = static_cast<T>(77);
    EXPECT_EQ(&(string >> value), &string) << "the receiver is returned";
    EXPECT_EQ(value, row.value);
    EXPECT_EQ(spelled(textOf(string)), spelled(Text(row.rest)));
    EXPECT_EQ(spelled(holder), spelled(String(row.text))) << "another holder keeps its text";
  }
}

template <class T>
void expectNothingTaken() {
  for (wchar const* const text : {KVW(" \t\n "), KVW(",;/")}) {
    String string(text);
    T value = static_cast<T>(1);
    string >> value;
    EXPECT_EQ(value, T());
    EXPECT_EQ(state(string), "EMPTY");
  }
}
template <class... Types>
void expectNothingTakenAs() {
  (expectNothingTaken<Types>(), ...);
}

TEST(StringParse, NothingToTake) {
  expectNothingTakenAs<signed char, unsigned char, short, unsigned short, int, unsigned int, long, unsigned long>();
  expectNothingTakenAs<long long, unsigned long long, float, double, bool>();
}

TEST(StringParse, Int) {
  Row<int> const rows[] = {
      {"the first of two", KVW("12 34"), 12, KVW(" 34")},
      {"behind a blank", KVW(" 34"), 34, KVW("")},
      {"a leading plus stays", KVW("+5 7"), 5, KVW("+5 7")},
      {"a leading minus", KVW("-5 7"), -5, KVW(" 7")},
      {"a word stays", KVW("abc"), 0, KVW("abc")},
      {"separators before a word go", KVW(" ,abc"), 0, KVW("abc")},
      {"minus signs inside go", KVW("5-3"), 5, KVW("")},
      {"minus signs behind go", KVW("5-- x"), 5, KVW(" x")},
      {"two minus signs are no number", KVW("--5 x"), 0, KVW(" x")},
      {"a fraction stays", KVW("1.5"), 1, KVW(".5")},
      {"a full stop in front stays", KVW(".5"), 0, KVW(".5")},
      {"a minus sign alone", KVW("- 5"), 0, KVW(" 5")},
      {"a plus sign alone", KVW("+ 5"), 0, KVW("+ 5")},
      {"a letter behind", KVW("12ab"), 12, KVW("ab")},
      {"nine digits", KVW("999999999 x"), 999999999, KVW(" x")},
      {"ten digits", KVW("1000000000 x"), 1000000000, KVW(" x")},
      {"the largest", KVW("2147483647"), 2147483647, KVW("")},
      {"above the largest", KVW("2147483648,"), 2147483647, KVW(",")},
      {"the smallest", KVW("-2147483648"), std::numeric_limits<int>::min(), KVW("")},
      {"below the smallest", KVW("-2147483649"), std::numeric_limits<int>::min(), KVW("")},
      {"beyond 64 bits", KVW("99999999999999999999 x"), 2147483647, KVW(" x")},
      {"far below", KVW("-99999999999999999999"), std::numeric_limits<int>::min(), KVW("")},
      {"Arabic digits", KVW("\u0661\u0662 x"), 12, KVW(" x")},
      {"full-width digits", KVW("-\uFF11\uFF12"), -12, KVW("")},
      {"digits of two scripts", KVW("1\u0662\uFF13"), 123, KVW("")},
      {"a superscript has no value, but is consumed", KVW("\u00B2 x"), 0, KVW(" x")},
      {"a superscript ends the number, but is consumed", KVW("5\u00B3 x"), 5, KVW(" x")},
      {"a letter beyond ASCII stays", KVW("\u00E9"), 0, KVW("\u00E9")},
  };
  expectTaken(rows);
}

// One after the other until nothing remains.
TEST(StringParse, IntsInARow) {
  String string(KVW("12 34"));
  int value = 0;
  string >> value;
  EXPECT_EQ(value, 12);
  EXPECT_EQ(spelled(string), "\" 34\"");
  string >> value;
  EXPECT_EQ(value, 34);
  EXPECT_TRUE(shares(string, String::EMPTY));
  string >> value;
  EXPECT_EQ(value, 0);
}

TEST(StringParse, SmallTypesTakeTheLowBitsOfAnInt) {
  Row<short> const shorts[] = {
      {"plain", KVW("-123 x"), -123, KVW(" x")},
      {"low 16 bits", KVW("65537"), 1, KVW("")},
      {"low bits are signed", KVW("32768"), -32768, KVW("")},
      {"saturated as an int", KVW("99999999999"), -1, KVW("")},
      {"saturated below", KVW("-99999999999"), 0, KVW("")},
      {"a plus stays", KVW("+5"), 5, KVW("+5")},
  };
  expectTaken(shorts);
  Row<unsigned short> const unsignedShorts[] = {
      {"plain", KVW("123 x"), 123, KVW(" x")},
      {"negative", KVW("-1"), 65535, KVW("")},
      {"low 16 bits", KVW("65536"), 0, KVW("")},
      {"saturated as an int, not as an unsigned", KVW("4294967295"), 65535, KVW("")},
      {"a plus stays, as with an int", KVW("+5"), 5, KVW("+5")},
  };
  expectTaken(unsignedShorts);
  Row<signed char> const chars[] = {
      {"a number, not a letter", KVW("65 x"), 65, KVW(" x")},
      {"low 8 bits", KVW("257"), 1, KVW("")},
      {"low bits are signed", KVW("255"), -1, KVW("")},
      {"negative", KVW("-128"), -128, KVW("")},
      {"a letter stays", KVW("A"), 0, KVW("A")},
  };
  expectTaken(chars);
  Row<unsigned char> const unsignedChars[] = {
      {"plain", KVW("255 x"), 255, KVW(" x")},         {"low 8 bits", KVW("256"), 0, KVW("")},
      {"negative", KVW("-1 x"), 255, KVW(" x")},       {"a plus goes, as with an unsigned int", KVW("+5"), 5, KVW("")},
      {"saturated", KVW("99999999999"), 255, KVW("")},
  };
  expectTaken(unsignedChars);
}

TEST(StringParse, LongHas32Bits) {
  Row<long> const rows[] = {
      {"plain", KVW("-12 x"), -12, KVW(" x")},
      {"the largest", KVW("2147483647"), 2147483647, KVW("")},
      {"low 32 bits, signed", KVW("2147483648"), -2147483647 - 1, KVW("")},
      {"low 32 bits", KVW("4294967297"), 1, KVW("")},
      {"all of them", KVW("4294967295"), -1, KVW("")},
      {"negative", KVW("-4294967297"), -1, KVW("")},
      {"saturated at 64 bits", KVW("99999999999999999999"), -1, KVW("")},
      {"saturated below", KVW("-99999999999999999999"), 0, KVW("")},
      {"a plus stays", KVW("+5 7"), 5, KVW("+5 7")},
  };
  expectTaken(rows);
}

TEST(StringParse, LongLong) {
  using Limits = std::numeric_limits<long long>;
  Row<long long> const rows[] = {
      {"plain", KVW("-12 x"), -12, KVW(" x")},
      {"the largest", KVW("9223372036854775807"), Limits::max(), KVW("")},
      {"above it", KVW("9223372036854775808"), Limits::max(), KVW("")},
      {"the smallest", KVW("-9223372036854775808"), Limits::min(), KVW("")},
      {"below it", KVW("-9223372036854775809"), Limits::min(), KVW("")},
      {"far above", KVW("99999999999999999999999 x"), Limits::max(), KVW(" x")},
      {"beyond 32 bits", KVW("4294967297"), 4294967297, KVW("")},
      {"minus signs inside", KVW("5-3"), 5, KVW("")},
      {"a plus stays", KVW("+5"), 5, KVW("+5")},
      {"Arabic digits", KVW("\u0661\u0662"), 12, KVW("")},
  };
  expectTaken(rows);
}

TEST(StringParse, UnsignedInt) {
  Row<unsigned int> const rows[] = {
      {"behind a blank", KVW(" 5 x"), 5, KVW(" x")},
      {"a plus goes", KVW("+5 7"), 5, KVW(" 7")},
      {"-1 is the largest", KVW("-1 x"), 4294967295u, KVW(" x")},
      {"negative numbers wrap", KVW("-4294967295"), 1, KVW("")},
      {"the largest", KVW("4294967295"), 4294967295u, KVW("")},
      {"above it", KVW("4294967296 x"), 4294967295u, KVW(" x")},
      {"far above", KVW("99999999999999999999999 x"), 4294967295u, KVW(" x")},
      {"too large with a minus", KVW("-4294967296"), 4294967295u, KVW("")},
      {"a word stays", KVW("abc"), 0, KVW("abc")},
      {"separators before a word go", KVW("  abc"), 0, KVW("abc")},
      {"a second minus stays", KVW("5-3"), 5, KVW("-3")},
      {"a sign alone stays", KVW(" - 5"), 0, KVW("- 5")},
      {"two signs stay", KVW("+-5"), 0, KVW("+-5")},
      {"a fraction stays", KVW("1.5"), 1, KVW(".5")},
      {"full-width digits", KVW("\uFF11\uFF12x"), 12, KVW("x")},
      {"Arabic digits", KVW("\u0661\u0662x"), 12, KVW("x")},
      {"a superscript stays", KVW("5\u00B2"), 5, KVW("\u00B2")},
      {"a superscript alone stays", KVW(" \u00B2"), 0, KVW("\u00B2")},
      {"all of it", KVW("  17"), 17, KVW("")},
  };
  expectTaken(rows);
}

template <class T>
void expectSizeFault(T largest) {
  struct FaultRow {
    Row<T> row;
    int dropped;
  };
  FaultRow const rows[] = {
      {{"nothing dropped", KVW("5 x"), 5, KVW(" x")}, 0},
      {{"nothing dropped, all of it", KVW("17"), 17, KVW("")}, 0},
      {{"one unit dropped", KVW(" 5 x"), 5, KVW(" x")}, 1},
      {{"one unit dropped, all of it", KVW(" 17"), 17, KVW("")}, 1},
      {{"two units dropped", KVW("  5 x"), 5, KVW(" x")}, 2},
      {{"two units dropped, all of it", KVW("  5"), 5, KVW("")}, 2},
      {{"more dropped than there were", KVW("          5x"), 5, KVW("x")}, 10},
      {{"a word", KVW("   abc"), 0, KVW("abc")}, 3},
      {{"-1", KVW("  -1 x"), largest, KVW(" x")}, 2},
      {{"a plus", KVW(" +5 x"), 5, KVW(" x")}, 1},
      {{"too large", KVW(",,99999999999999999999999 x"), largest, KVW(" x")}, 2},
      {{"Arabic digits", KVW("  \u0661\u0662 x"), 12, KVW(" x")}, 2},
  };
  for (FaultRow const& fault : rows) {
    SCOPED_TRACE(fault.row.name);
    String string(fault.row.text);
    String const holder = string;
    T value = 77;
    string >> value;
    EXPECT_EQ(value, fault.row.value);
    EXPECT_EQ(spelled(textOf(string)), spelled(Text(fault.row.rest)));
    // COMPAT: the stored length is too large by what was dropped in front; a single surplus unit is the old terminator, which
    // the rule for sizes drops.
    int const surplus = fault.dropped == 1 ? 0 : fault.dropped;
    EXPECT_EQ(string.length(), static_cast<int>(wstring(fault.row.rest).size()) + surplus);
    EXPECT_EQ(spelled(holder), spelled(String(fault.row.text)));
    // A copy built from the text alone has the right length.
    EXPECT_EQ(spelled(String(static_cast<wchar const*>(string))), spelled(Text(fault.row.rest)));
  }
}

TEST(StringParse, UnsignedLongKeepsTheSizeFault) {
  expectSizeFault<unsigned long>(4294967295ul);
}

TEST(StringParse, UnsignedLongLongKeepsTheSizeFault) {
  expectSizeFault<unsigned long long>(18446744073709551615ull);
}

TEST(StringParse, TheSizeFaultShowsInComparisons) {
  String exact(KVW("  5 x"));
  unsigned int value = 0;
  exact >> value;
  EXPECT_TRUE(exact.compareEquality(static_cast<String const&>(String(KVW(" x")))));
  String overshooting(KVW("  5 x"));
  unsigned long longValue = 0;
  overshooting >> longValue;
  String const plain(KVW(" x"));
  EXPECT_EQ(static_cast<String const&>(overshooting).compare(plain), 0);
  EXPECT_FALSE(static_cast<String const&>(overshooting).compareEquality(plain)) << "known lengths that differ";
}

TEST(StringParse, UnsignedLongAndLongLong) {
  Row<unsigned long> const longs[] = {
      {"saturates at 32 bits", KVW("4294967296"), 4294967295ul, KVW("")},
      {"negative numbers wrap in 32 bits", KVW("-2"), 4294967294ul, KVW("")},
      {"the largest", KVW("4294967295"), 4294967295ul, KVW("")},
  };
  expectTaken(longs);
  Row<unsigned long long> const longLongs[] = {
      {"the largest", KVW("18446744073709551615"), 18446744073709551615ull, KVW("")},
      {"saturates at 64 bits", KVW("18446744073709551616 x"), 18446744073709551615ull, KVW(" x")},
      {"negative numbers wrap", KVW("-2"), 18446744073709551614ull, KVW("")},
      {"the smallest that wraps", KVW("-18446744073709551615"), 1, KVW("")},
      {"too large with a minus", KVW("-18446744073709551616"), 18446744073709551615ull, KVW("")},
      {"beyond 32 bits", KVW("4294967296"), 4294967296ull, KVW("")},
      {"full-width digits", KVW("\uFF14\uFF12"), 42, KVW("")},
  };
  expectTaken(longLongs);
}

TEST(StringParse, Double) {
  double const infinity = std::numeric_limits<double>::infinity();
  Row<double> const rows[] = {
      {"with an exponent", KVW("1.5e3 x"), 1500, KVW(" x")},
      {"behind a blank", KVW("  2.5"), 2.5, KVW("")},
      {"signs", KVW("-2.5+3"), -2.5, KVW("+3")},
      {"a plus goes", KVW("+2.5"), 2.5, KVW("")},
      {"a full stop in front", KVW(".5 x"), 0.5, KVW(" x")},
      {"a full stop behind", KVW("5. x"), 5, KVW(" x")},
      {"a full stop alone", KVW(" . x"), 0, KVW(". x")},
      {"a sign alone", KVW("- x"), 0, KVW("- x")},
      {"an exponent without digits", KVW("1e+ x"), 1, KVW("e+ x")},
      {"a word stays", KVW(",word"), 0, KVW("word")},
      {"a comma ends", KVW("1,5"), 1, KVW(",5")},
      {"hexadecimal", KVW("0x1p3 x"), 8, KVW(" x")},
      {"hexadecimal without digits", KVW("0x x"), 0, KVW("x x")},
      {"inf", KVW("inf x"), infinity, KVW(" x")},
      {"-INFINITY", KVW("-INFINITY x"), -infinity, KVW(" x")},
      {"inf and letters", KVW("infi"), infinity, KVW("i")},
      {"overflow", KVW("1e999 x"), infinity, KVW(" x")},
      {"underflow", KVW("1e-999 x"), 0, KVW(" x")},
      {"the smallest", KVW("4.9406564584124654e-324"), std::numeric_limits<double>::denorm_min(), KVW("")},
      {"the largest", KVW("1.7976931348623157e308"), std::numeric_limits<double>::max(), KVW("")},
      {"a tie to even", KVW("9007199254740993"), 9007199254740992.0, KVW("")},
      {"Arabic digits are none here", KVW("\u0661"), 0, KVW("\u0661")},
      {"full-width digits are none here", KVW("1\uFF12"), 1, KVW("\uFF12")},
      {"d is no exponent", KVW("1d3"), 1, KVW("d3")},
  };
  expectTaken(rows);

  String string(KVW("-nan x"));
  double value = 0;
  string >> value;
  EXPECT_TRUE(std::isnan(value));
  EXPECT_EQ(spelled(string), "\" x\"");
}

// What is written with the locale's decimal point is read with it.
TEST(StringParse, TheDecimalPointIsThatOfTheLocale) {
  CommaLocale const locale;
  String written;
  written << 2.5 << KVW(' ') << -1.5e-7f << KVW(' ') << 1e20 / 3;
  EXPECT_EQ(spelled(written), "\"2,5 -1,5e-07 33333333333333331968\"");
  Row<double> const rows[] = {
      {"a comma", KVW("1,5 x"), 1.5, KVW(" x")},
      {"a full stop ends", KVW("1.5"), 1, KVW(".5")},
      {"a full stop ends what follows a comma", KVW("1,5.5"), 1.5, KVW(".5")},
      {"a second comma ends", KVW("-1,25,5"), -1.25, KVW(",5")},
      {"with an exponent", KVW("+1,5e3 x"), 1500, KVW(" x")},
      {"a comma behind", KVW("5, x"), 5, KVW(" x")},
      {"hexadecimal", KVW("0x1,8p1"), 3, KVW("")},
      {"overflow", KVW("1,5e999"), std::numeric_limits<double>::infinity(), KVW("")},
      {"a word stays", KVW("word"), 0, KVW("word")},
      {"a full stop in front is no number", KVW(".5"), 0, KVW(".5")},
  };
  expectTaken(rows);
}

TEST(StringParse, FloatNarrowsADouble) {
  Row<float> const rows[] = {
      {"plain", KVW("1.5e3 x"), 1500, KVW(" x")},
      {"rounded twice", KVW("1.000000059604644775390625000001"), 1.0f, KVW("")},
      {"overflow", KVW("1e39"), std::numeric_limits<float>::infinity(), KVW("")},
      {"underflow", KVW("-1e-60"), -0.0f, KVW("")},
      {"a word stays", KVW("x"), 0, KVW("x")},
  };
  expectTaken(rows);
}

// A double that takes the whole text leaves an empty text with a payload of its own, not EMPTY.
TEST(StringParse, WhatRemainsOfADoubleIsFresh) {
  String string(KVW("1.5"));
  double value = 0;
  string >> value;
  EXPECT_EQ(string.length(), 0);
  EXPECT_FALSE(isNil(string));
  EXPECT_FALSE(shares(string, String::EMPTY));
}

TEST(StringParse, AWordThatIsNoNumberLeavesACopy) {
  String string(KVW("abc"));
  String const holder = string;
  int value = 1;
  string >> value;
  EXPECT_EQ(spelled(string), "\"abc\"");
  EXPECT_FALSE(shares(string, holder)) << "what remains is a new payload";
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
