// SPDX-License-Identifier: MIT
//
// What this system's languages promise beyond the contract of both.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "kvbase/platform/linux/locale/language_table.h"
#include "kvbase/platform/locale_api.h"
#include "tests/platform/linux/environment_variable.h"
#include "tests/platform/linux/files/file_support.h"
#include "tests/platform/linux/open_descriptors.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

platform::LocaleApi& locales() {
  return platform::nativeLocales();
}

class LinuxLocaleApiTest : public ::testing::Test {
 protected:
  EnvironmentVariable language_{"LANGUAGE", "it_IT:de"};
  EnvironmentVariable all_{"LC_ALL", nullptr};
  EnvironmentVariable messages_{"LC_MESSAGES", "fr_FR.UTF-8"};
  EnvironmentVariable time_{"LC_TIME", "ja_JP.UTF-8"};
  EnvironmentVariable lang_{"LANG", "de_DE.UTF-8"};
  EnvironmentVariable system_{"KVBASE_SYSTEM_LANG", "ko_KR.UTF-8"};
};

TEST_F(LinuxLocaleApiTest, LanguagesComeFromTheEnvironmentAtEachCall) {
  EXPECT_EQ(locales().userUiLanguage(), 1040);
  EXPECT_EQ(locales().userLanguage(), 1041);
  EXPECT_EQ(locales().systemUiLanguage(), 1042);
  EXPECT_EQ(locales().systemLanguage(), 1042);
  EnvironmentVariable const all("LC_ALL", "C");
  EXPECT_EQ(locales().userUiLanguage(), 1033);
  EXPECT_EQ(locales().userLanguage(), 1033);
}

TEST_F(LinuxLocaleApiTest, ThreadKeepsTheLocaleThatItHasAskedFor) {
  std::thread([] {
    EXPECT_EQ(locales().threadLocale(), 1041u);
    EnvironmentVariable const time("LC_TIME", "fr_FR");
    EXPECT_EQ(locales().threadLocale(), 1041u);
    EXPECT_TRUE(locales().setThreadLocale(0x0400));
    EXPECT_EQ(locales().threadLocale(), 1036u) << "the user's choice is asked for anew";
  }).join();
}

TEST_F(LinuxLocaleApiTest, PlaceholdersFollowTheEnvironment) {
  std::thread([] {
    for (ulong32 const user : {0x0000, 0x0400, 0x0C00, 0x1000, 0x1400}) {
      EXPECT_TRUE(locales().setThreadLocale(user));
      EXPECT_EQ(locales().threadLocale(), 1041u) << user;
    }
    EXPECT_TRUE(locales().setThreadLocale(0x0800));
    EXPECT_EQ(locales().threadLocale(), 1042u);
  }).join();
}

TEST_F(LinuxLocaleApiTest, SortOrdersAreDropped) {
  std::thread([] {
    for (ulong32 sort = 0; sort < 16; ++sort) {
      EXPECT_TRUE(locales().setThreadLocale(sort << 16 | 1031));
      EXPECT_EQ(locales().threadLocale(), 1031u) << sort;
    }
  }).join();
}

TEST_F(LinuxLocaleApiTest, LocalesAreThoseOfTheTableInAscendingOrder) {
  std::vector<ulong32> expected;
  for (auto const* row = platform::languagesBegin(); row != platform::languagesEnd(); ++row) {
    if (!row->isNeutral()) expected.push_back(row->id);
  }
  auto const collect = [](ulong32 value, void* context) {
    static_cast<std::vector<ulong32>*>(context)->push_back(value);
    return true;
  };
  std::vector<ulong32> groups;
  std::vector<ulong32> found;
  EXPECT_TRUE(locales().enumerateLanguageGroups(collect, &groups));
  EXPECT_EQ(groups, std::vector<ulong32>{1});
  EXPECT_TRUE(locales().enumerateLocales(1, collect, &found));
  EXPECT_EQ(found, expected);
  auto const stop = [](ulong32, void*) { return false; };
  EXPECT_TRUE(locales().enumerateLocales(1, stop, nullptr)) << "to end it early is no failure";
  EXPECT_FALSE(locales().enumerateLocales(2, collect, &found));
  EXPECT_EQ(found, expected);
}

