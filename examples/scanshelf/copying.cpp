// SPDX-License-Identifier: MIT
#include "copying.h"

#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include "complaint.h"

namespace scanshelf {

namespace fs = std::filesystem;
using KV_1_1::Directory;
using KV_1_1::File;
using KV_1_1::FileSystemItem;
using KV_1_1::getWindowsError;
using KV_1_1::SmartPtr;
using KV_1_1::String;
using KV_1_1::wchar;

namespace {

// Adds the part of a file that is copied to the files before it.
class FileProgress : public IProgress {
 public:
  FileProgress(Totals const& before, std::uint64_t bytes, Progress const& progress)
      : before_(before), bytes_(bytes), progress_(progress) {}

  // For an empty file the part is not a number.
  void setProgress(double fraction) override {
    if (!(fraction >= 0)) return;
    Totals now = before_;
    now.bytes += static_cast<std::uint64_t>(fraction * static_cast<double>(bytes_));
    progress_(now);
  }

 private:
  Totals const& before_;
  std::uint64_t const bytes_;
  Progress const& progress_;
};

// The system's text for the failure of the call just before, in one line.
String systemReason() {
  String reason = getWindowsError().trim();
  reason.replace(KVW("\r\n"), KVW(" "));
  return reason;
}

// Makes the folder if it is missing. The reason if there is none afterwards, else NIL.
// A file of that name is the one case that Directory::create takes for success.
String makeFolder(Directory const& folder) {
  bool const made = folder.create();
  String const reason = systemReason();
  return made && folder.exists() ? String::NIL : reason;
}

fs::path nativePath(Directory const& folder) {
  return fs::path(static_cast<wchar const*>(folder.getFullNameUnix()));
}

class Copier {
 public:
  Copier(Survey const& found, CopyRequest const& request, Progress const& progress)
      : found_(found), request_(request), progress_(progress) {}

  CopyResult run() {
    String const reason = makeFolder(*request_.target);
    if (reason != String::NIL) {
      throw Complaint(KVW("The folder '") + request_.target->getFullName() + KVW("' could not be made: ") + reason);
    }
    progress_(done_);
    for (SmartPtr<Directory const> const& folder : found_.folders) copyFolder(folder);
    for (FoundFile const& found : found_.files) {
      if (!copyFile(found)) break;
    }
    result_.untried = found_.files.size() - done_.files;
    return std::move(result_);
  }

 private:
  void copyFolder(SmartPtr<Directory const> const& folder) {
    SmartPtr<Directory const> const relative = folder->makeRelative(request_.source);
    String const reason = makeFolder(*request_.target->combine(relative));
    if (reason != String::NIL) {
      fail(relative, reason);
    } else {
      ++result_.copied.folders;
    }
    progress_(done_);
  }

  // False if there is no sense in going on.
  bool copyFile(FoundFile const& found) {
    SmartPtr<File const> const relative = found.file->makeRelative(request_.source);
    SmartPtr<File const> const target = request_.target->combine(relative);
    auto const part = std::make_shared<FileProgress>(done_, found.bytes, progress_);
    int const outcome = found.file->copy(target, request_.overwrite, part);
    if (outcome == File::CopyOk) {
      ++result_.copied.files;
      result_.copied.bytes += found.bytes;
      if (found.file->hasEqualSize(target)) {
        ++result_.equalSizes;
      } else {
        fail(relative, KVW("It was copied, but the sizes are not equal."));
      }
    } else {
      fail(relative, systemReason());
    }
    ++done_.files;
    done_.bytes += found.bytes;
    progress_(done_);
    return outcome != File::CopyDiskFull;
  }

  void fail(SmartPtr<FileSystemItem const> const& item, String const& reason) {
    result_.failures.push_back({item, reason});
  }

  Survey const& found_;
  CopyRequest const& request_;
  Progress const& progress_;
  Totals done_;
  CopyResult result_;
};

}  // namespace

// Names alone do not tell: links, and drives that stand for folders, lead to the same place. Where the standard library
// does not know the notation the names have to do.
bool isWithin(Directory const& folder, Directory const& outer) {
  if (folder.getFullName().startsWith(outer.getFullName())) return true;
  std::error_code ignored;  // of levels that are missing
  fs::path const outerPath = nativePath(outer);
  fs::path level = fs::weakly_canonical(nativePath(folder), ignored);
  while (!fs::equivalent(level, outerPath, ignored)) {
    if (!level.has_relative_path()) return false;
    level = level.parent_path();
  }
  return true;
}

CopyResult copyItems(Survey const& found, CopyRequest const& request, Progress const& progress) {
  return Copier(found, request, progress).run();
}

}  // namespace scanshelf
