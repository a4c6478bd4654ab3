// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "kvbase/platform/debug_api.h"
#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"
#include "tests/platform/linux/debug/debug_help.h"
#include "tests/support/threads.h"

namespace KV_1_1 {
namespace testing {

namespace walked {

_CONTEXT captured;
int captureLine;
int outerLine;
std::vector<Frame> frames;
bool endsInOrder;

template <class T>
struct Inner {
  // Not inlined, and the call is not the last thing it does, so that it has a frame.
  __attribute__((noinline)) int walk(T value) const {
    captured = emptyContext();
    auto const capture = platform::nativeDebug().contextCapture();
    capture(&captured);
    // The registers are those behind the call, which are on its line or on the next one.
    captureLine = __LINE__;
    DebugHelp help;
    frames = help.walk(captured);
    endsInOrder = help.endsInOrder;
    return static_cast<int>(value) + 1;
  }
};

__attribute__((noinline)) int outer(int depth) {
  if (depth > 0) return outer(depth - 1) + 1;
  outerLine = __LINE__ + 1;
  return Inner<long>().walk(depth) + 1;
}

void onSignal(int) {
  outer(0);
}

}  // namespace walked

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

bool readOwn(void* process, std::uint64_t address, void* buffer, ulong32 size, ulong32* bytesRead) {
  std::size_t count = 0;
  bool const all = platform::nativeDebug().readMemory(process, address, buffer, size, count);
  *bytesRead = static_cast<ulong32>(count);
  return all;
}

TEST(LinuxStackWalk, NamesFilesAndLinesOfOwnFunctions) {
  walked::outer(2);
  std::vector<Frame> const& frames = walked::frames;
  ASSERT_GE(frames.size(), 6u);
  EXPECT_EQ(frames[0].bareName, "KV_1_1::testing::walked::Inner<long>::walk");
  EXPECT_EQ(frames[0].name, "KV_1_1::testing::walked::Inner<long>::walk(long) const");
  EXPECT_EQ(frames[1].name, "KV_1_1::testing::walked::outer(int)");
  EXPECT_EQ(frames[2].name, "KV_1_1::testing::walked::outer(int)");
  EXPECT_EQ(frames[3].name, "KV_1_1::testing::walked::outer(int)");
  EXPECT_THAT(frames[4].name, HasSubstr("NamesFilesAndLinesOfOwnFunctions"));
  std::string program;
  ASSERT_TRUE(platform::nativeDebug().programPath(program));
  std::string const stem = program.substr(program.rfind('/') + 1);
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(frames[i].module, stem) << i;
    EXPECT_THAT(frames[i].file, EndsWith("tests/platform/linux/debug/stack_walk_test.cpp")) << i;
  }
  EXPECT_GE(frames[0].line, static_cast<unsigned>(walked::captureLine - 2));
  EXPECT_LE(frames[0].line, static_cast<unsigned>(walked::captureLine));
  EXPECT_EQ(frames[1].line, static_cast<unsigned>(walked::outerLine));
  EXPECT_GE(indexOf(frames, "main"), 5);
}

TEST(LinuxStackWalk, ReturnAddressIsTheCounterOfTheNextFrame) {
  walked::outer(3);
  for (std::size_t i = 0; i + 1 < walked::frames.size(); ++i) {
    EXPECT_EQ(walked::frames[i].returnAddress, walked::frames[i + 1].address) << i;
  }
}

TEST(LinuxStackWalk, EndsInOrderAtTheStartOfTheProgram) {
  walked::outer(0);
  EXPECT_TRUE(walked::endsInOrder);
  ASSERT_FALSE(walked::frames.empty());
  EXPECT_EQ(walked::frames.back().bareName, "_start");
}

TEST(LinuxStackWalk, SecondWalkIsEqualToTheFirst) {
  std::vector<Frame> walks[2];
  for (auto& walk : walks) {
    walked::outer(5);
    walk = walked::frames;
  }
  ASSERT_EQ(walks[0].size(), walks[1].size());
  for (std::size_t i = 0; i < walks[0].size(); ++i) {
    EXPECT_EQ(walks[0][i].name, walks[1][i].name) << i;
    EXPECT_EQ(walks[0][i].file, walks[1][i].file) << i;
    EXPECT_EQ(walks[0][i].displacement, walks[1][i].displacement) << i;
  }
}

// The frame that the system makes for a handler has no simple rule, and its caller has been interrupted, not called.
TEST(LinuxStackWalk, GoesOnThroughAHandlerOfASignal) {
  struct sigaction action = {};
  struct sigaction previous = {};
  action.sa_handler = &walked::onSignal;
  ASSERT_EQ(sigaction(SIGUSR1, &action, &previous), 0);
  raise(SIGUSR1);
  sigaction(SIGUSR1, &previous, nullptr);
  int const handler = indexOf(walked::frames, "KV_1_1::testing::walked::onSignal");
  EXPECT_EQ(handler, 2);
  EXPECT_GT(indexOf(walked::frames, "main"), handler + 2);
  EXPECT_TRUE(walked::endsInOrder);
}

// A stack of nothing but frames of signals, each of which interrupts the return from the one before.
TEST(LinuxStackWalk, SignalFramesThatRunInACircleEndWithAFailure) {
  struct sigaction action = {};
  struct sigaction previous = {};
  action.sa_handler = walked::onSignal;
  ASSERT_EQ(sigaction(SIGUSR1, &action, &previous), 0);
  raise(SIGUSR1);
  sigaction(SIGUSR1, &previous, nullptr);
  int const handler = indexOf(walked::frames, "KV_1_1::testing::walked::onSignal");
  ASSERT_GE(handler, 0);
  static std::uint64_t restorer;
  restorer = walked::frames[static_cast<std::size_t>(handler) + 1].address;
  auto const read = [](void*, std::uint64_t, void* buffer, ulong32 size, ulong32* bytesRead) -> int {
    for (ulong32 i = 0; i + 8 <= size; i += 8) memcpy(static_cast<char*>(buffer) + i, &restorer, 8);
    *bytesRead = size;
    return 1;
  };
  _CONTEXT context = walked::captured;
  context.Rip = restorer;
  DebugHelp help;
  std::vector<Frame> const frames = help.walk(context, read, 1000, /*describeFrames=*/false);
  EXPECT_GT(frames.size(), 10u);
  EXPECT_LT(frames.size(), 1000u);
  EXPECT_FALSE(help.endsInOrder);
}

// After a call through a wrong pointer only the return address on the stack tells who called.
TEST(LinuxStackWalk, FindsTheCallerOfCodeThatIsNotThere) {
  static std::uint64_t returnAddress;
  static std::uint64_t place;
  walked::outer(0);
  _CONTEXT context = walked::captured;
  returnAddress = context.Rip;
  context.Rsp -= 8;
  place = context.Rsp;
  context.Rip = 0x10;
  auto const read = [](void*, std::uint64_t address, void* buffer, ulong32 size, ulong32* bytesRead) -> int {
    if (address != place || size != sizeof returnAddress) return 0;
    memcpy(buffer, &returnAddress, size);
    *bytesRead = size;
    return 1;
  };
  DebugHelp help;
  std::vector<Frame> const frames = help.walk(context, read);
  ASSERT_EQ(frames.size(), 2u);
  EXPECT_EQ(frames[0].address, 0x10u);
  EXPECT_EQ(frames[1].bareName, "KV_1_1::testing::walked::Inner<long>::walk");
  EXPECT_FALSE(help.endsInOrder);
}

TEST(LinuxStackWalk, MemoryThatCannotBeReadEndsTheWalkWithAFailure) {
  walked::outer(0);
  DebugHelp help;
  auto const read = [](void*, std::uint64_t, void*, ulong32, ulong32*) -> int { return 0; };
  std::vector<Frame> const frames = help.walk(walked::captured, read);
  EXPECT_EQ(platform::nativeErrors().lastError(), platform::kPartialCopy);
  // The frame whose registers are given needs no memory.
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].address, walked::captured.Rip);
  EXPECT_FALSE(help.endsInOrder);
}

