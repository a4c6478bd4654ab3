// SPDX-License-Identifier: MIT
//
// Disk operations on several threads at once.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kvbase/diagnostics/windows_error.h"
#include "kvbase/filesystem/file_system_iterator.h"
#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"
#include "tests/filesystem/path_support.h"
#include "tests/support/temp_folder.h"
#include "tests/support/threads.h"

namespace KV_1_1 {
namespace testing {
namespace {

constexpr int kDiskRounds = 20;

// A thread that finds the directory made by another one succeeds too.
TEST(DiskConcurrency, AllMakersOfOneDirectorySucceed) {
  TempFolder folder;
  for (int round = 0; round < kDiskRounds; ++round) {
    SmartPtr<Directory const> const directory =
        directoryAt((folder.text() + KVW("\\") + widen(std::to_string(round)) + KVW("\\a\\b\\c")).c_str());
    std::vector<char> made(kThreads);
    onThreads([&](int thread) { made[static_cast<std::size_t>(thread)] = directory->create(); });
    EXPECT_EQ(made, std::vector<char>(kThreads, 1));
    EXPECT_TRUE(directory->exists());
  }
}

TEST(DiskConcurrency, OneSourceIsCopiedByAllAndEachTargetIsRemoved) {
  TempFolder folder;
  for (int i = 0; i < 12; ++i) folder.write("source/sub" + std::to_string(i % 3) + "/f" + std::to_string(i), "bytes");
  SmartPtr<Directory const> const source = directoryAt(folder.text(KVW("source")).c_str());
  std::vector<int> done(kThreads);
  onThreads([&](int thread) {
    SmartPtr<Directory const> const target = directoryAt(folder.text(widen("target" + std::to_string(thread))).c_str());
    for (int round = 0; round < kDiskRounds; ++round) {
      bool const isCopied = target->create() && source->copyContents(target, true, false, nullptr) &&
                            target->collectFiles(KVW("*"), true).size() == 12;
      if (isCopied && target->remove(true)) ++done[static_cast<std::size_t>(thread)];
    }
  });
  EXPECT_EQ(done, std::vector<int>(kThreads, kDiskRounds));
  EXPECT_EQ(source->collectFiles(KVW("*"), true).size(), 12u);
}

TEST(DiskConcurrency, EachThreadIsToldItsOwnReason) {
  TempFolder folder;
  folder.write("here");
  folder.write("there");
  SmartPtr<File const> const here = fileAt(folder.text(KVW("here")).c_str());
  SmartPtr<File const> const there = fileAt(folder.text(KVW("there")).c_str());
  SmartPtr<File const> const missing = fileAt(folder.text(KVW("missing")).c_str());
  onThreads([&](int thread) {
    ulong32 const expected = thread % 2 == 0 ? platform::kAlreadyExists : platform::kFileNotFound;
    for (int round = 0; round < kDiskRounds; ++round) {
      EXPECT_FALSE((thread % 2 == 0 ? here : missing)->move(there));
      EXPECT_EQ(platform::errors().lastError(), expected);
      EXPECT_EQ(shown(getWindowsError()), shown(getWindowsError(expected)));
    }
  });
  EXPECT_TRUE(here->exists());
}

// Each thread may search the same directory on its own.
TEST(DiskConcurrency, SearchesOfOneDirectoryRunSideBySide) {
  TempFolder folder;
  for (int i = 0; i < 20; ++i) folder.write("sub" + std::to_string(i % 3) + "/f" + std::to_string(i));
  SmartPtr<Directory const> const directory = directoryAt(folder.text().c_str());
  std::vector<Texts> results(kThreads);
  onThreads([&](int thread) {
    for (int i = 0; i < 10; ++i) {
      for (auto const& item : directory->collectContents(String(KVW("*")), true)) {
        results[static_cast<std::size_t>(thread)].push_back(fullName(item));
      }
    }
  });
  EXPECT_EQ(results.front().size(), 230u);
  for (Texts const& result : results) EXPECT_EQ(result, results.front());
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
