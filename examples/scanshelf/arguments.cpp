// SPDX-License-Identifier: MIT
#include "arguments.h"

#include "complaint.h"

namespace scanshelf {

using KV_1_1::String;

namespace {

struct Option {
  KV_1_1::wchar const* brief;
  KV_1_1::wchar const* full;
  bool Arguments::*flag;
};

constexpr Option kOptions[] = {
    {KVW("-a"), KVW("--all"), &Arguments::all},
    {KVW("-u"), KVW("--unix"), &Arguments::unixNames},
    {KVW("-r"), KVW("--renumber"), &Arguments::renumber},
    {KVW("-h"), KVW("--help"), &Arguments::help},
};

void readOption(String const& word, Arguments& arguments) {
  for (Option const& option : kOptions) {
    if (word != option.brief && word != option.full) continue;
    arguments.*option.flag = true;
    return;
  }
  throw Complaint(KVW("There is no option '") + word + KVW("'."), Status::Misused);
}

bool isOption(String const& word) {
  return word.startsWith(KVW("-")) && word != KVW("-");
}

}  // namespace

Arguments readArguments(std::vector<String> const& words) {
  Arguments arguments;
  String* const places[] = {&arguments.folder, &arguments.pattern};
  std::size_t filled = 0;
  bool optionsEnded = false;

  for (String const& word : words) {
    if (!optionsEnded && word == KVW("--")) {
      optionsEnded = true;
    } else if (!optionsEnded && isOption(word)) {
      readOption(word, arguments);
    } else if (filled < std::size(places)) {
      *places[filled++] = word;
    } else {
      throw Complaint(
          KVW("'") + word + KVW("' is one word too many. Quote a pattern, so that the shell leaves it alone."),
          Status::Misused);
    }
  }
  return arguments;
}

char const* helpText() {
  return R"(scanshelf tells what lies in a folder: how many files of which kind, and where the space goes.

Usage: scanshelf [folder] [pattern] [options]

  folder          the folder to look at, with all folders below it; without one a sample
                  of scans is made, looked at and removed again
  pattern         which files count, with the wildcards * and ?, upper and lower case
                  alike; * without one. Quote it, so that the shell leaves it alone

  -a, --all       show all kinds, folders and files, not only the first ten
  -u, --unix      list files with slashes
  -r, --renumber  show, instead of the counts, which name each file would have with the
                  number at its end one higher: scan010.dat for scan009.dat. A name
                  without a number gets a 1. No file is renamed
  -h, --help      show this text
  --              what follows is no option

Names and paths that are too long for a line of 100 places are listed without their middle.

Examples:
  scanshelf . '*.dat'
  scanshelf D:\scans 'scan???.*' --all
  scanshelf . 'scan*' --renumber

The exit status is 0 when the folder was read, 1 when it could not be, and 2 when the
command line was not understood.
)";
}

}  // namespace scanshelf
