// SPDX-License-Identifier: MIT
#include "kvbase/library/library_entry.h"

#include "kvbase/platform/framework_api.h"

namespace KV_1_1 {
namespace library {

bool attach(HINSTANCE instance) noexcept {
  try {
    return libraryModuleOwner().start(instance) && platform::framework().startExtension(instance);
  } catch (...) {
    // An exception that left the entry function would fail the load too, but the code that loads is not C++.
    return false;
  }
}

void detach() noexcept {
  platform::framework().endExtension();
  libraryModuleOwner().end();
}

}  // namespace library
}  // namespace KV_1_1
