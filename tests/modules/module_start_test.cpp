// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "kvbase/languages/language_selection.h"
#include "kvbase/modules/client_module.h"
#include "kvbase/modules/symbol_table.h"
#include "tests/languages/language_world.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

using Log = std::vector<std::string>;

// A module that has not been started, in a world where it is C:\app\tool.dll without any resources.
class ModuleStart : public ::testing::Test {
 protected:
  ~ModuleStart() override { owner.end(); }

  Module const& module() { return owner.module(); }
  std::string name() { return narrow(static_cast<wchar const*>(module().getModuleName())); }
  unsigned int symbol(wchar const* text) { return module().getResourceSymbols().lookupSymbol(text); }
  // The instance that is searched first.
  HINSTANCE searched() {
    HINSTANCE const both[] = {world.tool(), world.modules.translation};
    for (HINSTANCE const holder : both) world.modules.resources[holder][{KVW("MARK"), KVW("#1")}][1033] = "mark";
    return module().findResource(1u, KVW("MARK"), true, nullptr);
  }
  void putTranslation() {
    world.setLanguages(kGerman, kGerman, kGerman, kGerman);
    world.modules.files.insert(KVW("C:\\app\\toolDEU.dll"));
    world.modules.libraries[KVW("C:\\app\\toolDEU.dll")] = world.modules.translation;
  }
  void putHeader(HINSTANCE holder, std::string const& text, std::uint16_t language = 1031) {
    world.modules.resources[holder][{KVW("METADATA"), KVW("RESOURCE.H")}][language] = text;
  }

  LanguageWorld world;
  ModuleOwner owner;
};

// --- Start --------------------------------------------------------------------------------------------------------------

TEST_F(ModuleStart, ANullHandleStartsNothing) {
  EXPECT_FALSE(owner.start(nullptr));
  EXPECT_EQ(&module().getModuleName(), &String::EMPTY);
  EXPECT_EQ(world.modules.log, Log());
  // It has not been started, so it can be.
  EXPECT_TRUE(owner.start(world.tool()));
}

TEST_F(ModuleStart, ASecondStartChangesNothing) {
  putHeader(world.tool(), "#define A 1\n");
  EXPECT_TRUE(owner.start(world.tool()));
  SymbolTable const* const symbols = &module().getResourceSymbols();
  world.modules.log.clear();
  world.modules.paths[world.modules.programHandle] = KVW("C:\\other\\else.exe");
  EXPECT_FALSE(owner.start(world.modules.programHandle));
  EXPECT_FALSE(owner.start(world.tool()));
  EXPECT_EQ(world.modules.log, Log());
  EXPECT_EQ(name(), "tool");
  EXPECT_EQ(&module().getResourceSymbols(), symbols);
  EXPECT_EQ(searched(), world.tool());
}

TEST_F(ModuleStart, WithATranslationItIsSearchedFirst) {
  putTranslation();
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_EQ(searched(), world.modules.translation);
  EXPECT_EQ(GetCurrentLangId(module()), kGerman);
}

TEST_F(ModuleStart, NoParticularLanguageIsAskedFor) {
  world.setLanguages(kFrench, kGerman, kJapanese, kJapanese);
  EXPECT_TRUE(owner.start(world.tool()));
  Texts const probes = world.probes();
  ASSERT_FALSE(probes.empty());
  EXPECT_EQ(probes.front(), "C:\\app\\toolFRA.dll");
}

TEST_F(ModuleStart, WithoutATranslationTheModuleIsSearched) {
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_EQ(searched(), world.tool());
  EXPECT_EQ(world.modules.calls("loadAsData"), 0);
}

TEST_F(ModuleStart, WhereTheTranslationCannotBeLoadedTheModuleIsSearched) {
  putTranslation();
  world.modules.failures.insert("loadAsData");
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_EQ(world.modules.calls("loadAsData"), 1);
  EXPECT_EQ(searched(), world.tool());
  owner.end();
  EXPECT_TRUE(world.modules.freed.empty());
}

// --- The name -----------------------------------------------------------------------------------------------------------

struct NameRow {
  char const* row;
  wchar const* path;
  char const* name;
};

