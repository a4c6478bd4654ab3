// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "kvbase/modules/client_module.h"
#include "kvbase/modules/symbol_table.h"
#include "tests/languages/language_world.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

// A program that has not been started, in a world where it has symbols.
class ProgramStartTest : public ::testing::Test {
 protected:
  ProgramStartTest() {
    world.modules.resources[world.modules.program()][{KVW("METADATA"), KVW("RESOURCE.H")}][1031] = "#define A 1\n";
  }
  std::string name() { return narrow(static_cast<wchar const*>(owner.module().getModuleName())); }
  unsigned int symbol() { return owner.module().getResourceSymbols().lookupSymbol(KVW("A")); }

  LanguageWorld world;
  ModuleOwner owner;
};

TEST_F(ProgramStartTest, StartsWithTheProgramAndEndsWithTheScope) {
  {
    ProgramStart const started(owner);
    EXPECT_EQ(symbol(), 1u);
  }
  EXPECT_EQ(&owner.module().getResourceSymbols(), &SymbolTable::EMPTY);
  EXPECT_EQ(name(), "prog");
}

TEST_F(ProgramStartTest, CanBeStartedAgain) {
  for (int i = 0; i < 2; ++i) {
    ProgramStart const started(owner);
    EXPECT_EQ(symbol(), 1u);
  }
}

TEST_F(ProgramStartTest, EndsAModuleThatHadBeenStarted) {
  owner.start(world.modules.program());
  { ProgramStart const started(owner); }
  EXPECT_EQ(&owner.module().getResourceSymbols(), &SymbolTable::EMPTY);
}

TEST_F(ProgramStartTest, AFaultOfTheVersionDataLeavesItToBeStartedAgain) {
  world.setLanguages(kGerman, kGerman, kGerman, kGerman);
  world.setVersion(KVW("prog.exe"), 0x10000, 1);
  EXPECT_THROW(ProgramStart const started(owner), std::runtime_error);
  EXPECT_EQ(name(), "");
  world.setTranslation(KVW("prog.exe"));
  ProgramStart const started(owner);
  EXPECT_EQ(name(), "prog");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
