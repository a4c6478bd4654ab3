// SPDX-License-Identifier: MIT
#include "arguments.h"

#include "complaint.h"

namespace scanshelf {

using KV_1_1::String;

namespace {

// An option is a flag, or it takes the word behind it.
struct Option {
  KV_1_1::wchar const* brief;
  KV_1_1::wchar const* full;
  bool Arguments::*flag;
  String Arguments::*text;
};

constexpr Option kOptions[] = {
    {KVW("-c"), KVW("--copy-to"), nullptr, &Arguments::copyTo},
    {KVW("-o"), KVW("--overwrite"), &Arguments::overwrite, nullptr},
    {KVW("-a"), KVW("--all"), &Arguments::all, nullptr},
    {KVW("-u"), KVW("--unix"), &Arguments::unixNames, nullptr},
    {KVW("-r"), KVW("--renumber"), &Arguments::renumber, nullptr},
    {KVW("-h"), KVW("--help"), &Arguments::help, nullptr},
};

Complaint misuse(String const& sentence) {
  return Complaint(sentence, Status::Misused);
}

String quoted(String const& word) {
  return KVW("'") + word + KVW("'");
}

bool isOption(String const& word) {
  return word.startsWith(KVW("-")) && word != KVW("-");
}

Option const& optionOf(String const& word) {
  for (Option const& option : kOptions) {
    if (word == option.brief || word == option.full) return option;
  }
  throw misuse(KVW("There is no option ") + quoted(word) + KVW("."));
}

class Reader {
 public:
  explicit Reader(std::vector<String> const& words) : words_(words) {}

  Arguments run() {
    for (bool optionsEnded = false; next_ < words_.size();) {
      String const& word = words_[next_++];
      if (!optionsEnded && word == KVW("--")) {
        optionsEnded = true;
      } else if (!optionsEnded && isOption(word)) {
        readOption(word);
      } else {
        readName(word);
      }
    }
    return arguments_;
  }

 private:
  void readOption(String const& word) {
    Option const& option = optionOf(word);
    if (option.flag != nullptr) {
      arguments_.*option.flag = true;
      return;
    }
    // Another option in its place is more likely a folder forgotten than a folder of that name.
    if (next_ == words_.size() || isOption(words_[next_]))
      throw misuse(quoted(word) + KVW(" needs a folder behind it."));
    if (arguments_.*option.text != String::NIL) throw misuse(quoted(word) + KVW(" can be given only once."));
    arguments_.*option.text = words_[next_++];
  }

  void readName(String const& word) {
    String* const places[] = {&arguments_.folder, &arguments_.pattern};
    if (named_ == std::size(places)) {
      throw misuse(quoted(word) + KVW(" is one word too many. Quote a pattern, so that the shell leaves it alone."));
    }
    *places[named_++] = word;
  }

  std::vector<String> const& words_;
  std::size_t next_ = 0;
  std::size_t named_ = 0;
  Arguments arguments_;
};

}  // namespace

Arguments readArguments(std::vector<String> const& words) {
  Arguments const arguments = Reader(words).run();
  bool const copies = arguments.copyTo != String::NIL;
  if (arguments.help) return arguments;
  if (arguments.overwrite && !copies) throw misuse(KVW("'--overwrite' means nothing without '--copy-to'."));
  if (arguments.renumber && copies) throw misuse(KVW("'--renumber' and '--copy-to' do not go together."));
  return arguments;
}

char const* helpText() {
  return R"(scanshelf tells what lies in a folder: how many files of which kind, and where the space goes.
It also copies the folder, and checks the copy.

Usage: scanshelf [folder] [pattern] [options]

  folder          the folder to look at, with all folders below it; without one a sample
                  of scans is made, looked at, copied to another temporary folder, and
                  removed again with its copy
  pattern         which files count, with the wildcards * and ?, upper and lower case
                  alike; * without one. Quote it, so that the shell leaves it alone

  -c, --copy-to <folder>
                  copy the files that count, and all folders, empty ones too, to this
                  folder, which is made if it is missing; then compare the sizes. Files
                  that are there already stay as they are. What cannot be copied is
                  listed with the reason, and the rest is copied all the same
  -o, --overwrite
                  with --copy-to: replace files that are there already
  -a, --all       show all kinds, folders and files, not only the first ten
  -u, --unix      list files with slashes
  -r, --renumber  show, instead of the counts, which name each file would have with the
                  number at its end one higher: scan010.dat for scan009.dat. A name
                  without a number gets a 1. No file is renamed, and none is copied
  -h, --help      show this text
  --              what follows is no option

Without --copy-to nothing is written to a folder of yours. Names and paths that are too long
for a line of 100 places are listed without their middle, but for what could not be copied.

Examples:
  scanshelf . '*.dat'
  scanshelf D:\scans 'scan???.*' --all
  scanshelf D:\scans --copy-to E:\backup\scans
  scanshelf . 'scan*' --renumber

The exit status is 0 when all went well, 1 when the folder could not be read or something
could not be copied, and 2 when the command line was not understood.
)";
}

}  // namespace scanshelf
