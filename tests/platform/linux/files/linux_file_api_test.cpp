// SPDX-License-Identifier: MIT
//
// Links, hidden items, handles and the order of searches.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "kvbase/platform/file_api.h"
#include "tests/platform/linux/open_descriptors.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/current_path.h"
#include "tests/support/narrow_text.h"
#include "tests/support/temp_folder.h"
#include "tests/support/threads.h"

namespace KV_1_1 {
namespace testing {
namespace {

namespace fs = std::filesystem;
using platform::FindData;
using platform::kAttributeDirectory;
using platform::kAttributeHidden;
using platform::kAttributeNormal;
using platform::kAttributeReadOnly;
using platform::kAttributeReparsePoint;
using platform::kInvalidAttributes;

platform::FileApi& files() {
  return platform::nativeFiles();
}

std::vector<std::pair<std::string, ulong32>> entriesOf(wstring const& pattern) {
  std::vector<std::pair<std::string, ulong32>> entries;
  FindData data;
  platform::SearchHandle const search = files().findFirst(pattern.c_str(), data);
  if (search == platform::invalidSearch()) return entries;
  do {
    entries.emplace_back(narrow(data.name), data.attributes);
  } while (files().findNext(search, data));
  EXPECT_TRUE(files().findClose(search));
  return entries;
}

std::vector<std::string> namesOf(wstring const& pattern) {
  std::vector<std::string> names;
  for (auto const& entry : entriesOf(pattern)) names.push_back(entry.first);
  return names;
}

TEST(LinuxFileApiTest, LinksFollowTheSeparator) {
  TempFolder folder;
  folder.write("dir/file.txt", "12345");
  fs::create_directory_symlink("dir", folder.path("toDir"));
  fs::create_symlink("dir/file.txt", folder.path("toFile"));
  fs::create_symlink("nothing", folder.path("toNothing"));
  fs::create_symlink("circle2", folder.path("circle1"));
  fs::create_symlink("circle1", folder.path("circle2"));
  struct Row {
    char const* path;
    ulong32 attributes;
  };
  Row const rows[] = {
      {"toDir", kAttributeReparsePoint},   {"toDir\\", kAttributeDirectory},      {"toFile", kAttributeNormal},
      {"toFile\\", kInvalidAttributes},    {"toNothing", kAttributeReparsePoint}, {"toNothing\\", kInvalidAttributes},
      {"circle1", kAttributeReparsePoint}, {"circle1\\", kInvalidAttributes},     {"toDir\\file.txt", kAttributeNormal},
      {"dir", kAttributeDirectory},
  };
  for (Row const& row : rows)
    EXPECT_EQ(files().getAttributes(folder.text(widen(row.path)).c_str()), row.attributes) << row.path;

  platform::FileInfo info;
  ASSERT_TRUE(files().getInfo(folder.text(KVW("toFile")).c_str(), info));
  EXPECT_EQ(info.size, 5u) << "a link to a file is the file";

  for (auto const& entry : entriesOf(folder.text(KVW("*")))) {
    bool const isFolder = entry.first == "." || entry.first == ".." || entry.first == "dir";
    EXPECT_EQ(entry.second, isFolder ? kAttributeDirectory : kAttributeReparsePoint) << entry.first;
  }
}

TEST(LinuxFileApiTest, HiddenAndReadOnly) {
  TempFolder folder;
  folder.write(".hidden");
  folder.makeFolder(".hiddenDir");
  folder.write("locked");
  folder.makeFolder("lockedDir");
  ASSERT_EQ(chmod(folder.path("locked").c_str(), 0444), 0);
  ASSERT_EQ(chmod(folder.path("lockedDir").c_str(), 0555), 0);
  EXPECT_EQ(files().getAttributes(folder.text(KVW(".hidden")).c_str()), kAttributeHidden);
  EXPECT_EQ(files().getAttributes(folder.text(KVW(".hiddenDir\\")).c_str()), kAttributeHidden | kAttributeDirectory);
  EXPECT_EQ(files().getAttributes(folder.text(KVW("locked")).c_str()), kAttributeReadOnly);
  EXPECT_EQ(files().getAttributes(folder.text(KVW("lockedDir")).c_str()), kAttributeDirectory);
  EXPECT_EQ(files().getAttributes(KVW(".")), kAttributeDirectory);
  EXPECT_EQ(files().getAttributes(KVW("..")), kAttributeDirectory);
  using Entries = std::vector<std::pair<std::string, ulong32>>;
  EXPECT_EQ(entriesOf(folder.text(KVW(".h*"))),
            (Entries{{".hidden", kAttributeHidden}, {".hiddenDir", kAttributeHidden | kAttributeDirectory}}));
}

TEST(LinuxFileApiTest, NamesAreCaseSensitiveAndSortedWithoutCase) {
  TempFolder folder;
  for (char const* name :
       {"b", "A", "a", "B", "ab", "a-", "Z", "\xC3\xA4", "\xC3\x84", "_", "10", "9", "scan_a", "scan_B", "scan_"}) {
    folder.write(name);
  }
  EXPECT_EQ(namesOf(folder.text(KVW("*"))),
            (std::vector<std::string>{".", "..", "10", "9", "A", "a", "a-", "ab", "B", "b", "scan_", "scan_a", "scan_B",
                                      "Z", "_", "\xC3\x84", "\xC3\xA4"}));
  EXPECT_EQ(namesOf(folder.text(KVW("scan_*"))), (std::vector<std::string>{"scan_", "scan_a", "scan_B"}));
  EXPECT_EQ(files().getAttributes(folder.text(KVW("SCAN_a")).c_str()), kInvalidAttributes);
}

TEST(LinuxFileApiTest, AnyNameOnDiskIsFoundAndReached) {
  TempFolder folder;
  std::vector<std::string> const names = {
      "a:b", "end.", "blank ", "\xE4\xFF", "tab\t", "q?*", "...", std::string(255, 'x'), "back\\slash", "\xEF\x80\xBA"};
  for (std::string const& name : names) folder.write(name, "1");
  std::size_t found = 0;
  FindData data;
  platform::SearchHandle const search = files().findFirst(folder.text(KVW("*")).c_str(), data);
  ASSERT_NE(search, platform::invalidSearch());
  do {
    if ((data.attributes & kAttributeDirectory) != 0) continue;
    ++found;
    platform::FileInfo info;
    EXPECT_TRUE(files().getInfo(folder.text(data.name).c_str(), info)) << narrow(data.name);
    EXPECT_EQ(info.size, 1u);
  } while (files().findNext(search, data));
  files().findClose(search);
  EXPECT_EQ(found, names.size());
}

TEST(LinuxFileApiTest, StaleHandlesAreRefused) {
  TempFolder folder;
  folder.write("a");
  wstring const pattern = folder.text(KVW("*"));
  FindData data;
  platform::SearchHandle const first = files().findFirst(pattern.c_str(), data);
  EXPECT_TRUE(files().findClose(first));
  EXPECT_FALSE(files().findClose(first));
  EXPECT_FALSE(files().findNext(first, data));
  platform::SearchHandle const second = files().findFirst(pattern.c_str(), data);
  EXPECT_NE(second, first);
  EXPECT_FALSE(files().findNext(first, data)) << "another search runs now";
  EXPECT_FALSE(files().findClose(first));
  EXPECT_TRUE(files().findNext(second, data));
  EXPECT_TRUE(files().findClose(second));
  EXPECT_FALSE(files().findClose(platform::invalidSearch()));
  EXPECT_FALSE(files().findClose(nullptr));
  EXPECT_FALSE(files().findNext(&data, data));
}

TEST(LinuxFileApiTest, SearchIsASnapshot) {
  TempFolder folder;
  folder.write("a");
  folder.write("b");
  FindData data;
  platform::SearchHandle const search = files().findFirst(folder.text(KVW("*")).c_str(), data);
  fs::remove(folder.path("b"));
  folder.write("c");
  std::vector<std::string> names;
  while (files().findNext(search, data)) names.push_back(narrow(data.name));
  EXPECT_TRUE(files().findClose(search));
  EXPECT_EQ(names, (std::vector<std::string>{"..", "a", "b"}));
}

TEST(LinuxFileApiTest, SearchesHoldNoDescriptor) {
  TempFolder folder;
  folder.write("a");
  wstring const pattern = folder.text(KVW("*"));
  std::size_t const before = openDescriptors();
  FindData data;
  std::vector<platform::SearchHandle> searches;
  for (int i = 0; i < 50; ++i) searches.push_back(files().findFirst(pattern.c_str(), data));
  EXPECT_EQ(files().findFirst(folder.text(KVW("none\\*")).c_str(), data), platform::invalidSearch());
  EXPECT_EQ(files().findFirst(folder.text(KVW("*.none")).c_str(), data), platform::invalidSearch());
  EXPECT_EQ(openDescriptors(), before);
  for (auto search = searches.rbegin(); search != searches.rend(); ++search) EXPECT_TRUE(files().findClose(*search));
}

TEST(LinuxFileApiTest, ThreadsSearchAtOnce) {
  TempFolder folder;
  for (char const* name : {"a", "b", "c"}) folder.write(name);
  wstring const pattern = folder.text(KVW("*"));
  std::atomic<int> found{0};
  onThreads([&](int) {
    for (int k = 0; k < 200; ++k) {
      FindData outer, inner;
      platform::SearchHandle const search = files().findFirst(pattern.c_str(), outer);
      do {
        platform::SearchHandle const nested = files().findFirst(pattern.c_str(), inner);
        found += files().findNext(nested, inner);
        files().findClose(nested);
      } while (files().findNext(search, outer));
      files().findClose(search);
    }
  });
  EXPECT_EQ(found, kThreads * 200 * 5);
}

// The path is longer than the buffer on the stack.
TEST(LinuxFileApiTest, NothingLeaksWithoutMemory) {
  TempFolder folder;
  for (int i = 0; i < 100; ++i) folder.write("the name of a file, number " + std::to_string(i));
  wstring const pattern = folder.text(wstring(600, KVW('a')) + KVW("\\..\\*"));
  constexpr std::size_t kSearches = 20;
  for (AllocationSweep sweep(kSearches); sweep.next();) {
    platform::SearchHandle searches[kSearches];
    std::size_t started = 0;
    sweep.run([&] {
      FindData data;
      for (; started < kSearches; ++started) searches[started] = files().findFirst(pattern.c_str(), data);
    });
    EXPECT_TRUE(std::all_of(searches, searches + started, [](auto search) { return files().findClose(search); }));
    EXPECT_EQ(started < kSearches, sweep.failed());
  }
}

TEST(LinuxFileApiTest, LargeDirectoriesAreReadWhole) {
  TempFolder folder;
  constexpr std::size_t kFiles = 3000;
  for (std::size_t i = 0; i < kFiles; ++i) folder.write("a rather long name of a file, number " + std::to_string(i));
  std::vector<std::string> const names = namesOf(folder.text(KVW("a*")));
  EXPECT_EQ(names.size(), kFiles);
  EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
}

TEST(LinuxFileApiTest, PatternWithoutFolderSearchesTheCurrentOne) {
  TempFolder folder;
  folder.write("here.txt");
  CurrentPath const current(folder.path());
  EXPECT_EQ(namesOf(KVW("*.txt")), (std::vector<std::string>{"here.txt"}));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
