// SPDX-License-Identifier: MIT
//
// The functions of libdw (elfutils), which stands behind the debug-help library of the seam. It is found at run time
// and may be missing, or lack functions; only its headers are needed to build.
#pragma once

#include <elfutils/libdw.h>
#include <elfutils/libdwelf.h>
#include <elfutils/libdwfl.h>
#include <libelf.h>

namespace KV_1_1 {
namespace platform {

// The name that the loader is given. Tests put another one here.
extern char const* libdwFile;

// Null for each function that the library does not have.
struct LibdwFunctions {
  // Sessions and the modules in them.
  decltype(&::dwfl_begin) begin;
  decltype(&::dwfl_end) end;
  decltype(&::dwfl_report_begin_add) reportBeginAdd;
  decltype(&::dwfl_report_module) reportModule;
  decltype(&::dwfl_report_end) reportEnd;
  // Files.
  decltype(&::elf_version) elfVersion;
  decltype(&::elf_memory) elfOfMemory;
  decltype(&::elf_begin) elfBegin;
  decltype(&::elf_end) elfEnd;
  decltype(&::elf_nextscn) nextSection;
  decltype(&::gelf_getshdr) sectionHeader;
  decltype(&::elf_getshdrstrndx) sectionNames;
  decltype(&::elf_strptr) sectionName;
  decltype(&::elf_getdata) sectionData;
  decltype(&::dwelf_elf_gnu_build_id) buildIdOfElf;
  decltype(&::dwfl_module_build_id) buildId;
  // Names and lines.
  decltype(&::dwfl_module_addrinfo) symbolOfAddress;
  decltype(&::dwfl_module_getsrc) lineOfAddress;
  decltype(&::dwfl_lineinfo) lineInfo;
  decltype(&::dwfl_module_nextcu) nextUnit;
  decltype(&::dwarf_haspc) unitHasAddress;
  decltype(&::dwarf_getsrc_die) lineOfUnit;
  decltype(&::dwarf_linesrc) lineFile;
  decltype(&::dwarf_lineno) lineNumber;
  decltype(&::dwarf_lineaddr) lineAddress;
  decltype(&::dwfl_module_addrdie) unitOfAddress;
  decltype(&::dwarf_attr) attribute;
  decltype(&::dwarf_formudata) attributeNumber;
  decltype(&::dwarf_formstring) attributeText;
  decltype(&::dwfl_module_getdwarf) debugData;
  decltype(&::dwarf_getelf) elfOfDebugData;
  decltype(&::dwfl_module_getsymtab) symbolCount;
  decltype(&::dwfl_module_getsym_info) symbol;
  // Frames.
  decltype(&::dwfl_module_eh_cfi) exceptionFrames;
  decltype(&::dwarf_cfi_addrframe) frameOfAddress;
  decltype(&::dwarf_frame_info) frameInfo;
  decltype(&::dwarf_frame_cfa) frameCfa;
  decltype(&::dwarf_frame_register) frameRegister;
  decltype(&::dwfl_attach_state) attachState;
  decltype(&::dwfl_getthread_frames) walkThread;
  decltype(&::dwfl_thread_state_registers) setRegisters;
  decltype(&::dwfl_frame_pc) framePc;
  decltype(&::dwfl_frame_reg) frameRegisterValue;

  bool canList() const;         // sessions and modules
  bool canName() const;         // names of functions
  bool canLine() const;         // source lines
  bool canSearchUnits() const;  // source lines of modules without a table of units by address
  bool canStep() const;         // frames by the general way
  bool canLearn() const;        // frames by rules that are remembered
};

// Loads the library and looks up its functions. Null if it is not there. Must be released with dlclose.
void* openLibdw(LibdwFunctions& functions);

}  // namespace platform
}  // namespace KV_1_1
