// SPDX-License-Identifier: MIT
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/linux/errors/last_error.h"
#include "kvbase/platform/linux/files/item_changes.h"
#include "kvbase/platform/linux/files/item_status.h"

namespace KV_1_1 {
namespace platform {

namespace {

// Of two paths the source counts, unless it is there and so a part of the target is missing.
bool failAtEither(char const* source, char const* target) {
  int const error = errno;
  struct stat status;
  return failAt(error == ENOENT && lstat(source, &status) == 0 ? target : source, error);
}

// Whether both paths name the same entry of the same folder. For a file with several names only equal paths prove it.
bool isSameEntry(char const* source, char const* target) {
  struct stat a, b;
  if (lstat(source, &a) != 0 || lstat(target, &b) != 0) return false;
  if (!isSameItem(a, b)) return false;
  return S_ISDIR(a.st_mode) || a.st_nlink == 1 || strcmp(source, target) == 0;
}

// Renames although the target exists, which succeeds only if it is the source itself, perhaps by a name in another
// case.
bool renameToExisting(char const* source, char const* target) {
  struct stat status;
  if (lstat(source, &status) != 0) return failAt(source, errno);
  if (!isSameEntry(source, target)) return failWith(kAlreadyExists);
  return rename(source, target) == 0 || failAt(source, errno);
}

// For file systems that cannot rename without replacing the target.
bool renameByLink(char const* source, char const* target) {
  struct stat status;
  if (lstat(target, &status) == 0) return renameToExisting(source, target);
  if (lstat(source, &status) != 0) return failAt(source, errno);
  if (!S_ISDIR(status.st_mode) && link(source, target) == 0) {
    return unlink(source) == 0 || failAt(source, errno);
  }
  if (!S_ISDIR(status.st_mode) && errno == EEXIST) return failWith(kAlreadyExists);
  return rename(source, target) == 0 || failAtEither(source, target);
}

bool moveToOtherFileSystem(char const* source, char const* target) {
  struct stat status;
  if (lstat(source, &status) != 0) return failAt(source, errno);
  if (S_ISDIR(status.st_mode)) return failWith(kNotSameDevice);
  bool const isCopied =
      S_ISLNK(status.st_mode) ? copyLink(source, target, true) : copyItem(source, target, nullptr, nullptr, true);
  if (!isCopied) return lastErrorOfThread() == kFileExists ? failWith(kAlreadyExists) : false;
  // COMPAT: the move succeeds even if the source cannot be deleted, as on Windows.
  unlink(source);
  return true;
}

// The root of a drive or share, named without the separator behind it: a link that must outlive its contents.
bool isRoot(char const* name) {
  Root const root = rootOf(name);
  return root.kind != Root::Kind::kNative && name[root.size] == '\0';
}

}  // namespace

bool moveItem(char const* source, char const* target) {
  if (renameat2(AT_FDCWD, source, AT_FDCWD, target, RENAME_NOREPLACE) == 0) return true;
  switch (errno) {
    case EEXIST:
      return renameToExisting(source, target);
    case EINVAL:
    case ENOSYS:
      return renameByLink(source, target);
    case EXDEV:
      return moveToOtherFileSystem(source, target);
    default:
      return failAtEither(source, target);
  }
}

bool removeDirectoryItem(char const* path) {
  NativePath name;
  std::size_t size = strlen(path);
  while (size > 1 && path[size - 1] == '/') --size;
  name.append(path, size);
  name.push('\0');
  if (isRoot(name.data())) return access(path, F_OK) == 0 ? failWith(kAccessDenied) : failAt(path, errno);
  if (rmdir(name.data()) == 0) return true;
  switch (errno) {
    case ENOTEMPTY:
    case EEXIST:
      return failWith(kDirectoryNotEmpty);
    case ENOTDIR: {
      struct stat link, target;
      if (lstat(name.data(), &link) != 0) return failAt(path, errno);
      bool const isToDirectory = S_ISLNK(link.st_mode) && stat(name.data(), &target) == 0 && S_ISDIR(target.st_mode);
      if (!isToDirectory) return failWith(kDirectoryNameInvalid);
      return unlink(name.data()) == 0 || failAt(path, errno);
    }
    default:
      return failAt(path, errno);
  }
}

}  // namespace platform
}  // namespace KV_1_1
