// SPDX-License-Identifier: MIT
//
// From a text, or a directory and a name, to a File.
#include <gtest/gtest.h>

#include <string>

#include "tests/filesystem/path_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

TEST(PathParsing, Files) {
  struct Row {
    char const* name;
    wchar const* text;
    char const* fields;
    char const* full;
  };
  Row const rows[] = {
      {"name alone", KVW("b.txt"), "rel NIL | b | txt", R"(.\b.txt)"},
      {"without extension", KVW("b"), "rel NIL | b | ", R"(.\b)"},
      {"dot in front", KVW(".hidden"), "rel NIL |  | hidden", R"(.\.hidden)"},
      {"two dots inside", KVW("a.b.c"), "rel NIL | a.b | c", R"(.\a.b.c)"},
      {"absolute", KVW(R"(C:\a\b.txt)"), "abs C: [a] | b | txt", R"(C:\a\b.txt)"},
      {"in a drive root", KVW(R"(c:\b.txt)"), "abs C: | b | txt", R"(C:\b.txt)"},
      {"split at the colon", KVW("C:b.txt"), "rel C: | b | txt", "C:b.txt"},
      {"relative on a drive", KVW(R"(C:a\b.txt)"), "rel C: [a] | b | txt", R"(C:a\b.txt)"},
      {"later separator is a backslash", KVW(R"(dir/sub\x.txt)"), "rel NIL [dir][sub] | x | txt", R"(dir\sub\x.txt)"},
      {"later separator is a slash", KVW(R"(dir\sub/x.txt)"), "rel NIL [dir][sub] | x | txt", R"(dir\sub\x.txt)"},
      {"only slashes", KVW("dir/x"), "rel NIL [dir] | x | ", R"(dir\x)"},
      {"in the root", KVW(R"(\x)"), "abs NIL | x | ", R"(\x)"},
      {"in the root, slash", KVW("/x"), "abs NIL | x | ", R"(\x)"},
      {"on a share", KVW(R"(\\srv\share\x.y)"), R"(abs \\srv\share | x | y)", R"(\\srv\share\x.y)"},
      {"directory with dots", KVW(R"(C:\a\..\b)"), "abs C: | b | ", R"(C:\b)"},
      {"relative directory keeps dots", KVW(R"(..\b)"), "rel NIL [..] | b | ", R"(..\b)"},
      {"prefix", KVW(R"(\\?\C:\a\b)"), "abs C: [a] | b | ", R"(C:\a\b)"},
      {"prefix of a share", KVW(R"(\\?\UNC\s\t\x)"), R"(abs \\s\t | x | )", R"(\\s\t\x)"},
      {"prefix, split at the colon", KVW(R"(\\?\C:b)"), "rel C: | b | ", "C:b"},
      {"dots in the directory only", KVW(R"(a.b\c)"), "rel NIL [a.b] | c | ", R"(a.b\c)"},
  };
  CollectedMessages messages;
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    SmartPtr<File> const file = File::fromString(String(row.text));
    EXPECT_EQ(described(file), row.fields);
    EXPECT_EQ(fullName(file), row.full);
    EXPECT_EQ(messages.take(), Texts());
  }
}

TEST(PathParsing, RefusedFiles) {
  struct Row {
    char const* name;
    wchar const* text;
    Texts messages;
  };
  Row const rows[] = {
      {"NIL", nullptr, {}},
      {"empty", KVW(""), {}},
      {"empty name", KVW(R"(a\)"), {}},
      {"a dot as name", KVW(R"(a\.)"), {}},
      {"two dots as name", KVW(R"(a\..)"), {}},
      {"a dot alone", KVW("."), {}},
      {"two dots alone", KVW(".."), {}},
      {"drive alone", KVW("C:"), {}},
      {"drive root", KVW(R"(C:\)"), {}},
      {"last dot", KVW("a."), {}},
      {"last blank", KVW("a "), {}},
      {"wildcard", KVW(R"(C:\*)"), {}},
      {"control unit", KVW("a\x1f"), {}},
      {"stream", KVW("a.txt:stream"), {invalidName("a.txt:")}},
      {"stream with path", KVW(R"(C:\a.txt:stream)"), {invalidName(R"(C:\a.txt:)")}},
      {"bad drive", KVW("1:a"), {invalidDrive("1:")}},
      {"bad drive with path", KVW(R"(1:\a)"), {invalidDrive(R"(1:\)")}},
      {"bad level", KVW(R"(a*\b)"), {invalidName(R"(a*\)")}},
      {"bad level, slashes", KVW("a*/b"), {invalidName(R"(a*\)")}},
      {"bad level and bad name", KVW(R"(a*\b*)"), {invalidName(R"(a*\)")}},
      {"beyond the root", KVW(R"(C:\..\b)"), {beyondRoot(R"(C:\..\)")}},
      {"server and share only", KVW(R"(\\srv\share)"), {noShare(R"(srv\)")}},
      {"server only", KVW(R"(\\srv)"), {noShare("")}},
  };
  CollectedMessages messages;
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(File::fromString(String(row.text)), nullptr);
    EXPECT_EQ(messages.take(), row.messages);
  }
}

