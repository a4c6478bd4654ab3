// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/diagnostics/walker_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

using Frame = ScriptedDebugHelp::Frame;

class CallstackWalk : public ScriptedWalk {
 protected:
  // Knows everything about an address.
  void describe(std::uint64_t address) {
    std::string const number = std::to_string(address);
    help.symbols[address] = {"_Z" + number, "bare" + number, "complete" + number, address + 1};
    help.lines[address] = {"file" + number, static_cast<ulong32>(address + 2), static_cast<ulong32>(address + 3)};
    help.modules[address] = moduleInfo(3, "module" + number, address + 4, "path" + number);
  }
  // The addresses of the entries that came with a certain type.
  Texts callbacks() const { return walker.logged("Entry"); }
  Texts problems() const { return walker.logged("OnDbgHelpErr"); }

  RecordingWalker walker{0};
};

// --- The end of a stack ---

TEST_F(CallstackWalk, ANormalEndGivesFirstNextAndTheFinalFrameOnceMoreAsLast) {
  help.frames = {{1, 2}, {2, 3}, {3, 0}};
  for (Frame const& frame : help.frames) describe(frame.programCounter);
  errors.error = 99;
  EXPECT_EQ(walker.walk(), 1);
  EXPECT_EQ(walker.log, after({"EntryFirst 1", "EntryNext 2", "EntryNext 3", "EntryLast 3"}));
  EXPECT_EQ(errors.error, 0u);
  EXPECT_STREQ(walker.entries[3].undecoratedFullName, "complete3");
  EXPECT_STREQ(walker.entries[3].lineFileName, "file3");
  EXPECT_EQ(help.steps, 3u);
}

TEST_F(CallstackWalk, ASingleFrameIsFirstAndLast) {
  help.frames = {{1, 0}};
  describe(1);
  EXPECT_EQ(walker.walk(), 1);
  EXPECT_EQ(callbacks(), Texts({"EntryFirst 1", "EntryLast 1"}));
}

TEST_F(CallstackWalk, AFailingFirstStepIsToldWithTheLastErrorAndTheStartAddress) {
  EXPECT_EQ(walker.walk(), 1);
  EXPECT_EQ(walker.log, after({"OnDbgHelpErr StackWalk64|487|4096"}));
}

TEST_F(CallstackWalk, AFailingLaterStepIsToldWithTheProgramCounterOfTheFrameBefore) {
  help.frames = {{1, 2}};
  describe(1);
  EXPECT_EQ(walker.walk(), 1);
  EXPECT_EQ(walker.log, after({"EntryFirst 1", "OnDbgHelpErr StackWalk64|487|1"}));
}

TEST_F(CallstackWalk, AnEndlessFirstFrameGivesOnlyTheError) {
  help.frames = {{5, 5}};
  describe(5);
  EXPECT_EQ(walker.walk(), 1);
  EXPECT_EQ(walker.log, after({"OnDbgHelpErr StackWalk64-Endless-Callstack!|0|5"}));
  EXPECT_EQ(help.calls("SymGetSymFromAddr64"), 0);
}

TEST_F(CallstackWalk, AnEndlessLaterFrameEndsTheWalkWithoutACallbackForIt) {
  help.frames = {{1, 5}, {5, 5}};
  describe(1);
  EXPECT_EQ(walker.walk(), 1);
  EXPECT_EQ(walker.log, after({"EntryFirst 1", "OnDbgHelpErr StackWalk64-Endless-Callstack!|0|5"}));
}

TEST_F(CallstackWalk, TheAddress0WithTheReturnAddress0IsEndlessToo) {
  help.frames = {{0, 0}};
  EXPECT_EQ(walker.walk(), 1);
  EXPECT_EQ(problems(), Texts({"OnDbgHelpErr StackWalk64-Endless-Callstack!|0|0"}));
  EXPECT_EQ(callbacks(), Texts());
}

TEST_F(CallstackWalk, TheNumberOfFramesIsNotLimited) {
  constexpr std::uint64_t kFrames = 5000;
  for (std::uint64_t i = 1; i <= kFrames; ++i) help.frames.push_back({i, i == kFrames ? 0 : i + 1});
  help.recording = walker.keepsEntries = false;
  EXPECT_EQ(walker.walk(), 1);
  EXPECT_EQ(callbacks().size(), kFrames + 1);
  EXPECT_EQ(callbacks().back(), "EntryLast 5000");
}

// --- The data of a frame ---

