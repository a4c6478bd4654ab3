// SPDX-License-Identifier: MIT
#include "kvbase/records/internal/inverse_length_table.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace KV_1_1 {
namespace testing {
namespace {

using records::inverseLengthTable;
using records::InverseLengthTable;

TEST(InverseLengthTable, Has8192Factors) {
  EXPECT_EQ(inverseLengthTable.factors.size(), 8192u);
}

TEST(InverseLengthTable, NamedEntries) {
  struct Row {
    char const* name;
    unsigned int index;
    double squares;
  };
  Row const rows[] = {
      {"the first one: 0, 0, 126", 0, 126 * 126},
      {"the end of the first line, not folded: 126, 0, 0", 126, 126 * 126},
      {"folded to 0, 127, -1", 127, 16130},
      {"the second line: 0, 1, 125", 128, 1 + 125 * 125},
      {"its last entry that is not folded: 125, 1, 0", 128 + 125, 125 * 125 + 1},
      {"its first folded one, to 1, 126, -1", 128 + 126, 1 + 126 * 126 + 1},
      {"folded to 0, 126, 0", 128 + 127, 126 * 126},
      {"the middle of the triangle: 42, 42, 42", 42 * 128 + 42, 3 * 42 * 42},
      {"the last line: 0, 63, 63", 63 * 128, 2 * 63 * 63},
      {"folded to 63, 64, -1", 63 * 128 + 64, 63 * 63 + 64 * 64 + 1},
      {"the last one, folded to 0, 64, 62", 8191, 64 * 64 + 62 * 62},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(inverseLengthTable.factors[row.index], 1.0 / std::sqrt(row.squares));
  }
  EXPECT_EQ(inverseLengthTable.factors[0], 1.0 / 126);
}

TEST(InverseLengthTable, EachFactorBringsItsVectorToLengthOne) {
  for (unsigned int y = 0; y < 64; ++y) {
    for (unsigned int x = 0; x < 128; ++x) {
      bool const isFolded = x + y >= 127;
      double const a = isFolded ? 127.0 - x : x;
      double const b = isFolded ? 127.0 - y : y;
      double const c = 126 - a - b;
      double const factor = inverseLengthTable.factors[y * 128 + x];
      ASSERT_TRUE(std::isfinite(factor)) << x << ' ' << y;
      ASSERT_NEAR(std::hypot(factor * a, factor * b, factor * c), 1, 1e-15) << x << ' ' << y;
    }
  }
}

TEST(InverseLengthTable, IsTheSameWheneverItIsFilled) {
  EXPECT_EQ(std::make_unique<InverseLengthTable>()->factors, inverseLengthTable.factors);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
