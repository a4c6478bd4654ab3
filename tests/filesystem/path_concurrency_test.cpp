// SPDX-License-Identifier: MIT
//
// Paths that nobody changes may be used on any threads, and each thread may search on its own.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "kvbase/filesystem/file_system_iterator.h"
#include "kvbase/filesystem/internal/path_names.h"
#include "tests/filesystem/path_support.h"
#include "tests/support/temp_folder.h"
#include "tests/support/threads.h"

namespace KV_1_1 {
namespace {

using namespace KV_1_1::testing;

// What the work gives on each of several threads.
std::vector<Texts> resultsOf(std::function<void(Texts&)> const& work) {
  std::vector<Texts> results(kThreads);
  onThreads([&](int thread) { work(results[static_cast<std::size_t>(thread)]); });
  return results;
}

// The first to run in a process of its own, this builds the sets of characters on several threads at once.
TEST(PathConcurrency, TheFirstPathsMayComeFromSeveralThreads) {
  auto const results = resultsOf([](Texts& result) {
    for (int i = 0; i < 200; ++i) {
      result.push_back(std::to_string(isValidSearchPattern(String(KVW("*.txt"))) + isValidItemName(String(KVW("a*")))));
      result.push_back(fullName(Directory::fromString(String(KVW("c:/a/../b c")))));
      result.push_back(fullName(File::fromString(String(KVW("\\\\s\\t\\x.y")))));
      result.push_back(fullName(Directory::fromString(String(KVW("C:\\a*")))));
    }
  });
  for (Texts const& result : results) EXPECT_EQ(result, results.front());
  EXPECT_EQ(Texts(results[0].begin(), results[0].begin() + 4), Texts({"1", "C:\\b c\\", "\\\\s\\t\\x.y", "null"}));
}

TEST(PathConcurrency, OnePathServesSeveralThreads) {
  SmartPtr<Directory const> const directory = directoryAt(KVW("C:\\a\\b"));
  SmartPtr<Directory const> const other = directoryAt(KVW("C:\\A\\c"));
  SmartPtr<File const> const file = File::fromString(*directory, String(KVW("f.txt")));
  auto const results = resultsOf([&](Texts& result) {
    for (int i = 0; i < 200; ++i) {
      result.push_back(shown(directory->getFullNameUnicode()) + shown(file->getFullNameUnix()));
      result.push_back(fullName(directory->makeRelative(other)));
      result.push_back(fullName(directory->combine(file)));
      result.push_back(fullName(directory->appendLevel(String(KVW("x")))->getParent()));
      result.push_back(std::to_string(directory->equals(other) + directory->contains(*file)));
    }
  });
  for (Texts const& result : results) EXPECT_EQ(result, results.front());
  EXPECT_EQ(directory->getRefCounter(), 2u);
  EXPECT_EQ(file->getRefCounter(), 1u);
}

TEST(PathConcurrency, SearchesOfOneDirectoryRunSideBySide) {
  TempFolder folder;
  for (int i = 0; i < 20; ++i) folder.write("sub" + std::to_string(i % 3) + "/f" + std::to_string(i));
  SmartPtr<Directory const> const directory = directoryAt(folder.text().c_str());
  auto const results = resultsOf([&directory](Texts& result) {
    for (int i = 0; i < 10; ++i) {
      for (auto const& item : directory->collectContents(String(KVW("*")), true)) result.push_back(fullName(item));
    }
  });
  EXPECT_EQ(results.front().size(), 230u);
  for (Texts const& result : results) EXPECT_EQ(result, results.front());
}

}  // namespace
}  // namespace KV_1_1
