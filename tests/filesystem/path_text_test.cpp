// SPDX-License-Identifier: MIT
//
// The texts of a path: full, prefixed and Unix name, name, and setName.
#include <gtest/gtest.h>

#include "tests/filesystem/path_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

TEST(PathText, OfDirectories) {
  struct Row {
    char const* name;
    wchar const* text;
    char const* full;
    char const* unicode;
    char const* unix;
    char const* last;
  };
  Row const rows[] = {
      {"NIL", nullptr, R"(.\)", R"(.\)", "./", "."},
      {"empty", KVW(""), R"(.\)", R"(.\)", "./", "."},
      {"drive root", KVW(R"(C:\)"), R"(C:\)", R"(\\?\C:\)", "C:/", "."},
      {"drive alone", KVW("C:"), "C:", "C:", "C:", "."},
      {"absolute", KVW(R"(C:\a\b)"), R"(C:\a\b\)", R"(\\?\C:\a\b\)", "C:/a/b/", "b"},
      {"relative on a drive", KVW(R"(C:a\b)"), R"(C:a\b\)", R"(C:a\b\)", "C:a/b/", "b"},
      {"share", KVW(R"(\\srv\share)"), R"(\\srv\share\)", R"(\\?\UNC\srv\share\)", "//srv/share/", "."},
      {"below a share", KVW(R"(\\srv\share\x)"), R"(\\srv\share\x\)", R"(\\?\UNC\srv\share\x\)", "//srv/share/x/", "x"},
      {"root without drive", KVW(R"(\)"), R"(\)", R"(\\?\\)", "/", "."},
      {"absolute without drive", KVW(R"(\a)"), R"(\a\)", R"(\\?\\a\)", "/a/", "a"},
      {"relative", KVW(R"(a\b)"), R"(a\b\)", R"(a\b\)", "a/b/", "b"},
      {"a dot", KVW("."), R"(.\)", R"(.\)", "./", "."},
      {"two dots", KVW(".."), R"(..\)", R"(..\)", "../", ".."},
      {"share with dots", KVW(R"(\\srv\share\..)"), R"(\\srv\share\..\)", R"(\\?\UNC\srv\share\..\)", "//srv/share/../",
       ".."},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    SmartPtr<Directory const> const directory = directoryAt(row.text);
    ASSERT_NE(directory, nullptr);
    EXPECT_EQ(shown(directory->getFullName()), row.full);
    EXPECT_EQ(shown(directory->getFullNameUnicode()), row.unicode);
    EXPECT_EQ(shown(directory->getFullNameUnix()), row.unix);
    EXPECT_EQ(shown(directory->getName()), row.last);
  }
}

