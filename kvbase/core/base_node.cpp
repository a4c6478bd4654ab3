// SPDX-License-Identifier: MIT
#include "kvbase/core/base_node.h"

#include "kvbase/modules/client_module.h"

namespace KV_1_1 {

BaseNode::~BaseNode() = default;

mZClass const* BaseNode::getClassType() const {
  return Class();
}

mZClass const* BaseNode::Class() {
  static ClassRegistration<mZClass> registration(KVW("BaseNode"));
  return registration.get();
}

void BaseNode::validityCheck(unsigned int) const {}

}  // namespace KV_1_1
