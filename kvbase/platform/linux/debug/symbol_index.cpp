// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/debug/symbol_index.h"

#include <algorithm>
#include <utility>

namespace KV_1_1 {
namespace platform {

namespace {

int rankOf(GElf_Sym const& symbol) {
  switch (GELF_ST_BIND(symbol.st_info)) {
    case STB_LOCAL:
      return 0;
    case STB_WEAK:
      return 1;
    default:
      return 2;
  }
}

bool isCode(GElf_Sym const& symbol) {
  int const type = GELF_ST_TYPE(symbol.st_info);
  return symbol.st_shndx != SHN_UNDEF && symbol.st_size != 0 && type != STT_SECTION && type != STT_FILE &&
         type != STT_TLS;
}

}  // namespace

bool SymbolIndex::canRead(LibdwFunctions const& libdw) {
  return libdw.symbolCount != nullptr && libdw.symbol != nullptr;
}

void SymbolIndex::read(LibdwFunctions const& libdw, Dwfl_Module* module) {
  std::vector<Entry> entries;
  int const count = libdw.symbolCount(module);
  if (count > 0) entries.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    GElf_Sym symbol = {};
    GElf_Addr start = 0;
    char const* const name = libdw.symbol(module, i, &symbol, &start, nullptr, nullptr, nullptr);
    if (name == nullptr || *name == '\0' || !isCode(symbol)) continue;
    entries.push_back({start, start + symbol.st_size, 0, i, rankOf(symbol)});
  }
  std::sort(entries.begin(), entries.end(),
            [](Entry const& one, Entry const& other) { return one.start < other.start; });
  std::uint64_t furthest = 0;
  for (Entry& entry : entries) entry.furthest = furthest = std::max(furthest, entry.end);
  entries_ = std::move(entries);
}

bool SymbolIndex::isBetter(Entry const& entry, Entry const& other) {
  if ((entry.rank == 0) != (other.rank == 0)) return entry.rank != 0;
  if (entry.start != other.start) return entry.start > other.start;
  if (entry.end != other.end) return entry.end < other.end;
  if (entry.rank != other.rank) return entry.rank > other.rank;
  return entry.number < other.number;
}

int SymbolIndex::find(std::uint64_t address) const {
  auto entry = std::upper_bound(entries_.begin(), entries_.end(), address,
                                [](std::uint64_t at, Entry const& each) { return at < each.start; });
  Entry const* best = nullptr;
  while (entry != entries_.begin() && (--entry)->furthest > address) {
    if (entry->end > address && (best == nullptr || isBetter(*entry, *best))) best = &*entry;
  }
  return best == nullptr ? -1 : best->number;
}

}  // namespace platform
}  // namespace KV_1_1