class ModuleStartNames : public ModuleStart, public ::testing::WithParamInterface<NameRow> {};

TEST_P(ModuleStartNames, AreThoseOfTheFile) {
  world.modules.paths[world.tool()] = GetParam().path;
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_EQ(name(), GetParam().name);
  EXPECT_NE(module().getModuleName(), String::NIL);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, ModuleStartNames,
    ::testing::Values(NameRow{"FolderAndEndingAreCut", KVW("C:\\app\\tool.dll"), "tool"},
                      NameRow{"WithoutABackslashItIsTheFileName", KVW("tool.dll"), "tool"},
                      NameRow{"WithoutAFullStopItStaysWhole", KVW("C:\\app\\tool"), "tool"},
                      NameRow{"WithNeitherItIsThePath", KVW("tool"), "tool"},
                      NameRow{"OfTwoFullStopsTheLastCounts", KVW("C:\\app\\tool.two.dll"), "tool.two"},
                      NameRow{"AFullStopOfAFolderDoesNotCount", KVW("C:\\my.folder\\tool"), "tool"},
                      NameRow{"AFullStopAtTheFrontLeavesNothing", KVW("C:\\app\\.dll"), ""},
                      NameRow{"AFullStopAtTheEndIsCut", KVW("C:\\app\\tool."), "tool"},
                      NameRow{"ASlashSeparatesNothing", KVW("C:\\app/tool.dll"), "app/tool"},
                      NameRow{"AFolderHasAnEmptyName", KVW("C:\\app\\"), ""}),
    [](auto const& test) { return std::string(test.param.row); });

TEST_F(ModuleStart, TheNameIsThatOfTheLongForm) {
  world.modules.paths[world.tool()] = KVW("C:\\APP~1\\TOOL~1.DLL");
  world.modules.longPaths[KVW("C:\\APP~1\\TOOL~1.DLL")] = KVW("C:\\application\\tool of mine.dll");
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_EQ(name(), "tool of mine");
}

TEST_F(ModuleStart, WithoutALongFormTheNameIsThatOfThePath) {
  world.modules.paths[world.tool()] = KVW("C:\\APP~1\\TOOL~1.DLL");
  world.modules.failures.insert("longPath");
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_EQ(name(), "TOOL~1");
}

TEST_F(ModuleStart, AnEmptyLongFormDoesNotCount) {
  world.modules.longPaths[KVW("C:\\app\\tool.dll")] = KVW("");
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_EQ(name(), "tool");
}

TEST_F(ModuleStart, AModuleWithoutPathHasAnEmptyName) {
  world.modules.failures.insert("modulePath");
  putHeader(world.tool(), "#define A 1\n");
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_EQ(name(), "");
  EXPECT_NE(module().getModuleName(), String::NIL);
  // Everything else is as usual.
  EXPECT_EQ(searched(), world.tool());
  EXPECT_EQ(symbol(KVW("A")), 1u);
}

TEST_F(ModuleStart, APathThatDoesNotFitIsCut) {
  world.modules.paths[world.tool()] = wstring(250, KVW('f')) + KVW("\\tool of mine.dll");
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_EQ(name(), "tool of ");
}

// --- Symbols ------------------------------------------------------------------------------------------------------------

TEST_F(ModuleStart, TheHeaderGivesTheSymbols) {
  putHeader(world.tool(), "// ids\r\n#define IDC_LENGTH 4113\r\n#define IDC_POS_X 4114\r\n");
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_EQ(symbol(KVW("IDC_LENGTH")), 4113u);
  EXPECT_EQ(symbol(KVW("idc_pos_x")), 4114u);
}

TEST_F(ModuleStart, WithoutAHeaderTheSymbolsAreTheEmptyTable) {
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_EQ(&module().getResourceSymbols(), &SymbolTable::EMPTY);
  EXPECT_EQ(symbol(KVW("IDC_LENGTH")), 0xFFFFFFFFu);
  EXPECT_TRUE(module().getResourceSymbols().lookupValue(0xFFFFFFFF).empty());
}

