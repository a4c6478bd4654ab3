// SPDX-License-Identifier: MIT
//
// Gives a Module of a test its two instances without starting it.
//
//   ModuleOwner owner;
//   setInstances(owner.module(), modules.tool, modules.translation);
#pragma once

#include "kvbase/modules/module.h"

namespace KV_1_1 {
namespace testing {

// Defined where the template below is instantiated, because there alone private members may be named.
inline void setInstances(Module& module, HINSTANCE code, HINSTANCE resources);

namespace internal {

template <HINSTANCE Module::*Code, HINSTANCE Module::*Resources>
struct ModuleInstances {
  friend void setModuleInstances(Module& module, HINSTANCE code, HINSTANCE resources) {
    module.*Code = code;
    module.*Resources = resources;
  }
};
void setModuleInstances(Module& module, HINSTANCE code, HINSTANCE resources);
template struct ModuleInstances<&Module::codeModule_, &Module::resourceModule_>;

}  // namespace internal

inline void setInstances(Module& module, HINSTANCE code, HINSTANCE resources) {
  internal::setModuleInstances(module, code, resources);
}

}  // namespace testing
}  // namespace KV_1_1
