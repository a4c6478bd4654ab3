// SPDX-License-Identifier: MIT
#include <dlfcn.h>

#include <filesystem>
#include <string>

#include "tests/shared/loader.h"

namespace {

std::string const& libraryFile() {
  static std::string const file = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "KVBase.so";
  return file;
}

}  // namespace

void* loadLibrary() {
  return dlopen(libraryFile().c_str(), RTLD_NOW | RTLD_LOCAL);
}

bool unloadLibrary(void* library) {
  return dlclose(library) == 0;
}

bool isLibraryLoaded() {
  void* const library = dlopen(libraryFile().c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (library == nullptr) {
    return false;
  }
  dlclose(library);
  return true;
}
