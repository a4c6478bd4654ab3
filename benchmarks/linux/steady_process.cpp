// SPDX-License-Identifier: MIT
#include <malloc.h>
#include <sched.h>

#include "benchmarks/support.h"

namespace KV_1_1 {
namespace bench {

namespace {

// A move to another processor would change caches and clock frequency during a measurement.
void stayOnOneProcessor() {
  cpu_set_t processors;
  CPU_ZERO(&processors);
  CPU_SET(sched_getcpu(), &processors);
  sched_setaffinity(0, sizeof processors, &processors);
}

// Keeps freed memory in the process. Otherwise the time of a batch would depend on whether the batch before it returned
// its memory to the system.
void keepMemory() {
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
}

}  // namespace

void steadyProcess() {
  keepMemory();
  stayOnOneProcessor();
}

}  // namespace bench
}  // namespace KV_1_1