TEST_F(ModuleStart, AFaultyHeaderCountsAsNone) {
  putHeader(world.tool(), "#define A 1\n#define\n#define B 2\n");
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_EQ(&module().getResourceSymbols(), &SymbolTable::EMPTY);
}

TEST_F(ModuleStart, AHeaderOfNoBytesCountsAsNone) {
  putHeader(world.tool(), "");
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_EQ(&module().getResourceSymbols(), &SymbolTable::EMPTY);
}

TEST_F(ModuleStart, AHeaderWithoutDefinitionsGivesATableOfItsOwn) {
  putHeader(world.tool(), "// nothing\n");
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_NE(&module().getResourceSymbols(), &SymbolTable::EMPTY);
  EXPECT_EQ(symbol(KVW("A")), 0xFFFFFFFFu);
}

TEST_F(ModuleStart, AHeaderInTheTranslationComesFirst) {
  putTranslation();
  putHeader(world.tool(), "#define A 1\n");
  putHeader(world.modules.translation, "#define A 2\n");
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_EQ(symbol(KVW("A")), 2u);
}

TEST_F(ModuleStart, TheTranslationNeedNotHaveAHeader) {
  putTranslation();
  putHeader(world.tool(), "#define A 1\n");
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_EQ(symbol(KVW("A")), 1u);
}

// The header of the translation is found, so that of the module is not read.
TEST_F(ModuleStart, AFaultyHeaderInTheTranslationHidesThatOfTheModule) {
  putTranslation();
  putHeader(world.tool(), "#define A 1\n");
  putHeader(world.modules.translation, "#define\n");
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_EQ(&module().getResourceSymbols(), &SymbolTable::EMPTY);
}

TEST_F(ModuleStart, OfSeveralHeadersThatOfTheThreadsLanguageIsRead) {
  putHeader(world.tool(), "#define A 1031\n", 1031);
  putHeader(world.tool(), "#define A 1033\n", 1033);
  world.locales.thread = 1033;
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_EQ(symbol(KVW("A")), 1033u);
}

TEST_F(ModuleStart, BeforeTheStartTheSymbolsAreTheEmptyTable) {
  EXPECT_EQ(&module().getResourceSymbols(), &SymbolTable::EMPTY);
}

// --- Hooks --------------------------------------------------------------------------------------------------------------

// A class that tells what its module can do when its hooks are called.
class HookedClass : public mZClass {
 public:
  HookedClass(wchar const* name, Module const& module, Log& log) : mZClass(name, module, ClassVersion()), log_(log) {}
  HookedClass(wchar const* name, mZClass const* parent, Module const& module, Log& log)
      : mZClass(name, parent, module, ClassVersion()), log_(log) {}

  void initClassStatics() const override { tell("start "); }
  void clearClassStatics() const override { tell("end "); }

 private:
  void tell(std::string const& what) const {
    auto const text = module().loadResource(2u, KVW("MARK"), true);
    std::string state = " name=" + narrow(static_cast<wchar const*>(module().getModuleName()));
    state += " A=" + std::to_string(static_cast<int>(module().getResourceSymbols()[String(KVW("A"))]));
    state += text.get() != nullptr ? " translated" : "";
    log_.push_back(what + narrow(name()) + state);
  }

  Log& log_;
};

TEST_F(ModuleStart, HooksFindNameTranslationAndSymbols) {
  putTranslation();
  putHeader(world.tool(), "#define A 7\n");
  world.modules.resources[world.modules.translation][{KVW("MARK"), KVW("#2")}][1031] = "da";
  Log log;
  HookedClass const record(KVW("Scan"), module(), log);
  EXPECT_EQ(log, Log());
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_EQ(log, Log({"start Scan name=tool A=7 translated"}));
}

TEST_F(ModuleStart, HooksAreCalledParentsFirstAtTheStart) {
  Log log;
  HookedClass const node(KVW("Node"), module(), log);
  HookedClass const scan(KVW("Scan"), &node, module(), log);
  HookedClass const view(KVW("View"), &node, module(), log);
  HookedClass const sphere(KVW("Sphere"), &scan, module(), log);
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_EQ(log, Log({"start Node name=tool A=-1", "start View name=tool A=-1", "start Scan name=tool A=-1",
                      "start Sphere name=tool A=-1"}));
}

