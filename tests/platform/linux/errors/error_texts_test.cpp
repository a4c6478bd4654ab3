// SPDX-License-Identifier: MIT
//
// Each code that a call may set on this system has an English text of its own.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

using namespace KV_1_1::platform;

TEST(LinuxErrorTexts, EveryCodeHasOneSentence) {
  std::set<std::string> texts;
  ulong32 const codes[] = {kFileNotFound,      kPathNotFound,
                           kTooManyOpenFiles,  kAccessDenied,
                           kInvalidHandle,     kNotEnoughMemory,
                           kNotSameDevice,     kNoMoreFiles,
                           kWriteProtected,    kGeneralFailure,
                           kSharingViolation,  kNotSupported,
                           kBadNetworkPath,    kFileExists,
                           kDiskFull,          kInvalidName,
                           kDirectoryNotEmpty, kBusy,
                           kAlreadyExists,     kNameTooLong,
                           kFileTooLarge,      kDirectoryNameInvalid,
                           kInputOutputError,  kTooManyLinks,
                           kNotReady,          kInvalidParameter,
                           kRequestAborted,    kCannotResolveName,
                           kModuleNotFound,    kPartialCopy,
                           kInvalidAddress,    kLibraryInitFailed};
  for (ulong32 const code : codes) {
    wstring text = KVW("old text");
    ASSERT_TRUE(nativeErrors().errorText(code, text)) << code;
    std::string const bytes = narrow(text);
    ASSERT_GT(bytes.size(), 4u) << code;
    EXPECT_EQ(bytes.find("old text"), std::string::npos) << code;
    EXPECT_EQ(bytes.substr(bytes.size() - 3), ".\r\n") << code;
    EXPECT_EQ(bytes.find('\n'), bytes.size() - 1) << code;
    for (char const c : bytes) EXPECT_GT(c, 0) << code << ": ASCII";
    EXPECT_TRUE(texts.insert(bytes).second) << code << ": " << bytes;
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
