// SPDX-License-Identifier: MIT
//
// Directory::remove and removeContents: what they remove, in which order, and where they stop.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <string>

#include "tests/filesystem/disk_support.h"
#include "tests/filesystem/scripted_system.h"

namespace KV_1_1 {
namespace testing {
namespace {

// C:\d holds the folders s, with the file f, and t, and the files a and b.
class DirectoryRemoval : public ScriptedSystem<ScriptedDisk> {
 protected:
  DirectoryRemoval() {
    errors.texts[5] = KVW("Denied.\r\n");
    errors.texts[145] = KVW("Not empty.\r\n");
    files.list(KVW(R"(C:\d\)"),
               {{kFileEntry, KVW("a")}, {kFolderEntry, KVW("s")}, {kFileEntry, KVW("b")}, {kFolderEntry, KVW("t")}});
    files.list(KVW(R"(C:\d\s\)"), {{kFileEntry, KVW("f")}});
    files.list(KVW(R"(C:\d\t\)"), {});
  }

  SmartPtr<Directory const> directory = directoryAt(KVW(R"(C:\d)"));
};

Log const kFoldersGo = {
    R"(findFirst C:\d\*)",  // the folders
    R"(getAttributes \\?\C:\d\s\)",
    R"(getAttributes \\?\C:\d\s\)",
    R"(findFirst C:\d\s\*)",
    R"(findFirst C:\d\s\*)",
    R"(getAttributes \\?\C:\d\s\f)",
    R"(deleteFile \\?\C:\d\s\f)",
    R"(removeDirectory \\?\C:\d\s\)",
    R"(getAttributes \\?\C:\d\t\)",
    R"(getAttributes \\?\C:\d\t\)",
    R"(findFirst C:\d\t\*)",
    R"(findFirst C:\d\t\*)",
    R"(removeDirectory \\?\C:\d\t\)",
};
Log const kFilesGo = {
    R"(findFirst C:\d\*)",         R"(getAttributes \\?\C:\d\a)", R"(deleteFile \\?\C:\d\a)",
    R"(getAttributes \\?\C:\d\b)", R"(deleteFile \\?\C:\d\b)",
};

TEST_F(DirectoryRemoval, RecursiveTakesFoldersFirstThenFilesThenItself) {
  EXPECT_TRUE(directory->remove(true));
  EXPECT_EQ(files.calls(), joined({{R"(getAttributes \\?\C:\d\)", R"(getAttributes \\?\C:\d\)"},
                                   kFoldersGo,
                                   kFilesGo,
                                   {R"(removeDirectory \\?\C:\d\)"}}));
  EXPECT_TRUE(files.script.attributes.empty());
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(DirectoryRemoval, EveryCallOfOneLevel) {
  files.list(KVW(R"(C:\d\)"), {{kFileEntry, KVW("a")}});
  EXPECT_TRUE(directory->remove(true));
  EXPECT_EQ(files.log(), Log({R"(getAttributes \\?\C:\d\)", R"(getAttributes \\?\C:\d\)",              //
                              R"(findFirst C:\d\*)", "findNext", "findNext", "findNext", "findClose",  //
                              R"(findFirst C:\d\*)", "findNext", "findNext", "findNext", "findClose",
                              R"(getAttributes \\?\C:\d\a)", R"(deleteFile \\?\C:\d\a)",  //
                              R"(removeDirectory \\?\C:\d\)"}));
}

TEST_F(DirectoryRemoval, WhatIsMissingIsRemoved) {
  files.file(KVW(R"(C:\file\)"));
  for (bool const recursive : {false, true}) {
    for (wchar const* path : {KVW(R"(C:\missing)"), KVW(R"(C:\file)")}) {
      files.clearLog();
      EXPECT_TRUE(directoryAt(path)->remove(recursive));
      EXPECT_TRUE(directoryAt(path)->removeContents(recursive));
      EXPECT_EQ(files.log(), Log(2, R"(getAttributes \\?\)" + narrow(path) + '\\'));
    }
  }
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(DirectoryRemoval, StopsAtTheFirstFailure) {
  struct Row {
    char const* name;
    char const* refused;
    ulong32 error;
    bool goesOn;  // whether the files of C:\d are reached
    std::string message;
  };
  Row const rows[] = {
      {"a file further down", R"(deleteFile \\?\C:\d\s\f)", 5, false, notDeleted(R"(C:\d\s\f)", "Denied.")},
      {"a folder", R"(removeDirectory \\?\C:\d\s\)", 145, false, notRemoved(R"(C:\d\s\)", "Not empty.")},
      {"the second folder", R"(removeDirectory \\?\C:\d\t\)", 32, false, notRemoved(R"(C:\d\t\)", "[0x00000020]")},
      {"a file", R"(deleteFile \\?\C:\d\a)", 5, true, notDeleted(R"(C:\d\a)", "Denied.")},
      {"the last file", R"(deleteFile \\?\C:\d\b)", 5, true, notDeleted(R"(C:\d\b)", "Denied.")},
  };
  auto const before = files.script.attributes;
  for (Row const& row : rows) {
    for (bool const itself : {true, false}) {
      SCOPED_TRACE(row.name);
      files.script.attributes = before;
      files.clearLog();
      files.refused = {{row.refused, row.error}};
      EXPECT_FALSE(itself ? directory->remove(true) : directory->removeContents(true));
      EXPECT_EQ(files.calls().back(), row.refused);
      EXPECT_EQ(messages.take(), Texts{row.message}) << "one message, from the item that failed";
      EXPECT_EQ(files.has(KVW(R"(C:\d\t\)")), !row.goesOn) << "only what came before is gone";
      EXPECT_TRUE(files.has(KVW(R"(C:\d\b)")));
      EXPECT_EQ(files.openInAll(), 0);
    }
  }
}

TEST_F(DirectoryRemoval, TheDirectoryItselfFailsLast) {
  files.refused[R"(removeDirectory \\?\C:\d\)"] = 145;
  EXPECT_FALSE(directory->remove(false));
  EXPECT_EQ(messages.take(), Texts{notRemoved(R"(C:\d\)", "Not empty.")});
  EXPECT_TRUE(files.has(KVW(R"(C:\d\s\f)")));
  EXPECT_FALSE(directory->remove(true));
  EXPECT_EQ(messages.take(), Texts{notRemoved(R"(C:\d\)", "Not empty.")});
  EXPECT_FALSE(files.has(KVW(R"(C:\d\a)"))) << "what is gone stays gone";
  EXPECT_EQ(files.script.attributes.size(), 1u);
}

TEST_F(DirectoryRemoval, FilesThatVanishMeanwhileAreNoFailure) {
  files.script.attributes.erase(KVW(R"(\\?\C:\d\a)"));
  files.script.attributes.erase(KVW(R"(\\?\C:\d\s\)"));
  EXPECT_TRUE(directory->remove(true));
  for (char const* gone : {R"(deleteFile \\?\C:\d\a)", R"(removeDirectory \\?\C:\d\s\)"}) {
    EXPECT_EQ(std::count(files.log().begin(), files.log().end(), gone), 0) << gone;
  }
}

// An invalid name ends each walk that meets it, without a failure: the entries behind it are not seen.
TEST_F(DirectoryRemoval, ARefusedNameEndsTheWalk) {
  files.list(KVW(R"(C:\d\)"), {{kFolderEntry, KVW("bad.")},
                               {kFolderEntry, KVW("s")},
                               {kFileEntry, KVW("a")},
                               {kFileEntry, KVW("bad ")},
                               {kFileEntry, KVW("b")}});
  EXPECT_TRUE(directory->removeContents(true));
  EXPECT_EQ(files.calls(), Log({R"(getAttributes \\?\C:\d\)", R"(findFirst C:\d\*)", R"(findFirst C:\d\*)",
                                R"(getAttributes \\?\C:\d\a)", R"(deleteFile \\?\C:\d\a)"}));
  EXPECT_EQ(messages.take(), Texts{invalidName("bad.")});
}

// Without a current directory a relative one cannot be searched, and counts as empty.
TEST_F(DirectoryRemoval, NoSearchIsNoFailure) {
  files.script.attributes[KVW("r\\")] = kFolderEntry;
  SmartPtr<Directory const> const relative = directoryAt(KVW("r"));
  EXPECT_TRUE(relative->removeContents(true));
  EXPECT_EQ(files.log(), Log({R"(getAttributes r\)", "currentDirectory", "currentDirectory"}));
  EXPECT_EQ(messages.take(), Texts(2, kNoCurrentDirectory));
  EXPECT_TRUE(relative->removeContents(false));
  EXPECT_EQ(messages.take(), Texts{kNoCurrentDirectory});
  EXPECT_TRUE(relative->remove(true));
  EXPECT_EQ(files.log().back(), R"(removeDirectory r\)");
  EXPECT_EQ(messages.take(), Texts(2, kNoCurrentDirectory));
}

class DirectoryRemovalOnDisk : public OnDisk {
 protected:
  DirectoryRemovalOnDisk() {
    folder.write("d/a.txt", "a");
    folder.write("d/.hidden", "h");
    folder.write("d/s/b.txt", "b");
    folder.write("d/s/t/c.txt", "c");
    folder.makeFolder("d/empty");
    folder.write("beside.txt", "beside");
  }

  SmartPtr<Directory const> const full = directory(KVW("d"));
  Tree const beside = {{"beside.txt", "beside"}};
};

TEST_F(DirectoryRemovalOnDisk, RemoveNotRecursive) {
  Tree const before = tree();
  EXPECT_FALSE(full->remove(false));
  Texts const reported = messages.take();
  ASSERT_EQ(reported.size(), 1u);
  std::string const start = notRemoved(name(KVW("d\\")), "");
  EXPECT_EQ(reported[0].substr(0, start.size()), start);
  EXPECT_EQ(tree(), before);
  EXPECT_TRUE(directory(KVW("d\\empty"))->remove(false));
  EXPECT_FALSE(std::filesystem::exists(folder.path("d/empty")));
}

TEST_F(DirectoryRemovalOnDisk, RemoveContents) {
  EXPECT_TRUE(full->removeContents(false));
  EXPECT_EQ(tree(), (Tree{{"beside.txt", "beside"},
                          {"d/", ""},
                          {"d/empty/", ""},
                          {"d/s/", ""},
                          {"d/s/b.txt", "b"},
                          {"d/s/t/", ""},
                          {"d/s/t/c.txt", "c"}}));
  EXPECT_TRUE(full->removeContents(true));
  EXPECT_EQ(tree(), (Tree{{"beside.txt", "beside"}, {"d/", ""}}));
  EXPECT_TRUE(full->isEmpty());
  EXPECT_TRUE(full->removeContents(true));
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(DirectoryRemovalOnDisk, AReadOnlyFileStopsIt) {
  SmartPtr<File const> const locked = file(KVW("d\\s\\t\\c.txt"));
  ASSERT_EQ(locked->setAsReadOnly(), File::ReadOnlyOk);
  EXPECT_FALSE(full->remove(true));
  Texts const reported = messages.take();
  ASSERT_EQ(reported.size(), 1u);
  std::string const start = notDeleted(name(KVW("d\\s\\t\\c.txt")), "");
  EXPECT_EQ(reported[0].substr(0, start.size()), start);
  EXPECT_TRUE(locked->exists());
  EXPECT_TRUE(locked->isReadOnly()) << "not made writable";
  EXPECT_TRUE(std::filesystem::exists(folder.path("d/a.txt")))
      << "folders go first, so no file of this level is reached";
  EXPECT_FALSE(full->removeContents(true));
  EXPECT_TRUE(full->removeContents(false));
  messages.take();
  ASSERT_EQ(locked->unsetAsReadOnly(), File::ReadOnlyOk);
  EXPECT_TRUE(full->remove(true));
  EXPECT_EQ(tree(), beside);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
