// SPDX-License-Identifier: MIT
//
// The crossing between Strings and narrow text, both ways, whatever stands behind code page 0.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "kvbase/platform/text_api.h"
#include "kvbase/strings/code_page.h"
#include "tests/reference/string_encoding.h"
#include "tests/strings/string_support.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/random_text.h"
#include "tests/support/scripted_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

using TextScope = platform::ScopedBackend<platform::TextApi>;

// What any call returns that has nothing to convert.
char const* emptyNarrowText() {
  return String::EMPTY.stringUTF8();
}

TEST(StringNarrow, TagsKeepTextAndPage) {
  char const* const bytes = "abc";
  CodePageInterface tag(bytes, 1252);
  EXPECT_EQ(bytes, tag.data());
  EXPECT_EQ(1252u, tag.codePage());

  UTF8Interface const utf8(bytes);
  EXPECT_EQ(bytes, utf8.data());
  EXPECT_EQ(65001u, utf8.codePage());

  CodePageInterface const fromUtf8 = utf8;
  EXPECT_EQ(65001u, fromUtf8.codePage());
  tag = fromUtf8;
  EXPECT_EQ(65001u, tag.codePage());
  EXPECT_EQ(nullptr, CodePageInterface(nullptr, 7).data());
}

TEST(StringNarrow, StringsFromTags) {
  EXPECT_EQ("NIL", state(String(CodePageInterface(nullptr, 1252))));
  EXPECT_EQ("NIL", state(String(UTF8Interface(nullptr))));
  EXPECT_EQ("NIL", state(String(CodePageInterface("abc", 4711)))) << "no such code page";
  EXPECT_EQ("\"\"", state(String(UTF8Interface("")))) << "an empty text of its own";
  EXPECT_EQ("\"abc\"", state(String(UTF8Interface("abc"))));
  EXPECT_EQ("\"\xC3\xA4\"", state(String(CodePageInterface("\xE4", 1252))));
}

TEST(StringNarrow, PageZeroIsTheAnsiPage) {
  ScriptedText text;
  text.ansi = 1251;
  TextScope scope(text);
  EXPECT_EQ("\"\xD0\x90\"", state(String(CodePageInterface("\xC0", 0))));
  EXPECT_STREQ("\xC0", String(UTF8Interface("\xD0\x90")).stringAnsi());

  text.ansi = 65001;
  EXPECT_EQ("\"\xD0\x90\"", state(String(CodePageInterface("\xD0\x90", 0))));
  EXPECT_STREQ("\xD0\x90", String(UTF8Interface("\xD0\x90")).stringAnsi());

  text.ansi = 4711;
  EXPECT_EQ("NIL", state(String(CodePageInterface("abc", 0))));
  EXPECT_STREQ("", String(KVW("abc")).stringAnsi());
}

TEST(StringNarrow, NilHasNoNarrowTextButAPath) {
  EXPECT_EQ(nullptr, String::NIL.stringAnsi());
  EXPECT_EQ(nullptr, String::NIL.stringUTF8());
  ASSERT_NE(nullptr, String::NIL.stringPath());
  EXPECT_EQ(0, *String::NIL.stringPath());
}

TEST(StringNarrow, EmptyTextsShareOneNarrowText) {
  String const own(KVW(""));
  ASSERT_STREQ("", emptyNarrowText());
  EXPECT_EQ(emptyNarrowText(), String::EMPTY.stringAnsi());
  EXPECT_EQ(emptyNarrowText(), own.stringAnsi());
  EXPECT_EQ(emptyNarrowText(), own.stringUTF8());
  EXPECT_EQ(static_cast<wchar const*>(own), own.stringPath());
  EXPECT_EQ(static_cast<wchar const*>(String::EMPTY), String::EMPTY.stringPath());
}

TEST(StringNarrow, PathIsTheWideTextOnAStringAndAnsiOnAPayload) {
  String const text(KVW("abc"));
  EXPECT_EQ(static_cast<wchar const*>(text), text.stringPath());
  StringVal* const payload = StringVal::construct(KVW("abc"), -1, -1);
  EXPECT_EQ(payload->stringAnsi(), payload->stringPath());
  EXPECT_STREQ("abc", payload->stringPath());
  payload->unref();
}

TEST(StringNarrow, ConvertsOnce) {
  ScriptedText text;
  text.ansi = 1252;
  TextScope scope(text);
  String const string(KVW("abc"));
  char const* const ansi = string.stringAnsi();
  char const* const utf8 = string.stringUTF8();
  int const calls = text.calls;
  EXPECT_STREQ("abc", ansi);
  EXPECT_STREQ("abc", utf8);
  EXPECT_NE(ansi, utf8);

  AllocationFailure allocations(0);
  String const other = string;
  bool const cached = other.stringAnsi() == ansi && string.stringAnsi() == ansi && other.stringUTF8() == utf8;
  allocations.end();
  EXPECT_TRUE(cached) << "the copies belong to the payload";
  EXPECT_EQ(0, allocations.allocations());
  EXPECT_EQ(calls, text.calls);
}

