// SPDX-License-Identifier: MIT
//
// A simple model of the rules for names, on plain texts that may hold NULs.
#pragma once

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace reference {

inline bool hasAnyOf(wstring const& text, wstring const& forbidden) {
  for (wchar const unit : text) {
    if (unit < 0x20) return true;
    for (wchar const bad : forbidden) {
      if (unit == bad) return true;
    }
  }
  return false;
}

inline bool endsInBlankOrDot(wstring const& text) {
  return text[text.size() - 1] == KVW(' ') || text[text.size() - 1] == KVW('.');
}

inline bool isValidItemName(wstring const& name) {
  if (name == KVW(".") || name == KVW("..")) return true;
  if (name.empty()) return false;
  if (hasAnyOf(name, KVW("*?<>:\"\\/|"))) return false;
  return !endsInBlankOrDot(name);
}

inline bool isValidSearchPattern(wstring const& pattern) {
  if (pattern.empty()) return false;
  if (pattern == KVW(".") || pattern == KVW("..")) return false;
  if (hasAnyOf(pattern, KVW("<>:\"\\/|"))) return false;
  return !endsInBlankOrDot(pattern);
}

}  // namespace reference
}  // namespace KV_1_1
