// SPDX-License-Identifier: MIT
//
// Which module an address lies in, by the native backend: how the library finds its own instance.
#include <gtest/gtest.h>

#include <memory>

#include "kvbase/platform/module_api.h"

namespace KV_1_1 {
namespace testing {
namespace {

int object = 1;
int const constant = 2;

TEST(ModuleOfAddress, ObjectsOfTheProgramLieInTheProgram) {
  platform::ModuleApi& modules = platform::nativeModules();
  ASSERT_NE(modules.program(), nullptr);
  EXPECT_EQ(modules.moduleOf(&object), modules.program());
  EXPECT_EQ(modules.moduleOf(&constant), modules.program());
}

TEST(ModuleOfAddress, WhatLiesInNoModuleHasNone) {
  platform::ModuleApi& modules = platform::nativeModules();
  int const local = 3;
  auto const allocated = std::make_unique<int>(4);
  EXPECT_EQ(modules.moduleOf(&local), nullptr);
  EXPECT_EQ(modules.moduleOf(allocated.get()), nullptr);
}

TEST(ModuleOfAddress, AProgramHasNoEntryFunction) {
  platform::ModuleApi& modules = platform::nativeModules();
  EXPECT_FALSE(modules.hasEntryFunction(modules.program()));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
