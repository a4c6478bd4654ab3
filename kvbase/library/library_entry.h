// SPDX-License-Identifier: MIT
//
// What the entry function of the library does: DllMain of the shared library on Windows; elsewhere, and where the library
// is linked into a program, the last of the globals calls it.
//
// Thread rule: as for any entry function, the system serialises the calls.
#pragma once

#include "kvbase/export.h"
#include "kvbase/modules/client_module.h"
#include "kvbase/platform/types.h"

namespace KV_1_1 {
namespace library {

// Starts the library's Module, so that translation, name and symbols are there for whatever follows, and then registers
// the library with the application framework. False if either fails, or an exception comes out of the start of the
// Module; the caller must see to it that detach is called, which is safe after a start that was only half done.
KVBASE_LOCAL bool attach(HINSTANCE instance) noexcept;

// Leaves the framework and ends the Module.
KVBASE_LOCAL void detach() noexcept;

}  // namespace library
}  // namespace KV_1_1
