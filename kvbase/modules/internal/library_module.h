// SPDX-License-Identifier: MIT
#pragma once

namespace KV_1_1 {

class Module;

// The library's own module. It is built at the first call, from any thread, and taken down with the library.
Module& getLibraryModule();

}  // namespace KV_1_1
