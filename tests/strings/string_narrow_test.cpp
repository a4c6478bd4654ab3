// SPDX-License-Identifier: MIT
//
// Conversion between Strings and narrow text, in both directions and with any code page as the ANSI one.
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

// What every conversion of an empty text returns.
char const* emptyNarrowText() {
  return String::EMPTY.stringUTF8();
}

TEST(StringNarrow, TagsKeepTextAndPage) {
  char const* const bytes = "abc";
  CodePageInterface tag(bytes, 1252);
  EXPECT_EQ(tag.data(), bytes);
  EXPECT_EQ(tag.codePage(), 1252u);

  UTF8Interface const utf8(bytes);
  EXPECT_EQ(utf8.data(), bytes);
  EXPECT_EQ(utf8.codePage(), 65001u);

  CodePageInterface const fromUtf8 = utf8;
  EXPECT_EQ(fromUtf8.codePage(), 65001u);
  tag = fromUtf8;
  EXPECT_EQ(tag.codePage(), 65001u);
  EXPECT_EQ(CodePageInterface(nullptr, 7).data(), nullptr);
}

TEST(StringNarrow, StringsFromTags) {
  EXPECT_EQ(state(String(CodePageInterface(nullptr, 1252))), "NIL");
  EXPECT_EQ(state(String(UTF8Interface(nullptr))), "NIL");
  EXPECT_EQ(state(String(CodePageInterface("abc", 4711))), "NIL") << "no such code page";
  EXPECT_EQ(state(String(UTF8Interface(""))), "\"\"") << "an empty text of its own";
  EXPECT_EQ(state(String(UTF8Interface("abc"))), "\"abc\"");
  EXPECT_EQ(state(String(CodePageInterface("\xE4", 1252))), "\"\xC3\xA4\"");
}

TEST(StringNarrow, PageZeroIsTheAnsiPage) {
  ScriptedText text;
  text.ansi = 1251;
  TextScope scope(text);
  EXPECT_EQ(state(String(CodePageInterface("\xC0", 0))), "\"\xD0\x90\"");
  EXPECT_STREQ(String(UTF8Interface("\xD0\x90")).stringAnsi(), "\xC0");

  text.ansi = 65001;
  EXPECT_EQ(state(String(CodePageInterface("\xD0\x90", 0))), "\"\xD0\x90\"");
  EXPECT_STREQ(String(UTF8Interface("\xD0\x90")).stringAnsi(), "\xD0\x90");

  text.ansi = 4711;
  EXPECT_EQ(state(String(CodePageInterface("abc", 0))), "NIL");
  EXPECT_STREQ(String(KVW("abc")).stringAnsi(), "");
}

TEST(StringNarrow, EmptyTextsShareOneNarrowText) {
  String const own(KVW(""));
  ASSERT_STREQ(emptyNarrowText(), "");
  EXPECT_EQ(String::EMPTY.stringAnsi(), emptyNarrowText());
  EXPECT_EQ(own.stringAnsi(), emptyNarrowText());
  EXPECT_EQ(own.stringUTF8(), emptyNarrowText());
  EXPECT_EQ(own.stringPath(), static_cast<wchar const*>(own));
  EXPECT_EQ(String::EMPTY.stringPath(), static_cast<wchar const*>(String::EMPTY));
}

TEST(StringNarrow, PathIsTheWideTextOnAStringAndAnsiOnAPayload) {
  String const text(KVW("abc"));
  EXPECT_EQ(text.stringPath(), static_cast<wchar const*>(text));
  StringVal* const payload = StringVal::construct(KVW("abc"), -1, -1);
  EXPECT_EQ(payload->stringAnsi(), payload->stringPath());
  EXPECT_STREQ(payload->stringPath(), "abc");
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
  EXPECT_STREQ(ansi, "abc");
  EXPECT_STREQ(utf8, "abc");
  EXPECT_NE(ansi, utf8);

  AllocationFailure allocations(0);
  String const other = string;
  bool const cached = other.stringAnsi() == ansi && string.stringAnsi() == ansi && other.stringUTF8() == utf8;
  allocations.end();
  EXPECT_TRUE(cached) << "the copies belong to the payload";
  EXPECT_EQ(allocations.allocations(), 0);
  EXPECT_EQ(text.calls, calls);
}

