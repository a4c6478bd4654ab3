// SPDX-License-Identifier: MIT
//
// The files of modules, translations and help files. Their names compare without regard to case if there is no file
// with exactly the name; the folders before the name must be exact.
#pragma once

#include "kvbase/platform/linux/files/descriptor.h"
#include "kvbase/platform/linux/files/name_mapping.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

// The path of the system, NUL-terminated, of the item that a path in the library's notation names. Of several names
// that differ only in case the first in the order of bytes is taken. False if there is no such item.
bool findModuleFile(wchar const* path, NativePath& found);

// The path, NUL-terminated, of the file that a name without a folder stands for: one beside the program, or else that of
// a loaded module. A name with a folder is a path. False if there is no such file.
bool findModuleFileByName(wchar const* name, NativePath& found);

// Opens a file for reading; no descriptor if it is not a plain file.
Descriptor openModuleFile(NativePath const& path);

}  // namespace platform
}  // namespace KV_1_1
