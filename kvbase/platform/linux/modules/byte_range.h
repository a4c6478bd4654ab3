// SPDX-License-Identifier: MIT
//
// A range of bytes in memory or in a file, read with a check of every access. A file is read by pages, never mapped: a
// mapping of a file that another process shortens ends this process by a signal.
//
// Thread rule: a range over a file must be used by one thread at a time.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include "kvbase/platform/linux/files/descriptor.h"

namespace KV_1_1 {
namespace platform {

// Numbers of a file, the low byte first.
inline std::uint16_t load16(unsigned char const* bytes) {
  return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}
inline std::uint32_t load32(unsigned char const* bytes) {
  return static_cast<std::uint32_t>(load16(bytes)) | static_cast<std::uint32_t>(load16(bytes + 2)) << 16;
}
inline std::uint64_t load64(unsigned char const* bytes) {
  return static_cast<std::uint64_t>(load32(bytes)) | static_cast<std::uint64_t>(load32(bytes + 4)) << 32;
}

// The most recently read pages of an open file.
class FilePages {
 public:
  // The most that can be looked at in place.
  static constexpr std::size_t kLargestLook = 512;

  explicit FilePages(Descriptor file) : file_(std::move(file)) {}
  FilePages(FilePages const&) = delete;
  FilePages& operator=(FilePages const&) = delete;

  // Asks for the size and the times of the file; if they differ from those of the last call, the pages are dropped.
  // Returns whether they differ. To be called before each sequence of reads, the first included.
  bool refresh();
  // The size of the file at the last refresh; 0 for what is not a plain file.
  std::uint64_t size() const { return size_; }

  // `size` bytes of the file, at most kLargestLook; they stay until the next call. Null if the file does not have them.
  unsigned char const* at(std::uint64_t offset, std::size_t size);
  // Copies any number of bytes; false if the file does not have them.
  bool copy(std::uint64_t offset, std::size_t size, void* out);

 private:
  static constexpr std::size_t kPageSize = 4096;
  static constexpr std::size_t kPageCount = 16;
  struct Page {
    std::uint64_t number;
    std::size_t size;  // less than kPageSize at the end of the file
    unsigned char bytes[kPageSize];
  };
  struct Stamp {
    std::int64_t modified, modifiedPart, changed, changedPart;
  };

  // A few pages for all files, since most files need one and are soon closed: blocks of this size from the heap would have
  // it join all its small free blocks each time.
  struct Pool {
    static constexpr unsigned int kPages = 8;
    Page pages[kPages];
    std::atomic<unsigned int> isTaken;  // a bit for each page
  };
  struct Return {
    void operator()(Page* page) const;
  };
  using PagePointer = std::unique_ptr<Page, Return>;
  static Pool pool;

  static PagePointer takePage();
  Page const* page(std::uint64_t number);

  Descriptor file_;
  std::uint64_t size_ = 0;
  Stamp stamp_ = {};
  PagePointer pages_[kPageCount];  // the page of a number is kept at the number modulo kPageCount
  unsigned char acrossPages_[kLargestLook] = {};
};

class ByteRange {
 public:
  constexpr ByteRange() = default;
  ByteRange(void const* memory, std::uint64_t size) : memory_(static_cast<unsigned char const*>(memory)), size_(size) {}
  // The whole file as of its last refresh. The range must not outlive `pages`.
  explicit ByteRange(FilePages& pages) : pages_(&pages), size_(pages.size()) {}

  std::uint64_t size() const { return size_; }
  // Where the range lies in its file, or 0 in memory.
  std::uint64_t start() const { return start_; }
  // The first byte in memory; null for a range of a file.
  unsigned char const* memory() const { return memory_; }

  bool has(std::uint64_t offset, std::uint64_t size) const { return offset <= size_ && size <= size_ - offset; }

  // `size` bytes, at most FilePages::kLargestLook; they stay until the next call. Null if they are not in the range.
  unsigned char const* at(std::uint64_t offset, std::size_t size) const {
    if (!has(offset, size)) return nullptr;
    return pages_ == nullptr ? memory_ + offset : pages_->at(start_ + offset, size);
  }
  // Copies any number of bytes; false if they are not in the range.
  bool copy(std::uint64_t offset, std::size_t size, void* out) const {
    if (!has(offset, size)) return false;
    if (pages_ != nullptr) return pages_->copy(start_ + offset, size, out);
    if (size > 0) std::memcpy(out, memory_ + offset, size);
    return true;
  }
  // A part of the range; REQUIRES: has(offset, size).
  ByteRange part(std::uint64_t offset, std::uint64_t size) const {
    ByteRange range = *this;
    if (pages_ == nullptr) {
      range.memory_ += offset;
    } else {
      range.start_ += offset;
    }
    range.size_ = size;
    return range;
  }

 private:
  unsigned char const* memory_ = nullptr;
  FilePages* pages_ = nullptr;
  std::uint64_t start_ = 0;
  std::uint64_t size_ = 0;
};

}  // namespace platform
}  // namespace KV_1_1
