// SPDX-License-Identifier: MIT
//
// Copying and removing files and trees, on a file system in memory.
#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "benchmarks/scratch_folder.h"
#include "benchmarks/support.h"

namespace KV_1_1 {
namespace bench {

namespace {

namespace fs = std::filesystem;

constexpr int kFolders = 40;
constexpr int kFilesEach = 50;
constexpr std::size_t kLargeSize = std::size_t{200} << 20;

void write(fs::path const& path, std::size_t size) {
  std::ofstream file(path, std::ios::binary);
  std::string const block(std::min<std::size_t>(size, 1 << 20), 'p');
  for (std::size_t done = 0; done < size; done += block.size()) {
    file.write(block.data(), static_cast<std::streamsize>(std::min(block.size(), size - done)));
  }
  require(file.good(), "there is room for the files");
}

// 2000 files of 1 to 8 KB.
void writeTree(std::string const& root) {
  for (int i = 0; i < kFolders; ++i) {
    fs::path const folder = fs::path(root) / ("scan" + std::to_string(i));
    fs::create_directories(folder);
    for (int j = 0; j < kFilesEach; ++j) {
      write(folder / ("points" + std::to_string(j) + ".dat"), 1024 * static_cast<std::size_t>(1 + j % 8));
    }
  }
}

std::string const& sourceTree() {
  static ScratchFolder const folder = [] {
    ScratchFolder made;
    writeTree(made.path());
    return made;
  }();
  return folder.path();
}

std::string const& largeFile() {
  static ScratchFolder const folder = [] {
    ScratchFolder made;
    write(made.path("large.dat"), kLargeSize);
    return made;
  }();
  static std::string const path = folder.path("large.dat");
  return path;
}

bool runs(std::vector<std::string> words) {
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  pid_t child;
  int status = -1;
  if (posix_spawnp(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0) return false;
  return waitpid(child, &status, 0) == child && status == 0;
}

bool copiedByQt(QString const& source, QString const& target) {
  QDirIterator walk(source, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
  while (walk.hasNext()) {
    walk.next();
    QString const there = target + walk.filePath().mid(source.size());
    if (walk.fileInfo().isDir() ? !QDir().mkpath(there) : !QFile::copy(walk.filePath(), there)) return false;
  }
  return true;
}

ScratchFolder emptyFolder() {
  return ScratchFolder();
}

ScratchFolder filledFolder() {
  ScratchFolder folder;
  writeTree(folder.path("tree"));
  return folder;
}

void addTreeCopy() {
  Row("disk: copy a tree of 2000 files (elapsed)")
      .addFresh("KVBase", 1, emptyFolder,
                [](ScratchFolder const& target) {
                  return Directory::fromUTF8(sourceTree())
                      ->copyContents(Directory::fromUTF8(target.path()), true, false, nullptr);
                })
      .addFresh("std", 1, emptyFolder,
                [](ScratchFolder const& target) {
                  fs::copy(sourceTree(), target.path(), fs::copy_options::recursive);
                  return true;
                })
      .addFresh("QFile", 1, emptyFolder,
                [](ScratchFolder const& target) {
                  return copiedByQt(QString::fromStdString(sourceTree()), QString::fromStdString(target.path()));
                })
      .addFresh("cp", 1, emptyFolder, [](ScratchFolder const& target) {
        return runs({"cp", "-r", sourceTree() + "/.", target.path()});
      });
}

void addLargeCopy() {
  Row("disk: copy a file of 200 MB (elapsed)")
      .addFresh("KVBase", 1, emptyFolder,
                [](ScratchFolder const& target) {
                  SmartPtr<File> const source = File::fromString(UTF8Interface(largeFile().c_str()));
                  return source->copy(Directory::fromUTF8(target.path()), false) != nullptr;
                })
      .addFresh("std", 1, emptyFolder,
                [](ScratchFolder const& target) { return fs::copy_file(largeFile(), target.path("large.dat")); })
      .addFresh("QFile", 1, emptyFolder,
                [](ScratchFolder const& target) {
                  return QFile::copy(QString::fromStdString(largeFile()),
                                     QString::fromStdString(target.path("large.dat")));
                })
      .addFresh("cp", 1, emptyFolder, [](ScratchFolder const& target) {
        return runs({"cp", largeFile(), target.path()});
      });
}

// The calls of a removal and no more: what a folder is, whether it may change, its folders, its files; for each file whether
// it may change, twice, since the call that removes it asks by itself.
struct RemovalCalls {
  static bool removeTree(std::string const& folder) {
    bool removed = isThere(folder) && isThere(folder);
    for (std::string const& name : namesOf(folder, DT_DIR)) removed = removeTree(folder + name + '/') && removed;
    for (std::string const& name : namesOf(folder, DT_REG)) removed = removeFile(folder + name) && removed;
    return rmdir(folder.c_str()) == 0 && removed;
  }

 private:
  static bool isThere(std::string const& path) {
    struct statx status;
    return statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_TYPE | STATX_MODE, &status) == 0;
  }
  static bool removeFile(std::string const& path) {
    struct stat status;
    return isThere(path) && fstatat(AT_FDCWD, path.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           unlink(path.c_str()) == 0;
  }
  static std::vector<std::string> namesOf(std::string const& folder, unsigned char type) {
    std::vector<std::string> names;
    DIR* const entries = opendir(folder.c_str());
    require(entries != nullptr, "the folder can be read");
    while (dirent const* const entry = readdir(entries)) {
      bool const isDots = strcmp(entry->d_name, ".") == 0 || strcmp(entry->d_name, "..") == 0;
      if (entry->d_type == type && !isDots) names.push_back(entry->d_name);
    }
    closedir(entries);
    return names;
  }
};

void addTreeRemoval() {
  Row("disk: remove a tree of 2000 files (elapsed)")
      .addFresh("KVBase", 1, filledFolder,
                [](ScratchFolder const& folder) { return Directory::fromUTF8(folder.path("tree"))->remove(true); })
      .addFresh("std", 1, filledFolder,
                [](ScratchFolder const& folder) { return fs::remove_all(folder.path("tree")) > kFolders * kFilesEach; })
      .addFresh("QDir", 1, filledFolder,
                [](ScratchFolder const& folder) {
                  return QDir(QString::fromStdString(folder.path("tree"))).removeRecursively();
                })
      .addFresh("rm", 1, filledFolder,
                [](ScratchFolder const& folder) {
                  return runs({"rm", "-rf", folder.path("tree")});
                })
      .addFresh("floor", 1, filledFolder,
                [](ScratchFolder const& folder) { return RemovalCalls::removeTree(folder.path("tree/")); });
}

}  // namespace

void addDiskChanges() {
  addTreeCopy();
  addLargeCopy();
  addTreeRemoval();
}

}  // namespace bench
}  // namespace KV_1_1
