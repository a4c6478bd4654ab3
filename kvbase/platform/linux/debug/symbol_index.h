// SPDX-License-Identifier: MIT
//
// The symbols of a module in the order of their addresses. libdw itself looks at every symbol for each address.
//
// Thread rule: none; an index is used under the lock of the session.
#pragma once

#include <cstdint>
#include <vector>

#include "kvbase/platform/linux/debug/libdw.h"

namespace KV_1_1 {
namespace platform {

class SymbolIndex {
 public:
  // Whether the library has what the index is read with.
  static bool canRead(LibdwFunctions const& libdw);

  // Reads all symbols that have a size.
  void read(LibdwFunctions const& libdw, Dwfl_Module* module);

  // The number of the symbol, for dwfl_module_getsym_info, whose range has the address in it; -1 if there is none. Of
  // several, one that other modules see goes before a local one, then the one that starts closest, then the shortest.
  int find(std::uint64_t address) const;

 private:
  struct Entry {
    std::uint64_t start;
    std::uint64_t end;
    std::uint64_t furthest;  // the largest `end` up to this entry
    int number;
    int rank;  // 0 for a local symbol, more for one that is seen from outside
  };
  static bool isBetter(Entry const& entry, Entry const& other);

  std::vector<Entry> entries_;  // by start
};

}  // namespace platform
}  // namespace KV_1_1
