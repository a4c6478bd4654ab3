// SPDX-License-Identifier: MIT
#include "kvbase/diagnostics/vg_stack_walker.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

#include "kvbase/diagnostics/internal/stack_walker_impl.h"
#include "kvbase/diagnostics/output_debug_parentheses_scope.h"
#include "tests/diagnostics/fresh_global_walker.h"
#include "tests/diagnostics/walker_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

class Counting : public VgStackWalker {
 public:
  using VgStackWalker::VgStackWalker;

  int optionBits() const { return options; }
  char const* path() const { return symbolPath; }
  StackWalkerImpl* implementation() const { return impl; }
  void disown() { impl = nullptr; }
  using VgStackWalker::OnDbgHelpErr;
  using VgStackWalker::OnLoadModule;
  using VgStackWalker::OnSymInit;
};

class CountingWalk : public ScriptedWalk {
 protected:
  static int walk(StackWalker& walker) { return walker.ShowCallstack(GetCurrentThread(), nullptr, nullptr, nullptr); }
};

TEST_F(CountingWalk, HasNoOptionsAndNoPath) {
  Counting const walker;
  EXPECT_EQ(walker.optionBits(), 0);
  EXPECT_EQ(walker.path(), nullptr);
  EXPECT_EQ(walker.callStackDepth, 0);
  EXPECT_EQ(walker.implementation()->process, help.process);
  Counting const other(12, help.thread);
  EXPECT_EQ(other.optionBits(), 0);
  EXPECT_EQ(other.path(), nullptr);
  EXPECT_EQ(other.callStackDepth, 0);
  EXPECT_EQ(other.implementation()->process, help.thread);
}

TEST_F(CountingWalk, ConstructionLoadsNothing) {
  { Counting walker; }
  EXPECT_EQ(help.log, Texts());
}

TEST_F(CountingWalk, ComposesNoSearchPathAndReadsNoFileVersions) {
  Counting walker;
  EXPECT_EQ(walk(walker), 1);
  EXPECT_EQ(calls("SymInitialize"), Texts({"SymInitialize process (null) 0"}));
  EXPECT_EQ(calls("versionInfoSize"), Texts());
}

TEST_F(CountingWalk, CountsEachCallWhateverTypeAndEntry) {
  Counting walker;
  StackWalker::CallstackEntry entry = {};
  for (auto const type : {StackWalker::EntryFirst, StackWalker::EntryNext, StackWalker::EntryLast})
    walker.OnCallstackEntry(type, entry);
  EXPECT_EQ(walker.callStackDepth, 3);
  EXPECT_EQ(entry.name[0], 0);
}

TEST_F(CountingWalk, CountsTheLastFrameTwiceAndGoesOnCounting) {
  Counting walker;
  help.frames = {{1, 2}, {2, 3}, {3, 0}};
  EXPECT_EQ(walk(walker), 1);
  EXPECT_EQ(walker.callStackDepth, 4);
  help.steps = 0;
  EXPECT_EQ(walk(walker), 1);
  EXPECT_EQ(walker.callStackDepth, 8);
}

TEST_F(CountingWalk, ShowsNothingAnywhere) {
  Counting walker;
  help.version = platform::SystemVersion();
  help.frames = {{1, 2}, {2, 2}};
  help.loadErrors["C:\\app\\tool.exe"] = 5;
  EXPECT_EQ(walk(walker), 1);
  walker.OnOutput("text");
  walker.OnSymInit("path", 1, "user");
  walker.OnLoadModule("image", "module", 1, 2, 3, "type", "pdb", 4);
  walker.OnDbgHelpErr("function", 1, 2);
  EXPECT_EQ(help.outputs, Texts());
}

TEST_F(CountingWalk, ACopyAndAMoveShareTheLibraryAndLeaveTheSource) {
  Counting source;
  source.callStackDepth = 7;
  source.LoadModules();
  Counting copy(source);
  Counting moved(std::move(source));
  for (Counting* const walker : {&copy, &moved, &source}) {
    EXPECT_EQ(walker->implementation(), source.implementation());
    EXPECT_NE(walker->implementation(), nullptr);
    EXPECT_EQ(walker->callStackDepth, 7);
  }
  copy.disown();
  moved.disown();
}

TEST_F(CountingWalk, AssignmentSharesTheLibraryAndLeavesTheSource) {
  Counting source;
  source.callStackDepth = 7;
  Counting target;
  StackWalkerImpl* const oldImpl = target.implementation();
  VgStackWalker& base = target;
  EXPECT_EQ(&(base = source), &base);
  EXPECT_EQ(target.implementation(), source.implementation());
  EXPECT_EQ(target.callStackDepth, 7);
  target.callStackDepth = 0;
  base = std::move(static_cast<VgStackWalker&>(source));
  EXPECT_EQ(target.callStackDepth, 7);
  EXPECT_EQ(source.callStackDepth, 7);
  EXPECT_NE(source.implementation(), nullptr);
  target.disown();
  delete oldImpl;
}