// COMPAT: the same order at the end: parents are cleared before their children.
TEST_F(ModuleStart, HooksAreCalledParentsFirstAtTheEndToo) {
  putHeader(world.tool(), "#define A 7\n");
  Log log;
  HookedClass const node(KVW("Node"), module(), log);
  HookedClass const scan(KVW("Scan"), &node, module(), log);
  HookedClass const view(KVW("View"), &node, module(), log);
  EXPECT_TRUE(owner.start(world.tool()));
  log.clear();
  owner.end();
  // The symbols have gone before.
  EXPECT_EQ(log, Log({"end Node name=tool A=-1", "end View name=tool A=-1", "end Scan name=tool A=-1"}));
}

TEST_F(ModuleStart, AtTheEndHooksAreCalledWhenTheTranslationHasGone) {
  putTranslation();
  struct Counting final : mZClass {
    Counting(ModuleOwner& owner, std::vector<HINSTANCE> const& freed)
        : mZClass(KVW("Counting"), owner.module(), ClassVersion()), freed(freed) {}
    void clearClassStatics() const override { counts.push_back(freed.size()); }
    std::vector<HINSTANCE> const& freed;
    mutable std::vector<std::size_t> counts;
  } const record(owner, world.modules.freed);
  EXPECT_TRUE(owner.start(world.tool()));
  owner.end();
  EXPECT_EQ(record.counts, std::vector<std::size_t>({1}));
}

TEST_F(ModuleStart, HooksOfOtherModulesAreNotCalled) {
  ModuleOwner other;
  Log log;
  HookedClass const foreign(KVW("Foreign"), other.module(), log);
  HookedClass const own(KVW("Own"), &foreign, module(), log);
  HookedClass const under(KVW("Under"), &own, other.module(), log);
  EXPECT_TRUE(owner.start(world.tool()));
  owner.end();
  EXPECT_EQ(log, Log({"start Own name=tool A=-1", "end Own name=tool A=-1"}));
}

TEST_F(ModuleStart, WithinAHookTheModuleCountsAsStarted) {
  struct Again final : mZClass {
    explicit Again(ModuleOwner& module) : mZClass(KVW("Again"), module.module(), ClassVersion()), owner(module) {}
    void initClassStatics() const override { startAgain(); }
    void clearClassStatics() const override { startAgain(); }
    void startAgain() const { results.push_back(owner.start(reinterpret_cast<HINSTANCE>(std::uintptr_t(0x50000)))); }
    ModuleOwner& owner;
    mutable std::vector<bool> results;
  } const record(owner);
  EXPECT_TRUE(owner.start(world.tool()));
  owner.end();
  EXPECT_EQ(record.results, std::vector<bool>({false, false}));
}

// --- End ----------------------------------------------------------------------------------------------------------------

TEST_F(ModuleStart, TheEndUnloadsTheTranslation) {
  putTranslation();
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_TRUE(world.modules.freed.empty());
  owner.end();
  EXPECT_EQ(world.modules.freed, std::vector<HINSTANCE>({world.modules.translation}));
}

TEST_F(ModuleStart, WithoutATranslationTheEndUnloadsNothing) {
  EXPECT_TRUE(owner.start(world.tool()));
  owner.end();
  EXPECT_EQ(world.modules.calls("freeLibrary"), 0);
}

TEST_F(ModuleStart, AfterTheEndTheNameStaysAndTheSymbolsAreEmpty) {
  putHeader(world.tool(), "#define A 1\n");
  EXPECT_TRUE(owner.start(world.tool()));
  owner.end();
  EXPECT_EQ(name(), "tool");
  EXPECT_EQ(&module().getResourceSymbols(), &SymbolTable::EMPTY);
}

TEST_F(ModuleStart, AfterTheEndTheInstancesStay) {
  putTranslation();
  EXPECT_TRUE(owner.start(world.tool()));
  owner.end();
  EXPECT_EQ(searched(), world.modules.translation);
  EXPECT_EQ(module().findResource(1u, KVW("MARK"), false, nullptr), world.tool());
}

