// SPDX-License-Identifier: MIT
//
// Times KVBase and its peers. The repetitions of all rows run in random order, so that a slow phase of the machine
// affects all contestants alike. The options of Google Benchmark on the command line override the defaults set here.
#include <future>
#include <thread>
#include <vector>

#include "benchmarks/support.h"

namespace {

// The standard library counts references without atomic operations while the process has a single thread. Applications
// have several threads, so a second one exists during the measurements.
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

  KV_1_1::bench::steadyProcess();
  SecondThread const second;
  KV_1_1::bench::addStringStorage();
  KV_1_1::bench::addStringSearch();
  KV_1_1::bench::addStringValues();
  KV_1_1::bench::addStringEncoding();
  KV_1_1::bench::addPaths();
  KV_1_1::bench::addObjects();
  KV_1_1::bench::addModules();
  KV_1_1::bench::addModuleStart();
  KV_1_1::bench::addSymbols();
  KV_1_1::bench::addCallStack();
  PEER(KV_1_1::bench::addDiagnostics());
  KV_1_1::bench::addDisk();
  KV_1_1::bench::addDiskChanges();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
