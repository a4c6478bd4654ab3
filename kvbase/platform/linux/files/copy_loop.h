// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <cstddef>

#include "kvbase/platform/file_api.h"

namespace KV_1_1 {
namespace platform {

// Copies the contents of one open file to another, both at their beginning, inside the kernel where that works. Holes
// of the source become holes of the target.
class CopyLoop {
 public:
  // `size` is the size of the source as the system reports it. `hasHoles` means that the source may have holes and that
  // the target can.
  CopyLoop(int source, int target, off_t size, bool hasHoles);

  // Calls `progress`, if not null, before the first byte, after each slice and after the last byte; for an empty file
  // once. Returns kNoError, the code of the failure, or kRequestAborted if `progress` cancels the copy.
  ulong32 run(CopyProgress progress, void* data);

 private:
  // From the fastest method to the one that always works.
  enum class Method { kCopyRange, kSendFile, kBuffer };

  // Moves to the next data and sets `end` to its end. False if only a hole is left, or nothing.
  bool findData(off_t& end);
  // Like read(2): bytes copied, 0 at end of file, -1 with errno.
  ssize_t copySlice(std::size_t size);

  int const source_;
  int const target_;
  off_t const size_;
  off_t const limit_;  // nothing is copied beyond it
  bool const hasHoles_;
  Method method_;
  off_t at_ = 0;
};

}  // namespace platform
}  // namespace KV_1_1
