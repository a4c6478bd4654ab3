// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

// The payload of a String, for the library's own code.
struct StringAccess {
  // Null for NIL. The String keeps its reference.
  static StringVal* payload(String const& text) { return text.payload_; }
  // Takes over the reference that the caller owns; null gives NIL.
  static String adopt(StringVal* payload) noexcept {
    String text;
    text.payload_ = payload;
    return text;
  }
};

}  // namespace KV_1_1
