// SPDX-License-Identifier: MIT
#include "kvbase/core/base_node.h"

#include "kvbase/core/internal/library_class.h"

namespace KV_1_1 {

BaseNode::~BaseNode() = default;

mZClass const* BaseNode::getClassType() const {
  return Class();
}

mZClass const* BaseNode::Class() {
  static LibraryClass<mZClass> record(KVW("BaseNode"));
  return record.get();
}

void BaseNode::validityCheck(unsigned int) const {}

}  // namespace KV_1_1
