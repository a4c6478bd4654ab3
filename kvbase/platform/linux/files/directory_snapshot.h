// SPDX-License-Identifier: MIT
//
// A snapshot of those entries of a directory that match a pattern. Changes of the directory during a search have no
// effect. The order is ".", "..", then by name in upper case, so each search of an unchanged directory has the same.
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
    std::uint64_t key;   // some units of the name in upper case; decides most comparisons
    std::uint32_t name;  // offset in names_
    std::uint16_t size;
    std::uint16_t attributes;
  };

  bool readAll(int directory, Wildcard const& wildcard);
  void add(int directory, char const* name, unsigned char type, Wildcard const& wildcard);
  void sort();
  bool isBefore(Entry const& a, Entry const& b) const;

  std::vector<wchar> names_;  // the names of all entries, concatenated
  std::size_t namesUsed_ = 0;
  std::vector<Entry> entries_;
  std::size_t next_ = 0;
};

}  // namespace platform
}  // namespace KV_1_1
