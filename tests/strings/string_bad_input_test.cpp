// SPDX-License-Identifier: MIT
//
// Unusual texts: every unit, lone surrogates, inner NULs, and a million units. An operation that took more than linear time
// would hang on the large ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/reference/string_encoding.h"
#include "tests/reference/string_model.h"
#include "tests/strings/string_operations.h"
#include "tests/strings/string_support.h"
#include "tests/support/random_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

wstring everyUnit() {
  wstring text;
  for (int unit = 1; unit <= 0xFFFF; ++unit) text += static_cast<wchar>(unit);
  return text;
}

TEST(StringBadInput, EveryUnitInOneText) {
  wstring const all = everyUnit();
  String const text = stringOf(all);
  ASSERT_EQ(text.length(), 0xFFFF);
  EXPECT_TRUE(units(text) == all);
  for (wchar const unit : sampledUnits()) {
    ASSERT_EQ(text.find(unit, 0), unit - 1);
    ASSERT_EQ(text.findLastOf(unit, 0), unit - 1);
  }
  EXPECT_EQ(text.find(String(wchar(0x8000), 1), 0), 0x8000 - 1);
  EXPECT_TRUE(text.endsWith(stringOf(all.substr(0x7000))));
  EXPECT_TRUE(text.startsWith(stringOf(all.substr(0, 0x7000))));
  EXPECT_TRUE(text.substr(5, 60000) == stringOf(all.substr(5, 59995)));
  EXPECT_EQ(text.stringUTF8(), reference::toUtf8(all));
  EXPECT_TRUE((text + text).find(text, 1) == 0xFFFF);
}

TEST(StringBadInput, EveryUnitThroughTheOperations) {
  for (wchar const unit : sampledUnits()) {
    int const value = unit;
    wstring const plain = {KVW('<'), unit, KVW('>')};
    String const text = stringOf(plain);
    String const one(unit, 1);
    ASSERT_EQ(one.length(), 1) << value;
    ASSERT_EQ(one.compare(unit), 0) << value;
    ASSERT_TRUE(text == KVW('<') + one + KVW('>')) << value;
    ASSERT_EQ(text.compare(KVW("<a>")), reference::compare(plain, KVW("<a>"))) << value;
    ASSERT_EQ(text.compareIgnoreCase(KVW("<a>")) > 0, reference::compareIgnoreCase(plain, KVW("<a>")) > 0) << value;
    String replaced = text;
    bool const bracket = unit == KVW('<') || unit == KVW('>');
    ASSERT_EQ(replaced.replace(one, String(KVW("--"))), bracket ? 2 : 1) << value;
    ASSERT_TRUE(bracket || replaced == KVW("<-->")) << value;
    String const trimmed = one.trim(true, true);
    ASSERT_TRUE(reference::isSpace(unit) ? shares(trimmed, String::EMPTY) : shares(trimmed, one)) << value;
    String printed;
    printed.printf(KVW("<%ls>"), one);
    ASSERT_TRUE(printed == text) << value;
  }
}

TEST(StringBadInput, HalvesOfPairsArePlainUnits) {
  wchar const high = wchar(0xD83D);
  wchar const low = wchar(0xDE00);
  wstring const texts[] = {
      wstring(1, high), wstring(1, low), {low, high}, {high, high, low}, {KVW('a'), high, KVW('b')}};
  for (wstring const& plain : texts) {
    String const text = stringOf(plain);
    EXPECT_EQ(text.length(), static_cast<int>(plain.size()));
    EXPECT_TRUE(units(text) == plain);
    EXPECT_TRUE(units(text.substr(0, 1)) == plain.substr(0, 1));
    EXPECT_EQ(text.stringUTF8(), reference::toUtf8(plain));
    EXPECT_FALSE(isNil(String(UTF8Interface(text.stringUTF8()))));
    String cut = text;
    EXPECT_EQ(cut.replace(String(high, 1), nullptr), std::count(plain.begin(), plain.end(), high));
    EXPECT_EQ(cut.find(high, 0), -1);
  }
  String pair = stringOf({high, low});
  EXPECT_EQ(pair.find(low, 0), 1) << "positions count units, so a search may find half of a pair";
}

