// SPDX-License-Identifier: MIT
//
// The number at the end of a text: read, set and stepped.
#include <gtest/gtest.h>

#include "tests/reference/string_index_model.h"
#include "tests/strings/string_support.h"
#include "tests/support/random_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

TEST(StringParseIndex, Get) {
  struct Row {
    char const* name;
    wchar const* text;
    unsigned int index;
  };
  Row const rows[] = {
      {"NIL", nullptr, 0},
      {"empty", KVW(""), 0},
      {"zeros in front", KVW("scan012"), 12},
      {"none", KVW("scan"), 0},
      {"digits only", KVW("007"), 7},
      {"a minus sign is no digit", KVW("file-1"), 1},
      {"a full stop is no digit", KVW("1.5"), 5},
      {"digits in front only", KVW("12scan"), 0},
      {"only the last digits", KVW("a1b2"), 2},
      {"a blank behind", KVW("scan1 "), 0},
      {"the largest int", KVW("x2147483647"), 2147483647u},
      {"one more", KVW("x2147483648"), 2147483647u},
      {"the largest unsigned int", KVW("x4294967295"), 2147483647u},
      {"twelve nines", KVW("x999999999999"), 2147483647u},
      {"more than 64 bits", KVW("x99999999999999999999999"), 2147483647u},
      {"Arabic digits", KVW("x\u0661\u0662"), 12},
      {"full-width digits", KVW("x\uFF11\uFF12"), 12},
      {"digits of two scripts", KVW("x1\uFF12"), 12},
      {"a superscript has no value", KVW("x\u00B2"), 0},
      {"a superscript ends the number", KVW("x5\u00B2"), 5},
      {"a superscript in front", KVW("x\u00B25"), 0},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    String const string(row.text);
    String const holder = string;
    EXPECT_EQ(string.getIndex(), row.index);
    EXPECT_TRUE(shares(string, holder));
  }
  EXPECT_EQ(String::EMPTY.getIndex(), 0u);
}

