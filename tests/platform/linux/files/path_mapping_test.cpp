// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/files/path_mapping.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "kvbase/platform/file_api.h"
#include "tests/platform/linux/environment_variable.h"
#include "tests/support/current_path.h"
#include "tests/support/narrow_text.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

namespace fs = std::filesystem;

std::string mapped(wstring const& text) {
  platform::NativePath path;
  if (!platform::mapPath(text.data(), text.size(), path)) return "invalid";
  EXPECT_EQ(path[path.size() - 1], '\0');
  return path.data();
}

TEST(PathMapping, MapsByTheText) {
  EnvironmentVariable const drives("KVBASE_DRIVES", "/drives");
  struct Row {
    wchar const* text;
    char const* path;
  };
  Row const rows[] = {
      {KVW("\\home\\x"), "/home/x"},
      {KVW("\\home\\x\\"), "/home/x/"},
      {KVW("\\"), "/"},
      {KVW("/home/x"), "/home/x"},
      {KVW("x\\y"), "x/y"},
      {KVW("."), "."},
      {KVW(".\\"), "./"},
      {KVW("..\\x"), "../x"},
      {KVW("..\\..\\x\\..\\y"), "../../y"},
      {KVW("a\\..\\b"), "b"},
      {KVW("a\\.."), "."},
      {KVW("a\\..\\..\\b"), "../b"},
      {KVW("\\a\\b\\..\\..\\..\\c"), "/c"},
      {KVW("\\a\\\\b\\.\\c"), "/a/b/c"},
      {KVW("\\\\?\\\\home\\x\\"), "/home/x/"},
      {KVW("\\\\?\\\\home\\..\\x"), "invalid"},
      {KVW("\\\\?\\\\home/x"), "invalid"},
      {KVW("C:\\x"), "/drives/c:/x"},
      {KVW("c:/x/"), "/drives/c:/x/"},
      {KVW("C:\\"), "/drives/c:/"},
      {KVW("C:\\..\\..\\x"), "/drives/c:/x"},
      {KVW("\\\\?\\C:\\x\\"), "/drives/c:/x/"},
      {KVW("\\\\Server\\Share\\x"), "/drives/unc/server/share/x"},
      {KVW("\\\\server\\share"), "/drives/unc/server/share/"},
      {KVW("\\\\server\\share\\..\\x"), "/drives/unc/server/share/x"},
      {KVW("\\\\?\\UNC\\Server\\Share\\X\\"), "/drives/unc/server/share/X/"},
      {KVW("\\\\server"), "invalid"},
      {KVW("\\\\..\\share\\x"), "invalid"},
      {KVW("\\\\.\\pipe\\x"), "invalid"},
      {KVW(""), "invalid"},
      {KVW("\\a:b"), "invalid"},
      {KVW("\\a\\*"), "invalid"},
      {KVW("1:\\x"), "invalid"},
  };
  for (Row const& row : rows) EXPECT_EQ(mapped(row.text), row.path) << narrow(row.text);
}

TEST(PathMapping, DrivesFolderComesFromTheEnvironment) {
  EnvironmentVariable const drives("KVBASE_DRIVES", nullptr);
  EnvironmentVariable const home("HOME", "/home/u");
  {
    EnvironmentVariable const config("XDG_CONFIG_HOME", "/conf");
    EXPECT_EQ(mapped(KVW("C:\\x")), "/conf/kvbase/drives/c:/x");
  }
  EnvironmentVariable const config("XDG_CONFIG_HOME", nullptr);
  EXPECT_EQ(mapped(KVW("C:\\x")), "/home/u/.config/kvbase/drives/c:/x");
  EnvironmentVariable const homeless("HOME", nullptr);
  EXPECT_EQ(mapped(KVW("C:\\x")), "invalid");
}

TEST(PathMapping, LongTextsAreMappedWhole) {
  wstring text;
  std::string path;
  for (int i = 0; i < 20000; ++i) {
    text += KVW("\\level");
    path += "/level";
  }
  EXPECT_EQ(mapped(text), path);
  for (int i = 0; i < 20000; ++i) text += KVW("\\..");
  EXPECT_EQ(mapped(text + KVW("\\x")), "/x");
}

