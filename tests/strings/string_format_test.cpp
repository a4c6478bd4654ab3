// SPDX-License-Identifier: MIT
//
// Appending values of every type but float and double: their text, and which results share a payload.
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <vector>

#include "tests/reference/string_format_model.h"
#include "tests/strings/string_support.h"
#include "tests/support/random_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

struct FormatRow {
  char const* name;
  wchar const* text;
  std::function<String&(String&)> add;
  std::function<String&(String&)> shift;
};

template <class T>
FormatRow row(char const* name, T value, wchar const* text) {
  return {name, text, [value](String& s) -> String& { return s += value; },
          [value](String& s) -> String& { return s << value; }};
}

std::vector<FormatRow> integerRows() {
  using Limits64 = std::numeric_limits<long long>;
  return {
      row<signed char>("signed char 65 is no letter", 65, KVW("65")),
      row<signed char>("signed char, smallest", -128, KVW("-128")),
      row<signed char>("signed char, largest", 127, KVW("127")),
      row<signed char>("signed char, zero", 0, KVW("0")),
      row<unsigned char>("unsigned char, largest", 255, KVW("255")),
      row<unsigned char>("unsigned char 65 is no letter", 65, KVW("65")),
      row<unsigned char>("unsigned char, zero", 0, KVW("0")),
      row<short>("short, smallest", -32768, KVW("-32768")),
      row<short>("short, largest", 32767, KVW("32767")),
      row<unsigned short>("unsigned short, largest", 65535, KVW("65535")),
      row<unsigned short>("unsigned short 65 is no letter", 65, KVW("65")),
      row<int>("int, smallest", std::numeric_limits<int>::min(), KVW("-2147483648")),
      row<int>("int, largest", 2147483647, KVW("2147483647")),
      row<int>("int, zero", 0, KVW("0")),
      row<int>("int, -1", -1, KVW("-1")),
      row<int>("int, a power of ten", 1000000000, KVW("1000000000")),
      row<unsigned int>("unsigned int, largest", 4294967295u, KVW("4294967295")),
      row<long>("long, smallest of 32 bits", -2147483647L - 1, KVW("-2147483648")),
      row<long>("long, largest of 32 bits", 2147483647L, KVW("2147483647")),
      row<unsigned long>("unsigned long, largest of 32 bits", 4294967295UL, KVW("4294967295")),
      row<long long>("long long, smallest", Limits64::min(), KVW("-9223372036854775808")),
      row<long long>("long long, largest", Limits64::max(), KVW("9223372036854775807")),
      row<unsigned long long>("unsigned long long, largest", 18446744073709551615ull, KVW("18446744073709551615")),
      row<unsigned long long>("unsigned long long, zero", 0, KVW("0")),
  };
}

std::vector<FormatRow> otherRows() {
  static wchar const kUnits[] = {KVW('a'), 0, KVW('b'), 0};
  static wchar const kSurrogate[] = {0xD800, 0};
  static wchar kWritable[] = {KVW('w'), 0};
  return {
      row<bool>("true", true, KVW("true")),
      row<bool>("false", false, KVW("false")),
      row<wchar>("a unit", KVW('x'), KVW("x")),
      row<wchar>("a unit beyond ASCII", 0x20AC, KVW("\u20AC")),
      row<wchar>("a lone surrogate", 0xD800, kSurrogate),
      row<wchar>("a NUL is the empty text", 0, KVW("")),
      row<wchar const*>("a text", KVW("text"), KVW("text")),
      row<wchar const*>("an empty text", KVW(""), KVW("")),
      row<wchar const*>("a text up to its first NUL", kUnits, KVW("a")),
      row<wchar*>("a text that could be written to", kWritable, KVW("w")),
      row<String>("a String", String(KVW("other")), KVW("other")),
      row<float>("a float", 0.5f, KVW("0.5")),
      row<double>("a double", -0.25, KVW("-0.25")),
  };
}

