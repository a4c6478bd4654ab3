// SPDX-License-Identifier: MIT
#include <type_traits>
#include <vector>

#include "kvbase/diagnostics/windows_error.h"
#include "kvbase/export.h"
#include "kvbase/filesystem/directory.h"
#include "kvbase/filesystem/file.h"
#include "kvbase/filesystem/file_system_iterator.h"
#include "kvbase/filesystem/internal/report.h"
#include "kvbase/filesystem/internal/system_name.h"
#include "kvbase/filesystem/internal/walk.h"
#include "kvbase/filesystem/progress.h"
#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/file_api.h"
#include "kvbase/platform/shell_api.h"

namespace KV_1_1 {

static_assert(!std::has_virtual_destructor<KVFileProgressInterface>::value, "fileCopied is its only virtual operation");

namespace {

// Makes a directory whose parent is there. True also if somebody else has made it meanwhile.
bool make(Directory const& directory) {
  if (platform::files().createDirectory(directory.getFullNameUnicode())) return true;
  if (platform::errors().lastError() == platform::kAlreadyExists) return true;
  String const reason = getWindowsError();
  report(KVW("Failed to create the directory '%ls'.\r\nWindows error message: %ls"), directory.getFullName(), reason);
  return false;
}

}  // namespace

KVBASE_NEVER_INLINE bool Directory::exists() const {
  ulong32 const attributes = platform::files().getAttributes(SystemName(*this));
  return attributes != platform::kInvalidAttributes && (attributes & platform::kAttributeDirectory) != 0;
}

bool Directory::isDirectory() const {
  return Directory::exists();
}

bool Directory::isEmpty() const {
  return platform::files().isDirectoryEmpty(getFullNameUnicode()) == 1;
}

bool Directory::create() const {
  if (!absolute_) {
    SmartPtr<Directory const> const absolute = makeAbsolute();
    return absolute != nullptr && absolute->create();
  }
  if (exists()) return true;
  // Not a recursion: a path can have more levels than the stack has room for calls.
  std::vector<SmartPtr<Directory const>> missing;
  SmartPtr<Directory const> above = getParent();
  for (; above != nullptr && !above->exists(); above = above->getParent()) missing.push_back(above);
  if (above == nullptr) {
    report(KVW("The drive or network share '%ls' does not exist or is inaccessible."), getRoot());
    return false;
  }
  for (; !missing.empty(); missing.pop_back()) {
    if (!make(*missing.back())) return false;
  }
  return make(*this);
}

bool Directory::remove(bool recursive) const {
  if (!exists()) return true;
  if (recursive && !removeContents(true)) return false;
  if (platform::files().removeDirectory(getFullNameUnicode())) return true;
  String const reason = getWindowsError();
  report(KVW("Failed to remove directory '%ls'.\r\nWindows error message: %ls"), getFullName(), reason);
  return false;
}

bool Directory::removeContents(bool recursive) const {
  if (!exists()) return true;
  auto const removeTree = [](SmartPtr<Directory const> const& directory) { return directory->remove(true); };
  if (recursive && !forAll(findDirectories(KVW("*")), removeTree)) return false;
  return forAll(findFiles(KVW("*")), [](SmartPtr<File const> const& file) { return file->remove(); });
}

bool Directory::copyContents(SmartPtr<Directory const> target, bool recursive, bool overwrite,
                             KVFileProgressInterface* progress) const {
  if (!exists() || !target->exists()) return false;
  auto const copyDirectory = [&](SmartPtr<Directory const> const& directory) {
    SmartPtr<Directory const> const destination = target->appendLevel(directory->getName());
    if (!destination->create() && !overwrite) return false;
    return !recursive || directory->copyContents(destination, recursive, overwrite, progress);
  };
  auto const copyFile = [&](SmartPtr<File const> const& file) {
    if (file->copy(target, overwrite) == nullptr) return false;
    if (progress != nullptr) progress->fileCopied();
    return true;
  };
  return forAll(findDirectories(KVW("*")), copyDirectory) && forAll(findFiles(KVW("*")), copyFile);
}

bool Directory::openInExplorer() const {
  if (!exists() || !absolute_) return false;
  return platform::shell().open(KVW("open"), getFullNameUnicode(), nullptr, platform::kShowDefault) > 32;
}

}  // namespace KV_1_1
