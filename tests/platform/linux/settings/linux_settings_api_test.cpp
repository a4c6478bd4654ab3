// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <new>
#include <string>
#include <vector>

#include "kvbase/platform/settings_api.h"
#include "tests/platform/linux/environment_variable.h"
#include "tests/platform/linux/files/file_support.h"
#include "tests/platform/linux/open_descriptors.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/current_path.h"
#include "tests/support/narrow_text.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

platform::SettingsApi& settings() {
  return platform::nativeSettings();
}

// A configuration folder with the key Software\VOLQ in it.
class LinuxSettingsApiTest : public ::testing::Test {
 protected:
  LinuxSettingsApiTest() : configuration_("XDG_CONFIG_HOME", folder_.path().c_str()) { folder_.makeFolder(kKey); }

  static constexpr char kRoot[] = "kvbase/registry/HKEY_CURRENT_USER";
  static constexpr char kKey[] = "kvbase/registry/HKEY_CURRENT_USER/Software/VOLQ";

  std::string valuePath(std::string const& name) const { return std::string(kKey) + '/' + name; }
  void writeValue(std::string const& bytes) const { folder_.write(valuePath("GUILanguage"), bytes); }

  static bool opens(wchar const* name) {
    platform::SettingsKey const key = settings().openKey(settings().currentUser(), name);
    if (key == nullptr) return false;
    settings().closeKey(key);
    return true;
  }

  // "<type>:<size>:<text with its terminator shown as $>", or "none", of a value read into a room of `room` bytes.
  static std::string read(wchar const* name, ulong32 room = 8) {
    platform::SettingsKey const key = settings().openKey(settings().currentUser(), KVW("Software\\VOLQ"));
    if (key == nullptr) return "no key";
    std::vector<wchar> data(room / sizeof(wchar) + 1, KVW('#'));
    ulong32 type = 0;
    ulong32 size = room;
    bool const isRead = settings().readValue(key, name, type, data.data(), size);
    settings().closeKey(key);
    EXPECT_EQ(data.back(), KVW('#')) << "nothing is written beyond the room";
    if (!isRead) return "none";
    wstring text(data.data(), size / sizeof(wchar));
    for (wchar& unit : text) {
      if (unit == 0) unit = KVW('$');
    }
    return std::to_string(type) + ":" + std::to_string(size) + ":" + narrow(text);
  }
  static std::string read() { return read(KVW("GUILanguage")); }

  TempFolder folder_;
  EnvironmentVariable configuration_;
};

struct ValueRow {
  char const* test;
  std::string bytes;
  ulong32 room;
  char const* read;
};

class LinuxSettingsValue : public LinuxSettingsApiTest, public ::testing::WithParamInterface<ValueRow> {};

TEST_P(LinuxSettingsValue, IsTextWithATerminator) {
  writeValue(GetParam().bytes);
  EXPECT_EQ(read(KVW("GUILanguage"), GetParam().room), GetParam().read);
}

ValueRow const kValues[] = {
    {"ThreeLetters", "deu", 8, "1:8:deu$"},
    {"LineEndIsIgnored", "deu\n", 8, "1:8:deu$"},
    {"LineEndOfWindowsIsIgnored", "deu\r\n", 8, "1:8:deu$"},
    {"OnlyOneLineEndIsIgnored", "de\n\n", 8, "1:8:de\n$"},
    {"ReturnAloneIsPartOfTheText", "de\r", 8, "1:8:de\r$"},
    {"SecondLineIsPartOfTheText", "d\ne\n", 8, "1:8:d\ne$"},
    {"Shorter", "de", 8, "1:6:de$"},
    {"Empty", "", 8, "1:2:$"},
    {"LineEndOnly", "\n", 8, "1:2:$"},
    {"LineEndOfWindowsOnly", "\r\n", 8, "1:2:$"},
    {"FourLettersDoNotFit", "fran", 8, "none"},
    {"FourLettersFitIntoMoreRoom", "fran", 10, "1:10:fran$"},
    {"OddRoomIsRoundedDown", "fran", 9, "none"},
    {"OddRoomThatSuffices", "deu", 9, "1:8:deu$"},
    {"NoRoom", "", 0, "none"},
    {"RoomOfOneByte", "", 1, "none"},
    {"RoomOfTheTerminator", "", 2, "1:2:$"},
    {"ThreeCharactersOfThreeBytes", "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\r\n", 8,
     "1:8:\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E$"},
    {"PairIsTwoUnits", "x\xF0\x9F\x98\x80", 8, "1:8:x\xF0\x9F\x98\x80$"},
    {"TwoPairsDoNotFit", "\xF0\x9F\x98\x80\xF0\x9F\x98\x80", 8, "none"},
    {"NoUtf8IsReplaced", "d\xFFu", 8, "1:8:d\xEF\xBF\xBDu$"},
    {"InnerNulIsKept", std::string("d\0u", 3), 8, "1:8:d$u$"},
    {"LongerThanAnyTextThatFits", std::string(100000, 'x'), 8, "none"},
    {"LongText", std::string(1000, 'x'), 2000, "none"},
};
INSTANTIATE_TEST_SUITE_P(Values, LinuxSettingsValue, ::testing::ValuesIn(kValues),
                         [](auto const& row) { return row.param.test; });

