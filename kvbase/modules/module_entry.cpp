// SPDX-License-Identifier: MIT
#include "kvbase/modules/client_module.h"
#include "kvbase/platform/module_api.h"

namespace KV_1_1 {

ModuleEntry::ModuleEntry(Attach attach, Detach detach) : detach_(detach) {
  HINSTANCE const instance = platform::modules().moduleOf(this);
  isEntry_ = !platform::modules().hasEntryFunction(instance);
  if (!isEntry_ || attach(instance)) return;
  isEntry_ = false;
  detach_();
}

ModuleEntry::~ModuleEntry() {
  if (isEntry_) detach_();
}

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