TEST(StringNarrow, AWriteMakesBothCopiesStale) {
  String string(KVW("abc"));
  string.stringAnsi();
  string.stringUTF8();
  string[1] = KVW('x');
  EXPECT_STREQ("axc", string.stringAnsi());
  EXPECT_STREQ("axc", string.stringUTF8());

  // Either conversion drops both copies.
  AllocationFailure scope(0);
  String* const counted = new String(KVW("abc"));
  counted->stringAnsi();
  counted->stringUTF8();
  (*counted)[1] = KVW('x');
  int const stale = scope.live();
  counted->stringAnsi();
  int const fresh = scope.live();
  delete counted;
  scope.end();
  EXPECT_EQ(stale - 1, fresh);
  EXPECT_EQ(0, scope.live());
}

TEST(StringNarrow, FirstUnitIsLookedAtBeforeTheCache) {
  StringVal* const payload = StringVal::construct(KVW("abc"), -1, -1);
  payload->stringAnsi();
  payload->stringUTF8();
  (*payload)[0] = 0;
  EXPECT_EQ(emptyNarrowText(), payload->stringAnsi());
  EXPECT_EQ(emptyNarrowText(), payload->stringUTF8());
  EXPECT_EQ(-1, payload->lazyLength()) << "the length is not touched";
  (*payload)[0] = KVW('x');
  EXPECT_STREQ("xbc", payload->stringAnsi());
  EXPECT_EQ(3, payload->lazyLength());
  payload->unref();

  wchar const units[] = {0, KVW('b')};
  StringVal* const nulFirst = StringVal::construct(units, 2, -1);
  EXPECT_EQ(emptyNarrowText(), nulFirst->stringUTF8());
  EXPECT_EQ(2, nulFirst->lazyLength());
  nulFirst->unref();
}

TEST(StringNarrow, InnerNulsBelowTheLengthAreConverted) {
  ScriptedText text;
  text.ansi = 1252;
  TextScope scope(text);
  String const string = make(wstring({KVW('a'), wchar(0), KVW('b')}));
  EXPECT_EQ(std::string("a\0b\0", 4), std::string(string.stringUTF8(), 4));
  EXPECT_EQ(std::string("a\0b\0", 4), std::string(string.stringAnsi(), 4));
}

TEST(StringNarrow, AFailedConversionIsTriedAgain) {
  for (int failAt = 1; failAt <= 2; ++failAt) {
    SCOPED_TRACE(failAt);
    ScriptedText text;
    text.ansi = 1252;
    text.failAt = failAt;
    TextScope scope(text);
    String const string(KVW("abc"));
    AllocationFailure allocations(0);
    char const* const first = string.stringAnsi();
    int const live = allocations.live();
    allocations.end();
    EXPECT_EQ(emptyNarrowText(), first);
    EXPECT_EQ(0, live) << "nothing is cached";
    EXPECT_EQ(failAt, text.calls);
    EXPECT_STREQ("abc", string.stringAnsi());
    EXPECT_EQ(failAt + 2, text.calls);
  }
}

TEST(StringNarrow, CharactersThatThePageLacksAreReplaced) {
  ScriptedText text;
  text.ansi = 1252;
  TextScope scope(text);
  EXPECT_STREQ("a?b", String(KVW("a\x65E5"
                                 "b"))
                          .stringAnsi());
  EXPECT_STREQ("\xE4\x80", String(KVW("\x00E4\x20AC")).stringAnsi());
}

TEST(StringNarrow, NonAsciiIsLongerInUtf8) {
  String const string(KVW("\x00E4\x20AC"));
  EXPECT_EQ(2, string.length());
  EXPECT_STREQ("\xC3\xA4\xE2\x82\xAC", string.stringUTF8());
  EXPECT_GT(std::strlen(string.stringUTF8()), 2u);
}

TEST(StringNarrow, Utf8ComesBackAsItWas) {
  RandomText random(201);
  for (int round = 0; round < 2000; ++round) {
    // Valid UTF-8 is what lone surrogates and malformed bytes become on their first way through.
    std::string const bytes = reference::toUtf8(reference::fromUtf8(random.utf8(random.below(200))));
    std::string const visibleBytes = bytes.c_str();
    String const string(UTF8Interface(bytes.c_str()));
    ASSERT_EQ(visibleBytes, string.stringUTF8()) << "round " << round;
    ASSERT_EQ(reference::fromUtf8(visibleBytes), units(string)) << "round " << round;
  }
}

TEST(StringNarrow, EveryUnitInUtf8) {
  for (int unit = 1; unit <= 0xFFFF; ++unit) {
    wstring const text(1, static_cast<wchar>(unit));
    ASSERT_EQ(reference::toUtf8(text), make(text).stringUTF8()) << "unit " << unit;
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