TEST(PathText, OfFiles) {
  struct Row {
    char const* name;
    wchar const* text;
    char const* full;
    char const* unicode;
    char const* unix;
    char const* last;
  };
  Row const rows[] = {
      {"in the default directory", KVW("b.txt"), R"(.\b.txt)", R"(.\b.txt)", "./b.txt", "b.txt"},
      {"without extension", KVW("b"), R"(.\b)", R"(.\b)", "./b", "b"},
      {"dot in front", KVW(".hidden"), R"(.\.hidden)", R"(.\.hidden)", "./.hidden", ".hidden"},
      {"absolute", KVW(R"(C:\a\b.c.d)"), R"(C:\a\b.c.d)", R"(\\?\C:\a\b.c.d)", "C:/a/b.c.d", "b.c.d"},
      {"in a drive root", KVW(R"(C:\b)"), R"(C:\b)", R"(\\?\C:\b)", "C:/b", "b"},
      {"relative on a drive", KVW("C:b.txt"), "C:b.txt", "C:b.txt", "C:b.txt", "b.txt"},
      {"on a share", KVW(R"(\\srv\share\x\b)"), R"(\\srv\share\x\b)", R"(\\?\UNC\srv\share\x\b)", "//srv/share/x/b",
       "b"},
      {"absolute without drive", KVW(R"(\a\b)"), R"(\a\b)", R"(\\?\\a\b)", "/a/b", "b"},
      {"relative", KVW(R"(a\b)"), R"(a\b)", R"(a\b)", "a/b", "b"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    SmartPtr<File const> const file = fileAt(row.text);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(shown(file->getFullName()), row.full);
    EXPECT_EQ(shown(file->getFullNameUnicode()), row.unicode);
    EXPECT_EQ(shown(file->getFullNameUnix()), row.unix);
    EXPECT_EQ(shown(file->getName()), row.last);
  }
}

// COMPAT: such a name is not checked, and its text is that of a share if its directory is a root without drive.
TEST(PathText, OfAFileWhoseNameBeginsWithASeparator) {
  struct Row {
    char const* name;
    wchar const* file;
    char const* full;
    char const* unicode;
    char const* unix;
  };
  Row const rows[] = {
      {"in a root without drive", KVW(R"(\a)"), R"(\\x)", R"(\\?\UNC\x)", R"(/\x)"},
      {"below it", KVW(R"(\a\b)"), R"(\a\\x)", R"(\\?\\a\\x)", R"(/a/\x)"},
      {"in a drive root", KVW(R"(C:\a)"), R"(C:\\x)", R"(\\?\C:\\x)", R"(C:/\x)"},
      {"relative", KVW("a"), R"(.\\x)", R"(.\\x)", R"(./\x)"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    SmartPtr<File> const file = File::fromString(String(row.file));
    file->setName(String(KVW(R"(\x)")));
    EXPECT_EQ(shown(file->getFullName()), row.full);
    EXPECT_EQ(shown(file->getFullNameUnicode()), row.unicode);
    EXPECT_EQ(shown(file->getFullNameUnix()), row.unix);
  }
}

// One text, two paths: the parsed "." has a level.
TEST(PathText, OfTheDefaultDirectoryIsThatOfAParsedDot) {
  SmartPtr<Directory const> const byDefault(new Directory);
  SmartPtr<Directory const> const parsed = directoryAt(KVW("."));
  EXPECT_EQ(shown(byDefault->getFullName()), shown(parsed->getFullName()));
  EXPECT_EQ(described(byDefault), "rel NIL");
  EXPECT_EQ(described(parsed), "rel NIL [.]");
  EXPECT_EQ(byDefault->equals(parsed), FileSystemItem::Different);
}

TEST(PathText, AFileShowsItsExtensionOnlyIfItHasOne) {
  struct Row {
    char const* name;
    String extension;
    char const* shownName;
  };
  Row const rows[] = {
      {"NIL", String::NIL, "a"},
      {"EMPTY", String::EMPTY, "a"},
      {"empty text of its own", String(KVW("")), "a"},
      {"some", String(KVW("x")), "a.x"},
      {"with its own dot", String(KVW(".x")), "a..x"},
  };
  SmartPtr<File const> const file = fileAt(KVW("a.txt"));
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(shown(file->replaceExtension(row.extension)->getName()), row.shownName);
  }
}

TEST(PathText, SetNameOfADirectoryReplacesTheLastLevelByAValidName) {
  struct Row {
    char const* name;
    wchar const* directory;
    String newName;
    char const* expected;
  };
  Row const rows[] = {
      {"valid", KVW(R"(C:\a\b)"), String(KVW("x")), "abs C: [a][x]"},
      {"a dot", KVW(R"(C:\a\b)"), String(KVW(".")), "abs C: [a][.]"},
      {"two dots", KVW("a"), String(KVW("..")), "rel NIL [..]"},
      {"NIL", KVW(R"(C:\a)"), String::NIL, "abs C: [a]"},
      {"EMPTY", KVW(R"(C:\a)"), String::EMPTY, "abs C: [a]"},
      {"separator", KVW(R"(C:\a)"), String(KVW(R"(x\y)")), "abs C: [a]"},
      {"wildcard", KVW(R"(C:\a)"), String(KVW("*")), "abs C: [a]"},
      {"last dot", KVW(R"(C:\a)"), String(KVW("x.")), "abs C: [a]"},
      {"no level", KVW(R"(C:\)"), String(KVW("x")), "abs C:"},
      {"share without level", KVW(R"(\\s\t)"), String(KVW("x")), R"(abs \\s\t)"},
      {"default path", KVW(""), String(KVW("x")), "rel NIL"},
  };
  CollectedMessages messages;
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    SmartPtr<Directory> const directory = Directory::fromString(row.directory);
    directory->setName(row.newName);
    EXPECT_EQ(described(directory), row.expected);
  }
  EXPECT_EQ(messages.take(), Texts());
}

