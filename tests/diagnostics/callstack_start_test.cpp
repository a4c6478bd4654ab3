// SPDX-License-Identifier: MIT
//
// Where a walk starts, what becomes of the thread meanwhile, and how the stack is read.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/diagnostics/walker_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

using Frame = ScriptedDebugHelp::Frame;

class CallstackStart : public ScriptedWalk {
 protected:
  RecordingWalker walker{0};
};

TEST_F(CallstackStart, StartsAtTheRegistersWithFlatAddresses) {
  help.threadRegisters.Rip = 0x1234;
  help.threadRegisters.Rsp = 0x5678;
  walker.walk();
  EXPECT_EQ(help.firstFrame.programCounter.offset, 0x1234u);
  EXPECT_EQ(help.firstFrame.frame.offset, 0x5678u);
  EXPECT_EQ(help.firstFrame.stack.offset, 0x5678u);
  for (auto const* const address : {&help.firstFrame.programCounter, &help.firstFrame.frame, &help.firstFrame.stack}) {
    EXPECT_EQ(address->mode, 3);
    EXPECT_EQ(address->segment, 0);
  }
  EXPECT_EQ(help.firstFrame.returnAddress.offset, 0u);
  EXPECT_EQ(help.firstFrame.backingStore.offset, 0u);
  EXPECT_EQ(help.firstFrame.functionTableEntry, nullptr);
}

TEST_F(CallstackStart, AGivenContextIsCopiedAndItsThreadLeftAlone) {
  _CONTEXT context = {};
  context.Rip = 0x99;
  context.Rsp = 0x88;
  context.Rbp = 0x77;
  for (void* const thread : {GetCurrentThread(), help.thread}) {
    help.steps = 0;
    help.frames = {{1, 0}};
    EXPECT_EQ(walker.ShowCallstack(thread, &context, nullptr, nullptr), 1);
    EXPECT_EQ(help.firstFrame.programCounter.offset, 0x99u);
    EXPECT_EQ(help.firstContext.Rbp, 0x77u);
    EXPECT_NE(help.contextGiven, static_cast<void*>(&context));
    EXPECT_EQ(context.Rip, 0x99u);
  }
  for (char const* const call : {"suspendThread", "resumeThread", "threadContext", "contextCapture"})
    EXPECT_EQ(help.calls(call), 0) << call;
}

TEST_F(CallstackStart, TheCallingThreadIsCapturedAndResumedThoughNotSuspended) {
  walker.LoadModules();
  help.log.clear();
  EXPECT_EQ(walker.walk(), 1);
  EXPECT_EQ(help.log, Texts({"contextCapture", "StackWalk64 self", "resumeThread self"}));
  EXPECT_EQ(ScriptedDebug::flagsAsked, 0x10000bu);
}

TEST_F(CallstackStart, AnotherThreadIsSuspendedForTheWholeWalk) {
  walker.LoadModules();
  help.log.clear();
  help.frames = {{1, 0}};
  EXPECT_EQ(walker.ShowCallstack(help.thread, nullptr, nullptr, nullptr), 1);
  EXPECT_EQ(help.log.size(), 7u);
  EXPECT_EQ(help.log.at(0), "suspendThread other");
  EXPECT_EQ(help.log.at(1), "threadContext other");
  EXPECT_EQ(help.log.at(2), "StackWalk64 other");
  EXPECT_EQ(help.log.back(), "resumeThread other");
  EXPECT_EQ(ScriptedDebug::flagsAsked, 0x10000bu);
  EXPECT_EQ(help.firstFrame.programCounter.offset, help.threadRegisters.Rip);
}

