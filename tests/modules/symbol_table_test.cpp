// SPDX-License-Identifier: MIT
#include "kvbase/modules/symbol_table.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "kvbase/platform/text_api.h"
#include "tests/support/scripted_text.h"
#include "tests/support/symbol_tables.h"
#include "tests/support/threads.h"

namespace KV_1_1 {
namespace testing {
namespace {

// --- One line -----------------------------------------------------------------------------------------------------------

struct LineRow {
  char const* name;
  char const* line;
  bool success;
  char const* table;  // what the line adds to a table with A=7 and ALL=4294967295
};

LineRow const kLines[] = {
    // The format.
    {"without #define", "some text", true, ""},
    {"a name and a number", "#define NAME 123", true, "NAME=123"},
    {"a remark behind the number", "#define NAME 123 // remark", true, "NAME=123"},
    {"the name of an earlier line", "#define NAME A", true, "NAME=7"},
    {"the name of an earlier line in another case", "#define NAME a", true, "NAME=7"},
    {"an unknown name", "#define NAME OTHER", false, ""},
    {"a name without value", "#define NAME", true, "NAME=0"},
    {"a hexadecimal number", "#define NAME 0x10", true, "NAME=0"},
    {"a symbol of the resource editor", "#define _APS_NEXT_CONTROL_VALUE 5", true, ""},
    {"#define alone", "#define", false, ""},
    {"no blank behind #define", "#defineNAME 1", false, ""},
    {"a known name", "#define A 1", false, ""},
    {"a known name in another case", "#define a 1", false, ""},
    {"several blanks and tabs", "\t #define \t\tNAME \t 12\t", true, "NAME=12"},
    {"a carriage return at the end", "#define NAME 12\r", true, "NAME=12"},
    // Step 1: anywhere, with case.
    {"an empty line", "", true, ""},
    {"a blank line", " \t\r", true, ""},
    {"another directive", "#include \"a.h\"", true, ""},
    {"#DEFINE in capitals", "#DEFINE NAME 1", true, ""},
    {"a blank behind the hash", "# define NAME 1", true, ""},
    {"behind //", "// #define NAME 3", true, "NAME=3"},
    {"in a block comment", "/* #define NAME 3 */", true, "NAME=3"},
    {"behind other text without a blank", "x#define NAME 3", true, "NAME=3"},
    {"twice: the first counts", "#define NAME 3 #define B 4", true, "NAME=3"},
    {"two hashes", "##define NAME 3", true, "NAME=3"},
    // Step 2.
    {"#define and blanks", "#define  \t", false, ""},
    {"#define and a carriage return", "#define\r", false, ""},
    {"#define at the end behind text", "// no #define", false, ""},
    {"#defined", "#ifdef #defined NAME 1", false, ""},
    // Step 3: any name.
    {"a macro with arguments", "#define MAX(a,b) 4", true, "MAX(a,b)=4"},
    {"a macro with a blank in its arguments", "#define MAX(a, b) 4", false, ""},
    {"a name of punctuation", "#define \"+\" 4", true, "\"+\"=4"},
    {"a name of digits", "#define 12 34", true, "12=34"},
    {"a name that ends at a control character",
     "#define NAME\x01"
     "5",
     true, "NAME=5"},
    // Step 5.
    {"_APS alone", "#define _APS 5", true, ""},
    {"_APS without value", "#define _APS_3D_CONTROLS", true, ""},
    {"_APS with an unknown name", "#define _APS_X OTHER", true, ""},
    {"_APS in lower case is a name", "#define _aps_x 5", true, "_aps_x=5"},
    {"_APS further on is a name", "#define X_APS 5", true, "X_APS=5"},
    {"three characters of _APS", "#define _AP 5", true, "_AP=5"},
    // Step 6: no value.
    {"a name and blanks", "#define NAME  \t", true, "NAME=0"},
    {"a name and a carriage return", "#define NAME\r", true, "NAME=0"},
    {"a name at the end of a comment", "// #define NAME", true, "NAME=0"},
    {"a name at the end behind a number", "12 #define NAME", true, "NAME=12"},
    {"a name at the end behind a known name", "A #define NAME", true, "NAME=7"},
    {"a name at the end behind a word", "word #define NAME", false, ""},
    {"a name and blanks behind a number", "12 #define NAME ", true, "NAME=12"},
    {"a name and blanks behind a known name", "A #define NAME ", false, ""},
    {"a name and blanks behind punctuation", "; #define NAME ", true, "NAME=0"},
    // Step 7: decimal, from the first letter, digit or sign.
    {"zero", "#define NAME 0", true, "NAME=0"},
    {"leading zeros", "#define NAME 0012", true, "NAME=12"},
    {"the largest number", "#define NAME 4294967295", true, "NAME=4294967295"},
    {"a number too large", "#define NAME 4294967296", true, "NAME=4294967295"},
    {"a plus sign", "#define NAME +5", true, "NAME=5"},
    {"-1", "#define NAME -1", true, "NAME=4294967295"},
    {"-2", "#define NAME -2", true, "NAME=4294967294"},
    {"a number in brackets", "#define NAME (12)", true, "NAME=12"},
    {"a sign in brackets", "#define NAME (-2)", true, "NAME=4294967294"},
    {"a fraction", "#define NAME 1.5", true, "NAME=1"},
    // Step 8: something was taken.
    {"0x8000", "#define NAME 0x8000", true, "NAME=0"},
    {"a suffix", "#define NAME 10L", true, "NAME=10"},
    {"a number joined to text", "#define NAME 5x+3", true, "NAME=5"},
    {"an expression of a name in brackets", "#define NAME (FOO-1)", true, "NAME=0"},
    {"a known name in brackets", "#define NAME (A)", true, "NAME=0"},
    {"punctuation only", "#define NAME ()", true, "NAME=0"},
    {"a text in quotes", "#define NAME \"text\"", true, "NAME=0"},
    {"a remark in place of a value", "#define NAME // remark", true, "NAME=0"},
    {"a full stop in brackets", "#define NAME (.)", true, "NAME=0"},
    // Step 9: nothing was taken, so the value is a name.
    {"a sign alone is a name", "#define NAME -", false, ""},
    {"a full stop and a digit are a name", "#define NAME .5", false, ""},
    {"an expression of names", "#define NAME A+1", false, ""},
    {"its own name", "#define NAME NAME", false, ""},
    {"a name with number 0xFFFFFFFF", "#define NAME ALL", false, ""},
};

TEST(SymbolTable, TakesOneLine) {
  for (LineRow const& row : kLines) {
    SCOPED_TRACE(row.name);
    for (std::string const lineEnd : {"", "\n"}) {
      SymbolTable table = tableOf("#define A 7\n#define ALL -1\n");
      EXPECT_EQ(parse(table, row.line + lineEnd), row.success);
      Definitions added;
      for (auto const& definition : definitionsByName(table))
        if (definition.first != KVW("A") && definition.first != KVW("ALL")) added.push_back(definition);
      EXPECT_EQ(shown(added), row.table);
      EXPECT_EQ(table[KVW("A")], 7u);
      EXPECT_EQ(definitionsByValue(table).size(), definitionsByName(table).size());
    }
  }
}

// The same lines one by one, without a stream.
TEST(SymbolTable, TakesOneLineAsAString) {
  for (LineRow const& row : kLines) {
    SCOPED_TRACE(row.name);
    SymbolTable fromStream = tableOf("#define A 7\n#define ALL -1\n");
    SymbolTable fromLine = fromStream;
    parse(fromStream, row.line);
    EXPECT_EQ(parseLine(fromLine, String(widen(row.line).c_str())), row.success);
    EXPECT_EQ(shown(fromLine), shown(fromStream));
    EXPECT_EQ(definitionsByValue(fromLine), definitionsByValue(fromStream));
  }
}

TEST(SymbolTable, TakesNothingFromALineWithoutText) {
  SymbolTable table;
  EXPECT_TRUE(parseLine(table, String::NIL));
  EXPECT_TRUE(parseLine(table, String::EMPTY));
  EXPECT_EQ(shown(table), "");
}

// --- Whole texts --------------------------------------------------------------------------------------------------------

struct TextRow {
  char const* name;
  char const* text;
  bool success;
  char const* table;
};

TextRow const kTexts[] = {
    {"an empty text", "", true, ""},
    {"a line feed", "\n", true, ""},
    {"only comments", "// a\n// b\n", true, ""},
    {"line feeds", "#define A 1\n#define B 2\n", true, "A=1 B=2"},
    {"carriage returns and line feeds", "#define A 1\r\n#define B 2\r\n\r\n", true, "A=1 B=2"},
    {"carriage returns alone make one line", "#define A 1\r#define B 2\r", true, "A=1"},
    {"a last line without end", "#define A 1\n#define B 2", true, "A=1 B=2"},
    {"a last line without value or end", "#define A 1\r\n#define B", true, "A=1 B=0"},
    {"a faulty first line", "#define\n#define A 1\n", false, "A=1"},
    {"a faulty line between others", "#define A 1\n#define A 2\n#define B 3\n", false, "A=1 B=3"},
    {"a faulty last line", "#define A 1\n#define B C", false, "A=1"},
    {"a name that is defined below", "#define B A\n#define A 1\n", false, "A=1"},
    {"a name that is defined above", "#define A 1\n#define B A\n", true, "A=1 B=1"},
    {"a chain of names", "#define A 1\n#define B A\n#define C b\n", true, "A=1 B=1 C=1"},
    {"names that differ in case", "#define Foo 1\n#define FOO 2\n", false, "Foo=1"},
    {"equal definitions", "#define A 1\n#define A 1\n", false, "A=1"},
    {"names out of order", "#define C 1\n#define A 2\n#define _ 3\n#define b 4\n", true, "_=3 A=2 b=4 C=1"},
    {"a continued line", "#define A \\\n 5\n", true, "A=0"},
};

TEST(SymbolTable, TakesWholeTexts) {
  for (TextRow const& row : kTexts) {
    SCOPED_TRACE(row.name);
    SymbolTable table;
    EXPECT_EQ(parse(table, row.text), row.success);
    EXPECT_EQ(shown(table), row.table);
  }
}

TEST(SymbolTable, ANameIsKeptAsItIsFirstWritten) {
  SymbolTable table;
  EXPECT_FALSE(parse(table, "#define Foo 1\n#define FOO 2\n"));
  EXPECT_EQ(joined(table[1]), "Foo");
  EXPECT_EQ(joined(table[2]), "");
  EXPECT_EQ(table[KVW("foo")], 1u);
}

TEST(SymbolTable, ASecondTextAddsToTheFirst) {
  SymbolTable table = tableOf("#define A 1\n#define B 2\n");
  EXPECT_TRUE(parse(table, "#define C A\n#define D 2\n"));
  EXPECT_EQ(shown(table), "A=1 B=2 C=1 D=2");
  EXPECT_FALSE(parse(table, "#define a 9\n#define E 5\n"));
  EXPECT_EQ(shown(table), "A=1 B=2 C=1 D=2 E=5");
}

TEST(SymbolTable, NamesOfOneNumberStandInTheOrderOfTheirDefinition) {
  SymbolTable table = tableOf("#define Z 5\n#define M 1\n#define A 5\n#define N 1\n");
  EXPECT_TRUE(parse(table, "#define K 5\n#define B 1\n"));
  EXPECT_EQ(shown(definitionsByValue(table)), "M=1 N=1 B=1 Z=5 A=5 K=5");
}

// --- Lookups ------------------------------------------------------------------------------------------------------------

TEST(SymbolTable, LookupIgnoresCase) {
  SymbolTable const table = tableOf("#define IDC_LENGTH 4112\n");
  EXPECT_EQ(table.lookupSymbol(KVW("IDC_LENGTH")), 4112u);
  EXPECT_EQ(table.lookupSymbol(KVW("idc_length")), 4112u);
  EXPECT_EQ(table[KVW("Idc_Length")], 4112u);
}

TEST(SymbolTable, LookupOfAMissingNameGivesTheLargestNumber) {
  SymbolTable const table = tableOf("#define IDC_LENGTH 4112\n");
  EXPECT_EQ(table.lookupSymbol(String::NIL), kNoSymbol);
  EXPECT_EQ(table.lookupSymbol(String::EMPTY), kNoSymbol);
  EXPECT_EQ(table.lookupSymbol(KVW("IDC_LENGT")), kNoSymbol);
  EXPECT_EQ(table.lookupSymbol(KVW("IDC_LENGTH2")), kNoSymbol);
  EXPECT_EQ(table[String::NIL], kNoSymbol);
}

TEST(SymbolTable, ANumberOfMinusOneLooksLikeAMissingName) {
  SymbolTable const table = tableOf("#define X -1\n");
  EXPECT_EQ(table.lookupSymbol(KVW("X")), 0xFFFFFFFFu);
  EXPECT_EQ(joined(table.lookupValue(0xFFFFFFFF)), "X");
  EXPECT_EQ(shown(table), "X=4294967295");
}

TEST(SymbolTable, LookupOfANumberGivesItsNamesInTheirOrder) {
  SymbolTable const table = tableOf("#define beta 3\n#define C 4\n#define Alpha 3\n#define _x 3\n");
  EXPECT_EQ(joined(table.lookupValue(3)), "_x Alpha beta");
  EXPECT_EQ(joined(table[3]), "_x Alpha beta");
  EXPECT_EQ(joined(table[4]), "C");
}

TEST(SymbolTable, LookupOfANumberWithoutNameGivesAnEmptySet) {
  SymbolTable const table = tableOf("#define A 3\n");
  EXPECT_TRUE(table.lookupValue(0).empty());
  EXPECT_TRUE(table[2].empty());
  EXPECT_TRUE(table[4].empty());
  EXPECT_TRUE(table.lookupValue(0xFFFFFFFF).empty());
}

// --- The tables themselves ----------------------------------------------------------------------------------------------

TEST(SymbolTable, ANewTableIsEmpty) {
  SymbolTable const table;
  EXPECT_EQ(table.lookupSymbol(KVW("A")), kNoSymbol);
  EXPECT_TRUE(table.lookupValue(0).empty());
  EXPECT_TRUE(symbolsByName(table).empty());
  EXPECT_TRUE(symbolsByValue(table).empty());
}

TEST(SymbolTable, HoldsNamesAndThenNumbersAndNothingElse) {
  SymbolTable const table;
  EXPECT_EQ(static_cast<void const*>(&symbolsByName(table)), &table);
  EXPECT_EQ(static_cast<void const*>(&symbolsByValue(table)), &symbolsByName(table) + 1);
  EXPECT_EQ(sizeof table, sizeof(SymbolsByName) + sizeof(SymbolsByValue));
}

TEST(SymbolTable, TheConstantIsEmpty) {
  EXPECT_EQ(SymbolTable::EMPTY.lookupSymbol(KVW("A")), kNoSymbol);
  EXPECT_TRUE(SymbolTable::EMPTY[0].empty());
  EXPECT_TRUE(symbolsByName(SymbolTable::EMPTY).empty());
  EXPECT_TRUE(symbolsByValue(SymbolTable::EMPTY).empty());
  EXPECT_TRUE((std::is_same<decltype((SymbolTable::EMPTY)), SymbolTable const&>::value));
}

constexpr char kText[] = "#define B 2\n#define A 2\n#define C 1\n";
constexpr char kByName[] = "A=2 B=2 C=1";
constexpr char kByValue[] = "C=1 B=2 A=2";

void expectContents(SymbolTable const& table) {
  EXPECT_EQ(shown(table), kByName);
  EXPECT_EQ(shown(definitionsByValue(table)), kByValue);
}

void expectEmptyAndUsable(SymbolTable& table) {
  EXPECT_EQ(shown(table), shown(SymbolTable::EMPTY));
  EXPECT_EQ(shown(definitionsByValue(table)), "");
  EXPECT_EQ(table.lookupSymbol(KVW("A")), kNoSymbol);
  EXPECT_TRUE(table.lookupValue(2).empty());
  EXPECT_NE(&table, &SymbolTable::EMPTY);
  EXPECT_TRUE(parse(table, "#define A 9\n"));
  EXPECT_EQ(shown(table), "A=9");
}

TEST(SymbolTable, ACopyStandsForItself) {
  SymbolTable source = tableOf(kText);
  SymbolTable copy(source);
  expectContents(copy);
  EXPECT_TRUE(parse(copy, "#define D 4\n"));
  expectContents(source);
  EXPECT_TRUE(parse(source, "#define E 5\n"));
  EXPECT_EQ(shown(copy), "A=2 B=2 C=1 D=4");
}

TEST(SymbolTable, AMovedTableIsEmptyAndUsable) {
  SymbolTable source = tableOf(kText);
  SymbolTable const moved(std::move(source));
  expectContents(moved);
  expectEmptyAndUsable(source);
  expectContents(moved);
}

TEST(SymbolTable, CopyAssignmentReplacesTheContents) {
  SymbolTable const source = tableOf(kText);
  SymbolTable target = tableOf("#define OLD 1\n");
  EXPECT_EQ(&(target = source), &target);
  expectContents(target);
  expectContents(source);
  target = SymbolTable::EMPTY;
  expectEmptyAndUsable(target);
  expectContents(source);
}

TEST(SymbolTable, MoveAssignmentReplacesTheContentsAndEmptiesTheSource) {
  SymbolTable source = tableOf(kText);
  SymbolTable target = tableOf("#define OLD 1\n");
  EXPECT_EQ(&(target = std::move(source)), &target);
  expectContents(target);
  expectEmptyAndUsable(source);
  expectContents(target);
}

TEST(SymbolTable, SelfAssignmentChangesNothing) {
  SymbolTable table = tableOf(kText);
  SymbolTable& same = table;
  table = same;
  expectContents(table);
  table = std::move(same);
  expectContents(table);
}

TEST(SymbolTable, MovingThrowsNothing) {
  EXPECT_TRUE(std::is_nothrow_move_constructible<SymbolTable>::value);
  EXPECT_TRUE(std::is_nothrow_move_assignable<SymbolTable>::value);
}

TEST(SymbolTableConcurrency, ThreadsReadOneTable) {
  SymbolTable const table = tableOf(kText);
  String const name(KVW("b"));
  onThreads([&](int) {
    for (int round = 0; round < 1000; ++round) {
      bool const isRight = table[name] == 2 && table[2].size() == 2 && SymbolTable(table)[1].size() == 1;
      if (!isRight) ADD_FAILURE() << "round " << round;
    }
  });
}

// --- Code pages ---------------------------------------------------------------------------------------------------------

class SymbolTableCodePage : public ::testing::Test {
 protected:
  ScriptedText text_;
  platform::ScopedBackend<platform::TextApi> scope_{text_};
};

TEST_F(SymbolTableCodePage, NamesAreInTheAnsiCodePage) {
  text_.ansi = 1252;
  SymbolTable const table = tableOf("#define GR\xD6SSE 12\n#define L\xC4NGE gr\xD6SSE\n");
  EXPECT_EQ(table[KVW("GR\u00D6SSE")], 12u);
  EXPECT_EQ(table[KVW("l\u00C4nge")], 12u);
  // Letters beyond ASCII are not folded.
  EXPECT_EQ(table[KVW("GR\u00F6SSE")], kNoSymbol);
}

TEST_F(SymbolTableCodePage, NamesOfUtf8AreDecoded) {
  text_.ansi = 65001;
  SymbolTable const table = tableOf("#define \xE3\x82\xA2 12\n#define A\xC3\x84 13\n");
  EXPECT_EQ(table[KVW("\u30A2")], 12u);
  EXPECT_EQ(table[KVW("A\u00C4")], 13u);
}

TEST_F(SymbolTableCodePage, ABlankOfTheCodePageSeparates) {
  text_.ansi = 1252;
  SymbolTable table;
  EXPECT_TRUE(parse(table,
                    "#define\xA0NAME\xA0"
                    "5\xA0// remark\n"));
  EXPECT_EQ(shown(table), "NAME=5");
}

TEST_F(SymbolTableCodePage, DoubleByteTextIsDecoded) {
  text_.ansi = 932;
  // The second byte of the first character is that of a backslash, of the second that of a letter.
  SymbolTable const table = tableOf("#define \x83\x5C\x83\x41 12\n");
  EXPECT_EQ(table[KVW("\u30BD\u30A2")], 12u);
}

// In these pages bytes of ASCII mean something else.
TEST_F(SymbolTableCodePage, PagesThatAreNotAsciiAreDecoded) {
  text_.ansi = 37;
  // "#define AB 12" in EBCDIC.
  std::string const ebcdic = "\x7B\x84\x85\x86\x89\x95\x85\x40\xC1\xC2\x40\xF1\xF2";
  EXPECT_EQ(shown(tableOf(ebcdic)), "AB=12");
  EXPECT_EQ(shown(tableOf("#define A 1\n")), "");
}

// The first text of a table is read from its bytes where they are ASCII; a single line, from its units.
TEST_F(SymbolTableCodePage, EachByteAtEachPlaceReadsAsInALineOfUnits) {
  for (unsigned int const page : {65001u, 1252u, 932u, 37u}) {
    text_.ansi = page;
    for (std::string const original : {"#define NAME 123 // r", "#define  N\t1234567890"}) {
      for (std::size_t at = 0; at <= original.size(); ++at) {
        for (int byte = 1; byte < 256; ++byte) {
          if (byte == '\n') continue;
          std::string line = original;
          line.insert(at, 1, static_cast<char>(byte));
          if (at < original.size() && byte % 2 == 0) line.erase(at + 1, 1);
          SymbolTable whole, single;
          bool const isRight = parse(whole, line);
          ASSERT_EQ(parseLine(single, String(CodePageInterface(line.c_str(), 0))), isRight) << page << ": " << line;
          ASSERT_EQ(definitionsByName(whole), definitionsByName(single)) << page << ": " << line;
        }
      }
    }
  }
}

// In these pages some bytes of ASCII shift to other characters.
TEST_F(SymbolTableCodePage, ShiftedBytesOfAsciiAreDecoded) {
  for (unsigned int const page : {65000u, 50220u, 52936u}) {
    text_.ansi = page;
    for (char const* const line : {"#define A+AMQ- 12", "#define \x1B$B$\"\x1B(B 12", "#define ~{0!~} 12"}) {
      SCOPED_TRACE(line);
      SymbolTable single;
      EXPECT_TRUE(parseLine(single, String(CodePageInterface(line, 0))));
      EXPECT_EQ(definitionsByName(tableOf(line)), definitionsByName(single)) << page;
    }
  }
  text_.ansi = 65000;
  EXPECT_EQ(tableOf("#define A+AMQ- 12")[KVW("A\u00C4")], 12u);
}

TEST_F(SymbolTableCodePage, DigitsBeyondAsciiGoOnWithANumber) {
  text_.ansi = 65001;
  for (char const* const line : {"#define A 1\xEF\xBC\x92 // r", "#define A \xEF\xBC\x91\xEF\xBC\x92"}) {
    SymbolTable single;
    EXPECT_TRUE(parseLine(single, String(CodePageInterface(line, 0))));
    EXPECT_EQ(shown(single), "A=12");
    EXPECT_EQ(shown(tableOf(line)), "A=12");
  }
}

TEST_F(SymbolTableCodePage, NamesThatDifferInOneBitAreTwo) {
  text_.ansi = 65001;
  auto const utf8 = [](unsigned int unit) {
    return std::string{static_cast<char>(0xE0 | unit >> 12), static_cast<char>(0x80 | (unit >> 6 & 0x3F)),
                       static_cast<char>(0x80 | (unit & 0x3F))};
  };
  // Each change of one bit gives another letter.
  constexpr wchar kUnit = 0x5555;
  for (int bit = 0; bit < 16; ++bit) {
    SCOPED_TRACE(bit);
    wchar const other = static_cast<wchar>(kUnit ^ 1 << bit);
    SymbolTable const table = tableOf("#define " + utf8(kUnit) + " 1\n#define " + utf8(other) + " 2\n");
    EXPECT_EQ(table[String(kUnit, 1)], 1u);
    EXPECT_EQ(table[String(other, 1)], 2u);
  }
}

TEST_F(SymbolTableCodePage, ALineThatCannotBeDecodedIsIgnored) {
  text_.ansi = 4711;
  SymbolTable table;
  EXPECT_TRUE(parse(table, "#define A 1\n#define \xC4 2\n#define\n"));
  EXPECT_EQ(shown(table), "");
}

TEST_F(SymbolTableCodePage, ALineIsIgnoredThoughOnlyItsRemarkCannotBeDecoded) {
  text_.ansi = 1252;
  text_.failAt = 2;  // the first call finds out about the page
  SymbolTable table;
  EXPECT_TRUE(parse(table, "#define A 1 // \xC4\n#define B 2\n"));
  EXPECT_EQ(text_.calls, 2);
  EXPECT_EQ(shown(table), "B=2");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