TEST_F(CallstackWalk, AFrameHasAllThatIsKnown) {
  help.frames = {{7, 0}};
  describe(7);
  help.modules[7].symbolType = 9;
  walker.walk();
  ASSERT_EQ(walker.entries.size(), 2u);
  StackWalker::CallstackEntry const& entry = walker.entries[0];
  EXPECT_EQ(entry.address, 7u);
  EXPECT_STREQ(entry.name, "_Z7");
  EXPECT_STREQ(entry.undecoratedName, "bare7");
  EXPECT_STREQ(entry.undecoratedFullName, "complete7");
  EXPECT_EQ(entry.symbolDisplacement, 8u);
  EXPECT_EQ(entry.lineNumber, 9u);
  EXPECT_EQ(entry.lineDisplacement, 10u);
  EXPECT_STREQ(entry.lineFileName, "file7");
  EXPECT_STREQ(entry.moduleName, "module7");
  EXPECT_EQ(entry.imageBase, 11u);
  EXPECT_STREQ(entry.loadedImageName, "path7");
  EXPECT_EQ(entry.symbolType, 0u);
}

TEST_F(CallstackWalk, SymbolLineAndModuleAreAskedForInThisOrderWithTheirRecordSizes) {
  help.frames = {{7, 0}};
  describe(7);
  walker.LoadModules();
  help.log.clear();
  walker.walk();
  EXPECT_EQ(help.log, Texts({"contextCapture", "StackWalk64 self", "SymGetSymFromAddr64 7 32 1024",
                             "UnDecorateSymbolName 4096 1024", "UnDecorateSymbolName 0 1024",
                             "SymGetLineFromAddr64 7 40", "SymGetModuleInfo64 7 584", "resumeThread self"}));
}

TEST_F(CallstackWalk, DataAreRetrievedWhateverTheOptionsSay) {
  help.frames = {{7, 0}};
  for (int const options : {0, 63}) {
    RecordingWalker another(options);
    help.log.clear();
    help.steps = 0;
    another.walk();
    for (char const* const function : {"SymGetSymFromAddr64 7", "SymGetLineFromAddr64 7", "SymGetModuleInfo64 7"})
      EXPECT_EQ(calls(function).size(), 1u) << function << options;
  }
}

TEST_F(CallstackWalk, EachFailingStepOfAFrameIsToldAndTheWalkGoesOn) {
  help.frames = {{1, 2}, {2, 0}};
  describe(2);
  walker.walk();
  // The reason of a missing module is always 1114.
  EXPECT_EQ(walker.log,
            after({"OnDbgHelpErr SymGetSymFromAddr64|487|1", "OnDbgHelpErr SymGetLineFromAddr64|487|1",
                   "OnDbgHelpErr SymGetModuleInfo64|1114|1", "EntryFirst 1", "EntryNext 2", "EntryLast 2"}));
}

TEST_F(CallstackWalk, OnlyWhatFailsIsMissing) {
  for (int missing = 0; missing < 3; ++missing) {
    SCOPED_TRACE(missing);
    RecordingWalker another(0);
    describe(7);
    help.frames = {{7, 0}};
    help.steps = 0;
    if (missing == 0) help.symbols.clear();
    if (missing == 1) help.lines.clear();
    if (missing == 2) help.modules.clear();
    another.walk();
    StackWalker::CallstackEntry const& entry = another.entries.at(0);
    EXPECT_EQ(another.logged("OnDbgHelpErr").size(), 1u);
    EXPECT_STREQ(entry.name, missing == 0 ? "" : "_Z7");
    EXPECT_EQ(entry.symbolDisplacement, missing == 0 ? 0u : 8u);
    EXPECT_STREQ(entry.lineFileName, missing == 1 ? "" : "file7");
    EXPECT_EQ(entry.lineDisplacement, missing == 1 ? 0u : 10u);
    EXPECT_STREQ(entry.moduleName, missing == 2 ? "" : "module7");
  }
}

TEST_F(CallstackWalk, AnEntryIsResetButForImageBaseAndSymbolType) {
  help.frames = {{1, 2}, {2, 0}};
  describe(1);
  walker.walk();
  StackWalker::CallstackEntry const& entry = walker.entries.at(1);
  for (char const* const text : {entry.name, entry.undecoratedName, entry.undecoratedFullName, entry.lineFileName,
                                 entry.moduleName, entry.loadedImageName})
    EXPECT_STREQ(text, "");
  EXPECT_EQ(entry.symbolDisplacement, 0u);
  EXPECT_EQ(entry.lineDisplacement, 0u);
  EXPECT_EQ(entry.lineNumber, 0u);
  EXPECT_EQ(entry.imageBase, 5u);
  EXPECT_STREQ(entry.symbolTypeText, "PDB");
}

