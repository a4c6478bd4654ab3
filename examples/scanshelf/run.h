// SPDX-License-Identifier: MIT
#pragma once

#include <kvbase/kvbase.h>

#include <iosfwd>
#include <vector>

namespace scanshelf {

// The whole program: the words behind its name, its two output streams, whether the second is a terminal, and its exit
// status.
int run(std::vector<KV_1_1::String> const& words, std::ostream& out, std::ostream& err, bool isErrTerminal);

}  // namespace scanshelf
