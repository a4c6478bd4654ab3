// SPDX-License-Identifier: MIT
#pragma once

#include <fcntl.h>

#include <cstddef>

#include "kvbase/platform/linux/small_buffer.h"

namespace KV_1_1 {
namespace platform {

// The bytes asked for in one read.
constexpr std::size_t kReadSlice = 4096;

// Has room for a short file, and for the slice in which its end is looked for.
using FileBytes = SmallBuffer<char, 2 * kReadSlice>;

// No limit to the length of a file.
constexpr std::size_t kAnyLength = static_cast<std::size_t>(-2);

// Reads all bytes of a plain file; `path` is relative to an open folder or to AT_FDCWD. False if it cannot be read, is
// longer than `limit` (at most kAnyLength) or is not a plain file: of a pipe or a device nothing is read, and the call
// does not block. `bytes` is unspecified then.
bool readFile(int folder, char const* path, std::size_t limit, FileBytes& bytes);

}  // namespace platform
}  // namespace KV_1_1
