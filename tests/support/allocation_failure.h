// SPDX-License-Identifier: MIT
//
// Makes one allocation fail and tells whether the code under test cleans up. Counts the payloads of Strings and
// everything from operator new, on the thread that opened the scope and while the scope lasts.
//
//   for (int n = 1;; ++n) {
//     bool threw = false;
//     AllocationFailure scope(n);             // the n-th allocation throws std::bad_alloc or gives null, as it does
//     try { work(); } catch (std::bad_alloc const&) { threw = true; }
//     scope.end();
//     EXPECT_EQ(0, scope.live());
//     if (!scope.failed()) break;
//   }
//
// Scopes do not nest. An expectation that fails allocates itself, so look at things inside the scope and judge them
// after end().
#pragma once

#include <cstddef>

namespace KV_1_1 {
namespace testing {

class AllocationFailure {
 public:
  // The allocation that fails, counted from 1; 0: none, only count.
  explicit AllocationFailure(int failAt);
  ~AllocationFailure();
  AllocationFailure(AllocationFailure const&) = delete;
  AllocationFailure& operator=(AllocationFailure const&) = delete;

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
  bool ended_ = false;
  Entry* entries_ = nullptr;
  int capacity_ = 0;
};

}  // namespace testing
}  // namespace KV_1_1
