// SPDX-License-Identifier: MIT
//
// Times KVBase beside its peers. The repetitions of all rows are mixed at random, so that a slow moment of the machine
// meets everybody; one processor does all the work. The options of Google Benchmark override what is set here.
#include <malloc.h>
#include <sched.h>

#include <future>
#include <thread>
#include <vector>

#include "benchmarks/support.h"

namespace {

// On one processor neither caches nor clock frequencies change under way.
void stayOnOneProcessor() {
  cpu_set_t processors;
  CPU_ZERO(&processors);
  CPU_SET(sched_getcpu(), &processors);
  sched_setaffinity(0, sizeof processors, &processors);
}

// Memory that a batch gave back is not returned to the system between two batches: only the contestant that runs into
// that would pay for it.
void keepMemory() {
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
}

// The standard library counts without locks until there is a second thread, as no application of the family is.
class SecondThread {
 public:
  SecondThread() : thread_([end = end_.get_future()]() mutable { end.wait(); }) {}
  ~SecondThread() {
    end_.set_value();
    thread_.join();
  }

 private:
  std::promise<void> end_;
  std::thread thread_;
};

}  // namespace

int main(int argc, char** argv) {
  char interleaving[] = "--benchmark_enable_random_interleaving=true";
  char repetitions[] = "--benchmark_repetitions=5";
  char minimumTime[] = "--benchmark_min_time=0.03";
  std::vector<char*> arguments = {argv[0], interleaving, repetitions, minimumTime};
  arguments.insert(arguments.end(), argv + 1, argv + argc);
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 1;

  keepMemory();
  stayOnOneProcessor();
  SecondThread const second;
  KV_1_1::bench::addStringStorage();
  KV_1_1::bench::addStringSearch();
  KV_1_1::bench::addStringValues();
  KV_1_1::bench::addStringEncoding();
  KV_1_1::bench::addPaths();
  KV_1_1::bench::addObjects();
  KV_1_1::bench::addDisk();
  KV_1_1::bench::addDiskChanges();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
