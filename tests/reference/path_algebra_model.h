// SPDX-License-Identifier: MIT
//
// The operations on the paths of path_model.h, in the same manner.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "tests/reference/path_model.h"

namespace KV_1_1 {
namespace reference {

inline wstring lowered(wstring text) {
  for (wchar& unit : text) {
    if (unit >= 'A' && unit <= 'Z') unit = static_cast<wchar>(unit + ('a' - 'A'));
  }
  return text;
}

inline DirectoryModel withLevels(DirectoryModel path, std::vector<wstring> const& levels) {
  path.levels.insert(path.levels.end(), levels.begin(), levels.end());
  return path;
}

inline std::optional<DirectoryModel> appendLevel(DirectoryModel const& path, wstring const& level, PathWorld& world) {
  if (isValidItemName(level)) return withLevels(path, {level});
  world.report(KVW("The path or file name '"), level.c_str(), KVW("' contains invalid characters."));
  return std::nullopt;
}

inline std::optional<DirectoryModel> appendPath(DirectoryModel const& path, DirectoryModel const& more,
                                                PathWorld& world) {
  if (more.absolute) {
    world.report(KVW("The path to be appended must be relative."), wstring(), wstring());
    return std::nullopt;
  }
  DirectoryModel result = withLevels(path, more.levels);
  if (!normalize(result, world)) return std::nullopt;
  return result;
}

inline DirectoryModel combine(DirectoryModel const& path, DirectoryModel const& more, PathWorld& world) {
  DirectoryModel result = withLevels(path, more.levels);
  normalize(result, world);
  return result;
}
inline std::optional<FileModel> combine(DirectoryModel const& path, FileModel const& file, PathWorld& world) {
  return fileInDirectory(combine(path, file.directory, world), nameOf(file));
}

inline wchar driveLetter(DirectoryModel const& path) {
  return path.root && path.root->find(KVW(':')) == 1 ? (*path.root)[0] : wchar(0);
}

inline std::optional<DirectoryModel> makeAbsolute(DirectoryModel const& path, PathWorld& world) {
  if (path.absolute) return path;
  wchar const letter = driveLetter(path);
  auto const& current = letter != 0 ? world.driveDirectories[letter - 'A'] : world.currentDirectory;
  if (!current) {
    world.report(KVW("Failed to get the current working directory."), wstring(), wstring());
    return std::nullopt;
  }
  std::optional<DirectoryModel> const start = directoryFromText(*current, world);
  if (!start) {
    world.report(KVW("Current working directory is invalid."), wstring(), wstring());
    return std::nullopt;
  }
  DirectoryModel result = withLevels(*start, path.levels);
  if (!normalize(result, world)) return std::nullopt;
  return result;
}

inline std::optional<DirectoryModel> makeRelative(DirectoryModel const& path, DirectoryModel const& reference,
                                                  PathWorld& world) {
  std::optional<DirectoryModel> const to = makeAbsolute(path, world);
  std::optional<DirectoryModel> const from = makeAbsolute(reference, world);
  if (!to || !from) {
    world.report(KVW("Failed to get absolute paths of this and the reference directory."), wstring(), wstring());
    return std::nullopt;
  }
  if (driveLetter(*to) != driveLetter(*from)) return to;
  std::size_t common = 0;
  while (common < to->levels.size() && common < from->levels.size() &&
         lowered(to->levels[common]) == lowered(from->levels[common])) {
    ++common;
  }
  DirectoryModel result;
  for (std::size_t i = common; i < from->levels.size(); ++i) result.levels.push_back(KVW(".."));
  for (std::size_t i = common; i < to->levels.size(); ++i) result.levels.push_back(to->levels[i]);
  return result;
}

// Whether the text of the directory occurs anywhere in that of the item.
inline bool contains(DirectoryModel const& path, wstring const& itemFullName) {
  return itemFullName.find(fullName(path)) != wstring::npos;
}

// 0 incomparable, 1 equal, 2 different
inline int equals(DirectoryModel const& one, DirectoryModel const& other, PathWorld& world) {
  if (one.absolute != other.absolute) {
    std::optional<DirectoryModel> const absolute = makeAbsolute(one.absolute ? other : one, world);
    if (!absolute) return 0;
    return one.absolute ? equals(one, *absolute, world) : equals(*absolute, other, world);
  }
  if (one.root.has_value() != other.root.has_value()) return 2;
  if (one.root && lowered(*one.root) != lowered(*other.root)) return 2;
  if (one.levels.size() != other.levels.size()) return 2;
  for (std::size_t i = 0; i < one.levels.size(); ++i) {
    if (lowered(one.levels[i]) != lowered(other.levels[i])) return 2;
  }
  return 1;
}
inline int equals(FileModel const& one, FileModel const& other, PathWorld& world) {
  int const directories = equals(one.directory, other.directory, world);
  if (directories != 1) return directories;
  return lowered(one.base) == lowered(other.base) && lowered(one.extension) == lowered(other.extension) ? 1 : 2;
}

}  // namespace reference
}  // namespace KV_1_1
