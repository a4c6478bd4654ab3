// SPDX-License-Identifier: MIT
#include "kvbase/core/base_node.h"

#include <type_traits>

#include "kvbase/modules/client_module.h"

namespace KV_1_1 {

static_assert(std::is_base_of<VisitorCore, BaseNode>::value, "VisitorCore is the root of the hierarchy");
static_assert(!std::is_copy_assignable<BaseNode>::value && !std::is_destructible<BaseNode>::value,
              "only derived classes assign and destroy their base");

mZClass const* BaseNode::getClassType() const {
  return Class();
}

mZClass const* BaseNode::Class() {
  static ClassRegistration<mZClass> registration(KVW("BaseNode"));
  return registration.get();
}

void BaseNode::validityCheck(unsigned int) const {}

}  // namespace KV_1_1