// Neither the end of a module nor its next start takes back what its first start has recorded.
TEST_F(ModuleStart, TheLanguageOfTheFirstStartStays) {
  putTranslation();
  EXPECT_TRUE(owner.start(world.tool()));
  owner.end();
  EXPECT_EQ(GetCurrentLangId(module()), kGerman);
  world.setLanguages(kFrench, kFrench, kFrench, kFrench);
  world.modules.files = {KVW("C:\\app\\toolFRA.dll")};
  world.modules.libraries[KVW("C:\\app\\toolFRA.dll")] = world.modules.translation;
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_EQ(searched(), world.modules.translation);
  EXPECT_EQ(GetCurrentLangId(module()), kGerman);
}

TEST_F(ModuleStart, ASecondEndDoesNothing) {
  putTranslation();
  Log log;
  HookedClass const record(KVW("Scan"), module(), log);
  EXPECT_TRUE(owner.start(world.tool()));
  owner.end();
  log.clear();
  owner.end();
  EXPECT_EQ(world.modules.freed.size(), 1u);
  EXPECT_EQ(log, Log());
}

TEST_F(ModuleStart, TheEndOfAModuleThatWasNotStartedDoesNothing) {
  Log log;
  HookedClass const record(KVW("Scan"), module(), log);
  owner.end();
  EXPECT_EQ(log, Log());
  EXPECT_EQ(world.modules.log, Log());
}

TEST_F(ModuleStart, AModuleCanBeStartedAgain) {
  putTranslation();
  putHeader(world.tool(), "#define A 1\n");
  EXPECT_TRUE(owner.start(world.tool()));
  owner.end();
  HINSTANCE const other = world.modules.programHandle;
  world.modules.files.clear();
  world.modules.paths[other] = KVW("C:\\app\\other.dll");
  putHeader(other, "#define A 2\n");
  EXPECT_TRUE(owner.start(other));
  EXPECT_EQ(name(), "other");
  EXPECT_EQ(symbol(KVW("A")), 2u);
  owner.end();
  EXPECT_EQ(world.modules.freed.size(), 1u);
}

// --- Failure ------------------------------------------------------------------------------------------------------------

TEST_F(ModuleStart, AfterAFaultOfTheVersionDataTheModuleIsNotStarted) {
  // A version resource without a table of translations.
  world.setLanguages(kGerman, kGerman, kGerman, kGerman);
  world.setVersion(KVW("tool.dll"), 0x10000, 1);
  Log log;
  HookedClass const record(KVW("Scan"), module(), log);
  try {
    owner.start(world.tool());
    FAIL() << "no exception";
  } catch (std::runtime_error const& error) {
    EXPECT_STREQ(error.what(), "VerQueryValue failed");
  }
  EXPECT_EQ(&module().getModuleName(), &String::EMPTY);
  EXPECT_EQ(log, Log());
  owner.end();
  EXPECT_EQ(log, Log());
  world.setTranslation(KVW("tool.dll"));
  EXPECT_TRUE(owner.start(world.tool()));
  EXPECT_EQ(name(), "tool");
}

TEST_F(ModuleStart, ExhaustedMemoryAtAnyPointLeavesNothingBehind) {
  putTranslation();
  putHeader(world.tool(), "#define A 1\n#define B A\n");
  world.locales.logging = false;
  world.modules.freed.reserve(4);
  // What is built once is there before memory is counted.
  EXPECT_TRUE(owner.start(world.tool()));
  owner.end();
  world.clearLogs();
  LanguageWorld::forget();
  for (AllocationSweep sweep(30); sweep.next();) {
    world.modules.freed.clear();
    bool started = false;
    {
      ModuleOwner another;
      sweep.runRecovering([&] {
        started = another.start(world.tool());
        another.end();
      });
      // Where the script of the test ran out of memory.
      another.end();
    }
    std::size_t loaded = 0;
    for (std::string const& entry : world.modules.log) loaded += entry.compare(0, 10, "loadAsData") == 0 ? 1 : 0;
    world.clearLogs();
    LanguageWorld::forget();
    EXPECT_EQ(world.modules.freed.size(), loaded);
    EXPECT_TRUE(started || sweep.failed());
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
