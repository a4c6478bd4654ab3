// SPDX-License-Identifier: MIT
//
// Model of shortening a text for display.
#pragma once

#include "tests/reference/string_text_model.h"

namespace KV_1_1 {
namespace reference {

inline Text shortenString(Text const& text, int limit, int head) {
  wchar const slash = static_cast<wchar>('/');
  long long const length = text ? static_cast<long long>(text->size()) : 0;
  if (length <= limit) return text;

  wstring const units = text.value_or(wstring());
  wstring front;
  if (head != 0) front = substr(units, 0, head);
  if (!front.empty()) {
    std::size_t const p = visible(front).rfind(slash);
    if (p != wstring::npos && p >= 2 && static_cast<long long>(p) + 1 < head)
      front = substr(front, 0, static_cast<int>(p) + 1);
  }
  front += static_cast<wchar>('.');
  front += static_cast<wchar>('.');
  front += static_cast<wchar>('.');

  long long const budget = static_cast<long long>(limit) - static_cast<long long>(front.size());
  wstring tail;
  if (budget > 0) tail = substr(units, static_cast<int>(length - budget), -1);
  std::size_t const q = visible(tail).find(slash);
  if (q != wstring::npos && q >= 1 && budget != 48) tail = substr(tail, static_cast<int>(q), -1);
  return front + tail;
}

}  // namespace reference
}  // namespace KV_1_1
