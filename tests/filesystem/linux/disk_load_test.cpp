// SPDX-License-Identifier: MIT
//
// Large files and deep trees, as far as only Linux can tell: the room that a file takes, and walks without a limit of
// paths.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "kvbase/diagnostics/windows_error.h"
#include "tests/filesystem/disk_support.h"
#include "tests/platform/linux/files/file_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kMega = 1 << 20;

std::int64_t roomOf(fs::path const& path) {
  struct stat status = {};
  EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
  return static_cast<std::int64_t>(status.st_blocks) * 512;
}

TEST(DiskLoadLinux, HolesOfALargeFileStayHoles) {
  TempFolder folder;
  std::int64_t const size = 5 * 1024 * kMega + 7;
  std::int64_t const places[] = {0, kMega + 5, 3000 * kMega, 4096 * kMega - 3, size - 6};
  {
    std::ofstream file(folder.path("sparse"), std::ios::binary);
    for (std::int64_t const place : places) file.seekp(place) << "island";
    ASSERT_TRUE(file.flush());
  }
  ASSERT_EQ(fs::file_size(folder.path("sparse")), static_cast<std::uintmax_t>(size));
  ASSERT_LT(roomOf(folder.path("sparse")), kMega) << "the file system has no holes";
  SmartPtr<File const> const source = fileAt(folder.text(KVW("sparse")).c_str());
  SmartPtr<File const> const target = fileAt(folder.text(KVW("copy")).c_str());
  auto const fractions = std::make_shared<RecordedProgress>();
  ASSERT_EQ(source->copy(target, false, fractions), File::CopyOk);
  EXPECT_TRUE(source->hasEqualSize(target));
  EXPECT_LT(roomOf(folder.path("copy")), kMega);
  EXPECT_LT(roomOf(folder.path("sparse")), kMega);

  // The islands with what stands around them, and nothing else between.
  std::ifstream before(folder.path("sparse"), std::ios::binary), after(folder.path("copy"), std::ios::binary);
  for (std::int64_t const place : places) {
    std::int64_t const from = std::max<std::int64_t>(0, place - 4096);
    std::string a(8192, 0), b(8192, 1);
    before.seekg(from).read(&a[0], 8192);
    after.seekg(from).read(&b[0], 8192);
    ASSERT_EQ(before.gcount(), after.gcount());
    a.resize(static_cast<std::size_t>(before.gcount()));
    b.resize(static_cast<std::size_t>(after.gcount()));
    EXPECT_NE(a.find("island"), std::string::npos);
    EXPECT_TRUE(a == b) << "at " << place;
    before.clear();
    after.clear();
  }

  ASSERT_GE(fractions->values.size(), 2u);
  EXPECT_EQ(fractions->values.front(), 0);
  EXPECT_EQ(fractions->values.back(), 1);
  for (std::size_t i = 1; i < fractions->values.size(); ++i) EXPECT_GE(fractions->values[i], fractions->values[i - 1]);
}

TEST(DiskLoadLinux, ADeepTreeIsCopiedAndRemoved) {
  TempFolder folder;
  wstring path = folder.text(KVW("s"));
  int const levels = 30;
  for (int level = 0; level < levels; ++level)
    path += KVW("\\") + wstring(110, static_cast<wchar>(KVW('a') + level % 26));
  SmartPtr<Directory const> const deepest = directoryAt(path.c_str());
  ASSERT_TRUE(deepest->create());
  EXPECT_TRUE(deepest->isEmpty());
  for (SmartPtr<Directory const> at = deepest; shown(at->getName()) != "s"; at = at->getParent()) {
    EXPECT_TRUE(File::fromString(*at, String(KVW("file")))->touch());
  }
  folder.makeFolder("t");
  SmartPtr<Directory const> const source = directoryAt(folder.text(KVW("s")).c_str());
  SmartPtr<Directory const> const target = directoryAt(folder.text(KVW("t")).c_str());
  CountedFiles progress;
  EXPECT_TRUE(source->copyContents(target, true, false, &progress));
  EXPECT_EQ(progress.count, levels);
  EXPECT_EQ(treeOf(folder.path("t")), treeOf(folder.path("s")));
  EXPECT_EQ(target->collectContents(String(KVW("*")), true).size(), 2u * levels);
  EXPECT_TRUE(target->remove(true));
  EXPECT_TRUE(source->removeContents(true));
  EXPECT_EQ(treeOf(folder.path()), (Tree{{"s/", ""}}));
}

TEST(DiskLoadLinux, APathBeyondTheSystemsLimit) {
  TempFolder folder;
  wstring path = folder.text();
  while (path.size() < 4200) path += KVW("\\") + wstring(200, KVW('a'));
  CollectedMessages messages;
  SmartPtr<Directory const> const tooDeep = directoryAt(path.c_str());
  EXPECT_FALSE(tooDeep->exists());
  EXPECT_FALSE(tooDeep->create());
  Texts const reported = messages.take();
  ASSERT_EQ(reported.size(), 1u);
  std::string const reason = shown(getWindowsError(platform::kNameTooLong));
  EXPECT_EQ(reported[0].substr(reported[0].size() - std::min(reported[0].size(), reason.size())), reason);
  EXPECT_TRUE(directoryAt(folder.text().c_str())->removeContents(true)) << "what was made stays and can be removed";
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

// A thread of an application may have a small stack. Below /proc nothing can be made.
TEST(DiskLoadLinux, APathOfManyLevelsNeedsNoStackForEach) {
  wstring path = KVW("\\proc");
  for (int level = 0; level < 4000; ++level) path += KVW("\\a");
  SmartPtr<Directory const> const directory = directoryAt(path.c_str());
  inChild([&] {
    pthread_attr_t attributes;
    pthread_t thread;
    ASSERT_EQ(pthread_attr_init(&attributes) + pthread_attr_setstacksize(&attributes, 256 << 10), 0);
    auto const create = [](void* item) -> void* {
      EXPECT_FALSE(static_cast<Directory const*>(item)->create());
      return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, create, const_cast<Directory*>(&*directory)), 0);
    EXPECT_EQ(pthread_join(thread, nullptr), 0);
  });
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
