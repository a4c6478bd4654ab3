// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <iosfwd>

#include "arguments.h"
#include "copying.h"
#include "survey.h"

namespace scanshelf {

// The lists fit into lines of this many places.
constexpr int kLineWidth = 100;
// How many lines a list shows unless all are asked for.
constexpr std::size_t kListLength = 10;

// The names of the folder in all their forms.
void printNames(std::ostream& out, KV_1_1::Directory const& folder);
// The lists by extension and by folder, the largest files, and a summary.
void printSurvey(std::ostream& out, Survey const& survey, KV_1_1::SmartPtr<KV_1_1::Directory const> const& folder,
                 Arguments const& arguments);
// The names of all files in order, and each with its number stepped. The survey has kept its items.
void printRenumbering(std::ostream& out, Survey const& survey, KV_1_1::SmartPtr<KV_1_1::Directory const> const& folder,
                      Arguments const& arguments);
// How much of all was copied and how long it took, whether the sizes are equal, and everything that failed.
void printCopy(std::ostream& out, CopyResult const& result, Totals const& all, KV_1_1::Directory const& target,
               std::chrono::milliseconds duration, bool unixNames);

}  // namespace scanshelf
