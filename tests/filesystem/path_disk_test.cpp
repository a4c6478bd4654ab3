// SPDX-License-Identifier: MIT
//
// What exists, isDirectory and getFileSize make of the answer of the system.
#include <gtest/gtest.h>

#include <string>

#include "kvbase/filesystem/file_system_iterator.h"
#include "tests/filesystem/path_support.h"
#include "tests/support/scripted_files.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace {

using namespace KV_1_1::testing;

// A relative path has no prefix to give; the search alone is made absolute first.
TEST(PathDisk, RelativePathsGoAsTheyAre) {
  ScriptedFiles files;
  files.script.directory = KVW(R"(C:\work)");
  platform::ScopedBackend<platform::FileApi> const scope(files);
  SmartPtr<Directory const> const directory = directoryAt(KVW(R"(a\..\b)"));
  directory->exists();
  fileAt(KVW("x"))->exists();
  directory->findFiles(String(KVW("*")));
  EXPECT_EQ(files.log(),
            Log({R"(getAttributes a\..\b\)", R"(getAttributes .\x)", "currentDirectory", R"(findFirst C:\work\b\*)"}));
}

TEST(PathDisk, ExistsByAttributes) {
  struct Row {
    char const* name;
    ulong32 attributes;
    bool directory;
    bool file;
  };
  Row const rows[] = {
      {"missing", platform::kInvalidAttributes, false, false},
      {"directory", platform::kAttributeDirectory, true, false},
      {"directory with more bits", platform::kAttributeDirectory | 0x7, true, false},
      {"linked directory", platform::kAttributeDirectory | platform::kAttributeReparsePoint, true, false},
      {"file", platform::kAttributeNormal, false, true},
      {"file with other bits", platform::kAttributeReadOnly | platform::kAttributeHidden, false, true},
      {"no bit at all", 0, false, true},
  };
  SmartPtr<Directory const> const directory = directoryAt(KVW(R"(C:\a)"));
  SmartPtr<File const> const file = fileAt(KVW(R"(C:\a)"));
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    ScriptedFiles files;
    files.script.attributes[KVW(R"(\\?\C:\a\)")] = row.attributes;
    files.script.attributes[KVW(R"(\\?\C:\a)")] = row.attributes;
    platform::ScopedBackend<platform::FileApi> const scope(files);
    EXPECT_EQ(directory->exists(), row.directory);
    EXPECT_EQ(directory->isDirectory(), row.directory);
    EXPECT_EQ(file->exists(), row.file);
    FileSystemItem const& item = *file;
    EXPECT_EQ(item.exists(), row.file);
  }
}

TEST(PathDisk, FileSizeKeepsBothHalvesAndIsLeftAloneOnFailure) {
  ScriptedFiles files;
  files.script.infos[KVW(R"(\\?\C:\small)")] = {platform::kAttributeNormal, 0};
  files.script.infos[KVW(R"(\\?\C:\big)")] = {platform::kAttributeNormal, 0x123456789ABCDEF0};
  platform::ScopedBackend<platform::FileApi> const scope(files);
  CollectedMessages messages;
  ULARGE_INTEGER size;
  size.QuadPart = 77;
  EXPECT_FALSE(fileAt(KVW(R"(C:\missing)"))->getFileSize(size));
  EXPECT_EQ(size.QuadPart, 77u);
  EXPECT_TRUE(fileAt(KVW(R"(C:\small)"))->getFileSize(size));
  EXPECT_EQ(size.QuadPart, 0u);
  EXPECT_TRUE(fileAt(KVW(R"(C:\big)"))->getFileSize(size));
  EXPECT_EQ(size.QuadPart, 0x123456789ABCDEF0u);
  EXPECT_EQ(size.u.LowPart, 0x9ABCDEF0u);
  EXPECT_EQ(size.u.HighPart, 0x12345678u);
  EXPECT_EQ(messages.take(), Texts());
}

TEST(PathDisk, OnTheRealDisk) {
  TempFolder folder;
  folder.write("file.bin", "12345");
  folder.write("empty");
  folder.makeFolder("sub");
  struct Row {
    char const* name;
    wchar const* below;
    bool directory;
    bool file;
  };
  Row const rows[] = {
      {"file", KVW("file.bin"), false, true},
      {"empty file", KVW("empty"), false, true},
      {"folder", KVW("sub"), true, false},
      {"missing", KVW("missing"), false, false},
      {"below what is missing", KVW(R"(missing\x)"), false, false},
      {"below a file", KVW(R"(file.bin\x)"), false, false},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    String const text(folder.text(row.below).c_str());
    EXPECT_EQ(directoryAt(text)->exists(), row.directory);
    EXPECT_EQ(directoryAt(text)->isDirectory(), row.directory);
    EXPECT_EQ(fileAt(text)->exists(), row.file);
  }
  ULARGE_INTEGER size;
  EXPECT_TRUE(fileAt(folder.text(KVW("file.bin")).c_str())->getFileSize(size));
  EXPECT_EQ(size.QuadPart, 5u);
  EXPECT_TRUE(fileAt(folder.text(KVW("empty")).c_str())->getFileSize(size));
  EXPECT_EQ(size.QuadPart, 0u);
  EXPECT_FALSE(fileAt(folder.text(KVW("missing")).c_str())->getFileSize(size));
}

}  // namespace
}  // namespace KV_1_1
