// SPDX-License-Identifier: MIT
#include "scanshelf.h"

#include <filesystem>
#include <memory>
#include <system_error>

namespace scanshelf {
namespace fs = std::filesystem;

namespace {

// Takes the folder by value, because the lists grow.
void findIn(SmartPtr<Directory const> folder, String const& pattern, Survey& found, Progress const& progress) {
  SmartPtr<FileIterator> const files = folder->findFiles(pattern);
  if (!files) throw Error(textOf(IDS_INVALID_PATTERN, pattern));
  while (SmartPtr<File const> const file = files->getNext()) {
    ULARGE_INTEGER size;
    size.QuadPart = 0;
    if (!file->getFileSize(size)) ++found.unmeasured;
    found.files.push_back({file, size.QuadPart});
    found.all += {1, 0, size.QuadPart};
    // A large folder takes so long that progress is shown within it too.
    if (found.all.files % 256 == 0) progress(found.all);
  }
  SmartPtr<DirectoryIterator> const folders = folder->findDirectories(KVW("*"));
  while (SmartPtr<Directory const> const next = folders->getNext()) found.folders.push_back(next);
  found.all.folders = found.folders.size();
  progress(found.all);
}

// Adds the part of the present file that is copied to what is finished.
class FileProgress : public IProgress {
 public:
  FileProgress(Totals const& finished, std::uint64_t bytes, Progress const& progress)
      : finished_(finished), bytes_(static_cast<double>(bytes)), progress_(progress) {}

  void setProgress(double part) override {
    Totals now = finished_;
    if (part >= 0) now.bytes += static_cast<std::uint64_t>(part * bytes_);  // not a number for an empty file
    progress_(now);
  }

 private:
  Totals const& finished_;
  double const bytes_;
  Progress const& progress_;
};

// The system's text for the last error, in one line.
String systemReason() {
  String reason = getWindowsError().trim();
  reason.replace(KVW("\r\n"), KVW(" "));
  return reason;
}

// Makes the folder if it is missing. NIL on success, otherwise the reason.
String makeFolder(Directory const& folder) {
  bool const made = folder.create();
  String const reason = systemReason();
  // Directory::create succeeds, too, if a file has the name.
  return made && folder.exists() ? String::NIL : reason;
}

}  // namespace

Survey survey(SmartPtr<Directory const> const& folder, String const& pattern, Progress const& progress) {
  Survey found;
  found.folder = folder;
  findIn(folder, pattern, found, progress);
  // The list grows meanwhile. It takes any depth, where recursion could exhaust the stack.
  for (std::size_t i = 0; i < found.folders.size(); ++i) findIn(found.folders[i], pattern, found, progress);
  return found;
}

// Names alone do not decide, because links and substituted drives lead to the same place. They have to do where the
// standard library does not understand the path.
bool isWithin(Directory const& folder, Directory const& outer) {
  if (folder.getFullName().startsWith(outer.getFullName())) return true;
  std::error_code ignored;  // of missing levels
  fs::path const outerPath = outer.getFullNameUnix().stringPath();
  fs::path level = fs::weakly_canonical(folder.getFullNameUnix().stringPath(), ignored);
  while (!fs::equivalent(level, outerPath, ignored)) {
    if (!level.has_relative_path()) return false;
    level = level.parent_path();
  }
  return true;
}

CopyResult copyItems(Survey const& found, Directory const& target, bool overwrite, Progress const& progress) {
  if (String const reason = makeFolder(target); reason != String::NIL) {
    throw Error(textOf(IDS_FOLDER_NOT_MADE, target.getFullName(), reason));
  }
  CopyResult result;
  Totals finished;
  progress(finished);
  for (SmartPtr<Directory const> const& folder : found.folders) {
    SmartPtr<Directory const> const relative = folder->makeRelative(found.folder);
    String const reason = makeFolder(*target.combine(relative));
    if (reason == String::NIL) ++result.copied.folders;
    if (reason != String::NIL) result.failures.push_back({relative, reason});
    progress(finished);
  }
  for (auto const& [file, bytes] : found.files) {
    SmartPtr<File const> const relative = file->makeRelative(found.folder);
    SmartPtr<File const> const copy = target.combine(relative);
    int const outcome = file->copy(copy, overwrite, std::make_shared<FileProgress>(finished, bytes, progress));
    if (outcome == File::CopyOk) {
      result.copied += {1, 0, bytes};
      bool const isEqual = file->hasEqualSize(copy);
      if (isEqual) ++result.equalSizes;
      if (!isEqual) result.failures.push_back({relative, textOf(IDS_SIZES_DIFFER)});
    } else {
      result.failures.push_back({relative, systemReason()});
    }
    finished += {1, 0, bytes};
    progress(finished);
    if (outcome == File::CopyDiskFull) break;
  }
  result.unattempted = found.files.size() - finished.files;
  return result;
}

}  // namespace scanshelf
