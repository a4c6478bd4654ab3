// SPDX-License-Identifier: MIT
#pragma once

#include <kvbase/kvbase.h>

namespace scanshelf {

// The name that the file would have with the number at the end of its base name one higher. A base name without a
// number gets a 1. NIL if the number is too large to be stepped.
//   scan009.dat => scan010.dat      notes.txt => notes1.txt
KV_1_1::String steppedName(KV_1_1::File const& file);

}  // namespace scanshelf
