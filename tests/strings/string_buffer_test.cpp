// SPDX-License-Identifier: MIT
//
// The scoped array through which outside calls fill a String.
#include <gtest/gtest.h>

#include <cstring>

#include "kvbase/platform/text_api.h"
#include "tests/strings/string_support.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/scripted_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

void copy(wstring const& text, wchar* to) {
  std::memcpy(to, text.c_str(), (text.size() + 1) * sizeof(wchar));
}

TEST(StringBuffer, WithoutAnArrayNothingHappens) {
  for (bool const keep : {false, true}) {
    for (String const& text : {String(), String::EMPTY, String(KVW("abc"))}) {
      SCOPED_TRACE(state(text));
      String target = text;
      AllocationFailure scope(0);
      { StringBuffer const buffer = target.buffer(10, keep); }
      { StringBuffer const buffer = target.buffer(0, keep); }
      scope.end();
      EXPECT_EQ(scope.allocations(), 0);
      EXPECT_EQ(state(target), state(text));
      EXPECT_TRUE(isNil(text) || shares(text, target));
    }
  }
}

TEST(StringBuffer, NothingWrittenGivesAnEmptyText) {
  for (String const& text : {String(), String::EMPTY, String(KVW("abc"))}) {
    for (int const size : {0, 1, 10}) {
      SCOPED_TRACE(state(text));
      String wide = text;
      static_cast<void>(static_cast<wchar*>(wide.buffer(size, false)));
      EXPECT_EQ(state(wide), "\"\"");
      String narrow = text;
      static_cast<void>(static_cast<char*>(narrow.buffer(size, false)));
      EXPECT_EQ(state(narrow), "\"\"");
    }
  }
}

TEST(StringBuffer, TextIsCommittedUpToTheFirstNul) {
  struct Row {
    char const* name;
    wstring written;
    char const* expected;
  } const rows[] = {
      {"text", KVW("abcd"), "\"abcd\""},
      {"as long as the array", KVW("abcdefghij"), "\"abcdefghij\""},
      {"NUL at the front", wstring({wchar(0), KVW('b')}), "\"\""},
      {"NUL inside", wstring({KVW('a'), wchar(0), KVW('b')}), "\"a\""},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    String target(KVW("old"));
    String const other = target;
    {
      StringBuffer buffer = target.buffer(10, false);
      wchar* const array = buffer;
      EXPECT_EQ(array[0], 0);
      EXPECT_EQ(array[10], 0);
      copy(row.written, array);
      EXPECT_TRUE(shares(target, other)) << "the target is left alone until the end";
    }
    EXPECT_EQ(state(target), row.expected);
    EXPECT_EQ(state(other), "\"old\"");
  }
}

TEST(StringBuffer, TheLastPlaceIsANulAlready) {
  String target;
  {
    StringBuffer buffer = target.buffer(5, false);
    wchar* const array = buffer;
    for (int i = 0; i < 5; ++i) array[i] = KVW('x');
  }
  EXPECT_EQ(state(target), "\"xxxxx\"");
  {
    StringBuffer buffer = target.buffer(5, false);
    char* const array = buffer;
    for (int i = 0; i < 5; ++i) array[i] = 'y';
  }
  EXPECT_EQ(state(target), "\"yyyyy\"");
}

TEST(StringBuffer, KeepStartsWithTheText) {
  String target(KVW("abc"));
  String const other = target;
  {
    StringBuffer buffer = target.buffer(10, true);
    wchar* const array = buffer;
    EXPECT_EQ(wstring(KVW("abc")), wstring(array));
    array[3] = KVW('d');
    array[4] = 0;
  }
  EXPECT_EQ(state(target), "\"abcd\"");
  EXPECT_EQ(state(other), "\"abc\"");
  {
    StringBuffer buffer = target.buffer(10, true);
    char* const array = buffer;
    EXPECT_STREQ(array, "abcd");
    array[0] = 'x';
  }
  EXPECT_EQ(state(target), "\"xbcd\"");
}

TEST(StringBuffer, KeepUntouchedGivesTheSameTextInANewPayload) {
  String target(KVW("abc"));
  String const other = target;
  static_cast<void>(static_cast<wchar*>(target.buffer(0, true)));
  EXPECT_EQ(state(target), "\"abc\"");
  EXPECT_FALSE(shares(target, other));
}

TEST(StringBuffer, KeepRaisesTheSizeToTheText) {
  for (int const size : {-1, 0, 2, 5}) {
    SCOPED_TRACE(size);
    String target(KVW("abcde"));
    {
      StringBuffer buffer = target.buffer(size, true);
      wchar* const array = buffer;
      EXPECT_EQ(wstring(KVW("abcde")), wstring(array));
      for (int i = 0; i < 5; ++i) array[i] = KVW('x');
      EXPECT_EQ(array[5], 0);
    }
    EXPECT_EQ(state(target), "\"xxxxx\"");
  }
  String target(KVW("abcde"));
  target[2] = 0;  // the raised size is that of the measured text
  {
    StringBuffer buffer = target.buffer(1, true);
    wchar* const array = buffer;
    EXPECT_EQ(wstring(KVW("ab")), wstring(array));
  }
  EXPECT_EQ(state(target), "\"ab\"");
}

