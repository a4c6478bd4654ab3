// SPDX-License-Identifier: MIT
//
// The calls of the system that the rows of the disk have to make, and contestants that only Linux has.
#pragma once

#include <dirent.h>
#include <fcntl.h>
#include <fts.h>
#include <spawn.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <algorithm>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/support.h"

namespace KV_1_1 {
namespace bench {

// What the two searches of each folder cost bare, one for its files and one for the folders in it: the calls of the
// system, and for each file the three blocks that a File takes.
struct FoundFile {
  std::vector<wchar> baseName, extension;
};

template <class Visit>
inline void visitEntries(std::string const& folder, Visit visit) {
  int const directory = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  alignas(dirent64) char buffer[32768];
  for (ssize_t size; (size = getdents64(directory, buffer, sizeof buffer)) > 0;) {
    for (char const* at = buffer; at < buffer + size;) {
      dirent64 const& entry = *reinterpret_cast<dirent64 const*>(at);
      visit(entry);
      at += entry.d_reclen;
    }
  }
  close(directory);
}

inline void collectBare(std::string const& folder, std::vector<std::unique_ptr<FoundFile>>& files) {
  visitEntries(folder, [&](dirent64 const& entry) {
    if (entry.d_type == DT_DIR) return;
    char const* const end = entry.d_name + strlen(entry.d_name);
    char const* const dot = std::find(entry.d_name, end, '.');
    files.emplace_back(new FoundFile{{entry.d_name, dot}, {dot, end}});
  });
  visitEntries(folder, [&](dirent64 const& entry) {
    bool const isDots = strcmp(entry.d_name, ".") == 0 || strcmp(entry.d_name, "..") == 0;
    if (entry.d_type == DT_DIR && !isDots) collectBare(folder + '/' + entry.d_name, files);
  });
}

inline int collectedBare(std::string const& root) {
  std::vector<std::unique_ptr<FoundFile>> files;
  collectBare(root, files);
  return static_cast<int>(files.size());
}

inline bool existsBare(char const* path) {
  struct statx status;
  return statx(AT_FDCWD, path, AT_SYMLINK_NOFOLLOW, STATX_TYPE | STATX_MODE, &status) == 0;
}

// The same of a path in parts: its text is put together and mapped to that of the system, as each call of a File does.
inline bool existsBare(std::initializer_list<u16string const*> parts) {
  char path[256];
  char* end = path;
  for (u16string const* const part : parts) {
    if (part->size() >= static_cast<std::size_t>(path + sizeof path - end)) return false;
    for (wchar const unit : *part) {
      if (unit < ' ' || unit > '~') return false;
      *end++ = unit == '\\' ? '/' : static_cast<char>(unit);
    }
  }
  *end = '\0';
  return existsBare(path);
}

inline std::vector<std::string> namesOf(std::string const& folder, unsigned char type) {
  std::vector<std::string> names;
  visitEntries(folder, [&](dirent64 const& entry) {
    bool const isDots = strcmp(entry.d_name, ".") == 0 || strcmp(entry.d_name, "..") == 0;
    if (entry.d_type == type && !isDots) names.push_back(entry.d_name);
  });
  return names;
}

// The calls of a copy and no more: what both folders are, the folders in the source, its files; for each folder whether it is
// there already and whether the one above it is; for each file what it is, once by its name and once when it is open, a new
// file and the rights it was given, the contents and the time. The paths of folders end in a separator.
struct CopyCalls {
  static bool copyTree(std::string const& source, std::string const& target) {
    bool copied = existsBare(source.c_str()) && existsBare(target.c_str());
    for (std::string const& name : namesOf(source, DT_DIR)) {
      std::string const made = target + name + '/';
      copied = !existsBare(made.c_str()) && existsBare(target.c_str()) && mkdir(made.c_str(), 0777) == 0 && copied;
      copied = copyTree(source + name + '/', made) && copied;
    }
    for (std::string const& name : namesOf(source, DT_REG)) copied = copyFile(source + name, target + name) && copied;
    return copied;
  }

 private:
  static bool copyFile(std::string const& source, std::string const& target) {
    struct stat status;
    if (lstat(source.c_str(), &status) != 0) return false;
    int const from = open(source.c_str(), O_RDONLY | O_CLOEXEC);
    bool copied = fstat(from, &status) == 0;
    int const to = open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, status.st_mode & 0777);
    struct statx made;
    copied =
        statx(to, "", AT_EMPTY_PATH, STATX_TYPE | STATX_MODE, &made) == 0 && made.stx_mode == status.st_mode && copied;
    auto const size = static_cast<std::size_t>(status.st_size);
    copied = copy_file_range(from, nullptr, to, nullptr, size, 0) == status.st_size && copied;
    timespec const times[] = {{0, UTIME_OMIT}, status.st_mtim};
    copied = futimens(to, times) == 0 && copied;
    return close(to) == 0 && close(from) == 0 && copied;
  }
};

// The calls of a removal and no more: what a folder is, whether it may change, its folders, its files; for each file whether
// it may change, twice, since the call that removes it asks by itself.
struct RemovalCalls {
  static bool removeTree(std::string const& folder) {
    bool removed = existsBare(folder.c_str()) && existsBare(folder.c_str());
    for (std::string const& name : namesOf(folder, DT_DIR)) removed = removeTree(folder + name + '/') && removed;
    for (std::string const& name : namesOf(folder, DT_REG)) removed = removeFile(folder + name) && removed;
    return rmdir(folder.c_str()) == 0 && removed;
  }

 private:
  static bool removeFile(std::string const& path) {
    struct stat status;
    return existsBare(path.c_str()) && lstat(path.c_str(), &status) == 0 && unlink(path.c_str()) == 0;
  }
};

// --- Contestants that only Linux has --------------------------------------------------------------------------------------

inline int collectedByFts(std::string const& root) {
  std::vector<std::string> files;
  char* const roots[] = {const_cast<char*>(root.c_str()), nullptr};
  FTS* const walk = fts_open(roots, FTS_PHYSICAL | FTS_NOSTAT, nullptr);
  while (FTSENT const* entry = fts_read(walk)) {
    if (entry->fts_info == FTS_F || entry->fts_info == FTS_NSOK)
      files.emplace_back(entry->fts_path, entry->fts_pathlen);
  }
  fts_close(walk);
  return static_cast<int>(files.size());
}

template <class Kept>
inline int collectedByQt(std::string const& root, Kept (QDirIterator::*kept)() const) {
  std::vector<Kept> files;
  QDirIterator walk(QString::fromStdString(root), QDir::Files | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
  while (walk.hasNext()) {
    walk.next();
    files.push_back((walk.*kept)());
  }
  return static_cast<int>(files.size());
}

inline bool runs(std::vector<std::string> words) {
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  pid_t child;
  int status = -1;
  if (posix_spawnp(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0) return false;
  return waitpid(child, &status, 0) == child && status == 0;
}

inline bool copiedByQt(QString const& source, QString const& target) {
  QDirIterator walk(source, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
  while (walk.hasNext()) {
    walk.next();
    QString const there = target + walk.filePath().mid(source.size());
    if (walk.fileInfo().isDir() ? !QDir().mkpath(there) : !QFile::copy(walk.filePath(), there)) return false;
  }
  return true;
}

}  // namespace bench
}  // namespace KV_1_1
