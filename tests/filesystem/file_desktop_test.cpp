// SPDX-License-Identifier: MIT
//
// What File asks of the desktop: openWithDefaultApp and showInExplorer.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "tests/filesystem/scripted_system.h"

namespace KV_1_1 {
namespace testing {
namespace {

class FileDesktop : public ScriptedSystem<ScriptedFiles> {
 protected:
  FileDesktop() {
    files.script.attributes[KVW(R"(\\?\C:\a\f.e)")] = platform::kAttributeNormal;
    files.script.attributes[KVW(R"(\\?\C:\a\d)")] = platform::kAttributeDirectory;
  }
  ~FileDesktop() override { EXPECT_EQ(messages.take(), Texts()); }

  SmartPtr<File const> const file = fileAt(KVW(R"(C:\a\f.e)"));
  SmartPtr<File const> const missing = fileAt(KVW(R"(C:\a\missing)"));
  SmartPtr<File const> const folder = fileAt(KVW(R"(C:\a\d)"));  // a file by name, a directory on the disk
};

TEST_F(FileDesktop, OpenWithDefaultAppSucceedsFrom32On) {
  struct Row {
    std::intptr_t result;
    bool opened;
  };
  Row const rows[] = {{0, false},  {2, false},  {5, false},
                      {31, false}, {32, true},  {33, true},
                      {42, true},  {-1, false}, {std::intptr_t{1} << 40, true}};
  for (Row const& row : rows) {
    SCOPED_TRACE(row.result);
    shell.openResult = row.result;
    EXPECT_EQ(file->openWithDefaultApp(), row.opened);
    EXPECT_EQ(File::openWithDefaultApp(String(KVW("x"))), row.opened);
  }
}

TEST_F(FileDesktop, OpenWithDefaultAppAsksTheShellAndNobodyElse) {
  file->openWithDefaultApp();
  missing->openWithDefaultApp();
  fileAt(KVW("f"))->openWithDefaultApp();
  File::openWithDefaultApp(String(KVW("https://example.org/a b?c=%20")));
  File::openWithDefaultApp(String::EMPTY);
  EXPECT_EQ(shell.log, (Log{R"(open (null) C:\a\f.e %HOMEPATH% 1)", R"(open (null) C:\a\missing %HOMEPATH% 1)",
                            R"(open (null) .\f %HOMEPATH% 1)", "open (null) https://example.org/a b?c=%20 %HOMEPATH% 1",
                            "open (null)  %HOMEPATH% 1"}));
  EXPECT_EQ(files.log(), Log());
}

TEST_F(FileDesktop, ShowInExplorerShowsAndReleasesTheItem) {
  EXPECT_TRUE(file->showInExplorer());
  EXPECT_EQ(shell.log, (Log{R"(itemListFromPath \\?\C:\a\f.e)", "showItem", "freeItemList"}));
}

TEST_F(FileDesktop, ShowInExplorerSucceedsByZeroAlone) {
  for (std::int32_t const result : {1, 2, -1, -2147467259}) {
    SCOPED_TRACE(result);
    shell.showResult = result;
    shell.log.clear();
    EXPECT_FALSE(file->showInExplorer());
    EXPECT_EQ(shell.log, (Log{R"(itemListFromPath \\?\C:\a\f.e)", "showItem", "freeItemList"}));
  }
}

TEST_F(FileDesktop, ShowInExplorerWithoutAnItemShowsNothing) {
  shell.item = nullptr;
  EXPECT_FALSE(file->showInExplorer());
  EXPECT_EQ(shell.log, Log{R"(itemListFromPath \\?\C:\a\f.e)"});
}

TEST_F(FileDesktop, ShowInExplorerOfWhatIsNoAbsoluteFileAsksNoShell) {
  files.script.attributes[KVW(R"(.\f)")] = platform::kAttributeNormal;
  files.script.attributes[KVW("C:f")] = platform::kAttributeNormal;
  EXPECT_FALSE(missing->showInExplorer());
  EXPECT_FALSE(folder->showInExplorer());
  EXPECT_FALSE(fileAt(KVW("f"))->showInExplorer());
  EXPECT_FALSE(fileAt(KVW("C:f"))->showInExplorer());
  EXPECT_EQ(shell.log, Log());
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
