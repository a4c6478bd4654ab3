// SPDX-License-Identifier: MIT
#pragma once

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include "kvbase/platform/scoped_handle.h"

namespace KV_1_1 {
namespace platform {

// Flags for opening an item of any kind: a pipe must not block until its other end is opened, and a terminal must not
// become the controlling terminal of this process.
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
// Closes a descriptor at the end of its scope and keeps errno.
using Descriptor = ScopedHandle<DescriptorTraits>;

}  // namespace platform
}  // namespace KV_1_1
