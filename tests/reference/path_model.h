// SPDX-License-Identifier: MIT
//
// A simple model of paths: the fields of a Directory and a File as plain values, and each operation written step by
// step on plain texts. Nothing of the library is used, so that its path logic can be compared with this one.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kvbase/text_unit.h"
#include "tests/reference/path_names_model.h"

namespace KV_1_1 {
namespace reference {

struct DirectoryModel {
  bool absolute = false;
  std::optional<wstring> root;  // none: NIL
  std::vector<wstring> levels;
};

struct FileModel {
  DirectoryModel directory;
  wstring base;
  wstring extension;
};

// The current directories of a process, and the messages reported to it.
struct PathWorld {
  std::optional<wstring> currentDirectory;
  std::optional<wstring> driveDirectories[26];
  std::vector<wstring> messages;

  void report(wstring const& front, wstring const& quoted, wstring const& back) {
    messages.push_back(front + quoted + back);
  }
};

inline wstring replaced(wstring text, wchar from, wchar to) {
  for (wchar& unit : text) {
    if (unit == from) unit = to;
  }
  return text;
}
inline bool startsWith(wstring const& text, wstring const& prefix) {
  return text.size() >= prefix.size() && text.substr(0, prefix.size()) == prefix;
}

// --- Texts -----------------------------------------------------------------------------------------------------------

inline wstring fullName(DirectoryModel const& path) {
  wstring text = path.root.value_or(wstring());
  if (path.absolute) text += KVW('\\');
  for (wstring const& level : path.levels) text = text + level + KVW('\\');
  return text.empty() ? wstring(KVW(".\\")) : text;
}
inline wstring prefixed(bool absolute, wstring const& full) {
  if (!absolute) return full;
  if (startsWith(full, KVW("\\\\"))) return KVW("\\\\?\\UNC\\") + full.substr(2);
  return KVW("\\\\?\\") + full;
}
inline wstring fullNameUnicode(DirectoryModel const& path) {
  return prefixed(path.absolute, fullName(path));
}
inline wstring fullNameUnix(DirectoryModel const& path) {
  return replaced(fullName(path), KVW('\\'), KVW('/'));
}
inline wstring nameOf(DirectoryModel const& path) {
  return path.levels.empty() ? wstring(KVW(".")) : path.levels.back();
}
inline wstring nameOf(FileModel const& file) {
  return file.extension.empty() ? file.base : file.base + KVW('.') + file.extension;
}
inline wstring fullName(FileModel const& file) {
  return fullName(file.directory) + nameOf(file);
}
inline wstring fullNameUnicode(FileModel const& file) {
  return prefixed(file.directory.absolute, fullName(file));
}
inline wstring fullNameUnix(FileModel const& file) {
  return fullNameUnix(file.directory) + nameOf(file);
}

// --- Parsing ---------------------------------------------------------------------------------------------------------

inline bool splitLevels(wstring const& text, std::size_t position, std::vector<wstring>& levels, PathWorld& world) {
  while (position < text.size()) {
    std::size_t const separator = text.find(KVW('\\'), position);
    wstring level;
    if (separator == wstring::npos) {
      level = text.substr(position);
      position = text.size();
    } else {
      level = text.substr(position, separator - position);
      position = separator + 1;
    }
    if (level.empty()) continue;
    if (!isValidItemName(level)) {
      world.report(KVW("The path or file name '"), text, KVW("' contains invalid characters."));
      return false;
    }
    levels.push_back(level);
  }
  return true;
}

inline bool normalize(DirectoryModel& path, PathWorld& world) {
  wstring const before = fullName(path);
  std::vector<wstring> const old = path.levels;
  path.levels.clear();
  for (wstring const& level : old) {
    if (level == KVW(".")) continue;
    if (level != KVW("..")) {
      path.levels.push_back(level);
      continue;
    }
    if (path.levels.empty()) {
      world.report(KVW("Invalid path '"), before, KVW("': parent references go beyond root."));
      return false;
    }
    path.levels.pop_back();
  }
  return true;
}

inline std::optional<DirectoryModel> localFromText(wstring const& text, PathWorld& world) {
  DirectoryModel path;
  std::size_t position = 0;
  if (text.find(KVW(':')) == 1) {
    wchar letter = text[0];
    if (letter >= 'a' && letter <= 'z') letter = static_cast<wchar>(letter - ('a' - 'A'));
    if (letter < 'A' || letter > 'Z') {
      world.report(KVW("Invalid drive letter in path '"), text, KVW("'."));
      return std::nullopt;
    }
    position = 2;
    path.root = wstring(1, letter) + KVW(':');
  }
  if (position < text.size() && text[position] == KVW('\\')) {
    path.absolute = true;
    ++position;
  }
  if (!splitLevels(text, position, path.levels, world)) return std::nullopt;
  if (path.absolute && !normalize(path, world)) return std::nullopt;
  return path;
}

inline std::optional<DirectoryModel> shareFromText(wstring const& text, PathWorld& world) {
  DirectoryModel path;
  if (!splitLevels(text, 0, path.levels, world)) return std::nullopt;
  if (path.levels.size() < 2) {
    world.report(KVW("The network path '"), text, KVW("' is missing the server and/or share name."));
    return std::nullopt;
  }
  path.root = KVW("\\\\") + path.levels[0] + KVW("\\") + path.levels[1];
  path.levels.erase(path.levels.begin(), path.levels.begin() + 2);
  path.absolute = true;
  return path;
}

inline std::optional<DirectoryModel> directoryFromText(wstring const& counted, PathWorld& world) {
  wstring const text = replaced(wstring(counted.c_str()), KVW('/'), KVW('\\'));
  if (startsWith(text, KVW("\\\\?\\UNC\\"))) return shareFromText(text.substr(8) + KVW("\\\\"), world);
  if (startsWith(text, KVW("\\\\?\\"))) return localFromText(text.substr(4), world);
  if (startsWith(text, KVW("\\\\"))) return shareFromText(text.substr(2), world);
  return localFromText(text, world);
}

inline std::optional<FileModel> fileInDirectory(DirectoryModel const& directory, wstring const& name) {
  if (!isValidItemName(name) || name == KVW(".") || name == KVW("..")) return std::nullopt;
  FileModel file;
  file.directory = directory;
  std::size_t const dot = name.rfind(KVW('.'));
  file.base = name.substr(0, dot);
  if (dot != wstring::npos) file.extension = name.substr(dot + 1);
  return file;
}

inline std::optional<FileModel> fileFromText(wstring const& text, PathWorld& world) {
  if (text.empty()) return std::nullopt;
  wstring const searched = text.c_str();  // the search for a separator ends at a NUL
  std::size_t split = wstring::npos;
  for (std::size_t i = 0; i < searched.size(); ++i) {
    if (searched[i] == KVW('\\') || searched[i] == KVW('/') || searched[i] == KVW(':')) split = i;
  }
  if (split == wstring::npos) return fileInDirectory(DirectoryModel(), text);
  std::optional<DirectoryModel> const directory = directoryFromText(text.substr(0, split + 1), world);
  if (!directory) return std::nullopt;
  return fileInDirectory(*directory, text.substr(split + 1));
}

}  // namespace reference
}  // namespace KV_1_1
