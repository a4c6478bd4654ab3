// SPDX-License-Identifier: MIT
//
// The part of Google Benchmark's interface that the rows use, for Windows, where Debian has no build of that library: the
// same names do the same. There is no clock of the processor's time that is fine enough, so both times are the elapsed one.
#pragma once

#include <chrono>
#include <functional>

namespace benchmark {

// One measurement: counts the iterations and adds up their time.
class State {
 public:
  explicit State(long long iterations) : wanted_(iterations) {}

  // for (auto _ : state) does the work so many times. The end of the loop ends the measurement.
  struct __attribute__((unused)) Ignored {};
  class Iterator {
   public:
    Iterator(State* state, long long left) : state_(state), left_(left) {}
    bool operator!=(Iterator const&) {
      if (left_ != 0) return true;
      state_->PauseTiming();
      return false;
    }
    void operator++() { --left_; }
    Ignored operator*() const { return {}; }

   private:
    State* state_;
    long long left_;
  };
  Iterator begin() {
    done_ = wanted_;
    ResumeTiming();
    return {this, wanted_};
  }
  Iterator end() { return {this, 0}; }

  // True as long as `batch` iterations more are wanted.
  bool KeepRunningBatch(long long batch) {
    if (done_ == 0) ResumeTiming();
    if (done_ < wanted_) {
      done_ += batch;
      return true;
    }
    PauseTiming();
    return false;
  }

  void PauseTiming() { time_ += Clock::now() - resumed_; }
  void ResumeTiming() { resumed_ = Clock::now(); }

  // What was measured.
  long long iterations() const { return done_; }
  double nanoseconds() const { return std::chrono::duration<double, std::nano>(time_).count(); }

 private:
  using Clock = std::chrono::steady_clock;
  long long wanted_;
  long long done_ = 0;
  Clock::time_point resumed_;
  Clock::duration time_{};
};

// The compiler must have the value, and must take memory for changed.
template <class Value>
inline void DoNotOptimize(Value const& value) {
  __asm__ volatile("" : : "r,m"(value) : "memory");
}
inline void ClobberMemory() {
  __asm__ volatile("" : : : "memory");
}

void RegisterBenchmark(char const* name, std::function<void(State&)> run);

// Reads the options --benchmark_filter, _min_time, _repetitions and _out, and takes what it knows from the arguments.
void Initialize(int* count, char** arguments);
bool ReportUnrecognizedArguments(int count, char** arguments);
// Runs the repetitions of all that match the filter, in random order, and writes the results as JSON.
void RunSpecifiedBenchmarks();
inline void Shutdown() {}

}  // namespace benchmark