TEST_F(CallstackWalk, BeforeAnyModuleIsKnownImageBaseAndSymbolTypeAreNull) {
  help.frames = {{1, 0}};
  walker.walk();
  EXPECT_EQ(walker.entries.at(0).imageBase, 0u);
  EXPECT_EQ(walker.entries.at(0).symbolTypeText, nullptr);
}

TEST_F(CallstackWalk, AFrameAtAddress0IsNotResolvedButCalledBack) {
  help.frames = {{0, 2}, {2, 0}};
  describe(0);
  describe(2);
  walker.walk();
  EXPECT_EQ(walker.log, after({"EntryFirst 0", "EntryNext 2", "EntryLast 2"}));
  EXPECT_STREQ(walker.entries[0].name, "");
}

TEST_F(CallstackWalk, WithoutTheLineFunctionFramesHaveNoLinesAndNoErrors) {
  help.remove(KVW("dbghelp.dll"), "SymGetLineFromAddr64");
  help.frames = {{7, 0}};
  describe(7);
  EXPECT_EQ(walker.walk(), 1);
  EXPECT_EQ(walker.log, after({"EntryFirst 7", "EntryLast 7"}));
  EXPECT_STREQ(walker.entries[0].lineFileName, "");
  EXPECT_STREQ(walker.entries[0].moduleName, "module7");
}

TEST_F(CallstackWalk, ALineWithoutAFileNameHasAnEmptyOne) {
  help.frames = {{7, 0}};
  describe(7);
  help.lines[7].hasFile = false;
  walker.walk();
  EXPECT_EQ(walker.entries.at(0).lineNumber, 9u);
  EXPECT_STREQ(walker.entries.at(0).lineFileName, "");
}

TEST_F(CallstackWalk, SymbolTypesOfFrames) {
  struct {
    int type;
    char const* text;
  } const rows[] = {{0, "-nosymbols-"}, {1, "COFF"}, {2, "CV"},      {3, "PDB"},   {4, "-exported-"}, {5, "-deferred-"},
                    {6, "SYM"},         {7, "DIA"},  {8, "Virtual"}, {9, nullptr}, {10, nullptr},     {-1, nullptr}};
  for (auto const& row : rows) {
    SCOPED_TRACE(row.type);
    RecordingWalker another(0);
    help.frames = {{1, 2}, {7, 0}};
    help.steps = 0;
    describe(1);
    describe(7);
    help.modules[7].symbolType = row.type;
    another.walk();
    EXPECT_STREQ(another.entries.at(1).symbolTypeText, row.text);
  }
}

TEST_F(CallstackWalk, OverlongTextsAreCut) {
  struct {
    char const* name;
    std::size_t length;
  } const rows[] = {{"one less than fits", 1022}, {"just fits", 1023}, {"one too long", 1024}, {"longer", 5000}};
  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    RecordingWalker another(0);
    std::string const text(row.length, 'x');
    std::string const expected = text.substr(0, 1023);
    help.frames = {{7, 0}};
    help.steps = 0;
    help.symbols[7] = {text, text, text};
    help.lines[7] = {text, 1};
    another.walk();
    StackWalker::CallstackEntry const& entry = another.entries.at(0);
    EXPECT_EQ(entry.name, expected);
    EXPECT_EQ(entry.undecoratedName, expected);
    EXPECT_EQ(entry.undecoratedFullName, expected);
    EXPECT_EQ(entry.lineFileName, expected);
  }
}

TEST_F(CallstackWalk, ModuleTextsWithoutATerminatorAreTakenToTheEndOfTheirField) {
  help.frames = {{7, 0}};
  help.modules[7] = moduleInfo(3, std::string(40, 'm'), 1, std::string(300, 'p'));
  walker.walk();
  EXPECT_EQ(walker.entries.at(0).moduleName, std::string(32, 'm'));
  EXPECT_EQ(walker.entries.at(0).loadedImageName, std::string(256, 'p'));
}

TEST_F(CallstackWalk, UndecoratedNamesThatCannotBeHadAreEmpty) {
  help.frames = {{7, 0}};
  help.symbols[7] = {"plain", "", ""};
  walker.walk();
  EXPECT_STREQ(walker.entries.at(0).name, "plain");
  EXPECT_STREQ(walker.entries.at(0).undecoratedName, "");
  EXPECT_STREQ(walker.entries.at(0).undecoratedFullName, "");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