TEST(LinuxStackWalk, MemoryThatIsReadOnlyInPartIsAFailure) {
  walked::outer(0);
  DebugHelp help;
  auto const read = [](void*, std::uint64_t, void* buffer, ulong32 size, ulong32* bytesRead) -> int {
    memset(buffer, 0, size);
    *bytesRead = size - 1;
    return 1;
  };
  EXPECT_EQ(help.walk(walked::captured, read).size(), 1u);
  EXPECT_FALSE(help.endsInOrder);
}

TEST(LinuxStackWalk, StackOfZerosEndsInOrder) {
  walked::outer(0);
  DebugHelp help;
  auto const read = [](void*, std::uint64_t, void* buffer, ulong32 size, ulong32* bytesRead) -> int {
    memset(buffer, 0, size);
    *bytesRead = size;
    return 1;
  };
  EXPECT_EQ(help.walk(walked::captured, read).size(), 1u);
  EXPECT_TRUE(help.endsInOrder);
}

TEST(LinuxStackWalk, StackThatRunsInACircleEndsWithAFailure) {
  static std::uint64_t words[2];
  walked::outer(0);
  // The caller is the same function again, with the frame that it has now.
  words[0] = walked::captured.Rbp;
  words[1] = walked::captured.Rip;
  auto const read = [](void*, std::uint64_t, void* buffer, ulong32 size, ulong32* bytesRead) -> int {
    for (ulong32 i = 0; i < size / 8; ++i) {
      memcpy(static_cast<char*>(buffer) + 8 * i, &words[(size / 8 - i) % 2], 8);
    }
    *bytesRead = size;
    return 1;
  };
  DebugHelp help;
  std::vector<Frame> const frames = help.walk(walked::captured, read, 1000);
  EXPECT_LT(frames.size(), 1000u);
  EXPECT_FALSE(help.endsInOrder);
}

