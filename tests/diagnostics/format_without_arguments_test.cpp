// SPDX-License-Identifier: MIT
#include "kvbase/diagnostics/internal/format_without_arguments.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/support/allocation_failure.h"

namespace KV_1_1 {
namespace testing {
namespace {

using diagnostics::formatWithoutArguments;

struct Row {
  char const* name;
  char const* format;
  char const* text;
};

std::string rowName(::testing::TestParamInfo<Row> const& info) {
  return info.param.name;
}

class FormatWithoutArguments : public ::testing::TestWithParam<Row> {};

TEST_P(FormatWithoutArguments, Gives) {
  EXPECT_EQ(formatWithoutArguments(GetParam().format), GetParam().text);
}

constexpr Row kOrdinary[] = {
    {"Empty", "", ""},
    {"PlainText", "Assertion a < b failed.\n", "Assertion a < b failed.\n"},
    {"BytesBeyondAscii", "\xC3\xA4\xFF", "\xC3\xA4\xFF"},
    {"EscapedPercent", "100%%", "100%"},
    {"EscapedPercentBeforeALetter", "%%d", "%d"},
    {"TwoEscapedPercents", "%%%%", "%%"},
    {"EscapedPercentThenDirective", "a%%%db", "a%b"},
    {"DirectiveThenEscapedPercent", "a%d%%b", "a%b"},
    {"OnlyADirective", "%d", ""},
    {"DirectiveInText", "a%db", "ab"},
    {"DirectivesOneBehindTheOther", "%d%s%n", ""},
    {"BlankIsAFlag", "100% done", "100one"},
};
INSTANTIATE_TEST_SUITE_P(Ordinary, FormatWithoutArguments, ::testing::ValuesIn(kOrdinary), rowName);

constexpr Row kNoDirectives[] = {
    {"PercentAtTheEnd", "50%", "50%"},
    {"FlagsAtTheEnd", "50%-+ #0", "50%-+ #0"},
    {"WidthAtTheEnd", "%12", "%12"},
    {"StarAtTheEnd", "%*", "%*"},
    {"PrecisionAtTheEnd", "%.", "%."},
    {"LengthAtTheEnd", "%ll", "%ll"},
    {"UnknownConversion", "%y", "%y"},
    {"Punctuation", "a %, b", "a %, b"},
    {"Remainder", "n % 2 == 0", "n % 2 == 0"},
    {"PercentBehindFlags", "%-%", "%-%"},
    {"NextDirectiveIsReadOn", "%5%d", "%5"},
    {"NextEscapedPercentIsReadOn", "%5%%d", "%5%d"},
    {"TwoNumbersOfWidth", "%5*d", "%5*d"},
    {"FlagBehindTheWidth", "%5-d", "%5-d"},
    {"NegativePrecision", "%.-5d", "%.-5d"},
    {"TwoPrecisions", "%.1.2d", "%.1.2d"},
    {"TwoLengths", "%hld", "%hld"},
    {"ThreeTimesH", "%hhhd", "%hhhd"},
    {"UnknownSizeOfI", "%I16d", "%I16d"},
    {"BeyondAscii", "%\xC3\xA4", "%\xC3\xA4"},
    {"ByteWithTheHighBitOfALetter", "%\xE4", "%\xE4"},
};
INSTANTIATE_TEST_SUITE_P(NoDirectives, FormatWithoutArguments, ::testing::ValuesIn(kNoDirectives), rowName);

constexpr Row kDirectives[] = {
    {"CountStored", "a%nb", "ab"},
    {"CountStoredWithLength", "a%hhn%lln%I64nb", "ab"},
    {"WidthOfAnArgument", "a%*db", "ab"},
    {"PrecisionOfAnArgument", "a%.*sb", "ab"},
    {"BothOfArguments", "a%-*.*fb", "ab"},
    {"WideText", "a%lsb", "ab"},
    {"WideUnit", "a%lcb", "ab"},
    {"WideTextByCapital", "a%S%Cb", "ab"},
    {"NarrowText", "a%hsb", "ab"},
    {"SystemText", "a%wsb", "ab"},
    {"CountedSystemText", "a%Zb", "ab"},
    {"Pointer", "a%pb", "ab"},
    {"AllFlags", "a%-+ #0db", "ab"},
    {"FlagTwice", "a%--db", "ab"},
    {"EndlessWidth", "a%99999999999999999999db", "ab"},
    {"EndlessPrecision", "a%.99999999999999999999fb", "ab"},
    {"PrecisionWithoutDigits", "a%.fb", "ab"},
    {"ZeroFlagAndWidth", "a%08lxb", "ab"},
    {"EverythingAtOnce", "a%+08.3llXb", "ab"},
};
INSTANTIATE_TEST_SUITE_P(Directives, FormatWithoutArguments, ::testing::ValuesIn(kDirectives), rowName);

TEST(FormatWithoutArgumentsTest, EveryConversionWithEveryLengthIsLeftOut) {
  for (std::string const length : {"", "hh", "h", "ll", "l", "j", "z", "t", "L", "w", "I64", "I32", "I"}) {
    for (char const conversion : std::string("diouxXcCsSpnaAeEfFgGZ")) {
      std::string const directive = "%" + length + conversion;
      EXPECT_EQ(formatWithoutArguments(("<" + directive + ">").c_str()), "<>") << directive;
    }
  }
}

TEST(FormatWithoutArgumentsTest, NoOtherByteIsAConversion) {
  for (int code = 1; code < 256; ++code) {
    char const byte = static_cast<char>(code);
    if (std::string("diouxXcCsSpnaAeEfFgGZ%").find(byte) != std::string::npos) continue;
    std::string const text = std::string("%") + byte + "~";
    EXPECT_EQ(formatWithoutArguments(text.c_str()), text) << code;
  }
}

// The rule as a slow model: all places that each part of a directive may lead to, with no decision taken early.
using Places = std::set<std::size_t>;

Places behindAny(std::string const& text, Places places, char const* units) {
  for (std::size_t const place : Places(places)) {
    std::size_t const end = std::min(text.find_first_not_of(units, place), text.size());
    for (std::size_t i = place; i <= end; ++i) places.insert(i);
  }
  return places;
}

Places behindEach(std::string const& text, Places const& places, std::vector<std::string> const& words) {
  Places behind;
  for (std::size_t const place : places) {
    for (std::string const& word : words)
      if (text.compare(place, word.size(), word) == 0) behind.insert(place + word.size());
  }
  return behind;
}

Places behindNumber(std::string const& text, Places const& places) {
  Places behind = behindEach(text, places, {"*"});
  behind.merge(behindAny(text, places, "0123456789"));
  return behind;
}

// The place behind the directive that begins at a percent sign, or that of the sign if none does.
std::size_t behindDirective(std::string const& text, std::size_t sign) {
  Places places = behindNumber(text, behindAny(text, {sign + 1}, "-+ #0"));
  places.merge(behindNumber(text, behindEach(text, places, {"."})));
  places.merge(behindEach(text, places, {"hh", "h", "ll", "l", "j", "z", "t", "L", "w", "I64", "I32", "I"}));
  std::string const conversions = "diouxXcCsSpnaAeEfFgGZ";
  for (std::size_t const place : places)
    if (place < text.size() && conversions.find(text[place]) != std::string::npos) return place + 1;
  return sign;
}

std::string slowFormat(std::string const& format) {
  std::string text;
  for (std::size_t i = 0; i < format.size();) {
    bool const isSign = format[i] == '%';
    if (isSign && format.compare(i, 2, "%%") == 0) {
      text += '%';
      i += 2;
    } else if (std::size_t const end = isSign ? behindDirective(format, i) : i; end > i) {
      i = end;
    } else {
      text += format[i++];
    }
  }
  return text;
}

// Each text ends at the end of its block, so that the address sanitizer sees a read behind it.
TEST(FormatWithoutArgumentsTest, RandomTextsGiveWhatTheRuleSays) {
  constexpr char kAlphabet[] = "%%%%-+ #0059.*hlljztLwI64I32Idixscnpfgy,";
  std::mt19937 random(1);
  std::uniform_int_distribution<std::size_t> anyLength(0, 40);
  std::uniform_int_distribution<std::size_t> anyByte(0, sizeof kAlphabet - 2);
  for (int round = 0; round < 5000; ++round) {
    std::string text(anyLength(random), ' ');
    for (char& byte : text) byte = kAlphabet[anyByte(random)];
    std::unique_ptr<char[]> const block(new char[text.size() + 1]);
    std::copy_n(text.c_str(), text.size() + 1, block.get());
    ASSERT_EQ(formatWithoutArguments(block.get()), slowFormat(text)) << text;
  }
}

TEST(FormatWithoutArgumentsTest, LongTextsTakeTimeInProportion) {
  std::string const digits = "%" + std::string(1000000, '7');
  EXPECT_EQ(formatWithoutArguments(digits.c_str()), digits);
  EXPECT_EQ(formatWithoutArguments((digits + "d").c_str()), "");
  std::string const unfinished(1000001, '%');
  EXPECT_EQ(formatWithoutArguments(unfinished.c_str()), std::string(500001, '%'));
}

TEST(FormatWithoutArgumentsTest, FailedAllocationLeavesNothingBehind) {
  std::string const format = "%d" + std::string(100, 'a') + "%%" + std::string(100, 'b');
  for (AllocationSweep sweep; sweep.next();) sweep.run([&] { formatWithoutArguments(format.c_str()); });
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
