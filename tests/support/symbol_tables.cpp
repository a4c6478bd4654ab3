// SPDX-License-Identifier: MIT
#include "tests/support/symbol_tables.h"

namespace KV_1_1 {
namespace testing {

using ByName = SymbolsByName SymbolTable::*;
using ByValue = SymbolsByValue SymbolTable::*;
using ParseLine = bool (SymbolTable::*)(String const&);

// Private members may be named in an explicit instantiation, which makes these known.
ByName byNameMember();
ByValue byValueMember();
ParseLine parseLineMember();

template <ByName byName, ByValue byValue, ParseLine parse>
struct SymbolTableMembers {
  friend ByName byNameMember() { return byName; }
  friend ByValue byValueMember() { return byValue; }
  friend ParseLine parseLineMember() { return parse; }
};
template struct SymbolTableMembers<&SymbolTable::symbolToValue, &SymbolTable::valueToSymbols,
                                   &SymbolTable::parseLineHeaderFile>;

SymbolsByName const& symbolsByName(SymbolTable const& table) {
  return table.*byNameMember();
}

SymbolsByValue const& symbolsByValue(SymbolTable const& table) {
  return table.*byValueMember();
}

bool parseLine(SymbolTable& table, String const& line) {
  return (table.*parseLineMember())(line);
}

}  // namespace testing
}  // namespace KV_1_1
