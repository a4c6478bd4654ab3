// SPDX-License-Identifier: MIT
#pragma once

#include <iosfwd>

#include "arguments.h"
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
// The names of all files in order, and each with its number stepped. The survey has kept every file.
void printRenumbering(std::ostream& out, Survey const& survey, KV_1_1::SmartPtr<KV_1_1::Directory const> const& folder,
                      Arguments const& arguments);

}  // namespace scanshelf
