// SPDX-License-Identifier: MIT
//
// The payload: how it is built, measured, written to and released.
#include "kvbase/strings/string_val.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "kvbase/platform/text_api.h"
#include "kvbase/strings/kv_string.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/narrow_text.h"
#include "tests/support/scripted_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

// Owns one reference to a payload for the length of a scope.
class Owned {
 public:
  explicit Owned(StringVal* payload) : payload_(payload) {}
  ~Owned() {
    if (payload_ != nullptr) payload_->unref();
  }
  Owned(Owned const&) = delete;
  Owned& operator=(Owned const&) = delete;

  StringVal* get() const { return payload_; }
  StringVal* operator->() const { return payload_; }
  StringVal& operator*() const { return *payload_; }

 private:
  StringVal* payload_;
};

wstring unitsOf(StringVal const& payload) {
  return wstring(payload.stringValue(), static_cast<std::size_t>(payload.length()));
}

TEST(StringVal, WideTextIsTakenByItsSize) {
  wchar const abz[] = {KVW('a'), KVW('b'), 0};
  wchar const azz[] = {KVW('a'), 0, 0};
  wchar const azb[] = {KVW('a'), 0, KVW('b')};
  wchar const z[] = {0};
  struct Row {
    char const* name;
    wchar const* text;
    int length;
    int capacity;
    wstring expected;
  } const rows[] = {
      {"measured", abz, -1, -1, KVW("ab")},
      {"measured up to the first NUL", azb, -1, -1, KVW("a")},
      {"counted", abz, 2, -1, KVW("ab")},
      {"counted in part", abz, 1, -1, KVW("a")},
      {"terminator counted", abz, 3, -1, KVW("ab")},
      {"two NULs counted: one is dropped", azz, 3, -1, wstring(azz, 2)},
      {"inner NUL counted", azb, 3, -1, wstring(azb, 3)},
      {"nothing counted", abz, 0, -1, wstring()},
      {"empty text measured", z, -1, -1, wstring()},
      {"empty text counted as 0", z, 0, -1, wstring()},
      {"a lone terminator counted", z, 1, -1, wstring()},
      {"room for more", abz, -1, 10, KVW("ab")},
      {"room for exactly the text", abz, 2, 2, KVW("ab")},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    Owned const payload(StringVal::construct(row.text, row.length, row.capacity));
    EXPECT_EQ(payload->lazyLength(), static_cast<int>(row.expected.size()));
    EXPECT_EQ(unitsOf(*payload), row.expected);
    EXPECT_EQ(payload->at(payload->length()), 0);
    EXPECT_EQ(payload->inqRefCount(), 1u);
    EXPECT_NE(payload->stringValue(), row.text);
  }
}

TEST(StringVal, SurplusCapacityIsWritable) {
  Owned const payload(StringVal::construct(KVW("abc"), -1, 10));
  ASSERT_EQ(payload->length(), 3);
  for (int i = 3; i < 10; ++i) (*payload)[i] = KVW('x');
  (*payload)[10] = 0;
  EXPECT_EQ(unitsOf(*payload), wstring(KVW("abcxxxxxxx")));
}

TEST(StringVal, OneAllocationForHeaderAndText) {
  AllocationFailure scope(0);
  StringVal* const payload = StringVal::construct(KVW("a text of some length"), -1, -1);
  int const allocations = scope.allocations();
  payload->unref();
  scope.end();
  EXPECT_EQ(allocations, 1);
  EXPECT_EQ(scope.live(), 0);
}

TEST(StringVal, NarrowTextIsTakenByItsSize) {
  ScriptedText text;
  text.ansi = 1252;
  platform::ScopedBackend<platform::TextApi> scope(text);
  struct Row {
    char const* name;
    char const* bytes;
    int length;
    wstring expected;
  } const rows[] = {
      {"measured", "abc", -1, KVW("abc")},
      {"measured up to the first NUL", "a\0b", -1, KVW("a")},
      {"empty text measured", "", -1, wstring()},
      {"counted", "abc", 3, KVW("abc")},
      {"counted in part", "abc", 2, KVW("ab")},
      {"terminator counted", "abc", 4, KVW("abc")},
      {"inner NUL counted", "a\0b", 3, wstring({KVW('a'), wchar(0), KVW('b')})},
      {"two NULs counted: one is dropped", "a\0", 3, wstring({KVW('a'), wchar(0)})},
      {"above ASCII", "\xE4\x80", -1, wstring({wchar(0xE4), wchar(0x20AC)})},
      {"above ASCII counted", "\xE4\x80", 2, wstring({wchar(0xE4), wchar(0x20AC)})},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    Owned const payload(StringVal::construct(row.bytes, row.length, -1));
    ASSERT_NE(payload.get(), nullptr);
    EXPECT_EQ(payload->lazyLength(), static_cast<int>(row.expected.size()));
    EXPECT_EQ(unitsOf(*payload), row.expected);
    EXPECT_EQ(payload->at(payload->length()), 0);
    EXPECT_EQ(payload->inqRefCount(), 1u);
  }
}