// No operation crashes or hangs, and other Strings that share the text keep it.
TEST(StringBadInput, EveryOperationOnOddTexts) {
  std::size_t const many = 1 << 16;
  std::vector<wstring> texts = {everyUnit(),
                                wstring(many, KVW('a')),
                                wstring(many, KVW(' ')),
                                wstring(many, KVW('\\')),
                                wstring(many, KVW('9')),
                                KVW("\"") + wstring(many, KVW('/')),
                                wstring(1, wchar(0xD83D)),
                                wstring({wchar(0xDE00), wchar(0xD83D), KVW('b')}),
                                wstring({wchar(0), KVW('a'), wchar(0), wchar(0), KVW(' '), KVW('1'), wchar(0)})};
  RandomText random(49);
  for (int length = 1; length < 40; ++length) texts.push_back(random.text(length, RandomUnits::kAnyWithNul));
  for (StringOperation const& operation : stringOperations()) {
    SCOPED_TRACE(operation.name);
    for (wstring const& plain : texts) {
      String const text = stringOf(plain);
      String receiver = text;
      operation.run(receiver);
      if (units(text) != plain) FAIL() << spelled(plain.substr(0, 50)) << " changed for another holder";
      if (operation.effect == StringOperation::kKeeps) ASSERT_TRUE(shares(receiver, text));
    }
  }
}

constexpr int kMany = 1 << 20;

TEST(StringBadInput, AMillionUnits) {
  String const text(KVW('a'), kMany);
  String const other = String(KVW('a'), kMany - 1) + KVW('b');
  ASSERT_EQ(text.length(), kMany);
  EXPECT_EQ(text.compare(other), -1);
  EXPECT_FALSE(text.compareEquality(other));
  EXPECT_LT(text.compareIgnoreCase(other), 0);
  EXPECT_EQ(other.find(KVW('b'), 0), kMany - 1);
  EXPECT_EQ(text.find(KVW('b'), 0), -1);
  EXPECT_EQ(text.findLastOf(KVW('a'), 0), kMany - 1);
  EXPECT_EQ(text.findNonAlpha(0), -1);
  EXPECT_EQ(text.findLastOf(KVW("a")), kMany - 1);
  EXPECT_EQ(static_cast<int>(std::string(text.stringUTF8()).size()), kMany);
  EXPECT_TRUE(shares(text.trim(true, true), text));
  EXPECT_TRUE(shares(String(KVW(' '), kMany).trim(true, true), String::EMPTY));
}

TEST(StringBadInput, SearchesWithAMillionFalseStarts) {
  String const text(KVW('a'), kMany);
  String const half(KVW('a'), kMany / 2);
  for (String const& wanted : {half + KVW('b'), KVW('b') + half, half.substr(0, kMany / 4) + KVW('b') + half}) {
    EXPECT_EQ(text.find(wanted, 0), -1);
    EXPECT_EQ(text.findLastOf(wanted), -1);
    String replaced = text;
    EXPECT_EQ(replaced.replace(wanted, String(KVW("x"))), 0);
    EXPECT_TRUE(shares(replaced, text));
  }
  EXPECT_EQ(text.findLastOf(half), kMany / 2);
}

TEST(StringBadInput, ManyReplacements) {
  // Enough for more than linear time to be noticed.
  constexpr int kTimes = kMany / 4;
  struct Row {
    char const* name;
    wchar const* from;
    wchar const* to;
    int count;
    String expected;
  } const rows[] = {
      {"growing", KVW("a"), KVW("bcd"), kTimes, String(KVW("bcd"))},
      {"the same size", KVW("a"), KVW("b"), kTimes, String(KVW("b"))},
      {"shrinking", KVW("aa"), KVW("b"), kTimes / 2, String(KVW("b"))},
      {"deleting", KVW("a"), nullptr, kTimes, String::EMPTY},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    String text(KVW('a'), kTimes);
    EXPECT_EQ(text.replace(row.from, row.to), row.count);
    EXPECT_EQ(text.length(), row.count * row.expected.length());
    EXPECT_TRUE(text.startsWith(row.expected));
  }
  String text(KVW('a'), kTimes);
  EXPECT_EQ(text.replace(KVW('a'), KVW('b')), kTimes);
  EXPECT_TRUE(text == String(KVW('b'), kTimes));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
