// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/export.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

// The order of keys for which the case of A to Z does not matter, as a template argument of sets and maps:
//
//   std::set<String, StringLess2> names = {KVW("IDOK"), KVW("idok")};   // holds one name
//
// It is the order of String::compareIgnoreCase: only A to Z are folded, by their lower-case forms, and a text ends at its
// first NUL. NIL stands before every text, the empty one included. It never fails.
struct KVBASE_API StringLess2 {
  // Whether `a` stands before `b`; false for two equal texts and for two NILs.
  bool operator()(String const& a, String const& b) const;
};

}  // namespace KV_1_1
