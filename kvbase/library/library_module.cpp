// SPDX-License-Identifier: MIT
#include "kvbase/core/lazy.h"
#include "kvbase/modules/client_module.h"

namespace KV_1_1 {

Module& getLibraryModule() {
  static Lazy<ModuleOwner> owner;
  return owner.get().module();
}

}  // namespace KV_1_1
