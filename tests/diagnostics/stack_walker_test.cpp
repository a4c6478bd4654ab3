// SPDX-License-Identifier: MIT
//
// Life of a walker: what it is built with, loads, shares and releases.
#include "kvbase/diagnostics/stack_walker.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "kvbase/diagnostics/internal/stack_walker_impl.h"
#include "tests/diagnostics/walker_support.h"
#include "tests/support/allocation_failure.h"

namespace KV_1_1 {
namespace testing {
namespace {

class StackWalkerLife : public ScriptedWalk {};

// --- Construction ---

TEST_F(StackWalkerLife, DefaultConstructionIsForThisProcessWithAllOptions) {
  RecordingWalker walker;
  EXPECT_EQ(walker.optionBits(), 63);
  EXPECT_EQ(walker.path(), nullptr);
  EXPECT_EQ(walker.spareValue(), 0);
  EXPECT_EQ(walker.implementation()->parent, &walker);
  EXPECT_EQ(walker.implementation()->process, help.process);
  walker.LoadModules();
  EXPECT_EQ(calls("CreateToolhelp32Snapshot"), Texts({"CreateToolhelp32Snapshot 8 4711"}));
}

TEST_F(StackWalkerLife, ConstructionForAProcessHasAllOptionsAndNoPath) {
  RecordingWalker walker(12, help.thread);
  EXPECT_EQ(walker.optionBits(), 63);
  EXPECT_EQ(walker.path(), nullptr);
  EXPECT_EQ(walker.implementation()->process, help.thread);
}

TEST_F(StackWalkerLife, APathIsCopiedAndSetsItsOption) {
  std::string path = "abc";
  RecordingWalker walker(8, path.c_str());
  path = "xyz";
  EXPECT_STREQ(walker.path(), "abc");
  EXPECT_EQ(walker.optionBits(), 24);
  EXPECT_EQ(RecordingWalker(8).optionBits(), 8);
  EXPECT_EQ(RecordingWalker(8, "").optionBits(), 24);
}

TEST_F(StackWalkerLife, ConstructionLoadsNothing) {
  { RecordingWalker walker(63, "abc"); }
  EXPECT_EQ(help.log, Texts());
  EXPECT_EQ(files.log(), Texts());
  StackWalkerImpl const impl(nullptr, help.process);
  EXPECT_EQ(impl.library, nullptr);
  EXPECT_EQ(impl.searchPath, nullptr);
  EXPECT_TRUE(impl.symCleanup == nullptr && impl.symFunctionTableAccess == nullptr && impl.symGetLine == nullptr &&
              impl.symGetModuleBase == nullptr && impl.symGetModuleInfo == nullptr && impl.symGetOptions == nullptr &&
              impl.symGetSymbol == nullptr && impl.symInitialize == nullptr && impl.symLoadModule == nullptr &&
              impl.symSetOptions == nullptr && impl.stackWalk == nullptr && impl.undecorateSymbolName == nullptr &&
              impl.symGetSearchPath == nullptr);
}

TEST_F(StackWalkerLife, EntriesAndTypesAreLaidOutAsTheirUsersExpect) {
  using Entry = StackWalker::CallstackEntry;
  EXPECT_TRUE(std::is_trivial<Entry>::value && std::is_standard_layout<Entry>::value);
  EXPECT_EQ(offsetof(Entry, name), 8u);
  EXPECT_EQ(offsetof(Entry, undecoratedName), 8u + 1024);
  EXPECT_EQ(offsetof(Entry, undecoratedFullName), 8u + 2048);
  EXPECT_EQ(offsetof(Entry, symbolDisplacement), 8u + 3072);
  EXPECT_EQ(offsetof(Entry, lineDisplacement), 16u + 3072);
  EXPECT_EQ(offsetof(Entry, lineNumber), 20u + 3072);
  EXPECT_EQ(offsetof(Entry, lineFileName), 24u + 3072);
  EXPECT_EQ(offsetof(Entry, symbolType), 24u + 4096);
  EXPECT_EQ(offsetof(Entry, symbolTypeText), 32u + 4096);
  EXPECT_EQ(offsetof(Entry, moduleName), 40u + 4096);
  EXPECT_EQ(offsetof(Entry, imageBase), 40u + 5120);
  EXPECT_EQ(offsetof(Entry, loadedImageName), 48u + 5120);
  EXPECT_EQ(sizeof(Entry), 48u + 6144);
  EXPECT_EQ(StackWalker::EntryFirst, 0);
  EXPECT_EQ(StackWalker::EntryNext, 1);
  EXPECT_EQ(StackWalker::EntryLast, 2);
  EXPECT_EQ(sizeof(StackWalker), 48u);
  EXPECT_FALSE(std::is_polymorphic<StackWalkerImpl>::value);
  EXPECT_EQ(sizeof(StackWalkerImpl), 17 * sizeof(void*));
}

// --- Loading ---

TEST_F(StackWalkerLife, AFirstLoadIsTheOnlyOne) {
  RecordingWalker walker(0);
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(walker.log, started());
  help.log.clear();
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(help.log, Texts());
}

TEST_F(StackWalkerLife, WithoutListedModulesTheNextCallTriesAgain) {
  help.snapshot.clear();
  RecordingWalker walker(0);
  EXPECT_EQ(walker.LoadModules(), 0);
  EXPECT_EQ(walker.LoadModules(), 0);
  EXPECT_EQ(help.calls("SymInitialize"), 2);
  help.snapshot = {{"C:\\app\\tool.exe", "tool.exe", 0x400000, 8192}};
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(help.calls("SymInitialize"), 3);
}

// --- The end ---

TEST_F(StackWalkerLife, TheEndCleansUpAndFreesTheLibrary) {
  {
    RecordingWalker walker(63, "abc");
    walker.LoadModules();
    help.log.clear();
  }
  EXPECT_EQ(help.log, Texts({"SymCleanup process", "freeLibrary dbghelp.dll"}));
  EXPECT_TRUE(help.allFreed());
}

TEST_F(StackWalkerLife, TheEndOfAWalkerWithoutALibraryCallsNothing) {
  help.remove(KVW("dbghelp.dll"), "StackWalk64");
  {
    RecordingWalker walker(0);
    walker.walk();
    help.log.clear();
  }
  EXPECT_EQ(help.log, Texts());
}

TEST_F(StackWalkerLife, AWalkerIsDestroyedThroughItsBase) {
  bool destroyed = false;
  class Derived : public StackWalker {
   public:
    explicit Derived(bool& flag) : flag_(flag) {}
    ~Derived() override { flag_ = true; }

   private:
    bool& flag_;
  };
  StackWalker* const walker = new Derived(destroyed);
  delete walker;
  EXPECT_TRUE(destroyed);
}

// --- Copies ---

TEST_F(StackWalkerLife, ACopySharesLibraryAndPath) {
  RecordingWalker source(8, "abc", 77);
  source.setSpare(5);
  source.LoadModules();
  RecordingWalker copy(source);
  EXPECT_EQ(copy.implementation(), source.implementation());
  EXPECT_EQ(copy.path(), source.path());
  EXPECT_EQ(copy.optionBits(), 24);
  EXPECT_EQ(copy.spareValue(), 5);
  help.log.clear();
  EXPECT_EQ(copy.LoadModules(), 1);
  EXPECT_EQ(help.log, Texts());
  copy.disown();
}

TEST_F(StackWalkerLife, AssignmentSharesAndReleasesNothing) {
  RecordingWalker source(8, "abc");
  source.setSpare(5);
  source.LoadModules();
  RecordingWalker target(63, "xyz");
  StackWalkerImpl* const oldImpl = target.implementation();
  char const* const oldPath = target.path();
  help.log.clear();
  StackWalker& base = target;
  EXPECT_EQ(&(base = source), &base);
  EXPECT_EQ(help.log, Texts());
  EXPECT_EQ(target.implementation(), source.implementation());
  EXPECT_EQ(target.path(), source.path());
  EXPECT_EQ(target.optionBits(), 24);
  EXPECT_EQ(target.spareValue(), 5);
  EXPECT_EQ(target.LoadModules(), 1);
  EXPECT_STREQ(oldPath, "xyz");
  target.disown();
  delete oldImpl;
  delete[] oldPath;
}

TEST_F(StackWalkerLife, ACopyWalksWithItsOwnCallbacksAndLoadsWithThoseOfItsSource) {
  RecordingWalker source(0);
  RecordingWalker copy(source);
  help.frames = {{0, 0}};
  EXPECT_EQ(copy.walk(), 1);
  EXPECT_EQ(source.log, started());
  EXPECT_EQ(copy.log, Texts({"OnDbgHelpErr StackWalk64-Endless-Callstack!|0|0"}));
  copy.disown();
}

TEST_F(StackWalkerLife, WithoutAnImplementationNothingCanBeLoadedOrWalked) {
  RecordingWalker source(0);
  RecordingWalker copy(source);
  copy.disown();
  EXPECT_EQ(copy.LoadModules(), 0);
  EXPECT_EQ(errors.error, 1114u);
  errors.error = 0;
  EXPECT_EQ(copy.walk(), 0);
  EXPECT_EQ(errors.error, 1114u);
  EXPECT_EQ(copy.log, Texts());
}

// --- Memory runs out ---

// Counts what it is told and allocates nothing.
class CountingWalker : public StackWalker {
 public:
  using StackWalker::StackWalker;
  int entries = 0;
  int problems = 0;
  int modulesTold = 0;
  ulong32 lastResult = 0;
  ulong32 lastProblem = 0;

