// SPDX-License-Identifier: MIT
//
// Narrow texts of the stack walker: heap copies, copies into fixed fields, and texts of the seam. None of these throws.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

namespace KV_1_1 {
namespace diagnostics {

using HeapText = std::unique_ptr<char[]>;

// `size` bytes that are not initialised; null without memory.
inline HeapText allocateText(std::size_t size) {
  return HeapText(new (std::nothrow) char[size]);
}

// A copy; null without memory.
inline HeapText duplicate(char const* text) {
  std::size_t const size = std::strlen(text) + 1;
  HeapText copy = allocateText(size);
  if (copy != nullptr) std::memcpy(copy.get(), text, size);
  return copy;
}

// Copies a text of at most `limit` bytes, which then needs no terminator; what does not fit is cut. Only the bytes of the
// text are written, not the rest of the field.
template <std::size_t kCapacity>
void copyText(char (&target)[kCapacity], char const* text, std::size_t limit = kCapacity) {
  std::size_t const range = std::min(limit, kCapacity - 1);
  void const* const end = std::memchr(text, 0, range);
  std::size_t const length = end != nullptr ? static_cast<std::size_t>(static_cast<char const*>(end) - text) : range;
  std::memcpy(target, text, length);
  target[length] = 0;
}

// The result of a call that stores a text of the seam. A text for which there is no memory cannot be had.
template <class Read>
bool readText(Read read) {
  try {
    return read();
  } catch (std::bad_alloc const&) {
    return false;
  }
}

}  // namespace diagnostics
}  // namespace KV_1_1
