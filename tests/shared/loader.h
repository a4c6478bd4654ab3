// SPDX-License-Identifier: MIT
//
// Loads the shared library that lies beside the test program. Each system has its own source for these.
#pragma once

// The library's handle, or null.
void* loadLibrary();

// True when the system agrees that one use of the library has ended.
bool unloadLibrary(void* library);

bool isLibraryLoaded();
