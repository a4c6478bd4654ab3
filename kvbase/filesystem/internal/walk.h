// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/core/smart_ptr.h"

namespace KV_1_1 {

// Calls `visit` with each item up to the first null one, and stops with false if `visit` gives false. A null iterator
// has no items.
template <class Iterator, class Visit>
bool forAll(SmartPtr<Iterator> const& iterator, Visit visit) {
  if (iterator == nullptr) return true;
  while (auto const item = iterator->getNext()) {
    if (!visit(item)) return false;
  }
  return true;
}

}  // namespace KV_1_1