  StackWalkerImpl* implementation() const { return impl; }

 protected:
  void OnSymInit(char const*, ulong32, char const*) override {}
  void OnLoadModule(char const*, char const*, unsigned long long, ulong32, ulong32 result, char const*, char const*,
                    unsigned long long) override {
    ++modulesTold;
    lastResult = result;
  }
  void OnCallstackEntry(CallstackEntryType, CallstackEntry&) override { ++entries; }
  void OnDbgHelpErr(char const*, ulong32 lastError, unsigned long long) override {
    ++problems;
    lastProblem = lastError;
  }
};

// Backends that allocate nothing.
struct NoFiles final : FileScript {
  ulong32 getAttributes(wchar const*) override { return platform::kInvalidAttributes; }
};
struct NoVersions final : ScriptedModules {
  bool queryVersion(void const*, wchar const*, void const*&, ulong32&) override { return false; }
};

class StackWalkerMemory : public ScriptedWalk {
 protected:
  StackWalkerMemory() {
    help.recording = false;
    help.frames = {{7, 8}, {8, 0}};
    for (std::uint64_t const address : {7, 8}) {
      help.symbols[address] = {"name", "bare", "complete"};
      help.lines[address] = {"file", 1};
      help.modules[address] = moduleInfo(3, "m", 1, "p");
    }
    std::string const longText(200, 'x');
    help.currentDirectoryText = help.narrowProgramPath = help.userNameText = longText;
    help.variables = {{"_NT_SYMBOL_PATH", longText}, {"SYSTEMROOT", longText}, {"SYSTEMDRIVE", longText}};
    help.wideVariables[KVW("ProgramFiles")] = widen(longText);
    help.versionBlocks["C:\\app\\tool.exe"] = longText;
  }

