// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/export.h"

namespace KV_1_1 {
namespace platform {

// Releases what the run time of C++ that is linked into the library holds until the process ends, so that a library which
// is loaded again and again leaves nothing behind. To be called behind the last destructor; an exception that is thrown
// then finds no reserve for when memory is exhausted.
KVBASE_LOCAL void releaseRunTime() noexcept;

}  // namespace platform
}  // namespace KV_1_1
