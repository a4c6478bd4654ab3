// SPDX-License-Identifier: MIT
//
// The parts of client_module.h one by one, in a program that has no entry function. Its Module is not started.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kvbase/kvbase.h"
#include "kvbase/modules/client_module.h"
#include "kvbase/platform/module_api.h"
#include "tests/support/scripted_modules.h"

namespace KV_1_1 {
namespace testing {
namespace client_class {

using Log = std::vector<std::string>;

Log& log() {
  static Log& lines = *new Log;
  return lines;
}

class Plain : public BaseNode {
 public:
  KVBASE_DECLARE_CLASS(Plain, );
};

class Hooked : public Plain {
 public:
  KVBASE_DECLARE_CLASS(Hooked, );
};

class Creatable : public Hooked {
 public:
  KVBASE_DECLARE_CLASS(Creatable, );
};

void Hooked::initStatics() {
  log().push_back("Hooked starts");
}
void Hooked::clearStatics() {
  log().push_back("Hooked ends");
}
void Creatable::initStatics() {
  log().push_back("Creatable starts");
}
void Creatable::clearStatics() {
  log().push_back("Creatable ends");
}

KVBASE_REGISTER_CLASS(Plain, BaseNode)
KVBASE_REGISTER_CLASS_WITH_HOOKS(Hooked, Plain)
KVBASE_REGISTER_CREATABLE_CLASS(Creatable, Hooked)

static_assert(sizeof(HookedRecord<Hooked>) == sizeof(mZClass), "a record has no further field");
static_assert(sizeof(CreatableRecord<Creatable>) == sizeof(mZClass), "a record has no further field");

TEST(ClientClass, HasItsNameParentAndModule) {
  EXPECT_EQ(wstring(Plain::Class()->name()), KVW("Plain"));
  EXPECT_EQ(Plain::Class(), Plain::Class());
  EXPECT_EQ(Creatable::Class()->parent(), Hooked::Class());
  EXPECT_EQ(&Creatable::Class()->module(), &getLibraryModule());
  EXPECT_NE(&getLibraryModule(), &BaseNode::Class()->module());
  EXPECT_TRUE(Creatable::Class()->isDerivedFrom(Plain::Class()));
}

TEST(ClientClass, WithoutHooksIgnoresStartAndEnd) {
  log().clear();
  Plain::Class()->initClassStatics();
  Plain::Class()->clearClassStatics();
  EXPECT_EQ(log(), Log());
}

TEST(ClientClass, WithHooksForwardsStartAndEndToThem) {
  log().clear();
  Hooked::Class()->initClassStatics();
  Hooked::Class()->clearClassStatics();
  Creatable::Class()->initClassStatics();
  Creatable::Class()->clearClassStatics();
  EXPECT_EQ(log(), Log({"Hooked starts", "Hooked ends", "Creatable starts", "Creatable ends"}));
}

TEST(ClientClass, CreatesObjectsOnlyIfItSaysSo) {
  EXPECT_EQ(Plain::Class()->create(), nullptr);
  EXPECT_EQ(Hooked::Class()->create(), nullptr);
  SmartPtr<BaseNode> const made(Creatable::Class()->create());
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(made->getClassType(), Creatable::Class());
  EXPECT_EQ(made->getRefCounter(), 1u);
}

// --- The entry object ---

bool attaches = true;

bool attach(HINSTANCE instance) noexcept {
  log().push_back(instance == platform::modules().program() ? "attach program" : "attach library");
  return attaches;
}
void detach() noexcept {
  log().push_back("detach");
}

class ModuleEntryTest : public ::testing::Test {
 protected:
  ModuleEntryTest() {
    log().clear();
    attaches = true;
  }

  // A library, for which this system calls an entry function.
  struct LibraryModules final : ScriptedModules {
    HINSTANCE moduleOf(void const*) override { return translation; }
  };
};

TEST_F(ModuleEntryTest, OfAProgramAttachesWithItsInstanceAndDetachesAtTheEnd) {
  ScriptedModules modules;
  platform::ScopedBackend<platform::ModuleApi> const scope(modules);
  {
    ModuleEntry const entry(&attach, &detach);
    EXPECT_EQ(log(), Log({"attach program"}));
  }
  EXPECT_EQ(log(), Log({"attach program", "detach"}));
}

TEST_F(ModuleEntryTest, ThatIsRefusedDetachesAtOnceAndOnlyOnce) {
  ScriptedModules modules;
  platform::ScopedBackend<platform::ModuleApi> const scope(modules);
  attaches = false;
  {
    ModuleEntry const entry(&attach, &detach);
    EXPECT_EQ(log(), Log({"attach program", "detach"}));
  }
  EXPECT_EQ(log(), Log({"attach program", "detach"}));
}

TEST_F(ModuleEntryTest, OfALibraryThatTheSystemCallsDoesNothing) {
  LibraryModules modules;
  platform::ScopedBackend<platform::ModuleApi> const scope(modules);
  { ModuleEntry const entry(&attach, &detach); }
  EXPECT_EQ(log(), Log());
}

}  // namespace client_class
}  // namespace testing
}  // namespace KV_1_1