TEST_F(CountingWalk, ItsEndIsThatOfAWalker) {
  {
    Counting walker;
    walker.LoadModules();
    help.log.clear();
  }
  EXPECT_EQ(help.log, Texts({"SymCleanup process", "freeLibrary dbghelp.dll"}));
}

TEST_F(CountingWalk, LayoutAddsOneNumber) {
  EXPECT_TRUE((std::is_base_of<StackWalker, VgStackWalker>::value));
  EXPECT_EQ(sizeof(OutputDebugParenthesesScope), sizeof(int));
}

// --- Scopes of debug output ---

class OutputScope : public CountingWalk {
 protected:
  ~OutputScope() override { VgStackWalker::initialCallStackDepth = 0; }

  // A stack of some frames, up to the end.
  void setFrames(std::uint64_t count) {
    help.frames.clear();
    for (std::uint64_t i = 1; i <= count; ++i) help.frames.push_back({i, i == count ? 0 : i + 1});
    help.steps = 0;
  }
  static int depth() { return VgStackWalker::initialCallStackDepth; }

 private:
  FreshGlobalWalker const fresh_;
};

TEST_F(OutputScope, TheDepthIsTheNumberOfFrames) {
  setFrames(5);
  EXPECT_EQ(depth(), 0);
  {
    OutputDebugParenthesesScope const scope;
    EXPECT_EQ(depth(), 5);
    EXPECT_EQ(VgStackWalker::globalStackWalker.callStackDepth, 6);
  }
  EXPECT_EQ(depth(), 0);
}

TEST_F(OutputScope, WalksTheCallingThreadWithoutContextAndRoutine) {
  setFrames(1);
  help.memoryAddress = help.readsAt = 5;
  help.memory = "memo";
  OutputDebugParenthesesScope const scope;
  EXPECT_EQ(calls("StackWalk64"), Texts({"StackWalk64 self"}));
  EXPECT_EQ(help.calls("contextCapture"), 1);
  EXPECT_EQ(help.bytesRead, "memo");
}

TEST_F(OutputScope, CountsFromZeroEachTime) {
  VgStackWalker::globalStackWalker.callStackDepth = 100;
  setFrames(3);
  OutputDebugParenthesesScope const scope;
  EXPECT_EQ(depth(), 3);
}

TEST_F(OutputScope, NestedScopesRestoreWhatTheyFound) {
  VgStackWalker::initialCallStackDepth = 77;
  setFrames(2);
  {
    OutputDebugParenthesesScope const outer;
    EXPECT_EQ(depth(), 2);
    setFrames(4);
    {
      OutputDebugParenthesesScope const inner;
      EXPECT_EQ(depth(), 4);
    }
    EXPECT_EQ(depth(), 2);
  }
  EXPECT_EQ(depth(), 77);
}

TEST_F(OutputScope, AWalkThatFailsGivesOneLess) {
  help.frames = {{1, 2}, {2, 3}, {3, 4}};
  {
    OutputDebugParenthesesScope const scope;
    EXPECT_EQ(depth(), 2);
  }
  EXPECT_EQ(depth(), 0);
}

TEST_F(OutputScope, AWalkThatCannotStartGivesMinus1) {
  help.remove(KVW("dbghelp.dll"), "StackWalk64");
  VgStackWalker::initialCallStackDepth = 8;
  {
    OutputDebugParenthesesScope const scope;
    EXPECT_EQ(depth(), -1);
  }
  EXPECT_EQ(depth(), 8);
}

TEST_F(OutputScope, TheFirstScopeLoadsTheLibraryAndTheNextUsesIt) {
  EXPECT_EQ(help.log, Texts());
  for (int round = 0; round < 2; ++round) {
    setFrames(1);
    OutputDebugParenthesesScope const scope;
    EXPECT_EQ(depth(), 1);
    EXPECT_EQ(help.calls("SymInitialize"), 1);
  }
}

TEST_F(OutputScope, WritesNothing) {
  setFrames(3);
  { OutputDebugParenthesesScope const scope; }
  EXPECT_EQ(help.outputs, Texts());
}

TEST_F(OutputScope, AssignmentCopiesTheSavedDepthAndTouchesNothingElse) {
  setFrames(2);
  VgStackWalker::initialCallStackDepth = 10;
  {
    OutputDebugParenthesesScope outer;
    setFrames(3);
    {
      OutputDebugParenthesesScope inner;
      help.log.clear();
      EXPECT_EQ(&(inner = outer), &inner);
      EXPECT_EQ(help.log, Texts());
      EXPECT_EQ(depth(), 3);
    }
    EXPECT_EQ(depth(), 10);
  }
  EXPECT_EQ(depth(), 10);
}

TEST_F(OutputScope, TheDepthOfThePreviousOutputStays0) {
  EXPECT_EQ(VgStackWalker::callStackDepthOfPreviousOutput, 0);
  setFrames(3);
  {
    OutputDebugParenthesesScope const scope;
    VgStackWalker::globalStackWalker.OnOutput("text");
    EXPECT_EQ(VgStackWalker::callStackDepthOfPreviousOutput, 0);
  }
  EXPECT_EQ(VgStackWalker::callStackDepthOfPreviousOutput, 0);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
