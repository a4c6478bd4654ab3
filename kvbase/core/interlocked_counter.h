// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>

namespace KV_1_1 {

// A 32-bit counter whose read-modify-write operators are atomic with full-barrier order. It wraps around silently.
//
//   InterlockedCounter c(5);
//   c += 3    => 5, and c holds 8
//   c = 2     => 2
//   ++c       => 3
//   c++       => 3, and c holds 4
//
// Thread rule: the operators marked atomic may run on any threads at once. Copying and reading are plain, and a value
// may be out of date as soon as it is read.
class InterlockedCounter {
 public:
  // 0.
  constexpr InterlockedCounter() : word_(0) {}
  // The given value, taken modulo 2^32.
  constexpr InterlockedCounter(long value) : word_(static_cast<std::uint32_t>(value)) {}
  // Copies the word; not atomic as a whole.
  InterlockedCounter(InterlockedCounter const& other) : word_(other.load()) {}

  // Copies the word; not atomic as a whole.
  InterlockedCounter& operator=(InterlockedCounter const& other) {
    word_.store(other.load(), std::memory_order_relaxed);
    return *this;
  }

  // Atomic exchange; returns the value just assigned, not the old one.
  unsigned int operator=(unsigned int value) {
    word_.exchange(value);
    return value;
  }

  // A plain load.
  operator unsigned int() const { return load(); }

  // Atomic; the new value.
  unsigned int operator++() { return word_.fetch_add(1) + 1; }
  // Atomic; the old value.
  unsigned int operator++(int) { return word_.fetch_add(1); }
  // Atomic; the new value.
  unsigned int operator--() { return word_.fetch_sub(1) - 1; }
  // Atomic; the old value.
  unsigned int operator--(int) { return word_.fetch_sub(1); }

  // COMPAT: atomic; returns the value before the addition, as no other compound assignment does.
  unsigned int operator+=(unsigned int value) { return word_.fetch_add(value); }

 private:
  // Relaxed: a plain load promises no order; it only must not tear.
  std::uint32_t load() const { return word_.load(std::memory_order_relaxed); }

  // Sequentially consistent throughout (the default order of the operations above): the full barrier is promised.
  std::atomic<std::uint32_t> word_;
};

static_assert(sizeof(InterlockedCounter) == 4, "a counter is one word");

}  // namespace KV_1_1
