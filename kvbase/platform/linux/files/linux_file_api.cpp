// SPDX-License-Identifier: MIT
#include "kvbase/platform/internal/native_backends.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <string_view>

#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/linux/errors/errno_codes.h"
#include "kvbase/platform/linux/errors/last_error.h"
#include "kvbase/platform/linux/files/descriptor.h"
#include "kvbase/platform/linux/files/directory_entries.h"
#include "kvbase/platform/linux/files/file_time.h"
#include "kvbase/platform/linux/files/item_changes.h"
#include "kvbase/platform/linux/files/item_status.h"
#include "kvbase/platform/linux/files/path_mapping.h"
#include "kvbase/platform/linux/files/search_registry.h"

namespace KV_1_1 {
namespace platform {

namespace {

// For calls that do not set the last error.
bool mapForRuntime(wchar const* text, NativePath& path) {
  ulong32 const error = lastErrorOfThread();
  if (mapPath(text, path)) return true;
  setLastErrorOfThread(error);
  return false;
}

// The item behind a text, by the rule for links.
bool query(wchar const* text, unsigned int mask, NativePath& path, struct statx& status) {
  return mapPath(text, path) && queryItem(path.data(), mask, status);
}

bool mapBoth(wchar const* source, NativePath& from, wchar const* target, NativePath& to) {
  return mapPath(source, from) && mapPath(target, to);
}

// Descriptor 0 must not become a null handle.
FileHandle handleOf(int descriptor) {
  return reinterpret_cast<FileHandle>(static_cast<std::intptr_t>(descriptor) + 1);
}

int descriptorOf(FileHandle file) {
  return static_cast<int>(reinterpret_cast<std::intptr_t>(file) - 1);
}

int accessFlags(ulong32 access) {
  bool const writes = (access & kAccessWrite) != 0;
  return !writes ? O_RDONLY : (access & kAccessRead) != 0 ? O_RDWR : O_WRONLY;
}

// Opens an existing item. Only files are opened with the requested access: opening a device or a pipe would have an
// effect on it, and a directory cannot be opened for writing. For those the right is checked, and the path alone is
// opened.
FileHandle openItem(char const* path, mode_t mode, ulong32 access) {
  bool const asksNothing = (access & (kAccessRead | kAccessWrite)) == 0;
  int flags = accessFlags(access) | kPlainOpen;
  if (!S_ISREG(mode) || asksNothing) {
    int const rights = ((access & kAccessRead) != 0 ? R_OK : 0) | ((access & kAccessWrite) != 0 ? W_OK : 0);
    if (!S_ISLNK(mode) && faccessat(AT_FDCWD, path, rights, AT_EACCESS) != 0) {
      failAt(path, errno);
      return invalidFile();
    }
    flags = O_PATH | O_CLOEXEC | (S_ISLNK(mode) ? O_NOFOLLOW : 0);
  }
  int const descriptor = open(path, flags);
  if (descriptor >= 0) return handleOf(descriptor);
  failAt(path, errno);
  return invalidFile();
}

bool isEmptyDirectory(int directory) {
  return visitEntries<4096>(directory,
                            [](dirent64 const& entry) { return isDots(entry.d_name, strlen(entry.d_name)); });
}

}  // namespace

ulong32 NativeFiles::getAttributes(wchar const* path) {
  NativePath native;
  struct statx status;
  if (!query(path, STATX_TYPE | STATX_MODE, native, status)) return kInvalidAttributes;
  return attributesOf(status.stx_mode, native.data());
}

bool NativeFiles::setAttributes(wchar const* path, ulong32 attributes) {
  NativePath native;
  struct statx status;
  if (!query(path, STATX_TYPE | STATX_MODE, native, status)) return false;
  mode_t const mode = status.stx_mode;
  if (S_ISDIR(mode) || S_ISLNK(mode)) return true;
  mode_t const writers = S_IWUSR | S_IWGRP | S_IWOTH;
  bool const isToBeReadOnly = (attributes & kAttributeReadOnly) != 0;
  mode_t const wanted = isToBeReadOnly ? mode & ~writers : mode | S_IWUSR;
  if (wanted == mode) return true;
  return chmod(native.data(), wanted & 07777) == 0 || failAt(native.data(), errno);
}

bool NativeFiles::getInfo(wchar const* path, FileInfo& info) {
  NativePath native;
  struct statx status;
  if (!query(path, STATX_BASIC_STATS | STATX_BTIME, native, status)) return false;
  auto const timeOf = [](struct statx_timestamp const& time) { return fileTimeOf(time.tv_sec, time.tv_nsec); };
  bool const knowsCreation = (status.stx_mask & STATX_BTIME) != 0;
  info.attributes = attributesOf(status.stx_mode, native.data());
  info.size = status.stx_size;
  info.lastWriteTime = timeOf(status.stx_mtime);
  info.creationTime = knowsCreation ? timeOf(status.stx_btime) : std::min(info.lastWriteTime, timeOf(status.stx_ctime));
  return true;
}

int NativeFiles::getStatus(wchar const* path, struct _stat64i32& status) {
  NativePath native;
  struct stat item;
  if (!mapForRuntime(path, native) || stat(native.data(), &item) != 0) return -1;
  if (item.st_size > std::numeric_limits<std::int32_t>::max()) return -1;
  status = {};
  status.st_dev = static_cast<std::uint32_t>(item.st_dev);
  status.st_mode = static_cast<std::uint16_t>(item.st_mode);
  status.st_nlink = static_cast<std::int16_t>(std::min<nlink_t>(item.st_nlink, 0x7FFF));
  status.st_rdev = static_cast<std::uint32_t>(item.st_rdev);
  status.st_size = static_cast<std::int32_t>(item.st_size);
  status.st_atime = item.st_atime;
  status.st_mtime = item.st_mtime;
  status.st_ctime = item.st_ctime;
  return 0;
}

int NativeFiles::isDirectoryEmpty(wchar const* path) {
  NativePath native;
  if (!mapPath(path, native)) return 0;
  Descriptor const directory(open(native.data(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return directory && isEmptyDirectory(directory.get()) ? 1 : 0;
}

FileHandle NativeFiles::openFile(wchar const* path, ulong32 access, ulong32, ulong32 disposition, ulong32 flags) {
  NativePath native;
  if (!mapPath(path, native)) return invalidFile();
  bool const makes = disposition == kOpenAlways;
  if (makes) {
    int const descriptor = open(native.data(), accessFlags(access) | O_CREAT | O_EXCL | kPlainOpen, 0666);
    if (descriptor >= 0) {
      setLastErrorOfThread(kNoError);
      return handleOf(descriptor);
    }
    if (errno != EEXIST) {
      failAt(native.data(), errno);
      return invalidFile();
    }
  }
  struct statx status;
  if (!queryItem(native.data(), STATX_TYPE | STATX_MODE, status)) return invalidFile();
  mode_t const mode = status.stx_mode;
  bool const isRefused = (S_ISDIR(mode) && (flags & kFlagBackupSemantics) == 0) || (S_ISLNK(mode) && makes) ||
                         ((access & kAccessWrite) != 0 && isReadOnly(mode));
  if (isRefused) {
    setLastErrorOfThread(kAccessDenied);
    return invalidFile();
  }
  FileHandle const file = openItem(native.data(), mode, access);
  if (makes && file != invalidFile()) setLastErrorOfThread(kAlreadyExists);
  return file;
}

bool NativeFiles::closeFile(FileHandle file) {
  return close(descriptorOf(file)) == 0 || errno == EINTR || failWith(codeOf(errno));
}

bool NativeFiles::setLastWriteTime(FileHandle file, std::uint64_t time) {
  timespec const times[] = {{0, UTIME_OMIT}, timespecOf(time)};
  return futimens(descriptorOf(file), times) == 0 || failWith(codeOf(errno));
}

std::uint64_t NativeFiles::systemTime() {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  return fileTimeOf(now.tv_sec, now.tv_nsec);
}

int NativeFiles::openDescriptor(wchar const* path, int flags, int, int permission) {
  NativePath native;
  if (!mapForRuntime(path, native)) return -1;
  bool const writes = (flags & kDescriptorReadWrite) != 0;
  return open(native.data(), (writes ? O_RDWR : O_RDONLY) | kPlainOpen, permission);
}

int NativeFiles::commitDescriptor(int descriptor) {
  return fsync(descriptor);
}

int NativeFiles::closeDescriptor(int descriptor) {
  return close(descriptor);
}

bool NativeFiles::copyFile(wchar const* source, wchar const* target, CopyProgress progress, void* data, ulong32 flags) {
  NativePath from, to;
  return mapBoth(source, from, target, to) &&
         copyItem(from.data(), to.data(), progress, data, (flags & kCopyFailIfExists) != 0);
}

bool NativeFiles::moveFile(wchar const* source, wchar const* target) {
  NativePath from, to;
  return mapBoth(source, from, target, to) && moveItem(from.data(), to.data());
}

bool NativeFiles::deleteFile(wchar const* path) {
  NativePath native;
  struct stat status;
  if (!mapPath(path, native)) return false;
  if (lstat(native.data(), &status) != 0) return failAt(native.data(), errno);
  if (S_ISDIR(status.st_mode) || isReadOnly(status.st_mode)) return failWith(kAccessDenied);
  return unlink(native.data()) == 0 || failAt(native.data(), errno);
}

bool NativeFiles::createDirectory(wchar const* path) {
  NativePath native;
  if (!mapPath(path, native)) return false;
  return mkdir(native.data(), 0777) == 0 || failAt(native.data(), errno);
}

bool NativeFiles::removeDirectory(wchar const* path) {
  NativePath native;
  return mapPath(path, native) && removeDirectoryItem(native.data());
}

SearchHandle NativeFiles::findFirst(wchar const* pattern, FindData& data) {
  std::basic_string_view<wchar> const text(pattern);
  std::size_t const name = text.rfind('\\') + 1;  // not found is -1
  NativePath directory;
  wchar const here[] = {'.'};
  bool const isMapped = name == 0 ? mapPath(here, 1, directory) : mapPath(pattern, name, directory);
  if (!isMapped) return invalidSearch();

  auto search = std::make_unique<DirectorySnapshot>();
  if (!search->read(directory.data(), Wildcard(pattern + name, text.size() - name))) return invalidSearch();
  if (!search->next(data)) {
    setLastErrorOfThread(kFileNotFound);
    return invalidSearch();
  }
  return registerSearch(std::move(search));
}

bool NativeFiles::findNext(SearchHandle handle, FindData& data) {
  DirectorySnapshot* const search = searchOf(handle);
  return search != nullptr ? search->next(data) : failWith(kInvalidHandle);
}

bool NativeFiles::findClose(SearchHandle handle) {
  return removeSearch(handle) != nullptr || failWith(kInvalidHandle);
}

bool NativeFiles::currentDirectory(wstring& path) {
  NativePath native;
  if (!nativeCurrentDirectory(native)) return false;
  path = textOfPath(KVW(""), native.data(), native.size() - 1);
  return true;
}

bool NativeFiles::currentDirectoryOfDrive(int drive, wstring& path) {
  if (drive < 1 || drive > 26) return false;
  NativePath below;
  if (!nativeDirectoryOfDrive(static_cast<char>('a' + drive - 1), below)) return false;
  if (below.size() == 0) below.push('/');
  wchar const prefix[] = {static_cast<wchar>('A' + drive - 1), ':', 0};
  path = textOfPath(prefix, below.data(), below.size());
  return true;
}

}  // namespace platform
}  // namespace KV_1_1
