// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/files/copy_loop.h"

#include <errno.h>
#include <sys/sendfile.h>
#include <unistd.h>

#include <algorithm>
#include <limits>

#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/linux/errors/errno_codes.h"

namespace KV_1_1 {
namespace platform {

namespace {

// Slice size with a progress callback: small enough for smooth updates, large enough to cost nothing.
constexpr off_t kSliceWithProgress = off_t{8} << 20;
constexpr off_t kSliceWithoutProgress = off_t{1} << 30;

// Whether this error of a method means that it does not work for these two files.
bool isRefusal(int error) {
  return error == EXDEV || error == EINVAL || error == ENOSYS || error == EOPNOTSUPP || error == EPERM;
}

bool writeAll(int target, char const* bytes, std::size_t size) {
  for (std::size_t done = 0; done < size;) {
    ssize_t const written = write(target, bytes + done, size - done);
    if (written < 0 && errno != EINTR) return false;
    if (written > 0) done += static_cast<std::size_t>(written);
  }
  return true;
}

ssize_t copyByBuffer(int source, int target, std::size_t size) {
  char buffer[65536];
  ssize_t count;
  do {
    count = read(source, buffer, std::min(size, sizeof buffer));
  } while (count < 0 && errno == EINTR);
  if (count > 0 && !writeAll(target, buffer, static_cast<std::size_t>(count))) return -1;
  return count;
}

}  // namespace

// Files of /proc and similar file systems have contents but size 0; only reading finds their end.
CopyLoop::CopyLoop(int source, int target, off_t size, bool hasHoles)
    : source_(source),
      target_(target),
      size_(size),
      limit_(size == 0 ? std::numeric_limits<off_t>::max() : size),
      hasHoles_(hasHoles && size != 0),
      method_(size == 0 ? Method::kBuffer : Method::kCopyRange) {}

ulong32 CopyLoop::run(CopyProgress progress, void* data) {
  off_t const slice = progress != nullptr ? kSliceWithProgress : kSliceWithoutProgress;
  auto const mayContinue = [progress, data](off_t total, off_t transferred) {
    return progress == nullptr || progress(total, transferred, data) == kProgressContinue;
  };
  if (!mayContinue(size_, 0)) return kRequestAborted;

  ssize_t copied = 1;
  for (off_t end = 0; copied != 0 && findData(end);) {
    while (at_ < end && copied != 0) {
      copied = copySlice(static_cast<std::size_t>(std::min(slice, end - at_)));
      if (copied < 0) return codeOf(errno);
      at_ += copied;
      if (at_ < size_ && !mayContinue(size_, at_)) return kRequestAborted;
    }
  }
  if (hasHoles_ && ftruncate(target_, at_) != 0) return codeOf(errno);
  // The source may have changed its length meanwhile; the last call reports the bytes that were copied.
  return at_ == 0 || mayContinue(at_, at_) ? kNoError : kRequestAborted;
}

bool CopyLoop::findData(off_t& end) {
  if (at_ >= limit_) return false;
  end = limit_;
  if (!hasHoles_) return true;
  off_t const begin = lseek(source_, at_, SEEK_DATA);
  bool const isHole = begin < 0 && errno == ENXIO;
  if (isHole) {
    at_ = limit_;
    return false;
  }
  // A file system that does not report holes is treated as having none.
  if (begin >= 0) {
    at_ = begin;
    off_t const hole = lseek(source_, begin, SEEK_HOLE);
    if (hole > begin) end = std::min(limit_, hole);
  }
  lseek(source_, at_, SEEK_SET);
  lseek(target_, at_, SEEK_SET);
  return true;
}

ssize_t CopyLoop::copySlice(std::size_t size) {
  for (;;) {
    ssize_t const copied = method_ == Method::kCopyRange  ? copy_file_range(source_, nullptr, target_, nullptr, size, 0)
                           : method_ == Method::kSendFile ? sendfile(target_, source_, nullptr, size)
                                                          : copyByBuffer(source_, target_, size);
    if (copied > 0 || method_ == Method::kBuffer) return copied;
    if (copied < 0 && errno == EINTR) continue;
    if (copied < 0 && !isRefusal(errno)) return -1;
    // A result of 0 is not trusted either: for some files only reading finds the real end.
    method_ = method_ == Method::kCopyRange ? Method::kSendFile : Method::kBuffer;
  }
}

}  // namespace platform
}  // namespace KV_1_1
