// SPDX-License-Identifier: MIT
//
// Shortening a text for display.
#include <gtest/gtest.h>

#include <climits>

#include "tests/reference/string_display_model.h"
#include "tests/strings/string_support.h"
#include "tests/support/random_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

wchar const* const kPath = KVW("C:/data/projects/2020/march/scans/scan0001.dat");
wchar const* const kLetters = KVW("abcdefghijklmnopqrstuvwxyz");

struct DisplayRow {
  char const* name;
  wchar const* text;
  int limit;
  int head;
  char const* result;
};

void expectShortened(DisplayRow const& row) {
  SCOPED_TRACE(row.name);
  String const string(row.text);
  String const holder = string;
  String const result = string.shortenString(row.limit, row.head);
  EXPECT_EQ(spelled(result), "\"" + std::string(row.result) + "\"");
  EXPECT_TRUE(shares(string, holder));
  EXPECT_EQ(spelled(string), spelled(String(row.text))) << "the receiver stays";
}

TEST(StringDisplay, WorkedTable) {
  DisplayRow const rows[] = {
      {"it fits exactly", kPath, 46, 10, "C:/data/projects/2020/march/scans/scan0001.dat"},
      {"both cuts at slashes", kPath, 45, 10, "C:/data/.../2020/march/scans/scan0001.dat"},
      {"tail begins with its slash", kPath, 30, 10, "C:/data/.../scans/scan0001.dat"},
      {"head ends with its slash", kPath, 30, 8, "C:/data/.../scans/scan0001.dat"},
      {"a short head", kPath, 30, 3, "C:/.../scans/scan0001.dat"},
      {"no head", kPath, 30, 0, ".../march/scans/scan0001.dat"},
      {"a tail without slash", kPath, 20, 10, "C:/data/...n0001.dat"},
      {"no room for a tail", kPath, 10, 20, "C:/data/projects/..."},
      {"two units of tail", kPath, 5, 0, "...at"},
      {"the dots alone", kPath, 3, 0, "..."},
      {"the dots above the limit", kPath, 2, 0, "..."},
      {"no slash", kLetters, 10, 4, "abcd...xyz"},
      {"no slash, no head", kLetters, 10, 0, "...tuvwxyz"},
      {"a negative head is the whole text", kLetters, 10, -1, "abcdefghijklmnopqrstuvwxyz..."},
  };
  for (DisplayRow const& row : rows) expectShortened(row);
}

TEST(StringDisplay, Edges) {
  std::string const path = narrow(kPath);
  std::string const cutPath = "C:/data/projects/2020/march/scans/...0001.dat";
  DisplayRow const rows[] = {
      {"a negative limit on NIL", nullptr, -1, 0, "..."},
      {"a negative limit and head on NIL", nullptr, -1, -1, "..."},
      {"a head on NIL", nullptr, -1, 5, "..."},
      {"a negative limit on an empty text", KVW(""), -1, 0, "..."},
      {"a head on an empty text", KVW(""), -5, 7, "..."},
      {"the tail begins at the first slash", KVW("aaaaaaaaaaaaaaaaaaaaaaaaaaaa/bbb/cc"), 20, 0, ".../bbb/cc"},
      {"a head above the length", kPath, 45, 100, cutPath.c_str()},
      {"a head of the length", kLetters, 20, 26, "abcdefghijklmnopqrstuvwxyz..."},
      {"a slash at 0 or 1 is no cutting point", KVW("//server/share/dir/file"), 20, 3, "//s.../dir/file"},
      {"a slash at 1", KVW("a/bcdefghijklmnop"), 10, 4, "a/bc...nop"},
      {"a slash at 2", KVW("ab/defghijklmnopq"), 10, 5, "ab/...nopq"},
      {"a slash at 2 ends the head", KVW("ab/defghijklmnopq"), 10, 3, "ab/...nopq"},
      {"a tail that begins with a slash", KVW("abcdefghijklmnop/q/r"), 8, 1, "a.../q/r"},
      {"a slash at the end of the tail", KVW("abcdefghijklmnopqrs/"), 10, 0, ".../"},
      {"backslashes are ordinary", KVW("C:\\data\\projects\\scan.dat"), 15, 6, "C:\\dat...an.dat"},
      {"limit 0", KVW("abc"), 0, 1, "a..."},
      {"limit 0, whole text", KVW("abc"), 0, -1, "abc..."},
      {"limit above the dots by one", KVW("abcdef"), 4, 0, "...f"},
      {"a negative head is not cut at a slash", KVW("ab/cd/ef"), 5, -3, "ab/cd/ef..."},
      {"the smallest limit", kLetters, INT_MIN, 0, "..."},
      {"the smallest limit and head", KVW("ab/cd"), INT_MIN, INT_MIN, "ab/cd..."},
      {"the largest head", KVW("ab/cd"), 4, INT_MAX, "ab/..."},
      {"the largest head, smallest limit", KVW("ab/cd"), INT_MIN, INT_MAX, "ab/..."},
      {"the largest limit", kPath, INT_MAX, 0, path.c_str()},
      {"the largest limit, smallest head", kPath, INT_MAX, INT_MIN, path.c_str()},
  };
  for (DisplayRow const& row : rows) expectShortened(row);
}

