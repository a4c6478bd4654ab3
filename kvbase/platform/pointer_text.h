// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace KV_1_1 {
namespace platform {

// An address as the print functions of the system show a pointer: 16 upper-case digits on Windows, where not every
// compiler's own functions do so; 0x and lower-case digits, (nil) for 0, on Linux. Thread rule: any thread.
class PointerText {
 public:
  explicit PointerText(std::uint64_t address);
  char const* get() const { return text_; }

 private:
  char text_[24];
};

}  // namespace platform
}  // namespace KV_1_1
