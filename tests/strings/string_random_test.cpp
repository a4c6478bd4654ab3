// SPDX-License-Identifier: MIT
//
// Strings against a slow model, on seeded random text with lone surrogates and inner NULs.
#include <gtest/gtest.h>

#include "tests/reference/string_model.h"
#include "tests/strings/string_support.h"
#include "tests/support/random_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

constexpr int kRounds = 25000;

// Without NULs at the end: a constructor drops one there.
wstring stripped(wstring text) {
  while (!text.empty() && text.back() == 0) text.pop_back();
  return text;
}

// Texts of few units for the greater part, so that searches find and comparisons go deep.
wstring randomText(RandomText& random, int maxLength) {
  RandomUnits const kind = random.oneIn(3)   ? RandomUnits::kAnyWithNul
                           : random.oneIn(5) ? RandomUnits::kAny
                                             : RandomUnits::kFew;
  return stripped(random.text(random.below(random.oneIn(8) ? 4 * maxLength : maxLength), kind));
}

// Like `text`, but for a unit here or there, its case, or its end.
wstring neighbour(RandomText& random, wstring text) {
  if (random.oneIn(6)) return randomText(random, 40);
  if (random.oneIn(3)) text = text.substr(0, static_cast<std::size_t>(random.below(static_cast<int>(text.size()) + 1)));
  if (!text.empty() && random.oneIn(2)) {
    text[static_cast<std::size_t>(random.below(static_cast<int>(text.size())))] = random.unit(RandomUnits::kAny);
  }
  if (random.oneIn(2)) text = reference::lowerCase(text);
  return stripped(text);
}

// A piece to search for; never with a NUL, rarely empty.
wstring piece(RandomText& random, wstring const& text) {
  if (text.empty() || random.oneIn(4)) return random.text(random.between(0, 4), RandomUnits::kFew);
  int const start = random.below(static_cast<int>(text.size()));
  return reference::visible(
      text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(random.between(1, 5))));
}

int position(RandomText& random, wstring const& text) {
  return random.between(-2, static_cast<int>(text.size()) + 2);
}

int sign(int value) {
  return (value > 0) - (value < 0);
}

TEST(StringRandom, Search) {
  RandomText random(41);
  for (int round = 0; round < kRounds; ++round) {
    wstring const text = randomText(random, 60);
    wstring const wanted = piece(random, text);
    wchar const unit = random.oneIn(8) ? wchar(0) : random.unit(RandomUnits::kFew);
    int const from = position(random, text);
    String const string = make(text);
    ASSERT_EQ(reference::find(text, wanted, from), string.find(wanted.c_str(), from)) << "round " << round;
    ASSERT_EQ(reference::find(text, unit, from), string.find(unit, from)) << "round " << round;
    ASSERT_EQ(reference::findLastOf(text, wanted), string.findLastOf(wanted.c_str())) << "round " << round;
    ASSERT_EQ(reference::findLastOf(text, unit, from), string.findLastOf(unit, from)) << "round " << round;
  }
}

TEST(StringRandom, ClassSearch) {
  struct Search {
    char const* name;
    int (*search)(String const& text, int from);
    bool (*accepts)(wchar unit);
  } const searches[] = {
      {"findAlpha", [](String const& s, int from) { return s.findAlpha(from); }, &reference::isAlpha},
      {"findAlphaNum", [](String const& s, int from) { return s.findAlphaNum(from); }, &reference::isWordOrNumber},
      {"findDigit", [](String const& s, int from) { return s.findDigit(from, 0); }, &reference::isDigit},
      {"findNonDigit", [](String const& s, int from) { return s.findNonDigit(from); },
       [](wchar u) { return !reference::isDigit(u); }},
      {"findNumeric", [](String const& s, int from) { return s.findNumeric(from); }, &reference::isNumeric},
      {"findWS", [](String const& s, int from) { return s.findWS(from); },
       [](wchar u) { return !reference::isGraphic(u); }},
      {"findNonWS", [](String const& s, int from) { return s.findNonWS(from); }, &reference::isGraphic},
  };
  RandomText random(42);
  for (int round = 0; round < kRounds; ++round) {
    wstring const text = randomText(random, 30);
    String const string = make(text);
    int const from = position(random, text);
    for (Search const& row : searches) {
      int expected = reference::inText(text, from) ? from : static_cast<int>(text.size());
      while (expected < static_cast<int>(text.size()) && !row.accepts(reference::at(text, expected))) ++expected;
      if (expected == static_cast<int>(text.size())) expected = -1;
      ASSERT_EQ(expected, row.search(string, from)) << row.name << ", round " << round;
    }
  }
}

TEST(StringRandom, Comparison) {
  RandomText random(43);
  for (int round = 0; round < kRounds; ++round) {
    wstring const a = randomText(random, 60);
    wstring const b = neighbour(random, a);
    String const stringA = make(a);
    String const stringB = make(b);
    ASSERT_EQ(reference::compare(a, b), stringA.compare(stringB)) << "round " << round;
    ASSERT_EQ(reference::compare(a, b), stringA.compare(b.c_str())) << "round " << round;
    ASSERT_EQ(reference::equal(a, b), stringA.compareEquality(stringB)) << "round " << round;
    ASSERT_EQ(reference::compareIgnoreCase(a, b), sign(stringA.compareIgnoreCase(stringB))) << "round " << round;
    ASSERT_EQ(reference::compareIgnoreCase(a, b), sign(stringA.compareIgnoreCase(b.c_str()))) << "round " << round;

    String merged = stringA;
    ASSERT_EQ(reference::equal(a, b), merged.compareEquality(stringB)) << "round " << round;
    ASSERT_EQ(reference::equal(a, b), shares(merged, stringB)) << "round " << round;
    merged = stringA;
    ASSERT_EQ(reference::compare(a, b), merged.compare(stringB)) << "round " << round;
    ASSERT_EQ(reference::compare(a, b) == 0, shares(merged, stringB)) << "round " << round;
  }
}

