// SPDX-License-Identifier: MIT
//
// The calls of Directory::copyContents on a scripted disk.
#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <string>

#include "tests/filesystem/disk_support.h"
#include "tests/filesystem/scripted_system.h"

namespace KV_1_1 {
namespace testing {
namespace {

// C:\s holds the files a and b and the folders p, with the file x and the folder q with the file y, and e; C:\t is
// empty.
class DirectoryCopy : public ScriptedSystem<ScriptedDisk> {
 protected:
  DirectoryCopy() {
    errors.texts[5] = KVW("Denied.\r\n");
    files.folders({KVW(R"(C:\)"), KVW(R"(C:\t\)")});
    files.list(KVW(R"(C:\s\)"),
               {{kFileEntry, KVW("a")}, {kFolderEntry, KVW("p")}, {kFolderEntry, KVW("e")}, {kFileEntry, KVW("b")}});
    files.list(KVW(R"(C:\s\p\)"), {{kFileEntry, KVW("x")}, {kFolderEntry, KVW("q")}});
    files.list(KVW(R"(C:\s\p\q\)"), {{kFileEntry, KVW("y")}});
    files.list(KVW(R"(C:\s\e\)"), {});
  }

  bool copy(bool recursive, bool overwrite) { return source->copyContents(target, recursive, overwrite, &progress); }

