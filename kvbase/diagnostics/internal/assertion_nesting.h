// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/core/interlocked_counter.h"

namespace KV_1_1 {
namespace diagnostics {

// The assertion failures in flight, those that are dropped included. Tests set it back after an exception.
extern InterlockedCounter assertionNesting;

}  // namespace diagnostics
}  // namespace KV_1_1
