// SPDX-License-Identifier: MIT
//
// Payloads go through the library's allocator, which tests can replace; everything else goes through operator new, all forms
// of which are replaced here for the whole program.
#include "tests/support/allocation_failure.h"

#include <cstdlib>
#include <new>
#include <string>

#include "kvbase/strings/internal/allocation.h"

namespace KV_1_1 {
namespace testing {

namespace {

enum Kind { kBlock, kObject, kArray };

thread_local AllocationFailure* current = nullptr;

}  // namespace

// A block of the scope that has not been released.
struct AllocationFailure::Entry {
  void* block;
  Kind kind;
};

struct AllocationHooks {
  static void* allocate(Kind kind, std::size_t bytes) {
    AllocationFailure* const scope = current;
    if (scope == nullptr || !scope->isAllocating_) return std::malloc(bytes);
    if (++scope->allocations_ == scope->failAt_) return nullptr;
    void* const block = std::malloc(bytes);
    if (block != nullptr) enter(*scope, block, kind);
    return block;
  }

  static void release(Kind kind, void* block) {
    if (current != nullptr && block != nullptr) remove(*current, block, kind);
    std::free(block);
  }

  static void* allocateBlock(std::size_t bytes) { return allocate(kBlock, bytes); }
  // No allocation of its own.
  static void* cutBlock(void* block, std::size_t bytes) {
    void* const cut = std::realloc(block, bytes);
    if (current == nullptr || cut == nullptr) return cut;
    for (int i = 0; i < current->live_; ++i) {
      if (current->entries_[i].block == block) current->entries_[i].block = cut;
    }
    return cut;
  }
  static void releaseBlock(void* block) { release(kBlock, block); }

 private:
  static void enter(AllocationFailure& scope, void* block, Kind kind) {
    if (scope.live_ == scope.capacity_) {
      scope.capacity_ = 2 * scope.capacity_ + 16;
      std::size_t const bytes = static_cast<std::size_t>(scope.capacity_) * sizeof(AllocationFailure::Entry);
      void* const entries = std::realloc(scope.entries_, bytes);
      if (entries == nullptr) std::abort();
      scope.entries_ = static_cast<AllocationFailure::Entry*>(entries);
    }
    scope.entries_[scope.live_++] = {block, kind};
  }

  // Blocks from before the scope are not counted.
  static void remove(AllocationFailure& scope, void* block, Kind kind) {
    for (int i = scope.live_ - 1; i >= 0; --i) {
      if (scope.entries_[i].block != block) continue;
      if (scope.entries_[i].kind != kind) ++scope.mismatched_;
      scope.entries_[i] = scope.entries_[--scope.live_];
      return;
    }
  }
};

AllocationFailure::AllocationFailure(int failAt) : failAt_(failAt) {
  if (current != nullptr) std::abort();
  strings::blockAllocator = {&AllocationHooks::allocateBlock, &AllocationHooks::cutBlock,
                             &AllocationHooks::releaseBlock};
  current = this;
}

AllocationFailure::~AllocationFailure() {
  end();
}

void AllocationFailure::end() {
  if (ended_) return;
  ended_ = true;
  current = nullptr;
  strings::blockAllocator = {&std::malloc, &std::realloc, &std::free};
  std::free(entries_);
}

bool AllocationSweep::next() {
  if (trace_.has_value() && !judge()) return false;
  scope_.reset();
  trace_.reset();
  trace_.emplace(__FILE__, __LINE__, "allocation " + std::to_string(failingNow()));
  return true;
}

bool AllocationSweep::judge() {
  constexpr int kMostFailures = 1000;
  if (!scope_.has_value()) {
    ADD_FAILURE() << "nothing has been run";
    return false;
  }
  scope_->end();
  EXPECT_EQ(scope_->live(), 0) << "blocks have not been released";
  EXPECT_EQ(scope_->mismatched(), 0) << "blocks have been released in a way that does not fit";
  if (!failed()) EXPECT_GE(failures_, leastFailures_) << "fewer allocations than expected";
  EXPECT_LT(failures_, kMostFailures) << "there is no end of allocations";
  return failed() && failures_ < kMostFailures && !::testing::Test::HasFailure();
}

void AllocationSweep::runRecovering(std::function<void()> const& operation) {
  EXPECT_FALSE(scope_.has_value()) << "one run has been made already";
  threw_ = false;
  scope_.emplace(failingNow());
  try {
    operation();
  } catch (std::bad_alloc const&) {
    threw_ = true;
  }
  scope_->stopAllocations();
  failures_ += failed() ? 1 : 0;
  EXPECT_LE(threw_, failed()) << "std::bad_alloc without a reason";
}

void AllocationSweep::run(std::function<void()> const& operation) {
  runRecovering(operation);
  EXPECT_GE(threw_, failed()) << "std::bad_alloc did not come out";
}

void AllocationSweep::runReporting(std::function<void()> const& operation) {
  runRecovering(operation);
  EXPECT_FALSE(threw_) << "std::bad_alloc came out";
}

}  // namespace testing
}  // namespace KV_1_1

namespace {

using KV_1_1::testing::AllocationHooks;
using KV_1_1::testing::kArray;
using KV_1_1::testing::kObject;

void* allocateOrThrow(KV_1_1::testing::Kind kind, std::size_t bytes) {
  void* const block = AllocationHooks::allocate(kind, bytes != 0 ? bytes : 1);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

}  // namespace

void* operator new(std::size_t bytes) {
  return allocateOrThrow(kObject, bytes);
}
void* operator new[](std::size_t bytes) {
  return allocateOrThrow(kArray, bytes);
}
void* operator new(std::size_t bytes, std::nothrow_t const&) noexcept {
  return AllocationHooks::allocate(kObject, bytes != 0 ? bytes : 1);
}
void* operator new[](std::size_t bytes, std::nothrow_t const&) noexcept {
  return AllocationHooks::allocate(kArray, bytes != 0 ? bytes : 1);
}
void operator delete(void* block) noexcept {
  AllocationHooks::release(kObject, block);
}
void operator delete[](void* block) noexcept {
  AllocationHooks::release(kArray, block);
}
void operator delete(void* block, std::size_t) noexcept {
  AllocationHooks::release(kObject, block);
}
void operator delete[](void* block, std::size_t) noexcept {
  AllocationHooks::release(kArray, block);
}
void operator delete(void* block, std::nothrow_t const&) noexcept {
  AllocationHooks::release(kObject, block);
}
void operator delete[](void* block, std::nothrow_t const&) noexcept {
  AllocationHooks::release(kArray, block);
}
