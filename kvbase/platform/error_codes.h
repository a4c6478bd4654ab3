// SPDX-License-Identifier: MIT
//
// The codes that say why a call failed: those of Windows, on every system.
#pragma once

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace platform {

constexpr ulong32 kNoError = 0;
constexpr ulong32 kFileNotFound = 2;
constexpr ulong32 kPathNotFound = 3;
constexpr ulong32 kTooManyOpenFiles = 4;
constexpr ulong32 kAccessDenied = 5;
constexpr ulong32 kInvalidHandle = 6;
constexpr ulong32 kNotEnoughMemory = 8;
constexpr ulong32 kNotSameDevice = 17;
constexpr ulong32 kNoMoreFiles = 18;
constexpr ulong32 kWriteProtected = 19;
constexpr ulong32 kNotReady = 21;
constexpr ulong32 kGeneralFailure = 31;
constexpr ulong32 kSharingViolation = 32;
constexpr ulong32 kNotSupported = 50;
constexpr ulong32 kBadNetworkPath = 53;
constexpr ulong32 kFileExists = 80;
constexpr ulong32 kInvalidParameter = 87;
constexpr ulong32 kDiskFull = 112;
constexpr ulong32 kInvalidName = 123;
constexpr ulong32 kModuleNotFound = 126;
constexpr ulong32 kDirectoryNotEmpty = 145;
constexpr ulong32 kBusy = 170;
constexpr ulong32 kAlreadyExists = 183;
constexpr ulong32 kNameTooLong = 206;
constexpr ulong32 kFileTooLarge = 223;
constexpr ulong32 kDirectoryNameInvalid = 267;
constexpr ulong32 kPartialCopy = 299;
constexpr ulong32 kInvalidAddress = 487;
constexpr ulong32 kLibraryInitFailed = 1114;
constexpr ulong32 kInputOutputError = 1117;
constexpr ulong32 kTooManyLinks = 1142;
constexpr ulong32 kRequestAborted = 1235;
constexpr ulong32 kCannotResolveName = 1921;

}  // namespace platform
}  // namespace KV_1_1
