// SPDX-License-Identifier: MIT
//
// Taking numbers from texts, compared with the model: random texts, every unit, long texts, and what was written.
#include <gtest/gtest.h>

#include <cmath>
#include <iterator>

#include "tests/reference/string_parse_model.h"
#include "tests/strings/string_support.h"
#include "tests/support/random_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

bool same(double a, double b) {
  return a == b ? std::signbit(a) == std::signbit(b) : std::isnan(a) && std::isnan(b);
}

// What remains is compared by the text alone where a search went by the terminator.
enum class Rest { kUnits, kText };

template <class T>
void compareParsed(Text const& text, Rest rest = Rest::kUnits) {
  String const original = stringOf(text);
  String string = original;
  T value = static_cast<T>(1);
  string >> value;
  Text expectedRest = text;
  T const expected = reference::take(expectedRest, static_cast<T*>(nullptr));
  if (!same(static_cast<double>(value), static_cast<double>(expected)))
    FAIL() << "value " << +value << " for " << +expected << " from " << spelled(text);
  bool const isRight = rest == Rest::kUnits ? unitsOf(string) == expectedRest : textOf(string) == expectedRest;
  if (!isRight) FAIL() << spelled(text) << " leaves " << spelled(string) << " for " << spelled(expectedRest);
  if (unitsOf(original) != text) FAIL() << spelled(text) << " changed for another holder";
}

// The forms whose stored length may be too large.
template <class T, class Value>
void compareSizeFault(Text const& text) {
  String const original = stringOf(text);
  String string = original;
  T value = 1;
  string >> value;
  Text expectedRest = text;
  int surplus = 0;
  Value const expected = reference::takeUnsigned<Value>(expectedRest, &surplus);
  if (value != expected) FAIL() << value << " for " << expected << " from " << spelled(text);
  if (textOf(string) != Text(reference::visible(*expectedRest)) ||
      string.length() != static_cast<int>(expectedRest->size()) + surplus)
    FAIL() << spelled(text) << " leaves " << string.length() << " units: " << spelled(string);
  if (unitsOf(original) != text) FAIL() << spelled(text) << " changed for another holder";
}

void compareAllNumbers(Text const& text) {
  compareParsed<signed char>(text);
  compareParsed<unsigned char>(text);
  compareParsed<short>(text);
  compareParsed<unsigned short>(text);
  compareParsed<int>(text);
  compareParsed<unsigned int>(text);
  compareParsed<long>(text);
  compareParsed<long long>(text);
  compareSizeFault<unsigned long, std::uint32_t>(text);
  compareSizeFault<unsigned long long, std::uint64_t>(text);
  compareParsed<double>(text, Rest::kText);
  compareParsed<float>(text, Rest::kText);
}

// Texts that look like numbers for the greater part.
Text randomNumbers(RandomText& random, bool withNul) {
  static wstring const kPieces[] = {KVW(" "),
                                    KVW("  "),
                                    KVW("-"),
                                    KVW("+"),
                                    KVW("."),
                                    KVW("e"),
                                    KVW("E-"),
                                    KVW(","),
                                    KVW("0"),
                                    KVW("x"),
                                    KVW("0x"),
                                    KVW("inf"),
                                    KVW("nan"),
                                    KVW("true"),
                                    KVW("\u0664"),
                                    KVW("\uFF17"),
                                    KVW("\u00B2"),
                                    KVW("7"),
                                    KVW("2147483647"),
                                    KVW("99"),
                                    KVW("4294967296"),
                                    KVW("-2147483649"),
                                    KVW("9223372036854775807"),
                                    KVW("18446744073709551615"),
                                    KVW("\t"),
                                    KVW("1.25")};
  if (random.oneIn(200)) return Text();
  wstring text;
  for (int pieces = random.below(7); pieces > 0; --pieces) {
    int const kind = random.below(8);
    if (kind == 0) {
      text += random.unit(withNul ? RandomUnits::kAnyWithNul : RandomUnits::kAny);
    } else if (kind == 1) {
      for (int digits = random.below(25); digits > 0; --digits) text += static_cast<wchar>(KVW('0') + random.below(10));
    } else {
      text += kPieces[random.below(static_cast<int>(std::size(kPieces)))];
    }
  }
  return text;
}

// Searches for start and end go by the length, the conversions stop at a NUL, and the rule for sizes drops a last one.
TEST(StringParseModel, RandomTextsAgreeWithTheModel) {
  RandomText random(263);
  for (int i = 0; i < kRounds; ++i) {
    compareAllNumbers(randomNumbers(random, random.oneIn(2)));
    if (HasFatalFailure()) return;
  }
}

