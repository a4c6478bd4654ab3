// SPDX-License-Identifier: MIT
//
// String tables are stored in resources of 16 texts each: the texts from 16 * n on are in the one named n + 1.
#pragma once

#include "kvbase/platform/linux/modules/byte_range.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

constexpr unsigned int kStringBlockEntries = 16;

// Reads the text at `index`, from 0 to 15, of such a resource. False if it is empty or not there completely; `text` is
// then unchanged.
bool readStringBlockEntry(ByteRange const& block, unsigned int index, wstring& text);

}  // namespace platform
}  // namespace KV_1_1