TEST_F(LinuxSettingsApiTest, LongTextsAreReadWhole) {
  std::string const text(100000, 'x');
  writeValue(text + '\n');
  EXPECT_EQ(read(KVW("GUILanguage"), 200002), "1:200002:" + text + "$");
}

TEST_F(LinuxSettingsApiTest, TooLongAValueTellsItsSizeAndLeavesTheData) {
  writeValue("fran");
  platform::SettingsKey const key = settings().openKey(settings().currentUser(), KVW("Software\\VOLQ"));
  ASSERT_NE(key, nullptr);
  wchar data[4] = {KVW('#'), KVW('#'), KVW('#'), KVW('#')};
  ulong32 type = 0;
  ulong32 size = sizeof data;
  EXPECT_FALSE(settings().readValue(key, KVW("GUILanguage"), type, data, size));
  EXPECT_EQ(type, platform::kTextValue);
  EXPECT_EQ(size, 10u);
  EXPECT_EQ(wstring(data, 4), KVW("####"));
  settings().closeKey(key);
}

TEST_F(LinuxSettingsApiTest, SparseFileOfManyGigabytesIsNotRead) {
  writeValue("");
  std::filesystem::resize_file(folder_.path(valuePath("GUILanguage")), 1ull << 40);
  EXPECT_EQ(read(), "none");
  EXPECT_EQ(read(KVW("GUILanguage"), 1 << 20), "none");
}