  CountedFiles progress;
  SmartPtr<Directory const> source = directoryAt(KVW(R"(C:\s)"));
  SmartPtr<Directory const> target = directoryAt(KVW(R"(C:\t)"));
};

// The calls for one folder that is missing in the target.
Log made(std::string const& parent, std::string const& folder) {
  return {"getAttributes " + folder, "getAttributes " + parent, "createDirectory " + folder};
}
Log const kBothThere = {R"(getAttributes \\?\C:\s\)", R"(getAttributes \\?\C:\t\)", R"(findFirst C:\s\*)"};

TEST_F(DirectoryCopy, RecursiveInTheFixedOrder) {
  EXPECT_TRUE(copy(true, false));
  Log const p = made(R"(\\?\C:\t\)", R"(\\?\C:\t\p\)"), q = made(R"(\\?\C:\t\p\)", R"(\\?\C:\t\p\q\)"),
            e = made(R"(\\?\C:\t\)", R"(\\?\C:\t\e\)");
  EXPECT_EQ(files.calls(),
            joined({kBothThere,
                    p,
                    {R"(getAttributes \\?\C:\s\p\)", R"(getAttributes \\?\C:\t\p\)", R"(findFirst C:\s\p\*)"},
                    q,
                    {R"(getAttributes \\?\C:\s\p\q\)", R"(getAttributes \\?\C:\t\p\q\)", R"(findFirst C:\s\p\q\*)",
                     R"(findFirst C:\s\p\q\*)", R"(copyFile \\?\C:\s\p\q\y -> \\?\C:\t\p\q\y 1)",
                     R"(findFirst C:\s\p\*)", R"(copyFile \\?\C:\s\p\x -> \\?\C:\t\p\x 1)"},
                    e,
                    {R"(getAttributes \\?\C:\s\e\)", R"(getAttributes \\?\C:\t\e\)", R"(findFirst C:\s\e\*)",
                     R"(findFirst C:\s\e\*)", R"(findFirst C:\s\*)", R"(copyFile \\?\C:\s\a -> \\?\C:\t\a 1)",
                     R"(copyFile \\?\C:\s\b -> \\?\C:\t\b 1)"}}));
  EXPECT_EQ(progress.count, 4);
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(DirectoryCopy, NotRecursiveMakesTheFoldersEmpty) {
  for (bool const overwrite : {false, true}) {
    SCOPED_TRACE(overwrite);
    files.clearLog();
    progress.count = 0;
    files.script.attributes.erase(KVW(R"(\\?\C:\t\p\)"));
    files.script.attributes.erase(KVW(R"(\\?\C:\t\e\)"));
    EXPECT_TRUE(copy(false, overwrite));
    std::string const flag = overwrite ? "0" : "1";
    EXPECT_EQ(files.calls(), joined({kBothThere,
                                     made(R"(\\?\C:\t\)", R"(\\?\C:\t\p\)"),
                                     made(R"(\\?\C:\t\)", R"(\\?\C:\t\e\)"),
                                     {R"(findFirst C:\s\*)", R"(copyFile \\?\C:\s\a -> \\?\C:\t\a )" + flag,
                                      R"(copyFile \\?\C:\s\b -> \\?\C:\t\b )" + flag}}));
    EXPECT_EQ(progress.count, 2);
    EXPECT_FALSE(files.has(KVW(R"(C:\t\p\x)")));
  }
}

TEST_F(DirectoryCopy, AFolderThatIsThereIsAskedForOnly) {
  files.folders({KVW(R"(C:\t\p\)"), KVW(R"(C:\t\e\)")});
  EXPECT_TRUE(copy(false, false));
  Log const log = files.calls();
  EXPECT_EQ(std::count(log.begin(), log.end(), R"(getAttributes \\?\C:\t\p\)"), 1);
  EXPECT_TRUE(std::none_of(log.begin(), log.end(), [](std::string const& call) { return call.find("create") == 0; }));
}

// Which flags tolerate which failure.
TEST_F(DirectoryCopy, WhatAFailureDoes) {
  struct Row {
    char const* name;
    char const* refused;
    ulong32 error;
    bool recursive;
    bool overwrite;
    bool done;
    int copied;
    bool reported;  // whether there is a message, that of create
  };
  char const* const folder = R"(createDirectory \\?\C:\t\p\)";
  char const* const deepFolder = R"(createDirectory \\?\C:\t\p\q\)";
  char const* const file = R"(copyFile \\?\C:\s\a -> \\?\C:\t\a )";
  char const* const deepFile = R"(copyFile \\?\C:\s\p\q\y -> \\?\C:\t\p\q\y )";
  Row const rows[] = {
      {"folder", folder, 5, false, false, false, 0, true},
      {"folder, recursive", folder, 5, true, false, false, 0, true},
      {"folder, forgiven", folder, 5, false, true, true, 2, true},
      {"folder forgiven, but its contents have no place", folder, 5, true, true, false, 0, true},
      {"folder in a race", folder, 183, false, false, true, 2, false},
      {"folder in a race with a file", folder, 183, true, false, false, 0, false},
      {"folder further down", deepFolder, 5, true, false, false, 0, true},
      {"folder further down, overwriting", deepFolder, 5, true, true, false, 0, true},
      {"folder further down is not reached", deepFolder, 5, false, false, true, 2, false},
      {"file", file, 80, false, false, false, 0, false},
      {"file, overwriting", file, 5, false, true, false, 0, false},
      {"file after all folders", file, 80, true, false, false, 2, false},
      {"file on a full disk", file, 112, true, true, false, 2, false},
      {"file further down", deepFile, 80, true, false, false, 0, false},
      {"file further down, overwriting", deepFile, 5, true, true, false, 0, false},
      {"file further down is not reached", deepFile, 5, false, true, true, 2, false},
  };
  auto const before = files.script.attributes;
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    files.script.attributes = before;
    files.clearLog();
    progress.count = 0;
    std::string refused = row.refused;
    if (refused.back() == ' ') refused += row.overwrite ? '0' : '1';
    files.refused = {{refused, row.error}};
    EXPECT_EQ(copy(row.recursive, row.overwrite), row.done);
    EXPECT_EQ(progress.count, row.copied);
    std::string const path = row.refused == folder ? R"(C:\t\p\)" : R"(C:\t\p\q\)";
    EXPECT_EQ(messages.take(), row.reported ? Texts{notCreated(path, "Denied.")} : Texts());
    if (!row.done && !row.overwrite && row.error != 183) {
      EXPECT_EQ(files.calls().back(), refused) << "nothing comes behind the failure";
    }
    EXPECT_EQ(files.openInAll(), 0);
  }
}

TEST_F(DirectoryCopy, BothDirectoriesMustBeThere) {
  auto const before = files.script.attributes;
  files.script.attributes.erase(KVW(R"(\\?\C:\s\)"));
  EXPECT_FALSE(copy(true, true));
  files.script.attributes = before;
  files.script.attributes.erase(KVW(R"(\\?\C:\t\)"));
  EXPECT_FALSE(copy(true, true));
  files.script.attributes[KVW(R"(\\?\C:\t\)")] = kFileEntry;
  EXPECT_FALSE(copy(true, true));
  for (std::string const& call : files.log()) EXPECT_EQ(call.find("getAttributes"), 0u) << call;
  EXPECT_EQ(progress.count, 0);
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(DirectoryCopy, NothingToCopy) {
  files.list(KVW(R"(C:\s\)"), {});
  EXPECT_TRUE(copy(true, false));
  EXPECT_EQ(files.calls(), joined({kBothThere, {R"(findFirst C:\s\*)"}}));
  EXPECT_EQ(progress.count, 0);
}

TEST_F(DirectoryCopy, WithoutProgress) {
  EXPECT_TRUE(source->copyContents(target, true, false, nullptr));
  EXPECT_TRUE(files.has(KVW(R"(C:\t\p\q\y)")));
}

// Without a current directory a relative source cannot be searched, and counts as empty.
TEST_F(DirectoryCopy, NoSearchIsNoFailure) {
  files.script.attributes[KVW("r\\")] = kFolderEntry;
  EXPECT_TRUE(directoryAt(KVW("r"))->copyContents(target, true, false, &progress));
  EXPECT_EQ(files.log(),
            Log({R"(getAttributes r\)", R"(getAttributes \\?\C:\t\)", "currentDirectory", "currentDirectory"}));
  EXPECT_EQ(messages.take(), Texts(2, kNoCurrentDirectory));
  EXPECT_EQ(progress.count, 0);
}

TEST_F(DirectoryCopy, ARelativeTargetStaysRelative) {
  files.script.directory = KVW(R"(C:\)");
  files.script.attributes[KVW("t\\")] = kFolderEntry;
  files.list(KVW(R"(C:\s\)"), {{kFileEntry, KVW("a")}, {kFolderEntry, KVW("p")}});
  EXPECT_TRUE(source->copyContents(directoryAt(KVW("t")), false, true, nullptr));
  EXPECT_EQ(files.calls(),
            joined({{R"(getAttributes \\?\C:\s\)", R"(getAttributes t\)", R"(findFirst C:\s\*)", "currentDirectory"},
                    made(R"(\\?\C:\t\)", R"(\\?\C:\t\p\)"),
                    {R"(findFirst C:\s\*)", R"(copyFile \\?\C:\s\a -> t\a 0)"}}));
}

// An invalid name ends each walk that meets it, without a failure: the entries behind it are not seen.
TEST_F(DirectoryCopy, ARefusedNameEndsTheWalk) {
  files.list(KVW(R"(C:\s\)"), {{kFileEntry, KVW("a")},
                               {kFolderEntry, KVW("e")},
                               {kFolderEntry, KVW("bad ")},
                               {kFolderEntry, KVW("p")},
                               {kFileEntry, KVW("bad.")},
                               {kFileEntry, KVW("b")}});
  EXPECT_TRUE(copy(true, false));
  EXPECT_TRUE(files.has(KVW(R"(C:\t\e\)")));
  EXPECT_TRUE(files.has(KVW(R"(C:\t\a)")));
  EXPECT_FALSE(files.has(KVW(R"(C:\t\p\)")));
  EXPECT_FALSE(files.has(KVW(R"(C:\t\b)")));
  EXPECT_EQ(progress.count, 1);
  EXPECT_EQ(messages.take(), Texts{invalidName("bad ")});
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
