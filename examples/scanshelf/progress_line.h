// SPDX-License-Identifier: MIT
#pragma once

#include <iosfwd>

#include "folder_tasks.h"

namespace scanshelf {

struct Console {
  std::ostream& stream;
  bool isTerminal;
};

// Makes a callback that shows the user how far a task has come: what was found so far or, with `all`, how much of that
// is copied. On a terminal this is one line, written from the beginning, overwritten again and again, and cleared with
// the callback. Elsewhere, for instance in a log, lines come at growing intervals, and none in the first second.
Progress progressOn(Console const& console, Totals const* all = nullptr);

}  // namespace scanshelf
