// SPDX-License-Identifier: MIT
#include "kvbase/strings/string_resource.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

#include "kvbase/modules/client_module.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/module_instances.h"
#include "tests/support/narrow_text.h"
#include "tests/support/scripted_modules.h"

namespace KV_1_1 {
namespace testing {
namespace {

char const* const kMissing = "Error loading string resource!";

// A module with a translation: 1 is in both, 2 in the module alone, 3 in the translation alone.
class StringResourceTest : public ::testing::Test {
 protected:
  StringResourceTest() : scope_(modules) {
    setInstances(owner.module(), modules.tool, modules.translation);
    modules.strings[modules.tool] = {{1, KVW("scan")}, {2, KVW("measure")}};
    modules.strings[modules.translation] = {{1, KVW("Aufnahme")}, {3, KVW("nur hier")}};
  }

  static std::string text(String const& string) {
    return string == String::NIL ? "NIL" : narrow(static_cast<wchar const*>(string));
  }
  String load(unsigned int id) { return String::loadFromResource(id, owner.module()); }
  int loads() const { return modules.calls("stringTableEntry"); }

  ScriptedModules modules;
  ModuleOwner owner;

 private:
  platform::ScopedBackend<platform::ModuleApi> scope_;
};

// --- String::loadFromResource -------------------------------------------------------------------------------------------

TEST_F(StringResourceTest, TheTranslationOverridesAnEntry) {
  EXPECT_EQ(text(load(1)), "Aufnahme");
  EXPECT_EQ(loads(), 1);
}

TEST_F(StringResourceTest, AnEntryOfTheModuleAloneIsFoundBehindTheTranslation) {
  EXPECT_EQ(text(load(2)), "measure");
  EXPECT_EQ(loads(), 2);
}

TEST_F(StringResourceTest, AnEntryOfTheTranslationAloneIsFound) {
  EXPECT_EQ(text(load(3)), "nur hier");
}

TEST_F(StringResourceTest, AMissingEntryGivesAText) {
  EXPECT_EQ(text(load(4)), kMissing);
  EXPECT_EQ(loads(), 2);
}

TEST_F(StringResourceTest, AFailingPlatformGivesTheSameText) {
  modules.failures.insert("stringTableEntry");
  EXPECT_EQ(text(load(1)), kMissing);
}

TEST_F(StringResourceTest, WithoutATranslationTheModuleIsAskedTwice) {
  setInstances(owner.module(), modules.tool, modules.tool);
  EXPECT_EQ(text(load(1)), "scan");
  EXPECT_EQ(loads(), 1);
  EXPECT_EQ(text(load(4)), kMissing);
  EXPECT_EQ(loads(), 3);
}

TEST_F(StringResourceTest, AnEmptyEntryIsTheSharedEmptyText) {
  modules.strings[modules.translation][5] = KVW("");
  String const empty = load(5);
  EXPECT_EQ(static_cast<wchar const*>(empty), static_cast<wchar const*>(String::EMPTY));
  EXPECT_NE(empty, String::NIL);
}

TEST_F(StringResourceTest, AnEntryIsTakenWithItsCount) {
  modules.strings[modules.tool][5] = wstring(KVW("a\0b"), 3);
  String const counted = load(5);
  EXPECT_EQ(counted.length(), 3);
  EXPECT_EQ(counted[2], KVW('b'));
}

// --- StringResource -----------------------------------------------------------------------------------------------------

TEST_F(StringResourceTest, ByDefaultItIsNilAndLoadsNothing) {
  StringResource const resource;
  EXPECT_EQ(text(resource), "NIL");
  EXPECT_EQ(loads(), 0);
}

TEST_F(StringResourceTest, NothingIsLoadedBeforeItIsRead) {
  StringResource const resource(1, owner.module());
  EXPECT_EQ(loads(), 0);
  EXPECT_EQ(text(resource), "Aufnahme");
  EXPECT_EQ(loads(), 1);
}

TEST_F(StringResourceTest, TheModulesTextIsReadWhereTheTranslationHasNone) {
  StringResource const resource(2, owner.module());
  EXPECT_EQ(text(resource), "measure");
}

TEST_F(StringResourceTest, ItIsLoadedOnce) {
  StringResource const resource(1, owner.module());
  String const& first = resource;
  modules.strings[modules.translation][1] = KVW("Scan");
  String const& second = resource;
  EXPECT_EQ(&first, &second);
  EXPECT_EQ(text(second), "Aufnahme");
  EXPECT_EQ(loads(), 1);
}

TEST_F(StringResourceTest, TheTextOfAFailedLoadStays) {
  StringResource const resource(4, owner.module());
  EXPECT_EQ(text(resource), kMissing);
  modules.strings[modules.tool][4] = KVW("late");
  EXPECT_EQ(text(resource), kMissing);
  EXPECT_EQ(loads(), 2);
}

TEST_F(StringResourceTest, AnEmptyTextIsLoadedOnceToo) {
  modules.strings[modules.translation][5] = KVW("");
  StringResource const resource(5, owner.module());
  EXPECT_EQ(text(resource), "");
  EXPECT_EQ(text(resource), "");
  EXPECT_EQ(loads(), 1);
}

TEST_F(StringResourceTest, ACopyOfALoadedOneDoesNotLoadAgain) {
  StringResource const resource(1, owner.module());
  String const& loaded = resource;
  StringResource const copy(resource);
  String const& copied = copy;
  EXPECT_EQ(static_cast<wchar const*>(copied), static_cast<wchar const*>(loaded));
  StringResource assigned(2, owner.module());
  EXPECT_EQ(&(assigned = resource), &assigned);
  EXPECT_EQ(text(assigned), "Aufnahme");
  EXPECT_EQ(loads(), 1);
}

TEST_F(StringResourceTest, ACopyOfAnUnloadedOneLoadsItself) {
  StringResource const resource(1, owner.module());
  StringResource const copy(resource);
  EXPECT_EQ(text(copy), "Aufnahme");
  EXPECT_EQ(text(resource), "Aufnahme");
  EXPECT_EQ(loads(), 2);
}

TEST_F(StringResourceTest, AssigningAnUnloadedOneUnloads) {
  StringResource resource(1, owner.module());
  EXPECT_EQ(text(resource), "Aufnahme");
  resource = StringResource(2, owner.module());
  EXPECT_EQ(loads(), 1);
  EXPECT_EQ(text(resource), "measure");
  resource = StringResource();
  EXPECT_EQ(text(resource), "NIL");
}

TEST_F(StringResourceTest, AssigningItToItselfKeepsTheText) {
  StringResource resource(1, owner.module());
  StringResource& same = resource;
  EXPECT_EQ(text(resource), "Aufnahme");
  resource = same;
  EXPECT_EQ(text(resource), "Aufnahme");
  EXPECT_EQ(loads(), 1);
}

TEST_F(StringResourceTest, AfterExhaustedMemoryTheNextReadLoads) {
  StringResource const resource(1, owner.module());
  modules.strings[modules.translation][1] = wstring(100, KVW('x'));
  for (AllocationSweep sweep; sweep.next();) {
    StringResource const attempt(resource);
    int length = -1;
    sweep.run([&] { length = static_cast<String const&>(attempt).length(); });
    EXPECT_EQ(length, sweep.failed() ? -1 : 100);
    EXPECT_EQ(static_cast<String const&>(attempt).length(), 100);
    modules.log = ScriptedModules::Log();
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
