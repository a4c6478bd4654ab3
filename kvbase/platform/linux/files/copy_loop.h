// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <cstddef>

#include "kvbase/platform/file_api.h"

namespace KV_1_1 {
namespace platform {

// Copies the contents of one open file to another, both at their beginning, inside the kernel where it can. Holes of
// the source become holes.
class CopyLoop {
 public:
  // `size` is what the system tells of the source; `hasHoles`: that there may be some, and that the target takes them.
  CopyLoop(int source, int target, off_t size, bool hasHoles);

  // Calls `progress`, if not null, with nothing copied, after each slice, and with everything copied; for an empty file
  // once. kNoError, the code of what went wrong, or kRequestAborted if the progress does not let the copy go on.
  ulong32 run(CopyProgress progress, void* data);

 private:
  // How bytes go over, from the best way to the one that always works.
  enum class Way { kCopyRange, kSendFile, kBuffer };

  // Goes to the next data and tells where it ends; false if there is only a hole left, or nothing.
  bool findData(off_t& end);
  // As read: the number of bytes copied, 0 at the end of the source, -1 with errno.
  ssize_t copySlice(std::size_t size);

  int const source_;
  int const target_;
  off_t const size_;
  off_t const limit_;  // where the source ends, as far as its size tells
  bool const hasHoles_;
  Way way_;
  off_t at_ = 0;
};

}  // namespace platform
}  // namespace KV_1_1