TEST(StringParseModel, SampledUnitsAgreeWithTheModel) {
  for (wchar const code : sampledUnits()) {
    wstring const unit(1, code);
    compareAllNumbers(unit);
    compareAllNumbers(unit + KVW("5 ") + unit);
    compareAllNumbers(KVW("1") + unit + KVW("2"));
    compareParsed<bool>(unit + KVW("1"));
    compareParsed<bool>(KVW("tr") + unit + KVW("e"));
    if (HasFatalFailure()) FAIL() << "unit " << code;
  }
}

TEST(StringParseModel, LongTexts) {
  wstring const digits(10000, KVW('7'));
  wstring const zeros(10000, KVW('0'));
  wstring const blanks(1 << 16, KVW(' '));
  compareAllNumbers(digits);
  compareAllNumbers(KVW("-") + digits + KVW(" x"));
  compareAllNumbers(zeros + KVW("42 x"));
  compareAllNumbers(KVW("-") + zeros + KVW("42 x"));
  compareAllNumbers(KVW("0.") + zeros + digits);
  compareAllNumbers(digits + KVW("e-9990"));
  // Around the size from which on a number is not on the stack any more.
  for (std::size_t size = 120; size <= 136; ++size) compareAllNumbers(wstring(size, KVW('7')));
  compareAllNumbers(wstring(10000, 0xFF17));
  compareAllNumbers(blanks);
  compareAllNumbers(blanks + KVW("5"));
  compareAllNumbers(KVW("5") + blanks);
  compareAllNumbers(RandomText(265).text(1 << 16, RandomUnits::kAny));
}

// Numbers of every number of digits, around the limits of exact doubles and of 64 bits, with a point at any place.
TEST(StringParseModel, DecimalsOfEveryLengthAgreeWithTheModel) {
  static wstring const kEnds[] = {KVW(""),  KVW(" "), KVW("."),  KVW(".5"),  KVW(","),      KVW("e"),       KVW("e5"),
                                  KVW("-"), KVW("x"), KVW("-7"), KVW("E-3"), KVW("\uFF17"), KVW("\u0664 1")};
  RandomText random(267);
  for (int digits = 1; digits <= 22; ++digits) {
    for (int point = -1; point <= digits; ++point) {
      for (wstring const& end : kEnds) {
        wstring text = random.oneIn(3) ? KVW("-") : random.oneIn(4) ? KVW("+") : KVW("");
        for (int i = 0; i < digits; ++i) {
          if (i == point) text += KVW('.');
          text += static_cast<wchar>(KVW('0') + random.below(10));
        }
        compareAllNumbers(text + (point == digits ? KVW(".") : KVW("")) + end);
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST(StringParseModel, LimitsOfIntegersAgreeWithTheModel) {
  static wstring const kLimits[] = {
      KVW("2147483647"),          KVW("2147483648"),           KVW("2147483649"),           KVW("4294967295"),
      KVW("4294967296"),          KVW("9223372036854775807"),  KVW("9223372036854775808"),  KVW("9223372036854775809"),
      KVW("9999999999999999999"), KVW("10000000000000000000"), KVW("18446744073709551615"), KVW("18446744073709551616"),
      KVW("9007199254740993"),    KVW("999999999999999"),      KVW("1000000000000000")};
  for (wstring const& limit : kLimits) {
    for (wstring const front : {KVW(""), KVW("-"), KVW("+"), KVW("0"), KVW("-000"), KVW(", ")}) {
      compareAllNumbers(front + limit);
      compareAllNumbers(front + limit + KVW(" 1"));
      compareAllNumbers(front + limit + KVW("\u0664"));
      if (HasFatalFailure()) return;
    }
  }
}

TEST(StringParseModel, RandomTruthValuesAgreeWithTheModel) {
  static wstring const kPieces[] = {KVW(" "),    KVW("true"),   KVW("TRUE"), KVW("FaLsE"), KVW("false"), KVW("tru"),
                                    KVW("fals"), KVW("maybe"),  KVW("0"),    KVW("10"),    KVW("-"),     KVW("+1"),
                                    KVW("."),    KVW("\u0661"), KVW(","),    KVW("st")};
  RandomText random(266);
  for (int i = 0; i < kRounds; ++i) {
    wstring text;
    for (int pieces = random.below(5); pieces > 0; --pieces)
      text += random.oneIn(6) ? wstring(1, random.unit(RandomUnits::kAny))
                              : kPieces[random.below(static_cast<int>(std::size(kPieces)))];
    compareParsed<bool>(text);
    compareParsed<wchar>(text);
    if (HasFatalFailure()) return;
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
