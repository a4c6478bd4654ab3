// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/debug/loaded_modules.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/platform/linux/debug/debug_help.h"
#include "tests/support/module_files.h"

namespace KV_1_1 {
namespace testing {
namespace {

// The module that contains an address; one without a path if there is none.
platform::LoadedModule moduleOf(void const* address) {
  auto const place = reinterpret_cast<std::uint64_t>(address);
  for (platform::LoadedModule const& module : platform::loadedModules()) {
    if (place >= module.start && place < module.end) return module;
  }
  return {};
}

TEST(LinuxLoadedModules, ProgramIsFirst) {
  std::vector<platform::LoadedModule> const modules = platform::loadedModules();
  ASSERT_FALSE(modules.empty());
  EXPECT_EQ(modules[0].start, moduleOf(reinterpret_cast<void const*>(&moduleOf)).start);
}

TEST(LinuxLoadedModules, WhatHasComeWithTheProgramIsPermanent) {
  EXPECT_TRUE(moduleOf(reinterpret_cast<void const*>(&moduleOf)).isPermanent);
  for (char const* name : {"dl_iterate_phdr", "_dl_find_object", "_ZSt9terminatev"}) {
    void const* const function = dlsym(RTLD_DEFAULT, name);
    if (function == nullptr) continue;
    platform::LoadedModule const module = moduleOf(function);
    EXPECT_NE(module.path, "") << name;
    EXPECT_TRUE(module.isPermanent) << module.path;
  }
}

TEST(LinuxLoadedModules, WhatIsLoadedLaterIsNotPermanent) {
  void* const library = dlopen((fixtureFolder() / "walked.so").c_str(), RTLD_NOW);
  ASSERT_NE(library, nullptr);
  platform::LoadedModule const module = moduleOf(dlsym(library, "walkedOuter"));
  EXPECT_NE(module.path, "");
  EXPECT_FALSE(module.isPermanent);
  dlclose(library);
}

// What is known about the program is not looked up again: its file need not be read for it.
TEST(LinuxLoadedModules, WhatIsKnownOfTheProgramOutlivesAnUnloadedLibrary) {
  DebugHelp const help;
  auto const address = reinterpret_cast<std::uint64_t>(&moduleOf) + 1;
  Frame const before = help.describe(address);
  EXPECT_NE(before.name.find("moduleOf"), std::string::npos) << before.name;
  dlclose(dlopen((fixtureFolder() / "walked.so").c_str(), RTLD_NOW));
  Frame const after = help.describe(address);
  EXPECT_EQ(after.name, before.name);
  EXPECT_EQ(after.module, before.module);
  EXPECT_EQ(after.line, before.line);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
