// SPDX-License-Identifier: MIT
//
// Shared by all fuzzers: texts and numbers taken from the input bytes, and a check that ends the run.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "kvbase/kvbase.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

namespace fuzzing {

// Ends the run with a message if a guarantee of the library does not hold.
inline void require(bool holds, char const* what) {
  if (holds) return;
  std::fprintf(stderr, "violated: %s\n", what);
  std::abort();
}

class Input {
 public:
  Input(std::uint8_t const* data, std::size_t size) : next_(data), end_(data + size) {}

  std::size_t left() const { return static_cast<std::size_t>(end_ - next_); }

  std::uint8_t byte() { return next_ != end_ ? *next_++ : std::uint8_t{0}; }
  int integer() {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value = value << 8 | byte();
    return static_cast<int>(value);
  }
  // From 0 up to, but not including, `limit`.
  int below(int limit) { return static_cast<int>(static_cast<unsigned>(integer()) % static_cast<unsigned>(limit)); }

  // All that is left, as 16-bit units in the machine's order.
  KV_1_1::wstring units() { return units(left() / 2); }
  KV_1_1::wstring units(std::size_t count) {
    KV_1_1::wstring text(std::min(count, left() / 2), 0);
    if (!text.empty()) std::memcpy(&text[0], next_, 2 * text.size());
    next_ += 2 * text.size();
    return text;
  }
  // The same with most units in ASCII, where the grammars are.
  KV_1_1::wstring narrowUnits() { return narrowUnits(left()); }
  KV_1_1::wstring narrowUnits(std::size_t count) {
    KV_1_1::wstring text;
    for (count = std::min(count, left()); count > 0; --count) {
      std::uint8_t const unit = byte();
      text.push_back(static_cast<KV_1_1::wchar>(unit < 0xC0 ? unit : unit * 0x0101));
    }
    return text;
  }
  std::string bytes() {
    std::string text(reinterpret_cast<char const*>(next_), left());
    next_ = end_;
    return text;
  }

 private:
  std::uint8_t const* next_;
  std::uint8_t const* end_;
};

// A String of all units, inner NULs included.
inline KV_1_1::String stringOf(KV_1_1::wstring const& units) {
  return KV_1_1::String(units.data(), static_cast<int>(units.size()));
}

}  // namespace fuzzing