TEST(StringParseIndex, Set) {
  struct Row {
    char const* name;
    wchar const* text;
    unsigned int index;
    char const* result;
  };
  Row const rows[] = {
      {"replaced, its zeros lost", KVW("scan012"), 5, "scan5"},
      {"0 leaves it off", KVW("scan012"), 0, "scan"},
      {"0 where nothing else remains", KVW("012"), 0, "0"},
      {"0 on an empty text", KVW(""), 0, "0"},
      {"0 on NIL", nullptr, 0, "0"},
      {"0 without digits", KVW("scan"), 0, "scan"},
      {"on NIL", nullptr, 5, "5"},
      {"on an empty text", KVW(""), 5, "5"},
      {"appended", KVW("scan"), 7, "scan7"},
      {"digits only", KVW("007"), 8, "8"},
      {"the largest", KVW("scan1"), 4294967295u, "scan4294967295"},
      {"behind a minus sign", KVW("file-1"), 2, "file-2"},
      {"in place of other digits", KVW("x\u0661\u00B2"), 3, "x3"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    String string(row.text);
    String const holder = string;
    string.setIndex(row.index);
    EXPECT_EQ(spelled(string), "\"" + std::string(row.result) + "\"");
    EXPECT_EQ(spelled(holder), spelled(String(row.text)));
  }
  String empty = String::EMPTY;
  empty.setIndex(0);
  EXPECT_EQ(spelled(empty), "\"0\"");
  EXPECT_EQ(String::EMPTY.length(), 0);
}

struct StepRow {
  char const* name;
  wchar const* text;
  char const* up;
  char const* down;
};

StepRow const kStepRows[] = {
    {"NIL", nullptr, "1", "1"},
    {"empty", KVW(""), "1", "1"},
    {"without digits", KVW("scan"), "scan1", "scan1"},
    {"the width stays", KVW("file009"), "file010", "file008"},
    {"the width grows upward", KVW("file99"), "file100", "file98"},
    {"digits only", KVW("9"), "10", "8"},
    {"the width stays downward", KVW("file10"), "file11", "file09"},
    {"three digits downward", KVW("file100"), "file101", "file099"},
    {"to zero", KVW("file1"), "file2", "file0"},
    {"below zero, digits only", KVW("0"), "1", "-1"},
    {"below zero, one digit", KVW("file0"), "file1", "file-1"},
    {"below zero, two digits", KVW("file00"), "file01", "file-1"},
    {"below zero, three digits", KVW("file000"), "file001", "file0-1"},
    {"a minus sign is no digit", KVW("file-1"), "file-2", "file-0"},
    {"the largest int", KVW("x2147483647"), "x-2147483648", "x2147483646"},
    {"saturated", KVW("x999999999999"), "x0-2147483648", "x002147483646"},
    {"Arabic digits", KVW("x\u0661\u0669"), "x20", "x18"},
    {"a digit without value", KVW("x\u07C5"), "x1", "x-1"},
    {"a superscript has no value", KVW("x\u00B2"), "x1", "x-1"},
    {"a superscript ends the number", KVW("x5\u00B2"), "x06", "x04"},
};

TEST(StringParseIndex, Step) {
  for (StepRow const& row : kStepRows) {
    SCOPED_TRACE(row.name);
    String up(row.text);
    up.incrementIndex();
    EXPECT_EQ(spelled(up), "\"" + std::string(row.up) + "\"");
    String down(row.text);
    down.decrementIndex();
    EXPECT_EQ(spelled(down), "\"" + std::string(row.down) + "\"");
  }
}

TEST(StringParseIndex, StepsOfTheSameWidthKeepAnUnsharedPayload) {
  String string(KVW("file009"));
  wchar const* const before = string;
  string.incrementIndex();
  EXPECT_EQ(static_cast<wchar const*>(string), before);
  EXPECT_EQ(spelled(string), "\"file010\"");
  EXPECT_EQ(string.length(), 7);
}

// Setting index 0 on a text without digits changes nothing but gives the receiver a payload of its own.
TEST(StringParseIndex, SetToNothingUnshares) {
  String const holder(KVW("scan"));
  String string = holder;
  string.setIndex(0);
  EXPECT_EQ(spelled(string), "\"scan\"");
  EXPECT_FALSE(shares(string, holder));
  wchar const* const own = string;
  string.setIndex(0);
  EXPECT_EQ(static_cast<wchar const*>(string), own);
}

// --- Against the model -----------------------------------------------------------------------------------------------

void compareSplit(Text const& text, unsigned int index) {
  String const original = stringOf(text);
  if (original.getIndex() != reference::indexOf(text)) FAIL() << "getIndex of " << spelled(text);

  Text expected = text;
  reference::setIndex(expected, index);
  String string = original;
  string.setIndex(index);
  if (unitsOf(string) != expected) FAIL() << "setIndex of " << spelled(text) << " gives " << spelled(string);

  for (int const step : {1, -1}) {
    expected = text;
    reference::stepIndex(expected, step);
    string = original;
    step > 0 ? string.incrementIndex() : string.decrementIndex();
    if (unitsOf(string) != expected)
      FAIL() << "step " << step << " of " << spelled(text) << " gives " << spelled(string);
  }
  if (unitsOf(original) != text) FAIL() << spelled(text) << " changed for another holder";
}

TEST(StringParseIndex, RandomTextsAgreeWithTheModel) {
  static wchar const kDigits[] = {KVW('0'), KVW('9'), KVW('1'), 0x0665, 0xFF19, 0x00B2, KVW('7')};
  RandomText random(260);
  for (int i = 0; i < kRounds; ++i) {
    Text text;
    if (!random.oneIn(50))
      text = random.text(random.below(6), random.oneIn(3) ? RandomUnits::kAny : RandomUnits::kAscii);
    int const digits = random.oneIn(2) ? random.below(4) : random.below(14);
    int const kinds = random.oneIn(3) ? 7 : 3;
    for (int k = 0; text && k < digits; ++k) *text += kDigits[random.below(kinds)];
    compareSplit(text, static_cast<unsigned>(random.below(20) << random.below(28)));
    if (HasFatalFailure()) return;
  }
}

TEST(StringParseIndex, SampledUnitsAgreeWithTheModel) {
  for (wchar const code : sampledUnits()) {
    wstring const unit(1, code);
    compareSplit(unit, 3);
    compareSplit(KVW("5") + unit, 0);
    compareSplit(unit + KVW("5"), 12);
    if (HasFatalFailure()) return;
  }
}

TEST(StringParseIndex, LongTexts) {
  compareSplit(wstring(1 << 16, KVW('9')), 5);
  compareSplit(wstring(1 << 16, KVW('0')) + KVW("41"), 5);
  compareSplit(wstring(1 << 16, KVW('x')), 5);
  compareSplit(RandomText(261).text(1 << 16, RandomUnits::kAny) + KVW("099"), 5);
}

// The index is at the very end of the text, also behind a NUL. Reading it leaves the text as it is; to set or step it units
// are written, after which the text ends at the NUL.
TEST(StringParseIndex, BehindANul) {
  struct Row {
    char const* name;
    wstring text;
    unsigned int index;
    char const* set;
    char const* up;
    char const* down;
  } const rows[] = {
      {"of the same width", wstring(KVW("a1\0b12"), 6), 12, "a15", "a1", "a1"},
      {"that grows upward", wstring(KVW("a\0b99"), 5), 99, "a5", "a0", "a"},
      {"that grows downward", wstring(KVW("a\0b0"), 4), 0, "a5", "a", "a1"},
      {"that is missing", wstring(KVW("a1\0b"), 4), 0, "a15", "a11", "a11"},
      {"directly", wstring(KVW("a1\0"), 3), 0, "a15", "a11", "a11"},
      {"that is the first unit", wstring(KVW("\0b7"), 3), 7, "5", "", ""},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    String const string = stringOf(row.text);
    EXPECT_EQ(string.getIndex(), row.index);
    EXPECT_EQ(units(string), row.text);
    String changed = string;
    changed.setIndex(5);
    EXPECT_EQ(spelled(changed), '"' + std::string(row.set) + '"');
    changed = string;
    changed.incrementIndex();
    EXPECT_EQ(spelled(changed), '"' + std::string(row.up) + '"');
    changed = string;
    changed.decrementIndex();
    EXPECT_EQ(spelled(changed), '"' + std::string(row.down) + '"');
    EXPECT_EQ(units(string), row.text);
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
