// SPDX-License-Identifier: MIT
#include "kvbase/modules/scoped_resource_domain.h"

#include <gtest/gtest.h>

#include "kvbase/modules/client_module.h"
#include "tests/support/module_instances.h"
#include "tests/support/scripted_framework.h"
#include "tests/support/scripted_modules.h"

namespace KV_1_1 {
namespace testing {
namespace {

static_assert(sizeof(ScopedResourceDomain) == sizeof(HINSTANCE), "the saved instance and nothing else");

class ScopedResourceDomainTest : public ::testing::Test {
 protected:
  ScopedResourceDomainTest() : scope_(framework) {
    setInstances(owner.module(), modules.tool, modules.translation);
    framework.current = before;
  }

  ScriptedModules modules;
  ScriptedFramework framework;
  ModuleOwner owner;
  HINSTANCE const before = modules.programHandle;

 private:
  platform::ScopedBackend<platform::FrameworkApi> scope_;
};

TEST_F(ScopedResourceDomainTest, LocalisedItIsTheTranslation) {
  {
    ScopedResourceDomain const domain(owner.module(), true);
    EXPECT_EQ(framework.current, modules.translation);
  }
  EXPECT_EQ(framework.current, before);
}

TEST_F(ScopedResourceDomainTest, OtherwiseItIsTheModule) {
  {
    ScopedResourceDomain const domain(owner.module(), false);
    EXPECT_EQ(framework.current, modules.tool);
  }
  EXPECT_EQ(framework.current, before);
}

TEST_F(ScopedResourceDomainTest, ByDefaultItIsTheLibraryWithItsTranslation) {
  // The library is a part of this program, which has no translation, so both instances are the program's otherwise.
  HINSTANCE const program = platform::nativeModules().program();
  setInstances(getLibraryModule(), program, modules.translation);
  {
    ScopedResourceDomain const domain;
    EXPECT_EQ(framework.current, modules.translation);
  }
  setInstances(getLibraryModule(), program, program);
  EXPECT_EQ(framework.current, before);
}

TEST_F(ScopedResourceDomainTest, ServesAsADefaultArgument) {
  struct Dialog {
    static HINSTANCE show(platform::FrameworkApi& framework, ScopedResourceDomain const& = ScopedResourceDomain()) {
      return framework.resourceInstance();
    }
  };
  EXPECT_EQ(Dialog::show(framework), platform::nativeModules().program());
  EXPECT_EQ(Dialog::show(framework, ScopedResourceDomain(owner.module(), true)), modules.translation);
  EXPECT_EQ(framework.current, before);
}

TEST_F(ScopedResourceDomainTest, ScopesNest) {
  {
    ScopedResourceDomain const outer(owner.module(), true);
    {
      ScopedResourceDomain const inner(owner.module(), false);
      EXPECT_EQ(framework.current, modules.tool);
      {
        ScopedResourceDomain const innermost;
        EXPECT_EQ(framework.current, platform::nativeModules().program());
      }
      EXPECT_EQ(framework.current, modules.tool);
    }
    EXPECT_EQ(framework.current, modules.translation);
  }
  EXPECT_EQ(framework.current, before);
}

TEST_F(ScopedResourceDomainTest, PutsBackWhatItFoundWhateverWasSetMeanwhile) {
  {
    ScopedResourceDomain const domain(owner.module(), true);
    framework.current = modules.tool;
  }
  EXPECT_EQ(framework.current, before);
}

TEST_F(ScopedResourceDomainTest, PutsBackNull) {
  framework.current = nullptr;
  { ScopedResourceDomain const domain(owner.module(), true); }
  EXPECT_EQ(framework.current, nullptr);
}

TEST_F(ScopedResourceDomainTest, AModuleThatWasNotStartedGivesNull) {
  ModuleOwner idle;
  {
    ScopedResourceDomain const domain(idle.module(), true);
    EXPECT_EQ(framework.current, nullptr);
  }
  EXPECT_EQ(framework.current, before);
}

TEST(ScopedResourceDomainWithoutFramework, SetsAPlainSlot) {
  ScriptedModules const modules;
  ModuleOwner owner;
  setInstances(owner.module(), modules.tool, modules.translation);
  HINSTANCE const before = platform::framework().resourceInstance();
  {
    ScopedResourceDomain const domain(owner.module(), false);
    EXPECT_EQ(platform::framework().resourceInstance(), modules.tool);
  }
  EXPECT_EQ(platform::framework().resourceInstance(), before);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