TEST(LinuxStackWalk, AnyRegistersAndMemoryLeadToAnEnd) {
  static std::mt19937_64 random;
  random.seed(1);
  walked::outer(4);
  std::vector<std::uint64_t> counters;
  for (Frame const& frame : walked::frames) counters.push_back(frame.address);
  static std::vector<std::uint64_t> const* known;
  known = &counters;
  // Words that look like parts of a stack: counters, addresses of the stack, and others.
  auto const word = [] {
    switch (random() % 4) {
      case 0:
        return (*known)[random() % known->size()];
      case 1:
        return walked::captured.Rsp + random() % 4096;
      case 2:
        return std::uint64_t{0};
      default:
        return static_cast<std::uint64_t>(random());
    }
  };
  static std::uint64_t (*const nextWord)() = word;
  auto const read = [](void*, std::uint64_t, void* buffer, ulong32 size, ulong32* bytesRead) -> int {
    if (random() % 64 == 0) return 0;
    for (ulong32 i = 0; i + 8 <= size; i += 8) {
      std::uint64_t const value = nextWord();
      memcpy(static_cast<char*>(buffer) + i, &value, 8);
    }
    *bytesRead = size;
    return 1;
  };
  DebugHelp help;
  for (int i = 0; i < 500; ++i) {
    _CONTEXT context = walked::captured;
    context.Rip = word();
    context.Rbp = word();
    if (random() % 4 == 0) context.Rsp = word();
    std::vector<Frame> const frames = help.walk(context, read, 10000, /*describeFrames=*/false);
    ASSERT_LT(frames.size(), 10000u) << i;
  }
}

// Memory whose bytes follow from their addresses: the words look like parts of a stack, as above, and some lie askew.
class InventedStack {
 public:
  static void use(std::uint64_t seed, std::vector<std::uint64_t> const& counters) {
    seed_ = seed;
    counters_ = &counters;
  }
  static int read(void*, std::uint64_t address, void* buffer, ulong32 size, ulong32* bytesRead) {
    for (ulong32 i = 0; i < size; ++i) {
      std::uint64_t const at = address + i;
      static_cast<unsigned char*>(buffer)[i] = static_cast<unsigned char>(wordAt(at & ~std::uint64_t{7}) >> at % 8 * 8);
    }
    *bytesRead = size;
    return 1;
  }
  // Only what a single frame needs.
  static int readLittle(void* process, std::uint64_t address, void* buffer, ulong32 size, ulong32* bytesRead) {
    return size > 200 ? 0 : read(process, address, buffer, size, bytesRead);
  }

 private:
  static std::uint64_t wordAt(std::uint64_t address) {
    std::uint64_t mixed = (address ^ seed_) * 0x9E3779B97F4A7C15;
    mixed = (mixed ^ mixed >> 29) * 0xBF58476D1CE4E5B9;
    mixed ^= mixed >> 32;
    return mixed % 2 == 0 ? (*counters_)[mixed / 2 % counters_->size()] : walked::captured.Rsp + mixed / 2 % 4096;
  }

  static std::uint64_t seed_;
  static std::vector<std::uint64_t> const* counters_;
};
std::uint64_t InventedStack::seed_;
std::vector<std::uint64_t> const* InventedStack::counters_;

TEST(LinuxStackWalk, HowMuchIsReadAtOnceMakesNoDifference) {
  walked::outer(4);
  std::vector<std::uint64_t> counters;
  for (Frame const& frame : walked::frames) counters.push_back(frame.address);
  DebugHelp help;
  std::size_t longest = 0;
  for (std::uint64_t seed = 1; seed <= 5000; ++seed) {
    InventedStack::use(seed, counters);
    _CONTEXT context = walked::captured;
    context.Rip = counters[seed % counters.size()];
    context.Rbp = context.Rsp + seed % 512;
    std::vector<Frame> const much = help.walk(context, &InventedStack::read, 1000, /*describeFrames=*/false);
    std::vector<Frame> const little = help.walk(context, &InventedStack::readLittle, 1000, /*describeFrames=*/false);
    ASSERT_EQ(much.size(), little.size()) << seed;
    for (std::size_t i = 0; i < much.size(); ++i) {
      ASSERT_EQ(much[i].address, little[i].address) << seed << ' ' << i;
      ASSERT_EQ(much[i].returnAddress, little[i].returnAddress) << seed << ' ' << i;
    }
    longest = std::max(longest, much.size());
  }
  EXPECT_GT(longest, 4u);
}

