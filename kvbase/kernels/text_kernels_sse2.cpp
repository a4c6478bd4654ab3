// SPDX-License-Identifier: MIT
#include "kvbase/kernels/sse2_vector.h"
#include "kvbase/kernels/vector_kernel_table.h"

namespace KV_1_1 {
namespace strings {

TextKernels const kSse2Kernels = kVectorKernels<Sse2Vector>;

}  // namespace strings
}  // namespace KV_1_1