TEST(PathParsing, FilesOfADirectoryAndAName) {
  struct Row {
    char const* name;
    String text;
    char const* fields;
  };
  Row const rows[] = {
      {"NIL", String::NIL, "null"},
      {"EMPTY", String::EMPTY, "null"},
      {"a dot", String(KVW(".")), "null"},
      {"two dots", String(KVW("..")), "null"},
      {"separator", String(KVW(R"(x\y)")), "null"},
      {"slash", String(KVW("x/y")), "null"},
      {"colon", String(KVW("x:y")), "null"},
      {"last dot", String(KVW("x.")), "null"},
      {"last blank", String(KVW("x ")), "null"},
      {"counted NUL", counted(wstring(KVW("x\0y"), 3)), "null"},
      {"name", String(KVW("x.y.z")), "abs C: [a] | x.y | z"},
      {"without extension", String(KVW("x")), "abs C: [a] | x | "},
      {"dot in front", String(KVW(".x")), "abs C: [a] |  | x"},
  };
  CollectedMessages messages;
  SmartPtr<Directory const> const directory = directoryAt(KVW(R"(C:\a)"));
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(described(File::fromString(*directory, row.text)), row.fields);
  }
  EXPECT_EQ(messages.take(), Texts());
}

TEST(PathParsing, AFileSharesANameWithoutADot) {
  SmartPtr<Directory const> const directory = directoryAt(KVW("C:\\a"));
  String const name(KVW("name"));
  auto const unitsOf = [](String const& text) { return static_cast<wchar const*>(text); };
  EXPECT_EQ(unitsOf(File::fromString(name)->getBaseName()), unitsOf(name));
  EXPECT_EQ(unitsOf(File::fromString(*directory, name)->getBaseName()), unitsOf(name));
  SmartPtr<File> const file = File::fromString(*directory, String(KVW("a.b")));
  file->setName(name);
  EXPECT_EQ(unitsOf(file->getName()), unitsOf(name));
  EXPECT_EQ(unitsOf(file->getExtension()), unitsOf(String::EMPTY));
}

TEST(PathParsing, AFileSharesItsDirectory) {
  SmartPtr<Directory const> const directory = directoryAt(KVW(R"(C:\a)"));
  {
    SmartPtr<File> const file = File::fromString(*directory, String(KVW("x")));
    EXPECT_EQ(file->getDirectory(), directory);
    EXPECT_EQ(directory->getRefCounter(), 2u);
    EXPECT_EQ(file->getRefCounter(), 1u);
  }
  EXPECT_EQ(directory->getRefCounter(), 1u);
}

TEST(PathParsing, AFileNameWithANulIsInvalid) {
  for (wstring const& text : {wstring(KVW("a\0b"), 3), wstring(KVW("C:\\a\0"), 5), wstring(KVW("d\\a\0b"), 5)}) {
    EXPECT_EQ(described(File::fromString(counted(text))), "null") << narrow(text);
  }
}

TEST(PathParsing, AnEmptyExtensionIsAnEmptyTextNotNil) {
  SmartPtr<File> const file = File::fromString(String(KVW("a")));
  EXPECT_TRUE(file->getExtension() != String::NIL);
  EXPECT_EQ(file->getExtension().length(), 0);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
