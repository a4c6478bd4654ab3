// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/locale/environment_languages.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "kvbase/platform/linux/locale/locale_name.h"
#include "tests/platform/linux/environment_variable.h"
#include "tests/platform/linux/files/file_support.h"
#include "tests/platform/linux/open_descriptors.h"
#include "tests/support/skip.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

// One environment, null where a variable is not set, and the languages that follow from it.
struct EnvironmentRow {
  char const* test;
  char const* language;
  char const* all;
  char const* messages;
  char const* time;
  char const* lang;
  unsigned int ui;
  unsigned int formats;
};

class EnvironmentLanguages : public ::testing::TestWithParam<EnvironmentRow> {
 protected:
  EnvironmentVariable language_{"LANGUAGE", GetParam().language};
  EnvironmentVariable all_{"LC_ALL", GetParam().all};
  EnvironmentVariable messages_{"LC_MESSAGES", GetParam().messages};
  EnvironmentVariable time_{"LC_TIME", GetParam().time};
  EnvironmentVariable lang_{"LANG", GetParam().lang};
};

TEST_P(EnvironmentLanguages, AreThoseOfTheUser) {
  EXPECT_EQ(platform::userUiLanguageOfEnvironment(), GetParam().ui);
  EXPECT_EQ(platform::userLanguageOfEnvironment(), GetParam().formats);
}

std::string const kOverlong(100000, 'd');
std::string const kOverlongCharset = "de_DE." + kOverlong;

EnvironmentRow const kEnvironments[] = {
    {"NothingIsEnglish", nullptr, nullptr, nullptr, nullptr, nullptr, 1033, 1033},
    {"LangAlone", nullptr, nullptr, nullptr, nullptr, "de_DE.UTF-8", 1031, 1031},
    {"MessagesBeforeLang", nullptr, nullptr, "fr_FR", nullptr, "de_DE", 1036, 1031},
    {"TimeBeforeLang", nullptr, nullptr, nullptr, "fr_FR", "de_DE", 1031, 1036},
    {"AllBeforeEachOther", nullptr, "ja_JP", "fr_FR", "it_IT", "de_DE", 1041, 1041},
    {"LanguageBeforeAll", "it_IT", "ja_JP", "fr_FR", nullptr, "de_DE", 1040, 1041},
    {"LanguageIsOnlyAboutTexts", "it", nullptr, nullptr, nullptr, "de_DE", 1040, 1031},
    {"OnlyTheFirstEntryOfLanguage", "de_AT:fr:en", nullptr, nullptr, nullptr, "ja_JP", 3079, 1041},
    {"LanguageWithoutLocaleIsIgnored", "de", nullptr, nullptr, nullptr, nullptr, 1033, 1033},
    {"LanguageInLocaleCIsIgnored", "de", "C", nullptr, nullptr, "fr_FR", 1033, 1033},
    {"LanguageInLocalePosixIsIgnored", "de", nullptr, "POSIX", nullptr, "fr_FR", 1033, 1036},
    {"LanguageInLocaleCOfUtf8IsIgnored", "de", nullptr, nullptr, nullptr, "C.UTF-8", 1033, 1033},
    {"LanguageIsIgnoredIfTheFirstThatIsNotEmptyIsC", "de", "", "", nullptr, "C", 1033, 1033},
    {"LanguageCountsIfOnlyTheTimeIsC", "de", nullptr, nullptr, "C", "fr_FR", 1031, 1033},
    {"LocaleCIsEnglish", nullptr, "C", nullptr, nullptr, "de_DE", 1033, 1033},
    {"EmptyIsNotSet", "", "", "", "", "de_DE", 1031, 1031},
    {"AllEmptyIsEnglish", "", "", "", "", "", 1033, 1033},
    {"EmptyFirstEntryOfLanguage", ":fr", nullptr, nullptr, nullptr, "de_DE", 1031, 1031},
    {"UnknownLanguagePassesOn", "tlh:fr", "xx_YY", "tlh", "tlh", "de_DE", 1031, 1031},
    {"OverlongPassesOn", kOverlong.c_str(), kOverlong.c_str(), kOverlongCharset.c_str(), kOverlong.c_str(), "de_DE",
     1031, 1031},
    {"NoUtf8PassesOn", "\xFF\xFE", "de\xC3", "\x80", "de_\xE4", "fr_FR", 1036, 1036},
    {"GarbagePassesOn", "/../..", "%s%s%n", "de DE", "$LANG", "fr_FR", 1036, 1036},
    {"OnlyGarbageIsEnglish", "::::", "====", "\x01", "@", ".", 1033, 1033},
    {"LongListOfLanguages",
     "fr:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:"
     "de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de:de",
     nullptr, nullptr, nullptr, "de_DE", 1036, 1031},
};
INSTANTIATE_TEST_SUITE_P(Environments, EnvironmentLanguages, ::testing::ValuesIn(kEnvironments),
                         [](auto const& row) { return row.param.test; });

TEST(SystemLanguage, ComesFromTheVariableBeforeAnyFile) {
  EnvironmentVariable const system("KVBASE_SYSTEM_LANG", "ja_JP.UTF-8");
  EXPECT_EQ(platform::systemLanguageOfEnvironment(), 1041);
}

