// SPDX-License-Identifier: MIT
//
// Appending float and double: the number of significant digits gives a fixed number of places behind the integer part.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>

#include "tests/reference/string_format_model.h"
#include "tests/strings/string_support.h"
#include "tests/support/random_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

template <class Real>
std::string cPrinted(Real value) {
  String added;
  added += value;
  String shifted;
  shifted << value;
  EXPECT_EQ(spelled(added), spelled(shifted));
  return narrow(*unitsOf(added));
}

TEST(StringFormatFloat, WorkedTable) {
  struct Row {
    char const* name;
    double value;
    char const* asFloat;
    char const* asDouble;
  };
  Row const rows[] = {
      {"zero", 0.0, "0", "0"},
      {"one", 1.0, "1", "1"},
      {"3.5", 3.5, "3.5", "3.5"},
      {"-2.5", -2.5, "-2.5", "-2.5"},
      {"0.1", 0.1, "0.1", "0.1"},
      {"two thirds", 2.0 / 3, "0.6667", "0.66666667"},
      {"1234.5678 with the noise of a float", 1234.5678, "1234.56775", "1234.5678"},
      {"1e10", 1e10, "10000000000", "10000000000"},
      {"1.5e-7", 1.5e-7, "1.5e-07", "1.5e-07"},
      {"negative zero", -0.0, "-0", "-0"},
      {"a power of ten", 100.0, "100", "100"},
      {"just below one", 0.999, "0.999", "0.999"},
      {"below one, rounded to it", 0.99999, "1", "0.99999"},
      {"smallest without exponent", 0.0001, "0.0001", "0.0001"},
      {"below it", 0.00001, "1e-05", "1e-05"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(cPrinted(static_cast<float>(row.value)), row.asFloat);
    EXPECT_EQ(cPrinted(row.value), row.asDouble);
  }
}

// A float of 100 has 7 significant digits, one above it has 8.
TEST(StringFormatFloat, ExactPowersOfTenTakeTheLowerPrecision) {
  EXPECT_EQ(cPrinted(100.0f), "100");
  EXPECT_EQ(cPrinted(std::nextafter(101.0f, 200.0f)), "101.00001");
  EXPECT_EQ(cPrinted(1000.0f), "1000");
  EXPECT_EQ(cPrinted(std::nextafter(1e9, 2e9)), "1000000000.00000012") << "its logarithm is 9: 18 digits, not 19";
  EXPECT_EQ(cPrinted(10.000000001), "10.000000001");
  EXPECT_EQ(cPrinted(1.000000001), "1.000000001");
}

TEST(StringFormatFloat, NoNumbers) {
  EXPECT_EQ(cPrinted(std::numeric_limits<float>::quiet_NaN()), "nan");
  EXPECT_EQ(cPrinted(std::copysign(std::numeric_limits<float>::quiet_NaN(), -1.0f)), "nan");
  EXPECT_EQ(cPrinted(std::numeric_limits<double>::quiet_NaN()), "nan");
  EXPECT_EQ(cPrinted(std::copysign(std::numeric_limits<double>::quiet_NaN(), -1.0)), "nan");
  EXPECT_EQ(cPrinted(std::numeric_limits<float>::infinity()), "inf");
  EXPECT_EQ(cPrinted(-std::numeric_limits<float>::infinity()), "-inf");
  EXPECT_EQ(cPrinted(std::numeric_limits<double>::infinity()), "inf");
  EXPECT_EQ(cPrinted(-std::numeric_limits<double>::infinity()), "-inf");
}

template <class Real>
void compareReal(Real value) {
  String string;
  string += value;
  std::string const expected = reference::realText(value);
  if (*unitsOf(string) != widen(expected)) ADD_FAILURE() << spelled(string) << " for " << expected;
}

template <class Real>
void compareBothSigns(Real value) {
  compareReal(value);
  compareReal(-value);
}

TEST(StringFormatFloat, LimitsAgreeWithTheModel) {
  for (float const value : {FLT_MAX, FLT_MIN, FLT_TRUE_MIN, FLT_EPSILON}) compareBothSigns(value);
  for (double const value : {DBL_MAX, DBL_MIN, DBL_TRUE_MIN, DBL_EPSILON}) compareBothSigns(value);
}

// The number of digits changes at the powers of ten, where the logarithm is rounded.
TEST(StringFormatFloat, NeighboursOfPowersOfTenAgreeWithTheModel) {
  for (int exponent = -44; exponent <= 38; ++exponent) {
    float below = static_cast<float>(std::pow(10.0, exponent));
    float above = below;
    for (int i = 0; i < 10; ++i) {
      compareBothSigns(below);
      compareBothSigns(above);
      below = std::nextafter(below, 0.0f);
      above = std::nextafter(above, FLT_MAX);
    }
  }
  for (int exponent = -322; exponent <= 308; ++exponent) {
    double below = std::strtod(("1e" + std::to_string(exponent)).c_str(), nullptr);
    double above = below;
    for (int i = 0; i < 10; ++i) {
      compareBothSigns(below);
      compareBothSigns(above);
      below = std::nextafter(below, 0.0);
      above = std::nextafter(above, DBL_MAX);
    }
  }
}

std::uint64_t randomBits(RandomText& random) {
  std::uint64_t bits = 0;
  for (int k = 0; k < 4; ++k) bits = bits << 16 | static_cast<unsigned>(random.below(0x10000));
  return bits;
}

template <class Real, class Bits>
Real fromBits(Bits bits) {
  static_assert(sizeof(Real) == sizeof(Bits), "a value of as many bits");
  Real value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

TEST(StringFormatFloat, RandomBitsAgreeWithTheModel) {
  RandomText random(252);
  for (int i = 0; i < kRounds; ++i) {
    std::uint64_t const bits = randomBits(random);
    compareReal(fromBits<float>(static_cast<std::uint32_t>(bits)));
    compareReal(fromBits<double>(bits));
    if (HasFailure()) return;
  }
}

// Values that programs usually print: few decimal places, halves and other ties, multiples of powers of ten.
TEST(StringFormatFloat, DecimalLookingValuesAgreeWithTheModel) {
  RandomText random(253);
  for (int i = 0; i < kRounds; ++i) {
    int const exponent = random.between(-12, 12);
    double const digits = static_cast<double>(randomBits(random) >> random.between(11, 63));
    double const value = (random.oneIn(2) ? digits : digits + 0.5) * std::pow(10.0, exponent);
    compareReal(random.oneIn(2) ? value : -value);
    compareReal(static_cast<float>(value));
    if (HasFailure()) return;
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