TEST_F(CallstackStart, AThreadWhoseRegistersCannotBeReadIsResumedAndNotWalked) {
  walker.LoadModules();
  help.log.clear();
  help.readsContext = false;
  EXPECT_EQ(walker.ShowCallstack(help.thread, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(help.log, Texts({"suspendThread other", "threadContext other", "resumeThread other"}));
}

TEST_F(CallstackStart, AThreadIsResumedHoweverTheWalkEnds) {
  walker.LoadModules();
  for (std::vector<Frame> const& frames : {std::vector<Frame>{}, {{1, 1}}, {{1, 0}}}) {
    help.log.clear();
    help.steps = 0;
    help.frames = frames;
    EXPECT_EQ(walker.ShowCallstack(help.thread, nullptr, nullptr, nullptr), 1);
    EXPECT_EQ(calls("suspendThread"), Texts({"suspendThread other"}));
    EXPECT_EQ(help.log.back(), "resumeThread other");
  }
}

TEST_F(CallstackStart, AThreadIsResumedIfACallbackThrows) {
  class Throwing : public StackWalker {
   public:
    using StackWalker::StackWalker;
    void OnCallstackEntry(CallstackEntryType, CallstackEntry&) override { throw 1; }
    void OnOutput(char const*) override {}
  } another(0);
  help.frames = {{1, 0}};
  EXPECT_THROW(another.ShowCallstack(help.thread, nullptr, nullptr, nullptr), int);
  EXPECT_EQ(help.log.back(), "resumeThread other");
}

TEST_F(CallstackStart, ModulesAreLoadedBeforeTheFirstWalkOnly) {
  walker.walk();
  EXPECT_EQ(help.calls("SymInitialize"), 1);
  walker.walk();
  EXPECT_EQ(help.calls("SymInitialize"), 1);
}

TEST_F(CallstackStart, WithoutListedModulesAWalkIsStartedAllTheSame) {
  help.snapshot.clear();
  help.frames = {{1, 0}};
  EXPECT_EQ(walker.walk(), 1);
  EXPECT_EQ(walker.logged("Entry"), Texts({"EntryFirst 1", "EntryLast 1"}));
}

TEST_F(CallstackStart, WithoutALibraryThereIsNoWalk) {
  help.libraries.erase(KVW("dbghelp.dll"));
  EXPECT_EQ(walker.walk(), 0);
  EXPECT_EQ(errors.error, 1114u);
  EXPECT_EQ(walker.log, Texts({"OnDbgHelpErr Error while initializing dbghelp.dll|0|0"}));
  EXPECT_EQ(help.calls("contextCapture"), 0);
}

// --- Reading memory ---

struct ReadCall {
  void* process;
  unsigned long long address;
  ulong32 size;
};

int readForTest(void* process, unsigned long long address, void* buffer, ulong32 size, ulong32* bytesRead,
                void* userData) {
  *static_cast<ReadCall*>(userData) = {process, address, size};
  std::memcpy(buffer, "read", 4);
  *bytesRead = 4;
  return 42;
}

TEST_F(CallstackStart, TheRoutineReadsTheStackWithItsUserData) {
  ReadCall call = {};
  help.readsAt = 0xABC;
  walker.ShowCallstack(GetCurrentThread(), nullptr, &readForTest, &call);
  EXPECT_EQ(help.readResult, 42);
  EXPECT_EQ(help.bytesRead, "read");
  EXPECT_EQ(call.process, help.process);
  EXPECT_EQ(call.address, 0xABCu);
  EXPECT_EQ(call.size, 4u);
  EXPECT_EQ(help.calls("readMemory"), 0);
}

TEST_F(CallstackStart, WithoutARoutineMemoryOfTheProcessIsRead) {
  help.memoryAddress = 0xABC;
  help.memory = "memo";
  help.readsAt = 0xABC;
  walker.walk();
  EXPECT_EQ(help.readResult, 1);
  EXPECT_EQ(help.bytesRead, "memo");
  EXPECT_EQ(calls("readMemory"), Texts({"readMemory 2748 4"}));
}

TEST_F(CallstackStart, MemoryThatCannotBeReadWholeIsAFailureWithTheBytesRead) {
  help.memoryAddress = 0xABC;
  help.memory = "me";
  help.readsAt = 0xABC;
  walker.walk();
  EXPECT_EQ(help.readResult, 0);
  EXPECT_EQ(help.bytesRead, "me");
}

TEST_F(CallstackStart, RoutineAndUserDataStayUntilTheNextCallOfAnyWalker) {
  ReadCall call = {};
  char byte = 0;
  ulong32 count = 0;
  walker.ShowCallstack(GetCurrentThread(), nullptr, &readForTest, &call);
  char four[4];
  EXPECT_EQ(RecordingWalker::myReadProcMem(help.process, 5, four, 4, &count), 42);
  EXPECT_EQ(call.address, 5u);

  RecordingWalker other(0);
  other.walk();
  help.memoryAddress = 6;
  help.memory = "m";
  EXPECT_EQ(RecordingWalker::myReadProcMem(help.process, 6, &byte, 1, &count), 1);
  EXPECT_EQ(byte, 'm');
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(call.address, 5u);
}

TEST_F(CallstackStart, ACallThatCannotStartLeavesTheRoutine) {
  ReadCall call = {};
  walker.ShowCallstack(GetCurrentThread(), nullptr, &readForTest, &call);
  help.remove(KVW("dbghelp.dll"), "SymInitialize");
  EXPECT_EQ(RecordingWalker(0).walk(), 0);
  char four[4];
  ulong32 count = 0;
  EXPECT_EQ(RecordingWalker::myReadProcMem(help.process, 5, four, 4, &count), 42);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
