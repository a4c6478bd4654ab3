// SPDX-License-Identifier: MIT
#include "tests/support/allocation_failure.h"

#include <gtest/gtest-spi.h>

#include <algorithm>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "kvbase/strings/internal/allocation.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {
namespace testing {
namespace {

using Messages = std::vector<std::string>;

// What the expectations that fail in the body add to their texts.
template <class Body>
Messages reasonsOfFailures(Body body) {
  ::testing::TestPartResultArray results;
  {
    using Reporter = ::testing::ScopedFakeTestPartResultReporter;
    Reporter const reporter(Reporter::INTERCEPT_ONLY_CURRENT_THREAD, &results);
    body();
  }
  Messages reasons;
  for (int i = 0; i < results.size(); ++i) {
    std::string message = results.GetTestPartResult(i).summary();
    message.resize(std::min(message.size(), message.find("\nGoogle Test trace:")));
    reasons.push_back(message.substr(message.rfind('\n') + 1));
  }
  return reasons;
}

void allocateOne() {
  std::make_unique<int>(1);
}

void allocateOneOrDoWithout() {
  try {
    allocateOne();
  } catch (std::bad_alloc const&) {
  }
}

TEST(AllocationSweep, EachAllocationFailsInTurn) {
  std::string steps;
  AllocationSweep sweep(3);
  while (sweep.next()) {
    char step = 'a';
    sweep.run([&] {
      String const text(KVW("a"));
      ++step;
      std::unique_ptr<int> const object(new int);
      ++step;
      std::unique_ptr<int[]> const array(new int[2]);
      ++step;
    });
    steps += step;
    EXPECT_EQ(sweep.failed(), step != 'd');
    EXPECT_EQ(sweep.threw(), step != 'd');
  }
  EXPECT_EQ(steps, "abcd");
  EXPECT_EQ(sweep.failures(), 3);
}

TEST(AllocationSweep, WithAStepSomeAllocationsDoNotFail) {
  std::string steps;
  for (AllocationSweep sweep(3, 2); sweep.next();) {
    char step = 'a';
    sweep.run([&] {
      for (; step < 'f'; ++step) allocateOne();
    });
    steps += step;
  }
  EXPECT_EQ(steps, "acef");
}

TEST(AllocationSweep, AllocationsOutsideOfTheOperationDoNotCount) {
  std::vector<std::unique_ptr<int>> kept;
  AllocationSweep sweep;
  while (sweep.next()) {
    kept.push_back(std::make_unique<int>(1));
    sweep.run(&allocateOne);
    kept.push_back(std::make_unique<int>(2));
  }
  EXPECT_EQ(sweep.failures(), 1);
  EXPECT_EQ(kept.size(), 4u);
}

TEST(AllocationSweep, WhatTheOperationLeavesMayBeReleasedAfterIt) {
  for (AllocationSweep sweep; sweep.next();) {
    std::unique_ptr<int> left;
    sweep.run([&] { left = std::make_unique<int>(1); });
    EXPECT_EQ(left == nullptr, sweep.failed());
  }
}

TEST(AllocationSweep, ABlockThatStaysIsAFailure) {
  std::unique_ptr<int> left;
  EXPECT_EQ(reasonsOfFailures([&] {
              for (AllocationSweep sweep; sweep.next();) sweep.run([&] { left = std::make_unique<int>(1); });
            }),
            Messages{"blocks have not been released"});
}

TEST(AllocationSweep, AReleaseThatDoesNotFitIsAFailure) {
  // By pointers: the compiler warns of the plain calls.
  void* (*const volatile allocateArray)(std::size_t) = &::operator new[];
  void (*const volatile releaseObject)(void*) = &::operator delete;
  EXPECT_EQ(reasonsOfFailures([&] {
              for (AllocationSweep sweep; sweep.next();) sweep.run([&] { releaseObject(allocateArray(1)); });
            }),
            Messages{"blocks have been released in a way that does not fit"});
  EXPECT_EQ(reasonsOfFailures([&] {
              for (AllocationSweep sweep; sweep.next();) {
                sweep.runReporting([&] { releaseObject(strings::blockAllocator.allocate(1)); });
              }
            }),
            Messages{"blocks have been released in a way that does not fit"});
}

TEST(AllocationSweep, AFailureThatIsSwallowedIsAFailure) {
  EXPECT_EQ(reasonsOfFailures([] {
              for (AllocationSweep sweep; sweep.next();) sweep.run(&allocateOneOrDoWithout);
            }),
            Messages{"std::bad_alloc did not come out"});
}

TEST(AllocationSweep, AnExceptionWithoutAFailureIsAFailure) {
  auto const throwAnyway = [] {
    allocateOneOrDoWithout();
    throw std::bad_alloc();
  };
  EXPECT_EQ(reasonsOfFailures([&] {
              for (AllocationSweep sweep; sweep.next();) sweep.run(throwAnyway);
            }),
            Messages{"std::bad_alloc without a reason"});
  EXPECT_EQ(reasonsOfFailures([&] {
              for (AllocationSweep sweep; sweep.next();) sweep.runRecovering(throwAnyway);
            }),
            Messages{"std::bad_alloc without a reason"});
}

TEST(AllocationSweep, AReportingOperationThrowsNothing) {
  for (AllocationSweep sweep; sweep.next();) sweep.runReporting(&allocateOneOrDoWithout);
  EXPECT_EQ(reasonsOfFailures([] {
              for (AllocationSweep sweep; sweep.next();) sweep.runReporting(&allocateOne);
            }),
            Messages{"std::bad_alloc came out"});
}

TEST(AllocationSweep, ARecoveringOperationMayThrowOrNot) {
  AllocationSweep sweep(2);
  std::string threw;
  while (sweep.next()) {
    sweep.runRecovering([] {
      allocateOneOrDoWithout();
      allocateOne();
    });
    threw += sweep.threw() ? "yes " : "no ";
  }
  EXPECT_EQ(threw, "no yes no ");
}

TEST(AllocationSweep, OtherExceptionsPass) {
  AllocationSweep sweep;
  ASSERT_TRUE(sweep.next());
  EXPECT_THROW(sweep.run([] { throw 1; }), int);
}

TEST(AllocationSweep, TooFewAllocationsAreAFailure) {
  EXPECT_EQ(reasonsOfFailures([] {
              for (AllocationSweep sweep; sweep.next();) sweep.run([] {});
            }),
            Messages{"fewer allocations than expected"});
  EXPECT_EQ(reasonsOfFailures([] {
              for (AllocationSweep sweep(2); sweep.next();) sweep.run(&allocateOne);
            }),
            Messages{"fewer allocations than expected"});
  for (AllocationSweep sweep(0); sweep.next();) sweep.run([] {});
}

TEST(AllocationSweep, AnOperationWithoutEndIsAFailure) {
  EXPECT_EQ(reasonsOfFailures([] {
              for (AllocationSweep sweep; sweep.next();) {
                sweep.run([] {
                  for (;;) allocateOne();
                });
              }
            }),
            Messages{"there is no end of allocations"});
}

TEST(AllocationSweep, EachTurnOfTheLoopRunsOnce) {
  EXPECT_EQ(reasonsOfFailures([] {
              for (AllocationSweep sweep; sweep.next();) {
              }
            }),
            Messages{"nothing has been run"});
  EXPECT_EQ(reasonsOfFailures([] {
              AllocationSweep sweep(0);
              sweep.next();
              sweep.run([] {});
              sweep.run([] {});
            }),
            Messages{"one run has been made already"});
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