TEST(SystemLanguage, IsThatOfTheFilesOrEnglish) {
  for (char const* const value : {static_cast<char const*>(nullptr), "", "garbage", "\xFF"}) {
    EnvironmentVariable const system("KVBASE_SYSTEM_LANG", value);
    unsigned int expected = platform::languageOfLocaleFile("/etc/locale.conf");
    if (expected == platform::kNoLanguage) expected = platform::languageOfLocaleFile("/etc/default/locale");
    if (expected == platform::kNoLanguage) expected = 1033;
    EXPECT_EQ(platform::systemLanguageOfEnvironment(), expected);
  }
}

TEST(SystemLanguage, IsThatOfTheFirstFileThatNamesOne) {
  bool const permitted = inChildIfPermitted([] {
    if (!mountPrivately("/etc", "size=1m")) return false;
    EnvironmentVariable const system("KVBASE_SYSTEM_LANG", nullptr);
    EXPECT_EQ(platform::systemLanguageOfEnvironment(), 1033);
    std::filesystem::create_directory("/etc/default");
    std::ofstream("/etc/default/locale") << "LANG=de_DE\n";
    EXPECT_EQ(platform::systemLanguageOfEnvironment(), 1031);
    std::ofstream("/etc/locale.conf") << "LANG=fr_FR\n";
    EXPECT_EQ(platform::systemLanguageOfEnvironment(), 1036);
    std::ofstream("/etc/locale.conf") << "LANG=tlh\n";
    EXPECT_EQ(platform::systemLanguageOfEnvironment(), 1031);
    return true;
  });
  KVBASE_SKIP_UNLESS(permitted, KVBASE_MOUNT_RIGHT);
}

TEST(SystemLanguage, DoesNotFollowTheUser) {
  EnvironmentVariable const system("KVBASE_SYSTEM_LANG", "fr_FR");
  EnvironmentVariable const user("LC_ALL", "de_DE");
  EXPECT_EQ(platform::systemLanguageOfEnvironment(), 1036);
  EXPECT_EQ(platform::userLanguageOfEnvironment(), 1031);
}

struct FileRow {
  char const* test;
  std::string bytes;
  unsigned int language;
};

class LocaleFile : public ::testing::TestWithParam<FileRow> {};

TEST_P(LocaleFile, GivesTheLanguage) {
  TempFolder const folder;
  folder.write("locale", GetParam().bytes);
  EXPECT_EQ(platform::languageOfLocaleFile(folder.path("locale").c_str()), GetParam().language);
}

FileRow const kFiles[] = {
    {"Plain", "LANG=de_DE.UTF-8\n", 1031},
    {"WithoutLineEnd", "LANG=de_DE.UTF-8", 1031},
    {"LineEndsOfWindows", "LANG=de_DE.UTF-8\r\nLC_TIME=C\r\n", 1031},
    {"DoubleQuotes", "LANG=\"de_DE.UTF-8\"\n", 1031},
    {"SingleQuotes", "LANG='de_DE'\n", 1031},
    {"BlanksAround", " \tLANG=de_DE \t\n", 1031},
    {"BehindOthers", "# comment\n\nLC_ALL=C\nLANGUAGE=fr\nLANG=de_DE\nLC_TIME=en_GB\n", 1031},
    {"LastOneCounts", "LANG=fr_FR\nLANG=de_DE\n", 1031},
    {"LastOneCountsThoughUnknown", "LANG=fr_FR\nLANG=tlh\n", 0},
    {"LocaleC", "LANG=C.UTF-8\n", 1033},
    {"Empty", "", 0},
    {"LineEndsOnly", "\n\n\n", 0},
    {"EmptyValue", "LANG=\n", 0},
    {"OnlyAQuote", "LANG=\"\n", 0},
    {"EmptyQuotes", "LANG=\"\"\n", 0},
    {"UnequalQuotes", "LANG=\"de_DE'\n", 0},
    {"Comment", "#LANG=de_DE\n", 0},
    {"OtherNameThatEndsAlike", "XLANG=de_DE\n", 0},
    {"OtherNameThatStartsAlike", "LANGUAGE=de_DE\n", 0},
    {"BlankBeforeTheSign", "LANG =de_DE\n", 0},
    {"NameWithoutSign", "LANG", 0},
    {"NoUtf8", "LANG=\xFF\xFE\n", 0},
    {"NulBytes", std::string("LANG=de\0DE\n", 11), 0},
    {"LongestFile", std::string(65536 - 10, '\n') + "LANG=de_DE", 1031},
    {"LongerFile", std::string(65536 - 9, '\n') + "LANG=de_DE", 0},
};
INSTANTIATE_TEST_SUITE_P(Files, LocaleFile, ::testing::ValuesIn(kFiles),
                         [](auto const& row) { return row.param.test; });

TEST(LocaleFileKind, OnlyAPlainFileIsRead) {
  TempFolder const folder;
  folder.write("locale", "LANG=de_DE");
  std::filesystem::create_symlink("locale", folder.path("link"));
  folder.makeFolder("folder");
  ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
  std::size_t const descriptors = openDescriptors();
  EXPECT_EQ(platform::languageOfLocaleFile(folder.path("link").c_str()), 1031);
  EXPECT_EQ(platform::languageOfLocaleFile(folder.path("missing").c_str()), 0);
  EXPECT_EQ(platform::languageOfLocaleFile(folder.path("folder").c_str()), 0);
  EXPECT_EQ(platform::languageOfLocaleFile(folder.path("pipe").c_str()), 0) << "and it does not wait for a writer";
  EXPECT_EQ(platform::languageOfLocaleFile("/dev/zero"), 0);
  EXPECT_EQ(openDescriptors(), descriptors);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
