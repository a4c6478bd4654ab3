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
    {KVW("-s"), KVW("--resources"), &Arguments::resources},
    {KVW("-h"), KVW("--help"), &Arguments::help},
};

// KVBase takes up to three letters behind the equals sign.
bool isLanguage(String const& word) {
  constexpr int kLength = 6;  // of -lang=
  bool const fits = word.length() >= kLength && word.length() <= kLength + 3;
  return fits && (word[0] == KVW('-') || word[0] == KVW('/')) &&
         word.substr(1, kLength).compareIgnoreCase(KVW("lang=")) == 0;
}

bool isOption(String const& word) {
  return word.startsWith(KVW("-")) && word != KVW("-");
}

Option const& findOption(String const& word) {
  for (Option const& option : kOptions) {
    if (word == option.brief || word == option.full) return option;
  }
  throw UsageError(textOf(IDS_UNKNOWN_OPTION, word));
}

}  // namespace

Arguments readArguments(std::vector<String> const& words) {
  Arguments arguments;
  std::vector<String> names;
  bool optionsEnded = false;
  for (auto word = words.begin(); word != words.end(); ++word) {
    if (!optionsEnded && *word == KVW("--")) {
      optionsEnded = true;
    } else if (!optionsEnded && isLanguage(*word)) {
      continue;
    } else if (optionsEnded || !isOption(*word)) {
      names.push_back(*word);
    } else if (Option const& option = findOption(*word); option.flag != nullptr) {
      arguments.*option.flag = true;
    } else {
      // Another option here means that the folder was forgotten.
      bool const hasValue = word + 1 != words.end() && !isOption(word[1]);
      if (!hasValue) throw UsageError(textOf(IDS_OPTION_NEEDS_FOLDER, *word));
      if (arguments.copyTo != String::NIL) throw UsageError(textOf(IDS_OPTION_ONLY_ONCE, *word));
      arguments.copyTo = *++word;
    }
  }
  if (names.size() > 0) arguments.folder = names[0];
  if (names.size() > 1) arguments.pattern = names[1];
  if (names.size() > 2) throw UsageError(textOf(IDS_WORD_TOO_MANY, names[2]));
  if (arguments.help || arguments.resources) return arguments;
  bool const copies = arguments.copyTo != String::NIL;
  if (arguments.overwrite && !copies) throw UsageError(textOf(IDS_OVERWRITE_NEEDS_COPY));
  if (arguments.renumber && copies) throw UsageError(textOf(IDS_RENUMBER_OR_COPY));
  return arguments;
}

}  // namespace scanshelf
