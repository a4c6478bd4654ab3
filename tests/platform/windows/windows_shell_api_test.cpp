// SPDX-License-Identifier: MIT
//
// The methods that can be tested without starting a program.
#include <gtest/gtest.h>
#include <stdlib.h>

#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/shell_api.h"
#include "kvbase/platform/types.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

platform::ShellApi& shell() {
  return platform::nativeShell();
}

TEST(WindowsShellApiTest, MissingFileIsNotOpened) {
  TempFolder folder;
  wstring const missing = folder.text(KVW("missing.txt"));
  EXPECT_EQ(shell().open(nullptr, missing.c_str(), nullptr, platform::kShowNormal), platform::kFileNotFound);
  EXPECT_EQ(shell().open(KVW("open"), missing.c_str(), folder.text().c_str(), platform::kShowDefault),
            platform::kFileNotFound);
}

TEST(WindowsShellApiTest, ItemsAreExistingPaths) {
  TempFolder folder;
  folder.write("a.txt");
  platform::ItemList const file = shell().itemListFromPath(folder.text(KVW("a.txt")).c_str());
  EXPECT_NE(file, nullptr);
  shell().freeItemList(file);
  platform::ItemList const directory = shell().itemListFromPath(folder.text().c_str());
  EXPECT_NE(directory, nullptr);
  shell().freeItemList(directory);
  EXPECT_EQ(shell().itemListFromPath(folder.text(KVW("missing.txt")).c_str()), nullptr);
  shell().freeItemList(nullptr);
}

TEST(WindowsShellApiTest, TheFolderOfCommonFiles) {
  wstring folder;
  ASSERT_TRUE(shell().commonProgramFiles(folder));
  wchar_t const* const expected = _wgetenv(L"CommonProgramFiles");
  ASSERT_NE(expected, nullptr);
  EXPECT_EQ(folder, expected);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