TEST(PathText, SetNameOfAFileSplitsAtTheLastDotAndChecksNothing) {
  struct Row {
    char const* name;
    String newName;
    char const* base;
    char const* extension;
    char const* shownName;
  };
  Row const rows[] = {
      {"NIL", String::NIL, "NIL", "", "NIL"},
      {"EMPTY", String::EMPTY, "", "", ""},
      {"no dot", String(KVW("abc")), "abc", "", "abc"},
      {"one dot", String(KVW("a.txt")), "a", "txt", "a.txt"},
      {"two dots inside", String(KVW("a.b.c")), "a.b", "c", "a.b.c"},
      {"last dot", String(KVW("a.")), "a", "", "a"},
      {"first dot", String(KVW(".hidden")), "", "hidden", ".hidden"},
      {"a dot alone", String(KVW(".")), "", "", ""},
      {"two dots alone", String(KVW("..")), ".", "", "."},
      {"forbidden characters", String(KVW(R"(a\b*.?)")), R"(a\b*)", "?", R"(a\b*.?)"},
      {"blanks", String(KVW(" a . ")), " a ", " ", " a . "},
  };
  CollectedMessages messages;
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    SmartPtr<File> const file = File::fromString(String(KVW("old.ext")));
    file->setName(row.newName);
    EXPECT_EQ(shown(file->getBaseName()), row.base);
    EXPECT_EQ(shown(file->getExtension()), row.extension);
    EXPECT_EQ(shown(file->getName()), row.shownName);
  }
  EXPECT_EQ(messages.take(), Texts());
}

TEST(PathText, TextsOutliveTheirPath) {
  SmartPtr<Directory const> directory = directoryAt(KVW(R"(\\s\t\x)"));
  String const texts[] = {directory->getFullName(), directory->getName(), directory->getRoot()};
  directory = nullptr;
  EXPECT_EQ(shown(texts[0]), R"(\\s\t\x\)");
  EXPECT_EQ(shown(texts[1]), "x");
  EXPECT_EQ(shown(texts[2]), R"(\\s\t)");
}

TEST(PathText, WritingToATextLeavesThePathAlone) {
  SmartPtr<Directory const> const drive = directoryAt(KVW("C:"));
  String root = drive->getRoot();
  root[0] = KVW('D');
  String name = drive->getFullName();
  name[0] = KVW('E');
  EXPECT_EQ(described(drive), "rel C:");
  EXPECT_EQ(fullName(drive), "C:");
}

TEST(PathText, CopiesShareNothingThatChanges) {
  SmartPtr<Directory> const directory = Directory::fromString(String(KVW(R"(C:\a\b)")));
  SmartPtr<Directory> const copy(new Directory(*directory));
  EXPECT_EQ(copy->getRefCounter(), 1u);
  copy->setName(String(KVW("x")));
  EXPECT_EQ(described(directory), "abs C: [a][b]");
  EXPECT_EQ(described(copy), "abs C: [a][x]");

  SmartPtr<File> const file = File::fromString(String(KVW(R"(C:\a\b.txt)")));
  SmartPtr<File> const fileCopy(new File(*file));
  EXPECT_EQ(fileCopy->getRefCounter(), 1u);
  EXPECT_EQ(fileCopy->getDirectory(), file->getDirectory());
  fileCopy->setName(String(KVW("x")));
  EXPECT_EQ(described(file), "abs C: [a] | b | txt");
  EXPECT_EQ(described(fileCopy), "abs C: [a] | x | ");
}

TEST(PathText, AssignmentTakesTheFieldsAndLeavesTheCount) {
  SmartPtr<Directory> const source = Directory::fromString(String(KVW(R"(C:\a\b)")));
  SmartPtr<Directory> const target = Directory::fromString(String(KVW(R"(\\s\t\x)")));
  SmartPtr<Directory> const secondOwner = target;
  EXPECT_EQ(&(*target = *source), target.get());
  EXPECT_EQ(described(target), "abs C: [a][b]");
  EXPECT_EQ(target->getRefCounter(), 2u);
  EXPECT_EQ(source->getRefCounter(), 1u);
  Directory& self = *target;
  *target = self;
  EXPECT_EQ(described(target), "abs C: [a][b]");

  SmartPtr<File> const file = File::fromString(String(KVW(R"(C:\a\b.txt)")));
  SmartPtr<File> const other = File::fromString(String(KVW("x")));
  EXPECT_EQ(&(*other = *file), other.get());
  EXPECT_EQ(described(other), "abs C: [a] | b | txt");
  EXPECT_EQ(other->getDirectory(), file->getDirectory());
  EXPECT_EQ(other->getRefCounter(), 1u);
  File& selfFile = *other;
  *other = selfFile;
  EXPECT_EQ(described(other), "abs C: [a] | b | txt");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
