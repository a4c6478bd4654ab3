// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/debug/own_memory.h"

#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/uio.h>
#include <unistd.h>

#include "kvbase/platform/linux/files/descriptor.h"

namespace KV_1_1 {
namespace platform {

namespace {

// The stack of a thread. Zero until it is determined; empty behind the last address if it cannot be.
struct StackBounds {
  std::uint64_t low;
  std::uint64_t high;
};
thread_local StackBounds ownStack;

void determineOwnStack() {
  ownStack = {~std::uint64_t{0}, ~std::uint64_t{0}};
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return;
  void* low = nullptr;
  std::size_t size = 0;
  if (pthread_attr_getstack(&attributes, &low, &size) == 0) {
    ownStack.low = reinterpret_cast<std::uint64_t>(low);
    ownStack.high = ownStack.low + size;
  }
  pthread_attr_destroy(&attributes);
}

// Whether the bytes lie in the part of the calling thread's stack that is in use, which can be read without asking the
// system. Code that runs on another stack, that of a signal for instance, has no such part.
bool isInOwnStack(std::uint64_t address, std::size_t size) {
  StackBounds const& stack = ownStack;
  char here;
  auto const pointer = reinterpret_cast<std::uint64_t>(&here);
  return pointer >= stack.low && pointer < stack.high && address >= pointer && address <= stack.high &&
         size <= stack.high - address;
}

// A copy that the sanitizers do not see: a stack has bytes that its own functions must not read. The string instruction
// alone would be many times slower where the two places have the same offset in their pages, or nearly so.
void copyUnchecked(void* buffer, std::uint64_t address, std::size_t size) {
  for (; size >= 64; size -= 64) {
    asm volatile(
        "movups (%1), %%xmm0\n\t"
        "movups 16(%1), %%xmm1\n\t"
        "movups 32(%1), %%xmm2\n\t"
        "movups 48(%1), %%xmm3\n\t"
        "movups %%xmm0, (%0)\n\t"
        "movups %%xmm1, 16(%0)\n\t"
        "movups %%xmm2, 32(%0)\n\t"
        "movups %%xmm3, 48(%0)"
        :
        : "r"(buffer), "r"(address)
        : "memory", "xmm0", "xmm1", "xmm2", "xmm3");
    buffer = static_cast<char*>(buffer) + 64;
    address += 64;
  }
  if (size != 0) asm volatile("rep movsb" : "+D"(buffer), "+S"(address), "+c"(size) : : "memory");
}

// Where the system forbids the call, as some containers do, the file of the process's memory serves as well.
ssize_t readThroughFile(std::uint64_t address, void* buffer, std::size_t size) {
  Descriptor const file(open("/proc/self/mem", O_RDONLY | O_CLOEXEC));
  return file ? pread64(file.get(), buffer, size, static_cast<off64_t>(address)) : -1;
}

bool readThroughSystem(std::uint64_t address, void* buffer, std::size_t size, std::size_t& count) {
  if (ownStack.high == 0) {
    determineOwnStack();
    return readOwnMemory(address, buffer, size, count);
  }
  iovec local = {buffer, size};
  iovec remote = {reinterpret_cast<void*>(address), size};
  ssize_t read = process_vm_readv(getpid(), &local, 1, &remote, 1, 0);
  if (read < 0 && (errno == ENOSYS || errno == EPERM)) read = readThroughFile(address, buffer, size);
  count = read > 0 ? static_cast<std::size_t>(read) : 0;
  return count == size;
}

}  // namespace

bool readOwnMemory(std::uint64_t address, void* buffer, std::size_t size, std::size_t& count) {
  if (!isInOwnStack(address, size)) return readThroughSystem(address, buffer, size, count);
  copyUnchecked(buffer, address, size);
  count = size;
  return true;
}

}  // namespace platform
}  // namespace KV_1_1
