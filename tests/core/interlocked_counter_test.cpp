// SPDX-License-Identifier: MIT
#include "kvbase/core/interlocked_counter.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <type_traits>

namespace KV_1_1 {
namespace testing {
namespace {

constexpr unsigned int kMax = 0xFFFFFFFF;

TEST(InterlockedCounter, HoldsOneWordAndNothingElse) {
  EXPECT_EQ(sizeof(InterlockedCounter), 4u);
}

TEST(InterlockedCounter, StartsWithZeroOrTheGivenValue) {
  EXPECT_EQ(static_cast<unsigned int>(InterlockedCounter()), 0u);
  EXPECT_EQ(static_cast<unsigned int>(InterlockedCounter(5)), 5u);
  EXPECT_EQ(static_cast<unsigned int>(InterlockedCounter(-1)), kMax);
}

TEST(InterlockedCounter, CopiesTheWord) {
  InterlockedCounter const source(7);
  InterlockedCounter const copy(source);
  InterlockedCounter target(1);
  EXPECT_EQ(&(target = source), &target);
  EXPECT_EQ(copy, 7u);
  EXPECT_EQ(target, 7u);
  EXPECT_EQ(source, 7u);
}

TEST(InterlockedCounter, AssignmentGivesTheNewValue) {
  InterlockedCounter counter(5);
  EXPECT_EQ((counter = 2u), 2u);
  EXPECT_EQ(counter, 2u);
  static_assert(std::is_same<decltype(counter = 2u), unsigned int>::value, "a value, not the counter");
}

TEST(InterlockedCounter, AdditionGivesTheOldValue) {
  InterlockedCounter counter(5);
  EXPECT_EQ(counter += 3, 5u);
  EXPECT_EQ(counter, 8u);
  EXPECT_EQ(counter += 0, 8u);
  EXPECT_EQ(counter, 8u);
}

TEST(InterlockedCounter, PrefixFormsGiveTheNewAndPostfixFormsTheOldValue) {
  struct Row {
    char const* name;
    unsigned int (*step)(InterlockedCounter&);
    long start;
    unsigned int result;
    unsigned int left;
  };
  auto const preUp = [](InterlockedCounter& c) -> unsigned int { return ++c; };
  auto const postUp = [](InterlockedCounter& c) -> unsigned int { return c++; };
  auto const preDown = [](InterlockedCounter& c) -> unsigned int { return --c; };
  auto const postDown = [](InterlockedCounter& c) -> unsigned int { return c--; };
  auto const add = [](InterlockedCounter& c) -> unsigned int { return c += 2; };
  Row const rows[] = {
      {"++c", preUp, 5, 6, 6},
      {"c++", postUp, 5, 5, 6},
      {"--c", preDown, 5, 4, 4},
      {"c--", postDown, 5, 5, 4},
      {"++c over the top", preUp, -1, 0, 0},
      {"c++ over the top", postUp, -1, kMax, 0},
      {"--c below zero", preDown, 0, kMax, kMax},
      {"c-- below zero", postDown, 0, 0, kMax},
      {"c += 2 over the top", add, -1, kMax, 1},
      {"++c over the sign", preUp, std::numeric_limits<std::int32_t>::max(), 0x80000000, 0x80000000},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    InterlockedCounter counter(row.start);
    EXPECT_EQ(row.step(counter), row.result);
    EXPECT_EQ(counter, row.left);
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
