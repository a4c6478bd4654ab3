// SPDX-License-Identifier: MIT
//
// Gives the parts of scanshelf that are linked into the suite the texts of the program, in English.
#pragma once

#include <gtest/gtest.h>

#include "examples/scanshelf/scanshelf.h"
#include "kvbase/modules/client_module.h"
#include "kvbase/platform/module_api.h"
#include "tests/support/module_files.h"

namespace scanshelf {

// The base of the suites.
class ScanshelfTest : public ::testing::Test {
 protected:
  ScanshelfTest() : resources_(KV_1_1::platform::modules().loadAsData(fixture(KVW("scanshelf_resources.dll")))) {
    EXPECT_TRUE(owner_.start(resources_)) << "no file scanshelf_resources.dll among the fixtures";
    takeTextsFrom(owner_.module());
  }
  ~ScanshelfTest() override {
    owner_.end();
    EXPECT_TRUE(KV_1_1::platform::modules().freeLibrary(resources_));
  }

  static String fixture(wchar const* name) {
    auto const folder = Directory::fromUTF8(KV_1_1::testing::fixtureFolder().u8string());
    return folder->combine(File::fromString(name))->getFullName();
  }
  Module const& module() { return owner_.module(); }

 private:
  HINSTANCE const resources_;
  ModuleOwner owner_;
};

}  // namespace scanshelf
