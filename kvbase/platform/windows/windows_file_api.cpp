// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

#include <direct.h>
#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <cwchar>
#include <iterator>
#include <memory>

#include "kvbase/platform/types.h"

#include <shlwapi.h>

namespace KV_1_1 {
namespace platform {

namespace {

// The seam has the values of the system, so the calls below need no conversion.
static_assert(kAttributeReadOnly == FILE_ATTRIBUTE_READONLY, "as on Windows");
static_assert(kAttributeHidden == FILE_ATTRIBUTE_HIDDEN, "as on Windows");
static_assert(kAttributeDirectory == FILE_ATTRIBUTE_DIRECTORY, "as on Windows");
static_assert(kAttributeNormal == FILE_ATTRIBUTE_NORMAL, "as on Windows");
static_assert(kAttributeReparsePoint == FILE_ATTRIBUTE_REPARSE_POINT, "as on Windows");
static_assert(kInvalidAttributes == INVALID_FILE_ATTRIBUTES, "as on Windows");
static_assert(kAccessRead == GENERIC_READ, "as on Windows");
static_assert(kAccessWrite == GENERIC_WRITE, "as on Windows");
static_assert(kShareRead == FILE_SHARE_READ, "as on Windows");
static_assert(kShareWrite == FILE_SHARE_WRITE, "as on Windows");
static_assert(kShareDelete == FILE_SHARE_DELETE, "as on Windows");
static_assert(kOpenExisting == OPEN_EXISTING, "as on Windows");
static_assert(kOpenAlways == OPEN_ALWAYS, "as on Windows");
static_assert(kFlagBackupSemantics == FILE_FLAG_BACKUP_SEMANTICS, "as on Windows");
static_assert(kDescriptorReadWrite == _O_RDWR, "as on Windows");
static_assert(kDescriptorShareAll == _SH_DENYNO, "as on Windows");
static_assert(kDescriptorPermission == (_S_IREAD | _S_IWRITE), "as on Windows");
static_assert(kProgressContinue == PROGRESS_CONTINUE, "as on Windows");
static_assert(kCopyFailIfExists == COPY_FILE_FAIL_IF_EXISTS, "as on Windows");

void store(WIN32_FIND_DATAW const& found, FindData& data) {
  static_assert(sizeof(data.name) == sizeof(found.cFileName), "a name of the system fits");
  data.attributes = found.dwFileAttributes;
  std::wmemcpy(data.name, found.cFileName, std::size(data.name));
}

// Takes over a text that the runtime has allocated; null is a failure.
bool store(wchar* text, wstring& result) {
  std::unique_ptr<wchar, void (*)(void*)> const owner(text, &free);
  if (text != nullptr) result = text;
  return text != nullptr;
}

std::uint64_t joined(std::uint32_t high, std::uint32_t low) {
  return (std::uint64_t{high} << 32) | low;
}

std::uint64_t numberOf(FILETIME const& time) {
  return joined(time.dwHighDateTime, time.dwLowDateTime);
}

// What CopyFileExW passes to callProgress.
struct Routine {
  CopyProgress progress;
  void* data;
};

DWORD CALLBACK callProgress(LARGE_INTEGER total, LARGE_INTEGER transferred, LARGE_INTEGER, LARGE_INTEGER, DWORD, DWORD,
                            HANDLE, HANDLE, void* data) {
  auto const& routine = *static_cast<Routine const*>(data);
  return routine.progress(total.QuadPart, transferred.QuadPart, routine.data);
}

}  // namespace

ulong32 NativeFiles::getAttributes(wchar const* path) {
  return GetFileAttributesW(path);
}

bool NativeFiles::setAttributes(wchar const* path, ulong32 attributes) {
  return SetFileAttributesW(path, attributes) != FALSE;
}

bool NativeFiles::getInfo(wchar const* path, FileInfo& info) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!GetFileAttributesExW(path, GetFileExInfoStandard, &data)) return false;
  info.attributes = data.dwFileAttributes;
  info.size = joined(data.nFileSizeHigh, data.nFileSizeLow);
  info.creationTime = numberOf(data.ftCreationTime);
  info.lastWriteTime = numberOf(data.ftLastWriteTime);
  return true;
}

