// SPDX-License-Identifier: MIT
//
// Directory::create, isEmpty and openInExplorer, and File::createParentDirectories.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "tests/filesystem/disk_support.h"
#include "tests/filesystem/scripted_system.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

using Paths = std::vector<wstring>;
using Refused = std::map<std::string, ulong32>;

class DirectoryOperations : public ScriptedSystem<ScriptedDisk> {
 protected:
  DirectoryOperations() {
    errors.texts[3] = KVW("No path.\r\n");
    errors.texts[5] = KVW("Denied.\r\n");
  }
};

// Each row on a disk of its own.
struct CreateRow {
  char const* name;
  wchar const* path;
  Paths there;
  Refused refused;
  bool created;
  Log calls;
  Texts messages;
};

void checkCreate(CreateRow const& row, wchar const* currentDirectory) {
  SCOPED_TRACE(row.name);
  ScriptedErrors errors;
  errors.texts[3] = KVW("No path.\r\n");
  errors.texts[5] = KVW("Denied.\r\n");
  platform::ScopedBackend<platform::ErrorApi> const errorsScope(errors);
  ScriptedDisk files;
  platform::ScopedBackend<platform::FileApi> const filesScope(files);
  files.folders(row.there);
  files.refused = row.refused;
  files.script.directory = currentDirectory;
  files.script.driveDirectories[4] = KVW(R"(D:\data)");
  CollectedMessages messages;
  EXPECT_EQ(directoryAt(row.path)->create(), row.created);
  EXPECT_EQ(files.log(), row.calls);
  EXPECT_EQ(messages.take(), row.messages);
  EXPECT_EQ(files.openInAll(), 0);
}

TEST(DirectoryCreate, OfAbsolutePaths) {
  std::string const askRoot = R"(getAttributes \\?\C:\)", askA = askRoot + R"(a\)", askB = askA + R"(b\)",
                    askC = askB + R"(c\)";
  std::string const makeA = R"(createDirectory \\?\C:\a\)", makeB = makeA + R"(b\)", makeC = makeB + R"(c\)";
  wstring const root = KVW(R"(C:\)"), a = KVW(R"(C:\a\)"), b = KVW(R"(C:\a\b\)");
  CreateRow const rows[] = {
      {"there already", KVW(R"(C:\a\b)"), {root, a, b}, {}, true, {askB}, {}},
      {"a root that is there", KVW(R"(C:\)"), {root}, {}, true, {askRoot}, {}},
      {"one level missing", KVW(R"(C:\a)"), {root}, {}, true, {askA, askRoot, makeA}, {}},
      {"three levels missing",
       KVW(R"(C:\a\b\c)"),
       {root},
       {},
       true,
       {askC, askB, askA, askRoot, makeA, makeB, makeC},
       {}},
      {"asks no further up than it must",
       KVW(R"(C:\a\b\c)"),
       {root, a},
       {},
       true,
       {askC, askB, askA, makeB, makeC},
       {}},
      {"no drive", KVW(R"(C:\a\b)"), {}, {}, false, {askB, askA, askRoot}, {noDrive("C:")}},
      {"nothing but a missing drive", KVW(R"(C:\)"), {}, {}, false, {askRoot}, {noDrive("C:")}},
      {"no share",
       KVW(R"(\\s\t\a)"),
       {},
       {},
       false,
       {R"(getAttributes \\?\UNC\s\t\a\)", R"(getAttributes \\?\UNC\s\t\)"},
       {noDrive(R"(\\s\t)")}},
      {"no root of the current drive",
       KVW(R"(\a)"),
       {},
       {},
       false,
       {R"(getAttributes \\?\\a\)", R"(getAttributes \\?\\)"},
       {noDrive("")}},
      {"first level refused",
       KVW(R"(C:\a\b\c)"),
       {root},
       {{makeA, 5}},
       false,
       {askC, askB, askA, askRoot, makeA},
       {notCreated(R"(C:\a\)", "Denied.")}},
      {"middle level refused",
       KVW(R"(C:\a\b\c)"),
       {root},
       {{makeB, 5}},
       false,
       {askC, askB, askA, askRoot, makeA, makeB},
       {notCreated(R"(C:\a\b\)", "Denied.")}},
      {"last level refused",
       KVW(R"(C:\a\b\c)"),
       {root},
       {{makeC, 3}},
       false,
       {askC, askB, askA, askRoot, makeA, makeB, makeC},
       {notCreated(R"(C:\a\b\c\)", "No path.")}},
      {"an error without text",
       KVW(R"(C:\a)"),
       {root},
       {{makeA, 5000}},
       false,
       {askA, askRoot, makeA},
       {notCreated(R"(C:\a\)", "[0x00001388]")}},
      {"a file of that kind of error is no race",
       KVW(R"(C:\a)"),
       {root},
       {{makeA, 80}},
       false,
       {askA, askRoot, makeA},
       {notCreated(R"(C:\a\)", "[0x00000050]")}},
      {"somebody made the last level meanwhile",
       KVW(R"(C:\a)"),
       {root},
       {{makeA, 183}},
       true,
       {askA, askRoot, makeA},
       {}},
      {"somebody made all levels meanwhile",
       KVW(R"(C:\a\b\c)"),
       {root},
       {{makeA, 183}, {makeB, 183}, {makeC, 183}},
       true,
       {askC, askB, askA, askRoot, makeA, makeB, makeC},
       {}},
  };
  for (CreateRow const& row : rows) checkCreate(row, KVW(""));
}