void expectAppended(FormatRow const& row, String const& receiver, wstring const& before) {
  wstring const expected = before + row.text;
  for (auto const& operation : {row.add, row.shift}) {
    String changed = receiver;
    String const holder = receiver;
    EXPECT_EQ(&operation(changed), &changed) << "the receiver is returned";
    EXPECT_EQ(spelled(changed), spelled(Text(expected)));
    EXPECT_FALSE(isNil(changed));
    EXPECT_EQ(spelled(holder), spelled(receiver)) << "another holder keeps its text";
    if (!isNil(receiver)) EXPECT_FALSE(shares(changed, holder)) << "a payload of its own, also for an empty text";
  }
}

TEST(StringFormat, AppendsTheTextOfEveryType) {
  std::vector<FormatRow> rows = integerRows();
  for (FormatRow const& other : otherRows()) rows.push_back(other);
  for (FormatRow const& row : rows) {
    SCOPED_TRACE(row.name);
    expectAppended(row, String(KVW(""), 0), wstring());
    expectAppended(row, String(KVW("before ")), KVW("before "));
  }
}

TEST(StringFormat, AStringOnNilIsShared) {
  String const other(KVW("other"));
  String added;
  added += other;
  EXPECT_TRUE(shares(added, other));
  String shifted;
  shifted << other;
  EXPECT_TRUE(shares(shifted, other));
}

TEST(StringFormat, AStringIsCountedByItsLength) {
  String string(KVW("a"));
  string += stringOf(wstring(KVW("b\0c"), 3));
  EXPECT_EQ(string.length(), 4);
  EXPECT_EQ(unitsOf(string), wstring(KVW("ab\0c"), 4));
}

TEST(StringFormat, AStringCanBeAppendedToItself) {
  String string(KVW("ab"));
  String const holder = string;
  string += string;
  EXPECT_EQ(spelled(string), "\"abab\"");
  string << string << string;
  EXPECT_EQ(spelled(string), "\"abababababababab\"") << "the second argument is the text as it is by then";
  wchar const* const own = string;
  string += own + 14;
  EXPECT_EQ(spelled(string), "\"ababababababababab\"");
  EXPECT_EQ(spelled(holder), "\"ab\"");
}

TEST(StringFormat, ChainsMixTypes) {
  String string;
  string << KVW("scan ") << 5 << KVW(' ') << 2.5 << KVW(' ') << true << KVW(' ') << static_cast<signed char>(-1)
         << String(KVW("!"));
  EXPECT_EQ(spelled(string), "\"scan 5 2.5 true -1!\"");
}

TEST(StringFormat, ALongIsWholeWhateverItsWidth) {
  String string;
  string << std::numeric_limits<long>::min() << KVW(' ') << std::numeric_limits<unsigned long>::max();
  EXPECT_EQ(spelled(string), '"' + std::to_string(std::numeric_limits<long>::min()) + ' ' +
                                 std::to_string(std::numeric_limits<unsigned long>::max()) + '"');
}

// --- Against the model -----------------------------------------------------------------------------------------------

template <class Integer>
void compareIntegers(RandomText& random) {
  for (int i = 0; i < kRounds / 5; ++i) {
    unsigned long long bits = 0;
    for (int k = 0; k < 4; ++k) bits = bits << 16 | static_cast<unsigned>(random.below(0x10000));
    Integer const value = static_cast<Integer>(bits >> random.below(64));
    Integer const signedToo = random.oneIn(2) ? value : static_cast<Integer>(~value);
    String string;
    string += signedToo;
    wstring const expected = reference::decimalText(signedToo);
    if (unitsOf(string) != Text(expected)) FAIL() << spelled(string) << " for " << narrow(expected);
  }
}

TEST(StringFormat, IntegersAgreeWithTheModel) {
  RandomText random(250);
  compareIntegers<signed char>(random);
  compareIntegers<unsigned char>(random);
  compareIntegers<short>(random);
  compareIntegers<unsigned short>(random);
  compareIntegers<int>(random);
  compareIntegers<unsigned int>(random);
  compareIntegers<long>(random);
  compareIntegers<unsigned long>(random);
  compareIntegers<long long>(random);
  compareIntegers<unsigned long long>(random);
}

TEST(StringFormat, LongTexts) {
  wstring const text = RandomText(251).text(1 << 16, RandomUnits::kAny);
  String string = stringOf(text);
  string << 5 << 0.5 << stringOf(text);
  EXPECT_TRUE(unitsOf(string) == Text(text + KVW("50.5") + text));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
