// SPDX-License-Identifier: MIT
//
// The calls of the system that the rows of the disk have to make.
#pragma once

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/support.h"

namespace KV_1_1 {
namespace bench {

// Visits the entries of a folder, whose path ends in a separator, that are folders or are files.
template <class Visit>
void visitEntries(std::wstring const& folder, bool isFolder, Visit visit) {
  WIN32_FIND_DATAW entry;
  HANDLE const search = FindFirstFileW((folder + L'*').c_str(), &entry);
  require(search != INVALID_HANDLE_VALUE, "the folder can be read");
  do {
    std::wstring const name = entry.cFileName;
    if (((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) == isFolder && name != L"." && name != L"..") {
      visit(name);
    }
  } while (FindNextFileW(search, &entry) != 0);
  FindClose(search);
}

// What the two searches of each folder cost bare, one for its files and one for the folders in it: the calls of the
// system, and for each file the three blocks that a File takes.
struct FoundFile {
  std::vector<wchar> baseName, extension;
};

inline void collectBare(std::wstring const& folder, std::vector<std::unique_ptr<FoundFile>>& files) {
  visitEntries(folder, false, [&](std::wstring const& name) {
    auto const dot = std::find(name.begin(), name.end(), L'.');
    files.emplace_back(new FoundFile{{name.begin(), dot}, {dot, name.end()}});
  });
  visitEntries(folder, true, [&](std::wstring const& name) { collectBare(folder + name + L'\\', files); });
}

inline int collectedBare(std::string const& root) {
  std::vector<std::unique_ptr<FoundFile>> files;
  collectBare(std::wstring(root.begin(), root.end()) + L'\\', files);
  return static_cast<int>(files.size());
}

inline bool existsBare(wchar const* path) {
  return GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
}

// The same of a path in parts: its text is put together, as each call of a File does.
inline bool existsBare(std::initializer_list<u16string const*> parts) {
  wchar path[256];
  wchar* end = path;
  for (u16string const* const part : parts) {
    if (part->size() >= static_cast<std::size_t>(std::end(path) - end)) return false;
    end = std::copy(part->begin(), part->end(), end);
  }
  *end = 0;
  return existsBare(path);
}

// The calls of a copy and no more: what both folders are, its folders, its files; for each folder whether it is there already
// and whether the one above it is. The paths of folders end in a separator.
struct CopyCalls {
  static bool copyTree(std::wstring const& source, std::wstring const& target) {
    bool copied = existsBare(source.c_str()) && existsBare(target.c_str());
    visitEntries(source, true, [&](std::wstring const& name) {
      std::wstring const made = target + name + L'\\';
      copied = !existsBare(made.c_str()) && existsBare(target.c_str()) &&
               CreateDirectoryW(made.c_str(), nullptr) != 0 && copied;
      copied = copyTree(source + name + L'\\', made) && copied;
    });
    visitEntries(source, false, [&](std::wstring const& name) {
      copied = CopyFileW((source + name).c_str(), (target + name).c_str(), TRUE) != 0 && copied;
    });
    return copied;
  }
};

// The calls of a removal and no more: what a folder is, twice, its folders, its files; for each file whether it is there.
struct RemovalCalls {
  static bool removeTree(std::wstring const& folder) {
    bool removed = existsBare(folder.c_str()) && existsBare(folder.c_str());
    visitEntries(folder, true,
                 [&](std::wstring const& name) { removed = removeTree(folder + name + L'\\') && removed; });
    visitEntries(folder, false, [&](std::wstring const& name) { removed = removeFile(folder + name) && removed; });
    return RemoveDirectoryW(folder.c_str()) != 0 && removed;
  }

 private:
  static bool removeFile(std::wstring const& path) {
    return existsBare(path.c_str()) && DeleteFileW(path.c_str()) != 0;
  }
};

}  // namespace bench
}  // namespace KV_1_1
