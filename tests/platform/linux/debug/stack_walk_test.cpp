// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <cstring>
#include <string>
#include <vector>

#include "kvbase/platform/debug_api.h"
#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"
#include "tests/platform/linux/debug/debug_help.h"

namespace KV_1_1 {
namespace testing {

namespace walked {

_CONTEXT captured;
int captureLine;

template <class T>
struct Inner {
  // Not inlined, and the call is not the last thing it does, so that it has a frame.
  __attribute__((noinline)) int capture(T value) const {
    captured = emptyContext();
    auto const captureHere = platform::nativeDebug().contextCapture();
    captureHere(&captured);
    // The registers are those behind the call, so its line is the next one.
    captureLine = __LINE__;
    DebugHelp help;
    frames = help.walk(captured);
    endsInOrder = help.endsInOrder;
    return static_cast<int>(value) + 1;
  }
  static std::vector<Frame> frames;
  static bool endsInOrder;
};
template <class T>
std::vector<Frame> Inner<T>::frames;
template <class T>
bool Inner<T>::endsInOrder;

int outerLine;
__attribute__((noinline)) int outer(int depth) {
  if (depth > 0) return outer(depth - 1) + 1;
  outerLine = __LINE__ + 1;
  return Inner<long>().capture(depth) + 1;
}

}  // namespace walked

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using walked::Inner;

TEST(LinuxStackWalk, NamesFilesAndLinesOfOwnFunctions) {
  walked::outer(2);
  std::vector<Frame> const& frames = Inner<long>::frames;
  ASSERT_GE(frames.size(), 6u);
  EXPECT_EQ(frames[0].bareName, "KV_1_1::testing::walked::Inner<long>::capture");
  EXPECT_EQ(frames[0].name, "KV_1_1::testing::walked::Inner<long>::capture(long) const");
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
  EXPECT_EQ(frames[0].line, static_cast<unsigned>(walked::captureLine));
  EXPECT_EQ(frames[1].line, static_cast<unsigned>(walked::outerLine));
  EXPECT_GE(indexOf(frames, "main"), 5);
}

TEST(LinuxStackWalk, EndsInOrderAtTheStartOfTheProgram) {
  walked::outer(0);
  EXPECT_TRUE(Inner<long>::endsInOrder);
  ASSERT_FALSE(Inner<long>::frames.empty());
  EXPECT_EQ(Inner<long>::frames.back().bareName, "_start");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
