// SPDX-License-Identifier: MIT
//
// Comparison against a slow model, at every place of a difference or an inner NUL around the borders of vectors and of
// the parts of long texts.
#include <gtest/gtest.h>

#include "kvbase/strings/internal/string_access.h"
#include "tests/reference/string_model.h"
#include "tests/strings/string_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

// The same text with a length that is not known.
String ofUnknownLength(String string) {
  static_cast<void>(string[0]);
  return string;
}

// By a known length a NUL counts as text; without it the text ends there.
void compareAll(wstring const& a, wstring const& b) {
  String const first = stringOf(a);
  String const second = stringOf(b);
  int const order = reference::compare(a, b);
  int const orderIgnoringCase = reference::compareIgnoreCase(a, b);
  ASSERT_EQ(first.compare(second), order);
  ASSERT_EQ(second.compare(first), -order);
  ASSERT_EQ(first.compareEquality(second), reference::equal(a, b));
  ASSERT_EQ(signOf(first.compareIgnoreCase(second)), orderIgnoringCase);
  if (a.empty()) return;
  String const unknown = ofUnknownLength(first);
  ASSERT_EQ(unknown.compare(second), order);
  ASSERT_EQ(unknown.compareEquality(second), order == 0);
  ASSERT_EQ(signOf(unknown.compareIgnoreCase(second)), orderIgnoringCase);
  ASSERT_EQ(StringAccess::payload(unknown)->lazyLength(), -1) << "a comparison stores no length";
}

// Compares a text of the length with those that differ from it at `place`, that end there, and that hold a NUL there in
// front of a difference.
void compareAt(std::size_t length, std::size_t place) {
  wstring const text(length, KVW('m'));
  wstring other = text;
  for (wchar const unit : {KVW('a'), KVW('M'), KVW('z'), wchar(0xFFFF), wchar(0)}) {
    other[place] = unit;
    compareAll(text, other);
  }
  compareAll(text, text.substr(0, place));
  wstring ended = other;
  other.back() = KVW('x');
  ended.back() = KVW('y');
  compareAll(other, ended);
}

TEST(StringComparison, EqualTextsOfEveryLength) {
  for (std::size_t length = 0; length <= 70; ++length) compareAll(wstring(length, KVW('m')), wstring(length, KVW('m')));
}

// COMPAT: counted double-byte text is one unit longer than its length says, so no NUL stands there.
TEST(StringComparison, ANulEndsTextsWithAUnitBehindTheirLength) {
  for (int tail : {1, 8, 30, 100}) {
    std::string const front =
        "sixteen letters" + std::string(1, '\0') + std::string(static_cast<std::size_t>(tail), 'x');
    std::string const bytes = front + "\x93\xFA";
    String const longer = StringAccess::adopt(
        StringVal::constructUsingCodepage(CodePageInterface(bytes.c_str(), 932), static_cast<int>(bytes.size()), -1));
    String const text = stringOf(wstring(front.begin(), front.end()));
    ASSERT_EQ(StringAccess::payload(longer)->lazyLength(), text.length());
    ASSERT_NE(StringAccess::payload(longer)->at(text.length()), 0);
    EXPECT_TRUE(text.compareEquality(longer)) << tail;
    EXPECT_TRUE(longer.compareEquality(text)) << tail;
    EXPECT_EQ(text.compare(longer), 0) << tail;
    EXPECT_EQ(text.compareIgnoreCase(longer), 0) << tail;
  }
}

TEST(StringComparison, EveryPlaceOfShortTexts) {
  for (std::size_t length = 1; length <= 40; ++length) {
    for (std::size_t place = 0; place < length; ++place) {
      compareAt(length, place);
      if (HasFatalFailure()) FAIL() << length << " units, place " << place;
    }
  }
}

TEST(StringComparison, BordersOfLongTexts) {
  for (std::size_t const length : {255u, 256u, 257u, 2047u, 2048u, 2049u, 4096u, 5000u}) {
    compareAll(wstring(length, KVW('m')), wstring(length, KVW('m')));
    for (std::size_t const place : {0u, 7u, 8u, 9u, 254u, 2046u, 2047u, 2048u, 2049u, 4095u, 4999u}) {
      if (place < length) compareAt(length, place);
      if (HasFatalFailure()) FAIL() << length << " units, place " << place;
    }
  }
}

TEST(StringComparison, FrontAndEndOfEveryLength) {
  wstring const text = KVW("abcdefghijklmnopqrstuvwxyzABCDEFGHIJ");
  String const string = stringOf(text);
  for (std::size_t length = 1; length <= text.size(); ++length) {
    wstring const front = text.substr(0, length);
    wstring const end = text.substr(text.size() - length);
    EXPECT_EQ(string.startsWith(stringOf(front)), true) << length;
    EXPECT_EQ(string.endsWith(stringOf(end)), true) << length;
    EXPECT_EQ(string.endsWith(stringOf(reference::lowerCase(end)), true), true) << length;
    for (std::size_t place = 0; place < length; ++place) {
      wstring other = front;
      other[place] = KVW('!');
      EXPECT_EQ(string.startsWith(stringOf(other)), false) << length << " at " << place;
      other = end;
      other[place] = KVW('!');
      EXPECT_EQ(string.endsWith(stringOf(other)), false) << length << " at " << place;
      EXPECT_EQ(string.endsWith(stringOf(other), true), false) << length << " at " << place;
    }
  }
}

// The units of a prefix are compared beyond an inner NUL.
TEST(StringComparison, PrefixWithAnInnerNul) {
  wstring text(20, KVW('m'));
  text[3] = 0;
  wstring other = text;
  other[9] = KVW('x');
  String const string = stringOf(text);
  EXPECT_EQ(string.startsWith(stringOf(text.substr(0, 12))), true);
  EXPECT_EQ(string.startsWith(stringOf(other.substr(0, 12))), false);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
