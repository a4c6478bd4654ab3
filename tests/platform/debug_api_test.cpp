// SPDX-License-Identifier: MIT
//
// What the native backend of either system tells about failures.
#include "kvbase/platform/debug_api.h"

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

DebugApi& debug() {
  return nativeDebug();
}

std::string textOf(ulong32 code) {
  wchar* const text = debug().errorText(code);
  std::string const result = text == nullptr ? "null" : narrow(text);
  debug().freeErrorText(text);
  return result;
}

TEST(DebugApiTest, TheLastErrorIsWhatWasSet) {
  for (ulong32 const code : {ulong32{0}, kAccessDenied, ulong32{5000}, ulong32{0xFFFFFFFF}}) {
    debug().setLastError(code);
    EXPECT_EQ(debug().lastError(), code);
    EXPECT_EQ(debug().lastError(), code) << "asking leaves it";
  }
}

// Starting and joining a thread may be calls that leave a last error themselves, so there are none between.
TEST(DebugApiTest, EachThreadHasItsOwn) {
  TempFolder folder;
  wstring const missing = folder.text(KVW("none"));
  std::atomic<bool> isSet{false}, isDone{false};
  ulong32 atStart = 77, afterFailure = 77;
  std::thread other([&] {
    while (!isSet) continue;
    atStart = debug().lastError();
    nativeFiles().getAttributes(missing.c_str());
    afterFailure = debug().lastError();
    isDone = true;
  });
  debug().setLastError(kDiskFull);
  isSet = true;
  while (!isDone) continue;
  ulong32 const here = debug().lastError();
  other.join();
  EXPECT_EQ(here, kDiskFull);
  EXPECT_EQ(atStart, kNoError) << "a new thread starts without";
  EXPECT_EQ(afterFailure, kFileNotFound);
}

TEST(DebugApiTest, CodesHaveTextsThatEndTheLine) {
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

TEST(DebugApiTest, ACodeWithoutTextHasNone) {
  EXPECT_EQ(textOf(5000), "null");
  EXPECT_EQ(textOf(0xFFFFFFFF), "null");
  debug().freeErrorText(nullptr);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
