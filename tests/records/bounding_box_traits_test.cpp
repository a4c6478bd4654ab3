// SPDX-License-Identifier: MIT
#include "kvbase/records/bounding_box_traits.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace KV_1_1 {
namespace testing {
namespace {

std::uint32_t bitsOf(float number) {
  std::uint32_t bits;
  std::memcpy(&bits, &number, sizeof bits);
  return bits;
}
std::uint64_t bitsOf(double number) {
  std::uint64_t bits;
  std::memcpy(&bits, &number, sizeof bits);
  return bits;
}

TEST(BoundingBoxTraits, EpsilonOfFloat) {
  EXPECT_EQ(bitsOf(KVBoundingBoxTraits<float>::epsilon), 0x3727C5ACu);
}

TEST(BoundingBoxTraits, EpsilonOfDouble) {
  EXPECT_EQ(bitsOf(KVBoundingBoxTraits<double>::epsilon), 0x3EE4F8B588E368F1u);
}

TEST(BoundingBoxTraits, MaxVectorOfFloat) {
  Vec3d<float> const& largest = KVBoundingBoxTraits<float>::maxVector;
  EXPECT_EQ(bitsOf(largest.x), 0x7F7FFFFFu);
  EXPECT_EQ(bitsOf(largest.y), 0x7F7FFFFFu);
  EXPECT_EQ(bitsOf(largest.z), 0x7F7FFFFFu);
}

TEST(BoundingBoxTraits, MaxVectorOfDouble) {
  Vec3d<double> const& largest = KVBoundingBoxTraits<double>::maxVector;
  EXPECT_EQ(bitsOf(largest.x), 0x7FEFFFFFFFFFFFFFu);
  EXPECT_EQ(bitsOf(largest.y), 0x7FEFFFFFFFFFFFFFu);
  EXPECT_EQ(bitsOf(largest.z), 0x7FEFFFFFFFFFFFFFu);
}

TEST(BoundingBoxTraits, SqrtOfFloat) {
  static_assert(std::is_same<decltype(KVBoundingBoxTraits<float>::sqrt), float (*)(float)>::value, "a pointer");
  for (float const number : {0.0f, 1.0f, 2.0f, 6.25f, 1e-30f, 3e38f})
    EXPECT_EQ(bitsOf(KVBoundingBoxTraits<float>::sqrt(number)), bitsOf(std::sqrt(number))) << number;
  EXPECT_TRUE(std::isnan(KVBoundingBoxTraits<float>::sqrt(-1.0f)));
}

TEST(BoundingBoxTraits, SqrtOfDouble) {
  static_assert(std::is_same<decltype(KVBoundingBoxTraits<double>::sqrt), double (*)(double)>::value, "a pointer");
  for (double const number : {0.0, 1.0, 2.0, 6.25, 1e-300, 1e308})
    EXPECT_EQ(bitsOf(KVBoundingBoxTraits<double>::sqrt(number)), bitsOf(std::sqrt(number))) << number;
  EXPECT_TRUE(std::isnan(KVBoundingBoxTraits<double>::sqrt(-1.0)));
}

template <class T>
class WritableBoundingBoxTraits : public ::testing::Test {};
using CoordinateTypes = ::testing::Types<float, double>;
TYPED_TEST_SUITE(WritableBoundingBoxTraits, CoordinateTypes, );

template <class T>
T half(T number) {
  return number / 2;
}

TYPED_TEST(WritableBoundingBoxTraits, EachMemberCanBeReplaced) {
  using Traits = KVBoundingBoxTraits<TypeParam>;
  auto const epsilon = Traits::epsilon;
  auto const sqrt = Traits::sqrt;
  auto const maxVector = Traits::maxVector;
  Traits::epsilon = TypeParam(0.5);
  Traits::sqrt = &half<TypeParam>;
  Traits::maxVector.y = TypeParam(-1);
  EXPECT_EQ(Traits::epsilon, TypeParam(0.5));
  EXPECT_EQ(Traits::sqrt(TypeParam(9)), TypeParam(4.5));
  EXPECT_EQ(Traits::maxVector.y, TypeParam(-1));
  Traits::epsilon = epsilon;
  Traits::sqrt = sqrt;
  Traits::maxVector = maxVector;
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
