// SPDX-License-Identifier: MIT
//
// The disk queries that directories and files share.
#include "kvbase/filesystem/file_system_item.h"
#include "kvbase/filesystem/internal/open_file.h"
#include "kvbase/platform/file_api.h"

namespace KV_1_1 {

namespace {

constexpr int kModeWrite = 2;
constexpr int kModeRead = 4;

FILETIME fileTimeOf(std::uint64_t time) {
  FILETIME parts;
  parts.dwLowDateTime = static_cast<ulong32>(time);
  parts.dwHighDateTime = static_cast<ulong32>(time >> 32);
  return parts;
}

bool endsInSeparator(String const& text) {
  int const length = text.length();
  if (length == 0) return false;
  wchar const last = static_cast<wchar const*>(text)[length - 1];
  return last == KVW('\\') || last == KVW('/');
}

}  // namespace

bool FileSystemItem::access(int mode) const {
  if (!exists()) return false;
  platform::FileApi& files = platform::files();
  String const name = getFullNameUnicode();
  ulong32 const attributes = files.getAttributes(name);
  if (attributes == platform::kInvalidAttributes) return false;

  ulong32 const wanted =
      ((mode & kModeRead) != 0 ? platform::kAccessRead : 0) | ((mode & kModeWrite) != 0 ? platform::kAccessWrite : 0);
  ulong32 const sharing = platform::kShareRead | platform::kShareWrite | platform::kShareDelete;
  ulong32 const flags = (attributes & platform::kAttributeDirectory) != 0 ? platform::kFlagBackupSemantics : 0;
  return bool(OpenFile(files.openFile(name, wanted, sharing, platform::kOpenExisting, flags)));
}

bool FileSystemItem::stat(struct _stat64i32& status) const {
  String const fullName = getFullName();
  String const name = endsInSeparator(fullName) ? fullName.substr(0, fullName.length() - 1) : fullName;
  return platform::files().getStatus(name, status) == 0;
}

bool FileSystemItem::getCreationTime(FILETIME* time) const {
  platform::FileInfo info;
  if (!platform::files().getInfo(getFullNameUnicode(), info)) return false;
  *time = fileTimeOf(info.creationTime);
  return true;
}

bool FileSystemItem::getLastWriteTime(FILETIME* time) const {
  platform::FileInfo info;
  if (!platform::files().getInfo(getFullNameUnicode(), info)) return false;
  *time = fileTimeOf(info.lastWriteTime);
  return true;
}

}  // namespace KV_1_1
