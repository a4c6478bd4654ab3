// SPDX-License-Identifier: MIT
//
// Seeded random values and texts, the same on every system and with every standard library.
//
//   RandomText random(20);
//   wstring const text = random.text(random.below(40), RandomUnits::kFew);
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace testing {

// The units that a text consists of.
enum class RandomUnits {
  kFew,         // a, b, A, blank: few enough that searches succeed
  kAscii,       // 0x01 to 0x7F
  kAny,         // all but NUL, lone surrogates included, with a bias to ASCII and to the limits of UTF-8 lengths
  kAnyWithNul,  // the same with a NUL now and then
};

class RandomText {
 public:
  explicit RandomText(std::uint32_t seed) : engine_(seed) {}

  // 0 to n - 1.
  int below(int n) { return static_cast<int>(engine_() % static_cast<std::uint32_t>(n)); }
  // `from` to `to`, both included.
  int between(int from, int to) { return from + below(to - from + 1); }
  bool oneIn(int n) { return below(n) == 0; }

  wchar unit(RandomUnits units);
  wstring text(int length, RandomUnits units);
  // Mostly valid UTF-8, with malformed sequences of every kind and NULs.
  std::string utf8(int length);

 private:
  std::mt19937 engine_;
};

// Units for a sweep of an operation that takes the classes of units from the system: 0x01 to 0x3FF, both sides of every
// limit of a class, the full-width forms, and some of the rest.
std::vector<wchar> const& sampledUnits();

}  // namespace testing
}  // namespace KV_1_1
