// SPDX-License-Identifier: MIT
//
// Collecting the files of a tree and testing for a file, on a file system in memory.
#include <dirent.h>
#include <fcntl.h>
#include <fts.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDirIterator>
#include <QFileInfo>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/scratch_folder.h"
#include "benchmarks/support.h"

namespace KV_1_1 {
namespace bench {

namespace {

namespace fs = std::filesystem;

// 20 folders with 24 subfolders each, so 500 in all, and 40 files in each of the 500. Built on first use.
class Tree {
 public:
  static std::string const& root() {
    static Tree const tree;
    return tree.folder_.path();
  }

 private:
  Tree() {
    for (int i = 0; i < 20; ++i) {
      fs::path const upper = folder_.path() + "/scan" + std::to_string(i);
      addFolder(upper);
      for (int j = 0; j < 24; ++j) addFolder(upper / ("part" + std::to_string(j)));
    }
  }

  static void addFolder(fs::path const& folder) {
    fs::create_directory(folder);
    for (int i = 0; i < 40; ++i) std::ofstream(folder / ("points" + std::to_string(i) + ".dat"));
  }

  ScratchFolder folder_;
};

int collected(SmartPtr<Directory const> const& root) {
  return static_cast<int>(root->collectFiles(KVW("*"), true).size());
}

// What the two searches of each folder cost bare, one for its files and one for the folders in it: the calls of the
// system, and for each file the three blocks that a File takes.
struct BareFile {
  std::vector<char16_t> baseName, extension;
};

template <class Visit>
void visitEntries(std::string const& folder, Visit visit) {
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

void collectBare(std::string const& folder, std::vector<std::unique_ptr<BareFile>>& files) {
  visitEntries(folder, [&](dirent64 const& entry) {
    if (entry.d_type == DT_DIR) return;
    char const* const end = entry.d_name + strlen(entry.d_name);
    char const* const dot = std::find(entry.d_name, end, '.');
    files.emplace_back(new BareFile{{entry.d_name, dot}, {dot, end}});
  });
  visitEntries(folder, [&](dirent64 const& entry) {
    bool const isDots = strcmp(entry.d_name, ".") == 0 || strcmp(entry.d_name, "..") == 0;
    if (entry.d_type == DT_DIR && !isDots) collectBare(folder + '/' + entry.d_name, files);
  });
}

int collectedBare(std::string const& root) {
  std::vector<std::unique_ptr<BareFile>> files;
  collectBare(root, files);
  return static_cast<int>(files.size());
}

int collectedByFts(std::string const& root) {
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

int collectedByStd(std::string const& root) {
  std::vector<fs::path> files;
  for (fs::directory_entry const& entry : fs::recursive_directory_iterator(root)) {
    if (!entry.is_directory()) files.push_back(entry.path());
  }
  return static_cast<int>(files.size());
}

template <class Kept>
int collectedByQt(std::string const& root, Kept (QDirIterator::*kept)() const) {
  std::vector<Kept> files;
  QDirIterator walk(QString::fromStdString(root), QDir::Files | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
  while (walk.hasNext()) {
    walk.next();
    files.push_back((walk.*kept)());
  }
  return static_cast<int>(files.size());
}

void addCollecting() {
  Row("disk: collect 20000 files in 500 folders")
      .add("KVBase", [] { return collected(Directory::fromUTF8(Tree::root())); })
      .add("floor", [] { return collectedBare(Tree::root()); })
      .add("fts", [] { return collectedByFts(Tree::root()); })
      .add("std", [] { return collectedByStd(Tree::root()); })
      .add("QDirIterator", [] { return collectedByQt(Tree::root(), &QDirIterator::filePath); })
      .add("QDirIterator, QFileInfo", [] { return collectedByQt(Tree::root(), &QDirIterator::fileInfo); });
}

// The untimed first run builds each contestant's path.
void addExists() {
  static auto const path = [] { return Tree::root() + "/scan7/part7/points7.dat"; };
  Row("disk: exists")
      .add("KVBase",
           [] {
             static SmartPtr<File> const file = File::fromString(String(UTF8Interface(path().c_str())));
             return file->exists();
           })
      .add("std",
           [] {
             static fs::path const file = path();
             return fs::exists(file);
           })
      .add("QFileInfo",
           [] {
             static QString const file = QString::fromStdString(path());
             return QFileInfo::exists(file);
           })
      .add("floor", [] {
        static std::string const file = path();
        struct statx status;
        return statx(AT_FDCWD, file.c_str(), AT_SYMLINK_NOFOLLOW, STATX_TYPE | STATX_MODE, &status) == 0;
      });
}

}  // namespace

void addDisk() {
  addCollecting();
  addExists();
}

}  // namespace bench
}  // namespace KV_1_1
