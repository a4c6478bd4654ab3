// SPDX-License-Identifier: MIT
//
// Measures the contestants of a row in turn, in many short slices. Other programs on the machine, and what shares a core
// with this one, lengthen any time by up to twice for a while: contestants that take turns see the same phases, and the
// shortest slice of each is one that nothing has disturbed.
#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace KV_1_1 {
namespace bench {

class Stopwatch {
 public:
  double nanoseconds() const { return std::chrono::duration<double, std::nano>(Clock::now() - start_).count(); }

 private:
  using Clock = std::chrono::steady_clock;
  Clock::time_point start_ = Clock::now();
};

struct Measured {
  long long iterations;
  double nanoseconds;
};

// Does the work of a contestant, at least so many times, and tells how often and how long; what prepares it is not timed.
using Measure = std::function<Measured(long long iterations)>;

void addContestant(std::string const& row, std::string const& contestant, Measure measure);

// Measures the rows whose names match the regular expression, prints their times and writes them as JSON into the file:
// {row: {contestant: nanoseconds}}. False if no name matches, or if the file cannot be written.
bool measureRows(char const* pattern, char const* file);

// The compiler must compute the value, and must take memory for changed.
template <class Value>
inline void keep(Value const& value) {
  if constexpr (sizeof value <= sizeof(void*)) {
    __asm__ volatile("" : : "r,m"(value) : "memory");
  } else {
    __asm__ volatile("" : : "m"(value) : "memory");  // given the choice, the compiler makes a copy of a record
  }
}
// The compiler must have memory written, and must take it for changed.
inline void keepWrites() {
  __asm__ volatile("" : : : "memory");
}

}  // namespace bench
}  // namespace KV_1_1