class DrivesTest : public ::testing::Test {
 protected:
  DrivesTest() : drives_("KVBASE_DRIVES", folder_.path("drives").c_str()) {
    folder_.write("disk/sub/file.txt", "123");
    folder_.makeFolder("drives/unc/server");
    fs::create_directory_symlink(folder_.path("disk"), folder_.path("drives/c:"));
    fs::create_directory_symlink(folder_.path("disk/sub"), folder_.path("drives/unc/server/share"));
  }
  static std::string directoryOfDrive(char letter) {
    wstring path = KVW("unchanged");
    platform::nativeFiles().currentDirectoryOfDrive(letter - 'A' + 1, path);
    return narrow(path);
  }
  static bool exists(wchar const* path) {
    return platform::nativeFiles().getAttributes(path) != platform::kInvalidAttributes;
  }

  TempFolder folder_;
  EnvironmentVariable drives_;
};

TEST_F(DrivesTest, LeadToTheirFolders) {
  EXPECT_TRUE(exists(KVW("C:\\sub\\file.txt")));
  EXPECT_TRUE(exists(KVW("c:\\sub\\file.txt")));
  EXPECT_TRUE(exists(KVW("\\\\?\\C:\\sub\\")));
  EXPECT_TRUE(exists(KVW("\\\\SERVER\\share\\file.txt")));
  EXPECT_TRUE(exists(KVW("\\\\?\\UNC\\server\\Share\\file.txt")));
  EXPECT_FALSE(exists(KVW("D:\\")));
  EXPECT_FALSE(exists(KVW("\\\\server\\other\\file.txt")));
  EXPECT_EQ(platform::nativeFiles().getAttributes(KVW("C:\\")), platform::kAttributeDirectory);
  EXPECT_EQ(platform::nativeFiles().getAttributes(KVW("\\\\server\\share")), platform::kAttributeDirectory);
}

TEST_F(DrivesTest, HaveACurrentDirectory) {
  {
    CurrentPath const current(folder_.path("disk/sub"));
    EXPECT_EQ(directoryOfDrive('C'), "C:\\sub");
    EXPECT_TRUE(exists(KVW("C:file.txt")));
    EXPECT_TRUE(exists(KVW("C:..\\sub\\file.txt")));
    EXPECT_TRUE(exists(KVW("C:..\\..\\..\\sub\\file.txt"))) << "the root of a drive has no parent";
    EXPECT_TRUE(exists(KVW("C:")));
  }
  {
    CurrentPath const current(folder_.path("disk"));
    EXPECT_EQ(directoryOfDrive('C'), "C:\\");
    EXPECT_FALSE(exists(KVW("C:file.txt")));
  }
  CurrentPath const current(folder_.path());
  EXPECT_EQ(directoryOfDrive('C'), "C:\\");
  EXPECT_TRUE(exists(KVW("C:sub\\file.txt")));
  EXPECT_EQ(directoryOfDrive('D'), "unchanged");
  EXPECT_EQ(directoryOfDrive('A' - 1), "unchanged");
  EXPECT_EQ(directoryOfDrive('Z' + 1), "unchanged");
}

TEST_F(DrivesTest, OfANeighbourWithALongerNameIsNotBelow) {
  folder_.makeFolder("disk2");
  CurrentPath const current(folder_.path("disk2"));
  EXPECT_EQ(directoryOfDrive('C'), "C:\\");
}

TEST(CurrentDirectory, ThatIsGoneIsNone) {
  TempFolder folder;
  folder.makeFolder("gone");
  CurrentPath const current(folder.path("gone"));
  fs::remove(folder.path("gone"));
  wstring path = KVW("unchanged");
  EXPECT_FALSE(platform::nativeFiles().currentDirectory(path));
  EXPECT_EQ(narrow(path), "unchanged");
}

TEST(CurrentDirectory, ShowsEscapes) {
  TempFolder folder;
  folder.makeFolder("a:b.");
  CurrentPath const current(folder.path("a:b."));
  wstring path;
  ASSERT_TRUE(platform::nativeFiles().currentDirectory(path));
  EXPECT_EQ(path, folder.text(KVW("a\uF03Ab\uF02E")));
  EXPECT_NE(platform::nativeFiles().getAttributes(path.c_str()), platform::kInvalidAttributes);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
