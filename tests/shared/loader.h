// SPDX-License-Identifier: MIT
//
// Loads shared libraries in the folder of the test program, by the stem of their file name; implemented once per system.
#pragma once

#include <string>

// The library's handle, or null.
void* loadLibrary(std::string const& stem = "KVBase");

// Ends one use of the library; true on success.
bool unloadLibrary(void* library);

bool isLibraryLoaded(std::string const& stem = "KVBase");

// A function that the library exports under this name without a mangling; null if there is none.
void (*functionOf(void* library, char const* name))();

// The memory that the process has allocated now, in bytes.
long long allocatedBytes();

// The number of files, sections of memory and other objects of the system that the process holds now.
int heldObjects();
