// SPDX-License-Identifier: MIT
//
// Finding the file of a module and the file with its debug data. Only files of this machine are looked at; nothing is
// ever downloaded.
#pragma once

#include <string>
#include <vector>

#include "kvbase/platform/linux/debug/libdw.h"
#include "kvbase/platform/linux/debug/loaded_modules.h"

namespace KV_1_1 {
namespace platform {

// The file that a module was loaded from, open for reading, and its contents. No contents if it is not there any more
// or has been replaced by another one.
struct ModuleFile {
  int descriptor = -1;
  Elf* contents = nullptr;
};
ModuleFile openModuleFile(LibdwFunctions const& libdw, LoadedModule const& module, bool isProgram);

// What tells which file has the debug data of a module.
struct DebugFileRequest {
  std::string file;                    // of the module
  std::string link;                    // the name that the module gives; empty if none
  std::uint32_t checksum = 0;          // of that file, 0 if unknown
  std::vector<unsigned char> buildId;  // of the module, empty if it has none
  std::vector<std::string> folders;    // to be searched besides the usual ones
};
// The file, open for reading, and its path; -1 if there is none that belongs to the module.
int openDebugFile(LibdwFunctions const& libdw, DebugFileRequest const& request, std::string& path);

}  // namespace platform
}  // namespace KV_1_1
