// SPDX-License-Identifier: MIT
//
// Copying and removing files and trees, on a file system in memory.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "benchmarks/scratch_folder.h"
#include "benchmarks/support.h"
#include "disk_calls.h"

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

ScratchFolder emptyFolder() {
  return ScratchFolder();
}

ScratchFolder filledFolder() {
  ScratchFolder folder;
  writeTree(folder.path("tree"));
  return folder;
}

void addTreeCopy() {
  Row("disk: copy a tree of 2000 files")
      .addFresh("KVBase", 1, emptyFolder,
                [](ScratchFolder const& target) {
                  return Directory::fromUTF8(sourceTree())
                      ->copyContents(Directory::fromUTF8(target.path()), true, false, nullptr);
                })
      .addFresh("std", 1, emptyFolder,
                [](ScratchFolder const& target) {
                  fs::copy(sourceTree(), target.path("tree"), fs::copy_options::recursive);
                  return true;
                })
      .addFresh(PEER("QFile", 1, emptyFolder,
                     [](ScratchFolder const& target) {
                       return copiedByQt(QString::fromStdString(sourceTree()), QString::fromStdString(target.path()));
                     }))
      .addFresh(PEER("cp", 1, emptyFolder,
                     [](ScratchFolder const& target) {
                       return runs({"cp", "-r", sourceTree() + "/.", target.path()});
                     }))
      .addFresh("floor", 1, emptyFolder, [](ScratchFolder const& target) {
        return CopyCalls::copyTree(fs::path(sourceTree() + '/').native(), fs::path(target.path("")).native());
      });
}

void addLargeCopy() {
  Row("disk: copy a file of 200 MB")
      .addFresh("KVBase", 1, emptyFolder,
                [](ScratchFolder const& target) {
                  SmartPtr<File> const source = File::fromString(UTF8Interface(largeFile().c_str()));
                  return source->copy(Directory::fromUTF8(target.path()), false) != nullptr;
                })
      .addFresh("std", 1, emptyFolder,
                [](ScratchFolder const& target) { return fs::copy_file(largeFile(), target.path("large.dat")); })
      .addFresh(WINDOWS_PEER("its calls", 1, emptyFolder,
                             [](ScratchFolder const& target) {
                               fs::path const copy = target.path("large.dat");
                               return CopyFileW(fs::path(largeFile()).c_str(), copy.c_str(), TRUE) != 0;
                             }))
      .addFresh(PEER("QFile", 1, emptyFolder,
                     [](ScratchFolder const& target) {
                       return QFile::copy(QString::fromStdString(largeFile()),
                                          QString::fromStdString(target.path("large.dat")));
                     }))
      .addFresh(PEER("cp", 1, emptyFolder, [](ScratchFolder const& target) {
        return runs({"cp", largeFile(), target.path()});
      }));
}

void addTreeRemoval() {
  Row("disk: remove a tree of 2000 files")
      .addFresh("KVBase", 1, filledFolder,
                [](ScratchFolder const& folder) { return Directory::fromUTF8(folder.path("tree"))->remove(true); })
      .addFresh("std", 1, filledFolder,
                [](ScratchFolder const& folder) { return fs::remove_all(folder.path("tree")) > kFolders * kFilesEach; })
      .addFresh(PEER("QDir", 1, filledFolder,
                     [](ScratchFolder const& folder) {
                       return QDir(QString::fromStdString(folder.path("tree"))).removeRecursively();
                     }))
      .addFresh(PEER("rm", 1, filledFolder,
                     [](ScratchFolder const& folder) {
                       return runs({"rm", "-rf", folder.path("tree")});
                     }))
      .addFresh("floor", 1, filledFolder, [](ScratchFolder const& folder) {
        return RemovalCalls::removeTree(fs::path(folder.path("tree/")).native());
      });
}

}  // namespace

void addDiskChanges() {
  addTreeCopy();
  addLargeCopy();
  addTreeRemoval();
}

}  // namespace bench
}  // namespace KV_1_1
