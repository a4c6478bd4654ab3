// SPDX-License-Identifier: MIT
#include <vector>

#include "kvbase/diagnostics/windows_error.h"
#include "kvbase/export.h"
#include "kvbase/filesystem/file.h"
#include "kvbase/filesystem/internal/open_file.h"
#include "kvbase/filesystem/internal/report.h"
#include "kvbase/filesystem/internal/system_name.h"
#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/file_api.h"
#include "kvbase/platform/shell_api.h"

namespace KV_1_1 {

namespace {

struct ItemListTraits {
  using Value = platform::ItemList;
  static Value none() { return nullptr; }
  static void close(Value item) { platform::shell().freeItemList(item); }
};

// Has the C runtime flush a file to the disk; failures are ignored. Without a descriptor there is nothing to flush, and
// the runtime of Windows ends the process for an invalid one.
void flush(String const& name) {
  platform::FileApi& files = platform::files();
  int const descriptor = files.openDescriptor(name, platform::kDescriptorReadWrite, platform::kDescriptorShareAll,
                                              platform::kDescriptorPermission);
  if (descriptor < 0) return;
  files.commitDescriptor(descriptor);
  files.closeDescriptor(descriptor);
}

}  // namespace

KVBASE_NEVER_INLINE bool File::exists() const {
  ulong32 const attributes = platform::files().getAttributes(SystemName(*this));
  return attributes != platform::kInvalidAttributes && (attributes & platform::kAttributeDirectory) == 0;
}

bool File::move(SmartPtr<File const> target) const {
  if (target == nullptr) return false;
  if (platform::files().moveFile(getFullNameUnicode(), target->getFullNameUnicode())) return true;
  String const reason = getWindowsError();
  report(KVW("Failed to move file '%ls' to file '%ls' because: %ls"), getFullName(), target->getFullName(), reason);
  return false;
}

KVBASE_NEVER_INLINE bool File::remove() const {
  if (!exists()) return true;
  if (platform::files().deleteFile(SystemName(*this))) return true;
  String const reason = getWindowsError();
  report(KVW("Failed to delete file '%ls'.\r\nWindows error message: %ls"), getFullName(), reason);
  return false;
}

bool File::touch() const {
  platform::FileApi& files = platform::files();
  bool done = true;
  {
    OpenFile const file(files.openFile(getFullNameUnicode(), platform::kAccessWrite,
                                       platform::kShareRead | platform::kShareWrite, platform::kOpenAlways,
                                       platform::kAttributeNormal));
    if (!file) return false;
    bool const wasThere = platform::errors().lastError() == platform::kAlreadyExists;
    if (wasThere) done = files.setLastWriteTime(file.get(), files.systemTime());
  }
  flush(getFullName());
  return done;
}

bool File::isReadOnly() const {
  return (platform::files().getAttributes(getFullName()) & platform::kAttributeReadOnly) != 0;
}

int File::setAsReadOnly() const {
  return setReadOnly(true);
}

int File::unsetAsReadOnly() const {
  return setReadOnly(false);
}

int File::setReadOnly(bool readOnly) const {
  platform::FileApi& files = platform::files();
  String const name = getFullName();
  ulong32 const attributes = files.getAttributes(name);
  if (attributes == platform::kInvalidAttributes) return ReadOnlyNoFile;
  ulong32 const wanted =
      readOnly ? attributes | platform::kAttributeReadOnly : attributes & ~platform::kAttributeReadOnly;
  if (wanted != attributes) files.setAttributes(name, wanted);
  return ReadOnlyOk;
}

bool File::getFileSize(ULARGE_INTEGER& size) const {
  platform::FileInfo info;
  if (!platform::files().getInfo(getFullNameUnicode(), info)) return false;
  size.QuadPart = info.size;
  return true;
}

bool File::hasEqualSize(SmartPtr<File const> const& other) const {
  if (other == this) return true;
  ULARGE_INTEGER size, otherSize;
  return getFileSize(size) && other->getFileSize(otherSize) && size.QuadPart == otherSize.QuadPart;
}

bool File::openWithDefaultApp() const {
  return openWithDefaultApp(getFullName());
}

bool File::openWithDefaultApp(String const& name) {
  return platform::shell().open(nullptr, name, KVW("%HOMEPATH%"), platform::kShowNormal) >= 32;
}

bool File::showInExplorer() const {
  if (!exists() || !isAbsolute()) return false;
  platform::ScopedHandle<ItemListTraits> const item(platform::shell().itemListFromPath(getFullNameUnicode()));
  return item && platform::shell().showItem(item.get()) == 0;
}

bool File::createParentDirectories() const {
  std::vector<SmartPtr<Directory const>> deepestFirst;
  SmartPtr<Directory const> directory = directory_;
  while (SmartPtr<Directory const> const parent = directory->getParent()) {
    deepestFirst.push_back(directory);
    directory = parent;
  }
  for (auto next = deepestFirst.rbegin(); next != deepestFirst.rend(); ++next) {
    if (!(*next)->exists() && !(*next)->create()) return false;
  }
  return true;
}

}  // namespace KV_1_1
