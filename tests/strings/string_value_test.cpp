// SPDX-License-Identifier: MIT
//
// Strings as values: construction, sharing, access to units, appending and comparison.
#include <gtest/gtest.h>

#include <utility>

#include "tests/strings/string_support.h"
#include "tests/support/allocation_failure.h"

namespace KV_1_1 {
namespace testing {
namespace {

TEST(StringValue, Construction) {
  wchar const abz[] = {KVW('a'), KVW('b'), 0};
  wchar const azb[] = {KVW('a'), 0, KVW('b')};
  struct Row {
    char const* name;
    String built;
    char const* expected;
  } const rows[] = {
      {"nothing", String(), "NIL"},
      {"null", String(kNull), "NIL"},
      {"null with size", String(kNull, 5), "NIL"},
      {"copy of NIL", String(String::NIL), "NIL"},
      {"empty text", String(KVW("")), "\"\""},
      {"empty text with size 0", String(KVW(""), 0), "\"\""},
      {"text with size 0", String(KVW("ab"), 0), "\"\""},
      {"lone terminator counted", String(KVW(""), 1), "\"\""},
      {"text", String(KVW("ab")), "\"ab\""},
      {"terminator counted", String(abz, 3), "\"ab\""},
      {"inner NUL, unmeasured", String(azb), "\"a\""},
      {"inner NUL counted", String(azb, 3), "\"a\\0b\""},
      {"no units", String(KVW('x'), 0), "\"\""},
      {"three units", String(KVW('x'), 3), "\"xxx\""},
      {"three NULs", String(wchar(0), 3), "\"\""},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(state(row.built), row.expected);
  }
}

TEST(StringValue, AnInnerNulEndsWhatReadersSee) {
  String const inner = stringOf(wstring({KVW('a'), wchar(0), KVW('b')}));
  String const same(KVW("a"));
  EXPECT_EQ(inner.length(), 3);
  EXPECT_EQ(visible(inner), wstring(KVW("a")));
  EXPECT_EQ(inner.compare(same), 0);
  EXPECT_EQ(inner.compareIgnoreCase(same), 0);
  EXPECT_FALSE(inner.compareEquality(same)) << "two known lengths that differ";
  EXPECT_EQ(inner.find(KVW('b'), 0), -1);
  EXPECT_STREQ(inner.stringUTF8(), "a");
}

TEST(StringValue, CopiesShareAndAssignmentReleases) {
  AllocationFailure scope(0);
  bool shared = true;
  int afterRelease = -1;
  {
    String a(KVW("abc"));
    String b(a);
    String c;
    String* const result = &(c = b);
    shared = shared && shares(a, b) && shares(a, c) && result == &c;
    String& self = a;
    a = self;
    shared = shared && shares(a, b);
    a = String::NIL;
    b = c;
    shared = shared && isNil(a) && shares(b, c);
    b = String::NIL;
    c = String::NIL;
    afterRelease = scope.live();
  }
  scope.end();
  EXPECT_TRUE(shared);
  EXPECT_EQ(afterRelease, 0);
  EXPECT_EQ(scope.allocations(), 1);
}

TEST(StringValue, MovesTakeThePayload) {
  String a(KVW("abc"));
  wchar const* const text = a;
  String b(std::move(a));
  EXPECT_TRUE(text == static_cast<wchar const*>(b));
  EXPECT_EQ(state(a), "NIL");
  String c(KVW("old"));
  c = std::move(b);
  EXPECT_TRUE(text == static_cast<wchar const*>(c));
  String& self = c;
  c = std::move(self);
  EXPECT_EQ(state(c), "\"abc\"");
}

TEST(StringValue, UnitsAreWrittenToAnOwnPayload) {
  String a(KVW("abc"));
  String const b = a;
  a[1] = KVW('x');
  EXPECT_EQ(state(a), "\"axc\"");
  EXPECT_EQ(state(b), "\"abc\"");
  EXPECT_FALSE(shares(a, b));

  wchar const* const text = a;
  a[0] = KVW('y');
  EXPECT_TRUE(text == static_cast<wchar const*>(a)) << "the only holder writes in place";
  a[1] = 0;
  EXPECT_EQ(a.length(), 1);
  EXPECT_EQ(state(a), "\"y\"");
}

TEST(StringValue, ReadingAUnitThroughTheBracketsUnsharesToo) {
  String a(KVW("abc"));
  String const b = a;
  EXPECT_EQ(a[2], KVW('c'));
  EXPECT_EQ(a[3], 0);
  EXPECT_FALSE(shares(a, b));
  EXPECT_EQ(state(a), "\"abc\"");

  String empty = String::EMPTY;
  EXPECT_EQ(empty[0], 0);
  EXPECT_FALSE(shares(empty, String::EMPTY));
}

TEST(StringValue, UnsharingKeepsInnerNulsUntilTheLengthIsMeasured) {
  wstring const inner({KVW('a'), wchar(0), KVW('b')});
  String a = stringOf(inner);
  String const b = a;
  EXPECT_EQ(a[2], KVW('b'));
  EXPECT_EQ(a.length(), 1);
  EXPECT_EQ(units(b), inner);
}

TEST(StringValue, BracketsOnNilGiveOutOfRange) {
  ASSERT_EQ(String::outOfRange, 7);
  String nil;
  EXPECT_EQ(&nil[0], &String::outOfRange);
  EXPECT_EQ(&nil[-1], &String::outOfRange);
  EXPECT_EQ(&nil[1000], &String::outOfRange);
  nil[3] = KVW('x');
  EXPECT_EQ(nil[0], KVW('x'));
  EXPECT_EQ(state(nil), "NIL");
  String::outOfRange = 7;
}

TEST(StringValue, Write) {
  wchar const czd[] = {KVW('c'), 0, KVW('d')};
  struct Row {
    char const* name;
    String receiver;
    wchar const* text;
    int size;
    char const* expected;
  } const rows[] = {
      {"null on NIL", String::NIL, nullptr, -1, "NIL"},
      {"null on a text", String(KVW("ab")), nullptr, 3, "\"ab\""},
      {"null on EMPTY", String::EMPTY, nullptr, -1, "EMPTY"},
      {"measured on NIL", String::NIL, KVW("cd"), -1, "\"cd\""},
      {"counted on NIL", String::NIL, KVW("cd"), 1, "\"c\""},
      {"terminator counted on NIL", String::NIL, KVW("cd"), 3, "\"cd\""},
      {"size 0 on NIL", String::NIL, KVW("cd"), 0, "\"\""},
      {"empty text on NIL", String::NIL, KVW(""), -1, "\"\""},
      {"measured on EMPTY", String::EMPTY, KVW("cd"), -1, "\"cd\""},
      {"empty text on EMPTY", String::EMPTY, KVW(""), -1, "\"\""},
      {"measured", String(KVW("ab")), KVW("cd"), -1, "\"abcd\""},
      {"counted", String(KVW("ab")), KVW("cd"), 1, "\"abc\""},
      {"size 0", String(KVW("ab")), KVW("cd"), 0, "\"ab\""},
      {"terminator counted stays", String(KVW("ab")), KVW("cd"), 3, "\"abcd\\0\""},
      {"inner NUL counted", String(KVW("ab")), czd, 3, "\"abc\\0d\""},
      {"inner NUL measured", String(KVW("ab")), czd, -1, "\"abc\""},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    String written = row.receiver;
    written.write(row.text, row.size);
    EXPECT_EQ(state(written), row.expected);
  }
}

TEST(StringValue, WriteBuildsANewPayload) {
  String a(KVW("ab"));
  wchar const* const old = a;
  String const keep = a;
  a.write(KVW(""), 0);
  EXPECT_TRUE(old != static_cast<wchar const*>(a)) << "even where nothing is added";
  EXPECT_EQ(state(keep), "\"ab\"");
  a.write(a, -1);
  EXPECT_EQ(state(a), "\"abab\"") << "its own text may be written";
}

struct Pair {
  char const* name;
  wstring a;
  wstring b;
  int order;
  int foldedOrder;
};

std::initializer_list<Pair> const kPairs = {
    {"equal", KVW("abc"), KVW("abc"), 0, 0},
    {"both empty", wstring(), wstring(), 0, 0},
    {"prefix", KVW("ab"), KVW("abc"), -1, -1},
    {"empty against text", wstring(), KVW("a"), -1, -1},
    {"case", KVW("ABC"), KVW("abc"), -1, 0},
    {"underscore stands behind Z but before z", KVW("_"), KVW("A"), 1, -1},
    {"bracket against letter", KVW("a["), KVW("aB"), 1, -1},
    {"brace against letter", KVW("{"), KVW("Z"), 1, 1},
    {"units are unsigned", wstring(1, wchar(0x8000)), KVW("a"), 1, 1},
    {"the largest unit", wstring(1, wchar(0xFFFF)), wstring(1, wchar(0x7FFF)), 1, 1},
    {"surrogates by unit, not by character", wstring({wchar(0xD83D), wchar(0xDE00)}), wstring(1, wchar(0xFFFD)), -1,
     -1},
    {"umlauts are not folded", wstring(1, wchar(0xC4)), wstring(1, wchar(0xE4)), -1, -1},
    {"dotless i is not folded", wstring(1, wchar(0x131)), KVW("I"), 1, 1},
    {"Kelvin sign is not folded", wstring(1, wchar(0x212A)), KVW("k"), 1, 1},
    {"inner NUL ends the text", wstring({KVW('a'), wchar(0), KVW('x')}), wstring({KVW('a'), wchar(0), KVW('y')}), 0, 0},
    {"inner NUL against a longer text", wstring({KVW('a'), wchar(0), KVW('x')}), KVW("ab"), -1, -1},
};

TEST(StringValue, Comparison) {
  for (Pair const& pair : kPairs) {
    SCOPED_TRACE(pair.name);
    String const a = stringOf(pair.a);
    String const b = stringOf(pair.b);
    EXPECT_EQ(a.compare(b), pair.order);
    EXPECT_EQ(b.compare(a), -pair.order);
    EXPECT_EQ(a.compare(pair.b.c_str()), pair.order);
    EXPECT_EQ(String(a).compare(pair.b.c_str()), pair.order);
    EXPECT_EQ(String(a).compare(b), pair.order);
    EXPECT_EQ(signOf(a.compareIgnoreCase(b)), pair.foldedOrder);
    EXPECT_EQ(signOf(b.compareIgnoreCase(a)), -pair.foldedOrder);
    EXPECT_EQ(signOf(a.compareIgnoreCase(pair.b.c_str())), pair.foldedOrder);
    EXPECT_EQ(a < b, pair.order < 0);
    EXPECT_EQ(a > b, pair.order > 0);
    EXPECT_EQ(a <= b, pair.order <= 0);
    EXPECT_EQ(a >= b, pair.order >= 0);
    EXPECT_EQ(a == pair.b.c_str(), pair.order == 0);
    EXPECT_EQ(pair.order != 0, pair.a.c_str() != b);
    bool const equal = pair.order == 0 && pair.a.size() == pair.b.size();
    EXPECT_EQ(a.compareEquality(b), equal);
    EXPECT_EQ(a == b, equal);
    EXPECT_EQ(a != b, !equal);
  }
}

TEST(StringValue, ComparisonWithOneUnit) {
  String const a(KVW("a"));
  EXPECT_EQ(a.compare(KVW('a')), 0);
  EXPECT_EQ(a.compare(KVW('A')), 1);
  EXPECT_EQ(a.compare(KVW('b')), -1);
  EXPECT_EQ(a.compare(wchar(0)), 1);
  EXPECT_EQ(String(KVW("ab")).compare(KVW('a')), 1);
  EXPECT_EQ(String::EMPTY.compare(wchar(0)), 0);
  EXPECT_EQ(String::EMPTY.compare(KVW('a')), -1);
  EXPECT_EQ(String::NIL.compare(wchar(0)), -1);
  EXPECT_EQ(String::NIL.compare(KVW('a')), -1);
  EXPECT_EQ(a.compareIgnoreCase(KVW('A')), 0);
  EXPECT_GT(a.compareIgnoreCase(KVW('_')), 0);
  EXPECT_GT(a.compareIgnoreCase(wchar(0)), 0);
  EXPECT_EQ(String::EMPTY.compareIgnoreCase(wchar(0)), 0);
  EXPECT_EQ(String::NIL.compareIgnoreCase(wchar(0)), -1);
}

TEST(StringValue, UnequalLengthsThatAreNotBothKnownAreCompared) {
  String a = stringOf(wstring({KVW('a'), wchar(0), KVW('b')}));
  String const b(KVW("a"));
  EXPECT_FALSE(static_cast<String const&>(a).compareEquality(b));
  a[0] = KVW('a');  // the length is not known from here on
  EXPECT_TRUE(static_cast<String const&>(a).compareEquality(b));
}

TEST(StringValue, ChangeableStringsMergeWhenEqual) {
  for (bool const byEquality : {true, false}) {
    SCOPED_TRACE(byEquality);
    String a(KVW("abc"));
    String const b(KVW("abc"));
    String const other(KVW("abd"));
    wchar const* const old = a;
    EXPECT_FALSE(byEquality ? a.compareEquality(other) : a.compare(other) == 0);
    EXPECT_TRUE(old == static_cast<wchar const*>(a)) << "a different text changes nothing";
    EXPECT_TRUE(byEquality ? a.compareEquality(b) : a.compare(b) == 0);
    EXPECT_TRUE(shares(a, b));
    EXPECT_TRUE(byEquality ? a.compareEquality(b) : a.compare(b) == 0);
    EXPECT_TRUE(shares(a, b)) << "and once more with the shared payload";

    String const constant(KVW("abc"));
    EXPECT_TRUE(byEquality ? constant.compareEquality(b) : constant.compare(b) == 0);
    EXPECT_FALSE(shares(constant, b));
  }
  EXPECT_EQ(state(String(KVW("abc"))), "\"abc\"");
}

TEST(StringValue, MergingReleasesTheOldPayload) {
  AllocationFailure scope(0);
  int live = 0;
  {
    String a(KVW("abc"));
    String b(KVW("abc"));
    a.compareEquality(b);
    live = scope.live();
  }
  scope.end();
  EXPECT_EQ(live, 1);
  EXPECT_EQ(scope.live(), 0);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
