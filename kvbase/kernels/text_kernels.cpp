// SPDX-License-Identifier: MIT
#include "kvbase/kernels/text_kernels.h"

#include "kvbase/kernels/scalar_kernels.h"
#include "kvbase/platform/cpu_features.h"

namespace KV_1_1 {
namespace strings {

TextKernels const kScalarKernels = {
    &lengthScalar,    &mismatchScalar,  &mismatchIgnoringCaseScalar, &findUnitScalar, &findLastUnitScalar,
    &findTextScalar,  &findRangeScalar, &replaceUnitScalar,          &utf8SizeScalar, &toUtf8Scalar,
    &utf16SizeScalar, &fromUtf8Scalar,  &findBeyondLatin1Scalar,     &widenScalar,    &narrowScalar,
};

TextKernels const* activeKernels = &kSse2Kernels;

void chooseKernels() {
  if (platform::hasAvx2()) activeKernels = platform::hasAvx512() ? &avx512Kernels() : &kAvx2Kernels;
}

}  // namespace strings
}  // namespace KV_1_1
