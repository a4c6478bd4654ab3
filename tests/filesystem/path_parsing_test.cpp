// SPDX-License-Identifier: MIT
//
// From a text to a Directory.
#include <gtest/gtest.h>

#include <string>

#include "tests/filesystem/path_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

TEST(PathParsing, Directories) {
  struct Row {
    char const* name;
    wchar const* text;
    char const* fields;
    char const* full;
  };
  Row const rows[] = {
      {"NIL", nullptr, "rel NIL", R"(.\)"},
      {"empty", KVW(""), "rel NIL", R"(.\)"},
      {"absolute", KVW(R"(C:\a\b)"), "abs C: [a][b]", R"(C:\a\b\)"},
      {"slashes, dots and small letter", KVW("c:/a/../b//"), "abs C: [b]", R"(C:\b\)"},
      {"drive alone", KVW("C:"), "rel C:", "C:"},
      {"drive root", KVW(R"(C:\)"), "abs C:", R"(C:\)"},
      {"relative on a drive", KVW(R"(C:a\b)"), "rel C: [a][b]", R"(C:a\b\)"},
      {"first and last drive, small", KVW(R"(a:\x)"), "abs A: [x]", R"(A:\x\)"},
      {"last drive, small", KVW(R"(z:\x)"), "abs Z: [x]", R"(Z:\x\)"},
      {"absolute without drive", KVW(R"(\a)"), "abs NIL [a]", R"(\a\)"},
      {"root without drive", KVW(R"(\)"), "abs NIL", R"(\)"},
      {"root without drive, slash", KVW("/"), "abs NIL", R"(\)"},
      {"relative keeps its dots", KVW(R"(a\.\b\..\c)"), "rel NIL [a][.][b][..][c]", R"(a\.\b\..\c\)"},
      {"relative on a drive keeps its dots", KVW(R"(C:..\.)"), "rel C: [..][.]", R"(C:..\.\)"},
      {"a dot", KVW("."), "rel NIL [.]", R"(.\)"},
      {"a dot with separator", KVW(R"(.\)"), "rel NIL [.]", R"(.\)"},
      {"two dots", KVW(".."), "rel NIL [..]", R"(..\)"},
      {"share", KVW(R"(\\srv\share)"), R"(abs \\srv\share)", R"(\\srv\share\)"},
      {"share and level", KVW(R"(\\srv\share\x)"), R"(abs \\srv\share [x])", R"(\\srv\share\x\)"},
      {"share keeps its dots", KVW(R"(\\srv\share\..\x)"), R"(abs \\srv\share [..][x])", R"(\\srv\share\..\x\)"},
      {"share with slashes", KVW("//srv/share"), R"(abs \\srv\share)", R"(\\srv\share\)"},
      {"share with more separators", KVW(R"(\\\\srv\\\share\\x\\)"), R"(abs \\srv\share [x])", R"(\\srv\share\x\)"},
      {"dots as server and share", KVW(R"(\\.\..\x)"), R"(abs \\.\.. [x])", R"(\\.\..\x\)"},
      {"prefix and drive", KVW(R"(\\?\C:\a)"), "abs C: [a]", R"(C:\a\)"},
      {"prefix with slashes", KVW("//?/C:/a"), "abs C: [a]", R"(C:\a\)"},
      {"prefix and dots", KVW(R"(\\?\C:\a\..\b)"), "abs C: [b]", R"(C:\b\)"},
      {"prefix is simply cut", KVW(R"(\\?\a)"), "rel NIL [a]", R"(a\)"},
      {"prefix before a root", KVW(R"(\\?\\a\)"), "abs NIL [a]", R"(\a\)"},
      {"prefix alone", KVW(R"(\\?\)"), "rel NIL", R"(.\)"},
      {"prefix and share", KVW(R"(\\?\UNC\srv\share\x)"), R"(abs \\srv\share [x])", R"(\\srv\share\x\)"},
      {"prefix and share with slashes", KVW("//?/UNC/srv/share"), R"(abs \\srv\share)", R"(\\srv\share\)"},
      {"small unc is no share", KVW(R"(\\?\unc\srv\share)"), "rel NIL [unc][srv][share]", R"(unc\srv\share\)"},
      {"UNC without separator is a level", KVW(R"(\\?\UNC)"), "rel NIL [UNC]", R"(UNC\)"},
      {"doubled separators", KVW(R"(C:\\a\\\b\\)"), "abs C: [a][b]", R"(C:\a\b\)"},
      {"mixed separators", KVW(R"(C:/a\/b)"), "abs C: [a][b]", R"(C:\a\b\)"},
      {"dot below the root", KVW(R"(C:\.)"), "abs C:", R"(C:\)"},
      {"back to the root", KVW(R"(C:\a\..)"), "abs C:", R"(C:\)"},
      {"normalised without drive", KVW(R"(\a\.\b\..\c)"), "abs NIL [a][c]", R"(\a\c\)"},
      {"dots in names", KVW(R"(C:\..a\b..c\.d)"), "abs C: [..a][b..c][.d]", R"(C:\..a\b..c\.d\)"},
      {"blanks in names", KVW(R"(C:\ a\b c)"), "abs C: [ a][b c]", R"(C:\ a\b c\)"},
      {"case of levels stays", KVW(R"(c:\AbC)"), "abs C: [AbC]", R"(C:\AbC\)"},
  };
  CollectedMessages messages;
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    SmartPtr<Directory> const directory = Directory::fromString(row.text);
    EXPECT_EQ(described(directory), row.fields);
    EXPECT_EQ(fullName(directory), row.full);
    EXPECT_EQ(messages.take(), Texts());
  }
}

