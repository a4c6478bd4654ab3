// SPDX-License-Identifier: MIT
//
// Bit scans, which compilers spell differently. They have internal linkage because sources compiled for several
// processors use them, and the linker must not merge their copies.
#pragma once

#if defined(_MSC_VER)
#include <intrin.h>
#endif

namespace KV_1_1 {
namespace platform {

// Index of the lowest bit that is set.
// REQUIRES: bits is not 0.
static inline int lowestBit(unsigned int bits) {
#if defined(_MSC_VER)
  unsigned long index;
  _BitScanForward(&index, bits);
  return static_cast<int>(index);
#else
  return __builtin_ctz(bits);
#endif
}

// Index of the highest bit that is set.
// REQUIRES: bits is not 0.
static inline int highestBit(unsigned int bits) {
#if defined(_MSC_VER)
  unsigned long index;
  _BitScanReverse(&index, bits);
  return static_cast<int>(index);
#else
  return 31 - __builtin_clz(bits);
#endif
}

}  // namespace platform
}  // namespace KV_1_1
