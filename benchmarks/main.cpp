// SPDX-License-Identifier: MIT
//
//     kvbase_benchmarks RESULTS.json [PATTERN]
//
// Times KVBase and its peers, in the rows whose names match the regular expression.
#include <cstdio>
#include <future>
#include <thread>

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
  if (argc != 2 && argc != 3) {
    std::fputs("usage: kvbase_benchmarks RESULTS.json [PATTERN]\n", stderr);
    return 2;
  }
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
  return KV_1_1::bench::measureRows(argc == 3 ? argv[2] : "", argv[1]) ? 0 : 1;
}
