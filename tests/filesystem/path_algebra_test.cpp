// SPDX-License-Identifier: MIT
//
// Paths made from others: parent, levels, appendPath, combine, replaceExtension, contains.
#include <gtest/gtest.h>

#include <string>

#include "tests/filesystem/path_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

TEST(PathAlgebra, Root) {
  EXPECT_EQ(shown(directoryAt(KVW(R"(c:\a)"))->getRoot()), "C:");
  EXPECT_EQ(shown(directoryAt(KVW("c:a"))->getRoot()), "C:");
  EXPECT_EQ(shown(directoryAt(KVW(R"(\\s\t\a)"))->getRoot()), R"(\\s\t)");
  EXPECT_EQ(shown(directoryAt(KVW(R"(\a)"))->getRoot()), "NIL");
  EXPECT_EQ(shown(directoryAt(KVW("a"))->getRoot()), "NIL");
}

TEST(PathAlgebra, Parent) {
  struct Row {
    char const* name;
    wchar const* text;
    char const* parent;
  };
  Row const rows[] = {
      {"default", KVW(""), "null"},
      {"drive root", KVW(R"(C:\)"), "null"},
      {"drive alone", KVW("C:"), "null"},
      {"share", KVW(R"(\\s\t)"), "null"},
      {"root without drive", KVW(R"(\)"), "null"},
      {"one level", KVW(R"(C:\a)"), "abs C:"},
      {"two levels", KVW(R"(C:\a\b)"), "abs C: [a]"},
      {"relative", KVW("a"), "rel NIL"},
      {"two dots are a level like any other", KVW(R"(a\..)"), "rel NIL [a]"},
      {"a dot", KVW("."), "rel NIL"},
      {"below a share", KVW(R"(\\s\t\a)"), R"(abs \\s\t)"},
      {"relative on a drive", KVW("C:a"), "rel C:"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    SmartPtr<Directory const> const directory = directoryAt(row.text);
    std::string const before = described(directory);
    EXPECT_EQ(described(directory->getParent()), row.parent);
    EXPECT_EQ(described(directory), before);
  }
}

TEST(PathAlgebra, AppendLevel) {
  struct Row {
    char const* name;
    wchar const* directory;
    String level;
    char const* result;
    Texts messages;
  };
  Row const rows[] = {
      {"level", KVW(R"(C:\a)"), String(KVW("b")), "abs C: [a][b]", {}},
      {"to the default path", KVW(""), String(KVW("b")), "rel NIL [b]", {}},
      {"a dot stays", KVW(R"(C:\a)"), String(KVW(".")), "abs C: [a][.]", {}},
      {"two dots stay", KVW(R"(C:\)"), String(KVW("..")), "abs C: [..]", {}},
      {"NIL", KVW(R"(C:\a)"), String::NIL, "null", {invalidName("")}},
      {"EMPTY", KVW(R"(C:\a)"), String::EMPTY, "null", {invalidName("")}},
      {"separator", KVW(R"(C:\a)"), String(KVW(R"(b\c)")), "null", {invalidName(R"(b\c)")}},
      {"last separator", KVW(R"(C:\a)"), String(KVW(R"(b\)")), "null", {invalidName(R"(b\)")}},
      {"slash", KVW(R"(C:\a)"), String(KVW("b/c")), "null", {invalidName("b/c")}},
      {"colon", KVW("a"), String(KVW("C:")), "null", {invalidName("C:")}},
      {"last dot", KVW("a"), String(KVW("b.")), "null", {invalidName("b.")}},
      {"last blank", KVW("a"), String(KVW("b ")), "null", {invalidName("b ")}},
      {"counted NUL", KVW("a"), counted(wstring(KVW("b\0c"), 3)), "null", {invalidName("b")}},
  };
  CollectedMessages messages;
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    SmartPtr<Directory const> const directory = directoryAt(row.directory);
    EXPECT_EQ(described(directory->appendLevel(row.level)), row.result);
    EXPECT_EQ(messages.take(), row.messages);
  }
}

