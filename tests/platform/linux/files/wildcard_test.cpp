// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/files/wildcard.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

using platform::upperCased;
using platform::Wildcard;

bool matches(wstring const& pattern, wstring const& name) {
  return Wildcard(pattern.data(), pattern.size()).matches(name.data(), name.size());
}

// A direct implementation of the rules that tries every possibility.
bool matchesSlowly(wstring const& pattern, std::size_t p, wstring const& name, std::size_t n) {
  if (p == pattern.size()) return n == name.size();
  if (pattern[p] == '*') {
    for (std::size_t i = n; i <= name.size(); ++i) {
      if (matchesSlowly(pattern, p + 1, name, i)) return true;
    }
    return false;
  }
  if (pattern[p] == '?') {
    bool const takesNothing = n == name.size() || n == name.rfind(KVW('.'));
    return matchesSlowly(pattern, p + 1, name, takesNothing ? n : n + 1);
  }
  return n < name.size() && upperCased(pattern[p]) == upperCased(name[n]) && matchesSlowly(pattern, p + 1, name, n + 1);
}

TEST(WildcardTest, MatchesByTheRules) {
  struct Row {
    wchar const* pattern;
    wchar const* name;
    bool isMatch;
  };
  Row const rows[] = {
      {KVW("*"), KVW("anything.at.all"), true},
      {KVW("*"), KVW("."), true},
      {KVW("*.*"), KVW("plain"), true},
      {KVW("*.*"), KVW(".."), true},
      {KVW("**"), KVW("x"), true},
      {KVW("*.txt"), KVW("a.txt"), true},
      {KVW("*.txt"), KVW("a.TXT"), true},
      {KVW("*.txt"), KVW(".txt"), true},
      {KVW("*.txt"), KVW("a.txtx"), false},
      {KVW("*.txt"), KVW("txt"), false},
      {KVW("a*b*c"), KVW("aXbXbXc"), true},
      {KVW("a*b*c"), KVW("aXcXb"), false},
      {KVW("scan??.dat"), KVW("scan01.dat"), true},
      {KVW("scan??.dat"), KVW("Scan1.DAT"), true},
      {KVW("scan??.dat"), KVW("scan.dat"), true},
      {KVW("scan??.dat"), KVW("scan012.dat"), false},
      {KVW("a?"), KVW("a"), true},
      {KVW("a?b"), KVW("ab"), false},
      {KVW("a?.b.c"), KVW("a.b.c"), false},
      {KVW("a.b?.c"), KVW("a.b.c"), true},
      {KVW("?"), KVW("a"), true},
      {KVW("?"), KVW("ab"), false},
      {KVW("plain"), KVW("PLAIN"), true},
      {KVW("plain"), KVW("plain2"), false},
      {KVW("\u00E4*"), KVW("\u00C4b"), true},
      {KVW("\u0436"), KVW("\u0416"), true},
      {KVW("[a]"), KVW("a"), false},
      {KVW(""), KVW("a"), false},
  };
  for (Row const& row : rows) {
    EXPECT_EQ(matches(row.pattern, row.name), row.isMatch) << narrow(row.pattern) << " on " << narrow(row.name);
  }
}

TEST(WildcardTest, AgreesWithTheSlowReference) {
  std::mt19937 random(42);
  auto const randomText = [&random](char const* alphabet, std::size_t units, std::size_t most) {
    wstring text;
    for (std::size_t n = random() % (most + 1); n > 0; --n) text += static_cast<wchar>(alphabet[random() % units]);
    return text;
  };
  int matched = 0;
  for (int i = 0; i < 300000; ++i) {
    wstring const pattern = randomText("aB.*?", 5, 7);
    wstring const name = randomText("abB.", 4, 8);
    bool const expected = pattern == KVW("*.*") || matchesSlowly(pattern, 0, name, 0);
    matched += expected;
    ASSERT_EQ(matches(pattern, name), expected) << narrow(pattern) << " on " << narrow(name);
  }
  EXPECT_GT(matched, 10000);
}

// A matcher that tries every possibility would never finish this.
TEST(WildcardTest, ManyAsterisksCostLittle) {
  wstring pattern;
  for (int i = 0; i < 60; ++i) pattern += KVW("*a?");
  pattern += KVW("*b");
  EXPECT_FALSE(matches(pattern, wstring(255, KVW('a'))));
  EXPECT_TRUE(matches(pattern, wstring(254, KVW('a')) + KVW('b')));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
