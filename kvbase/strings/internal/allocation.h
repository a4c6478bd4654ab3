// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace KV_1_1 {
namespace strings {

// Where payloads come from: malloc and free, unless a test has put others in their place.
struct BlockAllocator {
  void* (*allocate)(std::size_t bytes);
  void (*release)(void* block);
};
extern BlockAllocator blockAllocator;

}  // namespace strings
}  // namespace KV_1_1
