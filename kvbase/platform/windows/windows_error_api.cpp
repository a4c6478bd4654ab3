// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

#include <memory>

#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/types.h"

namespace KV_1_1 {
namespace platform {

namespace {

// The codes of the seam are those of the system.
static_assert(kNoError == ERROR_SUCCESS, "as on Windows");
static_assert(kFileNotFound == ERROR_FILE_NOT_FOUND, "as on Windows");
static_assert(kPathNotFound == ERROR_PATH_NOT_FOUND, "as on Windows");
static_assert(kTooManyOpenFiles == ERROR_TOO_MANY_OPEN_FILES, "as on Windows");
static_assert(kAccessDenied == ERROR_ACCESS_DENIED, "as on Windows");
static_assert(kInvalidHandle == ERROR_INVALID_HANDLE, "as on Windows");
static_assert(kNotEnoughMemory == ERROR_NOT_ENOUGH_MEMORY, "as on Windows");
static_assert(kNotSameDevice == ERROR_NOT_SAME_DEVICE, "as on Windows");
static_assert(kNoMoreFiles == ERROR_NO_MORE_FILES, "as on Windows");
static_assert(kWriteProtected == ERROR_WRITE_PROTECT, "as on Windows");
static_assert(kNotReady == ERROR_NOT_READY, "as on Windows");
static_assert(kGeneralFailure == ERROR_GEN_FAILURE, "as on Windows");
static_assert(kSharingViolation == ERROR_SHARING_VIOLATION, "as on Windows");
static_assert(kNotSupported == ERROR_NOT_SUPPORTED, "as on Windows");
static_assert(kBadNetworkPath == ERROR_BAD_NETPATH, "as on Windows");
static_assert(kFileExists == ERROR_FILE_EXISTS, "as on Windows");
static_assert(kInvalidParameter == ERROR_INVALID_PARAMETER, "as on Windows");
static_assert(kDiskFull == ERROR_DISK_FULL, "as on Windows");
static_assert(kInvalidName == ERROR_INVALID_NAME, "as on Windows");
static_assert(kModuleNotFound == ERROR_MOD_NOT_FOUND, "as on Windows");
static_assert(kDirectoryNotEmpty == ERROR_DIR_NOT_EMPTY, "as on Windows");
static_assert(kBusy == ERROR_BUSY, "as on Windows");
static_assert(kAlreadyExists == ERROR_ALREADY_EXISTS, "as on Windows");
static_assert(kNameTooLong == ERROR_FILENAME_EXCED_RANGE, "as on Windows");
static_assert(kFileTooLarge == ERROR_FILE_TOO_LARGE, "as on Windows");
static_assert(kDirectoryNameInvalid == ERROR_DIRECTORY, "as on Windows");
static_assert(kPartialCopy == ERROR_PARTIAL_COPY, "as on Windows");
static_assert(kInvalidAddress == ERROR_INVALID_ADDRESS, "as on Windows");
static_assert(kLibraryInitFailed == ERROR_DLL_INIT_FAILED, "as on Windows");
static_assert(kInputOutputError == ERROR_IO_DEVICE, "as on Windows");
static_assert(kTooManyLinks == ERROR_TOO_MANY_LINKS, "as on Windows");
static_assert(kRequestAborted == ERROR_REQUEST_ABORTED, "as on Windows");
static_assert(kCannotResolveName == ERROR_CANT_RESOLVE_FILENAME, "as on Windows");

}  // namespace

ulong32 NativeErrors::lastError() {
  return GetLastError();
}

void NativeErrors::setLastError(ulong32 code) {
  SetLastError(code);
}

bool NativeErrors::errorText(ulong32 code, wstring& text) {
  wchar* system = nullptr;
  // With this flag the function takes the address of a pointer for the buffer.
  FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, 0,
                 reinterpret_cast<wchar*>(&system), 0, nullptr);
  auto const release = [](wchar* allocated) { LocalFree(allocated); };
  std::unique_ptr<wchar, decltype(release)> const owner(system, release);
  if (system != nullptr) text = system;
  return system != nullptr;
}

}  // namespace platform
}  // namespace KV_1_1
