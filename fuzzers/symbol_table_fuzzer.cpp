// SPDX-License-Identifier: MIT
//
// Headers of symbols from any bytes: the first text of a table, a second one, and the same lines one after another.
#include <sstream>
#include <utility>

#include "fuzzers/fuzz_input.h"

using namespace KV_1_1;

namespace {

bool parse(SymbolTable& table, std::string const& text) {
  std::istringstream stream(text);
  return table.parseHeaderFile(stream);
}

// What the second table has, the first one has too. Names are not listed by a table, so all words of the text are asked for.
void requireSame(SymbolTable const& a, SymbolTable const& b, std::string const& text) {
  std::istringstream words(text);
  for (String word; words >> word;) {
    unsigned int const number = a[word];
    fuzzing::require(number == b[word], "a text gives the same table at once and by its lines");
    auto const names = a[number];
    fuzzing::require(names.size() == b[number].size(), "the same names for a number");
    for (String const& name : names) fuzzing::require(a[name] == number, "each name of a number has that number");
    fuzzing::require(number == 0xFFFFFFFF || names.count(word) == 1, "the number of a name has that name");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  fuzzing::Input input(data, size);
  std::string const text = input.bytes();

  SymbolTable whole;
  bool const isFaultless = parse(whole, text);

  // The second and all later lines are added to a table that is filled as a rule.
  SymbolTable byLines;
  bool areFaultless = true;
  bool isTooLong = false;
  for (std::size_t at = 0; at < text.size() && !isTooLong;) {
    std::size_t const end = std::min(text.find('\n', at), text.size());
    isTooLong = end - at >= 255;
    areFaultless = parse(byLines, text.substr(at, end - at)) && areFaultless;
    at = end + 1;
  }
  fuzzing::require(isFaultless == areFaultless, "a text is faulty if one of its lines is");
  requireSame(whole, byLines, text);

  SymbolTable copy = whole;
  requireSame(copy, whole, text);
  // A name that stands for one defined further on is a fault the first time, and known the second time.
  parse(copy, text);
  if (isFaultless) requireSame(copy, whole, text);
  SymbolTable const before = copy;
  SymbolTable const moved = std::move(copy);
  requireSame(moved, before, text);
  fuzzing::require(copy[0].empty() && copy[1].empty(), "a moved table is empty");
  return 0;
}
