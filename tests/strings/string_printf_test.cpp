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
  EXPECT_EQ("\"a text\"", printed(KVW("a text")));
  EXPECT_EQ("\"100%\"", printed(KVW("100%%")));
  EXPECT_EQ("\"\"", printed(KVW(""))) << "an empty text, not NIL";
}

TEST(StringPrintf, StringsArePrintedByLs) {
  EXPECT_EQ("\"<ab>\"", printed(KVW("<%ls>"), String(KVW("ab"))));
  EXPECT_EQ("\"<>\"", printed(KVW("<%ls>"), String::NIL));
  EXPECT_EQ("\"<>\"", printed(KVW("<%ls>"), String::EMPTY));
  EXPECT_EQ("\"ab cd ef\"", printed(KVW("%ls %ls %ls"), String(KVW("ab")), KVW("cd"), String(KVW("ef"))));
  EXPECT_EQ("\"<a>\"", printed(KVW("<%ls>"), make(wstring({KVW('a'), wchar(0), KVW('b')})))) << "up to the first NUL";
  EXPECT_EQ("\"[  ab][ab  ][a]\"", printed(KVW("[%4ls][%-4ls][%.1ls]"), String(KVW("ab")), KVW("ab"), KVW("ab")));
  EXPECT_EQ("\"\xC3\xA4\xE2\x82\xAC\"", printed(KVW("%ls"), KVW("\x00E4\x20AC")));
}

enum Colour { kRed = 3 };

TEST(StringPrintf, NumbersArePassedAsTheyAre) {
  EXPECT_EQ("\"scan001: 000000ff\"", printed(KVW("%ls: %08x"), String(KVW("scan001")), 255));
  EXPECT_EQ("\"-5 5 ffffffff\"", printed(KVW("%d %u %x"), -5, 5u, 0xFFFFFFFFu));
  EXPECT_EQ("\"-5000000000\"", printed(KVW("%lld"), -5000000000ll));
  EXPECT_EQ("\"-5000000000\"", printed(KVW("%I64d"), -5000000000ll));
  EXPECT_EQ("\"1.50\"", printed(KVW("%.2f"), 1.5));
  EXPECT_EQ("\"1.50\"", printed(KVW("%.2f"), 1.5f));
  EXPECT_EQ("\"7 1\"", printed(KVW("%d %d"), static_cast<short>(7), true));
  EXPECT_EQ("\"3\"", printed(KVW("%d"), kRed));
  EXPECT_EQ("\"x\"", printed(KVW("%c"), static_cast<int>(KVW('x'))));
  EXPECT_EQ("\"-1\"", printed(KVW("%ld"), -1L)) << "l means 32 bits";
}

TEST(StringPrintf, TheReceiverMayBeAnArgument) {
  String text(KVW("ab"));
  String const other = text;
  text.printf(KVW("<%ls|%ls>"), text, text);
  EXPECT_EQ("\"<ab|ab>\"", state(text));
  EXPECT_EQ("\"ab\"", state(other));

  String nil;
  nil.printf(KVW("<%ls>"), nil);
  EXPECT_EQ("\"<>\"", state(nil));
}

TEST(StringPrintf, TheOldTextTakesNoPart) {
  String text(KVW("something long"));
  text.printf(KVW("%d"), 1);
  EXPECT_EQ("\"1\"", state(text));
  text.printf(KVW(""));
  EXPECT_EQ("\"\"", state(text));
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
    EXPECT_EQ(row.expected, text.length());
    EXPECT_TRUE(text == String(KVW('x'), row.expected));
    text.printf(KVW("%ls%ls"), String(KVW('y'), 3), String(KVW('x'), row.argument));
    EXPECT_EQ(row.argument + 3 < kLimit ? row.argument + 3 : kLimit, text.length());
    EXPECT_TRUE(text.startsWith(String(KVW("yyyx"))));
  }
  String text;
  text.printf(KVW("%40000d"), 1);
  EXPECT_TRUE(text == String(KVW(' '), kLimit)) << "a width counts as well";
  text.printf(String(KVW('f'), 40000));
  EXPECT_TRUE(text == String(KVW('f'), kLimit)) << "so does the format itself";
}

TEST(StringPrintf, APrintedNulEndsTheText) {
  EXPECT_EQ("\"a\"", printed(KVW("a%cb"), 0));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
