// SPDX-License-Identifier: MIT
//
// Directory::copyContents on the real disk, compared with its contract and with a simple model.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "tests/filesystem/disk_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

namespace fs = std::filesystem;

class DirectoryCopyOnDisk : public OnDisk {
 protected:
  DirectoryCopyOnDisk() : OnDisk(quickPlace()) {
    folder.makeFolder("s");
    folder.makeFolder("t");
  }
  bool copy(bool recursive, bool overwrite) {
    progress.count = 0;
    return directory(KVW("s"))->copyContents(directory(KVW("t")), recursive, overwrite, &progress);
  }
  Tree source() const { return treeOf(folder.path("s")); }
  Tree target() const { return treeOf(folder.path("t")); }

  CountedFiles progress;
};

TEST_F(DirectoryCopyOnDisk, ATree) {
  std::string everyByte;
  for (int i = 0; i < 200000; ++i) everyByte += static_cast<char>(i * 7 % 256);
  folder.write("s/a.bin", everyByte);
  folder.write("s/empty");
  folder.write("s/.hidden", "h");
  folder.write(fs::path("s") / u"\u00e4\u65e5\U0001F600.txt", "names");
  folder.write("s/p/q/deep.txt", "deep");
  folder.makeFolder("s/p/nothing");
  Tree const before = source();
  EXPECT_TRUE(copy(true, false));
  EXPECT_EQ(target(), before);
  EXPECT_EQ(source(), before);
  EXPECT_EQ(progress.count, 5);

  EXPECT_TRUE(copy(true, true));
  EXPECT_EQ(target(), before);
  EXPECT_EQ(progress.count, 5);

  EXPECT_FALSE(copy(true, false)) << "the first file that is there ends it";
  EXPECT_EQ(target(), before);
  EXPECT_EQ(progress.count, 0);
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(DirectoryCopyOnDisk, AFileWhereAFolderIsToBe) {
  folder.write("s/p/x", "x");
  folder.write("s/z", "z");
  folder.write("t/p", "a file");
  for (bool const overwrite : {false, true}) {
    SCOPED_TRACE(overwrite);
    EXPECT_FALSE(copy(true, overwrite)) << "its contents have no place";
    EXPECT_EQ(progress.count, 0);
    EXPECT_EQ(target(), (Tree{{"p", "a file"}}));
  }
  EXPECT_TRUE(copy(false, false)) << "what has the name of a folder is not asked";
  EXPECT_EQ(target(), (Tree{{"p", "a file"}, {"z", "z"}}));
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(DirectoryCopyOnDisk, AFolderWhereAFileIsToBe) {
  folder.write("s/p", "a file");
  folder.makeFolder("t/p");
  EXPECT_FALSE(copy(true, true));
  EXPECT_FALSE(copy(true, false));
  EXPECT_EQ(target(), (Tree{{"p/", ""}}));
}

TEST_F(DirectoryCopyOnDisk, OntoItselfFailsAndHarmsNothing) {
  folder.write("s/a", "abc");
  folder.write("s/p/b", "def");
  Tree const before = source();
  EXPECT_FALSE(directory(KVW("s"))->copyContents(directory(KVW("s")), true, true, &progress));
  EXPECT_FALSE(directory(KVW("s"))->copyContents(directory(KVW("s")), true, false, &progress));
  EXPECT_EQ(progress.count, 0);
  EXPECT_EQ(source(), before);
}

// Fills a folder at random; gives the number of files made.
int fill(fs::path const& where, std::mt19937& random, int depth) {
  int files = 0;
  for (unsigned i = random() % 5; i > 0; --i) {
    std::string const name = "f" + std::to_string(random() % 8);
    bool const empty = random() % 3 == 0;
    std::string bytes(empty ? 0 : random() % 6000, 0);
    for (char& byte : bytes) byte = static_cast<char>(random());
    std::ofstream(where / name, std::ios::binary) << bytes;
  }
  for (auto const& item : fs::directory_iterator(where)) files += item.is_regular_file();
  for (unsigned i = depth > 0 ? random() % 4 : 0; i > 0; --i) {
    fs::path const folder = where / ("d" + std::to_string(i));
    fs::create_directory(folder);
    files += fill(folder, random, depth - 1);
  }
  return files;
}

// The model: item by item, byte by byte.
void copyPlainly(fs::path const& from, fs::path const& to) {
  for (auto const& item : fs::recursive_directory_iterator(from)) {
    fs::path const target = to / item.path().lexically_relative(from);
    if (item.is_directory()) {
      fs::create_directories(target);
    } else {
      fs::create_directories(target.parent_path());
      std::ofstream(target, std::ios::binary) << bytesOf(item.path());
    }
  }
}

TEST_F(DirectoryCopyOnDisk, RandomTreesAgainstAPlainModel) {
  std::mt19937 random(20240607);
  for (int round = 0; round < 10; ++round) {
    SCOPED_TRACE(round);
    for (char const* name : {"s", "t", "model"}) {
      fs::remove_all(folder.path(name));
      folder.makeFolder(name);
    }
    int const files = fill(folder.path("s"), random, 3);
    Tree const before = source();
    int const top = static_cast<int>(std::count_if(
        before.begin(), before.end(), [](auto& item) { return item.first.find('/') == std::string::npos; }));

    Tree shallow;
    for (auto const& item : before) {
      std::size_t const separator = item.first.find('/');
      if (separator == std::string::npos || separator + 1 == item.first.size()) shallow.insert(item);
    }
    EXPECT_TRUE(copy(false, false));
    EXPECT_EQ(target(), shallow);
    EXPECT_EQ(progress.count, top);

    copyPlainly(folder.path("s"), folder.path("model"));
    EXPECT_TRUE(copy(true, true));
    EXPECT_EQ(target(), treeOf(folder.path("model")));
    EXPECT_EQ(progress.count, files);

    EXPECT_EQ(copy(true, false), files == 0);
    EXPECT_EQ(target(), before);
    EXPECT_EQ(progress.count, 0);
    EXPECT_EQ(source(), before);
  }
  EXPECT_EQ(messages.take(), Texts());
}

// A target with contents of its own: copied files are those of the source, everything else stays as it was.
TEST_F(DirectoryCopyOnDisk, RandomTreesOverOneAnother) {
  std::mt19937 random(31337);
  for (int round = 0; round < 10; ++round) {
    SCOPED_TRACE(round);
    for (char const* name : {"s", "t"}) {
      fs::remove_all(folder.path(name));
      folder.makeFolder(name);
    }
    int const files = fill(folder.path("s"), random, 2);
    fill(folder.path("t"), random, 2);
    Tree const before = source(), own = target();
    bool const collides = std::any_of(before.begin(), before.end(), [&](auto const& item) {
      return item.first.back() != '/' && own.count(item.first) != 0;
    });

    EXPECT_EQ(copy(true, false), !collides);
    int copied = 0;
    for (auto const& item : target()) {
      if (own.count(item.first) != 0) {
        EXPECT_EQ(item.second, own.at(item.first)) << item.first;
      } else {
        ASSERT_EQ(before.count(item.first), 1u) << item.first;
        EXPECT_EQ(item.second, before.at(item.first)) << item.first;
        copied += item.first.back() != '/';
      }
    }
    EXPECT_EQ(progress.count, copied);

    Tree both = before;
    both.insert(own.begin(), own.end());
    EXPECT_TRUE(copy(true, true));
    EXPECT_EQ(target(), both);
    EXPECT_EQ(progress.count, files);
    EXPECT_EQ(source(), before);
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
