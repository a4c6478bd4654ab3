// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/modules/string_block.h"

namespace KV_1_1 {
namespace platform {

bool readStringBlockEntry(ByteRange const& block, unsigned int index, wstring& text) {
  // Each text is its number of units, then the units.
  std::uint64_t at = 0;
  for (unsigned int i = 0;; ++i) {
    unsigned char const* const units = block.at(at, 2);
    if (units == nullptr) return false;
    std::size_t const size = load16(units);
    at += 2;
    if (i < index) {
      at += 2 * size;
      continue;
    }
    if (size == 0 || !block.has(at, 2 * size)) return false;
    wstring entry(size, wchar(0));
    if (!block.copy(at, 2 * size, &entry[0])) return false;
    text = std::move(entry);
    return true;
  }
}

}  // namespace platform
}  // namespace KV_1_1
