// SPDX-License-Identifier: MIT
#include <dlfcn.h>
#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/shared/loader.h"

namespace {

std::string fileOf(std::string const& stem) {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path() / (stem + ".so");
}

}  // namespace

void* loadLibrary(std::string const& stem) {
  return dlopen(fileOf(stem).c_str(), RTLD_NOW | RTLD_LOCAL);
}

bool unloadLibrary(void* library) {
  return dlclose(library) == 0;
}

bool isLibraryLoaded(std::string const& stem) {
  void* const library = dlopen(fileOf(stem).c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (library == nullptr) {
    return false;
  }
  dlclose(library);
  return true;
}

void (*functionOf(void* library, char const* name))() {
  return reinterpret_cast<void (*)()>(dlsym(library, name));
}

long long allocatedBytes() {
  struct mallinfo2 const info = mallinfo2();
  return static_cast<long long>(info.uordblks) + static_cast<long long>(info.hblkhd);
}

long long leakOfRunTime(bool) {
  // Nothing; no block of memory is smaller than this.
  return 16;
}

int heldObjects() {
  std::ifstream maps("/proc/self/maps");
  std::ptrdiff_t const lines = std::count(std::istreambuf_iterator<char>(maps), std::istreambuf_iterator<char>(), '\n');
  std::filesystem::directory_iterator const descriptors("/proc/self/fd");
  return static_cast<int>(lines + std::distance(begin(descriptors), end(descriptors)));
}
