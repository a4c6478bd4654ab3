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
inline std::vector<Twin> const& twins() {
  static std::vector<Twin> const all = [] {
    std::vector<Twin> found = {{"scalar", &strings::kScalarKernels}, {"SSE2", &strings::kSse2Kernels}};
    if (platform::hasAvx2()) found.push_back({"AVX2", &strings::kAvx2Kernels});
    if (platform::hasAvx512()) found.push_back({"AVX-512", &strings::avx512Kernels()});
    return found;
  }();
  return all;
}

}  // namespace testing
}  // namespace KV_1_1
