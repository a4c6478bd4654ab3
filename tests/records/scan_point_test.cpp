// SPDX-License-Identifier: MIT
#include "kvbase/records/scan_point.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <random>
#include <type_traits>

namespace KV_1_1 {
namespace testing {
namespace {

using Float3 = Vec3d<float>;
using Double3 = Vec3d<double>;

// --- The records --------------------------------------------------------------------------------------------------------

static_assert(offsetof(Double3, x) == 0 && offsetof(Double3, y) == 8 && offsetof(Double3, z) == 16, "in this order");
static_assert(sizeof(Float3) == 12 && sizeof(Double3) == 24, "three components and nothing else");

template <class Point>
constexpr bool fieldsAreInOrder() {
  return offsetof(Point, position) < offsetof(Point, value) && offsetof(Point, value) < offsetof(Point, color) &&
         sizeof(Point::value) == 2 && sizeof(Point::color) == 4 && std::is_trivially_copyable<Point>::value &&
         !std::is_polymorphic<Point>::value;
}
static_assert(fieldsAreInOrder<ScanPtColor<Float3>>() && fieldsAreInOrder<ScanPtColor<Double3>>() &&
                  fieldsAreInOrder<ScanPtColor<double>>() && fieldsAreInOrder<ScanPtColor<int>>() &&
                  fieldsAreInOrder<ScanPtColorExt<Float3>>() && fieldsAreInOrder<ScanPtColorExt<Double3>>(),
              "position, value, color");
static_assert(offsetof(ScanPtColorExt<Float3>, extra) == 18 && offsetof(ScanPtColorExt<Double3>, extra) == 30,
              "extra stands last");
static_assert(sizeof(ScanPtColor<Float3>) == 20 && sizeof(ScanPtColorExt<Float3>) == 20, "no room is wasted");

static_assert(!std::is_convertible<ScanPtColor<Float3>, ScanPtColorExt<Float3>>::value &&
                  !std::is_convertible<ScanPtColorExt<Float3>, ScanPtColor<Float3>>::value,
              "the kinds of records do not convert");

TEST(ScanPoint, EachFieldStartsAsZero) {
  auto const color = std::array<std::uint8_t, 4>{};
  ScanPtColor<Float3> const point;
  EXPECT_EQ(point.position.x, 0.0f);
  EXPECT_EQ(point.position.y, 0.0f);
  EXPECT_EQ(point.position.z, 0.0f);
  EXPECT_EQ(point.value, 0);
  EXPECT_EQ(point.color, color);
  ScanPtColorExt<Double3> const extended;
  EXPECT_EQ(extended.position.z, 0.0);
  EXPECT_EQ(extended.value, 0);
  EXPECT_EQ(extended.color, color);
  EXPECT_EQ(extended.extra, 0);
  EXPECT_EQ(ScanPtColor<double>().position, 0.0);
  EXPECT_EQ(ScanPtColor<int>().position, 0);
}

// --- nullReference ------------------------------------------------------------------------------------------------------

bool isZero(Float3 const& v) {
  return v.x == 0 && v.y == 0 && v.z == 0;
}
bool isZero(Double3 const& v) {
  return v.x == 0 && v.y == 0 && v.z == 0;
}
bool isZero(double number) {
  return number == 0;
}
bool isZero(int number) {
  return number == 0;
}

template <class P>
class ScanPointConstant : public ::testing::Test {};
using PositionTypes = ::testing::Types<Float3, Double3, double, int>;
TYPED_TEST_SUITE(ScanPointConstant, PositionTypes, );

TYPED_TEST(ScanPointConstant, NullReferenceIsARecordOfZeros) {
  static_assert(std::is_const<decltype(ScanPtColor<TypeParam>::nullReference)>::value, "nobody writes to it");
  ScanPtColor<TypeParam> const& none = ScanPtColor<TypeParam>::nullReference;
  EXPECT_TRUE(isZero(none.position));
  EXPECT_EQ(none.value, 0);
  EXPECT_EQ(none.color, (std::array<std::uint8_t, 4>()));
}

// --- The casts ----------------------------------------------------------------------------------------------------------

template <class Point>
Point samplePoint() {
  Point point;
  point.position = {1.5f, -2.25f, 1e-3f};
  point.value = 0xFEDC;
  point.color = {1, 0xFF, 0x80, 7};
  return point;
}
template <class Point>
Point sampleExtended() {
  Point point = samplePoint<Point>();
  point.extra = 0xABCD;
  return point;
}

// What is carried, bit for bit, by each form.
template <class To, class From>
void expectCarried(To const& cast, From const& source) {
  EXPECT_EQ(cast.position.x, 1.5f);
  EXPECT_EQ(cast.position.y, -2.25f);
  EXPECT_EQ(cast.position.z, 1e-3f);
  EXPECT_EQ(cast.value, source.value);
  EXPECT_EQ(cast.color, source.color);
}

template <class Target, class Source>
void expectColorCast() {
  auto const source = samplePoint<ScanPtColor<Source>>();
  auto const cast = scanpt_cast<Target>(source);
  static_assert(std::is_same<decltype(cast), ScanPtColor<Target> const>::value, "the kind of the record stays");
  expectCarried(cast, source);
}
template <class Target, class Source>
void expectExtendedCast() {
  auto const source = sampleExtended<ScanPtColorExt<Source>>();
  auto const cast = scanpt_cast<Target>(source);
  static_assert(std::is_same<decltype(cast), ScanPtColorExt<Target> const>::value, "the kind of the record stays");
  expectCarried(cast, source);
  EXPECT_EQ(cast.extra, 0xABCD);
}

TEST(ScanPointCast, FloatToFloat) {
  expectColorCast<Float3, Float3>();
}
TEST(ScanPointCast, DoubleToFloat) {
  expectColorCast<Float3, Double3>();
}
TEST(ScanPointCast, DoubleToDouble) {
  expectColorCast<Double3, Double3>();
}
TEST(ScanPointCast, FloatToDouble) {
  expectColorCast<Double3, Float3>();
}
TEST(ScanPointCast, ExtendedFloatToFloat) {
  expectExtendedCast<Float3, Float3>();
}
TEST(ScanPointCast, ExtendedDoubleToFloat) {
  expectExtendedCast<Float3, Double3>();
}
TEST(ScanPointCast, ExtendedDoubleToDouble) {
  expectExtendedCast<Double3, Double3>();
}
TEST(ScanPointCast, ExtendedFloatToDouble) {
  expectExtendedCast<Double3, Float3>();
}

TEST(ScanPointCast, EachPositionGoesToItsOwnComponent) {
  ScanPtColor<Double3> point;
  point.position = {1, 2, 3};
  Float3 const position = scanpt_cast<Float3>(point).position;
  EXPECT_EQ(position.x, 1.0f);
  EXPECT_EQ(position.y, 2.0f);
  EXPECT_EQ(position.z, 3.0f);
}

TEST(ScanPointCast, ADoubleBeyondFloatBecomesInfinityAndTheOtherFieldsStay) {
  auto point = sampleExtended<ScanPtColorExt<Double3>>();
  point.position = {1e300, -1e300, 0.5};
  auto const cast = scanpt_cast<Float3>(point);
  EXPECT_EQ(cast.position.x, std::numeric_limits<float>::infinity());
  EXPECT_EQ(cast.position.y, -std::numeric_limits<float>::infinity());
  EXPECT_EQ(cast.position.z, 0.5f);
  EXPECT_EQ(cast.value, point.value);
  EXPECT_EQ(cast.color, point.color);
  EXPECT_EQ(cast.extra, point.extra);
}

TEST(ScanPointCast, ADoubleIsRoundedToTheNearestFloat) {
  struct Row {
    char const* name;
    double from;
    float to;
  };
  float const largest = std::numeric_limits<float>::max();
  Row const rows[] = {
      {"below the middle of two floats", 1 + 0x1.fffp-25, 1.0f},
      {"the middle goes to the even one, below", 1 + 0x1p-24, 1.0f},
      {"the middle goes to the even one, above", 1 + 0x1.8p-23, 1 + 0x1p-22f},
      {"above the middle", 1 + 0x1.001p-24, 1 + 0x1p-23f},
      {"the largest float", largest, largest},
      {"just beyond it", 0x1.fffffeffffffp127, largest},
      {"from the middle behind it on", 0x1.ffffffp127, std::numeric_limits<float>::infinity()},
      {"the smallest float", 0x1p-149, 0x1p-149f},
      {"below half of it", 0x1p-151, 0.0f},
      {"infinity", std::numeric_limits<double>::infinity(), std::numeric_limits<float>::infinity()},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    ScanPtColor<Double3> point;
    point.position = {row.from, -row.from, 0};
    Float3 const position = scanpt_cast<Float3>(point).position;
    EXPECT_EQ(position.x, row.to);
    EXPECT_EQ(position.y, -row.to);
  }
}

TEST(ScanPointCast, SignOfZeroAndNotANumberSurvive) {
  ScanPtColor<Double3> point;
  point.position = {-0.0, std::numeric_limits<double>::quiet_NaN(), 0.0};
  Float3 const position = scanpt_cast<Float3>(point).position;
  EXPECT_TRUE(std::signbit(position.x));
  EXPECT_TRUE(std::isnan(position.y));
  EXPECT_FALSE(std::signbit(position.z));
}

template <class T>
bool sameBits(T const& a, T const& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

TEST(ScanPointCast, FloatToDoubleAndBackGivesTheStartingPosition) {
  std::mt19937 engine(72);
  for (int round = 0; round < 10000; ++round) {
    std::uint32_t bits[3];
    for (std::uint32_t& word : bits) word = static_cast<std::uint32_t>(engine());
    Float3 position;
    std::memcpy(&position, bits, sizeof position);
    if (std::isnan(position.x) || std::isnan(position.y) || std::isnan(position.z)) continue;
    ScanPtColor<Float3> color;
    color.position = position;
    ASSERT_TRUE(sameBits(scanpt_cast<Float3>(scanpt_cast<Double3>(color)).position, position));
    ScanPtColorExt<Float3> extended;
    extended.position = position;
    ASSERT_TRUE(sameBits(scanpt_cast<Float3>(scanpt_cast<Double3>(extended)).position, position));
  }
}

// In the same precision even the bits of a signalling not-a-number stay.
TEST(ScanPointCast, TheSamePrecisionCopiesEveryBit) {
  std::uint32_t const bits[3] = {0x7F800001, 0x80000000, 0xFFFFFFFF};
  ScanPtColor<Float3> point;
  std::memcpy(&point.position, bits, sizeof bits);
  EXPECT_TRUE(sameBits(scanpt_cast<Float3>(point).position, point.position));
  std::uint64_t const wide[3] = {0x7FF0000000000001, 0x8000000000000000, 0xFFFFFFFFFFFFFFFF};
  ScanPtColorExt<Double3> extended;
  std::memcpy(&extended.position, wide, sizeof wide);
  EXPECT_TRUE(sameBits(scanpt_cast<Double3>(extended).position, extended.position));
}

TEST(ScanPointCast, EveryValueAndExtraSurvives) {
  ScanPtColorExt<Double3> point;
  for (unsigned int number = 0; number <= 0xFFFF; ++number) {
    point.value = static_cast<std::uint16_t>(number);
    point.extra = static_cast<std::uint16_t>(~number);
    point.color[number % 4] = static_cast<std::uint8_t>(number >> 2);
    auto const cast = scanpt_cast<Double3>(scanpt_cast<Float3>(point));
    ASSERT_EQ(cast.value, point.value);
    ASSERT_EQ(cast.extra, point.extra);
    ASSERT_EQ(cast.color, point.color);
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