TEST(PathParsing, RefusedDirectories) {
  struct Row {
    char const* name;
    wchar const* text;
    std::string message;
  };
  Row const rows[] = {
      {"digit as drive", KVW(R"(1:\a)"), invalidDrive(R"(1:\a)")},
      {"digit as drive, slashes", KVW("1:/a"), invalidDrive(R"(1:\a)")},
      {"digit as drive behind a prefix", KVW(R"(\\?\1:\a)"), invalidDrive(R"(1:\a)")},
      {"letter beyond ASCII as drive", KVW("\u00e4:"), invalidDrive("\xc3\xa4:")},
      {"below A", KVW("@:"), invalidDrive("@:")},
      {"behind Z", KVW("[:"), invalidDrive("[:")},
      {"below a", KVW("`:"), invalidDrive("`:")},
      {"behind z", KVW("{:"), invalidDrive("{:")},
      {"separator as drive", KVW(R"(\:a)"), invalidDrive(R"(\:a)")},
      {"colon further on", KVW(R"(ab:\c)"), invalidName(R"(ab:\c)")},
      {"colon in front", KVW(R"(:a)"), invalidName(":a")},
      {"two colons", KVW("::"), invalidName("::")},
      {"second colon", KVW(R"(C:\a:b)"), invalidName(R"(C:\a:b)")},
      {"colon in a share", KVW(R"(\\C:\a)"), invalidName(R"(C:\a)")},
      {"last dot", KVW(R"(C:\a.\b)"), invalidName(R"(C:\a.\b)")},
      {"last blank", KVW(R"(C:\a \b)"), invalidName(R"(C:\a \b)")},
      {"asterisk", KVW(R"(C:\a*)"), invalidName(R"(C:\a*)")},
      {"three dots", KVW(R"(a\...\b)"), invalidName(R"(a\...\b)")},
      {"the text behind the prefix", KVW(R"(\\?\C:\a*)"), invalidName(R"(C:\a*)")},
      {"the text behind the separators of a share", KVW("//srv/sh*re/x"), invalidName(R"(srv\sh*re\x)")},
      {"the text behind the prefix of a share", KVW(R"(\\?\UNC\s*\t)"), invalidName(R"(s*\t\\)")},
      {"bad name before climbing", KVW(R"(C:\..\a*)"), invalidName(R"(C:\..\a*)")},
      {"control unit", KVW("a\x01"), invalidName("a\x01")},
      {"beyond the root", KVW(R"(C:\a\..\..)"), beyondRoot(R"(C:\a\..\..\)")},
      {"beyond the root at once", KVW(R"(C:\..)"), beyondRoot(R"(C:\..\)")},
      {"beyond the root without drive", KVW(R"(/a/../../b)"), beyondRoot(R"(\a\..\..\b\)")},
      {"beyond the root, written otherwise", KVW(R"(c://..//.)"), beyondRoot(R"(C:\..\.\)")},
      {"server alone", KVW(R"(\\srv)"), noShare("srv")},
      {"server and separator", KVW(R"(\\srv\)"), noShare(R"(srv\)")},
      {"server alone, slashes", KVW("//srv/"), noShare(R"(srv\)")},
      {"nothing behind the separators", KVW(R"(\\)"), noShare("")},
      {"three separators", KVW("///"), noShare(R"(\)")},
      {"server alone behind the prefix", KVW(R"(\\?\UNC\srv)"), noShare(R"(srv\\)")},
      {"nothing behind the prefix", KVW(R"(\\?\UNC\)"), noShare(R"(\\)")},
      {"question mark as server", KVW(R"(\\?)"), invalidName("?")},
  };
  CollectedMessages messages;
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(Directory::fromString(row.text), nullptr);
    EXPECT_EQ(messages.take(), Texts{row.message});
  }
}

