// SPDX-License-Identifier: MIT
#include "kvbase/filesystem/directory.h"
#include "kvbase/filesystem/file_system_iterator.h"
#include "kvbase/filesystem/internal/path_names.h"
#include "kvbase/filesystem/internal/report.h"
#include "kvbase/filesystem/internal/walk.h"

namespace KV_1_1 {

namespace {

template <class Iterator, class Items>
void appendAll(SmartPtr<Iterator> const& iterator, Items& output) {
  forAll(iterator, [&output](auto const& item) {
    output.push_back(item);
    return true;
  });
}

}  // namespace

template <class Iterator>
SmartPtr<Iterator> Directory::find(String const& pattern) const {
  if (!isValidSearchPattern(pattern)) {
    report(KVW("The file or directory search string '%ls' contains invalid characters."), pattern);
    return nullptr;
  }
  SmartPtr<Directory const> const absolute = makeAbsolute();
  if (absolute == nullptr) return nullptr;
  return new Iterator(*absolute, pattern);
}

SmartPtr<FileSystemIterator> Directory::findContents(String const& pattern) const {
  return find<FileSystemIterator>(pattern);
}

SmartPtr<DirectoryIterator> Directory::findDirectories(String const& pattern) const {
  return find<DirectoryIterator>(pattern);
}

SmartPtr<FileIterator> Directory::findFiles(String const& pattern) const {
  return find<FileIterator>(pattern);
}

std::vector<SmartPtr<FileSystemItem const>> Directory::collectContents(String const& pattern, bool recursive) const {
  std::vector<SmartPtr<FileSystemItem const>> output;
  collectContentsInternal(output, pattern, recursive);
  return output;
}

std::vector<SmartPtr<Directory const>> Directory::collectDirectories(String const& pattern, bool recursive) const {
  std::vector<SmartPtr<Directory const>> output;
  collectDirectoriesInternal(output, pattern, recursive);
  return output;
}

std::vector<SmartPtr<File const>> Directory::collectFiles(String const& pattern, bool recursive) const {
  std::vector<SmartPtr<File const>> output;
  collectFilesInternal(output, pattern, recursive);
  return output;
}

void Directory::collectContentsInternal(std::vector<SmartPtr<FileSystemItem const>>& output, String const& pattern,
                                        bool recursive) const {
  appendAll(findDirectories(pattern), output);
  appendAll(findFiles(pattern), output);
  if (!recursive) return;
  forAll(findDirectories(KVW("*")), [&](SmartPtr<Directory const> const& directory) {
    directory->collectContentsInternal(output, pattern, recursive);
    return true;
  });
}

void Directory::collectDirectoriesInternal(std::vector<SmartPtr<Directory const>>& output, String const& pattern,
                                           bool recursive) const {
  appendAll(findDirectories(pattern), output);
  if (!recursive) return;
  forAll(findDirectories(KVW("*")), [&](SmartPtr<Directory const> const& directory) {
    directory->collectDirectoriesInternal(output, pattern, recursive);
    return true;
  });
}

void Directory::collectFilesInternal(std::vector<SmartPtr<File const>>& output, String const& pattern,
                                     bool recursive) const {
  appendAll(findFiles(pattern), output);
  if (!recursive) return;
  forAll(findDirectories(KVW("*")), [&](SmartPtr<Directory const> const& directory) {
    directory->collectFilesInternal(output, pattern, recursive);
    return true;
  });
}

}  // namespace KV_1_1
