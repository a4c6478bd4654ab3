// SPDX-License-Identifier: MIT
#include "kvbase/modules/client_module.h"
#include "kvbase/platform/module_api.h"

namespace KV_1_1 {

ProgramStart::ProgramStart(ModuleOwner& owner) : owner_(owner) {
  try {
    owner_.start(platform::modules().program());
  } catch (...) {
    owner_.end();
    throw;
  }
}

ProgramStart::~ProgramStart() {
  owner_.end();
}

}  // namespace KV_1_1
