// SPDX-License-Identifier: MIT
#include "kvbase/modules/symbol_table.h"

#include <cstring>
#include <istream>
#include <utility>

#include "kvbase/modules/internal/header_line.h"
#include "kvbase/modules/internal/symbol_batch.h"
#include "kvbase/platform/narrow_text.h"

namespace KV_1_1 {

namespace {

constexpr unsigned int kNotFound = 0xFFFFFFFF;

// Gives each line of a stream, up to its first NUL, to `take`, which tells whether the line is right. False if one was not,
// or if the stream was or became bad.
template <class Take>
bool readLines(std::istream& stream, Take take) {
  bool isFaultless = true;
  char line[LineReader::kLimit];
  while (!stream.eof() && !stream.bad()) {
    stream.getline(line, sizeof line);
    // Without this a line that is too long would leave the stream failed, and the loop without end.
    bool const isStuck = stream.fail() && !stream.eof() && !stream.bad();
    if (isStuck) return false;
    isFaultless = take(line) && isFaultless;
  }
  return isFaultless && !stream.bad();
}

}  // namespace

// What works on the containers of a table; not exported, as members of the class are.
struct KVBASE_LOCAL SymbolTable::Contents {
  static void swap(SymbolTable& a, SymbolTable& b) noexcept {
    a.symbolToValue.swap(b.symbolToValue);
    a.valueToSymbols.swap(b.valueToSymbols);
  }
  // Adds one definition; false if the table has the name.
  static bool add(SymbolTable& table, String const& name, unsigned int value);
  // Takes a whole text into an empty table.
  static bool fill(SymbolTable& table, std::istream& stream);
};

SymbolTable::SymbolTable() = default;

SymbolTable::SymbolTable(SymbolTable const& other) = default;

// Not the move of the containers, which need not leave their source empty.
SymbolTable::SymbolTable(SymbolTable&& other) noexcept {
  Contents::swap(*this, other);
}

SymbolTable::~SymbolTable() = default;

SymbolTable& SymbolTable::operator=(SymbolTable const& other) {
  if (this != &other) {
    SymbolTable copy(other);
    Contents::swap(copy, *this);
  }
  return *this;
}

SymbolTable& SymbolTable::operator=(SymbolTable&& other) noexcept {
  if (this != &other) {
    SymbolTable taken(std::move(other));
    Contents::swap(taken, *this);
  }
  return *this;
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
  if (symbolToValue.empty()) return Contents::fill(*this, stream);
  return readLines(stream, [this](char const* bytes) {
    return parseLineHeaderFile(String(CodePageInterface(bytes, platform::kAnsiCodePage)));
  });
}

bool SymbolTable::Contents::fill(SymbolTable& table, std::istream& stream) {
  LineReader reader;
  SymbolBatch batch;
  bool isFaultless = false;
  try {
    isFaultless = readLines(stream, [&](char const* bytes) {
      HeaderLine line = reader.read(bytes, static_cast<int>(std::strlen(bytes)));
      if (line.kind == HeaderLine::kReference) {
        bool const isKnown = batch.find(line.token, line.number) && line.number != kNotFound;
        line.kind = isKnown ? HeaderLine::kNumber : HeaderLine::kFaulty;
      }
      return line.kind == HeaderLine::kNumber ? batch.add(line.name, line.number) : line.kind == HeaderLine::kNothing;
    });
  } catch (...) {
    // The stream may have been told to throw when it fails, as it does at its end.
    batch.moveInto(table.symbolToValue, table.valueToSymbols);
    throw;
  }
  batch.moveInto(table.symbolToValue, table.valueToSymbols);
  return isFaultless;
}

bool SymbolTable::parseLineHeaderFile(String const& text) {
  HeaderLine line = readHeaderLine(upToNul(viewOf(text)));
  if (line.kind == HeaderLine::kReference) {
    line.number = lookupSymbol(String(line.token.data(), lengthOf(line.token)));
    line.kind = line.number != kNotFound ? HeaderLine::kNumber : HeaderLine::kFaulty;
  }
  if (line.kind != HeaderLine::kNumber) return line.kind == HeaderLine::kNothing;
  return Contents::add(*this, String(line.name.data(), lengthOf(line.name)), line.number);
}

bool SymbolTable::Contents::add(SymbolTable& table, String const& name, unsigned int value) {
  auto const [symbol, isNew] = table.symbolToValue.try_emplace(name, value);
  if (!isNew) return false;
  try {
    table.valueToSymbols.emplace(value, name);
  } catch (...) {
    table.symbolToValue.erase(symbol);
    throw;
  }
  return true;
}

}  // namespace KV_1_1
