// SPDX-License-Identifier: MIT
//
// How the tests of symbol tables build tables and look into them.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "kvbase/modules/symbol_table.h"
#include "tests/strings/string_support.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {

// The private members of a table, for looks at what no lookup shows.
using SymbolsByName = std::map<String, unsigned int, StringLess2>;
using SymbolsByValue = std::multimap<unsigned int, String>;
SymbolsByName const& symbolsByName(SymbolTable const& table);
SymbolsByValue const& symbolsByValue(SymbolTable const& table);
bool parseLine(SymbolTable& table, String const& line);

using Definitions = std::vector<std::pair<wstring, unsigned int>>;

inline Definitions definitionsByName(SymbolTable const& table) {
  Definitions all;
  for (auto const& symbol : symbolsByName(table)) all.emplace_back(units(symbol.first), symbol.second);
  return all;
}
inline Definitions definitionsByValue(SymbolTable const& table) {
  Definitions all;
  for (auto const& symbol : symbolsByValue(table)) all.emplace_back(units(symbol.second), symbol.first);
  return all;
}

// "A=1 B=2", in the order of the names or of the numbers.
inline std::string shown(Definitions const& definitions) {
  std::string text;
  for (auto const& definition : definitions)
    text += (text.empty() ? "" : " ") + narrow(definition.first) + '=' + std::to_string(definition.second);
  return text;
}
inline std::string shown(SymbolTable const& table) {
  return shown(definitionsByName(table));
}
template <class Names>
std::string joined(Names const& names) {
  std::string text;
  for (String const& name : names) text += (text.empty() ? "" : " ") + narrow(units(name));
  return text;
}

inline bool parse(SymbolTable& table, std::string const& text) {
  std::istringstream stream(text);
  return table.parseHeaderFile(stream);
}

// The table of a text without faulty lines.
inline SymbolTable tableOf(std::string const& text) {
  SymbolTable table;
  EXPECT_TRUE(parse(table, text)) << text;
  return table;
}

constexpr unsigned int kNoSymbol = 0xFFFFFFFF;

}  // namespace testing
}  // namespace KV_1_1
