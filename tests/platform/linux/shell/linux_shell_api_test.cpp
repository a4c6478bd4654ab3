// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <filesystem>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/scoped_handle.h"
#include "kvbase/platform/shell_api.h"
#include "tests/platform/linux/environment_variable.h"
#include "tests/platform/linux/files/file_support.h"
#include "tests/platform/linux/shell/fake_desktop.h"
#include "tests/platform/linux/shell/signal_action.h"
#include "tests/support/current_path.h"
#include "tests/support/temp_folder.h"
#include "tests/support/threads.h"

namespace KV_1_1 {
namespace testing {
namespace {

constexpr std::intptr_t kOpened = 42;

platform::ShellApi& shell() {
  return platform::nativeShell();
}

std::intptr_t open(wstring const& file) {
  return shell().open(nullptr, file.c_str(), nullptr, platform::kShowNormal);
}

struct ItemListTraits {
  using Value = platform::ItemList;
  static Value none() { return nullptr; }
  static void close(Value item) { shell().freeItemList(item); }
};
using Item = platform::ScopedHandle<ItemListTraits>;

Item itemAt(wstring const& path) {
  return Item(shell().itemListFromPath(path.c_str()));
}

std::string addressOf(Item const& item) {
  return item ? static_cast<char const*>(item.get()) : "null";
}

struct NameRow {
  char const* name;
  wchar const* text;
  char const* native;
  char const* coded;
};

void PrintTo(NameRow const& row, std::ostream* out) {
  *out << row.name;
}

NameRow const kNames[] = {
    {"plain", KVW("scan.txt"), "scan.txt", "scan.txt"},
    {"blanks", KVW(" a  b.txt"), " a  b.txt", "%20a%20%20b.txt"},
    {"quotes", KVW("it's \uF022x\uF022"), "it's \"x\"", "it%27s%20%22x%22"},
    {"script", KVW("$(exit 3) `x`; & # \uF03E"), "$(exit 3) `x`; & # >",
     "%24%28exit%203%29%20%60x%60%3B%20%26%20%23%20%3E"},
    {"newline", KVW("a\uF00Ab\uF00A"), "a\nb\n", "a%0Ab%0A"},
    {"dash", KVW("--help"), "--help", "--help"},
    {"colon", KVW("mailto\uF03Ax"), "mailto:x", "mailto%3Ax"},
    {"umlauts", KVW("\u00E4\u00D6\u20AC\U0001F600"), "\u00E4\u00D6\u20AC\U0001F600",
     "%C3%A4%C3%96%E2%82%AC%F0%9F%98%80"},
    {"percent", KVW("100%20%s%n"), "100%20%s%n", "100%2520%25s%25n"},
    {"comma", KVW("a,b~_-.c"), "a,b~_-.c", "a%2Cb~_-.c"},
    {"not_utf8", KVW("\uF0E4"), "\xE4", "%E4"},
};

class LinuxShellApiNames : public ::testing::TestWithParam<NameRow> {
 protected:
  FakeDesktop desktop_;
  TempFolder folder_;
};

INSTANTIATE_TEST_SUITE_P(Rows, LinuxShellApiNames, ::testing::ValuesIn(kNames),
                         [](auto const& row) { return std::string(row.param.name); });

TEST_P(LinuxShellApiNames, OpenAbsolute) {
  desktop_.install("xdg-open", kReport);
  folder_.write(GetParam().native);
  EXPECT_EQ(open(folder_.text(GetParam().text)), kOpened);
  EXPECT_EQ(desktop_.nextCall(), (Call{"xdg-open", folder_.path(GetParam().native)}));
}

TEST_P(LinuxShellApiNames, OpenVerbatim) {
  desktop_.install("xdg-open", kReport);
  folder_.write(GetParam().native);
  EXPECT_EQ(open(KVW("\\\\?\\") + folder_.text(GetParam().text)), kOpened);
  EXPECT_EQ(desktop_.nextCall(), (Call{"xdg-open", folder_.path(GetParam().native)}));
}

TEST_P(LinuxShellApiNames, OpenRelative) {
  desktop_.install("xdg-open", kReport);
  folder_.write(GetParam().native);
  CurrentPath const directory(folder_.path());
  EXPECT_EQ(open(GetParam().text), kOpened);
  EXPECT_EQ(desktop_.nextCall(), (Call{"xdg-open", std::string("./") + GetParam().native}));
}

TEST_P(LinuxShellApiNames, Show) {
  desktop_.install("dbus-send", std::string(kReport) + kAnswer);
  folder_.write(GetParam().native);
  Item const item = itemAt(folder_.text(GetParam().text));
  std::string const address = "file://" + folder_.path().string() + '/' + GetParam().coded;
  EXPECT_EQ(addressOf(item), address);
  EXPECT_EQ(shell().showItem(item.get()), 0);
  EXPECT_EQ(desktop_.nextCall(),
            (Call{"dbus-send", "--session", "--print-reply", "--reply-timeout=5000",
                  "--dest=org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                  "org.freedesktop.FileManager1.ShowItems", "array:string:" + address, "string:"}));
}

class LinuxShellApiTest : public ::testing::Test {
 protected:
  LinuxShellApiTest() { folder_.write("a.txt"); }

  FakeDesktop desktop_;
  TempFolder folder_;
  wstring const file_ = folder_.text(KVW("a.txt"));
};

TEST_F(LinuxShellApiTest, OpensAddressesAsTheyStand) {
  desktop_.install("xdg-open", kReport);
  EXPECT_EQ(open(KVW("https://example.org/a b?x=%20&y='\u00E4\U0001F600'#z")), kOpened);
  EXPECT_EQ(desktop_.nextCall(), (Call{"xdg-open", "https://example.org/a b?x=%20&y='\u00E4\U0001F600'#z"}));
  EXPECT_EQ(open(KVW("mailto:a@example.org")), kOpened);
  EXPECT_EQ(desktop_.nextCall(), (Call{"xdg-open", "mailto:a@example.org"}));
  EXPECT_EQ(open(KVW("a1+-.:x\\y")), kOpened);
  EXPECT_EQ(desktop_.nextCall(), (Call{"xdg-open", "a1+-.:x\\y"}));
}

TEST_F(LinuxShellApiTest, OpensFolders) {
  desktop_.install("xdg-open", kReport);
  EXPECT_EQ(open(folder_.text() + KVW("\\")), kOpened);
  EXPECT_EQ(desktop_.nextCall(), (Call{"xdg-open", folder_.path().string() + '/'}));
}

TEST_F(LinuxShellApiTest, OpensOnDrives) {
  desktop_.install("xdg-open", kReport);
  TempFolder drives;
  std::filesystem::create_directory_symlink(folder_.path(), drives.path("c:"));
  EnvironmentVariable const variable("KVBASE_DRIVES", drives.path().c_str());
  EXPECT_EQ(open(KVW("C:\\a.txt")), kOpened);
  EXPECT_EQ(desktop_.nextCall(), (Call{"xdg-open", drives.path("c:/a.txt").string()}));
  EXPECT_EQ(open(KVW("D:\\a.txt")), platform::kPathNotFound);
}

TEST_F(LinuxShellApiTest, VerbDirectoryAndShowCountForNothing) {
  desktop_.install("xdg-open", kReport);
  EXPECT_EQ(shell().open(KVW("open"), file_.c_str(), KVW("%HOMEPATH%"), platform::kShowDefault), kOpened);
  EXPECT_EQ(desktop_.nextCall(), (Call{"xdg-open", folder_.path("a.txt")}));
}

TEST_F(LinuxShellApiTest, WhatIsNotThereIsNotOpened) {
  desktop_.install("xdg-open", kReport);
  EXPECT_EQ(shell().open(nullptr, nullptr, nullptr, platform::kShowNormal), platform::kFileNotFound);
  EXPECT_EQ(open(KVW("")), platform::kFileNotFound);
  EXPECT_EQ(open(folder_.text(KVW("missing"))), platform::kFileNotFound);
  EXPECT_EQ(open(folder_.text(KVW("missing\\a.txt"))), platform::kPathNotFound);
  EXPECT_EQ(open(folder_.text(KVW("a:b"))), platform::kFileNotFound);
  EXPECT_EQ(open(KVW("1a:b")), platform::kFileNotFound);
}

TEST_F(LinuxShellApiTest, WhatMayNotBeSeenIsNotOpened) {
  desktop_.install("xdg-open", kReport);
  folder_.write("closed/a.txt");
  ASSERT_EQ(chmod(folder_.path("closed").c_str(), 0), 0);
  wstring const file = folder_.text(KVW("closed\\a.txt"));
  inChild([&] {
    dropRights();
    EXPECT_EQ(open(file), platform::kAccessDenied);
  });
  chmod(folder_.path("closed").c_str(), 0755);
}

TEST_F(LinuxShellApiTest, WithoutToolNothingOpens) {
  EXPECT_EQ(open(file_), 31);
  EXPECT_EQ(open(KVW("https://example.org")), 31);
  Item const item = itemAt(file_);
  EXPECT_NE(shell().showItem(item.get()), 0);
  EXPECT_FALSE(hasChildren());
}

TEST_F(LinuxShellApiTest, ToolThatMayNotBeExecutedOpensNothing) {
  desktop_.install("xdg-open", kReport);
  EnvironmentVariable const path("PATH", folder_.path().c_str());
  folder_.write("xdg-open", "#!/bin/sh\n");
  std::filesystem::permissions(folder_.path("xdg-open"), std::filesystem::perms::owner_read);
  EXPECT_EQ(open(file_), 31);
}

TEST_F(LinuxShellApiTest, ToolThatRunsOnDoesNotHoldUp) {
  desktop_.install("xdg-open", std::string(kReport) + kWait + kReportEnd);
  EXPECT_EQ(open(file_), kOpened);
  EXPECT_EQ(desktop_.nextCall(), (Call{"xdg-open", folder_.path("a.txt")}));
  EXPECT_FALSE(hasChildren());
  desktop_.letGoOn();
  EXPECT_EQ(desktop_.nextCall(), Call{"end"});
  EXPECT_FALSE(hasChildren());
}

// The application may handle SIGCHLD and wait for its children in any way.
class LinuxShellApiSignals : public LinuxShellApiTest {
 protected:
  void runTools() {
    desktop_.install("xdg-open", kReport);
    desktop_.install("dbus-send", kReport);
    std::size_t const descriptors = openDescriptors();
    EXPECT_EQ(open(file_), kOpened);
    EXPECT_EQ(desktop_.nextCall().size(), 2u);
    EXPECT_EQ(shell().showItem(itemAt(file_).get()), 0);
    EXPECT_EQ(desktop_.nextCall().at(0), "dbus-send");
    EXPECT_EQ(desktop_.nextCall().at(0), "xdg-open");
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_FALSE(hasChildren());
  }

  static void count(int) { count_ = count_ + 1; }
  static volatile sig_atomic_t count_;
};

volatile sig_atomic_t LinuxShellApiSignals::count_ = 0;

TEST_F(LinuxShellApiSignals, ChildrenByDefault) {
  SignalAction const action(SIGCHLD, SIG_DFL);
  runTools();
}

TEST_F(LinuxShellApiSignals, ChildrenIgnored) {
  SignalAction const action(SIGCHLD, SIG_IGN);
  runTools();
}

// Three tools are started; signals that arrive together count once.
TEST_F(LinuxShellApiSignals, ApplicationIsToldOfTheProgramsThatStartTheTools) {
  count_ = 0;
  SignalAction const action(SIGCHLD, &count);
  runTools();
  EXPECT_GE(count_, 1);
  EXPECT_LE(count_, 3);
}

// Another thread waits for any child, so the library may not get the status of its own.
TEST_F(LinuxShellApiSignals, ChildrenCollectedByTheApplication) {
  std::atomic<bool> isDone{false};
  std::thread collector([&isDone] {
    while (!isDone) waitpid(-1, nullptr, WNOHANG);
  });
  runTools();
  isDone = true;
  collector.join();
}

TEST_F(LinuxShellApiTest, ThreadsDoNotDisturbEachOther) {
  desktop_.install("xdg-open", kReport);
  onThreads(4, [this](int) {
    for (int k = 0; k < 5; ++k) EXPECT_EQ(open(file_), kOpened);
  });
  for (int i = 0; i < 20; ++i) EXPECT_EQ(desktop_.nextCall(), (Call{"xdg-open", folder_.path("a.txt")}));
  EXPECT_FALSE(hasChildren());
}

TEST_F(LinuxShellApiTest, ItemsAreExistingAbsolutePaths) {
  EXPECT_EQ(addressOf(itemAt(KVW("\\"))), "file:///");
  EXPECT_EQ(addressOf(itemAt(folder_.text() + KVW("\\"))), "file://" + folder_.path().string() + '/');
  EXPECT_EQ(addressOf(itemAt(folder_.text(KVW("missing")))), "null");
  EXPECT_EQ(addressOf(itemAt(KVW(""))), "null");
  EXPECT_EQ(addressOf(Item(shell().itemListFromPath(nullptr))), "null");
  CurrentPath const directory(folder_.path());
  EXPECT_EQ(addressOf(itemAt(KVW("a.txt"))), "null");
  shell().freeItemList(nullptr);
}

TEST_F(LinuxShellApiTest, NoItemIsNotShown) {
  desktop_.install("dbus-send", kAnswer);
  EXPECT_NE(shell().showItem(nullptr), 0);
}

struct FallbackRow {
  char const* name;
  char const* fileBrowser;  // the script of dbus-send; null: there is none
};

class LinuxShellApiFallback : public LinuxShellApiTest, public ::testing::WithParamInterface<FallbackRow> {};

INSTANTIATE_TEST_SUITE_P(Rows, LinuxShellApiFallback,
                         ::testing::Values(FallbackRow{"no_tool", nullptr},
                                           FallbackRow{"tool_fails", "echo 'no file browser' >&2\nexit 1\n"}),
                         [](auto const& row) { return std::string(row.param.name); });

TEST_P(LinuxShellApiFallback, FolderIsOpened) {
  if (GetParam().fileBrowser != nullptr) desktop_.install("dbus-send", GetParam().fileBrowser);
  desktop_.install("xdg-open", kReport);
  folder_.makeFolder("a b/c");
  std::string const folder = "file://" + folder_.path().string();
  EXPECT_EQ(shell().showItem(itemAt(file_).get()), 0);
  EXPECT_EQ(desktop_.nextCall(), (Call{"xdg-open", folder + '/'}));
  EXPECT_EQ(shell().showItem(itemAt(folder_.text(KVW("a b\\c\\"))).get()), 0);
  EXPECT_EQ(desktop_.nextCall(), (Call{"xdg-open", folder + "/a%20b/"}));
  EXPECT_EQ(shell().showItem(itemAt(KVW("\\")).get()), 0);
  EXPECT_EQ(desktop_.nextCall(), (Call{"xdg-open", "file:///"}));
}

TEST_P(LinuxShellApiFallback, FailsWithoutProgramForTheFolder) {
  if (GetParam().fileBrowser != nullptr) desktop_.install("dbus-send", GetParam().fileBrowser);
  EXPECT_NE(shell().showItem(itemAt(file_).get()), 0);
}

struct CommonFilesRow {
  char const* name;
  char const* variable;
  char16_t const* expected;
};

class LinuxShellApiCommonFiles : public ::testing::TestWithParam<CommonFilesRow> {};

INSTANTIATE_TEST_SUITE_P(Rows, LinuxShellApiCommonFiles,
                         ::testing::Values(CommonFilesRow{"unset", nullptr, u"\\usr\\share"},
                                           CommonFilesRow{"empty", "", u"\\usr\\share"},
                                           CommonFilesRow{"another_folder", "\\opt\\shared\\", u"\\opt\\shared\\"},
                                           CommonFilesRow{"drive", "C:\\Common", u"C:\\Common"},
                                           CommonFilesRow{"utf8", "\\\xC3\xA4\xF0\x9F\x98\x80", u"\\\u00e4\U0001F600"},
                                           CommonFilesRow{"malformed", "\\\xFF", u"\\\uFFFD"}),
                         [](auto const& row) { return std::string(row.param.name); });

TEST_P(LinuxShellApiCommonFiles, AreWhereTheEnvironmentSays) {
  EnvironmentVariable const variable("KVBASE_COMMON_FILES", GetParam().variable);
  wstring folder;
  EXPECT_TRUE(shell().commonProgramFiles(folder));
  EXPECT_EQ(folder, GetParam().expected);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
