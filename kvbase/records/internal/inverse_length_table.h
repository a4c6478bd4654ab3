// SPDX-License-Identifier: MIT
#pragma once

#include <array>

namespace KV_1_1 {
namespace records {

// For each vector on the plane x + y + z = 126, the factor that brings it to length 1. The index holds x in its low 7
// bits and y in the 6 bits above; where x + y is 127 or more, the vector is that of 127 - x and 127 - y. COMPAT: where
// x + y is 127, that leaves a z of -1.
//
// COMPAT: filled when the library is loaded, though no code of the library reads it.
struct InverseLengthTable {
  static constexpr int kSize = 8192;

  InverseLengthTable();

  std::array<double, kSize> factors;
};

// Defined with the other globals of the library.
extern InverseLengthTable const inverseLengthTable;

}  // namespace records
}  // namespace KV_1_1
