// SPDX-License-Identifier: MIT
//
// What depends on the current directory: makeAbsolute, makeRelative and equals.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/filesystem/path_support.h"
#include "tests/support/scripted_files.h"

namespace KV_1_1 {
namespace testing {
namespace {

// A process in C:\work\now, with D:\data as the current directory of D and nothing on other drives.
class PathAlgebraAbsolute : public ::testing::Test {
 protected:
  PathAlgebraAbsolute() {
    files.script.directory = KVW(R"(C:\work\now)");
    files.script.driveDirectories[3] = KVW(R"(C:\work\now)");
    files.script.driveDirectories[4] = KVW(R"(D:\data)");
  }

  Log calls() {
    Log const log = files.log();
    files.clearLog();
    return log;
  }

  ScriptedFiles files;
  platform::ScopedBackend<platform::FileApi> scope{files};
  CollectedMessages messages;
};

TEST_F(PathAlgebraAbsolute, MakeAbsolute) {
  struct Row {
    char const* name;
    wchar const* text;
    char const* result;
    Log calls;
    Texts messages;
  };
  Log const current = {"currentDirectory"};
  Row const rows[] = {
      {"default", KVW(""), "abs C: [work][now]", current, {}},
      {"relative", KVW("a"), "abs C: [work][now][a]", current, {}},
      {"dots", KVW(R"(..\.\b)"), "abs C: [work][b]", current, {}},
      {"too far", KVW(R"(..\..\..\b)"), "null", current, {beyondRoot(R"(C:\work\now\..\..\..\b\)")}},
      {"relative on a drive", KVW("D:x"), "abs D: [data][x]", {"currentDirectoryOfDrive D"}, {}},
      {"relative on the current drive", KVW("c:"), "abs C: [work][now]", {"currentDirectoryOfDrive C"}, {}},
      {"first drive", KVW("A:x"), "null", {"currentDirectoryOfDrive A"}, {kNoCurrentDirectory}},
      {"last drive", KVW("Z:x"), "null", {"currentDirectoryOfDrive Z"}, {kNoCurrentDirectory}},
      {"absolute", KVW(R"(E:\x)"), "abs E: [x]", {}, {}},
      {"absolute without drive", KVW(R"(\a)"), "abs NIL [a]", {}, {}},
      {"share with dots", KVW(R"(\\s\t\..)"), R"(abs \\s\t [..])", {}, {}},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    SmartPtr<Directory const> const directory = directoryAt(row.text);
    SmartPtr<Directory const> const absolute = directory->makeAbsolute();
    EXPECT_EQ(described(absolute), row.result);
    EXPECT_EQ(absolute == directory, directory->isAbsolute());
    EXPECT_EQ(calls(), row.calls);
    EXPECT_EQ(messages.take(), row.messages);
  }
}

TEST_F(PathAlgebraAbsolute, MakeAbsoluteByWhatTheCurrentDirectoryIs) {
  struct Row {
    char const* name;
    wchar const* current;
    char const* result;
    Texts messages;
  };
  Row const rows[] = {
      {"none", KVW(""), "null", {kNoCurrentDirectory}},
      {"drive root", KVW(R"(C:\)"), "abs C: [b]", {}},
      {"share", KVW(R"(\\s\t\x)"), R"(abs \\s\t [b])", {}},
      {"share root", KVW(R"(\\s\t)"), "null", {beyondRoot(R"(\\s\t\x\..\..\b\)")}},
      {"without drive", KVW(R"(\home)"), "abs NIL [b]", {}},
      {"prefix", KVW(R"(\\?\C:\a)"), "abs C: [b]", {}},
      {"invalid name", KVW(R"(C:\a.)"), "null", {invalidName(R"(C:\a.)"), kBadCurrentDirectory}},
      {"invalid drive", KVW(R"(1:\a)"), "null", {invalidDrive(R"(1:\a)"), kBadCurrentDirectory}},
      {"invalid share", KVW(R"(\\s)"), "null", {noShare("s"), kBadCurrentDirectory}},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    files.script.directory = row.current;
    // From a root the path would lead too far, so each row takes the way that fits it.
    bool const fromRoot = wstring(row.current) == KVW(R"(C:\)");
    SmartPtr<Directory const> const path = directoryAt(fromRoot                                  ? KVW("b")
                                                       : wstring(row.current) == KVW(R"(\\s\t)") ? KVW(R"(x\..\..\b)")
                                                                                                 : KVW(R"(..\b)"));
    EXPECT_EQ(described(path->makeAbsolute()), row.result);
    EXPECT_EQ(messages.take(), row.messages);
  }
}

TEST_F(PathAlgebraAbsolute, MakeAbsoluteOfAFile) {
  EXPECT_EQ(described(fileAt(KVW("x.y"))->makeAbsolute()), "abs C: [work][now] | x | y");
  EXPECT_EQ(described(fileAt(KVW(R"(d:a\x)"))->makeAbsolute()), "abs D: [data][a] | x | ");
  SmartPtr<File const> const absolute = fileAt(KVW(R"(\a\x)"));
  EXPECT_EQ(absolute->makeAbsolute(), absolute);
  EXPECT_EQ(calls(), Log({"currentDirectory", "currentDirectoryOfDrive D"}));
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(PathAlgebraAbsolute, AFileWithoutAbsoluteFormHasNoDirectory) {
  SmartPtr<File const> const file = fileAt(KVW("q:x.y"))->makeAbsolute();
  EXPECT_EQ(messages.take(), Texts{kNoCurrentDirectory});
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(file->getDirectory(), nullptr);
  EXPECT_EQ(shown(file->getName()), "x.y");
  EXPECT_FALSE(file->isAbsolute());

  // Such a file made absolute is a new file without any name, in a default directory.
  calls();
  SmartPtr<File const> const fresh = file->makeAbsolute();
  ASSERT_NE(fresh, nullptr);
  EXPECT_NE(fresh, file);
  EXPECT_EQ(described(fresh), "rel NIL | NIL | NIL");
  EXPECT_EQ(calls(), Log());
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(PathAlgebraAbsolute, AFileWithAnInvalidNameHasNoAbsoluteForm) {
  SmartPtr<File> const file = File::fromString(String(KVW("x")));
  file->setName(String(KVW("a*")));
  EXPECT_EQ(file->makeAbsolute(), nullptr);
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(PathAlgebraAbsolute, MakeRelative) {
  struct Row {
    char const* name;
    wchar const* path;
    wchar const* reference;
    char const* result;
    Texts messages;
  };
  std::string const tooFar = beyondRoot(R"(C:\work\now\..\..\..\)");
  Row const rows[] = {
      {"up and down", KVW(R"(C:\a\b)"), KVW(R"(C:\A\c\d)"), R"(..\..\b\)", {}},
      {"itself", KVW(R"(C:\a\b)"), KVW(R"(C:\a\b)"), R"(.\)", {}},
      {"itself in other case", KVW(R"(C:\a\b)"), KVW(R"(C:\A\B)"), R"(.\)", {}},
      {"below", KVW(R"(C:\a\b\c)"), KVW(R"(C:\a)"), R"(b\c\)", {}},
      {"above", KVW(R"(C:\a)"), KVW(R"(C:\a\b\c)"), R"(..\..\)", {}},
      {"nothing in common", KVW(R"(C:\a)"), KVW(R"(C:\b)"), R"(..\a\)", {}},
      {"from the root", KVW(R"(C:\a)"), KVW(R"(C:\)"), R"(a\)", {}},
      {"to the root", KVW(R"(C:\)"), KVW(R"(C:\a)"), R"(..\)", {}},
      {"other drive", KVW(R"(C:\a\b)"), KVW(R"(D:\x)"), R"(C:\a\b\)", {}},
      {"drive and share", KVW(R"(C:\a)"), KVW(R"(\\s\t\a)"), R"(C:\a\)", {}},
      {"share and drive", KVW(R"(\\s\t\a)"), KVW(R"(C:\a)"), R"(\\s\t\a\)", {}},
      {"drive and none", KVW(R"(C:\a)"), KVW(R"(\a)"), R"(C:\a\)", {}},
      {"two shares are never told apart", KVW(R"(\\s\t\a\b)"), KVW(R"(\\u\v\a\c)"), R"(..\b\)", {}},
      {"share and no drive", KVW(R"(\\s\t\a)"), KVW(R"(\b)"), R"(..\a\)", {}},
      {"no drives", KVW(R"(\a\b)"), KVW(R"(\a\c)"), R"(..\b\)", {}},
      {"share keeps its dots", KVW(R"(\\s\t\a\..)"), KVW(R"(\\s\t\a)"), R"(..\)", {}},
      {"relative path", KVW("x"), KVW(R"(C:\work)"), R"(now\x\)", {}},
      {"relative reference", KVW(R"(C:\work\a)"), KVW("x"), R"(..\..\a\)", {}},
      {"both relative", KVW(R"(a\b)"), KVW(R"(a\c)"), R"(..\b\)", {}},
      {"relative on other drives", KVW("C:x"), KVW("D:y"), R"(C:\work\now\x\)", {}},
      {"no absolute path", KVW("E:x"), KVW(R"(C:\)"), "null", {kNoCurrentDirectory, kNoAbsolutePaths}},
      {"no absolute reference", KVW(R"(C:\)"), KVW("E:x"), "null", {kNoCurrentDirectory, kNoAbsolutePaths}},
      {"path too far", KVW(R"(..\..\..)"), KVW(R"(C:\)"), "null", {tooFar, kNoAbsolutePaths}},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    SmartPtr<Directory const> const relative = directoryAt(row.path)->makeRelative(directoryAt(row.reference));
    EXPECT_EQ(fullName(relative), row.result);
    EXPECT_EQ(messages.take(), row.messages);
  }
}

TEST_F(PathAlgebraAbsolute, CommonLevelsFoldOnlyAsciiLetters) {
  EXPECT_EQ(fullName(directoryAt(KVW("C:\\\u00e4"))->makeRelative(directoryAt(KVW("C:\\\u00c4")))), "..\\\xc3\xa4\\");
  EXPECT_EQ(directoryAt(KVW("C:\\\u00e4"))->equals(directoryAt(KVW("C:\\\u00c4"))), FileSystemItem::Different);
}

TEST_F(PathAlgebraAbsolute, MakeRelativeOfBothWithoutAbsoluteFormEndsInOneMessageOfItsOwn) {
  EXPECT_EQ(directoryAt(KVW("E:x"))->makeRelative(directoryAt(KVW("F:x"))), nullptr);
  Texts const all = messages.take();
  ASSERT_FALSE(all.empty());
  EXPECT_EQ(all.back(), kNoAbsolutePaths);
  EXPECT_EQ(std::count(all.begin(), all.end(), kNoAbsolutePaths), 1);
}

TEST_F(PathAlgebraAbsolute, MakeRelativeOfAFile) {
  SmartPtr<Directory const> const reference = directoryAt(KVW(R"(C:\a\c)"));
  EXPECT_EQ(described(fileAt(KVW(R"(C:\a\b\x.y)"))->makeRelative(reference)), "rel NIL [..][b] | x | y");
  EXPECT_EQ(fullName(fileAt(KVW(R"(C:\a\c\x)"))->makeRelative(reference)), R"(.\x)");
  EXPECT_EQ(fullName(fileAt(KVW(R"(D:\x)"))->makeRelative(reference)), R"(D:\x)");
  EXPECT_EQ(messages.take(), Texts());
  EXPECT_EQ(fileAt(KVW("E:x"))->makeRelative(reference), nullptr);
  EXPECT_EQ(messages.take(), Texts({kNoCurrentDirectory, kNoAbsolutePaths}));
}

TEST_F(PathAlgebraAbsolute, EqualsOfDirectories) {
  using Result = FileSystemItem::ComparisonResult;
  struct Row {
    char const* name;
    wchar const* one;
    wchar const* other;
    Result result;
    Log calls;
  };
  auto const equal = FileSystemItem::Equal;
  auto const different = FileSystemItem::Different;
  Row const rows[] = {
      {"case", KVW(R"(C:\A)"), KVW(R"(c:\a)"), equal, {}},
      {"normalised while read", KVW(R"(C:\a)"), KVW(R"(C:\a\.)"), equal, {}},
      {"relative as they stand", KVW(R"(a\..\b)"), KVW("b"), different, {}},
      {"relative", KVW(R"(a\b)"), KVW(R"(A\B)"), equal, {}},
      {"drives", KVW(R"(C:\a)"), KVW(R"(D:\a)"), different, {}},
      {"drive and none", KVW(R"(C:\a)"), KVW(R"(\a)"), different, {}},
      {"shares in other case", KVW(R"(\\S\T\a)"), KVW(R"(\\s\t\A)"), equal, {}},
      {"other shares", KVW(R"(\\s\t\a)"), KVW(R"(\\s\u\a)"), different, {}},
      {"more levels", KVW(R"(C:\a)"), KVW(R"(C:\a\b)"), different, {}},
      {"other level", KVW(R"(C:\a\b\c)"), KVW(R"(C:\a\x\c)"), different, {}},
      {"relative on a drive and not", KVW("C:a"), KVW("a"), different, {}},
      {"relative and its absolute form", KVW("a"), KVW(R"(C:\work\NOW\a)"), equal, {"currentDirectory"}},
      {"relative and another absolute one", KVW("a"), KVW(R"(C:\a)"), different, {"currentDirectory"}},
      {"dots resolved on the way", KVW(R"(..\a)"), KVW(R"(C:\work\a)"), equal, {"currentDirectory"}},
      {"relative on a drive and absolute", KVW("D:a"), KVW(R"(D:\data\a)"), equal, {"currentDirectoryOfDrive D"}},
      {"no absolute form", KVW("E:a"), KVW(R"(E:\a)"), FileSystemItem::Incomparable, {"currentDirectoryOfDrive E"}},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    SmartPtr<Directory const> const one = directoryAt(row.one);
    SmartPtr<Directory const> const other = directoryAt(row.other);
    EXPECT_EQ(one->equals(other), row.result);
    EXPECT_EQ(calls(), row.calls);
    EXPECT_EQ(other->equals(one), row.result);
    EXPECT_EQ(calls(), row.calls);
    EXPECT_EQ(one->equals(one), equal);
    EXPECT_EQ(one->equals(SmartPtr<Directory const>()), FileSystemItem::Incomparable);
    EXPECT_EQ(calls(), Log());
  }
}

TEST_F(PathAlgebraAbsolute, EqualsOfFiles) {
  auto const file = [](wchar const* text) { return fileAt(text); };
  auto const equal = FileSystemItem::Equal;
  auto const different = FileSystemItem::Different;
  SmartPtr<File const> const reference = file(KVW(R"(C:\a\b.txt)"));
  EXPECT_EQ(reference->equals(SmartPtr<File const>()), FileSystemItem::Incomparable);
  EXPECT_EQ(reference->equals(reference), equal);
  EXPECT_EQ(reference->equals(file(KVW(R"(c:\A\B.TXT)"))), equal);
  EXPECT_EQ(reference->equals(file(KVW(R"(C:\x\b.txt)"))), different);
  EXPECT_EQ(reference->equals(file(KVW(R"(C:\a\c.txt)"))), different);
  EXPECT_EQ(reference->equals(file(KVW(R"(C:\a\b.dat)"))), different);
  EXPECT_EQ(reference->equals(file(KVW(R"(C:\a\b)"))), different);
  EXPECT_EQ(file(KVW("x"))->equals(file(KVW(R"(C:\work\now\X)"))), equal);
  EXPECT_EQ(file(KVW("E:x"))->equals(file(KVW(R"(E:\x)"))), FileSystemItem::Incomparable);

  // NIL and EMPTY differ, in either field and order.
  SmartPtr<File const> const nil = reference->replaceExtension(String::NIL);
  SmartPtr<File const> const empty = reference->replaceExtension(String::EMPTY);
  EXPECT_EQ(nil->equals(empty), different);
  EXPECT_EQ(empty->equals(nil), different);
  EXPECT_EQ(nil->equals(reference->replaceExtension(String::NIL)), equal);
  SmartPtr<File> const nameless(new File(*nil));
  nameless->setName(String::NIL);
  SmartPtr<File> const emptyName(new File(*nil));
  emptyName->setName(String::EMPTY);
  EXPECT_EQ(nameless->equals(emptyName), different);
  EXPECT_EQ(nameless->equals(nameless), equal);
}

TEST(PathAlgebra, MakeAbsoluteOnTheRealSystemGivesTheCurrentDirectory) {
  CollectedMessages messages;
  SmartPtr<Directory const> const current = directoryAt(KVW(""))->makeAbsolute();
  ASSERT_NE(current, nullptr);
  EXPECT_TRUE(current->isAbsolute());
  EXPECT_TRUE(current->exists());
  EXPECT_EQ(fullName(directoryAt(KVW("x"))->makeAbsolute()), shown(current->getFullName()) + "x\\");
  EXPECT_EQ(messages.take(), Texts());
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
