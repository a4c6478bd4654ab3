// SPDX-License-Identifier: MIT
//
// The diagnostics as a program sees them in the shipped library.
#include <gtest/gtest.h>

#include <memory>
#include <typeinfo>

#include "kvbase/kvbase.h"
#include "kvbase/platform/debug_api.h"

namespace KV_1_1 {
namespace testing {
namespace {

class QuietWalker : public StackWalker {
 public:
  using StackWalker::myReadProcMem;
  using StackWalker::StackWalker;

 protected:
  void OnOutput(char const*) override {}
};

TEST(SharedLibrary, AWalkerOfTheProgramDerivesFromTheLibrarys) {
  std::unique_ptr<StackWalker> const walker = std::make_unique<QuietWalker>();
  EXPECT_NE(dynamic_cast<QuietWalker*>(walker.get()), nullptr);
  EXPECT_EQ(dynamic_cast<VgStackWalker*>(walker.get()), nullptr);
  StackWalker const* const global = &VgStackWalker::globalStackWalker;
  EXPECT_EQ(typeid(*global), typeid(VgStackWalker));

  int const number = 4711;
  int copy = 0;
  ulong32 read = 0;
  EXPECT_EQ(QuietWalker::myReadProcMem(platform::debug().currentProcess(), reinterpret_cast<std::uintptr_t>(&number),
                                       &copy, sizeof copy, &read),
            1);
  EXPECT_EQ(copy, number);
  EXPECT_EQ(read, sizeof copy);
}

TEST(SharedLibrary, DepthsAreOneObjectOnBothSides) {
  EXPECT_EQ(VgStackWalker::callStackDepthOfPreviousOutput, 0);
  VgStackWalker::initialCallStackDepth = 12;
  {
    OutputDebugParenthesesScope const scope;
    EXPECT_EQ(VgStackWalker::initialCallStackDepth, VgStackWalker::globalStackWalker.callStackDepth - 1);
    VgStackWalker::initialCallStackDepth = 99;
  }
  EXPECT_EQ(VgStackWalker::initialCallStackDepth, 12);
  VgStackWalker::initialCallStackDepth = 0;
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
