// SPDX-License-Identifier: MIT
#include "tests/support/module_files.h"

namespace KV_1_1 {
namespace testing {

std::filesystem::path programFile() {
  wchar_t path[MAX_PATH];
  return std::wstring(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
}

std::string moduleFile(std::string const& stem) {
  return stem + ".dll";
}

LoadedModule::LoadedModule(std::filesystem::path const& file) {
  // A dot at the end keeps the system from adding ".dll" to a name without one.
  std::wstring const path = file.has_extension() ? file.wstring() : file.wstring() + L'.';
  handle_ = LoadLibraryW(path.c_str());
  library_ = handle_;
  if (handle_ == nullptr) ADD_FAILURE() << "cannot load " << file << ": " << GetLastError();
}

LoadedModule::~LoadedModule() {
  if (handle_ != nullptr) {
    EXPECT_NE(FreeLibrary(handle_), 0);
  }
}

}  // namespace testing
}  // namespace KV_1_1
