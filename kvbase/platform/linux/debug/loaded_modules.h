// SPDX-License-Identifier: MIT
//
// The modules of this process as the loader knows them.
//
// Thread rule: any function may be called from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace KV_1_1 {
namespace platform {

// How many modules have been loaded and unloaded so far.
struct LoadCounts {
  unsigned long long added = 0;
  unsigned long long removed = 0;
};
LoadCounts loadCounts();

struct LoadedModule {
  std::uint64_t start = 0;  // the load address, which is the handle of the module
  std::uint64_t end = 0;    // both are whole pages
  std::string path;         // absolute; a name without folder if the module comes from no file
  std::vector<unsigned char> buildId;
  bool isPermanent = false;  // never unloaded as long as this code runs
};

// All modules, the program first.
std::vector<LoadedModule> loadedModules();

// The file of a loaded module, put together from its segments in memory: without sections, but with what the loader and
// the unwinder need. Empty if no module starts there.
std::vector<char> imageOfModule(std::uint64_t start);

}  // namespace platform
}  // namespace KV_1_1
