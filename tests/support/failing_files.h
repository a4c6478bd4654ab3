// SPDX-License-Identifier: MIT
//
// A file backend whose N-th call fails, with the failure value of its method and a chosen last error. Every other call
// is forwarded.
//
//   FailingFiles files;                       // counts only
//   ... run the operation once, calls = files.calls() ...
//   for (int n = 1; n <= calls; ++n) {
//     FailingFiles failing(n);
//     failing.error = 5;
//     platform::ScopedBackend<platform::FileApi> scope(failing);
//     ... run it; it must fail softly, failing.failed() tells which call it was ...
//     EXPECT_EQ(failing.openInAll(), 0);
//   }
#pragma once

#include <string>

#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"
#include "tests/support/intercepted_files.h"

namespace KV_1_1 {
namespace testing {

class FailingFiles final : public InterceptedFiles {
 public:
  // Calls are counted from 1; 0: none fails.
  explicit FailingFiles(int failAt = 0, platform::FileApi& target = platform::nativeFiles())
      : InterceptedFiles(target), failAt_(failAt) {}

  ulong32 error = platform::kAccessDenied;  // the last error that the failing call sets

  int calls() const { return calls_; }
  // The name of the call that was made to fail; empty if none was.
  std::string const& failed() const { return failed_; }

 protected:
  bool enter(char const* call, wchar const*) override {
    if (++calls_ != failAt_) return true;
    failed_ = call;
    platform::errors().setLastError(error);
    return false;
  }

 private:
  int const failAt_;
  int calls_ = 0;
  std::string failed_;
};

}  // namespace testing
}  // namespace KV_1_1