TEST_F(LinuxSettingsApiTest, OnlyAPlainFileIsAValue) {
  std::size_t const descriptors = openDescriptors();
  EXPECT_EQ(read(), "none") << "missing";
  folder_.makeFolder(valuePath("folder"));
  EXPECT_EQ(read(KVW("folder")), "none");
  ASSERT_EQ(mkfifo(folder_.path(valuePath("pipe")).c_str(), 0600), 0);
  EXPECT_EQ(read(KVW("pipe")), "none") << "and it does not wait for a writer";
  std::filesystem::create_symlink("/dev/zero", folder_.path(valuePath("device")));
  EXPECT_EQ(read(KVW("device")), "none");
  std::filesystem::create_symlink("nowhere", folder_.path(valuePath("broken")));
  EXPECT_EQ(read(KVW("broken")), "none");
  std::filesystem::create_symlink("circle", folder_.path(valuePath("circle")));
  EXPECT_EQ(read(KVW("circle")), "none");
  folder_.write("elsewhere", "deu");
  std::filesystem::create_symlink(folder_.path("elsewhere"), folder_.path(valuePath("link")));
  EXPECT_EQ(read(KVW("link")), "1:8:deu$") << "a link to a plain file is one";
  EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(LinuxSettingsApiTest, KeysAreFolders) {
  EXPECT_TRUE(opens(KVW("Software")));
  EXPECT_TRUE(opens(KVW("Software\\VOLQ")));
  EXPECT_TRUE(opens(KVW("Software\\VOLQ\\"))) << "a separator at the end is ignored";
  EXPECT_TRUE(opens(KVW(""))) << "the key itself";
  EXPECT_FALSE(opens(KVW("Software\\Other")));
  EXPECT_FALSE(opens(KVW("software"))) << "names are case-sensitive like those of the system";
  writeValue("deu");
  EXPECT_FALSE(opens(KVW("Software\\VOLQ\\GUILanguage"))) << "a value is no key";
}

TEST_F(LinuxSettingsApiTest, NamesThatLeadElsewhereAreNoKeys) {
  folder_.makeFolder("kvbase/registry/Other");
  for (wchar const* const name : {KVW(".."), KVW("."), KVW("..\\Other"), KVW("Software\\..\\Software"),
                                  KVW("\\Software"), KVW("Software\\\\VOLQ"), KVW("/"), KVW("../Other"),
                                  KVW("Software/VOLQ"), KVW("\\"), KVW("a:b"), KVW("*"), KVW("\xD800")}) {
    EXPECT_FALSE(opens(name)) << narrow(name);
  }
  EXPECT_EQ(read(KVW("..")), "none");
  EXPECT_EQ(read(KVW("..\\VOLQ")), "none");
  EXPECT_EQ(read(KVW("")), "none");
  EXPECT_FALSE(opens(wstring(300, KVW('x')).c_str())) << "longer than a name can be";
  EXPECT_FALSE(opens(wstring(100000, KVW('x')).c_str()));
}

TEST_F(LinuxSettingsApiTest, NamesAreMappedLikeThoseOfFiles) {
  folder_.write(std::string(kKey) + "/a:b/v?", "deu");
  platform::SettingsKey const key =
      settings().openKey(settings().currentUser(), KVW("Software\\VOLQ\\a\xF03A") KVW("b"));
  ASSERT_NE(key, nullptr);
  wchar data[4];
  ulong32 type = 0;
  ulong32 size = sizeof data;
  EXPECT_TRUE(settings().readValue(key, KVW("v\xF03F"), type, data, size));
  settings().closeKey(key);
  folder_.makeFolder(std::string(kKey) + "/\xC3\xBC.x");
  EXPECT_TRUE(opens(KVW("Software\\VOLQ\\\u00FC.x")));
}

TEST_F(LinuxSettingsApiTest, OpenKeysStayWhateverHappensToTheirPath) {
  writeValue("deu");
  platform::SettingsKey const key = settings().openKey(settings().currentUser(), KVW("Software\\VOLQ"));
  ASSERT_NE(key, nullptr);
  std::filesystem::rename(folder_.path("kvbase"), folder_.path("moved"));
  CurrentPath const current(folder_.path("moved"));
  wchar data[4];
  ulong32 type = 0;
  ulong32 size = sizeof data;
  EXPECT_TRUE(settings().readValue(key, KVW("GUILanguage"), type, data, size));
  EXPECT_EQ(wstring(data), KVW("deu"));
  settings().closeKey(key);
  EXPECT_FALSE(opens(KVW("Software")));
}

TEST_F(LinuxSettingsApiTest, RootHasKeysAndValuesButIsNeverOpen) {
  folder_.write(std::string(kRoot) + "/value", "deu");
  std::size_t const descriptors = openDescriptors();
  platform::SettingsKey const root = settings().currentUser();
  EXPECT_NE(root, nullptr);
  EXPECT_EQ(root, settings().currentUser());
  wchar data[4];
  ulong32 type = 0;
  ulong32 size = sizeof data;
  EXPECT_TRUE(settings().readValue(root, KVW("value"), type, data, size));
  settings().closeKey(root);
  EXPECT_TRUE(opens(KVW("Software"))) << "closing the root does nothing";
  EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(LinuxSettingsApiTest, DescriptorZeroIsAKey) {
  writeValue("deu");
  int const saved = dup(0);
  close(0);
  platform::SettingsKey const key = settings().openKey(settings().currentUser(), KVW("Software\\VOLQ"));
  EXPECT_NE(key, nullptr);
  wchar data[4] = {};
  ulong32 type = 0;
  ulong32 size = sizeof data;
  EXPECT_TRUE(settings().readValue(key, KVW("GUILanguage"), type, data, size));
  settings().closeKey(key);
  if (saved >= 0) {
    EXPECT_EQ(dup2(saved, 0), 0);
    close(saved);
  }
}

TEST_F(LinuxSettingsApiTest, OpenKeysAreNotInherited) {
  std::size_t const count = inheritedDescriptors();
  platform::SettingsKey const key = settings().openKey(settings().currentUser(), KVW("Software"));
  EXPECT_NE(key, nullptr);
  EXPECT_EQ(inheritedDescriptors(), count);
  settings().closeKey(key);
}

TEST_F(LinuxSettingsApiTest, RightsToListAndToReadAreThoseOfTheSystem) {
  writeValue("deu");
  folder_.write(valuePath("secret"), "deu");
  std::filesystem::permissions(folder_.path(valuePath("secret")), std::filesystem::perms::none);
  std::filesystem::permissions(folder_.path(kKey), std::filesystem::perms::owner_exec);
  inChild([&] {
    dropRights();
    EXPECT_EQ(read(), "1:8:deu$") << "a folder need not be listed to be a key";
    EXPECT_EQ(read(KVW("secret")), "none");
  });
}

TEST_F(LinuxSettingsApiTest, ConfigurationFolderIsThatOfTheUser) {
  folder_.makeFolder(".config/kvbase/registry/HKEY_CURRENT_USER/OfHome");
  EnvironmentVariable const home("HOME", folder_.path().c_str());
  EXPECT_FALSE(opens(KVW("OfHome")));
  for (char const* const value : {static_cast<char const*>(nullptr), "", "relative/folder"}) {
    EnvironmentVariable const configuration("XDG_CONFIG_HOME", value);
    EXPECT_TRUE(opens(KVW("OfHome")));
    EnvironmentVariable const homeless("HOME", nullptr);
    EXPECT_FALSE(opens(KVW("OfHome")));
    EXPECT_FALSE(opens(KVW("")));
  }
}

TEST_F(LinuxSettingsApiTest, FailedAllocationsLeaveNothingBehind) {
  std::string const text(5000, 'x');
  writeValue(text);
  wstring deep = KVW("Software\\VOLQ");
  for (int i = 0; i < 300; ++i) deep += KVW("\\x");
  std::vector<wchar> data(text.size() + 1);
  std::size_t const descriptors = openDescriptors();
  for (AllocationSweep sweep(3); sweep.next();) {
    platform::SettingsKey key = nullptr;
    sweep.run([&] {
      settings().openKey(settings().currentUser(), deep.c_str());
      key = settings().openKey(settings().currentUser(), KVW("Software\\VOLQ"));
      ulong32 type = 0;
      ulong32 size = static_cast<ulong32>(data.size() * sizeof(wchar));
      settings().readValue(key, KVW("GUILanguage"), type, data.data(), size);
    });
    if (key != nullptr) settings().closeKey(key);
    EXPECT_EQ(openDescriptors(), descriptors);
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
