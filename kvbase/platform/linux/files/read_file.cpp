// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/files/read_file.h"

#include <errno.h>
#include <sys/stat.h>

#include <cstdint>

#include "kvbase/platform/linux/files/descriptor.h"

namespace KV_1_1 {
namespace platform {

namespace {

// Reads up to the end of the file, but no more than one byte beyond the limit.
bool readBytes(int descriptor, std::size_t limit, FileBytes& bytes) {
  bytes.resize(0);
  while (bytes.size() <= limit) {
    std::size_t const begin = bytes.size();
    std::size_t const left = limit - begin;
    std::size_t const slice = left < kReadSlice ? left + 1 : kReadSlice;
    bytes.resize(begin + slice);
    ssize_t count = 0;
    do {
      count = read(descriptor, bytes.data() + begin, slice);
    } while (count < 0 && errno == EINTR);
    if (count < 0) return false;
    bytes.resize(begin + static_cast<std::size_t>(count));
    if (count == 0) return true;
  }
  return false;
}

}  // namespace

bool readFile(int folder, char const* path, std::size_t limit, FileBytes& bytes) {
  Descriptor const file(openat(folder, path, O_RDONLY | kPlainOpen));
  if (!file) return false;
  struct stat status;
  // The length counts only where it is too long: files of /proc have none.
  bool const isPlain = fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
  if (!isPlain || static_cast<std::uint64_t>(status.st_size) > limit) return false;
  return readBytes(file.get(), limit, bytes);
}

}  // namespace platform
}  // namespace KV_1_1