// appendPath and combine side by side, for they differ where ".." leads too far and in what they take.
TEST(PathAlgebra, AppendPathAndCombine) {
  struct Row {
    char const* name;
    wchar const* directory;
    wchar const* path;
    char const* appended;
    Texts appendMessages;
    char const* combined;
    Texts combineMessages;
  };
  std::string const tooFar = beyondRoot(R"(C:\a\..\..\)");
  Row const rows[] = {
      {"levels", KVW(R"(C:\a)"), KVW(R"(b\c)"), "abs C: [a][b][c]", {}, "abs C: [a][b][c]", {}},
      {"dots", KVW(R"(C:\a)"), KVW(R"(..\b)"), "abs C: [b]", {}, "abs C: [b]", {}},
      {"default path", KVW(R"(C:\a)"), KVW(""), "abs C: [a]", {}, "abs C: [a]", {}},
      {"a dot", KVW(R"(C:\a)"), KVW("."), "abs C: [a]", {}, "abs C: [a]", {}},
      {"relative back to nothing", KVW("a"), KVW(".."), "rel NIL", {}, "rel NIL", {}},
      {"own dots of a relative path", KVW(R"(a\.\b)"), KVW("c"), "rel NIL [a][b][c]", {}, "rel NIL [a][b][c]", {}},
      {"own dots of a share", KVW(R"(\\s\t\x\..)"), KVW("c"), R"(abs \\s\t [c])", {}, R"(abs \\s\t [c])", {}},
      {"drive of the path is ignored", KVW(R"(C:\a)"), KVW(R"(D:b)"), "abs C: [a][b]", {}, "abs C: [a][b]", {}},
      {"too far", KVW(R"(C:\a)"), KVW(R"(..\..)"), "null", {tooFar}, "abs C:", {tooFar}},
      {"too far and on",
       KVW(R"(C:\a)"),
       KVW(R"(..\..\b)"),
       "null",
       {beyondRoot(R"(C:\a\..\..\b\)")},
       "abs C:",
       {beyondRoot(R"(C:\a\..\..\b\)")}},
      {"relative too far",
       KVW("a"),
       KVW(R"(..\..)"),
       "null",
       {beyondRoot(R"(a\..\..\)")},
       "rel NIL",
       {beyondRoot(R"(a\..\..\)")}},
      {"nothing to leave", KVW(""), KVW(".."), "null", {beyondRoot(R"(..\)")}, "rel NIL", {beyondRoot(R"(..\)")}},
      {"own dots too far",
       KVW(R"(..\a)"),
       KVW("b"),
       "null",
       {beyondRoot(R"(..\a\b\)")},
       "rel NIL",
       {beyondRoot(R"(..\a\b\)")}},
      {"absolute", KVW(R"(C:\a)"), KVW(R"(D:\b)"), "null", {kMustBeRelative}, "abs C: [a][b]", {}},
      {"absolute without drive", KVW("a"), KVW(R"(\b)"), "null", {kMustBeRelative}, "rel NIL [a][b]", {}},
      {"share", KVW(R"(C:\a)"), KVW(R"(\\s\t\b)"), "null", {kMustBeRelative}, "abs C: [a][b]", {}},
      {"share with dots", KVW(R"(C:\a)"), KVW(R"(\\s\t\..\b)"), "null", {kMustBeRelative}, "abs C: [b]", {}},
  };
  CollectedMessages messages;
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    SmartPtr<Directory const> const directory = directoryAt(row.directory);
    SmartPtr<Directory const> const path = directoryAt(row.path);
    std::string const before = described(directory);
    EXPECT_EQ(described(directory->appendPath(*path)), row.appended);
    EXPECT_EQ(messages.take(), row.appendMessages);
    EXPECT_EQ(described(directory->combine(path)), row.combined);
    EXPECT_EQ(messages.take(), row.combineMessages);
    EXPECT_EQ(described(directory), before);
  }
}

TEST(PathAlgebra, CombineKeepsWhatItHadGotTo) {
  CollectedMessages messages;
  SmartPtr<Directory const> const directory = directoryAt(KVW(R"(C:\a\b)"));
  EXPECT_EQ(fullName(directory->combine(directoryAt(KVW(R"(..\x\..\..\..\y)")))), R"(C:\)");
  EXPECT_EQ(messages.take(), Texts{beyondRoot(R"(C:\a\b\..\x\..\..\..\y\)")});
}

TEST(PathAlgebra, CombineWithNullIsTheDirectoryItself) {
  SmartPtr<Directory const> const directory = directoryAt(KVW(R"(C:\a)"));
  EXPECT_EQ(directory->combine(SmartPtr<Directory const>()), directory);
  EXPECT_EQ(directory->combine(SmartPtr<File const>()), nullptr);
}

