// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/files/item_status.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>

#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/linux/errors/errno_codes.h"
#include "kvbase/platform/linux/errors/last_error.h"

namespace KV_1_1 {
namespace platform {

namespace {

// The position of the last level in a path.
struct LastLevel {
  std::size_t begin;
  std::size_t end;
};

LastLevel lastLevelOf(char const* path) {
  std::size_t end = strlen(path);
  while (end > 0 && path[end - 1] == '/') --end;
  auto const* const slash = static_cast<char const*>(memrchr(path, '/', end));
  return {slash == nullptr ? 0 : static_cast<std::size_t>(slash + 1 - path), end};
}

bool isHidden(char const* path) {
  LastLevel const level = lastLevelOf(path);
  std::size_t const size = level.end - level.begin;
  char const* const name = path + level.begin;
  return size > 0 && name[0] == '.' && !isDots(name, size);
}

bool isDirectory(char const* path) {
  struct stat status;
  return stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

ulong32 codeOfMissing(char const* path) {
  Root const root = rootOf(path);
  if (root.kind != Root::Kind::kNative) {
    NativePath text;
    text.append(path, root.size);
    text.push('\0');
    if (!isDirectory(text.data())) return root.kind == Root::Kind::kShare ? kBadNetworkPath : kPathNotFound;
  }
  std::size_t const begin = lastLevelOf(path).begin;
  if (begin == 0) return kFileNotFound;
  NativePath parent;
  parent.append(path, begin);
  parent.push('\0');
  return isDirectory(parent.data()) ? kFileNotFound : kPathNotFound;
}

}  // namespace

bool queryItem(char const* path, unsigned int mask, struct statx& status) {
  if (statx(AT_FDCWD, path, AT_SYMLINK_NOFOLLOW, mask, &status) != 0) return failAt(path, errno);
  if (!S_ISLNK(status.stx_mode)) return true;
  struct statx target;
  if (statx(AT_FDCWD, path, 0, mask, &target) == 0 && !S_ISDIR(target.stx_mode)) status = target;
  return true;
}

bool isReadOnly(mode_t mode) {
  return !S_ISDIR(mode) && !S_ISLNK(mode) && (mode & S_IWUSR) == 0;
}

bool isSameItem(struct stat const& a, struct stat const& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

ulong32 attributesOf(mode_t mode, char const* path) {
  ulong32 const kind = S_ISDIR(mode) ? kAttributeDirectory : S_ISLNK(mode) ? kAttributeReparsePoint : 0;
  ulong32 const attributes =
      kind | (isReadOnly(mode) ? kAttributeReadOnly : 0) | (isHidden(path) ? kAttributeHidden : 0);
  return attributes != 0 ? attributes : kAttributeNormal;
}

bool failAt(char const* path, int error) {
  return failWith(error == ENOENT ? codeOfMissing(path) : codeOf(error));
}

}  // namespace platform
}  // namespace KV_1_1
