// SPDX-License-Identifier: MIT
//
// Programs and libraries of the system as modules. The handle of a module is its load address. Its resources are a
// Windows image in an ELF note (owner "KVBase", type 1).
//
// Thread rule: any function may be called from any thread.
#pragma once

#include "kvbase/platform/linux/files/name_mapping.h"
#include "kvbase/platform/linux/modules/byte_range.h"
#include "kvbase/platform/linux/modules/pe_resources.h"
#include "kvbase/platform/types.h"

namespace KV_1_1 {
namespace platform {

HINSTANCE programModule();

// The loaded module with a segment that holds the address; null if there is none.
HINSTANCE moduleHolding(void const* address);

// The absolute path of a loaded module in plain form, without "//", "." and "..", NUL-terminated. A file that has been
// removed since has the path that it had. False if there is no such module or it comes from no file.
bool pathOfModule(HINSTANCE module, NativePath& path);

// The path of a loaded module, NUL-terminated, by its file name, which compares without regard to case. False if none
// has this name.
bool pathOfModuleNamed(wchar const* name, NativePath& path);

// The resources of a loaded module; null if it is not loaded or has none. They belong to the calling thread and stay
// until its next call.
PeResources* resourcesOfModule(HINSTANCE module);

// The image in an ELF file of 64 bits that need not be loaded. False if it is not such a file, or has no image.
bool findEmbeddedImage(ByteRange const& file, ByteRange& image);

}  // namespace platform
}  // namespace KV_1_1
