// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>

#include "tests/strings/string_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

constexpr int kLimit = 32768;

template <class... Arguments>
std::string printed(wchar const* format, Arguments const&... arguments) {
  String text;
  text.printf(format, arguments...);
  return state(text);
}

TEST(StringPrintf, FormatsWithoutArguments) {
  EXPECT_EQ(printed(KVW("a text")), "\"a text\"");
  EXPECT_EQ(printed(KVW("100%%")), "\"100%\"");
  EXPECT_EQ(printed(KVW("")), "\"\"") << "an empty text, not NIL";
}

TEST(StringPrintf, StringsArePrintedByLs) {
  EXPECT_EQ(printed(KVW("<%ls>"), String(KVW("ab"))), "\"<ab>\"");
  EXPECT_EQ(printed(KVW("<%ls>"), String::NIL), "\"<>\"");
  EXPECT_EQ(printed(KVW("<%ls>"), String::EMPTY), "\"<>\"");
  EXPECT_EQ(printed(KVW("%ls %ls %ls"), String(KVW("ab")), KVW("cd"), String(KVW("ef"))), "\"ab cd ef\"");
  EXPECT_EQ(printed(KVW("<%ls>"), stringOf(wstring({KVW('a'), wchar(0), KVW('b')}))), "\"<a>\"")
      << "up to the first NUL";
  EXPECT_EQ(printed(KVW("[%4ls][%-4ls][%.1ls]"), String(KVW("ab")), KVW("ab"), KVW("ab")), "\"[  ab][ab  ][a]\"");
  EXPECT_EQ(printed(KVW("%ls"), KVW("\x00E4\x20AC")), "\"\xC3\xA4\xE2\x82\xAC\"");
}

enum Colour { kRed = 3 };

TEST(StringPrintf, NumbersArePassedAsTheyAre) {
  EXPECT_EQ(printed(KVW("%ls: %08x"), String(KVW("scan001")), 255), "\"scan001: 000000ff\"");
  EXPECT_EQ(printed(KVW("%d %u %x"), -5, 5u, 0xFFFFFFFFu), "\"-5 5 ffffffff\"");
  EXPECT_EQ(printed(KVW("%lld"), -5000000000ll), "\"-5000000000\"");
  EXPECT_EQ(printed(KVW("%I64d"), -5000000000ll), "\"-5000000000\"");
  EXPECT_EQ(printed(KVW("%.2f"), 1.5), "\"1.50\"");
  EXPECT_EQ(printed(KVW("%.2f"), 1.5f), "\"1.50\"");
  EXPECT_EQ(printed(KVW("%.2Lf %d"), 1.5L, 7), "\"1.50 7\"");
  EXPECT_EQ(printed(KVW("%d %d"), static_cast<short>(7), true), "\"7 1\"");
  EXPECT_EQ(printed(KVW("%d"), kRed), "\"3\"");
  EXPECT_EQ(printed(KVW("%c"), static_cast<int>(KVW('x'))), "\"x\"");
  EXPECT_EQ(printed(KVW("%ld"), -1L), "\"-1\"") << "l means 32 bits";
}

TEST(StringPrintf, TheReceiverMayBeAnArgument) {
  String text(KVW("ab"));
  String const other = text;
  text.printf(KVW("<%ls|%ls>"), text, text);
  EXPECT_EQ(state(text), "\"<ab|ab>\"");
  EXPECT_EQ(state(other), "\"ab\"");

  String nil;
  nil.printf(KVW("<%ls>"), nil);
  EXPECT_EQ(state(nil), "\"<>\"");
}

TEST(StringPrintf, TheOldTextTakesNoPart) {
  String text(KVW("something long"));
  text.printf(KVW("%d"), 1);
  EXPECT_EQ(state(text), "\"1\"");
  text.printf(KVW(""));
  EXPECT_EQ(state(text), "\"\"");
}

TEST(StringPrintf, LongTextsAreCut) {
  struct Row {
    char const* name;
    int argument;
    int expected;
  } const rows[] = {
      {"one short of the limit", kLimit - 1, kLimit - 1},
      {"the limit", kLimit, kLimit},
      {"one too long", kLimit + 1, kLimit},
      {"much too long", 40000, kLimit},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    String text;
    text.printf(KVW("%ls"), String(KVW('x'), row.argument));
    EXPECT_EQ(text.length(), row.expected);
    EXPECT_TRUE(text == String(KVW('x'), row.expected));
    text.printf(KVW("%ls%ls"), String(KVW('y'), 3), String(KVW('x'), row.argument));
    EXPECT_EQ(text.length(), row.argument + 3 < kLimit ? row.argument + 3 : kLimit);
    EXPECT_TRUE(text.startsWith(String(KVW("yyyx"))));
  }
  String text;
  text.printf(KVW("%40000d"), 1);
  EXPECT_TRUE(text == String(KVW(' '), kLimit)) << "a width counts as well";
  text.printf(String(KVW('f'), 40000));
  EXPECT_TRUE(text == String(KVW('f'), kLimit)) << "so does the format itself";
}

TEST(StringPrintf, APrintedNulEndsTheText) {
  EXPECT_EQ(printed(KVW("a%cb"), 0), "\"a\"");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
