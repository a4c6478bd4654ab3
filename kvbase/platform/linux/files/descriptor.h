// SPDX-License-Identifier: MIT
#pragma once

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include "kvbase/platform/scoped_handle.h"

namespace KV_1_1 {
namespace platform {

// Flags for opening whatever it may be: a pipe must not wait for its other end, nor a terminal become this process's.
constexpr int kPlainOpen = O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

struct DescriptorTraits {
  using Value = int;
  static Value none() { return -1; }
  static void close(Value descriptor) {
    int const error = errno;
    ::close(descriptor);
    errno = error;
  }
};
// Closed at the end; errno stays.
using Descriptor = ScopedHandle<DescriptorTraits>;

}  // namespace platform
}  // namespace KV_1_1
