// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/debug/libdw.h"

#include <dlfcn.h>

#include <type_traits>

namespace KV_1_1 {
namespace platform {

char const* libdwFile = "libdw.so.1";

bool LibdwFunctions::canList() const {
  return begin != nullptr && end != nullptr && reportBeginAdd != nullptr && reportModule != nullptr &&
         reportEnd != nullptr && elfVersion != nullptr && elfOfMemory != nullptr && elfBegin != nullptr &&
         elfEnd != nullptr && buildIdOfElf != nullptr && buildId != nullptr;
}

bool LibdwFunctions::canName() const {
  return canList() && symbolOfAddress != nullptr;
}

bool LibdwFunctions::canLine() const {
  return canList() && lineOfAddress != nullptr && lineInfo != nullptr;
}

bool LibdwFunctions::canSearchUnits() const {
  return nextUnit != nullptr && unitHasAddress != nullptr && lineOfUnit != nullptr && lineFile != nullptr &&
         lineNumber != nullptr && lineAddress != nullptr;
}

// Without frameRegisterValue, which is younger than the rest, the general way finds only program counters.
bool LibdwFunctions::canStep() const {
  return canList() && attachState != nullptr && walkThread != nullptr && setRegisters != nullptr && framePc != nullptr;
}

bool LibdwFunctions::canLearn() const {
  return exceptionFrames != nullptr && frameOfAddress != nullptr && frameInfo != nullptr && frameCfa != nullptr &&
         frameRegister != nullptr;
}

void* openLibdw(LibdwFunctions& functions) {
  void* const library = dlopen(libdwFile, RTLD_NOW | RTLD_LOCAL);
  functions = LibdwFunctions();
  if (library == nullptr) return nullptr;
  auto const find = [library](auto& function, char const* name) {
    function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(dlsym(library, name));
  };
  find(functions.begin, "dwfl_begin");
  find(functions.end, "dwfl_end");
  find(functions.reportBeginAdd, "dwfl_report_begin_add");
  find(functions.reportModule, "dwfl_report_module");
  find(functions.reportEnd, "dwfl_report_end");
  find(functions.elfVersion, "elf_version");
  find(functions.elfOfMemory, "elf_memory");
  find(functions.elfBegin, "elf_begin");
  find(functions.elfEnd, "elf_end");
  find(functions.nextSection, "elf_nextscn");
  find(functions.sectionHeader, "gelf_getshdr");
  find(functions.sectionNames, "elf_getshdrstrndx");
  find(functions.sectionName, "elf_strptr");
  find(functions.sectionData, "elf_getdata");
  find(functions.buildIdOfElf, "dwelf_elf_gnu_build_id");
  find(functions.buildId, "dwfl_module_build_id");
  find(functions.symbolOfAddress, "dwfl_module_addrinfo");
  find(functions.lineOfAddress, "dwfl_module_getsrc");
  find(functions.lineInfo, "dwfl_lineinfo");
  find(functions.nextUnit, "dwfl_module_nextcu");
  find(functions.unitHasAddress, "dwarf_haspc");
  find(functions.lineOfUnit, "dwarf_getsrc_die");
  find(functions.lineFile, "dwarf_linesrc");
  find(functions.lineNumber, "dwarf_lineno");
  find(functions.lineAddress, "dwarf_lineaddr");
  find(functions.unitOfAddress, "dwfl_module_addrdie");
  find(functions.attribute, "dwarf_attr");
  find(functions.attributeNumber, "dwarf_formudata");
  find(functions.attributeText, "dwarf_formstring");
  find(functions.debugData, "dwfl_module_getdwarf");
  find(functions.elfOfDebugData, "dwarf_getelf");
  find(functions.symbolCount, "dwfl_module_getsymtab");
  find(functions.symbol, "dwfl_module_getsym_info");
  find(functions.exceptionFrames, "dwfl_module_eh_cfi");
  find(functions.frameOfAddress, "dwarf_cfi_addrframe");
  find(functions.frameInfo, "dwarf_frame_info");
  find(functions.frameCfa, "dwarf_frame_cfa");
  find(functions.frameRegister, "dwarf_frame_register");
  find(functions.attachState, "dwfl_attach_state");
  find(functions.walkThread, "dwfl_getthread_frames");
  find(functions.setRegisters, "dwfl_thread_state_registers");
  find(functions.framePc, "dwfl_frame_pc");
  find(functions.frameRegisterValue, "dwfl_frame_reg");
  return library;
}

}  // namespace platform
}  // namespace KV_1_1
