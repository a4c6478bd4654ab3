// SPDX-License-Identifier: MIT
#pragma once

namespace KV_1_1 {
namespace platform {

// Whether processor and operating system both support AVX2. Needs no start-up of anything; about 100 ns.
bool hasAvx2();

}  // namespace platform
}  // namespace KV_1_1
