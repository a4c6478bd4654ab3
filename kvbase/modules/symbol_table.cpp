// SPDX-License-Identifier: MIT
#include "kvbase/modules/symbol_table.h"

#include <cstring>
#include <istream>
#include <new>
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
  char line[LineDecoder::kLimit];
  while (!stream.eof() && !stream.bad()) {
    // A stream that has failed before stores nothing.
    line[0] = 0;
    stream.getline(line, sizeof line);
    // Without this a line that is too long would leave the stream failed, and the loop without end.
    bool const isStuck = stream.fail() && !stream.eof() && !stream.bad();
    if (isStuck) return false;
    isFaultless = take(line) && isFaultless;
  }
  return isFaultless && !stream.bad();
}

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
  return symbolToValue.empty() ? fill(stream) : addTo(stream);
}

bool SymbolTable::fill(std::basic_istream<char>& stream) {
  LineDecoder decoder;
  SymbolBatch batch;
  bool isFaultless = false;
  try {
    isFaultless = readLines(stream, [&](char const* bytes) {
      HeaderLine line = readHeaderLine(decoder.decode(bytes, static_cast<int>(std::strlen(bytes))));
      if (line.kind == HeaderLine::kReference) {
        bool const isKnown = batch.find(line.token, line.number) && line.number != kNotFound;
        line.kind = isKnown ? HeaderLine::kNumber : HeaderLine::kFaulty;
      }
      return line.kind == HeaderLine::kNumber ? batch.add(line.name, line.number) : line.kind == HeaderLine::kNothing;
    });
  } catch (std::bad_alloc const&) {
    throw;
  } catch (...) {
    // The stream was told to throw when it fails, as it does at its end.
    batch.moveInto(symbolToValue, valueToSymbols);
    throw;
  }
  batch.moveInto(symbolToValue, valueToSymbols);
  return isFaultless;
}

bool SymbolTable::addTo(std::basic_istream<char>& stream) {
  return readLines(stream, [this](char const* bytes) {
    return parseLineHeaderFile(String(CodePageInterface(bytes, platform::kAnsiCodePage)));
  });
}

bool SymbolTable::parseLineHeaderFile(String const& text) {
  HeaderLine line = readHeaderLine(upToNul(viewOf(text)));
  if (line.kind == HeaderLine::kReference) {
    line.number = lookupSymbol(String(line.token.data(), lengthOf(line.token)));
    line.kind = line.number != kNotFound ? HeaderLine::kNumber : HeaderLine::kFaulty;
  }
  if (line.kind != HeaderLine::kNumber) return line.kind == HeaderLine::kNothing;
  return add(String(line.name.data(), lengthOf(line.name)), line.number);
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
