// SPDX-License-Identifier: MIT
//
// Disk operations at the sizes of real projects: many files, large files, long names and paths.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "kvbase/filesystem/file_system_iterator.h"
#include "tests/filesystem/disk_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

namespace fs = std::filesystem;

class DiskLoad : public OnDisk {
 protected:
  DiskLoad() : OnDisk(quickPlace()) {}

  // Without a stream, which costs more time than the file.
  void writeQuickly(std::string const& below, std::string const& bytes) const {
    std::FILE* const out = std::fopen(folder.path(below).string().c_str(), "wb");
    ASSERT_NE(out, nullptr) << below;
    std::size_t const written = std::fwrite(bytes.data(), 1, bytes.size(), out);
    ASSERT_EQ(std::fclose(out), 0);
    ASSERT_EQ(written, bytes.size());
  }

  String const all{KVW("*")};
};

TEST_F(DiskLoad, ATreeOfManyFiles) {
  int const groups = 10, subs = 9, filesEach = 12;
  int const folders = groups * (1 + subs), files = folders * filesEach;
  for (int group = 0; group < groups; ++group) {
    for (int sub = 0; sub < subs; ++sub) {
      std::string const below = "s\\g" + std::to_string(group) + "\\d" + std::to_string(sub);
      ASSERT_TRUE(directory(widen(below))->create());
    }
  }
  ASSERT_TRUE(directory(KVW("t"))->create());
  int number = 0;
  auto const fill = [&](std::string const& below) {
    for (int i = 0; i < filesEach; ++i, ++number) {
      writeQuickly(below + "/f" + std::to_string(i) + ".dat", std::string(number % 40, 'x') + std::to_string(number));
    }
  };
  for (int group = 0; group < groups; ++group) {
    std::string const below = "s/g" + std::to_string(group);
    fill(below);
    for (int sub = 0; sub < subs; ++sub) fill(below + "/d" + std::to_string(sub));
  }
  ASSERT_EQ(number, files);

  CountedFiles progress;
  EXPECT_TRUE(directory(KVW("s"))->copyContents(directory(KVW("t")), true, false, &progress));
  EXPECT_EQ(progress.count, files);
  {
    Tree const source = treeOf(folder.path("s"));
    EXPECT_EQ(static_cast<int>(source.size()), folders + files);
    EXPECT_TRUE(treeOf(folder.path("t")) == source);
  }
  EXPECT_EQ(static_cast<int>(directory(KVW("t"))->collectDirectories(all, true).size()), folders);
  EXPECT_EQ(static_cast<int>(directory(KVW("t"))->collectFiles(String(KVW("*.dat")), true).size()), files);
  EXPECT_TRUE(directory(KVW("t"))->remove(true));
  EXPECT_TRUE(directory(KVW("s"))->remove(true));
  EXPECT_TRUE(fs::is_empty(folder.path()));
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(DiskLoad, ADirectoryOfManyFiles) {
  // With names of this length, more than one call of the system gives.
  int const files = 600;
  std::string const front = "d/scan" + std::string(100, '-');
  folder.makeFolder("d");
  for (int i = 0; i < files; ++i) writeQuickly(front + std::to_string(i) + ".dat", "");
  SmartPtr<Directory const> const full = directory(KVW("d"));
  EXPECT_FALSE(full->isEmpty());
  std::set<std::string> names;
  SmartPtr<FileIterator> const iterator = full->findFiles(all);
  while (SmartPtr<File const> const item = iterator->getNext()) names.insert(shown(item->getName()));
  EXPECT_EQ(static_cast<int>(names.size()), files);
  EXPECT_EQ(static_cast<int>(full->collectContents(String(KVW("scan*.dat")), false).size()), files);
  EXPECT_TRUE(full->removeContents(false));
  EXPECT_TRUE(full->isEmpty());
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(DiskLoad, AFileBeyondFourGigabytes) {
  std::uintmax_t const size = (std::uintmax_t(5) << 30) + 7;
  for (char const* name : {"large", "other"}) {
    folder.write(name, "begin");
    fs::resize_file(folder.path(name), size);
  }
  folder.write("low half", std::string(7, 'x'));
  folder.write("longer", "x");
  fs::resize_file(folder.path("longer"), size + 1);
  SmartPtr<File const> const large = file(KVW("large"));
  ULARGE_INTEGER told;
  ASSERT_TRUE(large->getFileSize(told));
  EXPECT_EQ(told.QuadPart, size);
  EXPECT_TRUE(large->hasEqualSize(file(KVW("other"))));
  EXPECT_FALSE(large->hasEqualSize(file(KVW("longer"))));
  fs::resize_file(folder.path("low half"), size & 0xFFFFFFFF);
  EXPECT_FALSE(large->hasEqualSize(file(KVW("low half")))) << "both halves count";
  EXPECT_TRUE(large->move(file(KVW("moved"))));
  EXPECT_EQ(fs::file_size(folder.path("moved")), size);
  EXPECT_TRUE(file(KVW("moved"))->remove());
}

TEST_F(DiskLoad, NamesOfTheGreatestLength) {
  wstring const longest(255, KVW('n')), dotted = wstring(251, KVW('n')) + KVW(".dat");
  wstring accented(127, KVW('\u00e4'));  // two bytes each on Linux
  accented += KVW('n');
  for (wstring const& name : {longest, dotted, accented}) {
    useFile(file(name), file(KVW("beside")));
    EXPECT_TRUE(directory(name)->create());
    EXPECT_TRUE(directory(name)->exists());
    EXPECT_TRUE(directory(name)->remove(false));
  }
  EXPECT_EQ(messages.take(), Texts());
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST_F(DiskLoad, ANameThatIsTooLong) {
  wstring const name(256, KVW('n'));
  SmartPtr<File const> const one = file(KVW("one")), tooLong = file(name);
  EXPECT_TRUE(one->touch());
  EXPECT_FALSE(tooLong->exists());
  EXPECT_FALSE(tooLong->touch());
  EXPECT_FALSE(tooLong->access(0));
  EXPECT_EQ(one->copy(tooLong, true), File::CopyFailed);
  EXPECT_TRUE(tooLong->remove()) << "it is not there";
  EXPECT_EQ(messages.take(), Texts());
  EXPECT_FALSE(one->move(tooLong));
  EXPECT_EQ(messages.take().size(), 1u);
  EXPECT_FALSE(directory(name)->create());
  Texts const reported = messages.take();
  ASSERT_EQ(reported.size(), 1u);
  std::string const start = notCreated(narrow(folder.text(name)) + '\\', "");
  EXPECT_EQ(reported[0].substr(0, start.size()), start);
  EXPECT_EQ(treeOf(folder.path()), (Tree{{"one", ""}}));
}

TEST_F(DiskLoad, APathFarBeyondTwoHundredAndSixtyUnits) {
  wstring path = folder.text();
  for (int level = 0; level < 20; ++level) path += KVW("\\") + wstring(100, static_cast<wchar>(KVW('a') + level));
  ASSERT_GT(path.size(), 2000u);
  SmartPtr<Directory const> deepest = directoryAt(path.c_str());
  SmartPtr<File const> const file = File::fromString(*deepest, String(KVW("file.dat")));
  EXPECT_TRUE(file->createParentDirectories());
  EXPECT_TRUE(deepest->exists());
  EXPECT_TRUE(deepest->create());
  useFile(file, File::fromString(*deepest, String(KVW("beside.dat"))));
  for (int level = 0; level < 20; ++level) {
    ASSERT_TRUE(deepest->remove(false));
    deepest = deepest->getParent();
  }
  EXPECT_EQ(fullName(deepest), narrow(folder.text(KVW(""))));
  EXPECT_EQ(messages.take(), Texts());
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
