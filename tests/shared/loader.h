// SPDX-License-Identifier: MIT
//
// Loads the shared library in the folder of the test program; implemented once per system.
#pragma once

// The library's handle, or null.
void* loadLibrary();

// Ends one use of the library; true on success.
bool unloadLibrary(void* library);

bool isLibraryLoaded();