int NativeFiles::getStatus(wchar const* path, struct _stat64i32& status) {
  return _wstat64i32(path, &status);
}

int NativeFiles::isDirectoryEmpty(wchar const* path) {
  return PathIsDirectoryEmptyW(path);
}

FileHandle NativeFiles::openFile(wchar const* path, ulong32 access, ulong32 share, ulong32 disposition, ulong32 flags) {
  FileHandle const file = CreateFileW(path, access, share, nullptr, disposition, flags, nullptr);
  return file != nullptr ? file : invalidFile();
}

bool NativeFiles::closeFile(FileHandle file) {
  return CloseHandle(file) != FALSE;
}

bool NativeFiles::setLastWriteTime(FileHandle file, std::uint64_t time) {
  FILETIME const lastWrite = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
  return SetFileTime(file, nullptr, nullptr, &lastWrite) != FALSE;
}

std::uint64_t NativeFiles::systemTime() {
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  return numberOf(now);
}

int NativeFiles::openDescriptor(wchar const* path, int flags, int share, int permission) {
  int descriptor = -1;
  // As text, which is the default, a file that is opened for reading and writing would lose a Ctrl+Z at its end.
  _wsopen_s(&descriptor, path, flags | _O_BINARY, share, permission);
  return descriptor;
}

int NativeFiles::commitDescriptor(int descriptor) {
  return _commit(descriptor);
}

int NativeFiles::closeDescriptor(int descriptor) {
  return _close(descriptor);
}

bool NativeFiles::copyFile(wchar const* source, wchar const* target, CopyProgress progress, void* data, ulong32 flags) {
  if (progress == nullptr) return CopyFileExW(source, target, nullptr, nullptr, nullptr, flags) != FALSE;
  Routine routine = {progress, data};
  return CopyFileExW(source, target, &callProgress, &routine, nullptr, flags) != FALSE;
}

bool NativeFiles::moveFile(wchar const* source, wchar const* target) {
  return MoveFileW(source, target) != FALSE;
}

bool NativeFiles::deleteFile(wchar const* path) {
  return DeleteFileW(path) != FALSE;
}

bool NativeFiles::createDirectory(wchar const* path) {
  return CreateDirectoryW(path, nullptr) != FALSE;
}

bool NativeFiles::removeDirectory(wchar const* path) {
  return RemoveDirectoryW(path) != FALSE;
}

SearchHandle NativeFiles::findFirst(wchar const* pattern, FindData& data) {
  WIN32_FIND_DATAW found;
  SearchHandle const search = FindFirstFileW(pattern, &found);
  if (search != invalidSearch()) store(found, data);
  return search;
}

bool NativeFiles::findNext(SearchHandle search, FindData& data) {
  WIN32_FIND_DATAW found;
  if (!FindNextFileW(search, &found)) return false;
  store(found, data);
  return true;
}

bool NativeFiles::findClose(SearchHandle search) {
  return FindClose(search) != FALSE;
}

bool NativeFiles::currentDirectory(wstring& path) {
  return store(_wgetcwd(nullptr, 0), path);
}

// The runtime allocates as much as the path needs, at least the length passed. With length 0 Wine knows only the
// current drive.
bool NativeFiles::currentDirectoryOfDrive(int drive, wstring& path) {
  // For a drive that is not there the runtime calls its handler of invalid parameters, which ends the process.
  wchar const root[] = {static_cast<wchar>(KVW('A') + drive - 1), KVW(':'), KVW('\\'), 0};
  if (GetDriveTypeW(root) < DRIVE_REMOVABLE) return false;
  return store(_wgetdcwd(drive, nullptr, MAX_PATH), path);
}

}  // namespace platform
}  // namespace KV_1_1
