// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "text.h"

namespace scanshelf {

// What the user asked for on the command line.
struct Arguments {
  String folder;                      // NIL: a sample
  String pattern = String(KVW("*"));  // the files to count
  String copyTo;                      // NIL: only a sample is copied, to a temporary folder
  bool overwrite = false;             // the copy may replace files
  bool all = false;                   // lists are complete
  bool unixNames = false;             // paths are listed with slashes
  bool renumber = false;              // shows the names with their numbers incremented, not the counts
  bool help = false;
};

class UsageError : public Error {
  using Error::Error;
};

// Reads the words behind the program's name. Throws a UsageError if it does not understand them.
Arguments readArguments(std::vector<String> const& words);

char const* helpText();

}  // namespace scanshelf