TEST(StringNarrow, AWriteMakesBothCopiesStale) {
  String string(KVW("abc"));
  string.stringAnsi();
  string.stringUTF8();
  string[1] = KVW('x');
  EXPECT_STREQ(string.stringAnsi(), "axc");
  EXPECT_STREQ(string.stringUTF8(), "axc");

  // A new conversion after a write drops both stale copies.
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
  EXPECT_EQ(fresh, stale - 1);
  EXPECT_EQ(scope.live(), 0);
}

TEST(StringNarrow, FirstUnitIsLookedAtBeforeTheCache) {
  StringVal* const payload = StringVal::construct(KVW("abc"), -1, -1);
  payload->stringAnsi();
  payload->stringUTF8();
  (*payload)[0] = 0;
  EXPECT_EQ(payload->stringAnsi(), emptyNarrowText());
  EXPECT_EQ(payload->stringUTF8(), emptyNarrowText());
  EXPECT_EQ(payload->lazyLength(), -1) << "the length is not touched";
  wchar& first = (*payload)[0];
  first = KVW('x');
  EXPECT_STREQ(payload->stringAnsi(), "xbc");
  EXPECT_EQ(payload->lazyLength(), 3);
  first = 0;
  EXPECT_EQ(payload->stringAnsi(), emptyNarrowText()) << "the length is known and the copy there";
  payload->unref();

  wchar const units[] = {0, KVW('b')};
  StringVal* const nulFirst = StringVal::construct(units, 2, -1);
  EXPECT_EQ(nulFirst->stringUTF8(), emptyNarrowText());
  EXPECT_EQ(nulFirst->lazyLength(), 2);
  nulFirst->unref();
}

TEST(StringNarrow, InnerNulsBelowTheLengthAreConverted) {
  ScriptedText text;
  text.ansi = 1252;
  TextScope scope(text);
  String const string = stringOf(wstring({KVW('a'), wchar(0), KVW('b')}));
  EXPECT_EQ(std::string("a\0b\0", 4), std::string(string.stringUTF8(), 4));
  EXPECT_EQ(std::string("a\0b\0", 4), std::string(string.stringAnsi(), 4));
}

// The length of such a text is one short, see StringVal::construct.
TEST(StringNarrow, CountedDoubleByteTextIsConvertedWholeAndTerminated) {
  ScriptedText text;
  text.ansi = 932;
  TextScope scope(text);
  std::string const bytes = "\x93\xFA\x96\x7B";
  StringVal* const payload = StringVal::construct(bytes.c_str(), 4, -1);
  EXPECT_EQ(payload->lazyLength(), 1);
  EXPECT_EQ(std::string(payload->stringAnsi(), 5), bytes + '\0');
  EXPECT_STREQ(payload->stringUTF8(), "\xE6\x97\xA5\xE6\x9C\xAC");
  payload->unref();
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
    EXPECT_EQ(first, emptyNarrowText());
    EXPECT_EQ(live, 0) << "nothing is cached";
    EXPECT_EQ(text.calls, failAt);
    EXPECT_STREQ(string.stringAnsi(), "abc");
    EXPECT_EQ(text.calls, failAt + 2);
  }
}

TEST(StringNarrow, CharactersThatThePageLacksAreReplaced) {
  ScriptedText text;
  text.ansi = 1252;
  TextScope scope(text);
  EXPECT_STREQ(String(KVW("a\x65E5"
                          "b"))
                   .stringAnsi(),
               "a?b");
  EXPECT_STREQ(String(KVW("\x00E4\x20AC")).stringAnsi(), "\xE4\x80");
}

TEST(StringNarrow, Utf8ComesBackAsItWas) {
  RandomText random(201);
  for (int round = 0; round < 2000; ++round) {
    // The first conversion replaces lone surrogates and malformed bytes, so that the bytes are valid UTF-8 from here on.
    std::string const bytes = reference::toUtf8(reference::fromUtf8(random.utf8(random.below(200))));
    std::string const visibleBytes = bytes.c_str();
    String const string(UTF8Interface(bytes.c_str()));
    ASSERT_EQ(string.stringUTF8(), visibleBytes) << "round " << round;
    ASSERT_EQ(units(string), reference::fromUtf8(visibleBytes)) << "round " << round;
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