TEST_F(LinuxLocaleApiTest, IdsWithoutAnAbbreviationOfTheirOwnAreUnknown) {
  wstring abbreviation = KVW("unchanged");
  for (ulong32 const id : {0x0433, 0x0476, 0x0466, 0x3809}) {
    EXPECT_FALSE(locales().languageAbbreviation(id, abbreviation)) << id;
    EXPECT_FALSE(locales().setThreadLocale(id)) << id;
  }
  EXPECT_EQ(abbreviation, KVW("unchanged"));
}

TEST_F(LinuxLocaleApiTest, FailedAllocationsOfTheCommandLineLeaveTheArguments) {
  std::size_t const descriptors = openDescriptors();
  for (AllocationSweep sweep; sweep.next();) {
    std::vector<wstring> arguments(1);
    sweep.run([&] { locales().commandLine(arguments); });
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_EQ(arguments == std::vector<wstring>(1), sweep.failed());
  }
}

TEST_F(LinuxLocaleApiTest, WithoutTheFileOfTheCommandLineThereIsNone) {
  inChild([] {
    rlimit const none = {0, 0};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    std::vector<wstring> arguments = {KVW("unchanged")};
    EXPECT_FALSE(locales().commandLine(arguments));
    EXPECT_EQ(arguments, std::vector<wstring>{KVW("unchanged")});
  });
}

// The arguments that a process started with `arguments` reads, as UTF-8, one in a line. The process is a copy of this
// one under other arguments, for which it runs the test ReportsItsArguments below.
std::string argumentsSeenBy(std::vector<std::string> const& arguments) {
  int ends[2];
  if (pipe(ends) != 0) return "no pipe";
  pid_t const child = fork();
  if (child == 0) {
    dup2(ends[1], 3);
    if (ends[0] != 3) close(ends[0]);
    std::vector<char*> pointers;
    for (std::string const& argument : arguments) pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    setenv("KVBASE_REPORT_ARGUMENTS", "3", 1);
    setenv("GTEST_FILTER", "LinuxLocaleApiChild.ReportsItsArguments", 1);
    unsetenv("GTEST_OUTPUT");
    dup2(open("/dev/null", O_WRONLY), 1);
    execv("/proc/self/exe", pointers.data());
    _exit(127);
  }
  close(ends[1]);
  std::string seen;
  char buffer[65536];
  for (ssize_t n = 0; (n = read(ends[0], buffer, sizeof buffer)) > 0;) seen.append(buffer, static_cast<std::size_t>(n));
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  return seen;
}

TEST(LinuxLocaleApiChild, ReportsItsArguments) {
  char const* const descriptor = getenv("KVBASE_REPORT_ARGUMENTS");
  if (descriptor == nullptr) return;
  std::vector<wstring> arguments;
  std::string report = locales().commandLine(arguments) ? "" : "none";
  for (wstring const& argument : arguments) report += narrow(argument) + '\n';
  for (std::size_t sent = 0; sent < report.size();) {
    ssize_t const n = write(atoi(descriptor), report.data() + sent, report.size() - sent);
    ASSERT_GT(n, 0);
    sent += static_cast<std::size_t>(n);
  }
}

TEST(LinuxLocaleApiCommandLineTest, ArgumentsAreReadAsUtf8) {
  EXPECT_EQ(argumentsSeenBy({"tool", "-lang=deu"}), "tool\n-lang=deu\n");
  EXPECT_EQ(argumentsSeenBy({"t\xC3\xBC", "\xE6\x97\xA5", "\xF0\x9F\x98\x80"}),
            "t\xC3\xBC\n\xE6\x97\xA5\n\xF0\x9F\x98\x80\n");
  EXPECT_EQ(argumentsSeenBy({"tool", "a\xFFz"}), "tool\na\xEF\xBF\xBDz\n") << "what is no UTF-8 is replaced";
}

TEST(LinuxLocaleApiCommandLineTest, EmptyArgumentsCount) {
  EXPECT_EQ(argumentsSeenBy({"tool", "", "x", ""}), "tool\n\nx\n\n");
  EXPECT_EQ(argumentsSeenBy({""}), "\n");
}

TEST(LinuxLocaleApiCommandLineTest, LongCommandLinesAreReadWhole) {
  std::string const argument(100000, 'x');
  EXPECT_EQ(argumentsSeenBy({"tool", argument, "end"}), "tool\n" + argument + "\nend\n");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
