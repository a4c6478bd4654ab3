// SPDX-License-Identifier: MIT
//
// A file backend whose N-th call fails, with the failure value of that call; every other call is forwarded.
//
//   FailingFiles files;                       // counts only
//   ... run the operation once, calls = files.calls() ...
//   for (int n = 1; n <= calls; ++n) {
//     FailingFiles failing(n);
//     platform::ScopedBackend<platform::FileApi> scope(failing);
//     ... run it; it must fail softly ...
//     EXPECT_EQ(failing.openSearches(), 0);
//     EXPECT_EQ(failing.openTexts(), 0);
//   }
#pragma once

#include "tests/support/intercepted_files.h"

namespace KV_1_1 {
namespace testing {

class FailingFiles final : public InterceptedFiles {
 public:
  // Calls are counted from 1; 0: none fails.
  explicit FailingFiles(int failAt = 0, platform::FileApi& target = platform::nativeFiles())
      : InterceptedFiles(target), failAt_(failAt) {}

  int calls() const { return calls_; }

 protected:
  bool enter(char const*, wchar const*) override { return ++calls_ != failAt_; }

 private:
  int const failAt_;
  int calls_ = 0;
};

}  // namespace testing
}  // namespace KV_1_1