TEST(DirectoryCreate, OfRelativePaths) {
  wstring const root = KVW(R"(C:\)"), work = KVW(R"(C:\work\)"), data = KVW(R"(D:\data\)");
  std::string const askWork = R"(getAttributes \\?\C:\work\)", askA = askWork + R"(a\)", askB = askA + R"(b\)";
  std::string const makeA = R"(createDirectory \\?\C:\work\a\)", makeB = makeA + R"(b\)";
  CreateRow const rows[] = {
      {"below the current directory",
       KVW(R"(a\b)"),
       {root, work},
       {},
       true,
       {"currentDirectory", askB, askA, askWork, makeA, makeB},
       {}},
      {"of a drive",
       KVW("D:x"),
       {data},
       {},
       true,
       {"currentDirectoryOfDrive D", R"(getAttributes \\?\D:\data\x\)", R"(getAttributes \\?\D:\data\)",
        R"(createDirectory \\?\D:\data\x\)"},
       {}},
      {"of a drive without current directory",
       KVW("E:x"),
       {},
       {},
       false,
       {"currentDirectoryOfDrive E"},
       {kNoCurrentDirectory}},
      {"the current directory itself", KVW(""), {root, work}, {}, true, {"currentDirectory", askWork}, {}},
      {"dots", KVW(R"(..\work\.\a)"), {root, work}, {}, true, {"currentDirectory", askA, askWork, makeA}, {}},
      {"beyond the root",
       KVW(R"(..\..\x)"),
       {root, work},
       {},
       false,
       {"currentDirectory"},
       {beyondRoot(R"(C:\work\..\..\x\)")}},
      {"refused",
       KVW(R"(a\b)"),
       {root, work},
       {{makeB, 5}},
       false,
       {"currentDirectory", askB, askA, askWork, makeA, makeB},
       {notCreated(R"(C:\work\a\b\)", "Denied.")}},
  };
  for (CreateRow const& row : rows) checkCreate(row, KVW(R"(C:\work)"));
  checkCreate({"no current directory", KVW("a"), {root}, {}, false, {"currentDirectory"}, {kNoCurrentDirectory}},
              KVW(""));
  checkCreate({"a bad current directory",
               KVW("a"),
               {root},
               {},
               false,
               {"currentDirectory"},
               {invalidName(R"(C:\w*)"), kBadCurrentDirectory}},
              KVW(R"(C:\w*)"));
}

