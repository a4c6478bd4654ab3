// SPDX-License-Identifier: MIT
#include "kvbase/modules/internal/symbol_batch.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "kvbase/internal_assert.h"
#include "kvbase/strings/internal/character_class.h"

namespace KV_1_1 {

namespace {

constexpr int kChunkBytes = 8;
// Room for the symbols of an ordinary module.
constexpr std::size_t kFirstSymbols = 128;

// Compilers make one instruction of it.
std::uint64_t reversedBytes(std::uint64_t bytes) {
  bytes = (bytes & 0x00FF00FF00FF00FFu) << 8 | (bytes >> 8 & 0x00FF00FF00FF00FFu);
  bytes = (bytes & 0x0000FFFF0000FFFFu) << 16 | (bytes >> 16 & 0x0000FFFF0000FFFFu);
  return bytes << 32 | bytes >> 32;
}

// Eight units of ASCII, folded, one in each byte and the first one in the highest. False if there are others among them.
bool foldedChunk(wchar const* units, std::uint64_t& chunk) {
  constexpr std::uint64_t kOnes = 0x0101010101010101u;
  std::uint64_t halves[2];
  std::memcpy(halves, units, sizeof halves);
  if (((halves[0] | halves[1]) & 0xFF80FF80FF80FF80u) != 0) return false;
  for (std::uint64_t& half : halves) {
    half = (half | half >> 8) & 0x0000FFFF0000FFFFu;
    half = (half | half >> 16) & 0x00000000FFFFFFFFu;
  }
  std::uint64_t const bytes = halves[0] | halves[1] << 32;
  // The highest bit of each byte from A to Z; no sum reaches beyond its byte.
  std::uint64_t const upper = (bytes + (0x80 - 'A') * kOnes) & ~(bytes + (0x80 - 'Z' - 1) * kOnes) & 0x80 * kOnes;
  chunk = reversedBytes(bytes + (upper >> 2));
  return true;
}

bool isLastChunk(std::uint64_t chunk) {
  return (chunk & 0xFF) == 0;
}

}  // namespace

// Writes the key of a name behind the others; it stays there only if the caller keeps the size. Returns its hash.
//
// A unit takes one byte in ASCII and three otherwise, so the bytes are ordered as the units are. None of them is 0.
std::uint32_t SymbolBatch::appendKey(TextView name) {
  std::uint64_t chunk = 0;
  std::uint64_t hash = 0;
  auto const take = [&] {
    keys_.push_back(chunk);
    hash = (hash ^ chunk) * 0x9E3779B97F4A7C15u;
    hash ^= hash >> 29;
    chunk = 0;
  };
  while (lengthOf(name) >= kChunkBytes && foldedChunk(name.data(), chunk)) {
    take();
    name.remove_prefix(kChunkBytes);
  }
  int room = kChunkBytes;
  auto const put = [&](unsigned int byte) {
    chunk = chunk << 8 | byte;
    if (--room > 0) return;
    take();
    room = kChunkBytes;
  };
  for (wchar const original : name) {
    unsigned int const unit = strings::foldCase(original);
    KVBASE_ASSERT(unit != 0);
    if (unit < 0x80) {
      put(unit);
    } else {
      put(0x80 | unit >> 12);
      put(0x80 | (unit >> 6 & 0x3F));
      put(0x80 | (unit & 0x3F));
    }
  }
  chunk <<= 8 * (room - 1);
  chunk <<= 8;
  take();
  return static_cast<std::uint32_t>(hash >> 32);
}

bool SymbolBatch::isKeyOf(Symbol const& symbol, std::size_t key) const {
  for (std::size_t own = symbol.key;; ++own, ++key) {
    if (keys_[own] != keys_[key]) return false;
    if (isLastChunk(keys_[own])) return true;
  }
}

// The slot of the symbol with that key, or the free one where it would stand.
// REQUIRES: there are slots.
SymbolBatch::Slot& SymbolBatch::slotOf(std::uint32_t hash, std::size_t key) {
  std::size_t const mask = slots_.size() - 1;
  for (std::size_t at = hash & mask;; at = (at + 1) & mask) {
    Slot& slot = slots_[at];
    if (slot.symbol == 0 || (slot.hash == hash && isKeyOf(symbols_[slot.symbol - 1], key))) return slot;
  }
}

void SymbolBatch::makeRoom() {
  if (2 * (symbols_.size() + 1) <= slots_.size()) return;
  if (slots_.empty()) {
    symbols_.reserve(kFirstSymbols);
    keys_.reserve(4 * kFirstSymbols);
  }
  std::pmr::vector<Slot> larger(std::max(2 * slots_.size(), 2 * kFirstSymbols), &memory_);
  std::size_t const mask = larger.size() - 1;
  for (Slot const& slot : slots_) {
    if (slot.symbol == 0) continue;
    std::size_t at = slot.hash & mask;
    while (larger[at].symbol != 0) at = (at + 1) & mask;
    larger[at] = slot;
  }
  slots_.swap(larger);
}

bool SymbolBatch::add(TextView name, unsigned int number) {
  makeRoom();
  std::size_t const key = keys_.size();
  std::uint32_t const hash = appendKey(name);
  Slot& slot = slotOf(hash, key);
  if (slot.symbol != 0) {
    keys_.resize(key);
    return false;
  }
  symbols_.push_back({String(name.data(), lengthOf(name)), number, static_cast<std::uint32_t>(key)});
  slot = {hash, static_cast<std::uint32_t>(symbols_.size())};
  return true;
}

bool SymbolBatch::find(TextView name, unsigned int& number) {
  if (slots_.empty()) return false;
  std::size_t const key = keys_.size();
  std::uint32_t const hash = appendKey(name);
  Slot const& slot = slotOf(hash, key);
  keys_.resize(key);
  if (slot.symbol == 0) return false;
  number = symbols_[slot.symbol - 1].number;
  return true;
}

// Sorts symbols whose keys agree in `depth` chunks.
void SymbolBatch::sortByName(Sorted* first, Sorted* last, std::size_t depth) const {
  for (Sorted* each = first; each != last; ++each) each->chunk = keys_[each->key + depth];
  auto const isBefore = [](Sorted const& a, Sorted const& b) { return a.chunk < b.chunk; };
  // Names often share their first chunks, and many headers are sorted.
  if (!std::is_sorted(first, last, isBefore)) std::sort(first, last, isBefore);
  while (first != last) {
    Sorted* end = first + 1;
    while (end != last && end->chunk == first->chunk) ++end;
    // Two names with the same last chunk would be one name.
    if (end - first > 1) sortByName(first, end, depth + 1);
    first = end;
  }
}

void SymbolBatch::moveInto(std::map<String, unsigned int, StringLess2>& byName,
                           std::multimap<unsigned int, String>& byNumber) {
  KVBASE_ASSERT(byName.empty() && byNumber.empty());
  std::pmr::vector<Sorted> sorted(&memory_);
  sorted.reserve(symbols_.size());
  for (std::uint32_t i = 0; i < symbols_.size(); ++i) sorted.push_back({0, i, symbols_[i].key});
  sortByName(sorted.data(), sorted.data() + sorted.size(), 0);
  std::map<String, unsigned int, StringLess2> names;
  for (Sorted const& each : sorted) {
    Symbol const& symbol = symbols_[each.symbol];
    names.emplace_hint(names.end(), symbol.name, symbol.number);
  }

  // By number, and for one number in the order of definition; in a header they often stand so.
  std::pmr::vector<std::uint64_t> order(&memory_);
  order.reserve(symbols_.size());
  for (std::uint32_t i = 0; i < symbols_.size(); ++i)
    order.push_back(static_cast<std::uint64_t>(symbols_[i].number) << 32 | i);
  if (!std::is_sorted(order.begin(), order.end())) std::sort(order.begin(), order.end());
  std::multimap<unsigned int, String> numbers;
  for (std::uint64_t const each : order) {
    Symbol& symbol = symbols_[static_cast<std::uint32_t>(each)];
    numbers.emplace_hint(numbers.end(), symbol.number, std::move(symbol.name));
  }
  byName.swap(names);
  byNumber.swap(numbers);
}

}  // namespace KV_1_1
