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

// Without NULs at the end: a constructor drops one there.
wstring stripped(wstring text) {
  while (!text.empty() && text.back() == 0) text.pop_back();
  return text;
}

// Mostly texts of few different units, so that searches succeed and comparisons do not end at the first unit.
wstring randomText(RandomText& random, int maxLength) {
  RandomUnits const kind = random.oneIn(3)   ? RandomUnits::kAnyWithNul
                           : random.oneIn(5) ? RandomUnits::kAny
                                             : RandomUnits::kFew;
  return stripped(random.text(random.below(random.oneIn(8) ? 4 * maxLength : maxLength), kind));
}

// A variant of `text`: another unit, another case or a shorter end.
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

TEST(StringRandom, Search) {
  RandomText random(41);
  for (int round = 0; round < kRounds; ++round) {
    wstring const text = randomText(random, 60);
    wstring const wanted = piece(random, text);
    wchar const unit = random.oneIn(8) ? wchar(0) : random.unit(RandomUnits::kFew);
    int const from = position(random, text);
    String const string = stringOf(text);
    ASSERT_EQ(string.find(wanted.c_str(), from), reference::find(text, wanted, from)) << "round " << round;
    ASSERT_EQ(string.find(unit, from), reference::find(text, unit, from)) << "round " << round;
    ASSERT_EQ(string.findLastOf(wanted.c_str()), reference::findLastOf(text, wanted)) << "round " << round;
    ASSERT_EQ(string.findLastOf(unit, from), reference::findLastOf(text, unit, from)) << "round " << round;
  }
}

TEST(StringRandom, Comparison) {
  RandomText random(43);
  for (int round = 0; round < kRounds; ++round) {
    wstring const a = randomText(random, 60);
    wstring const b = neighbour(random, a);
    String const stringA = stringOf(a);
    String const stringB = stringOf(b);
    ASSERT_EQ(stringA.compare(stringB), reference::compare(a, b)) << "round " << round;
    ASSERT_EQ(stringA.compare(b.c_str()), reference::compare(a, b)) << "round " << round;
    ASSERT_EQ(stringA.compareEquality(stringB), reference::equal(a, b)) << "round " << round;
    ASSERT_EQ(signOf(stringA.compareIgnoreCase(stringB)), reference::compareIgnoreCase(a, b)) << "round " << round;
    ASSERT_EQ(signOf(stringA.compareIgnoreCase(b.c_str())), reference::compareIgnoreCase(a, b)) << "round " << round;

    String merged = stringA;
    ASSERT_EQ(merged.compareEquality(stringB), reference::equal(a, b)) << "round " << round;
    ASSERT_EQ(shares(merged, stringB), reference::equal(a, b)) << "round " << round;
    merged = stringA;
    ASSERT_EQ(merged.compare(stringB), reference::compare(a, b)) << "round " << round;
    ASSERT_EQ(shares(merged, stringB), reference::compare(a, b) == 0) << "round " << round;
  }
}

TEST(StringRandom, FrontAndEnd) {
  RandomText random(44);
  for (int round = 0; round < kRounds; ++round) {
    wstring const text = randomText(random, 40);
    std::size_t const cut = static_cast<std::size_t>(random.below(static_cast<int>(text.size()) + 1));
    wstring const front = neighbour(random, text.substr(0, cut));
    wstring const end = neighbour(random, text.substr(cut));
    String const string = stringOf(text);
    // Whether units behind a NUL of the prefix count is not specified.
    bool const nulFree = front.find(wchar(0)) == wstring::npos;
    if (nulFree) ASSERT_EQ(string.startsWith(stringOf(front)), reference::startsWith(text, front)) << "round " << round;
    ASSERT_EQ(string.endsWith(stringOf(end)), reference::endsWith(text, end, false)) << "round " << round;
    ASSERT_EQ(string.endsWith(stringOf(end), true), reference::endsWith(text, end, true)) << "round " << round;
  }
}

TEST(StringRandom, Substr) {
  RandomText random(45);
  for (int round = 0; round < kRounds; ++round) {
    wstring const text = randomText(random, 40);
    int const start = position(random, text);
    int const end = position(random, text);
    String const string = stringOf(text);
    String const part = string.substr(start, end);
    wstring const expected = reference::substr(text, start, end);
    ASSERT_EQ(units(part), expected) << "round " << round;
    ASSERT_EQ(shares(part, string), !text.empty() && expected.size() == text.size()) << "round " << round;
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
    String const string = stringOf(text);
    String const trimmed = string.trim(left, right);
    wstring const expected = reference::trim(text, left, right);
    ASSERT_EQ(units(trimmed), expected) << "round " << round;
    ASSERT_EQ(shares(trimmed, string), expected.size() == text.size()) << "round " << round;
    // A remaining lone NUL is an empty text for readers, but it is not EMPTY.
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
    String const before = stringOf(text);
    String string = before;
    wstring expected = text;
    int const count = from.empty() ? 0 : reference::replace(expected, from, to);
    ASSERT_EQ(string.replace(from.c_str(), to.c_str()), count) << "round " << round;
    ASSERT_EQ(units(string), expected) << "round " << round;
    ASSERT_EQ(units(before), text) << "round " << round;
    if (count == 0 && !text.empty()) ASSERT_TRUE(shares(string, before)) << "round " << round;

    wchar const unitFrom = random.unit(RandomUnits::kFew);
    wchar const unitTo = random.oneIn(8) ? wchar(0) : random.unit(RandomUnits::kAny);
    if (reference::at(text, 0) == 0) continue;
    string = before;
    expected = text;
    ASSERT_EQ(string.replace(unitFrom, unitTo), reference::replaceUnit(expected, unitFrom, unitTo))
        << "round " << round;
    ASSERT_EQ(units(string), reference::visible(expected)) << "round " << round;
    ASSERT_EQ(units(before), text) << "round " << round;
  }
}

TEST(StringRandom, Addition) {
  RandomText random(48);
  for (int round = 0; round < kRounds; ++round) {
    wstring const a = randomText(random, 40);
    wstring const b = randomText(random, 40);
    String const stringA = stringOf(a);
    String const stringB = stringOf(b);
    ASSERT_EQ(units(stringA + stringB), a + b) << "round " << round;
    ASSERT_EQ(units(stringA + b.c_str()), a + reference::visible(b)) << "round " << round;
    ASSERT_EQ(units(a.c_str() + stringB), reference::visible(a) + b) << "round " << round;
    wchar const unit = random.unit(RandomUnits::kAny);
    ASSERT_EQ(units(stringA + unit), a + unit) << "round " << round;
    ASSERT_EQ(units(unit + stringB), unit + b) << "round " << round;

    String written = stringA;
    int const size = random.between(-1, static_cast<int>(b.size()));
    written.write(b.c_str(), size);
    wstring const added = size < 0 ? reference::visible(b) : b.substr(0, static_cast<std::size_t>(size));
    ASSERT_EQ(units(written), a + added) << "round " << round;
    ASSERT_EQ(units(stringA), a) << "round " << round;

    String fresh;
    fresh.write(b.c_str(), size);
    ASSERT_EQ(units(fresh), size < 0 ? added : reference::bySizeRule(added)) << "round " << round;
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
