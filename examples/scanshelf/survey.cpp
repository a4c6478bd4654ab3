// SPDX-License-Identifier: MIT
#include "survey.h"

#include <algorithm>
#include <utility>

#include "complaint.h"

namespace scanshelf {

using KV_1_1::Directory;
using KV_1_1::DirectoryIterator;
using KV_1_1::File;
using KV_1_1::FileIterator;
using KV_1_1::SmartPtr;
using KV_1_1::String;

namespace {

using Folders = std::vector<SmartPtr<Directory const>>;

bool isLarger(FoundFile const& a, FoundFile const& b) {
  return a.bytes > b.bytes;
}

class Surveyor {
 public:
  Surveyor(SurveyRequest const& request, Progress const& progress) : request_(request), progress_(progress) {}

  Survey run() {
    countFiles(*request_.folder, result_.direct);
    Folders top;
    countFolders(*request_.folder, result_.direct, top);
    for (SmartPtr<Directory const> const& folder : top) {
      result_.byFolder.push_back({folder->getName(), countBelow(folder)});
    }
    result_.direct.folders = 0;
    std::sort_heap(result_.largest.begin(), result_.largest.end(), isLarger);
    return std::move(result_);
  }

 private:
  // A list of folders still to be read takes any depth, which recursion does not.
  Totals countBelow(SmartPtr<Directory const> const& start) {
    Totals totals;
    Folders pending = {start};
    while (!pending.empty()) {
      SmartPtr<Directory const> const folder = std::move(pending.back());
      pending.pop_back();
      countFiles(*folder, totals);
      countFolders(*folder, totals, pending);
    }
    return totals;
  }

  void countFiles(Directory const& folder, Totals& totals) {
    SmartPtr<FileIterator> const files = folder.findFiles(request_.pattern);
    if (!files) {
      throw Complaint(
          KVW("'") + request_.pattern +
          KVW("' is no pattern for names. A pattern holds no separator or colon and does not end in a dot or "
              "blank; the wildcards are * and ?."));
    }
    while (SmartPtr<File const> const file = files->getNext()) countFile(file, totals);
    progress_(result_.all);
  }

  void countFolders(Directory const& folder, Totals& totals, Folders& found) {
    SmartPtr<DirectoryIterator> const folders = folder.findDirectories(KVW("*"));
    if (!folders) return;
    while (SmartPtr<Directory const> next = folders->getNext()) {
      ++totals.folders;
      ++result_.all.folders;
      if (request_.keepItems) result_.folders.push_back(next);
      found.push_back(std::move(next));
    }
  }

  void countFile(SmartPtr<File const> const& file, Totals& totals) {
    ULARGE_INTEGER size;
    size.QuadPart = 0;
    if (!file->getFileSize(size)) ++result_.unmeasured;
    for (Totals* counts : {&totals, &result_.all, &result_.byExtension[file->getExtension()]}) {
      ++counts->files;
      counts->bytes += size.QuadPart;
    }
    if (request_.keepItems) result_.files.push_back({file, size.QuadPart});
    keepIfLarge({file, size.QuadPart});
    // A folder may hold so many files that its end is too late for a sign of life.
    if (result_.all.files % 256 == 0) progress_(result_.all);
  }

  // The heap has the smallest of the kept files in front.
  void keepIfLarge(FoundFile found) {
    std::vector<FoundFile>& kept = result_.largest;
    if (kept.size() == request_.largest) {
      if (kept.empty() || !isLarger(found, kept.front())) return;
      std::pop_heap(kept.begin(), kept.end(), isLarger);
      kept.pop_back();
    }
    kept.push_back(std::move(found));
    std::push_heap(kept.begin(), kept.end(), isLarger);
  }

  SurveyRequest const& request_;
  Progress const& progress_;
  Survey result_;
};

}  // namespace

Survey survey(SurveyRequest const& request, Progress const& progress) {
  return Surveyor(request, progress).run();
}

}  // namespace scanshelf
