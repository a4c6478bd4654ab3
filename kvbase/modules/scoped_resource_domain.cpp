// SPDX-License-Identifier: MIT
#include "kvbase/modules/scoped_resource_domain.h"

#include "kvbase/modules/client_module.h"
#include "kvbase/platform/framework_api.h"

namespace KV_1_1 {

ScopedResourceDomain::ScopedResourceDomain(Module const& module, bool localized)
    : saved_(platform::framework().resourceInstance()) {
  platform::framework().setResourceInstance(localized ? module.resourceModule_ : module.codeModule_);
}

ScopedResourceDomain::ScopedResourceDomain() : ScopedResourceDomain(getLibraryModule(), true) {}

ScopedResourceDomain::~ScopedResourceDomain() {
  platform::framework().setResourceInstance(saved_);
}

}  // namespace KV_1_1
