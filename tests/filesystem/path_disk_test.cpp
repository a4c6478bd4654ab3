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
namespace testing {
namespace {

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

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
