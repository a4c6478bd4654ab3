// SPDX-License-Identifier: MIT
//
// In this program the library is linked, so the program is its module.
#include "kvbase/library/library_entry.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "kvbase/kvbase.h"
#include "kvbase/platform/module_api.h"
#include "tests/languages/language_world.h"
#include "tests/support/narrow_text.h"
#include "tests/support/scripted_framework.h"

namespace KV_1_1 {
namespace testing {
namespace {

using Log = std::vector<std::string>;

std::string libraryName() {
  return narrow(static_cast<wchar const*>(getLibraryModule().getModuleName()));
}

unsigned int librarySymbol() {
  return getLibraryModule().getResourceSymbols()[String(KVW("A"))];
}

// Ends the library for a scope.
struct LibraryIsOff {
  LibraryIsOff() { library::detach(); }
  ~LibraryIsOff() { EXPECT_TRUE(library::attach(platform::nativeModules().program())); }
};

// Notes what the library's module can do at each call.
class WatchingFramework final : public ScriptedFramework {
 public:
  bool startExtension(HINSTANCE instance) override {
    states.push_back("start A=" + std::to_string(static_cast<int>(librarySymbol())));
    return ScriptedFramework::startExtension(instance);
  }
  void endExtension() override {
    states.push_back("end A=" + std::to_string(static_cast<int>(librarySymbol())));
    ScriptedFramework::endExtension();
  }
  Log states;
};

// A world in which the library is in C:\app\prog.exe, translated, with the symbol A.
class LibraryEntry : public ::testing::Test {
 protected:
  LibraryEntry() {
    world.setLanguages(kGerman, kGerman, kGerman, kGerman);
    world.modules.files.insert(KVW("C:\\app\\progDEU.dll"));
    world.modules.libraries[KVW("C:\\app\\progDEU.dll")] = world.modules.translation;
    world.modules.resources[world.program()][{KVW("METADATA"), KVW("RESOURCE.H")}][1031] = "#define A 1\n";
  }
  ~LibraryEntry() override { library::detach(); }

 private:
  LibraryIsOff off_;

 protected:
  LanguageWorld world;
  WatchingFramework framework;

 private:
  platform::ScopedBackend<platform::FrameworkApi> scope_{framework};
};

TEST(LibraryEntryAtLoad, TheLibraryHasBeenStarted) {
  EXPECT_EQ(libraryName(), "kvbase_tests");
  // A second start is refused.
  EXPECT_FALSE(libraryModuleOwner().start(platform::nativeModules().program()));
}

TEST(LibraryEntryAtLoad, TheModuleOfTheEntryIsThatOfGetLibraryModule) {
  EXPECT_EQ(&libraryModuleOwner().module(), &getLibraryModule());
}

TEST_F(LibraryEntry, AttachStartsTheModuleAndThenTheExtension) {
  EXPECT_TRUE(library::attach(world.program()));
  EXPECT_EQ(libraryName(), "prog");
  EXPECT_EQ(framework.states, Log({"start A=1"}));
  EXPECT_EQ(framework.started, std::vector<HINSTANCE>({world.program()}));
}

TEST_F(LibraryEntry, DetachEndsTheExtensionAndThenTheModule) {
  EXPECT_TRUE(library::attach(world.program()));
  framework.states.clear();
  library::detach();
  EXPECT_EQ(framework.states, Log({"end A=1"}));
  EXPECT_EQ(world.modules.freed, std::vector<HINSTANCE>({world.modules.translation}));
  EXPECT_EQ(&getLibraryModule().getResourceSymbols(), &SymbolTable::EMPTY);
  EXPECT_EQ(libraryName(), "prog");
}

TEST_F(LibraryEntry, AModuleThatDoesNotStartFailsTheLoadWithoutTheFramework) {
  EXPECT_FALSE(library::attach(nullptr));
  EXPECT_EQ(framework.log, Log());
  // The run time goes on to the end.
  library::detach();
  EXPECT_EQ(framework.log, Log({"endExtension"}));
  EXPECT_TRUE(world.modules.freed.empty());
}

TEST_F(LibraryEntry, AFrameworkThatRefusesFailsTheLoad) {
  framework.refuses = true;
  EXPECT_FALSE(library::attach(world.program()));
  EXPECT_EQ(librarySymbol(), 1u);
  library::detach();
  EXPECT_EQ(framework.log, Log({"startExtension", "endExtension"}));
  EXPECT_EQ(world.modules.freed, std::vector<HINSTANCE>({world.modules.translation}));
}

TEST_F(LibraryEntry, AnExceptionFailsTheLoad) {
  world.setVersion(KVW("prog.exe"), 0x10000, 1);  // without a table of translations
  EXPECT_FALSE(library::attach(world.program()));
  EXPECT_EQ(framework.log, Log());
  library::detach();
  EXPECT_EQ(framework.log, Log({"endExtension"}));
  EXPECT_TRUE(world.modules.freed.empty());
}

TEST_F(LibraryEntry, TheLibraryCanBeStartedAgain) {
  for (int round = 0; round < 2; ++round) {
    EXPECT_TRUE(library::attach(world.program()));
    EXPECT_EQ(librarySymbol(), 1u);
    library::detach();
  }
  EXPECT_EQ(world.modules.freed.size(), 2u);
}

TEST_F(LibraryEntry, DetachWithoutAttachLeavesTheModuleAlone) {
  world.modules.log.clear();
  library::detach();
  EXPECT_EQ(framework.log, Log({"endExtension"}));
  EXPECT_EQ(world.modules.log, Log());
}

// --- The end check of a module that is destroyed ------------------------------------------------------------------------

// A class that notes when its hooks are called.
class NotedClass final : public mZClass {
 public:
  NotedClass(Module const& module, Log& log, char const* what)
      : mZClass(KVW("Noted"), module, ClassVersion()), log_(log), what_(what) {}
  void clearClassStatics() const override { log_.push_back(what_); }

