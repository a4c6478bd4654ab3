// SPDX-License-Identifier: MIT
//
// A search through one directory: a snapshot of the entries that match, taken when it starts, so that what is made or
// removed meanwhile disturbs nothing. Sorted: ".", "..", then by name in upper case, so that each search of an
// unchanged directory gives the same order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "kvbase/platform/file_api.h"
#include "kvbase/platform/linux/files/wildcard.h"

namespace KV_1_1 {
namespace platform {

class DirectorySnapshot {
 public:
  // Reads a directory, named by a NUL-terminated path of the system. False, with the last error, if it cannot be read.
  bool read(char const* directory, Wildcard const& wildcard);

  // Fills `data` with the next entry; false, with kNoMoreFiles, if there is none.
  bool next(FindData& data);

 private:
  struct Entry {
    std::uint64_t key;   // some units of the name in upper case: settles most comparisons
    std::uint32_t name;  // offset in names_
    std::uint16_t size;
    std::uint16_t attributes;
  };

  bool readAll(int directory, Wildcard const& wildcard);
  void add(int directory, char const* name, unsigned char type, Wildcard const& wildcard);
  void sort();
  bool isBefore(Entry const& a, Entry const& b) const;

  std::vector<wchar> names_;  // of all entries, one behind the other
  std::size_t namesUsed_ = 0;
  std::vector<Entry> entries_;
  std::size_t next_ = 0;
};

}  // namespace platform
}  // namespace KV_1_1
