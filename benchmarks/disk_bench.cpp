// SPDX-License-Identifier: MIT
//
// Collecting the files of a tree and testing for a file, on a file system in memory.
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/scratch_folder.h"
#include "benchmarks/support.h"
#include "disk_calls.h"

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

int collectedByStd(std::string const& root) {
  std::vector<fs::path> files;
  for (fs::directory_entry const& entry : fs::recursive_directory_iterator(root)) {
    if (!entry.is_directory()) files.push_back(entry.path());
  }
  return static_cast<int>(files.size());
}

void addCollecting() {
  Row("disk: collect 20000 files in 500 folders")
      .add("KVBase", [] { return collected(Directory::fromUTF8(Tree::root())); })
      .add("floor", [] { return collectedBare(Tree::root()); })
      .add(PEER("fts", [] { return collectedByFts(Tree::root()); }))
      .add("std", [] { return collectedByStd(Tree::root()); })
      .add(PEER("QDirIterator", [] { return collectedByQt(Tree::root(), &QDirIterator::filePath); }))
      .add(PEER("QDirIterator, QFileInfo", [] { return collectedByQt(Tree::root(), &QDirIterator::fileInfo); }));
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
      .add(PEER("QFileInfo",
                [] {
                  static QString const file = QString::fromStdString(path());
                  return QFileInfo::exists(file);
                }))
      .add("floor", [] {
        static fs::path const file = path();
        static u16string const folder = plain(file.parent_path().string() + "/");
        static u16string const baseName = plain(file.stem().string());
        static u16string const extension = plain(file.extension().string());
        return existsBare({&folder, &baseName, &extension});
      });
}

}  // namespace

void addDisk() {
  addCollecting();
  addExists();
}

}  // namespace bench
}  // namespace KV_1_1