TEST(StringVal, NarrowTextThatGivesNothingGivesNull) {
  AllocationFailure scope(0);
  StringVal* const ofNoBytes = StringVal::construct("", 0, -1);
  StringVal* const ofNoBytesWithRoom = StringVal::construct("abc", 0, 10);
  StringVal* const ofLoneTerminator = StringVal::construct("", 1, -1);
  StringVal* const ofNull = StringVal::constructUsingCodepage(CodePageInterface(nullptr, 65001), -1, -1);
  StringVal* const ofNoPage = StringVal::constructUsingCodepage(CodePageInterface("abc", 4711), -1, -1);
  StringVal* const ofNoUtf8Bytes = StringVal::constructUsingCodepage(UTF8Interface("abc"), 0, -1);
  int const live = scope.live();
  scope.end();
  EXPECT_EQ(ofNoBytes, nullptr);
  EXPECT_EQ(ofNoBytesWithRoom, nullptr);
  EXPECT_EQ(ofLoneTerminator, nullptr);
  EXPECT_EQ(ofNull, nullptr);
  EXPECT_EQ(ofNoPage, nullptr);
  EXPECT_EQ(ofNoUtf8Bytes, nullptr);
  EXPECT_EQ(live, 0);
}

TEST(StringVal, ConversionThatFailsAtTheSecondStepLeavesNothing) {
  for (int failAt = 1; failAt <= 2; ++failAt) {
    SCOPED_TRACE(failAt);
    ScriptedText text;
    text.ansi = 1252;
    text.failAt = failAt;
    platform::ScopedBackend<platform::TextApi> backend(text);
    AllocationFailure scope(0);
    StringVal* const counted = StringVal::construct("abc", 3, -1);
    int const live = scope.live();
    scope.end();
    EXPECT_EQ(counted, nullptr);
    EXPECT_EQ(live, 0);
    EXPECT_EQ(text.calls, failAt);

    text.calls = 0;
    EXPECT_EQ(StringVal::constructUsingCodepage(CodePageInterface("abc", 1252), -1, -1), nullptr);
    EXPECT_EQ(text.calls, failAt);
  }
}

TEST(StringVal, CapacityGoesForNarrowTextToo) {
  Owned const payload(StringVal::constructUsingCodepage(UTF8Interface("abc"), -1, 20));
  ASSERT_EQ(payload->length(), 3);
  for (int i = 3; i < 20; ++i) (*payload)[i] = KVW('x');
  (*payload)[20] = 0;
  EXPECT_EQ(payload->length(), 20);
}

TEST(StringVal, NarrowTextHasRoomInTheCapacityOfItsLength) {
  for (int length = 7; length <= 24; ++length) {
    std::string const bytes(static_cast<std::size_t>(length), 'a');
    Owned const measured(StringVal::constructUsingCodepage(UTF8Interface(bytes.c_str()), -1, length));
    Owned const counted(StringVal::constructUsingCodepage(UTF8Interface(bytes.c_str()), length, length));
    EXPECT_EQ(unitsOf(*measured), wstring(static_cast<std::size_t>(length), KVW('a')));
    EXPECT_EQ(unitsOf(*counted), unitsOf(*measured));
  }
}

