// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/errors/errno_codes.h"

#include <errno.h>

namespace KV_1_1 {
namespace platform {

namespace {

struct Row {
  int error;
  ulong32 code;
};

constexpr Row kRows[] = {
    {EACCES, kAccessDenied},
    {EPERM, kAccessDenied},
    {EISDIR, kAccessDenied},
    {ENOENT, kFileNotFound},
    {ENOTDIR, kPathNotFound},
    {EEXIST, kAlreadyExists},
    {ENOTEMPTY, kDirectoryNotEmpty},
    {ENOSPC, kDiskFull},
    {EDQUOT, kDiskFull},
    {EROFS, kWriteProtected},
    {ENAMETOOLONG, kNameTooLong},
    {ELOOP, kCannotResolveName},
    {EXDEV, kNotSameDevice},
    {ETXTBSY, kSharingViolation},
    {EBUSY, kBusy},
    {EMFILE, kTooManyOpenFiles},
    {ENFILE, kTooManyOpenFiles},
    {EBADF, kInvalidHandle},
    {ENOMEM, kNotEnoughMemory},
    {EIO, kInputOutputError},
    {EFBIG, kFileTooLarge},
    {EMLINK, kTooManyLinks},
    {EOPNOTSUPP, kNotSupported},
    {ENOSYS, kNotSupported},
    {EINVAL, kInvalidParameter},
    {ENODEV, kNotReady},
    {ENXIO, kNotReady},
    {ESTALE, kNotReady},
};

}  // namespace

ulong32 codeOf(int error) {
  for (Row const& row : kRows) {
    if (row.error == error) return row.code;
  }
  return kGeneralFailure;
}

}  // namespace platform
}  // namespace KV_1_1