TEST_F(DirectoryOperations, IsEmptyForExactlyOne) {
  SmartPtr<Directory const> const directory = directoryAt(KVW(R"(C:\a)"));
  for (int const answer : {1, 0, 2, -1, 0x10000}) {
    files.script.emptyDirectories[KVW(R"(\\?\C:\a\)")] = answer;
    EXPECT_EQ(directory->isEmpty(), answer == 1) << answer;
  }
  EXPECT_FALSE(directoryAt(KVW(R"(C:\missing)"))->isEmpty());
  EXPECT_FALSE(directoryAt(KVW("relative"))->isEmpty());
  EXPECT_EQ(files.log().front(), R"(isDirectoryEmpty \\?\C:\a\)");
  EXPECT_EQ(files.log().back(), R"(isDirectoryEmpty relative\)");
  EXPECT_EQ(files.log().size(), 7u);
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(DirectoryOperations, OpenInExplorerByWhatTheShellSays) {
  files.folders({KVW(R"(C:\a b\)")});
  SmartPtr<Directory const> const directory = directoryAt(KVW(R"(C:\a b)"));
  struct Row {
    std::intptr_t answer;
    bool opened;
  };
  for (Row const row : {Row{33, true}, Row{42, true}, Row{32, false}, Row{31, false}, Row{0, false}, Row{-1, false}}) {
    SCOPED_TRACE(row.answer);
    shell.openResult = row.answer;
    shell.log.clear();
    EXPECT_EQ(directory->openInExplorer(), row.opened);
    EXPECT_EQ(shell.log, ScriptedShell::Log{R"(open open \\?\C:\a b\ (null) 10)"});
  }
  EXPECT_EQ(files.log(), Log(6, R"(getAttributes \\?\C:\a b\)"));
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(DirectoryOperations, OpenInExplorerNeedsAnAbsoluteDirectoryThatIsThere) {
  files.script.directory = KVW(R"(C:\)");
  files.folders({KVW(R"(C:\)")});
  files.script.attributes[KVW("here\\")] = kFolderEntry;
  files.script.attributes[KVW(R"(\\?\C:\file\)")] = kFileEntry;
  for (wchar const* path : {KVW("here"), KVW(R"(C:\missing)"), KVW(R"(C:\file)"), KVW("")}) {
    EXPECT_FALSE(directoryAt(path)->openInExplorer()) << narrow(path);
  }
  EXPECT_EQ(shell.log, ScriptedShell::Log());
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(DirectoryOperations, CreateParentDirectoriesFromTheTopDown) {
  files.folders({KVW(R"(C:\)")});
  EXPECT_TRUE(fileAt(KVW(R"(C:\a\b\f.txt)"))->createParentDirectories());
  EXPECT_EQ(files.log(),
            Log({R"(getAttributes \\?\C:\a\)",                              // is it there?
                 R"(getAttributes \\?\C:\a\)", R"(getAttributes \\?\C:\)",  // create asks again
                 R"(createDirectory \\?\C:\a\)",                            //
                 R"(getAttributes \\?\C:\a\b\)",                            //
                 R"(getAttributes \\?\C:\a\b\)", R"(getAttributes \\?\C:\a\)", R"(createDirectory \\?\C:\a\b\)"}));
  files.clearLog();
  EXPECT_TRUE(fileAt(KVW(R"(C:\a\b\g.txt)"))->createParentDirectories());
  EXPECT_EQ(files.log(), Log({R"(getAttributes \\?\C:\a\)", R"(getAttributes \\?\C:\a\b\)"}));
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(DirectoryOperations, CreateParentDirectoriesStopsAtTheFirstFailure) {
  files.folders({KVW(R"(C:\)")});
  files.refused[R"(createDirectory \\?\C:\a\b\)"] = 5;
  EXPECT_FALSE(fileAt(KVW(R"(C:\a\b\c\d\f.txt)"))->createParentDirectories());
  EXPECT_EQ(files.log().back(), R"(createDirectory \\?\C:\a\b\)");
  EXPECT_TRUE(files.has(KVW(R"(C:\a\)")));
  EXPECT_EQ(messages.take(), Texts{notCreated(R"(C:\a\b\)", "Denied.")});
}

TEST_F(DirectoryOperations, CreateParentDirectoriesWithoutALevelDoesNothing) {
  for (wchar const* path :
       {KVW(R"(C:\f.txt)"), KVW("f.txt"), KVW("C:f.txt"), KVW(R"(\f.txt)"), KVW(R"(\\s\t\f.txt)")}) {
    EXPECT_TRUE(fileAt(path)->createParentDirectories()) << narrow(path);
  }
  EXPECT_EQ(files.log(), Log());
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(DirectoryOperations, CreateParentDirectoriesOfARelativeFile) {
  files.script.directory = KVW(R"(C:\work)");
  files.folders({KVW(R"(C:\work\)")});
  EXPECT_TRUE(fileAt(KVW(R"(a\b\f)"))->createParentDirectories());
  EXPECT_TRUE(files.has(KVW(R"(C:\work\a\)")));
  EXPECT_TRUE(files.has(KVW(R"(C:\work\a\b\)")));
  EXPECT_EQ(files.log()[0], R"(getAttributes a\)");
  EXPECT_EQ(files.log()[1], "currentDirectory");
  files.script.directory.clear();
  EXPECT_FALSE(fileAt(KVW(R"(x\y\f)"))->createParentDirectories());
  EXPECT_EQ(messages.take(), Texts{kNoCurrentDirectory});
}

TEST(DirectoryOperationsOnDisk, AFileInTheWay) {
  TempFolder folder;
  folder.write("file", "x");
  auto const at = [&](wchar const* below) { return directoryAt(folder.text(below).c_str()); };
  CollectedMessages messages;
  EXPECT_TRUE(at(KVW("file"))->create()) << "what has the name already is not asked";
  EXPECT_FALSE(at(KVW("file"))->exists());
  EXPECT_EQ(messages.take(), Texts());
  EXPECT_FALSE(at(KVW(R"(file\below)"))->create());
  Texts const reported = messages.take();
  ASSERT_EQ(reported.size(), 1u);
  std::string const start = notCreated(narrow(folder.text(KVW(R"(file\below\)"))), "");
  EXPECT_EQ(reported[0].substr(0, start.size()), start);
  EXPECT_GT(reported[0].size(), start.size()) << "no reason";
  EXPECT_EQ(treeOf(folder.path()), (Tree{{"file", "x"}}));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
