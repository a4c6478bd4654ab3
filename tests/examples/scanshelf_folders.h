// SPDX-License-Identifier: MIT
//
// What the tests of scanshelf do with temporary folders.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "examples/scanshelf/scanshelf.h"
#include "tests/support/temp_folder.h"

namespace scanshelf {

inline SmartPtr<Directory const> directoryOf(KV_1_1::testing::TempFolder const& folder, wchar const* below = KVW("")) {
  return Directory::fromString(folder.text(below).c_str());
}

inline void ignoreProgress(Totals const&) {}

// The items below a folder, with slashes.
inline std::vector<std::string> itemsBelow(std::filesystem::path const& folder) {
  std::vector<std::string> names;
  for (auto const& entry : std::filesystem::recursive_directory_iterator(folder)) {
    names.push_back(entry.path().lexically_relative(folder).generic_u8string());
  }
  return names;
}

}  // namespace scanshelf