 private:
  NoFiles noFiles_;
  NoVersions noVersions_;
  platform::ScopedBackend<platform::FileApi> noFileScope_{noFiles_};
  platform::ScopedBackend<platform::ModuleApi> noModuleScope_{noVersions_};
};

TEST_F(StackWalkerMemory, WhereverMemoryRunsOutNothingThrowsAndNothingLeaks) {
  for (AllocationSweep sweep(19); sweep.next();) {
    int result = -1;
    int entries = 0;
    int problems = 0;
    help.steps = 0;
    errors.error = 0;
    sweep.runReporting([&] {
      CountingWalker walker(63, "abc");
      result = walker.ShowCallstack(GetCurrentThread(), nullptr, nullptr, nullptr);
      entries = walker.entries;
      problems = walker.problems;
    });
    EXPECT_TRUE(help.allFreed());
    // Whatever fails, the walk is complete or was not started, or is not there at all without a symbol record.
    EXPECT_TRUE(entries == 3 || entries == 0) << entries;
    if (result == 0) EXPECT_EQ(errors.error, 1114u);
    if (sweep.failed()) continue;
    EXPECT_EQ(result, 1);
    EXPECT_EQ(entries, 3);
    EXPECT_EQ(problems, 0);
  }
}

TEST_F(StackWalkerMemory, WithoutMemoryForTheImplementationThereIsNone) {
  AllocationFailure scope(1);
  CountingWalker walker(0);
  scope.end();
  EXPECT_EQ(walker.implementation(), nullptr);
  EXPECT_EQ(walker.LoadModules(), 0);
  EXPECT_EQ(errors.error, 1114u);
}

TEST_F(StackWalkerMemory, WithoutMemoryForTheSearchPathLoadingFailsWith8) {
  CountingWalker walker(16);
  AllocationFailure scope(1);
  int const result = walker.LoadModules();
  scope.end();
  EXPECT_EQ(result, 0);
  EXPECT_EQ(errors.error, 8u);
  EXPECT_EQ(walker.problems, 0);
  EXPECT_EQ(walker.LoadModules(), 1);
}

TEST_F(StackWalkerMemory, WithoutMemoryForASymbolTheWalkIsEmptyAndTheThreadResumed) {
  CountingWalker walker(0);
  walker.LoadModules();
  AllocationFailure scope(1);
  int const result = walker.ShowCallstack(help.thread, nullptr, nullptr, nullptr);
  scope.end();
  EXPECT_EQ(result, 1);
  EXPECT_EQ(walker.entries + walker.problems, 0);
  EXPECT_EQ(help.steps, 0u);
  EXPECT_EQ(help.resumed, 1);
}

TEST_F(StackWalkerMemory, WithoutMemoryForTheNamesOfAModuleItsResultIs8) {
  for (int const failAt : {1, 2}) {
    CountingWalker walker(0);
    walker.LoadModules();
    AllocationFailure scope(failAt);
    ulong32 const result = walker.implementation()->loadModule(help.process, "image", "module", 1, 2);
    scope.end();
    EXPECT_EQ(result, 8u);
    EXPECT_EQ(walker.modulesTold, 2);
    EXPECT_EQ(walker.lastResult, 8u);
  }
}

TEST_F(StackWalkerMemory, WithoutMemoryForTheRecordOfAModuleTheErrorIs8) {
  CountingWalker walker(0);
  walker.LoadModules();
  // The first allocation is the symbol's.
  AllocationFailure scope(2);
  walker.ShowCallstack(GetCurrentThread(), nullptr, nullptr, nullptr);
  scope.end();
  EXPECT_EQ(walker.entries, 3);
  EXPECT_EQ(walker.problems, 1);
  EXPECT_EQ(walker.lastProblem, 8u);
}

TEST_F(StackWalkerMemory, AWalkAllocatesTwoBlocks) {
  CountingWalker walker(0);
  walker.LoadModules();
  AllocationFailure scope(0);
  walker.ShowCallstack(GetCurrentThread(), nullptr, nullptr, nullptr);
  int const allocations = scope.allocations();
  scope.end();
  EXPECT_EQ(allocations, 2);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