TEST(StringVal, CodePagesDecideOnTheText) {
  struct Row {
    char const* name;
    char const* bytes;
    unsigned int page;
    int length;
    wstring expected;
  } const rows[] = {
      {"UTF-8 measured", "\xC3\xA4\xE2\x82\xAC", 65001, -1, wstring({wchar(0xE4), wchar(0x20AC)})},
      {"1252 measured", "\xE4\x80", 1252, -1, wstring({wchar(0xE4), wchar(0x20AC)})},
      {"1252 counted", "\xE4\x80", 1252, 2, wstring({wchar(0xE4), wchar(0x20AC)})},
      {"1251 measured", "\xC0\xFF", 1251, -1, wstring({wchar(0x410), wchar(0x44F)})},
      {"932 measured", "\x93\xFA\x96\x7B", 932, -1, wstring({wchar(0x65E5), wchar(0x672C)})},
      {"932 of one byte a unit, counted", "ab", 932, 2, KVW("ab")},
      {"UTF-8 pair measured", "\xF0\x9F\x98\x80", 65001, -1, wstring({wchar(0xD83D), wchar(0xDE00)})},
      {"UTF-8 of ASCII, counted", "abc", 65001, 3, KVW("abc")},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    CodePageInterface const bytes(row.bytes, row.page);
    Owned const payload(StringVal::constructUsingCodepage(bytes, row.length, -1));
    ASSERT_NE(payload.get(), nullptr);
    EXPECT_EQ(unitsOf(*payload), row.expected);
    EXPECT_EQ(payload->at(payload->length()), 0);
  }
}

// COMPAT: where the count of bytes differs from the number of decoded units, the length is one short and the last unit lies
// behind it.
TEST(StringVal, CountedDoubleByteTextComesOutOneShort) {
  struct Row {
    char const* name;
    char const* bytes;
    unsigned int page;
    int length;
    wstring converted;
  } const rows[] = {
      {"932", "\x93\xFA\x96\x7B", 932, 4, wstring({wchar(0x65E5), wchar(0x672C)})},
      {"932, terminator counted", "\x93\xFA\x96\x7B", 932, 5, wstring({wchar(0x65E5), wchar(0x672C)})},
      {"932, one character", "\x93\xFA", 932, 2, wstring({wchar(0x65E5)})},
      {"UTF-8", "a\xC3\xA4", 65001, 3, wstring({KVW('a'), wchar(0xE4)})},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    CodePageInterface const bytes(row.bytes, row.page);
    // The capacity is larger so that the unit behind the length can be read.
    Owned const payload(StringVal::constructUsingCodepage(bytes, row.length, 10));
    ASSERT_NE(payload.get(), nullptr);
    int const converted = static_cast<int>(row.converted.size());
    EXPECT_EQ(payload->lazyLength(), converted - 1);
    for (int i = 0; i < converted; ++i) EXPECT_EQ(payload->at(i), row.converted[static_cast<std::size_t>(i)]);
  }
}

TEST(StringVal, ConcatenationBuildsANewPayload) {
  wchar const withNul[] = {KVW('c'), 0, KVW('d')};
  struct Row {
    char const* name;
    wchar const* front;
    wchar const* back;
    int length;
    wstring expected;
  } const rows[] = {
      {"measured", KVW("ab"), KVW("cd"), -1, KVW("abcd")},
      {"counted", KVW("ab"), KVW("cdef"), 2, KVW("abcd")},
      {"nothing", KVW("ab"), KVW(""), 0, KVW("ab")},
      {"nothing of something", KVW("ab"), KVW("cd"), 0, KVW("ab")},
      {"empty text measured", KVW("ab"), KVW(""), -1, KVW("ab")},
      {"on an empty text", KVW(""), KVW("cd"), -1, KVW("cd")},
      {"both empty", KVW(""), KVW(""), -1, wstring()},
      {"inner NUL counted", KVW("ab"), withNul, 3, wstring({KVW('a'), KVW('b'), KVW('c'), wchar(0), KVW('d')})},
      {"a counted terminator stays", KVW("ab"), KVW("c"), 2, wstring({KVW('a'), KVW('b'), KVW('c'), wchar(0)})},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    Owned const front(StringVal::construct(row.front, -1, -1));
    Owned const both(front->concatenation(row.back, row.length));
    EXPECT_NE(front.get(), both.get());
    EXPECT_EQ(both->lazyLength(), static_cast<int>(row.expected.size()));
    EXPECT_EQ(unitsOf(*both), row.expected);
    EXPECT_EQ(both->at(both->length()), 0);
    EXPECT_EQ(both->inqRefCount(), 1u);
    EXPECT_EQ(unitsOf(*front), wstring(row.front));
    EXPECT_EQ(front->inqRefCount(), 1u);
  }
}

