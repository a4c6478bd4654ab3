// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/modules/byte_range.h"

#include <errno.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace KV_1_1 {
namespace platform {

namespace {

// Reads up to `size` bytes; fewer only at the end of the file, or at an error.
std::size_t readAt(int file, std::uint64_t offset, std::size_t size, unsigned char* out) {
  std::size_t done = 0;
  while (done < size) {
    ssize_t const got = pread(file, out + done, size - done, static_cast<off_t>(offset + done));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    done += static_cast<std::size_t>(got);
  }
  return done;
}

}  // namespace

// Zero-initialised and never destroyed.
FilePages::Pool FilePages::pool;

FilePages::PagePointer FilePages::takePage() {
  unsigned int taken = pool.isTaken.load(std::memory_order_relaxed);
  for (unsigned int i = 0; i < Pool::kPages; ++i) {
    while ((taken >> i & 1) == 0) {
      if (pool.isTaken.compare_exchange_weak(taken, taken | 1u << i, std::memory_order_acquire))
        return PagePointer(&pool.pages[i]);
    }
  }
  return PagePointer(new Page);
}

void FilePages::Return::operator()(Page* page) const {
  for (unsigned int i = 0; i < Pool::kPages; ++i) {
    if (page != &pool.pages[i]) continue;
    pool.isTaken.fetch_and(~(1u << i), std::memory_order_release);
    return;
  }
  delete page;
}

bool FilePages::refresh() {
  struct stat status;
  bool const isFile = fstat(file_.get(), &status) == 0 && S_ISREG(status.st_mode);
  std::uint64_t const size = isFile ? static_cast<std::uint64_t>(status.st_size) : 0;
  Stamp const stamp =
      isFile ? Stamp{status.st_mtim.tv_sec, status.st_mtim.tv_nsec, status.st_ctim.tv_sec, status.st_ctim.tv_nsec}
             : Stamp{};
  bool const same = size == size_ && stamp.modified == stamp_.modified && stamp.modifiedPart == stamp_.modifiedPart &&
                    stamp.changed == stamp_.changed && stamp.changedPart == stamp_.changedPart;
  if (same) return false;
  for (PagePointer& page : pages_) page.reset();
  size_ = size;
  stamp_ = stamp;
  return true;
}

FilePages::Page const* FilePages::page(std::uint64_t number) {
  PagePointer& page = pages_[number % kPageCount];
  if (page == nullptr) {
    page = takePage();
  } else if (page->number == number) {
    return page.get();
  }
  page->number = number;
  std::uint64_t const offset = number * kPageSize;
  std::uint64_t const rest = size_ > offset ? size_ - offset : 0;
  // A read beyond the end would be one more call.
  std::size_t const size = static_cast<std::size_t>(std::min<std::uint64_t>(rest, kPageSize));
  page->size = readAt(file_.get(), offset, size, page->bytes);
  return page.get();
}

unsigned char const* FilePages::at(std::uint64_t offset, std::size_t size) {
  if (size > kLargestLook || offset > size_ || size > size_ - offset) return nullptr;
  std::size_t const inPage = static_cast<std::size_t>(offset % kPageSize);
  if (inPage + size <= kPageSize) {
    Page const* const one = page(offset / kPageSize);
    return inPage + size <= one->size ? one->bytes + inPage : nullptr;
  }
  return copy(offset, size, acrossPages_) ? acrossPages_ : nullptr;
}

bool FilePages::copy(std::uint64_t offset, std::size_t size, void* out) {
  if (offset > size_ || size > size_ - offset) return false;
  return readAt(file_.get(), offset, size, static_cast<unsigned char*>(out)) == size;
}

}  // namespace platform
}  // namespace KV_1_1
