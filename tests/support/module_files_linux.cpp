// SPDX-License-Identifier: MIT
#include <dlfcn.h>
#include <link.h>

#include "tests/support/module_files.h"

namespace KV_1_1 {
namespace testing {

std::filesystem::path programFile() {
  return std::filesystem::read_symlink("/proc/self/exe");
}

std::string moduleFile(std::string const& stem) {
  return stem + ".so";
}

LoadedModule::LoadedModule(std::filesystem::path const& file) : library_(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (library_ == nullptr) {
    ADD_FAILURE() << dlerror();
    return;
  }
  link_map* map = nullptr;
  Dl_info info = {};
  bool const known = dlinfo(library_, RTLD_DI_LINKMAP, &map) == 0 && dladdr(map->l_ld, &info) != 0;
  EXPECT_TRUE(known) << file;
  handle_ = static_cast<HINSTANCE>(info.dli_fbase);
}

LoadedModule::~LoadedModule() {
  if (library_ != nullptr) {
    EXPECT_EQ(dlclose(library_), 0);
  }
}

}  // namespace testing
}  // namespace KV_1_1
