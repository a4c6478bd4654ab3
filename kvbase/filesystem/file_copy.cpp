// SPDX-License-Identifier: MIT
#include <utility>

#include "kvbase/export.h"
#include "kvbase/filesystem/file.h"
#include "kvbase/filesystem/internal/copy_progress.h"
#include "kvbase/filesystem/internal/system_name.h"
#include "kvbase/filesystem/progress.h"
#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/file_api.h"

namespace KV_1_1 {

ulong32 copyProgressRoutine(std::int64_t total, std::int64_t transferred, void* data) {
  static_cast<IProgress*>(data)->setProgress(static_cast<double>(transferred) / static_cast<double>(total));
  return platform::kProgressContinue;
}

KVBASE_NEVER_INLINE int File::copy(SmartPtr<File const> target, bool overwrite,
                                   std::shared_ptr<IProgress> progress) const {
  bool const done = platform::files().copyFile(SystemName(*this), SystemName(*target),
                                               progress != nullptr ? &copyProgressRoutine : nullptr, progress.get(),
                                               overwrite ? 0 : platform::kCopyFailIfExists);
  if (done) return CopyOk;
  return platform::errors().lastError() == platform::kDiskFull ? CopyDiskFull : CopyFailed;
}

int File::copy(SmartPtr<File const> target, bool overwrite) const {
  return copy(std::move(target), overwrite, std::shared_ptr<IProgress>());
}

SmartPtr<File const> File::copy(SmartPtr<Directory const> directory, bool overwrite) const {
  SmartPtr<File const> const target = fromString(*directory, getName());
  return target != nullptr && copy(target, overwrite) == CopyOk ? target : nullptr;
}

}  // namespace KV_1_1
