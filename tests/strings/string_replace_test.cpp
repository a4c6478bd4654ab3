// SPDX-License-Identifier: MIT
//
// Replacement of units and of texts.
#include <gtest/gtest.h>

#include "tests/strings/string_support.h"
#include "tests/support/allocation_failure.h"

namespace KV_1_1 {
namespace testing {
namespace {

TEST(StringReplace, Units) {
  wstring const inner({KVW('a'), wchar(0), KVW('a')});
  struct Row {
    char const* name;
    String text;
    wchar from;
    wchar to;
    int count;
    char const* expected;
  } const rows[] = {
      {"every one", String(KVW("abab")), KVW('a'), KVW('x'), 2, "\"xbxb\""},
      {"none", String(KVW("abab")), KVW('x'), KVW('y'), 0, "\"abab\""},
      {"by itself counts", String(KVW("abab")), KVW('a'), KVW('a'), 2, "\"abab\""},
      {"by NUL ends the text, all of them count", String(KVW("babab")), KVW('a'), 0, 2, "\"b\""},
      {"by NUL at the front", String(KVW("aab")), KVW('a'), 0, 2, "\"\""},
      {"NUL matches nothing", String(KVW("ab")), 0, KVW('x'), 0, "\"ab\""},
      {"NUL by NUL", String(KVW("ab")), 0, 0, 0, "\"ab\""},
      {"behind an inner NUL nothing is looked at", stringOf(inner), KVW('a'), KVW('x'), 1, "\"x\""},
      {"in NIL", String::NIL, KVW('a'), KVW('x'), 0, "NIL"},
      {"in EMPTY", String::EMPTY, KVW('a'), KVW('x'), 0, "EMPTY"},
      {"in an empty text", String(KVW("")), KVW('a'), KVW('x'), 0, "\"\""},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    String text = row.text;
    EXPECT_EQ(text.replace(row.from, row.to), row.count);
    EXPECT_EQ(state(text), row.expected);
  }
}

TEST(StringReplace, UnitsAreWrittenInPlaceAfterUnsharing) {
  for (wchar const from : {KVW('a'), KVW('x')}) {
    String text(KVW("abab"));
    String const other = text;
    text.replace(from, KVW('y'));
    EXPECT_EQ(state(other), "\"abab\"");
    EXPECT_FALSE(shares(text, other)) << "whether or not something matched";

    wchar const* const payload = text;
    AllocationFailure scope(0);
    text.replace(KVW('b'), KVW('z'));
    scope.end();
    EXPECT_EQ(scope.allocations(), 0);
    EXPECT_TRUE(payload == static_cast<wchar const*>(text));
  }
}

TEST(StringReplace, UnitsInAnEmptyTextKeepSharing) {
  String const own(KVW(""));
  String text = own;
  EXPECT_EQ(text.replace(KVW('a'), KVW('b')), 0);
  EXPECT_TRUE(shares(text, own));
}

struct Replacement {
  char const* name;
  String text;
  wchar const* from;
  wchar const* to;
  int count;
  char const* expected;
};

std::initializer_list<Replacement> const kReplacements = {
    {"once", String(KVW("abc")), KVW("b"), KVW("x"), 1, "\"axc\""},
    {"shrinking", String(KVW("aaaa")), KVW("aa"), KVW("b"), 2, "\"bb\""},
    {"without overlap", String(KVW("aaa")), KVW("aa"), KVW("b"), 1, "\"ba\""},
    {"growing, not searched again", String(KVW("aba")), KVW("a"), KVW("aa"), 2, "\"aabaa\""},
    {"what is put together does not match", String(KVW("aabb")), KVW("ab"), KVW(""), 1, "\"ab\""},
    {"null deletes", String(KVW("bab")), KVW("a"), nullptr, 1, "\"bb\""},
    {"null deletes everything", String(KVW("abc")), KVW("abc"), nullptr, 1, "EMPTY"},
    {"an empty text deletes", String(KVW("bab")), KVW("a"), KVW(""), 1, "\"bb\""},
    {"an empty text deletes everything", String(KVW("abc")), KVW("abc"), KVW(""), 1, "\"\""},
    {"null deletes at the front", String(KVW("abc")), KVW("a"), nullptr, 1, "\"bc\""},
    {"null deletes at the end", String(KVW("abc")), KVW("c"), nullptr, 1, "\"ab\""},
    {"all of it", String(KVW("abc")), KVW("abc"), KVW("x"), 1, "\"x\""},
    {"case matters", String(KVW("abc")), KVW("B"), KVW("x"), 0, "\"abc\""},
    {"longer than the text", String(KVW("abc")), KVW("abcd"), KVW("x"), 0, "\"abc\""},
    {"null from", String(KVW("abc")), nullptr, KVW("x"), 0, "\"abc\""},
    {"empty from", String(KVW("abc")), KVW(""), KVW("x"), 0, "\"abc\""},
    {"NIL, null from", String::NIL, nullptr, KVW("x"), 0, "NIL"},
    {"NIL, empty from", String::NIL, KVW(""), KVW("x"), 0, "NIL"},
    {"NIL", String::NIL, KVW("a"), KVW("x"), 0, "EMPTY"},
    {"NIL, deleting", String::NIL, KVW("a"), nullptr, 0, "EMPTY"},
    {"EMPTY", String::EMPTY, KVW("a"), KVW("x"), 0, "EMPTY"},
    {"an empty text", String(KVW("")), KVW("a"), KVW("x"), 0, "EMPTY"},
    {"an empty text, empty from", String(KVW("")), KVW(""), KVW("x"), 0, "\"\""},
    {"what is behind an inner NUL is kept", stringOf(wstring({KVW('a'), wchar(0), KVW('a')})), KVW("a"), KVW("x"), 1,
     "\"x\\0a\""},
};

TEST(StringReplace, Texts) {
  for (Replacement const& row : kReplacements) {
    SCOPED_TRACE(row.name);
    String text = row.text;
    EXPECT_EQ(text.replace(row.from, row.to), row.count);
    EXPECT_EQ(state(text), row.expected);
    // The overloads that take Strings; their contract excludes a NIL `from`.
    String const to(row.to);
    text = row.text;
    EXPECT_EQ(text.replace(row.from, to), row.count);
    EXPECT_EQ(state(text), row.expected);
    if (row.from == nullptr) continue;
    text = row.text;
    EXPECT_EQ(text.replace(String(row.from), row.to), row.count);
    EXPECT_EQ(state(text), row.expected);
    text = row.text;
    EXPECT_EQ(text.replace(String(row.from), to), row.count);
    EXPECT_EQ(state(text), row.expected);
  }
}

TEST(StringReplace, ACountedTerminatorBehindTheLastMatchIsDropped) {
  String const text = [] {
    String ended(KVW("ab"));
    ended.write(KVW("c"), 2);
    return ended;
  }();
  ASSERT_EQ(state(text), "\"abc\\0\"");
  String replaced = text;
  EXPECT_EQ(replaced.replace(KVW("a"), KVW("x")), 1);
  EXPECT_EQ(state(replaced), "\"xbc\"");
  replaced = text;
  EXPECT_EQ(replaced.replace(KVW("y"), KVW("x")), 0);
  EXPECT_TRUE(shares(replaced, text)) << "without a match nothing is cut";
}

TEST(StringReplace, WithoutAMatchThePayloadStays) {
  String const other(KVW("abc"));
  String text = other;
  AllocationFailure scope(0);
  int const count = text.replace(KVW("x"), KVW("y"));
  scope.end();
  EXPECT_EQ(count, 0);
  EXPECT_EQ(scope.allocations(), 0);
  EXPECT_TRUE(shares(text, other));
}

TEST(StringReplace, OtherHoldersKeepTheirText) {
  String text(KVW("abc"));
  String const other = text;
  text.replace(KVW("b"), KVW("x"));
  EXPECT_EQ(state(text), "\"axc\"");
  EXPECT_EQ(state(other), "\"abc\"");
}

TEST(StringReplace, ArgumentsMayBeTheTextItself) {
  String text(KVW("ab"));
  EXPECT_EQ(text.replace(text, text + text), 1);
  EXPECT_EQ(state(text), "\"abab\"");
  EXPECT_EQ(text.replace(KVW("ba"), text), 1);
  EXPECT_EQ(state(text), "\"aababb\"");
  EXPECT_EQ(text.replace(text, String::NIL), 1);
  EXPECT_EQ(state(text), "EMPTY");
}

// The positions of the first matches are stored while the result is measured; later matches are searched for again.
TEST(StringReplace, AnyNumberOfMatchesIsReplaced) {
  for (int matches : {1, 255, 256, 257, 512, 1000}) {
    SCOPED_TRACE(matches);
    wstring before;
    wstring after;
    for (int i = 0; i < matches; ++i) {
      before += KVW("x--");
      after += KVW("x+++");
    }
    String text((before + KVW("end")).c_str());
    EXPECT_EQ(text.replace(KVW("--"), KVW("+++")), matches);
    EXPECT_TRUE(text == (after + KVW("end")).c_str());
    EXPECT_EQ(text.length(), 4 * matches + 3);
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