TEST(PathParsing, ADirectoryIsReadUpToTheFirstNul) {
  struct Row {
    char const* name;
    wstring text;
    char const* fields;
  };
  Row const rows[] = {
      {"inner", wstring(KVW("C:\\a\0\\b*"), 8), "abs C: [a]"},
      {"behind a separator", wstring(KVW("C:\\a\\\0b"), 7), "abs C: [a]"},
      {"at the front", wstring(KVW("\0C:\\a"), 5), "rel NIL"},
      {"last", wstring(KVW("a\0"), 2), "rel NIL [a]"},
      {"in a share", wstring(KVW("\\\\s\\t\\x\0y"), 9), R"(abs \\s\t [x])"},
      {"in a prefix", wstring(KVW("\\\\?\\C:\\x\0:"), 10), "abs C: [x]"},
  };
  CollectedMessages messages;
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(described(Directory::fromString(counted(row.text))), row.fields);
    EXPECT_EQ(messages.take(), Texts());
  }
}

TEST(PathParsing, EachTextGivesAFreshObject) {
  SmartPtr<Directory> const one = Directory::fromString(String(KVW("a")));
  SmartPtr<Directory> const two = Directory::fromString(String(KVW("a")));
  EXPECT_NE(one, two);
  EXPECT_EQ(one->getRefCounter(), 1u);
}

TEST(PathParsing, DirectoriesFromUtf8) {
  struct Row {
    char const* name;
    char const* text;
    char const* full;
  };
  Row const rows[] = {
      {"null", nullptr, R"(.\)"},
      {"empty", "", R"(.\)"},
      {"ASCII", "c:/a", R"(C:\a\)"},
      {"two bytes", "C:\\\xc3\xa4", "C:\\\xc3\xa4\\"},
      {"three bytes", "\xe2\x82\xac", "\xe2\x82\xac\\"},
      {"four bytes", "\xf0\x9f\x98\x80", "\xf0\x9f\x98\x80\\"},
      {"refused", "a*", "null"},
  };
  CollectedMessages messages;
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(fullName(Directory::fromUTF8(row.text)), row.full);
    if (row.text == nullptr) continue;
    EXPECT_EQ(fullName(Directory::fromUTF8(std::string(row.text))), row.full);
  }
  EXPECT_EQ(messages.take(), Texts({invalidName("a*"), invalidName("a*")}));
}

TEST(PathParsing, DirectoriesFromUtf8EndAtTheFirstNul) {
  EXPECT_EQ(fullName(Directory::fromUTF8(std::string("C:\\a\0b", 6))), R"(C:\a\)");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
