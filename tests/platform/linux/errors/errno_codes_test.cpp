// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/errors/errno_codes.h"

#include <errno.h>
#include <gtest/gtest.h>

#include "kvbase/platform/error_api.h"

namespace KV_1_1 {
namespace testing {
namespace {

struct ErrnoRow {
  char const* test;
  int error;
  ulong32 code;
};

class ErrnoCodes : public ::testing::TestWithParam<ErrnoRow> {};

TEST_P(ErrnoCodes, AreThoseOfWindows) {
  EXPECT_EQ(platform::codeOf(GetParam().error), GetParam().code);
}

// Most of these faults need a device, a quota or a file system that a test cannot bring along.
constexpr ErrnoRow kErrors[] = {
    {"NoRight", EACCES, 5},
    {"NotPermitted", EPERM, 5},
    {"Directory", EISDIR, 5},
    {"Missing", ENOENT, 2},
    {"FolderIsNone", ENOTDIR, 3},
    {"Exists", EEXIST, 183},
    {"NotEmpty", ENOTEMPTY, 145},
    {"NoSpace", ENOSPC, 112},
    {"NoQuota", EDQUOT, 112},
    {"ReadOnlyFileSystem", EROFS, 19},
    {"NameTooLong", ENAMETOOLONG, 206},
    {"CircleOfLinks", ELOOP, 1921},
    {"OtherFileSystem", EXDEV, 17},
    {"RunningProgram", ETXTBSY, 32},
    {"Busy", EBUSY, 170},
    {"TooManyOfTheProcess", EMFILE, 4},
    {"TooManyOfTheSystem", ENFILE, 4},
    {"NoDescriptor", EBADF, 6},
    {"NoMemory", ENOMEM, 8},
    {"FaultOfTheDevice", EIO, 1117},
    {"FileTooLarge", EFBIG, 223},
    {"TooManyLinks", EMLINK, 1142},
    {"NotSupported", EOPNOTSUPP, 50},
    {"NoSuchCall", ENOSYS, 50},
    {"NotPossible", EINVAL, 87},
    {"NoDevice", ENODEV, 21},
    {"NoDeviceAtTheAddress", ENXIO, 21},
    {"FileOfAServerIsGone", ESTALE, 21},
    {"WithoutACodeOfItsOwn", EILSEQ, 31},
    {"NoError", 0, 31},
    {"Negative", -1, 31},
    {"Unknown", 100000, 31},
};
INSTANTIATE_TEST_SUITE_P(Errors, ErrnoCodes, ::testing::ValuesIn(kErrors),
                         [](auto const& row) { return row.param.test; });

TEST(ErrnoTexts, EachErrorHasOne) {
  for (int error = 0; error < 200; ++error) {
    wstring text;
    EXPECT_TRUE(platform::nativeErrors().errorText(platform::codeOf(error), text)) << error;
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
