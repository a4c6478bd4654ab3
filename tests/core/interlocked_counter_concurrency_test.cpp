// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "kvbase/core/interlocked_counter.h"
#include "tests/support/threads.h"

namespace KV_1_1 {
namespace testing {
namespace {

// Every value from 0 to the total is seen by exactly one step: no update is lost and none is seen twice.
TEST(InterlockedCounterConcurrency, EveryStepSeesAValueOfItsOwn) {
  constexpr int kSteps = 5000;
  struct Row {
    char const* name;
    unsigned int (*step)(InterlockedCounter&);
    long start;
    unsigned int smallest;  // of the values that the steps give
    unsigned int left;
  };
  constexpr unsigned int kTotal = kThreads * kSteps;
  Row const rows[] = {
      {"++c", [](InterlockedCounter& c) -> unsigned int { return ++c; }, 0, 1, kTotal},
      {"c++", [](InterlockedCounter& c) -> unsigned int { return c++; }, 0, 0, kTotal},
      {"--c", [](InterlockedCounter& c) -> unsigned int { return --c; }, kTotal, 0, 0},
      {"c--", [](InterlockedCounter& c) -> unsigned int { return c--; }, kTotal, 1, 0},
      {"c += 1", [](InterlockedCounter& c) -> unsigned int { return c += 1; }, 0, 0, kTotal},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    InterlockedCounter counter(row.start);
    std::vector<std::vector<unsigned int>> seen(kThreads);
    onThreads([&](int thread) {
      auto& values = seen[static_cast<std::size_t>(thread)];
      for (int i = 0; i < kSteps; ++i) values.push_back(row.step(counter));
    });

    std::vector<unsigned int> all;
    for (auto const& values : seen) all.insert(all.end(), values.begin(), values.end());
    std::sort(all.begin(), all.end());
    ASSERT_EQ(all.size(), kTotal);
    for (unsigned int i = 0; i < kTotal; ++i) ASSERT_EQ(all[i], row.smallest + i);
    EXPECT_EQ(counter, row.left);
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
