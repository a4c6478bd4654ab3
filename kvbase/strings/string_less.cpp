// SPDX-License-Identifier: MIT
#include "kvbase/strings/string_less.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "kvbase/strings/internal/character_class.h"
#include "kvbase/strings/internal/string_access.h"

namespace KV_1_1 {

namespace {

constexpr int kBlock = 4;

std::uint64_t blockAt(wchar const* text) {
  std::uint64_t block;
  std::memcpy(&block, text, sizeof block);
  return block;
}

bool hasNul(std::uint64_t block) {
  return ((block - 0x0001000100010001u) & ~block & 0x8000800080008000u) != 0;
}

}  // namespace

bool StringLess2::operator()(String const& a, String const& b) const {
  StringVal const* const payload = StringAccess::payload(a);
  StringVal const* const other = StringAccess::payload(b);
  if (other == nullptr || payload == other) return false;
  if (payload == nullptr) return true;

  // Keys often begin alike and differ soon behind that, in less time than it takes to prepare a call of the kernels. A
  // length that is not known is below 0.
  wchar const* const text = payload->stringValue();
  wchar const* const otherText = other->stringValue();
  int const common = std::min(payload->lazyLength(), other->lazyLength());
  int at = 0;
  for (; at + kBlock <= common; at += kBlock) {
    std::uint64_t const block = blockAt(text + at);
    if (block != blockAt(otherText + at) || hasNul(block)) break;
  }
  for (int const near = at + 3 * kBlock; at < near; ++at) {
    wchar const unit = strings::foldCase(text[at]);
    wchar const otherUnit = strings::foldCase(otherText[at]);
    if (unit != otherUnit) return unit < otherUnit;
    if (unit == 0) return false;
  }
  return a.compareIgnoreCase(b) < 0;
}

}  // namespace KV_1_1
