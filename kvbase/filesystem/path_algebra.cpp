// SPDX-License-Identifier: MIT
//
// Paths made from others, and comparison.
#include <algorithm>

#include "kvbase/filesystem/directory.h"
#include "kvbase/filesystem/file.h"
#include "kvbase/filesystem/internal/current_directory.h"
#include "kvbase/filesystem/internal/path_names.h"
#include "kvbase/filesystem/internal/report.h"
#include "kvbase/kernels/text_kernels.h"
#include "kvbase/strings/internal/text_builder.h"

namespace KV_1_1 {

namespace {

// For paths, where NIL is as good as empty and no text holds a NUL.
bool equalPaths(TextView a, TextView b) {
  int const units = lengthOf(a);
  return a.size() == b.size() && strings::kernels().mismatchIgnoringCase(a.data(), b.data(), units) == units;
}

// The units of the levels that both paths begin with.
std::size_t commonLevels(TextView a, TextView b) {
  int const units = lengthOf(a.size() < b.size() ? a : b);
  int const same = strings::kernels().mismatchIgnoringCase(a.data(), b.data(), units);
  return a.substr(0, static_cast<std::size_t>(same)).rfind(KVW('\\')) + 1;  // not found is -1
}

}  // namespace

String Directory::getRoot() const {
  return rootUnits_ > 0 ? String(static_cast<wchar const*>(path_), rootUnits_) : String::NIL;
}

SmartPtr<Directory const> Directory::getParent() const {
  TextView const all = levels();
  if (all.empty()) return nullptr;
  return new Directory(absolute_, rootUnits_, path_.substr(0, path_.length() - lengthOf(lastLevelOf(all)) - 1));
}

SmartPtr<Directory const> Directory::appendLevel(String const& level) const {
  if (!isValidItemName(level)) {
    reportInvalidName(level);
    return nullptr;
  }
  return new Directory(absolute_, rootUnits_, withLevel(viewOf(path_), viewOf(level)));
}

SmartPtr<Directory> Directory::withLevelsOf(Directory const& path) const {
  TextView const more = path.levels();
  TextBuilder sum(path_.length() + static_cast<long long>(more.size()));
  return new Directory(absolute_, rootUnits_, sum.append(viewOf(path_)).append(more).finish());
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

  TextView const levels = path->levels();
  TextView const fromLevels = from->levels();
  std::size_t const common = commonLevels(levels, fromLevels);
  TextView const down = levels.substr(common);
  TextView const up = fromLevels.substr(common);
  auto const steps = std::count(up.begin(), up.end(), KVW('\\'));
  TextBuilder relative(3ll * steps + static_cast<long long>(down.size()));
  for (auto i = steps; i > 0; --i) relative.append(KVW("..\\"));
  return new Directory(false, 0, relative.append(down).finish());
}

bool Directory::contains(FileSystemItem const& item) const {
  return item.getFullName().find(static_cast<wchar const*>(getFullName())) >= 0;
}

FileSystemItem::ComparisonResult Directory::equals(SmartPtr<Directory const> const& other) const {
  if (other == nullptr) return Incomparable;
  if (absolute_ != other->absolute_) {
    return absolute_ ? equals(other->makeAbsolute()) : other->equals(makeAbsolute());
  }
  // The same text has the same root.
  return equalPaths(viewOf(path_), viewOf(other->path_)) ? Equal : Different;
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
  bool const equal =
      baseName_.compareIgnoreCase(other->baseName_) == 0 && extension_.compareIgnoreCase(other->extension_) == 0;
  return equal ? Equal : Different;
}

}  // namespace KV_1_1
