// SPDX-License-Identifier: MIT
//
// What a program asks about itself, for the native backend of either system.
#include "kvbase/platform/debug_api.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "kvbase/platform/debug_help.h"
#include "kvbase/platform/module_api.h"
#include "tests/support/current_path.h"
#include "tests/support/module_files.h"
#include "tests/support/narrow_text.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

platform::DebugApi& debugging() {
  return platform::nativeDebug();
}

// Gives the variable KVBASE_TEST_VARIABLE a value for a scope. An empty one takes it away on Windows, not on Linux.
class TestVariable {
 public:
  explicit TestVariable(std::string const& value) : text_("KVBASE_TEST_VARIABLE=" + value) { putenv(text_.data()); }
  ~TestVariable() {
    // Linux keeps the text itself, not a copy.
    static char empty[] = "KVBASE_TEST_VARIABLE=";
    putenv(empty);
  }
  TestVariable(TestVariable const&) = delete;
  TestVariable& operator=(TestVariable const&) = delete;

 private:
  std::string text_;
};

TEST(DebugApiTest, ProgramPathHasBothForms) {
  std::string bytes;
  wstring units;
  ASSERT_TRUE(debugging().programPath(bytes));
  ASSERT_TRUE(debugging().programPath(units));
  EXPECT_TRUE(std::filesystem::equivalent(bytes, programFile())) << bytes;
  std::string const end = '\\' + programFile().filename().string();
  std::string const shown = narrow(units);
  ASSERT_GT(shown.size(), end.size());
  EXPECT_EQ(shown.substr(shown.size() - end.size()), end);
}

TEST(DebugApiTest, CurrentDirectoryIsThatOfTheProcess) {
  TempFolder const folder;
  CurrentPath const current(folder.path());
  std::string path;
  ASSERT_TRUE(debugging().currentDirectory(path));
  EXPECT_TRUE(std::filesystem::equivalent(path, folder.path())) << path;
}

TEST(DebugApiTest, VariablesOfTheEnvironment) {
  struct {
    char const* name;
    std::string value;
    bool isNarrow;
    bool isWide;
  } const rows[] = {
      {"a text", "value", true, true},
      {"empty", "", false, false},
      {"just fits", std::string(1023, 'x'), true, true},
      {"one too long for a narrow text", std::string(1024, 'y'), false, true},
      {"just fits a wide text", std::string(4095, 'z'), false, true},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    TestVariable const variable(row.value);
    std::string bytes = "before";
    wstring units = KVW("before");
    EXPECT_EQ(debugging().environmentVariable("KVBASE_TEST_VARIABLE", bytes), row.isNarrow);
    EXPECT_EQ(debugging().environmentVariable(KVW("KVBASE_TEST_VARIABLE"), units), row.isWide);
    EXPECT_EQ(bytes, row.isNarrow ? row.value : "before");
    EXPECT_EQ(narrow(units), row.isWide ? row.value : "before");
  }
  std::string bytes = "before";
  EXPECT_FALSE(debugging().environmentVariable("KVBASE_TEST_NO_VARIABLE", bytes));
  EXPECT_EQ(bytes, "before");
}

TEST(DebugApiTest, UserAndSystemAreNamed) {
  std::string user;
  ASSERT_TRUE(debugging().userName(user));
  EXPECT_NE(user, "");
  EXPECT_EQ(user.size(), std::strlen(user.c_str()));
  platform::SystemVersion version;
  ASSERT_TRUE(debugging().systemVersion(version));
  EXPECT_GT(version.major, 0u);
}

TEST(DebugApiTest, VersionOfAModule) {
  std::string const file = (fixtureFolder() / moduleFile("tool")).string();
  ulong32 const size = debugging().versionInfoSize(file.c_str());
  ASSERT_GT(size, 0u);
  std::vector<char> block(size);
  ASSERT_TRUE(debugging().versionInfo(file.c_str(), size, block.data()));
  void const* value = nullptr;
  ulong32 length = 0;
  EXPECT_TRUE(platform::nativeModules().queryVersion(block.data(), KVW("\\"), value, length));
  EXPECT_EQ(length, 52u);
}

TEST(DebugApiTest, FileWithoutVersion) {
  TempFolder folder;
  folder.write("text.txt", "no module");
  std::string const file = folder.path("text.txt").string();
  char block[64];
  EXPECT_EQ(debugging().versionInfoSize(file.c_str()), 0u);
  EXPECT_FALSE(debugging().versionInfo(file.c_str(), sizeof block, block));
}

TEST(DebugApiTest, MemoryOfTheProcess) {
  char const text[] = "a text";
  char copy[sizeof text] = "";
  std::size_t count = 99;
  auto const read = [&](void const* from) {
    return debugging().readMemory(debugging().currentProcess(), reinterpret_cast<std::uint64_t>(from), copy,
                                  sizeof copy, count);
  };
  EXPECT_TRUE(read(text));
  EXPECT_EQ(count, sizeof text);
  EXPECT_STREQ(copy, text);
  EXPECT_FALSE(read(nullptr));
  EXPECT_EQ(count, 0u);
}

TEST(DebugApiTest, LibrariesAndTheirFunctions) {
  HINSTANCE const library = debugging().loadLibrary(KVW("dbghelp.dll"));
  ASSERT_NE(library, nullptr);
  EXPECT_NE(debugging().function(library, "StackWalk64"), nullptr);
  EXPECT_EQ(debugging().function(library, "NoSuchFunction"), nullptr);
  EXPECT_TRUE(debugging().freeLibrary(library));
  EXPECT_EQ(debugging().loadLibrary(KVW("no_such_library.dll")), nullptr);
}

TEST(DebugApiTest, ASnapshotIsClosedOnce) {
  HINSTANCE const library = debugging().loadLibrary(KVW("kernel32.dll"));
  ASSERT_NE(library, nullptr);
  auto const create = reinterpret_cast<platform::debug_help::CreateToolhelp32Snapshot>(
      debugging().function(library, "CreateToolhelp32Snapshot"));
  ASSERT_NE(create, nullptr);
  void* const snapshot = create(platform::debug_help::kSnapshotModules, debugging().currentProcessId());
  EXPECT_NE(snapshot, reinterpret_cast<void*>(std::intptr_t{-1}));
  EXPECT_TRUE(debugging().closeHandle(snapshot));
  EXPECT_FALSE(debugging().closeHandle(nullptr));
  EXPECT_TRUE(debugging().freeLibrary(library));
}

TEST(DebugApiTest, ResumingTheCallingThreadHasNoEffect) {
  EXPECT_EQ(debugging().currentThread(), GetCurrentThread());
  EXPECT_EQ(debugging().resumeThread(debugging().currentThread()), 0u);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
