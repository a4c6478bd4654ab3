// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>
#include <vector>

// The example is a program of its own; its sources are linked into the suite by the tests that try them.
#include "examples/scanshelf/arguments.cpp"
#include "tests/examples/scanshelf_texts.h"

namespace scanshelf {
namespace {

class ScanshelfArguments : public ScanshelfTest {};

struct ArgumentsRow {
  char const* name;
  std::vector<String> words;
  String folder;
  String pattern;
  char const* flags;  // of: all, unix, renumber, help, resources, overwrite, assert, stack
  String copyTo = String::NIL;
};

std::string flagsOf(Arguments const& arguments) {
  return std::string(arguments.all ? "a" : "") + (arguments.unixNames ? "u" : "") + (arguments.renumber ? "r" : "") +
         (arguments.help ? "h" : "") + (arguments.resources ? "s" : "") + (arguments.overwrite ? "o" : "") +
         (arguments.assertHeaders ? "e" : "") + (arguments.stack ? "t" : "");
}

TEST_F(ScanshelfArguments, ReadsFolderPatternAndOptions) {
  String const all = KVW("*");
  ArgumentsRow const rows[] = {
      {"nothing", {}, String::NIL, all, ""},
      {"folder", {KVW("scans")}, KVW("scans"), all, ""},
      {"folder and pattern", {KVW("scans"), KVW("*.dat")}, KVW("scans"), KVW("*.dat"), ""},
      {"brief options", {KVW("-a"), KVW("-u")}, String::NIL, all, "au"},
      {"full options", {KVW("--unix"), KVW("--all"), KVW("--help")}, String::NIL, all, "auh"},
      {"renumbering", {KVW("-r"), KVW("scans"), KVW("--renumber")}, KVW("scans"), all, "r"},
      {"option between", {KVW("scans"), KVW("--all"), KVW("*")}, KVW("scans"), all, "a"},
      {"dash alone is a name", {KVW("-")}, KVW("-"), all, ""},
      {"end of options", {KVW("--"), KVW("-a"), KVW("--")}, KVW("-a"), KVW("--"), ""},
      {"brief target", {KVW("scans"), KVW("-c"), KVW("out")}, KVW("scans"), all, "", KVW("out")},
      {"full target first", {KVW("--copy-to"), KVW("out"), KVW("scans")}, KVW("scans"), all, "", KVW("out")},
      {"target of a sample", {KVW("-c"), KVW("out")}, String::NIL, all, "", KVW("out")},
      {"target to overwrite", {KVW("-o"), KVW("x"), KVW("-c"), KVW("out")}, KVW("x"), all, "o", KVW("out")},
      {"dash alone is a target", {KVW("-c"), KVW("-")}, String::NIL, all, "", KVW("-")},
      {"empty target", {KVW("-c"), KVW("")}, String::NIL, all, "", String::EMPTY},
      {"help goes with anything", {KVW("-h"), KVW("-o")}, String::NIL, all, "ho"},
      {"diagnostics", {KVW("scans"), KVW("-e"), KVW("-t")}, KVW("scans"), all, "et"},
      {"full options of diagnostics", {KVW("--stack"), KVW("--assert")}, String::NIL, all, "et"},
      {"resources go with anything", {KVW("-s"), KVW("-o"), KVW("-r")}, String::NIL, all, "rso"},
      {"full option of resources", {KVW("--resources")}, String::NIL, all, "s"},
      {"language", {KVW("-lang=deu")}, String::NIL, all, ""},
      {"language with a slash, in any case", {KVW("x"), KVW("/LANG=Deu"), KVW("y")}, KVW("x"), KVW("y"), ""},
      {"language of no letter", {KVW("-lang=")}, String::NIL, all, ""},
      {"language behind a target", {KVW("-c"), KVW("out"), KVW("-lang=fra")}, String::NIL, all, "", KVW("out")},
      {"language of four letters", {KVW("/lang=fran")}, KVW("/lang=fran"), all, ""},
      {"language behind the end of options", {KVW("--"), KVW("-lang=deu")}, KVW("-lang=deu"), all, ""},
      {"empty folder", {String::EMPTY}, String::EMPTY, all, ""},
  };
  for (ArgumentsRow const& row : rows) {
    SCOPED_TRACE(row.name);
    Arguments const arguments = readArguments(row.words);
    EXPECT_TRUE(arguments.folder == row.folder);
    EXPECT_TRUE(arguments.pattern == row.pattern);
    EXPECT_TRUE(arguments.copyTo == row.copyTo);
    EXPECT_EQ(flagsOf(arguments), row.flags);
  }
}

TEST_F(ScanshelfArguments, RefusesWhatItDoesNotUnderstand) {
  struct {
    char const* name;
    std::vector<String> words;
    char const* message;
  } const rows[] = {
      {"unknown full option", {KVW("--fast")}, "There is no option '--fast'."},
      {"unknown brief option", {KVW("x"), KVW("-q")}, "There is no option '-q'."},
      {"options are not joined", {KVW("-au")}, "There is no option '-au'."},
      {"language of four letters", {KVW("-lang=fran")}, "There is no option '-lang=fran'."},
      {"language for a target", {KVW("-c"), KVW("-lang=deu")}, "'-c' needs a folder behind it."},
      {"target missing", {KVW("x"), KVW("--copy-to")}, "'--copy-to' needs a folder behind it."},
      {"option for a target", {KVW("-c"), KVW("-o"), KVW("x")}, "'-c' needs a folder behind it."},
      {"two targets", {KVW("-c"), KVW("x"), KVW("--copy-to"), KVW("y")}, "'--copy-to' can be given only once."},
      {"nothing to overwrite", {KVW("x"), KVW("-o")}, "'--overwrite' needs '--copy-to'."},
      {"names and copies", {KVW("-r"), KVW("-c"), KVW("x")}, "'--renumber' and '--copy-to' cannot be used together."},
      {"pattern expanded by the shell",
       {KVW("."), KVW("a.dat"), KVW("b.dat")},
       "'b.dat' is one word too many. Quote a pattern, so that the shell leaves it alone."},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    try {
      readArguments(row.words);
      ADD_FAILURE() << "accepted";
    } catch (UsageError const& error) {
      EXPECT_STREQ(error.what(), row.message);
    }
  }
}

TEST_F(ScanshelfArguments, HelpNamesEveryOption) {
  std::string const help = utf8(helpText());
  for (Option const& option : kOptions) {
    EXPECT_NE(help.find(String(option.brief).stringUTF8() + std::string(", ") + String(option.full).stringUTF8()),
              std::string::npos)
        << String(option.full).stringUTF8();
  }
}

}  // namespace
}  // namespace scanshelf
