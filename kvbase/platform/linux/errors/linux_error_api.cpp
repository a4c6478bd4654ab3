// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/linux/errors/last_error.h"

namespace KV_1_1 {
namespace platform {

namespace {

struct Text {
  ulong32 code;
  wchar const* text;
};

constexpr Text kTexts[] = {
    {kNoError, KVW("The operation succeeded.\r\n")},
    {kFileNotFound, KVW("The file was not found.\r\n")},
    {kPathNotFound, KVW("The path was not found.\r\n")},
    {kTooManyOpenFiles, KVW("Too many files are open.\r\n")},
    {kAccessDenied, KVW("Access is denied.\r\n")},
    {kInvalidHandle, KVW("The handle is invalid.\r\n")},
    {kNotEnoughMemory, KVW("There is not enough memory.\r\n")},
    {kNotSameDevice, KVW("The item cannot be moved to another file system.\r\n")},
    {kNoMoreFiles, KVW("There are no more files.\r\n")},
    {kWriteProtected, KVW("The file system is write-protected.\r\n")},
    {kNotReady, KVW("The device is not ready.\r\n")},
    {kGeneralFailure, KVW("The system could not carry out the operation.\r\n")},
    {kSharingViolation, KVW("The file is in use.\r\n")},
    {kNotSupported, KVW("The file system does not support the operation.\r\n")},
    {kBadNetworkPath, KVW("The network path was not found.\r\n")},
    {kFileExists, KVW("The file exists.\r\n")},
    {kInvalidParameter, KVW("The operation is not possible with these items.\r\n")},
    {kDiskFull, KVW("There is not enough space on the disk.\r\n")},
    {kInvalidName, KVW("The file name, directory name or drive is not valid.\r\n")},
    {kModuleNotFound, KVW("The module was not found.\r\n")},
    {kDirectoryNotEmpty, KVW("The directory is not empty.\r\n")},
    {kBusy, KVW("The item is in use.\r\n")},
    {kAlreadyExists, KVW("An item of that name exists already.\r\n")},
    {kNameTooLong, KVW("The file name or path is too long.\r\n")},
    {kFileTooLarge, KVW("The file is too large.\r\n")},
    {kDirectoryNameInvalid, KVW("The name is not that of a directory.\r\n")},
    {kPartialCopy, KVW("Only a part of the memory could be read.\r\n")},
    {kInvalidAddress, KVW("Nothing is known of the address.\r\n")},
    {kLibraryInitFailed, KVW("The library could not be loaded or started.\r\n")},
    {kInputOutputError, KVW("The device reported an input or output error.\r\n")},
    {kTooManyLinks, KVW("The item has too many links.\r\n")},
    {kRequestAborted, KVW("The operation was cancelled.\r\n")},
    {kCannotResolveName, KVW("The links in the path lead in a circle.\r\n")},
};

}  // namespace

ulong32 NativeErrors::lastError() {
  return lastErrorOfThread();
}

void NativeErrors::setLastError(ulong32 code) {
  setLastErrorOfThread(code);
}

bool NativeErrors::errorText(ulong32 code, wstring& text) {
  for (Text const& row : kTexts) {
    if (row.code != code) continue;
    text = row.text;
    return true;
  }
  return false;
}

}  // namespace platform
}  // namespace KV_1_1