TEST(StringVal, ConcatenationMeasuresItsOwnTextAndTakesItself) {
  Owned const text(StringVal::construct(KVW("abcd"), -1, -1));
  (*text)[2] = 0;
  Owned const both(text->concatenation(text->stringValue(), -1));
  EXPECT_EQ(unitsOf(*both), wstring(KVW("abab")));
}

TEST(StringVal, CountsReferences) {
  StringVal* const payload = StringVal::construct(KVW("abc"), -1, -1);
  payload->ref();
  payload->ref();
  EXPECT_EQ(payload->inqRefCount(), 3u);
  EXPECT_FALSE(payload->unref());
  EXPECT_FALSE(payload->unref());
  EXPECT_EQ(payload->inqRefCount(), 1u);
  EXPECT_TRUE(payload->unref());
}

TEST(StringVal, EverythingIsReleasedWithTheLastReference) {
  AllocationFailure scope(0);
  {
    String const text(KVW("abc"));
    String const other = text;
    text.stringAnsi();
    text.stringUTF8();
  }
  scope.end();
  EXPECT_EQ(scope.allocations(), 3) << "the payload and its two narrow copies";
  EXPECT_EQ(scope.live(), 0);
  EXPECT_EQ(scope.mismatched(), 0);
}

TEST(StringVal, TakingThePlaceOfAUnitForgetsTheLength) {
  Owned const payload(StringVal::construct(KVW("abc"), -1, -1));
  wchar& place = (*payload)[0];
  EXPECT_EQ(payload->lazyLength(), -1);
  EXPECT_EQ(payload->length(), 3) << "nothing was written";
  EXPECT_EQ(payload->lazyLength(), 3);

  place = KVW('x');
  EXPECT_EQ(payload->at(0), KVW('x'));
  (*payload)[1] = 0;
  EXPECT_EQ(payload->lazyLength(), -1);
  EXPECT_EQ(payload->length(), 1);
  EXPECT_EQ(unitsOf(*payload), wstring(KVW("x")));
}

TEST(StringVal, MeasuringEndsAtAnInnerNul) {
  wchar const text[] = {KVW('a'), 0, KVW('b')};
  Owned const payload(StringVal::construct(text, 3, -1));
  EXPECT_EQ(payload->length(), 3);
  EXPECT_EQ((*payload)[2], KVW('b'));
  EXPECT_EQ(payload->length(), 1);
}

TEST(StringVal, Reverses) {
  struct Row {
    char const* name;
    wchar const* text;
    wchar const* expected;
    int lazyLength;
  } const rows[] = {
      {"empty", KVW(""), KVW(""), 0},
      {"one unit", KVW("a"), KVW("a"), 1},
      {"two unitsOf", KVW("ab"), KVW("ba"), -1},
      {"odd", KVW("abc"), KVW("cba"), -1},
      {"even", KVW("abcd"), KVW("dcba"), -1},
      {"palindrome", KVW("aba"), KVW("aba"), -1},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    Owned const payload(StringVal::construct(row.text, -1, -1));
    payload->reverse();
    EXPECT_EQ(payload->lazyLength(), row.lazyLength);
    EXPECT_EQ(unitsOf(*payload), wstring(row.expected));
  }
}

TEST(StringVal, ReverseKeepsNarrowCopiesOfShortTextsOnly) {
  Owned const one(StringVal::construct(KVW("a"), -1, -1));
  char const* const ansi = one->stringAnsi();
  char const* const utf8 = one->stringUTF8();
  one->reverse();
  EXPECT_EQ(one->stringAnsi(), ansi);
  EXPECT_EQ(one->stringUTF8(), utf8);

  AllocationFailure scope(0);
  StringVal* const two = StringVal::construct(KVW("ab"), -1, -1);
  two->stringAnsi();
  two->stringUTF8();
  two->reverse();
  int const before = scope.live();
  two->length();
  int const after = scope.live();
  bool const converted = std::strcmp(two->stringUTF8(), "ba") == 0 && std::strcmp(two->stringAnsi(), "ba") == 0;
  two->unref();
  scope.end();
  EXPECT_EQ(before, 3);
  EXPECT_EQ(after, 1) << "the recount drops both copies";
  EXPECT_TRUE(converted);
  EXPECT_EQ(scope.live(), 0);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
