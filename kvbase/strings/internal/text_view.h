// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

#include "kvbase/kernels/front_search.h"
#include "kvbase/kernels/text_kernels.h"
#include "kvbase/strings/internal/string_access.h"
#include "kvbase/strings/kv_string.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {

// Text in somebody else's memory. No text is longer than int can say.
using TextView = std::basic_string_view<wchar>;

constexpr int lengthOf(TextView text) {
  return static_cast<int>(text.size());
}

// The text by its length, inner NULs included; empty for NIL.
inline TextView viewOf(String const& text) {
  return TextView(text, static_cast<std::size_t>(text.length()));
}

// The text up to its first NUL.
// REQUIRES: not null.
inline TextView viewOf(wchar const* text) {
  return TextView(text, static_cast<std::size_t>(strings::lengthFromFront(text)));
}

// The part of a text before its first NUL.
inline TextView upToNul(TextView text) {
  return text.substr(0, static_cast<std::size_t>(strings::findUnitFromFront(text.data(), 0, lengthOf(text))));
}

// The text up to a NUL that can be read behind the view, not always the first one; nothing is read behind it. Unlike
// length() this stores nothing in the payload.
// REQUIRES: not NIL.
inline TextView terminatedViewOf(String const& text) {
  StringVal const& payload = *StringAccess::payload(text);
  wchar const* const units = payload.stringValue();
  int const stored = payload.lazyLength();
  // COMPAT: a payload of counted double-byte text has its NUL further on than its length says.
  bool const isKnown = stored >= 0 && units[stored] == 0;
  return TextView(units, static_cast<std::size_t>(isKnown ? stored : strings::kernels().length(units)));
}

}  // namespace KV_1_1
