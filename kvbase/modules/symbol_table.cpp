// SPDX-License-Identifier: MIT
#include "kvbase/modules/symbol_table.h"

#include <istream>
#include <utility>

namespace KV_1_1 {

namespace {

constexpr unsigned int kNotFound = 0xFFFFFFFF;
// Lines of a header have fewer bytes.
constexpr int kLineLimit = 255;

constexpr wchar kDefine[] = KVW("#define");
constexpr int kDefineLength = 7;
// Names by which the resource editor keeps its books.
constexpr wchar kEditorPrefix[] = KVW("_APS");

}  // namespace

SymbolTable::SymbolTable() = default;

SymbolTable::SymbolTable(SymbolTable const& other) = default;

// Not the move of the containers, which need not leave their source empty.
SymbolTable::SymbolTable(SymbolTable&& other) noexcept {
  swap(other);
}

SymbolTable::~SymbolTable() = default;

SymbolTable& SymbolTable::operator=(SymbolTable const& other) {
  if (this != &other) SymbolTable(other).swap(*this);
  return *this;
}

SymbolTable& SymbolTable::operator=(SymbolTable&& other) noexcept {
  if (this != &other) SymbolTable(std::move(other)).swap(*this);
  return *this;
}

void SymbolTable::swap(SymbolTable& other) noexcept {
  symbolToValue.swap(other.symbolToValue);
  valueToSymbols.swap(other.valueToSymbols);
}

unsigned int SymbolTable::lookupSymbol(String const& name) const {
  auto const found = symbolToValue.find(name);
  return found != symbolToValue.end() ? found->second : kNotFound;
}

std::set<String, StringLess2> SymbolTable::lookupValue(unsigned int value) const {
  auto const range = valueToSymbols.equal_range(value);
  std::set<String, StringLess2> names;
  for (auto symbol = range.first; symbol != range.second; ++symbol) names.insert(symbol->second);
  return names;
}

bool SymbolTable::parseHeaderFile(std::basic_istream<char>& stream) {
  bool isFaultless = true;
  while (!stream.eof() && !stream.bad()) {
    String line;
    stream.getline(line.buffer(kLineLimit), kLineLimit);
    // Without this a line that is too long would leave the stream failed, and the loop without end.
    bool const isStuck = stream.fail() && !stream.eof() && !stream.bad();
    if (isStuck) return false;
    isFaultless = parseLineHeaderFile(line) && isFaultless;
  }
  return isFaultless && !stream.bad();
}

bool SymbolTable::parseLineHeaderFile(String const& line) {
  int const define = line.find(kDefine, 0);
  if (define < 0) return true;
  int const nameStart = line.findNonWS(define + kDefineLength);
  if (nameStart < 0 || nameStart == define + kDefineLength) return false;
  int const nameEnd = line.findWS(nameStart);
  String const name = line.substr(nameStart, nameEnd);
  if (name.startsWith(kEditorPrefix)) return true;

  int const tokenStart = line.findNonWS(nameEnd + 1);
  String const token = line.substr(tokenStart, line.findWS(tokenStart));
  String rest = token;
  unsigned int value = kNotFound;
  rest >> value;
  // Nothing was taken for a number, so the token is a name.
  if (rest == token) {
    value = lookupSymbol(token);
    if (value == kNotFound) return false;
  }
  return add(name, value);
}

bool SymbolTable::add(String const& name, unsigned int value) {
  auto const [symbol, isNew] = symbolToValue.try_emplace(name, value);
  if (!isNew) return false;
  try {
    valueToSymbols.emplace(value, name);
  } catch (...) {
    symbolToValue.erase(symbol);
    throw;
  }
  return true;
}

}  // namespace KV_1_1
