// SPDX-License-Identifier: MIT
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>

#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/linux/errors/errno_codes.h"
#include "kvbase/platform/linux/errors/last_error.h"
#include "kvbase/platform/linux/files/copy_loop.h"
#include "kvbase/platform/linux/files/descriptor.h"
#include "kvbase/platform/linux/files/item_changes.h"
#include "kvbase/platform/linux/files/item_status.h"

namespace KV_1_1 {
namespace platform {

namespace {

constexpr mode_t kPermissions = 0777;

// Whether an item may be the target of a copy: a file, or a device such as /dev/null.
bool isTarget(mode_t mode) {
  return S_ISREG(mode) || S_ISCHR(mode);
}

// The target of a copy. Unless keep() succeeds, the destructor removes the partial file, or empties it if it was
// reached through a link; a device is left unchanged.
class TargetFile {
 public:
  explicit TargetFile(char const* path) : path_(path) {}
  ~TargetFile() {
    if (file_) discard();
  }
  TargetFile(TargetFile const&) = delete;
  TargetFile& operator=(TargetFile const&) = delete;

  // Creates the file, or opens and empties the existing one.
  bool open(struct stat const& source, bool failIfExists) {
    Descriptor made(::open(path_, O_WRONLY | O_CREAT | O_EXCL | kPlainOpen, source.st_mode & kPermissions));
    if (made) {
      file_ = std::move(made);
      return readMode() || failWith(codeOf(errno));
    }
    if (errno != EEXIST) return failAt(path_, errno);
    return failIfExists ? failWith(kFileExists) : openExisting(source);
  }

  int descriptor() const { return file_.get(); }
  mode_t mode() const { return mode_; }

  // Sets the rights and the time of the source, as far as the file system supports them, and closes the file.
  bool keep(struct stat const& source) {
    if (S_ISREG(mode_)) {
      if (((mode_ ^ source.st_mode) & kPermissions) != 0) fchmod(file_.get(), source.st_mode & kPermissions);
      timespec const times[] = {{0, UTIME_OMIT}, source.st_mtim};
      futimens(file_.get(), times);
    }
    // Some file systems report a full disk only here. The descriptor is closed in any case.
    if (::close(file_.release()) == 0 || errno == EINTR) return true;
    ulong32 const code = codeOf(errno);
    discard();
    return failWith(code);
  }

 private:
  // Only the mode, because a system that has been asked for the times takes a finer clock, a slower one, for those of the
  // changes that follow.
  bool readMode() {
    struct statx status;
    if (statx(file_.get(), "", AT_EMPTY_PATH, STATX_TYPE | STATX_MODE, &status) != 0) return false;
    mode_ = status.stx_mode;
    return true;
  }

  bool openExisting(struct stat const& source) {
    struct stat item;
    if (lstat(path_, &item) != 0) return failAt(path_, errno);
    isThroughLink_ = S_ISLNK(item.st_mode);
    // A copy never creates the missing file that a link leads to.
    if (isThroughLink_ && stat(path_, &item) != 0) return failWith(kAccessDenied);
    if (isSameItem(item, source)) return failWith(kSharingViolation);
    if (!isTarget(item.st_mode) || isReadOnly(item.st_mode)) return failWith(kAccessDenied);

    Descriptor existing(::open(path_, O_WRONLY | kPlainOpen));
    if (!existing) return failAt(path_, errno);
    struct stat opened;
    if (fstat(existing.get(), &opened) != 0) return failWith(codeOf(errno));
    // Another process may have replaced the item meanwhile.
    if (!isSameItem(item, opened)) return failWith(kSharingViolation);
    if (S_ISREG(opened.st_mode) && ftruncate(existing.get(), 0) != 0) return failWith(codeOf(errno));
    file_ = std::move(existing);
    mode_ = opened.st_mode;
    return true;
  }

  // The copy has already failed, so a failure here cannot be reported.
  void discard() const {
    if (!S_ISREG(mode_)) return;
    static_cast<void>((isThroughLink_ ? truncate(path_, 0) : unlink(path_)) == 0);
  }

