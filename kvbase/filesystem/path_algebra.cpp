// SPDX-License-Identifier: MIT
//
// Paths made from others, and comparison.
#include <utility>

#include "kvbase/filesystem/directory.h"
#include "kvbase/filesystem/file.h"
#include "kvbase/filesystem/internal/current_directory.h"
#include "kvbase/filesystem/internal/path_names.h"
#include "kvbase/filesystem/internal/report.h"
#include "kvbase/kernels/text_kernels.h"

namespace KV_1_1 {

namespace {

// Paths made from each other share their texts, so comparing payloads first often saves the comparison of texts.
bool isSamePayload(String const& a, String const& b) {
  return static_cast<wchar const*>(a) == static_cast<wchar const*>(b);
}

// NIL equals only NIL.
bool equalIgnoringCase(String const& a, String const& b) {
  return isSamePayload(a, b) || a.compareIgnoreCase(b) == 0;
}

// The same for levels, which are never NIL and hold no NUL, so that texts of different lengths differ.
bool equalLevels(String const& a, String const& b) {
  if (isSamePayload(a, b)) return true;
  int const length = a.length();
  return length == b.length() && strings::kernels().mismatchIgnoringCase(a, b, length) == length;
}

}  // namespace

SmartPtr<Directory const> Directory::getParent() const {
  if (levels_.empty()) return nullptr;
  return new Directory(absolute_, root_, std::vector<String>(levels_.begin(), levels_.end() - 1));
}

SmartPtr<Directory const> Directory::appendLevel(String const& level) const {
  if (!isValidItemName(level)) {
    reportInvalidName(level);
    return nullptr;
  }
  std::vector<String> levels;
  levels.reserve(levels_.size() + 1);
  levels.insert(levels.end(), levels_.begin(), levels_.end());
  levels.push_back(level);
  return new Directory(absolute_, root_, std::move(levels));
}

SmartPtr<Directory> Directory::withLevelsOf(Directory const& path) const {
  std::vector<String> levels;
  levels.reserve(levels_.size() + path.levels_.size());
  levels.insert(levels.end(), levels_.begin(), levels_.end());
  levels.insert(levels.end(), path.levels_.begin(), path.levels_.end());
  return new Directory(absolute_, root_, std::move(levels));
}

SmartPtr<Directory const> Directory::appendPath(Directory const& path) const {
  if (path.absolute_) {
    report(KVW("The path to be appended must be relative."));
    return nullptr;
  }
  SmartPtr<Directory> sum = withLevelsOf(path);
  if (!sum->normalize()) return nullptr;
  return sum;
}

SmartPtr<Directory const> Directory::combine(SmartPtr<Directory const> const& path) const {
  if (path == nullptr) return this;
  SmartPtr<Directory> sum = withLevelsOf(*path);
  sum->normalize();
  return sum;
}

SmartPtr<File const> Directory::combine(SmartPtr<File const> const& file) const {
  if (file == nullptr) return nullptr;
  return File::inDirectory(combine(file->directory_).get(), file->getName());
}

SmartPtr<Directory const> Directory::makeAbsolute() const {
  if (absolute_) return this;
  String const text = currentDirectory(getDriveLetter());
  if (text == String::NIL) {
    report(KVW("Failed to get the current working directory."));
    return nullptr;
  }
  SmartPtr<Directory> const current = fromString(text);
  if (current == nullptr) {
    report(KVW("Current working directory is invalid."));
    return nullptr;
  }
  SmartPtr<Directory> sum = current->withLevelsOf(*this);
  if (!sum->normalize()) return nullptr;
  return sum;
}

SmartPtr<Directory const> Directory::makeRelative(SmartPtr<Directory const> const& reference) const {
  SmartPtr<Directory const> path = makeAbsolute();
  SmartPtr<Directory const> const from = reference->makeAbsolute();
  if (path == nullptr || from == nullptr) {
    report(KVW("Failed to get absolute paths of this and the reference directory."));
    return nullptr;
  }
  if (path->getDriveLetter() != from->getDriveLetter()) return path;

  std::size_t const ownSize = path->levels_.size();
  std::size_t const fromSize = from->levels_.size();
  std::size_t common = 0;
  while (common < ownSize && common < fromSize && equalLevels(path->levels_[common], from->levels_[common])) {
    ++common;
  }
  std::vector<String> levels;
  levels.reserve(fromSize - common + ownSize - common);
  if (common < fromSize) levels.insert(levels.end(), fromSize - common, String(KVW("..")));
  levels.insert(levels.end(), path->levels_.begin() + static_cast<std::ptrdiff_t>(common), path->levels_.end());
  return new Directory(false, String::NIL, std::move(levels));
}

bool Directory::contains(FileSystemItem const& item) const {
  return item.getFullName().find(static_cast<wchar const*>(getFullName())) >= 0;
}

FileSystemItem::ComparisonResult Directory::equals(SmartPtr<Directory const> const& other) const {
  if (other == nullptr) return Incomparable;
  if (absolute_ != other->absolute_) {
    return absolute_ ? equals(other->makeAbsolute()) : other->equals(makeAbsolute());
  }
  if (!equalIgnoringCase(root_, other->root_)) return Different;
  if (levels_.size() != other->levels_.size()) return Different;
  for (std::size_t i = 0; i < levels_.size(); ++i) {
    if (!equalLevels(levels_[i], other->levels_[i])) return Different;
  }
  return Equal;
}

SmartPtr<File const> File::replaceExtension(String const& extension) const {
  SmartPtr<File> copy(new File(*this));
  copy->extension_ = extension;
  return copy;
}

SmartPtr<File const> File::makeAbsolute() const {
  if (isAbsolute()) return this;
  if (directory_ == nullptr) return new File;
  return inDirectory(directory_->makeAbsolute().get(), getName());
}

SmartPtr<File const> File::makeRelative(SmartPtr<Directory const> const& reference) const {
  SmartPtr<Directory const> const directory = directory_->makeRelative(reference);
  if (directory == nullptr) return nullptr;
  return inDirectory(directory.get(), getName());
}

FileSystemItem::ComparisonResult File::equals(SmartPtr<File const> const& other) const {
  if (other == nullptr) return Incomparable;
  ComparisonResult const directories = directory_->equals(other->directory_);
  if (directories != Equal) return directories;
  bool const equal = equalIgnoringCase(baseName_, other->baseName_) && equalIgnoringCase(extension_, other->extension_);
  return equal ? Equal : Different;
}

}  // namespace KV_1_1
