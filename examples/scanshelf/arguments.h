// SPDX-License-Identifier: MIT
#pragma once

#include <kvbase/kvbase.h>

#include <vector>

namespace scanshelf {

// What the user asked for.
struct Arguments {
  KV_1_1::String folder;                              // NIL: a sample
  KV_1_1::String pattern = KV_1_1::String(KVW("*"));  // which files count
  KV_1_1::String copyTo;                              // NIL: a sample is copied to a place that goes with it
  bool overwrite = false;                             // a copy may replace a file
  bool all = false;                                   // no list is cut
  bool unixNames = false;                             // files are listed with slashes
  bool renumber = false;                              // names are stepped instead of counted
  bool help = false;
};

// Reads the words behind the program's name. Throws a Complaint about what it does not understand.
Arguments readArguments(std::vector<KV_1_1::String> const& words);

char const* helpText();

}  // namespace scanshelf
