// SPDX-License-Identifier: MIT
#include "benchmarks/support.h"

namespace KV_1_1 {
namespace bench {

// A move to another processor would change caches and clock frequency during a measurement.
void steadyProcess() {
  SetThreadAffinityMask(GetCurrentThread(), DWORD_PTR{1} << GetCurrentProcessorNumber());
}

}  // namespace bench
}  // namespace KV_1_1
