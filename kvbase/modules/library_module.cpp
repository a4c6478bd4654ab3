// SPDX-License-Identifier: MIT
#include "kvbase/modules/internal/library_module.h"

#include "kvbase/core/internal/lazy.h"
#include "kvbase/modules/client_module.h"

namespace KV_1_1 {

Module& getLibraryModule() {
  static Lazy<ModuleOwner> owner;
  return owner.get().module();
}

}  // namespace KV_1_1
