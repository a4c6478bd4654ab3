// SPDX-License-Identifier: MIT
#include "kvbase/platform/backend.h"

#include <gtest/gtest.h>

#include "tests/support/failing_files.h"
#include "tests/support/scripted_files.h"
#include "tests/support/scripted_text.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

using platform::FileApi;
using platform::FindData;
using platform::ScopedBackend;
using platform::TextApi;

// Called by a dynamic initialiser, which is before main.
bool const answersEarly =
    platform::files().getAttributes(KVW("\\")) != platform::kInvalidAttributes && platform::text().ansiCodePage() != 0;

TEST(Backend, AnswersBeforeMain) {
  EXPECT_TRUE(answersEarly);
}

TEST(Backend, ScopesNest) {
  EXPECT_EQ(&platform::files(), &platform::nativeFiles());
  ScriptedFiles outer, inner;
  {
    ScopedBackend<FileApi> const first(outer);
    {
      ScopedBackend<FileApi> const second(inner);
      EXPECT_EQ(&platform::files(), &inner);
    }
    EXPECT_EQ(&platform::files(), &outer);
    EXPECT_EQ(&platform::text(), &platform::nativeText());
  }
  EXPECT_EQ(&platform::files(), &platform::nativeFiles());
}

TEST(Backend, ScriptAnswersAndLogs) {
  ScriptedFiles files;
  files.script.attributes[KVW("C:\\a\\")] = platform::kAttributeDirectory;
  files.script.infos[KVW("C:\\a\\x")] = {platform::kAttributeNormal, 42};
  files.script.searches[KVW("C:\\a\\*")] = {{platform::kAttributeDirectory, KVW(".")},
                                            {platform::kAttributeNormal, KVW("x")}};
  files.script.directory = KVW("C:\\work");
  EXPECT_EQ(files.getAttributes(KVW("C:\\a\\")), platform::kAttributeDirectory);
  EXPECT_EQ(files.getAttributes(KVW("C:\\b\\")), platform::kInvalidAttributes);
  platform::FileInfo info;
  ASSERT_TRUE(files.getInfo(KVW("C:\\a\\x"), info));
  EXPECT_EQ(info.size, 42u);
  FindData data;
  platform::SearchHandle const search = files.findFirst(KVW("C:\\a\\*"), data);
  EXPECT_EQ(narrow(data.name), ".");
  EXPECT_TRUE(files.findNext(search, data));
  EXPECT_EQ(narrow(data.name), "x");
  EXPECT_FALSE(files.findNext(search, data));
  EXPECT_EQ(files.openSearches(), 1);
  EXPECT_TRUE(files.findClose(search));
  EXPECT_FALSE(files.findClose(search));
  EXPECT_EQ(files.openSearches(), 0);
  wstring directory;
  EXPECT_TRUE(files.currentDirectory(directory));
  EXPECT_EQ(narrow(directory), "C:\\work");
  EXPECT_FALSE(files.currentDirectoryOfDrive(3, directory));
  EXPECT_EQ(files.log(),
            Log({"getAttributes C:\\a\\", "getAttributes C:\\b\\", "getInfo C:\\a\\x", "findFirst C:\\a\\*", "findNext",
                 "findNext", "findClose", "findClose", "currentDirectory", "currentDirectoryOfDrive C"}));
}

TEST(Backend, FailingFilesFailOneCall) {
  TempFolder folder;
  folder.write("a");
  wstring const pattern = folder.text(KVW("*"));
  auto const countEntries = [&](FailingFiles& files) {
    FindData data;
    platform::SearchHandle const search = files.findFirst(pattern.c_str(), data);
    if (search == platform::invalidSearch()) return 0;
    int n = 1;
    while (files.findNext(search, data)) ++n;
    files.findClose(search);
    return n;
  };
  int const expected[] = {3, 0, 1, 2, 3, 3};
  for (int n = 0; n <= 5; ++n) {
    SCOPED_TRACE(n);
    FailingFiles files(n);
    EXPECT_EQ(countEntries(files), expected[n]);
    EXPECT_EQ(files.openSearches(), 0);
  }
}

TEST(Backend, ScriptedTextReplacesPageZeroAndFails) {
  ScriptedText text;
  ScopedBackend<TextApi> const scope(text);
  text.ansi = 1252;
  wchar unit = 0;
  EXPECT_EQ(platform::text().decode(0, "\xE4", 1, &unit, 1), 1);
  EXPECT_EQ(unit, 0xE4);
  text.failAt = 2;
  EXPECT_EQ(platform::text().decode(0, "\xE4", 1, &unit, 1), 0);
  EXPECT_EQ(platform::text().decode(0, "\xE4", 1, &unit, 1), 1);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
