// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/files/path_mapping.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "kvbase/platform/file_api.h"
#include "kvbase/platform/linux/errors/last_error.h"
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

// A result of a mapping: the path, or the last error that it left.
template <class Map>
std::string resultOf(Map const& map) {
  platform::setLastErrorOfThread(0);
  platform::NativePath path;
  if (!map(path)) return "error " + std::to_string(platform::lastErrorOfThread());
  return std::string(path.data(), path.size());
}

// Random texts, of which about a half is plain.
class RandomPaths {
 public:
  wstring next() {
    wstring text = one<wstring>({KVW(""), KVW("\\"), KVW("\\"), KVW("\\\\?\\"), KVW("\\\\?\\\\"), KVW("\\\\?\\\\"),
                                 KVW("\\\\"), KVW("C:\\"), KVW("\\\\?\\C:\\"), KVW("\\\\?\\UNC\\"), KVW("//")});
    for (auto levels = below(7); levels > 0; --levels) text += level() + one<wstring>({KVW("\\"), separator()});
    if (below(2) == 0) text += level();
    return text;
  }

 private:
  wstring separator() {
    return below(8) != 0 ? KVW("\\") : one<wstring>({KVW("/"), KVW("\\\\"), KVW("\\/"), wstring(1, 0)});
  }
  wstring level() {
    wstring text;
    for (auto units = below(24) == 0 ? 200 : below(20); units > 0; --units) text += plain();
    if (below(6) != 0) return text;
    wchar const special[] = {'.',    ' ',    '/',    ':',    '*',    '?',    '<',    '>',    '"',    '|',    0,
                             0x1F,   0x80,   0xE4,   0xFF,   0x12F,  0x13A,  0x25C,  0x20AC, 0xD83D, 0xDE00, 0xF02E,
                             0xF03A, 0xF0E4, 0xF12E, 0xFF0E, 0xFF3C, 0x802E, 0x7FFF, 0xFFFF, '\\'};
    return text.insert(below(text.size() + 1), 1, special[below(sizeof special / sizeof *special)]);
  }
  wchar plain() {
    wchar const unit = static_cast<wchar>(0x21 + below(0x5F));
    return wstring(KVW("\\/:*?<>\"|")).find(unit) == wstring::npos && (unit != '.' || below(8) == 0) ? unit : KVW('a');
  }
  template <class T>
  T one(std::vector<T> const& choices) {
    return choices[below(choices.size())];
  }
  std::size_t below(std::size_t end) { return random_() % end; }

  std::mt19937 random_{1};
};

TEST(PathMapping, PlainTextsMapAsLevelByLevel) {
  EnvironmentVariable const drives("KVBASE_DRIVES", "/drives");
  RandomPaths random;
  int found = 0;
  for (int i = 0; i < 5000; ++i) {
    wstring const text = random.next();
    std::string const expected =
        resultOf([&](auto& path) { return platform::mapPathByLevels(text.data(), text.size(), path); });
    EXPECT_EQ(resultOf([&](auto& path) { return platform::mapPath(text.data(), text.size(), path); }), expected)
        << narrow(text);
    wstring const front = text.c_str();
    std::string const expectedFront =
        resultOf([&](auto& path) { return platform::mapPathByLevels(front.data(), front.size(), path); });
    EXPECT_EQ(resultOf([&](auto& path) { return platform::mapPath(text.c_str(), path); }), expectedFront)
        << narrow(front);
    found += expected.find("error") != 0;
  }
  EXPECT_GT(found, 1000);
}

// Each unit at each place of a name, so at each place of a vector.
TEST(PathMapping, EachUnitMapsAsLevelByLevelAtEachPlace) {
  wstring const whole = KVW("\\folder\\with\\a.name\\of.some.length.dat");
  for (unsigned int unit = 0; unit < 0x10000; unit += unit < 0x200 ? 1 : 0x1F) {
    for (std::size_t at = 0; at < (unit < 0x200 ? whole.size() : 3); ++at) {
      wstring text = whole;
      text[at] = static_cast<wchar>(unit);
      ASSERT_EQ(resultOf([&](auto& path) { return platform::mapPath(text.data(), text.size(), path); }),
                resultOf([&](auto& path) { return platform::mapPathByLevels(text.data(), text.size(), path); }))
          << unit << " at " << at;
    }
  }
}

TEST(PathMapping, TextsOfEachLengthMapAsLevelByLevel) {
  wstring text = KVW("\\");
  for (int i = 0; i < 600; ++i) {
    text += i % 9 == 8 ? KVW('\\') : KVW('n');
    ASSERT_EQ(resultOf([&](auto& path) { return platform::mapPath(text.c_str(), path); }),
              resultOf([&](auto& path) { return platform::mapPathByLevels(text.data(), text.size(), path); }))
        << text.size();
  }
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
  EXPECT_FALSE(exists(KVW("\\\\?\\C:sub\\file.txt"))) << "a verbatim path is absolute";
  EXPECT_EQ(directoryOfDrive('D'), "unchanged");
  EXPECT_EQ(directoryOfDrive('A' - 1), "unchanged");
  EXPECT_EQ(directoryOfDrive('Z' + 1), "unchanged");
}

TEST_F(DrivesTest, MayBeTheWholeSystem) {
  fs::create_directory_symlink("/", folder_.path("drives/z:"));
  CurrentPath const current(folder_.path("disk"));
  EXPECT_EQ(directoryOfDrive('Z'), "Z:" + narrow(folder_.text(KVW("disk"))));
  EXPECT_TRUE(exists(KVW("Z:sub\\file.txt")));
}

TEST_F(DrivesTest, OfANeighbourWithALongerNameIsNotBelow) {
  folder_.makeFolder("disk22");
  CurrentPath const current(folder_.path("disk22"));
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