 private:
  Log& log_;
  std::string what_;
};

// COMPAT: a module that is destroyed without having been ended ends the library's own module, and stays as it is.
TEST_F(LibraryEntry, AModuleDestroyedWithoutItsEndEndsTheLibrary) {
  EXPECT_TRUE(library::attach(world.program()));
  Log log;
  NotedClass const own(getLibraryModule(), log, "library cleared");
  {
    ModuleOwner other;
    NotedClass const foreign(other.module(), log, "other cleared");
    world.modules.files.insert(KVW("C:\\app\\toolDEU.dll"));
    world.modules.libraries[KVW("C:\\app\\toolDEU.dll")] = reinterpret_cast<HINSTANCE>(std::uintptr_t(0x70001));
    EXPECT_TRUE(other.start(world.tool()));
    EXPECT_EQ(log, Log());
    EXPECT_EQ(librarySymbol(), 1u);
  }
  EXPECT_EQ(log, Log({"library cleared"}));
  EXPECT_EQ(world.modules.freed, std::vector<HINSTANCE>({world.modules.translation}));
  EXPECT_EQ(&getLibraryModule().getResourceSymbols(), &SymbolTable::EMPTY);
}

TEST_F(LibraryEntry, ASecondModuleDestroyedSoFindsTheLibraryEnded) {
  EXPECT_TRUE(library::attach(world.program()));
  for (int round = 0; round < 2; ++round) {
    ModuleOwner other;
    EXPECT_TRUE(other.start(world.tool()));
  }
  EXPECT_EQ(world.modules.freed.size(), 1u);
}

TEST_F(LibraryEntry, AModuleDestroyedBehindItsEndLeavesTheLibraryAlone) {
  EXPECT_TRUE(library::attach(world.program()));
  {
    ModuleOwner other;
    ModuleOwner idle;
    EXPECT_TRUE(other.start(world.tool()));
    other.end();
  }
  EXPECT_EQ(librarySymbol(), 1u);
  EXPECT_TRUE(world.modules.freed.empty());
}

// The library's Module itself can be destroyed while it is started, if something starts it behind the end part.
struct LateStart {
  explicit LateStart(HINSTANCE program) : program_(program) {}
  ~LateStart() { library::attach(program_); }
  HINSTANCE program_;
};

struct TellingModules final : ScriptedModules {
  bool freeLibrary(HINSTANCE module) override {
    std::fprintf(stderr, "%zu modules;", static_cast<std::size_t>(std::distance(Module::begin(), Module::end())));
    return ScriptedModules::freeLibrary(module);
  }
};

TEST(LibraryEntryDeathTest, TheLibrarysModuleEndsItselfWhenItIsDestroyed) {
  EXPECT_EXIT(
      {
        static TellingModules& modules = *new TellingModules;
        static LanguageWorld& world = *new LanguageWorld;
        modules.paths[modules.programHandle] = KVW("C:\\app\\prog.exe");
        world.setLanguages(kGerman, kGerman, kGerman, kGerman);
        modules.files.insert(KVW("C:\\app\\progDEU.dll"));
        modules.libraries[KVW("C:\\app\\progDEU.dll")] = modules.translation;
        static auto& scope = *new platform::ScopedBackend<platform::ModuleApi>(modules);
        static_cast<void>(scope);
        library::detach();
        new Lazy<LateStart>(modules.programHandle);
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "0 modules;");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
