// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/export.h"
#include "kvbase/platform/types.h"

namespace KV_1_1 {

class Module;

// Lets the application framework of Windows programs load its resources from a module for a scope. Without the framework,
// on either system, platform::framework() has a plain slot in its place.
//
//   {
//     ScopedResourceDomain const domain(module, /*localized=*/true);
//     dialog.show();
//   }
//
// Scopes nest if they end in the reverse order of their beginning.
// Thread rule: what changes is the state of the framework; whoever else loads resources through it meanwhile, loads them
// from this module.
class KVBASE_API ScopedResourceDomain {
 public:
  // From the module's translation library with `localized` (from the module itself if it has none), otherwise from the
  // module itself.
  ScopedResourceDomain(Module const& module, bool localized);
  // From KVBase or its translation. For default arguments.
  ScopedResourceDomain();
  // From where it was before.
  ~ScopedResourceDomain();
  ScopedResourceDomain(ScopedResourceDomain const&) = delete;
  ScopedResourceDomain& operator=(ScopedResourceDomain const&) = delete;

 private:
  HINSTANCE saved_;
};

}  // namespace KV_1_1
