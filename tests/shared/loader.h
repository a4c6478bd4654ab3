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

// An upper bound of what the run time of C++ leaves behind of each library that it is linked into, in bytes. One that is
// linked with KVBase has a run time of its own.
long long leakOfRunTime(bool isClient);

// The number of files, sections of memory and other objects of the system that the process holds now.
int heldObjects();
