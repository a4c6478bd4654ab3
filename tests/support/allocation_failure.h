// SPDX-License-Identifier: MIT
//
// Makes allocations fail and tells whether the code under test cleans up. Counts the payloads of Strings and everything
// from operator new, on the thread that opened the scope and while the scope lasts.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <optional>

namespace KV_1_1 {
namespace testing {

// One allocation that fails, or none: an AllocationSweep has one for each run. Scopes do not nest. An expectation that fails
// allocates itself, so look at things inside the scope and judge them after end().
class AllocationFailure {
 public:
  // The allocation that fails, counted from 1; 0: none, only count.
  explicit AllocationFailure(int failAt);
  ~AllocationFailure();
  AllocationFailure(AllocationFailure const&) = delete;
  AllocationFailure& operator=(AllocationFailure const&) = delete;

  // From here on nothing fails, and only releases are counted.
  void stopAllocations() { isAllocating_ = false; }
  // Back to normal allocation; what was counted can still be asked for. The destructor does it too.
  void end();

  // Whether the allocation that was to fail has been asked for.
  bool failed() const { return failAt_ != 0 && allocations_ >= failAt_; }
  int allocations() const { return allocations_; }
  // Blocks allocated within the scope and not released before its end.
  int live() const { return live_; }
  // Blocks released in another way than they were allocated: delete for new[], free for new and so on.
  int mismatched() const { return mismatched_; }

 private:
  friend struct AllocationHooks;

  struct Entry;

  int failAt_;
  int allocations_ = 0;
  int live_ = 0;
  int mismatched_ = 0;
  bool isAllocating_ = true;
  bool ended_ = false;
  Entry* entries_ = nullptr;
  int capacity_ = 0;
};

// Runs an operation with its first allocation failing, then with its second, and so on, up to the run in which none fails.
//
//   for (AllocationSweep sweep; sweep.next();) {
//     String text(KVW("a"));  // what the operation works on is made anew for each run
//     sweep.run([&] { text.append(KVW("b")); });
//     EXPECT_EQ(shown(text), sweep.failed() ? "a" : "ab");
//   }
//
// Only allocations of the operation itself fail and are counted. What it leaves allocated must be released, in the way that
// fits, by the end of the loop's body. The sweep ends after the first run in which the test fails.
class AllocationSweep {
 public:
  // The test fails if the sweep ends after fewer failed allocations. 0: the operation may do without any. With a step above
  // 1, only the first of so many allocations is made to fail.
  explicit AllocationSweep(int leastFailures = 1, int step = 1) : leastFailures_(leastFailures), step_(step) {}

  // Judges the run before, and tells whether there is another.
  bool next();

  // Each turn of the loop calls one of these, once.

  // Runs an operation that throws std::bad_alloc if an allocation fails, and only then.
  void run(std::function<void()> const& operation);
  // Runs an operation that tells the failure by its result, or not at all, and throws nothing.
  void runReporting(std::function<void()> const& operation);
  // Runs an operation that does without some of the allocations and throws where it cannot.
  void runRecovering(std::function<void()> const& operation);

  // Whether an allocation failed in this run, and whether std::bad_alloc came out. After the loop: in the last run.
  bool failed() const { return scope_->failed(); }
  bool threw() const { return threw_; }
  // The number of runs in which an allocation has failed.
  int failures() const { return failures_; }

 private:
  int failingNow() const { return failures_ * step_ + 1; }
  bool judge();

  int leastFailures_;
  int step_;
  int failures_ = 0;
  bool threw_ = false;
  std::optional<::testing::ScopedTrace> trace_;
  std::optional<AllocationFailure> scope_;
};

}  // namespace testing
}  // namespace KV_1_1