TEST(StringDisplay, WhatFitsIsShared) {
  for (EmptyReceiver const& receiver : emptyReceivers()) {
    SCOPED_TRACE(receiver.name);
    for (int const limit : {0, 1, 48, INT_MAX}) {
      for (int const head : {INT_MIN, -1, 0, 1, INT_MAX}) {
        String const result = receiver.string.shortenString(limit, head);
        EXPECT_EQ(isNil(result), isNil(receiver.string));
        EXPECT_TRUE(shares(result, receiver.string));
      }
    }
  }
  String const path(kPath);
  EXPECT_TRUE(shares(path.shortenString(46, 10), path));
  EXPECT_TRUE(shares(path.shortenString(47, 0), path));
  EXPECT_FALSE(shares(path.shortenString(45, -1), path));
}

// COMPAT: with room for exactly 48 units the end begins inside a component; with one more or less it begins at a slash.
TEST(StringDisplay, TheBudgetOf48) {
  std::string const tail = "/" + std::string(38, 't');
  String const text = String(widen(std::string(60, 'x') + "/" + std::string(20, 'y') + tail).c_str());
  EXPECT_EQ(spelled(text.shortenString(51, 0)), "\"..." + std::string(9, 'y') + tail + "\"");
  EXPECT_EQ(spelled(text.shortenString(50, 0)), "\"..." + tail + "\"");
  EXPECT_EQ(spelled(text.shortenString(52, 0)), "\"..." + tail + "\"");
  EXPECT_EQ(spelled(text.shortenString(55, 4)), "\"xxxx..." + std::string(9, 'y') + tail + "\"");
  EXPECT_EQ(spelled(text.shortenString(54, 4)), "\"xxxx..." + tail + "\"");
}

// --- Against the model -----------------------------------------------------------------------------------------------

void compareDisplay(Text const& text, int limit, int head) {
  String const string = stringOf(text);
  String const result = string.shortenString(limit, head);
  Text const expected = reference::shortenString(text, limit, head);
  if (unitsOf(result) != expected)
    FAIL() << spelled(text) << ", limit " << limit << ", head " << head << " gives " << spelled(result) << " for "
           << spelled(expected);
  if (unitsOf(string) != text) FAIL() << spelled(text) << " changed";
}

int randomBound(RandomText& random) {
  static int const kBounds[] = {INT_MIN, INT_MIN + 1, INT_MIN + 3, -1, 0, 1, 2, 3, 48, 51, INT_MAX - 1, INT_MAX};
  return random.oneIn(4) ? kBounds[random.below(12)] : random.between(-5, 75);
}

// The search for slashes ends at a NUL, the cuts go by the length, and a NUL at the end of a piece is dropped.
TEST(StringDisplay, RandomTextsAgreeWithTheModel) {
  RandomText random(290);
  for (int i = 0; i < kRounds; ++i) {
    RandomUnits const units = random.oneIn(2) ? RandomUnits::kAny : RandomUnits::kAnyWithNul;
    Text text;
    if (!random.oneIn(50)) text = random.text(random.below(90), random.oneIn(3) ? units : RandomUnits::kFew);
    for (int slashes = random.below(8); text && !text->empty() && slashes > 0; --slashes)
      (*text)[static_cast<std::size_t>(random.below(static_cast<int>(text->size())))] = KVW('/');
    compareDisplay(text, randomBound(random), randomBound(random));
    if (HasFatalFailure()) return;
  }
}

TEST(StringDisplay, ANulAtTheEndOfThePiecesIsDropped) {
  String const text = stringOf(wstring(KVW("ab\0defghijklmnop"), 16));
  EXPECT_EQ(unitsOf(text.shortenString(10, 3)), Text(KVW("ab...lmnop")));
  String const whole = stringOf(wstring(KVW("abc\0"), 4));
  for (int const head : {-1, 4, 5}) {
    EXPECT_EQ(unitsOf(whole.shortenString(3, head)), Text(wstring(KVW("abc\0..."), 7))) << "not of the whole text";
  }
}

TEST(StringDisplay, SampledUnitsAgreeWithTheModel) {
  for (wchar const code : sampledUnits()) {
    wstring const unit(1, code);
    compareDisplay(KVW("abc") + unit + KVW("defghi") + unit + KVW("jkl"), 10, 5);
    compareDisplay(unit, 0, 1);
    if (HasFatalFailure()) FAIL() << "unit " << code;
  }
}

TEST(StringDisplay, LongTexts) {
  wstring const slashes(1 << 14, KVW('/'));
  wstring const letters(1 << 14, KVW('a'));
  for (wstring const& text : {letters + slashes, slashes + letters}) {
    for (int const limit : {-1, 100, 1 << 14, (1 << 15) - 1})
      for (int const head : {-1, 0, 1 << 13, INT_MAX}) compareDisplay(text, limit, head);
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
