// SPDX-License-Identifier: MIT
#pragma once

namespace KV_1_1 {
namespace platform {

// Whether both the processor and the operating system support AVX2; the same for AVX-512 with all that its kernels need: BW,
// VL, VBMI and VBMI2, and BMI1, BMI2 and POPCNT beside it. May be called at any time, also before the library has started.
bool hasAvx2();
bool hasAvx512();

}  // namespace platform
}  // namespace KV_1_1
