// SPDX-License-Identifier: MIT
#include <cmath>

#include "kvbase/records/internal/inverse_length_table.h"

namespace KV_1_1 {
namespace records {

InverseLengthTable::InverseLengthTable() {
  for (int i = 0; i < kSize; ++i) {
    int x = i & 127;
    int y = i >> 7;
    if (x + y >= 127) {
      x = 127 - x;
      y = 127 - y;
    }
    int const z = 126 - x - y;
    factors[static_cast<unsigned>(i)] = 1.0 / std::sqrt(static_cast<double>(x * x + y * y + z * z));
  }
}

}  // namespace records
}  // namespace KV_1_1
