// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "kvbase/kernels/text_kernels.h"
#include "kvbase/platform/cpu_features.h"

namespace KV_1_1 {
namespace testing {

struct Twin {
  char const* name;
  strings::TextKernels const* kernels;
};

// The twins that this processor can run, the best one last.
inline std::vector<Twin> twins() {
  std::vector<Twin> twins = {{"scalar", &strings::kScalarKernels}, {"SSE2", &strings::kSse2Kernels}};
  if (platform::hasAvx2()) twins.push_back({"AVX2", &strings::kAvx2Kernels});
  return twins;
}

}  // namespace testing
}  // namespace KV_1_1