TEST(StringRandom, FrontAndEnd) {
  RandomText random(44);
  for (int round = 0; round < kRounds; ++round) {
    wstring const text = randomText(random, 40);
    std::size_t const cut = static_cast<std::size_t>(random.below(static_cast<int>(text.size()) + 1));
    wstring const front = neighbour(random, text.substr(0, cut));
    wstring const end = neighbour(random, text.substr(cut));
    String const string = make(text);
    // Units behind a NUL of a prefix are compared too, but whether they count is of no interest here.
    bool const nulFree = front.find(wchar(0)) == wstring::npos;
    if (nulFree) ASSERT_EQ(reference::startsWith(text, front), string.startsWith(make(front))) << "round " << round;
    ASSERT_EQ(reference::endsWith(text, end, false), string.endsWith(make(end))) << "round " << round;
    ASSERT_EQ(reference::endsWith(text, end, true), string.endsWith(make(end), true)) << "round " << round;
  }
}

TEST(StringRandom, Substr) {
  RandomText random(45);
  for (int round = 0; round < kRounds; ++round) {
    wstring const text = randomText(random, 40);
    int const start = position(random, text);
    int const end = position(random, text);
    String const string = make(text);
    String const part = string.substr(start, end);
    wstring const expected = reference::substr(text, start, end);
    ASSERT_EQ(expected, units(part)) << "round " << round;
    ASSERT_EQ(!text.empty() && expected.size() == text.size(), shares(part, string)) << "round " << round;
    if (expected.empty() && text.empty()) ASSERT_TRUE(shares(part, String::EMPTY)) << "round " << round;
  }
}

TEST(StringRandom, Trim) {
  RandomText random(46);
  for (int round = 0; round < kRounds; ++round) {
    wstring const blanks[] = {random.text(random.below(4), RandomUnits::kFew),
                              wstring(static_cast<std::size_t>(random.below(40)), KVW(' '))};
    wstring const text = stripped(blanks[1] + randomText(random, 10) + blanks[random.below(2)]);
    bool const left = random.oneIn(2);
    bool const right = random.oneIn(2);
    String const string = make(text);
    String const trimmed = string.trim(left, right);
    wstring const expected = reference::trim(text, left, right);
    ASSERT_EQ(expected, units(trimmed)) << "round " << round;
    ASSERT_EQ(expected.size() == text.size(), shares(trimmed, string)) << "round " << round;
    // A lone NUL that remains is no text either, but it was not cut.
    bool const nulFree = text.find(wchar(0)) == wstring::npos;
    if (expected.empty() && !text.empty() && nulFree) ASSERT_TRUE(shares(trimmed, String::EMPTY)) << "round " << round;
  }
}

TEST(StringRandom, Replacement) {
  RandomText random(47);
  for (int round = 0; round < kRounds; ++round) {
    wstring const text = randomText(random, 60);
    wstring const from = piece(random, text);
    wstring const to = random.text(random.below(5), RandomUnits::kFew);
    String const before = make(text);
    String string = before;
    wstring expected = text;
    int const count = from.empty() ? 0 : reference::replace(expected, from, to);
    ASSERT_EQ(count, string.replace(from.c_str(), to.c_str())) << "round " << round;
    ASSERT_EQ(expected, units(string)) << "round " << round;
    ASSERT_EQ(text, units(before)) << "round " << round;
    if (count == 0 && !text.empty()) ASSERT_TRUE(shares(string, before)) << "round " << round;

    wchar const unitFrom = random.unit(RandomUnits::kFew);
    wchar const unitTo = random.oneIn(8) ? wchar(0) : random.unit(RandomUnits::kAny);
    if (reference::at(text, 0) == 0) continue;
    string = before;
    expected = text;
    ASSERT_EQ(reference::replaceUnit(expected, unitFrom, unitTo), string.replace(unitFrom, unitTo))
        << "round " << round;
    ASSERT_EQ(reference::visible(expected), units(string)) << "round " << round;
    ASSERT_EQ(text, units(before)) << "round " << round;
  }
}

TEST(StringRandom, Addition) {
  RandomText random(48);
  for (int round = 0; round < kRounds; ++round) {
    wstring const a = randomText(random, 40);
    wstring const b = randomText(random, 40);
    String const stringA = make(a);
    String const stringB = make(b);
    ASSERT_EQ(a + b, units(stringA + stringB)) << "round " << round;
    ASSERT_EQ(a + reference::visible(b), units(stringA + b.c_str())) << "round " << round;
    ASSERT_EQ(reference::visible(a) + b, units(a.c_str() + stringB)) << "round " << round;
    wchar const unit = random.unit(RandomUnits::kAny);
    ASSERT_EQ(a + unit, units(stringA + unit)) << "round " << round;
    ASSERT_EQ(unit + b, units(unit + stringB)) << "round " << round;

    String written = stringA;
    int const size = random.between(-1, static_cast<int>(b.size()));
    written.write(b.c_str(), size);
    wstring const added = size < 0 ? reference::visible(b) : b.substr(0, static_cast<std::size_t>(size));
    ASSERT_EQ(a + added, units(written)) << "round " << round;
    ASSERT_EQ(a, units(stringA)) << "round " << round;

    String fresh;
    fresh.write(b.c_str(), size);
    ASSERT_EQ(size < 0 ? added : reference::bySizeRule(added), units(fresh)) << "round " << round;
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
