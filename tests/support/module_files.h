// SPDX-License-Identifier: MIT
//
// The modules and translation libraries that the build makes for tests (tests/fixtures), and loading of libraries without
// the library's help.
//
//   TempFolder folder;
//   copyModule(folder, "tool", "sub/tool.two");               // sub/tool.two.dll or sub/tool.two.so
//   copyTranslation(folder, "toolabc", "sub/tool.twoabc");    // sub/tool.twoabc.dll on every system
//   LoadedModule const tool(folder.path(moduleFile("sub/tool.two")));
//   tool.handle()
#pragma once

#include <filesystem>
#include <string>

#include "kvbase/platform/types.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {

// The file of the running program.
std::filesystem::path programFile();

// The file name of a library of this system.
std::string moduleFile(std::string const& stem);

// The folder with all fixtures.
inline std::filesystem::path fixtureFolder() {
  return programFile().parent_path().parent_path() / "fixtures";
}

inline void copyFixture(TempFolder const& folder, std::string const& from, std::string const& to) {
  std::filesystem::create_directories(folder.path(to).parent_path());
  std::filesystem::copy_file(fixtureFolder() / from, folder.path(to));
}
inline void copyModule(TempFolder const& folder, std::string const& name, std::string const& stem) {
  copyFixture(folder, moduleFile(name), moduleFile(stem));
}
inline void copyTranslation(TempFolder const& folder, std::string const& name, std::string const& stem) {
  copyFixture(folder, name + ".dll", stem + ".dll");
}

// A library that is loaded, with its code, for a scope. The test fails if it cannot be loaded.
class LoadedModule {
 public:
  explicit LoadedModule(std::filesystem::path const& file);
  ~LoadedModule();
  LoadedModule(LoadedModule const&) = delete;
  LoadedModule& operator=(LoadedModule const&) = delete;

  // As platform::ModuleApi knows it.
  HINSTANCE handle() const { return handle_; }

 private:
  void* library_;
  HINSTANCE handle_ = nullptr;
};

}  // namespace testing
}  // namespace KV_1_1
