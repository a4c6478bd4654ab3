// SPDX-License-Identifier: MIT
//
// Call stacks of the running program by the debug-help library of the system. This source has debug information, which
// the other tests have not.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "kvbase/diagnostics/output_debug_parentheses_scope.h"
#include "kvbase/diagnostics/stack_walker.h"
#include "kvbase/diagnostics/vg_stack_walker.h"
#include "kvbase/platform/debug_api.h"
#include "kvbase/platform/error_api.h"
#include "tests/diagnostics/fresh_global_walker.h"
#include "tests/support/module_files.h"
#include "tests/support/narrow_text.h"
#include "tests/support/temp_folder.h"
#include "tests/support/thread_handle.h"

namespace KV_1_1 {
namespace testing {

namespace walked {

// Functions that call each other. What they call is not known at compile time, so none of them is inlined, and the call is
// not the last thing they do, so that each has a frame.
std::function<int()> work;
int innermostLine = 0;

int innermost() {
  innermostLine = __LINE__ + 1;
  int const result = work();
  return result + 1;
}

int (*volatile inner)() = &innermost;

int outermost(int depth);

int between(int depth) {
  int const result = outermost(depth);
  return result + 1;
}

// A function that calls itself would look like an endless stack.
int outermost(int depth) {
  int const result = depth > 0 ? between(depth - 1) : inner();
  return result + 1;
}

// The result of the work, done below innermost(), depth + 1 frames of outermost() and between them depth of between().
int doBelow(int depth, std::function<int()> const& callee) {
  work = callee;
  int const result = outermost(depth);
  work = nullptr;
  return result - 2 * depth - 2;
}

}  // namespace walked

namespace {

using Entry = StackWalker::CallstackEntry;

struct WalkedFrame {
  Entry entry;
  StackWalker::CallstackEntryType type;
};

class FrameWalker : public StackWalker {
 public:
  using StackWalker::StackWalker;

  std::vector<WalkedFrame> frames;
  std::vector<std::string> problems;
  std::string text;  // what the default callbacks print
  int modules = 0;

  int walk() { return ShowCallstack(GetCurrentThread(), nullptr, nullptr, nullptr); }

  // The position of the first frame in a function, by any part of its name; -1 if there is none.
  int indexOf(std::string const& function) const {
    for (std::size_t i = 0; i < frames.size(); ++i) {
      if (std::string(frames[i].entry.undecoratedFullName).find(function) != std::string::npos)
        return static_cast<int>(i);
    }
    return -1;
  }
  std::string names() const {
    std::string all;
    for (WalkedFrame const& frame : frames) all += frame.entry.undecoratedFullName + std::string("\n");
    for (std::string const& problem : problems) all += problem + '\n';
    return all;
  }

 protected:
  void OnLoadModule(char const*, char const*, unsigned long long, ulong32, ulong32, char const*, char const*,
                    unsigned long long) override {
    ++modules;
  }
  void OnCallstackEntry(CallstackEntryType type, CallstackEntry& entry) override {
    frames.push_back({entry, type});
    StackWalker::OnCallstackEntry(type, entry);
  }
  void OnDbgHelpErr(char const* function, ulong32 lastError, unsigned long long) override {
    problems.push_back(function + (' ' + std::to_string(lastError)));
  }
  void OnOutput(char const* line) override { text += line; }
};

// One walker for all tests, because it takes seconds to read the debug information of the program on Windows. A module
// has been loaded before it was made.
class RealCallStack : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder_ = new TempFolder;
    copyFixture(*folder_, moduleFile("walked_module"), moduleFile("walked_module"));
    module_ = platform::debug().loadLibrary(folder_->text(widen(moduleFile("walked_module"))).c_str());
    shared_ = new FrameWalker;
    shared_->LoadModules();
    start_ = new std::string(shared_->text);
  }
  static void TearDownTestSuite() {
    delete start_;
    delete shared_;
    EXPECT_TRUE(platform::debug().freeLibrary(module_));
    delete folder_;
  }
  RealCallStack() {
    walker.frames.clear();
    walker.problems.clear();
    walker.text.clear();
  }

  HINSTANCE module() const { return module_; }
  // What was printed when the modules were loaded.
  std::string const& start() const { return *start_; }

