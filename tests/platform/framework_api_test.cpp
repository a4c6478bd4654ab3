// SPDX-License-Identifier: MIT
//
// The native backend without the application framework, alike on either system.
#include "kvbase/platform/framework_api.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace KV_1_1 {
namespace testing {
namespace {

HINSTANCE instanceOf(std::intptr_t number) {
  return reinterpret_cast<HINSTANCE>(number);
}

platform::FrameworkApi& framework() {
  return platform::nativeFramework();
}

class FrameworkApiTest : public ::testing::Test {
 protected:
  ~FrameworkApiTest() override { framework().setResourceInstance(previous_); }

  HINSTANCE const previous_ = framework().resourceInstance();
};

TEST_F(FrameworkApiTest, InstanceIsTheOneThatWasSetLast) {
  framework().setResourceInstance(instanceOf(1));
  EXPECT_EQ(framework().resourceInstance(), instanceOf(1));
  framework().setResourceInstance(instanceOf(2));
  EXPECT_EQ(framework().resourceInstance(), instanceOf(2));
  framework().setResourceInstance(nullptr);
  EXPECT_EQ(framework().resourceInstance(), nullptr);
}

TEST_F(FrameworkApiTest, ExtensionStartsAndEndsWithoutTouchingTheInstance) {
  framework().setResourceInstance(instanceOf(1));
  EXPECT_TRUE(framework().startExtension(instanceOf(2)));
  EXPECT_EQ(framework().resourceInstance(), instanceOf(1));
  framework().endExtension();
  EXPECT_EQ(framework().resourceInstance(), instanceOf(1));
}

TEST_F(FrameworkApiTest, EndWithoutStartDoesNothing) {
  framework().setResourceInstance(instanceOf(1));
  framework().endExtension();
  framework().endExtension();
  EXPECT_EQ(framework().resourceInstance(), instanceOf(1));
  EXPECT_TRUE(framework().startExtension(instanceOf(2))) << "and an extension can still start";
  framework().endExtension();
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
