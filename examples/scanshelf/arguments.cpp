// SPDX-License-Identifier: MIT
#include "scanshelf.h"

namespace scanshelf {
namespace {

// An option sets a flag or, if it has none, takes the word behind it as the folder to copy to.
struct Option {
  wchar const* brief;
  wchar const* full;
  bool Arguments::*flag;
};

constexpr Option kOptions[] = {
    {KVW("-c"), KVW("--copy-to"), nullptr},
    {KVW("-o"), KVW("--overwrite"), &Arguments::overwrite},
    {KVW("-a"), KVW("--all"), &Arguments::all},
    {KVW("-u"), KVW("--unix"), &Arguments::unixNames},
    {KVW("-r"), KVW("--renumber"), &Arguments::renumber},
    {KVW("-e"), KVW("--assert"), &Arguments::assertHeaders},
    {KVW("-t"), KVW("--stack"), &Arguments::stack},
    {KVW("-h"), KVW("--help"), &Arguments::help},
};

bool isOption(String const& word) {
  return word.startsWith(KVW("-")) && word != KVW("-");
}

Option const& findOption(String const& word) {
  for (Option const& option : kOptions) {
    if (word == option.brief || word == option.full) return option;
  }
  throw UsageError(format(KVW("There is no option '%ls'."), word));
}

}  // namespace

Arguments readArguments(std::vector<String> const& words) {
  Arguments arguments;
  std::vector<String> names;
  bool optionsEnded = false;
  for (auto word = words.begin(); word != words.end(); ++word) {
    if (!optionsEnded && *word == KVW("--")) {
      optionsEnded = true;
    } else if (optionsEnded || !isOption(*word)) {
      names.push_back(*word);
    } else if (Option const& option = findOption(*word); option.flag != nullptr) {
      arguments.*option.flag = true;
    } else {
      // Another option here means that the folder was forgotten.
      bool const hasValue = word + 1 != words.end() && !isOption(word[1]);
      if (!hasValue) throw UsageError(format(KVW("'%ls' needs a folder behind it."), *word));
      if (arguments.copyTo != String::NIL) throw UsageError(format(KVW("'%ls' can be given only once."), *word));
      arguments.copyTo = *++word;
    }
  }
  if (names.size() > 0) arguments.folder = names[0];
  if (names.size() > 1) arguments.pattern = names[1];
  if (names.size() > 2) {
    throw UsageError(
        format(KVW("'%ls' is one word too many. Quote a pattern, so that the shell leaves it alone."), names[2]));
  }
  if (arguments.help) return arguments;
  bool const copies = arguments.copyTo != String::NIL;
  if (arguments.overwrite && !copies) throw UsageError(KVW("'--overwrite' needs '--copy-to'."));
  if (arguments.renumber && copies) throw UsageError(KVW("'--renumber' and '--copy-to' cannot be used together."));
  return arguments;
}

char const* helpText() {
  return R"(scanshelf lists what is in a folder: how many files of which kind, and what takes the space.
It can also copy the folder, and checks the copy.

Usage: scanshelf [folder] [pattern] [options]

  folder                  the folder to look at, with all folders below it; without one, a
                          sample of scans is made, looked at, copied, and removed with its copy
  pattern                 the files to count, with the wildcards * and ?, ignoring case; without
                          one, all files. Quote it, so that the shell leaves it alone
  -c, --copy-to <folder>  copy the files that match, and all folders, empty ones too, to this
                          folder, which is made if it is missing; then compare the sizes
  -o, --overwrite         with --copy-to: replace files that are there already
  -a, --all               show all kinds, folders and files, not only the first ten
  -u, --unix              list files with slashes
  -r, --renumber          show only the names with the number at their end incremented, such as
                          scan010.dat for scan009.dat and notes1.txt for notes.txt; rename none
  -e, --assert            only check that the .dat files begin with the letters SCAN; for the first
                          that does not, show the report of a failed assertion, which asks what
                          to do
  -t, --stack             only show the call stack of this program
  -h, --help              show this text
  --                      end of the options: the words that follow may begin with a dash

Without --copy-to nothing in your folders is changed. With it, files that are there already stay
as they are; what cannot be copied is listed with the reason, and the rest is copied. Lists have
100 columns: longer names and paths lose their middle, except those that could not be copied.

Examples:
  scanshelf . '*.dat'
  scanshelf D:\scans 'scan???.*' --all
  scanshelf D:\scans --copy-to E:\backup\scans
  scanshelf . 'scan*' --renumber

The exit status is 0 on success, 1 when the folder could not be read, something could not be
copied or a file is no scan, and 2 when the command line was not understood.
)";
}

}  // namespace scanshelf