// The size counts units, and the narrow text has more bytes here.
TEST(StringBuffer, AKeptNarrowTextIsCutToTheSize) {
  ScriptedText text;
  text.ansi = 65001;
  platform::ScopedBackend<platform::TextApi> scope(text);
  String target(UTF8Interface("\xC3\xA4\xC3\xB6\xC3\xBC"));
  {
    StringBuffer buffer = target.buffer(4, true);
    char const* const array = buffer;
    EXPECT_STREQ(array, "\xC3\xA4\xC3\xB6");
  }
  EXPECT_EQ(state(target), "\"\xC3\xA4\xC3\xB6\"");
}

TEST(StringBuffer, OnlyTheLastArrayCounts) {
  ScriptedText text;
  text.ansi = 1252;
  platform::ScopedBackend<platform::TextApi> scope(text);
  String target(KVW("old"));
  {
    StringBuffer buffer = target.buffer(5, false);
    copy(KVW("wide"), buffer);
    std::strcpy(buffer, "n\xE4");
  }
  EXPECT_EQ(state(target), "\"n\xC3\xA4\"");
  {
    StringBuffer buffer = target.buffer(5, false);
    std::strcpy(buffer, "first");
    copy(KVW("wide"), buffer);
  }
  EXPECT_EQ(state(target), "\"wide\"");
  {
    StringBuffer buffer = target.buffer(5, false);
    copy(KVW("first"), buffer);
    static_cast<void>(static_cast<wchar*>(buffer));
  }
  EXPECT_EQ(state(target), "\"\"");
  {
    StringBuffer buffer = target.buffer(5, true);
    copy(KVW("gone"), buffer);
    wchar* const second = buffer;
    EXPECT_EQ(wstring(), wstring(second)) << "the target is still empty";
  }
  EXPECT_EQ(state(target), "\"\"");
}

TEST(StringBuffer, NarrowTextIsDecodedInTheAnsiPage) {
  ScriptedText text;
  text.ansi = 1251;
  platform::ScopedBackend<platform::TextApi> scope(text);
  String target;
  std::strcpy(target.buffer(10, false), "\xC0\xFF");
  EXPECT_EQ(state(target), "\"\xD0\x90\xD1\x8F\"");

  text.ansi = 932;
  std::strcpy(target.buffer(10, false), "\x93\xFA\x96\x7B");
  EXPECT_EQ(state(target), "\"\xE6\x97\xA5\xE6\x9C\xAC\"") << "exact, being measured";

  text.ansi = 4711;
  std::strcpy(target.buffer(10, false), "abc");
  EXPECT_EQ(state(target), "NIL") << "a failed conversion";
}

TEST(StringBuffer, ACopyHasNoArrayOfItsOwn) {
  String target(KVW("old"));
  {
    StringBuffer const first = target.buffer(5, false);
    StringBuffer second(first);
    copy(KVW("copy"), second);
  }
  EXPECT_EQ(state(target), "\"copy\"");
  {
    StringBuffer first = target.buffer(5, false);
    copy(KVW("first"), first);
    { StringBuffer const second(first); }
    EXPECT_EQ(state(target), "\"copy\"") << "a copy without array commits nothing";
  }
  EXPECT_EQ(state(target), "\"first\"");
  {
    StringBuffer first = target.buffer(2, true);
    StringBuffer second(first);
    wchar* const array = second;
    EXPECT_EQ(wstring(KVW("first")), wstring(array)) << "size and keep are copied";
    array[4] = KVW('e');
  }
  EXPECT_EQ(state(target), "\"firse\"");
}

TEST(StringBuffer, ArraysAreFreedAsTheyWereAllocated) {
  AllocationFailure scope(0);
  int live = -1;
  {
    String target;
    {
      StringBuffer buffer = target.buffer(10, false);
      static_cast<void>(static_cast<wchar*>(buffer));
      static_cast<void>(static_cast<char*>(buffer));
      static_cast<void>(static_cast<wchar*>(buffer));
      live = scope.live();
    }
  }
  scope.end();
  EXPECT_EQ(live, 1) << "one array at a time";
  EXPECT_EQ(scope.live(), 0);
  EXPECT_EQ(scope.mismatched(), 0);
}

TEST(StringBuffer, AFailedArrayLeavesTheTargetAlone) {
  String target(KVW("old"));
  bool threw = false;
  AllocationFailure scope(2);
  {
    StringBuffer buffer = target.buffer(10, false);
    wchar* const array = buffer;
    array[0] = KVW('x');
    try {
      static_cast<void>(static_cast<char*>(buffer));
    } catch (std::bad_alloc const&) {
      threw = true;
    }
  }
  scope.end();
  EXPECT_TRUE(threw);
  EXPECT_EQ(scope.live(), 0);
  EXPECT_EQ(state(target), "\"old\"") << "the earlier array was gone by then, so nothing is committed";
}

TEST(StringBuffer, ATemporaryFillsWithinOneStatement) {
  String target;
  copy(KVW("C:\\scans"), target.buffer(260, false));
  EXPECT_EQ(state(target), "\"C:\\scans\"");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