TEST(LinuxStackWalk, OwnRoutineReadsTheStackAsTheDefaultDoes) {
  walked::outer(2);
  DebugHelp help;
  auto const read = [](void* process, std::uint64_t address, void* buffer, ulong32 size, ulong32* count) -> int {
    return readOwn(process, address, buffer, size, count) ? 1 : 0;
  };
  // The frames below this test are gone; those of the test and above it still stand.
  _CONTEXT context = emptyContext();
  platform::nativeDebug().contextCapture()(&context);
  std::vector<Frame> const byRoutine = help.walk(context, read);
  std::vector<Frame> const byDefault = help.walk(context);
  ASSERT_EQ(byRoutine.size(), byDefault.size());
  for (std::size_t i = 0; i < byDefault.size(); ++i) EXPECT_EQ(byRoutine[i].address, byDefault[i].address) << i;
}

// A frame is walked if its own part of the stack can be read, however little there is behind it.
TEST(LinuxStackWalk, FramesUpToTheEndOfReadableMemoryAreFound) {
  static std::uint64_t limit;
  auto const read = [](void* process, std::uint64_t address, void* buffer, ulong32 size, ulong32* count) -> int {
    return address + size <= limit && readOwn(process, address, buffer, size, count) ? 1 : 0;
  };
  _CONTEXT context = emptyContext();
  platform::nativeDebug().contextCapture()(&context);
  DebugHelp help;
  std::size_t found = 1;
  for (limit = context.Rsp; found <= 3 && limit < context.Rsp + 65536; limit += 8) {
    std::size_t const before = found;
    found = help.walk(context, read, 200, /*describeFrames=*/false).size();
    EXPECT_GE(found, before);
    EXPECT_LE(found, before + 1);
  }
  EXPECT_GT(found, 3u);
}

// A walk remembers the memory that it has read; another walk must not use it.
TEST(LinuxStackWalk, WalksThatTakeTurnsReadTheirOwnMemory) {
  DebugHelp help;
  auto const step = [&help](debug_help::StackFrame64& frame, _CONTEXT& context, debug_help::ReadProcessMemory64 read) {
    return help.stackWalk64(debug_help::kMachineX64, nullptr, nullptr, &frame, &context, read, nullptr, nullptr,
                            nullptr);
  };
  _CONTEXT start = emptyContext();
  platform::nativeDebug().contextCapture()(&start);
  std::vector<Frame> const alone = help.walk(start);
  _CONTEXT context = start;
  debug_help::StackFrame64 frame = {};
  for (std::size_t i = 0; i < alone.size(); ++i) {
    ASSERT_NE(step(frame, context, nullptr), 0);
    EXPECT_EQ(frame.programCounter.offset, alone[i].address);
    EXPECT_EQ(frame.returnAddress.offset, alone[i].returnAddress);
    _CONTEXT otherContext = start;
    debug_help::StackFrame64 other = {};
    auto const read = [](void*, std::uint64_t, void*, ulong32, ulong32*) -> int { return 0; };
    EXPECT_NE(step(other, otherContext, read), 0);
    EXPECT_EQ(step(other, otherContext, read), 0);
  }
}

TEST(LinuxStackWalk, OtherMachinesAndMissingRecordsAreRefused) {
  DebugHelp help;
  debug_help::StackFrame64 frame = {};
  _CONTEXT context = emptyContext();
  EXPECT_EQ(help.stackWalk64(0x14C, nullptr, nullptr, &frame, &context, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(platform::nativeErrors().lastError(), platform::kInvalidParameter);
  EXPECT_EQ(help.stackWalk64(0x8664, nullptr, nullptr, nullptr, &context, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(help.stackWalk64(0x8664, nullptr, nullptr, &frame, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
}

TEST(LinuxStackWalkConcurrency, ThreadsWalkTheirStacksAtTheSameTime) {
  DebugHelp help;
  onThreads([](int) {
    DebugHelp own;
    for (int i = 0; i < 50; ++i) {
      _CONTEXT context = emptyContext();
      platform::nativeDebug().contextCapture()(&context);
      std::vector<Frame> const frames = own.walk(context);
      ASSERT_GE(frames.size(), 3u);
      EXPECT_TRUE(own.endsInOrder);
      EXPECT_THAT(frames[0].name, HasSubstr("ThreadsWalkTheirStacksAtTheSameTime"));
    }
  });
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
