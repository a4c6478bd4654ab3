// SPDX-License-Identifier: MIT
#pragma once

#include <dirent.h>

#include <cstddef>

namespace KV_1_1 {
namespace platform {

// Reads the entries of an open directory, "." and ".." included, `kBlockSize` bytes at a time, and calls `visit` with
// each until it returns false. True if every entry has been visited; false with errno if the directory cannot be read.
template <std::size_t kBlockSize, class Visitor>
bool visitEntries(int directory, Visitor const& visit) {
  alignas(dirent64) char block[kBlockSize];
  for (;;) {
    ssize_t const size = getdents64(directory, block, sizeof block);
    if (size <= 0) return size == 0;
    for (ssize_t at = 0; at < size;) {
      auto const* const entry = reinterpret_cast<dirent64 const*>(block + at);
      if (!visit(*entry)) return false;
      at += entry->d_reclen;
    }
  }
}

}  // namespace platform
}  // namespace KV_1_1
