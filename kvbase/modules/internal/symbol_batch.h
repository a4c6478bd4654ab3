// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory_resource>
#include <vector>

#include "kvbase/strings/internal/text_view.h"
#include "kvbase/strings/kv_string.h"
#include "kvbase/strings/string_less.h"

namespace KV_1_1 {

// The definitions of one text on their way into the containers of an empty SymbolTable. They are collected in a hash table,
// sorted once and put behind each other, which takes a third of the time of so many searches in a growing tree.
//
// Names compare as by StringLess2.
// Failure: std::bad_alloc; of the definition that was to be added nothing is in the batch.
class SymbolBatch {
 public:
  SymbolBatch() = default;
  SymbolBatch(SymbolBatch const&) = delete;
  SymbolBatch& operator=(SymbolBatch const&) = delete;

  // False if the name is there already; its first number stays.
  // REQUIRES: the name holds no NUL.
  bool add(TextView name, unsigned int number);
  // Whether the name is there; if so, stores its number.
  bool find(TextView name, unsigned int& number);

  // Fills containers that are empty. The batch is used up, also if it fails, and the containers are then unchanged.
  void moveInto(std::map<String, unsigned int, StringLess2>& byName, std::multimap<unsigned int, String>& byNumber);

 private:
  // The order and the equality of names are those of their keys: bytes of the lower-case units, eight of them in a chunk,
  // the first one in its highest bits. Zeros fill up the last chunk, and there is one at least.
  struct Symbol {
    String name;
    unsigned int number;
    std::uint32_t key;  // index of its first chunk
  };
  struct Slot {
    std::uint32_t hash;
    std::uint32_t symbol;  // index + 1; 0 in a free slot
  };
  struct Sorted {
    std::uint64_t chunk;
    std::uint32_t symbol;
    std::uint32_t key;  // of the symbol
  };

  std::uint32_t appendKey(TextView name);
  bool isKeyOf(Symbol const& symbol, std::size_t key) const;
  Slot& slotOf(std::uint32_t hash, std::size_t key);
  void makeRoom();
  void sortByName(Sorted* first, Sorted* last, std::size_t depth) const;

  // Room for the symbols of an ordinary module; those of a larger one go on in the heap. Blocks of this size would make the
  // heap tidy up each time.
  alignas(std::max_align_t) char room_[16384];
  std::pmr::monotonic_buffer_resource memory_{room_, sizeof room_};
  std::pmr::vector<Symbol> symbols_{&memory_};
  std::pmr::vector<std::uint64_t> keys_{&memory_};
  std::pmr::vector<Slot> slots_{&memory_};  // a power of two of them, or none; half of them are free at least
};

}  // namespace KV_1_1
