// SPDX-License-Identifier: MIT
#include "kvbase/platform/pointer_text.h"

#include <cstdio>

namespace KV_1_1 {
namespace platform {

PointerText::PointerText(std::uint64_t address) {
  std::snprintf(text_, sizeof text_, "%p", reinterpret_cast<void*>(address));
}

}  // namespace platform
}  // namespace KV_1_1