TEST(PathAlgebra, CombineWithAFile) {
  struct Row {
    char const* name;
    wchar const* directory;
    wchar const* file;
    char const* result;
    Texts messages;
  };
  Row const rows[] = {
      {"name", KVW(R"(C:\a)"), KVW("x.y"), "abs C: [a] | x | y", {}},
      {"relative", KVW(R"(C:\a)"), KVW(R"(..\b\x)"), "abs C: [b] | x | ", {}},
      {"absolute as if relative", KVW(R"(C:\a)"), KVW(R"(D:\b\x)"), "abs C: [a][b] | x | ", {}},
      {"to the default path", KVW(""), KVW(R"(b\x)"), "rel NIL [b] | x | ", {}},
      {"too far", KVW(R"(C:\)"), KVW(R"(..\x)"), "abs C: | x | ", {beyondRoot(R"(C:\..\)")}},
  };
  CollectedMessages messages;
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(described(directoryAt(row.directory)->combine(fileAt(row.file))), row.result);
    EXPECT_EQ(messages.take(), row.messages);
  }
}

TEST(PathAlgebra, CombineWithAFileWhoseNameIsInvalid) {
  SmartPtr<File> const file = File::fromString(String(KVW("x")));
  file->setName(String(KVW("a*")));
  CollectedMessages messages;
  EXPECT_EQ(directoryAt(KVW(R"(C:\a)"))->combine(SmartPtr<File const>(file)), nullptr);
  EXPECT_EQ(messages.take(), Texts());
}

TEST(PathAlgebra, ReplaceExtension) {
  SmartPtr<File const> const file = fileAt(KVW(R"(C:\a\b.txt)"));
  struct Row {
    char const* name;
    String extension;
    char const* result;
  };
  Row const rows[] = {
      {"extension", String(KVW("dat")), "abs C: [a] | b | dat"},
      {"NIL", String::NIL, "abs C: [a] | b | NIL"},
      {"EMPTY", String::EMPTY, "abs C: [a] | b | "},
      {"leading dot", String(KVW(".dat")), "abs C: [a] | b | .dat"},
      {"unchecked", String(KVW(R"(*\:)")), R"(abs C: [a] | b | *\:)"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    SmartPtr<File const> const replaced = file->replaceExtension(row.extension);
    EXPECT_EQ(described(replaced), row.result);
    EXPECT_EQ(replaced->getDirectory(), file->getDirectory());
    EXPECT_NE(replaced, file);
  }
  EXPECT_EQ(described(file), "abs C: [a] | b | txt");
}

TEST(PathAlgebra, ContainsFindsTheTextAnywhereWithCase) {
  struct Row {
    char const* name;
    wchar const* directory;
    wchar const* item;
    bool asDirectory;
    bool asFile;
  };
  Row const rows[] = {
      {"itself", KVW(R"(C:\a)"), KVW(R"(C:\a)"), true, false},
      {"below", KVW(R"(C:\a)"), KVW(R"(C:\a\b)"), true, true},
      {"far below", KVW(R"(C:\a)"), KVW(R"(C:\a\b\c)"), true, true},
      {"above", KVW(R"(C:\a\b)"), KVW(R"(C:\a)"), false, false},
      {"longer name", KVW(R"(C:\a)"), KVW(R"(C:\ab)"), false, false},
      {"other case", KVW(R"(C:\A)"), KVW(R"(C:\a\b)"), false, false},
      {"not anchored", KVW(R"(\a)"), KVW(R"(C:\a\b)"), true, true},
      {"not anchored, relative", KVW("b"), KVW(R"(C:\a\b\c)"), true, true},
      {"end of a name", KVW("a"), KVW(R"(C:\xa\c)"), true, true},
      {"drive alone", KVW("C:"), KVW(R"(C:\a)"), true, true},
      {"default path", KVW(""), KVW(R"(C:\a)"), false, false},
      {"share", KVW(R"(\\s\t)"), KVW(R"(\\s\t\a)"), true, true},
      {"root without drive in a share", KVW(R"(\)"), KVW(R"(\\s\t\a)"), true, true},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    SmartPtr<Directory const> const directory = directoryAt(row.directory);
    EXPECT_EQ(directory->contains(*directoryAt(row.item)), row.asDirectory);
    EXPECT_EQ(directory->contains(*fileAt(row.item)), row.asFile);
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
