// SPDX-License-Identifier: MIT
//
// The source lines of a module, read from its debug data unit by unit, each when it is first needed.
//
// Thread rule: none; it is used under the lock of the session.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include "kvbase/platform/linux/debug/libdw.h"
#include "kvbase/platform/linux/debug/line_table.h"

namespace KV_1_1 {
namespace platform {

class ModuleLines {
 public:
  struct Line {
    std::string file;
    std::uint32_t number;
    std::uint64_t start;
  };

  // Whether the library has what the lines are read with.
  static bool canRead(LibdwFunctions const& libdw);

  // What dwfl_module_getsrc tells of an address, in a fraction of its time. None also if the debug data are of a form
  // that is not read here, so that libdw has to be asked. The module is the same for each call.
  std::optional<Line> find(LibdwFunctions const& libdw, Dwfl_Module* module, std::uint64_t address);

 private:
  void findSections(LibdwFunctions const& libdw, Dwfl_Module* module);
  std::optional<LineTable> const& tableOf(LibdwFunctions const& libdw, Dwarf_Die* unit);

  bool areSectionsFound_ = false;
  LineSections sections_;
  std::optional<LineTable> none_;
  std::unordered_map<Dwarf_Word, std::optional<LineTable>> tables_;  // by the offset
};

}  // namespace platform
}  // namespace KV_1_1