  char const* const path_;
  Descriptor file_;
  mode_t mode_ = S_IFREG;
  bool isThroughLink_ = false;
};

// A path in the folder of `path` with an unused name, for an item that is then renamed to `path`.
void nameBeside(char const* path, NativePath& name) {
  static std::atomic<unsigned> counter{0};
  char const* const slash = strrchr(path, '/');
  name.resize(0);
  if (slash != nullptr) name.append(path, static_cast<std::size_t>(slash - path) + 1);
  char level[64];
  int const size = snprintf(level, sizeof level, ".kvbase-%ld-%u", static_cast<long>(getpid()), ++counter);
  name.append(level, static_cast<std::size_t>(size) + 1);
}

// Replaces a file or link by a link, atomically.
bool replaceByLink(char const* text, char const* target) {
  NativePath name;
  bool isMade;
  do {
    nameBeside(target, name);
    isMade = symlink(text, name.data()) == 0;
  } while (!isMade && errno == EEXIST);
  if (!isMade) return failAt(target, errno);
  if (rename(name.data(), target) == 0) return true;
  int const error = errno;
  unlink(name.data());
  return failAt(target, error);
}

bool readLink(char const* path, NativePath& text) {
  text.resize(256);
  for (;;) {
    ssize_t const size = readlink(path, text.data(), text.size());
    if (size < 0) return failAt(path, errno);
    if (static_cast<std::size_t>(size) < text.size()) {
      text[static_cast<std::size_t>(size)] = '\0';
      return true;
    }
    text.resize(2 * text.size());
  }
}

bool copyFileContents(int source, struct stat const& status, char const* target, CopyProgress progress, void* data,
                      bool failIfExists) {
  TargetFile file(target);
  if (!file.open(status, failIfExists)) return false;
  bool const hasHoles = S_ISREG(file.mode()) && off_t{status.st_blocks} * 512 < status.st_size;
  ulong32 const error = CopyLoop(source, file.descriptor(), status.st_size, hasHoles).run(progress, data);
  if (error != kNoError) return failWith(error);
  return file.keep(status);
}

}  // namespace

bool copyLink(char const* source, char const* target, bool failIfExists) {
  NativePath text;
  if (!readLink(source, text)) return false;
  if (symlink(text.data(), target) == 0) return true;
  if (errno != EEXIST) return failAt(target, errno);
  if (failIfExists) return failWith(kFileExists);

  struct stat item, link;
  if (lstat(target, &item) != 0) return failAt(target, errno);
  if (lstat(source, &link) != 0) return failAt(source, errno);
  if (isSameItem(item, link)) return failWith(kSharingViolation);
  bool const mayBeReplaced = S_ISLNK(item.st_mode) || (S_ISREG(item.st_mode) && !isReadOnly(item.st_mode));
  return mayBeReplaced ? replaceByLink(text.data(), target) : failWith(kAccessDenied);
}

// The item is queried before it is opened, because opening a device may have an effect on it.
bool copyItem(char const* source, char const* target, CopyProgress progress, void* data, bool failIfExists) {
  struct stat status;
  if (lstat(source, &status) != 0) return failAt(source, errno);
  bool const isLink = S_ISLNK(status.st_mode);
  if (isLink && (stat(source, &status) != 0 || S_ISDIR(status.st_mode))) {
    if (progress != nullptr && progress(0, 0, data) != kProgressContinue) return failWith(kRequestAborted);
    return copyLink(source, target, failIfExists);
  }
  if (!S_ISREG(status.st_mode)) return failWith(kAccessDenied);
  Descriptor const file(open(source, O_RDONLY | kPlainOpen));
  if (!file) return failAt(source, errno);
  // The path may name another item by now; only the open file counts.
  if (fstat(file.get(), &status) != 0) return failWith(codeOf(errno));
  if (!S_ISREG(status.st_mode)) return failWith(kAccessDenied);
  return copyFileContents(file.get(), status, target, progress, data, failIfExists);
}

}  // namespace platform
}  // namespace KV_1_1
