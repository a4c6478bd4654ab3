// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/debug/module_lines.h"

#include <dwarf.h>

#include <string_view>

namespace KV_1_1 {
namespace platform {

bool ModuleLines::canRead(LibdwFunctions const& libdw) {
  return libdw.unitOfAddress != nullptr && libdw.attribute != nullptr && libdw.attributeNumber != nullptr &&
         libdw.attributeText != nullptr && libdw.debugData != nullptr && libdw.elfOfDebugData != nullptr &&
         libdw.nextSection != nullptr && libdw.sectionHeader != nullptr && libdw.sectionNames != nullptr &&
         libdw.sectionName != nullptr && libdw.sectionData != nullptr;
}

// The debug data have been opened by then, and sections that were compressed are no longer.
void ModuleLines::findSections(LibdwFunctions const& libdw, Dwfl_Module* module) {
  areSectionsFound_ = true;
  Dwarf_Addr bias = 0;
  Dwarf* const debugData = libdw.debugData(module, &bias);
  Elf* const file = debugData == nullptr ? nullptr : libdw.elfOfDebugData(debugData);
  std::size_t names = 0;
  if (file == nullptr || libdw.sectionNames(file, &names) != 0) return;
  for (Elf_Scn* section = nullptr; (section = libdw.nextSection(file, section)) != nullptr;) {
    GElf_Shdr header;
    bool const isPlain = libdw.sectionHeader(section, &header) != nullptr && (header.sh_flags & SHF_COMPRESSED) == 0;
    char const* const name = isPlain ? libdw.sectionName(file, names, header.sh_name) : nullptr;
    std::string_view const found = name == nullptr ? "" : name;
    Bytes* const place = found == ".debug_line"       ? &sections_.lines
                         : found == ".debug_line_str" ? &sections_.lineStrings
                         : found == ".debug_str"      ? &sections_.strings
                                                      : nullptr;
    Elf_Data const* const data = place == nullptr ? nullptr : libdw.sectionData(section, nullptr);
    if (data == nullptr || data->d_buf == nullptr) continue;
    *place = Bytes(static_cast<unsigned char const*>(data->d_buf), data->d_size);
  }
}

std::optional<LineTable> const& ModuleLines::tableOf(LibdwFunctions const& libdw, Dwarf_Die* unit) {
  Dwarf_Attribute attribute;
  Dwarf_Word offset = 0;
  bool const hasTable =
      libdw.attribute(unit, DW_AT_stmt_list, &attribute) != nullptr && libdw.attributeNumber(&attribute, &offset) == 0;
  if (!hasTable) return none_;
  auto const known = tables_.find(offset);
  if (known != tables_.end()) return known->second;
  bool const hasFolder = libdw.attribute(unit, DW_AT_comp_dir, &attribute) != nullptr;
  char const* const folder = hasFolder ? libdw.attributeText(&attribute) : nullptr;
  auto table = LineTable::read(sections_, offset, folder == nullptr ? std::string_view() : folder);
  return tables_.emplace(offset, std::move(table)).first->second;
}

std::optional<ModuleLines::Line> ModuleLines::find(LibdwFunctions const& libdw, Dwfl_Module* module,
                                                   std::uint64_t address) {
  Dwarf_Addr bias = 0;
  Dwarf_Die* const unit = libdw.unitOfAddress(module, address, &bias);
  if (unit == nullptr) return std::nullopt;
  if (!areSectionsFound_) findSections(libdw, module);
  std::optional<LineTable> const& table = tableOf(libdw, unit);
  auto const row = table.has_value() ? table->find(address - bias) : std::nullopt;
  auto const file = row.has_value() ? table->file(row->file) : std::nullopt;
  if (!file.has_value()) return std::nullopt;
  return Line{*file, row->line, row->address + bias};
}

}  // namespace platform
}  // namespace KV_1_1
