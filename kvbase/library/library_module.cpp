// SPDX-License-Identifier: MIT
#include "kvbase/core/lazy.h"
#include "kvbase/library/library_entry.h"

namespace KV_1_1 {

namespace library {

ModuleOwner& moduleOwner() {
  static Lazy<ModuleOwner> owner;
  return owner.get();
}

}  // namespace library

Module& getLibraryModule() {
  return library::moduleOwner().module();
}

}  // namespace KV_1_1
