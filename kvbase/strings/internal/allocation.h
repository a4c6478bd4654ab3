// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace KV_1_1 {
namespace strings {

// The allocator of payloads: malloc, realloc and free, unless a test has replaced them.
struct BlockAllocator {
  void* (*allocate)(std::size_t bytes);
  // To fewer bytes; null, with the block unchanged, if that fails.
  void* (*cut)(void* block, std::size_t bytes);
  void (*release)(void* block);
};
extern BlockAllocator blockAllocator;

}  // namespace strings
}  // namespace KV_1_1
