// SPDX-License-Identifier: MIT
#include "kvbase/strings/string_less.h"

namespace KV_1_1 {

bool StringLess2::operator()(String const& a, String const& b) const {
  return a.compareIgnoreCase(b) < 0;
}

}  // namespace KV_1_1