 private:
  static TempFolder* folder_;
  static HINSTANCE module_;
  static FrameWalker* shared_;
  static std::string* start_;

 protected:
  FrameWalker& walker = *shared_;
};
TempFolder* RealCallStack::folder_ = nullptr;
HINSTANCE RealCallStack::module_ = nullptr;
FrameWalker* RealCallStack::shared_ = nullptr;
std::string* RealCallStack::start_ = nullptr;

bool endsWith(std::string const& text, std::string const& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

TEST_F(RealCallStack, OwnFunctionsResolveToNameFileLineAndModule) {
  EXPECT_EQ(walked::doBelow(2, [&] { return walker.walk(); }), 1);
  SCOPED_TRACE(walker.names());
  EXPECT_GT(walker.modules, 1);

  int const innermost = walker.indexOf("walked::innermost");
  ASSERT_GE(innermost, 0);
  Entry const& entry = walker.frames[static_cast<std::size_t>(innermost)].entry;
  EXPECT_TRUE(endsWith(entry.lineFileName, "real_call_stack_test.cpp")) << entry.lineFileName;
  EXPECT_EQ(entry.lineNumber, static_cast<unsigned>(walked::innermostLine));
  EXPECT_NE(std::string(entry.undecoratedName).find("innermost"), std::string::npos) << entry.undecoratedName;
  EXPECT_EQ(std::string(entry.moduleName).substr(0, 12), "kvbase_tests");
  EXPECT_NE(std::string(entry.loadedImageName).find("kvbase_tests"), std::string::npos) << entry.loadedImageName;
  EXPECT_LE(entry.imageBase, entry.address);
  EXPECT_GT(entry.imageBase, 0u);
  EXPECT_NE(entry.symbolTypeText, nullptr);
  EXPECT_GT(entry.symbolDisplacement, 0u);

  // The callers follow.
  char const* const callers[] = {"walked::outermost", "walked::between",   "walked::outermost",
                                 "walked::between",   "walked::outermost", "walked::doBelow"};
  std::size_t position = static_cast<std::size_t>(innermost);
  for (char const* const caller : callers) {
    ASSERT_LT(++position, walker.frames.size());
    std::string const name = walker.frames[position].entry.undecoratedFullName;
    EXPECT_NE(name.find(caller), std::string::npos) << name;
  }
  EXPECT_EQ(walker.frames.back().type, StackWalker::EntryLast);
}

TEST_F(RealCallStack, TheLibrarysOwnFunctionsResolve) {
  walker.walk();
  ASSERT_FALSE(walker.frames.empty());
  Entry const& entry = walker.frames[0].entry;
  EXPECT_NE(std::string(entry.undecoratedFullName).find("StackWalker::ShowCallstack"), std::string::npos)
      << entry.undecoratedFullName;
  EXPECT_TRUE(endsWith(entry.lineFileName, "stack_walker.cpp")) << entry.lineFileName;
  EXPECT_GT(entry.lineNumber, 0u);
}

int callSelf(int depth, FrameWalker& walker) {
  int const result = depth > 0 ? callSelf(depth - 1, walker) : walker.walk();
  return result + 1;
}

// COMPAT: two frames of a function that calls itself have one address, which is the mark of an endless stack.
TEST_F(RealCallStack, EndsAtAFunctionThatCallsItself) {
  callSelf(1, walker);
  EXPECT_EQ(walker.indexOf("callSelf"), 2);
  EXPECT_EQ(walker.frames.back().type, StackWalker::EntryLast);
  walker.frames.clear();
  callSelf(2, walker);
  EXPECT_EQ(walker.frames.size(), 3u);
  ASSERT_FALSE(walker.problems.empty());
  EXPECT_EQ(walker.problems.back(), "StackWalk64-Endless-Callstack! 0");
}

TEST_F(RealCallStack, EndsInOrder) {
  platform::errors().setLastError(5);
  EXPECT_EQ(walker.walk(), 1);
  EXPECT_EQ(platform::errors().lastError(), 0u);
  SCOPED_TRACE(walker.names());
  ASSERT_GE(walker.frames.size(), 3u);
  EXPECT_EQ(walker.frames[0].type, StackWalker::EntryFirst);
  for (std::size_t i = 1; i + 1 < walker.frames.size(); ++i) EXPECT_EQ(walker.frames[i].type, StackWalker::EntryNext);
  EXPECT_EQ(walker.frames.back().type, StackWalker::EntryLast);
  EXPECT_EQ(walker.frames.back().entry.address, walker.frames[walker.frames.size() - 2].entry.address);
}

TEST_F(RealCallStack, ASecondWalkGivesTheSameFrames) {
  for (int round = 0; round < 3; ++round) walked::doBelow(1, [&] { return walker.walk(); });
  ASSERT_EQ(walker.frames.size() % 3, 0u);
  std::size_t const count = walker.frames.size() / 3;
  for (std::size_t i = 0; i < 2 * count; ++i) {
    EXPECT_STREQ(walker.frames[i].entry.undecoratedFullName, walker.frames[i + count].entry.undecoratedFullName);
    EXPECT_STREQ(walker.frames[i].entry.lineFileName, walker.frames[i + count].entry.lineFileName);
  }
}

TEST_F(RealCallStack, StartsAtAGivenContext) {
  walked::doBelow(0, [&] {
    _CONTEXT context;
    std::memset(&context, 0, sizeof context);
    platform::debug().contextCapture()(&context);
    _CONTEXT const before = context;
    int const result = walker.ShowCallstack(GetCurrentThread(), &context, nullptr, nullptr);
    EXPECT_EQ(std::memcmp(&context, &before, sizeof context), 0);
    return result;
  });
  SCOPED_TRACE(walker.names());
  ASSERT_FALSE(walker.frames.empty());
  EXPECT_TRUE(endsWith(walker.frames[0].entry.lineFileName, "real_call_stack_test.cpp"));
  EXPECT_EQ(walker.indexOf("StackWalker::ShowCallstack"), -1);
  EXPECT_GT(walker.indexOf("walked::innermost"), 0);
}

// --- Reading memory ---

struct Reading {
  int calls = 0;
  int limit = 1 << 30;  // reads that succeed
};

int readOwnMemory(void* process, unsigned long long address, void* buffer, ulong32 size, ulong32* bytesRead,
                  void* userData) {
  auto& reading = *static_cast<Reading*>(userData);
  std::size_t read = 0;
  *bytesRead = 0;
  if (++reading.calls > reading.limit) return 0;
  bool const complete = platform::debug().readMemory(process, address, buffer, size, read);
  *bytesRead = static_cast<ulong32>(read);
  return complete ? 1 : 0;
}

TEST_F(RealCallStack, ReadsTheStackByTheGivenRoutine) {
  walker.ShowCallstack(GetCurrentThread(), nullptr, nullptr, nullptr);
  std::size_t const count = walker.frames.size();
  walker.frames.clear();
  Reading reading;
  EXPECT_EQ(walker.ShowCallstack(GetCurrentThread(), nullptr, &readOwnMemory, &reading), 1);
  EXPECT_GT(reading.calls, 0);
  EXPECT_EQ(walker.frames.size(), count);
}

// Each of the first reads fails once, later ones at growing distances: Windows reads memory many times per frame.
TEST_F(RealCallStack, AStackThatCannotBeReadEndsWithAnErrorAtAnyPoint) {
  Reading all;
  walker.ShowCallstack(GetCurrentThread(), nullptr, &readOwnMemory, &all);
  std::size_t const complete = walker.frames.size();
  int limit = 0;
  for (; limit < all.calls; limit += 1 + limit / 4) {
    SCOPED_TRACE(limit);
    walker.frames.clear();
    walker.problems.clear();
    Reading reading;
    reading.limit = limit;
    EXPECT_EQ(walker.ShowCallstack(GetCurrentThread(), nullptr, &readOwnMemory, &reading), 1);
    EXPECT_GT(reading.calls, limit);
    EXPECT_LT(walker.frames.size(), complete);
    ASSERT_FALSE(walker.problems.empty());
    EXPECT_EQ(walker.problems.back().compare(0, 12, "StackWalk64 "), 0) << walker.problems.back();
  }
  EXPECT_GT(limit, 0);
}

TEST_F(RealCallStack, AMeaninglessContextEndsWithoutHarm) {
  for (std::uint64_t const value : {std::uint64_t{0}, std::uint64_t{1}, ~std::uint64_t{0}, std::uint64_t{1} << 47}) {
    _CONTEXT context;
    std::memset(&context, 0, sizeof context);
    context.ContextFlags = 0x10000b;
    context.Rip = context.Rsp = context.Rbp = value;
    EXPECT_EQ(walker.ShowCallstack(GetCurrentThread(), &context, nullptr, nullptr), 1);
  }
  EXPECT_FALSE(walker.problems.empty());
}

// --- Other threads and modules ---

TEST_F(RealCallStack, AnotherThreadIsWalkedWhileItStandsStillAndRunsOn) {
  std::atomic<ThreadHandle*> handle{nullptr};
  std::atomic<bool> finish{false};
  std::atomic<unsigned> rounds{0};
  std::thread thread([&] {
    ThreadHandle own;
    walked::doBelow(1, [&] {
      handle = &own;
      while (!finish) ++rounds;
      return 0;
    });
    handle = nullptr;
  });
  while (handle == nullptr || rounds == 0) std::this_thread::yield();
  for (int round = 0; round < 5; ++round) {
    walker.frames.clear();
    EXPECT_EQ(walker.ShowCallstack(handle.load()->get(), nullptr, nullptr, nullptr), 1);
    EXPECT_GE(walker.indexOf("walked::innermost"), 0) << walker.names();
    EXPECT_GT(walker.indexOf("walked::outermost"), walker.indexOf("walked::innermost"));
    unsigned const before = rounds;
    while (rounds == before) std::this_thread::yield();
  }
  finish = true;
  thread.join();
}

FrameWalker* walkerBelowModule = nullptr;

TEST_F(RealCallStack, AModuleLoadedLaterIsKnownToAWalkerMadeThen) {
  ASSERT_NE(module(), nullptr);
  using Call = int (*)(int (*callee)());
  auto const callFromModule = reinterpret_cast<Call>(platform::debug().function(module(), "callFromModule"));
  ASSERT_NE(callFromModule, nullptr);
  walkerBelowModule = &walker;
  EXPECT_EQ(callFromModule([] { return walkerBelowModule->walk(); }), 2);
  SCOPED_TRACE(walker.names());
  int const index = walker.indexOf("callFromModule");
  ASSERT_GT(index, 0);
  Entry const& entry = walker.frames[static_cast<std::size_t>(index)].entry;
  EXPECT_EQ(std::string(entry.moduleName).substr(0, 13), "walked_module");
  EXPECT_TRUE(endsWith(entry.lineFileName, "walked_module.cpp")) << entry.lineFileName;
  EXPECT_EQ(entry.lineNumber, 7u);
  EXPECT_EQ(walker.frames.back().type, StackWalker::EntryLast);
}

// --- The lines, the counting walk, and scopes of debug output ---

TEST_F(RealCallStack, IsPrintedLineByLine) {
  EXPECT_EQ(start().compare(0, 29, "SymInit: Symbol-SearchPath: '"), 0) << start().substr(0, 200);
  EXPECT_NE(start().find("\nOS-Version: "), std::string::npos);
  walked::doBelow(0, [&] { return walker.walk(); });
  std::string const line = "real_call_stack_test.cpp (" + std::to_string(walked::innermostLine) + "): ";
  EXPECT_NE(walker.text.find(line), std::string::npos) << walker.text;
  EXPECT_EQ(walker.text.back(), '\n');
}

TEST_F(RealCallStack, ScopesOfDebugOutputKnowTheDepth) {
  FreshGlobalWalker const fresh;
  // A shallow copy: the scopes use what the walker has loaded.
  static_cast<StackWalker&>(VgStackWalker::globalStackWalker) = walker;
  int const& depth = VgStackWalker::initialCallStackDepth;
  int const before = depth;
  int depths[3] = {};
  for (int i = 0; i < 3; ++i) {
    walked::doBelow(i, [&] {
      OutputDebugParenthesesScope const scope;
      depths[i] = depth;
      return 0;
    });
    EXPECT_EQ(depth, before);
  }
  EXPECT_GT(depths[0], 5);
  EXPECT_EQ(depths[1], depths[0] + 2);
  EXPECT_EQ(depths[2], depths[0] + 4);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
