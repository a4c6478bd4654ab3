// SPDX-License-Identifier: MIT
#pragma once

namespace KV_1_1 {
namespace platform {

// Whether both the processor and the operating system support AVX2. May be called at any time, also before the library
// has started; takes about 100 ns.
bool hasAvx2();

}  // namespace platform
}  // namespace KV_1_1
