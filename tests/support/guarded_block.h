// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace KV_1_1 {
namespace testing {

// Memory behind which there is none: the first byte after it can be neither read nor written. It also tells of instructions
// that no sanitizer looks at.
//
//   GuardedBlock block(1000);
//   char* const text = block.last(20);  // text[20] ends the program
class GuardedBlock {
 public:
  explicit GuardedBlock(std::size_t capacity);
  ~GuardedBlock();
  GuardedBlock(GuardedBlock const&) = delete;
  GuardedBlock& operator=(GuardedBlock const&) = delete;

  // REQUIRES: `size` is at most the capacity.
  char* last(std::size_t size) const { return end_ - size; }

 private:
  void* memory_ = nullptr;
  std::size_t size_ = 0;  // of all of it
  char* end_ = nullptr;
};

}  // namespace testing
}  // namespace KV_1_1
