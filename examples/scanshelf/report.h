// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <iosfwd>

#include "arguments.h"
#include "folder_tasks.h"

namespace scanshelf {

// The names of the folder, the lists by extension and by folder, the largest files, and a summary.
void printSurvey(std::ostream& out, Survey const& survey, Arguments const& arguments);
// The names of all files in order, each with the one that it would have after renumbering.
void printRenumbering(std::ostream& out, Survey const& survey, Arguments const& arguments);
// How much of all was copied and how long it took, whether the sizes are equal, and everything that failed.
void printCopy(std::ostream& out, CopyResult const& result, Totals const& all, Directory const& target,
               std::chrono::nanoseconds duration, bool unixNames);

}  // namespace scanshelf
