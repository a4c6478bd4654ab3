// SPDX-License-Identifier: MIT
//
// The last error and the texts of codes, for the native backend of either system.
#include "kvbase/platform/error_api.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/file_api.h"
#include "tests/support/narrow_text.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

using namespace KV_1_1::platform;

ErrorApi& errors() {
  return nativeErrors();
}

std::string textOf(ulong32 code) {
  wstring text = KVW("unchanged");
  errors().errorText(code, text);
  return narrow(text);
}

TEST(ErrorApiTest, TheLastErrorIsWhatWasSet) {
  for (ulong32 const code : {ulong32{0}, kAccessDenied, ulong32{5000}, ulong32{0xFFFFFFFF}}) {
    errors().setLastError(code);
    EXPECT_EQ(errors().lastError(), code);
    EXPECT_EQ(errors().lastError(), code) << "asking leaves it";
  }
}

// Starting and joining a thread may set the last error, so neither happens between setting and reading it.
TEST(ErrorApiTest, EachThreadHasItsOwn) {
  TempFolder folder;
  wstring const missing = folder.text(KVW("none"));
  std::atomic<bool> isSet{false}, isDone{false};
  ulong32 atStart = 77, afterFailure = 77;
  std::thread other([&] {
    while (!isSet) continue;
    atStart = errors().lastError();
    nativeFiles().getAttributes(missing.c_str());
    afterFailure = errors().lastError();
    isDone = true;
  });
  errors().setLastError(kDiskFull);
  isSet = true;
  while (!isDone) continue;
  ulong32 const here = errors().lastError();
  other.join();
  EXPECT_EQ(here, kDiskFull);
  EXPECT_EQ(atStart, kNoError) << "a new thread starts without";
  EXPECT_EQ(afterFailure, kFileNotFound);
}

TEST(ErrorApiTest, CodesHaveTextsThatEndTheLine) {
  for (ulong32 const code : {kFileNotFound, kPathNotFound, kAccessDenied, kSharingViolation, kFileExists, kDiskFull,
                             kInvalidName, kDirectoryNotEmpty, kAlreadyExists}) {
    SCOPED_TRACE(code);
    std::string const text = textOf(code);
    ASSERT_GT(text.size(), 4u);
    EXPECT_EQ(text.substr(text.size() - 2), "\r\n");
    EXPECT_NE(text, textOf(code == kFileNotFound ? kAccessDenied : kFileNotFound));
    EXPECT_EQ(text, textOf(code));
  }
}

TEST(ErrorApiTest, ACodeWithoutTextHasNone) {
  EXPECT_EQ(textOf(5000), "unchanged");
  EXPECT_EQ(textOf(0xFFFFFFFF), "unchanged");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
