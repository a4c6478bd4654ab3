// SPDX-License-Identifier: MIT
#include "kvbase/strings/string_less.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <type_traits>
#include <vector>

#include "tests/reference/text_kernels.h"
#include "tests/strings/string_support.h"
#include "tests/support/random_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

struct OrderRow {
  char const* name;
  String a;
  String b;
  bool less;
  bool greater;
};

TEST(StringLess, OrdersTwoTexts) {
  String const shared(KVW("Foo"));
  OrderRow const rows[] = {
      {"NIL and NIL", String::NIL, String::NIL, false, false},
      {"NIL and EMPTY", String::NIL, String::EMPTY, true, false},
      {"NIL and a text", String::NIL, KVW("a"), true, false},
      {"EMPTY and an empty text of its own", String::EMPTY, String(KVW(""), 0), false, false},
      {"EMPTY and a text", String::EMPTY, KVW("a"), true, false},
      {"one payload", shared, shared, false, false},
      {"equal texts", KVW("IDOK"), KVW("IDOK"), false, false},
      {"texts that differ in case", KVW("IDOK"), KVW("idok"), false, false},
      {"another letter", KVW("IDA"), KVW("idb"), true, false},
      {"a prefix", KVW("IDC_NAME"), KVW("idc_names"), true, false},
      {"an underscore and a capital letter", KVW("a_"), KVW("aB"), true, false},
      {"a digit and a letter", KVW("a1"), KVW("aB"), true, false},
      {"a unit between the cases of ASCII", KVW("["), KVW("A"), true, false},
      {"letters beyond ASCII are not folded", KVW("\u00C4"), KVW("\u00E4"), true, false},
      {"units are unsigned", KVW("z"), KVW("\uFF21"), true, false},
      {"a text ends at its first NUL", String(KVW("ab\0c"), 4), KVW("AB"), false, false},
      {"behind a NUL nothing counts", String(KVW("ab\0c"), 4), String(KVW("AB\0D"), 4), false, false},
      {"a text cut by a NUL", String(KVW("a\0z"), 3), KVW("ab"), true, false},
  };
  StringLess2 const less{};
  for (OrderRow const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(less(row.a, row.b), row.less);
    EXPECT_EQ(less(row.b, row.a), row.greater);
  }
}

TEST(StringLess, SeesATextThatWasWrittenTo) {
  String written(KVW("abc"));
  written[1] = KVW('\0');
  EXPECT_FALSE(StringLess2()(written, KVW("A")));
  EXPECT_FALSE(StringLess2()(KVW("A"), written));
  written[0] = KVW('b');
  EXPECT_TRUE(StringLess2()(KVW("A"), written));
}

TEST(StringLess, HasNoData) {
  EXPECT_TRUE(std::is_empty<StringLess2>::value);
  EXPECT_TRUE(std::is_trivial<StringLess2>::value);
}

TEST(StringLess, ASetHoldsOneNameOfAnyCase) {
  std::set<String, StringLess2> names;
  EXPECT_TRUE(names.insert(KVW("Beta")).second);
  EXPECT_TRUE(names.insert(KVW("alpha")).second);
  EXPECT_FALSE(names.insert(KVW("BETA")).second);
  EXPECT_TRUE(names.insert(String::NIL).second);
  EXPECT_TRUE(names.insert(String::EMPTY).second);
  std::vector<std::string> order;
  for (String const& name : names) order.push_back(spelled(name));
  EXPECT_EQ(order, (std::vector<std::string>{"NIL", "\"\"", "\"alpha\"", "\"Beta\""}));
}

// Against the order of the lower-case forms, unit by unit.
TEST(StringLess, AgreesWithTheModelOnRandomTexts) {
  RandomText random(43);
  for (int round = 0; round < kRounds; ++round) {
    RandomUnits const kind = random.oneIn(2) ? RandomUnits::kFew : RandomUnits::kAnyWithNul;
    wstring const a = random.text(random.below(40), kind);
    wstring b = random.oneIn(3) ? a : random.text(random.below(40), kind);
    for (wchar& unit : b)
      if (random.oneIn(4) && unit >= KVW('a') && unit <= KVW('z')) unit = static_cast<wchar>(unit - 32);
    wstring const lowerA = reference::lowerCase(a.substr(0, a.find(wchar(0))));
    wstring const lowerB = reference::lowerCase(b.substr(0, b.find(wchar(0))));
    ASSERT_EQ(StringLess2()(stringOf(a), stringOf(b)), lowerA < lowerB) << spelled(a) << ' ' << spelled(b);
    ASSERT_EQ(StringLess2()(stringOf(b), stringOf(a)), lowerB < lowerA) << spelled(a) << ' ' << spelled(b);
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
