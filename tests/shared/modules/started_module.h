// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>

#include "kvbase/kvbase.h"
#include "kvbase/modules/client_module.h"
#include "tests/support/module_files.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {

// The stem of this program, under which its settings stand.
inline std::string const kProgram = "kvbase_module_tests";

// A library that is loaded, and started as a module of the family, for a scope. Its own code does not take part.
class StartedModule {
 public:
  explicit StartedModule(std::filesystem::path const& file)
      : library_(file), started_(owner_.start(library_.handle())) {
    EXPECT_TRUE(started_) << file;
  }
  ~StartedModule() { owner_.end(); }
  StartedModule(StartedModule const&) = delete;
  StartedModule& operator=(StartedModule const&) = delete;

  ModuleOwner& owner() { return owner_; }
  Module const& module() { return owner_.module(); }
  HINSTANCE instance() const { return library_.handle(); }

 private:
  LoadedModule library_;
  ModuleOwner owner_;
  bool const started_;
};

inline std::string narrow(String const& text) {
  return narrow(wstring(static_cast<wchar const*>(text)));
}

// What a text is in the string tables of a module and of its translation.
inline std::string textOf(Module const& module, unsigned int id) {
  return narrow(String::loadFromResource(id, module));
}

}  // namespace testing
}  // namespace KV_1_1
