// SPDX-License-Identifier: MIT
//
// Headers of symbols as streams: their states, long lines, failures, and a comparison with the model on random texts.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <utility>

#include "kvbase/modules/symbol_table.h"
#include "kvbase/platform/text_api.h"
#include "tests/reference/symbol_table_model.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/random_text.h"
#include "tests/support/scripted_text.h"
#include "tests/support/symbol_tables.h"

namespace KV_1_1 {
namespace testing {
namespace {

// Everything here holds for the first text of a table and for a later one.
enum class Table { kEmpty, kFilled };
constexpr Table kTables[] = {Table::kEmpty, Table::kFilled};
constexpr char kFirst[] = "#define first 1000\n";

SymbolTable made(Table table) {
  return table == Table::kEmpty ? SymbolTable() : tableOf(kFirst);
}
// What a table has besides.
std::string added(SymbolTable const& table) {
  Definitions definitions = definitionsByName(table);
  definitions.erase(std::remove(definitions.begin(), definitions.end(), Definitions::value_type(KVW("first"), 1000u)),
                    definitions.end());
  return shown(definitions);
}

// --- States of the stream -----------------------------------------------------------------------------------------------

TEST(SymbolHeader, AStreamAtItsEndGivesTrue) {
  for (Table const kind : kTables) {
    SymbolTable table = made(kind);
    std::istringstream stream("#define A 1\n");
    stream.setstate(std::ios_base::eofbit);
    EXPECT_TRUE(table.parseHeaderFile(stream));
    stream.setstate(std::ios_base::eofbit | std::ios_base::failbit);
    EXPECT_TRUE(table.parseHeaderFile(stream));
    EXPECT_EQ(added(table), "");
  }
}

TEST(SymbolHeader, AnEmptyStreamThatDoesNotKnowItsEndYetGivesTrue) {
  for (Table const kind : kTables) {
    SymbolTable table = made(kind);
    std::istringstream stream;
    ASSERT_FALSE(stream.eof());
    EXPECT_TRUE(table.parseHeaderFile(stream));
    EXPECT_TRUE(stream.eof());
    EXPECT_EQ(added(table), "");
  }
}

TEST(SymbolHeader, ABadStreamGivesFalse) {
  for (Table const kind : kTables) {
    for (std::ios_base::iostate const state : {std::ios_base::badbit, std::ios_base::badbit | std::ios_base::eofbit}) {
      SymbolTable table = made(kind);
      std::istringstream stream("#define A 1\n");
      stream.setstate(state);
      EXPECT_FALSE(table.parseHeaderFile(stream));
      EXPECT_EQ(added(table), "");
    }
  }
}

TEST(SymbolHeader, AStreamThatHadFailedGivesFalseAndIsNotRead) {
  for (Table const kind : kTables) {
    SymbolTable table = made(kind);
    std::istringstream stream("#define A 1\n");
    stream.setstate(std::ios_base::failbit);
    EXPECT_FALSE(table.parseHeaderFile(stream));
    EXPECT_EQ(added(table), "");
    stream.clear();
    EXPECT_TRUE(table.parseHeaderFile(stream));
    EXPECT_EQ(added(table), "A=1");
  }
}

TEST(SymbolHeader, ReadingBeginsWhereTheStreamStands) {
  SymbolTable table;
  std::istringstream stream("#define A 1\n#define B 2\n");
  stream.ignore(100, '\n');
  EXPECT_TRUE(table.parseHeaderFile(stream));
  EXPECT_EQ(shown(table), "B=2");
}

// Gives a text and then fails to read.
class BreakingBuffer : public std::streambuf {
 public:
  explicit BreakingBuffer(std::string text) : text_(std::move(text)) {
    setg(&text_[0], &text_[0], &text_[0] + text_.size());
  }

 protected:
  int_type underflow() override { throw std::runtime_error("broken"); }

 private:
  std::string text_;
};

TEST(SymbolHeader, AStreamThatBecomesBadGivesFalseAndKeepsWhatWasRead) {
  for (Table const kind : kTables) {
    SymbolTable table = made(kind);
    BreakingBuffer buffer("#define A 1\n#define B 2\n#define C 34");
    std::istream stream(&buffer);
    EXPECT_FALSE(table.parseHeaderFile(stream));
    EXPECT_TRUE(stream.bad());
    // What had come of the last line counts as a line.
    EXPECT_EQ(added(table), "A=1 B=2 C=34");
  }
}

TEST(SymbolHeader, WhatTheStreamThrowsComesOutAndTheDefinitionsStay) {
  for (Table const kind : kTables) {
    SymbolTable table = made(kind);
    std::istringstream stream("#define A 1\n#define B 2\n");
    stream.exceptions(std::ios_base::failbit);
    EXPECT_THROW(table.parseHeaderFile(stream), std::ios_base::failure);
    EXPECT_EQ(added(table), "A=1 B=2");

    BreakingBuffer buffer("#define C 1\n#define D 2\n");
    std::istream breaking(&buffer);
    breaking.exceptions(std::ios_base::badbit);
    EXPECT_THROW(table.parseHeaderFile(breaking), std::runtime_error);
    EXPECT_EQ(added(table), "A=1 B=2 C=1 D=2");
  }
}

// --- Long lines ---------------------------------------------------------------------------------------------------------

// A definition in so many bytes.
std::string definitionOf(std::size_t size) {
  return "#define LONG 7 // " + std::string(size - 18, 'x');
}

TEST(SymbolHeader, ALineOf254BytesIsTaken) {
  for (Table const kind : kTables) {
    for (std::string const end : {"", "\n", "\n#define B 2\n"}) {
      SymbolTable table = made(kind);
      EXPECT_TRUE(parse(table, "#define A 1\n" + definitionOf(254) + end));
      EXPECT_EQ(added(table), end.size() > 1 ? "A=1 B=2 LONG=7" : "A=1 LONG=7");
    }
  }
}

TEST(SymbolHeader, ALineOf255BytesEndsTheReading) {
  for (Table const kind : kTables) {
    for (std::size_t const size : {255, 256, 257, 300, 509, 510, 5000}) {
      for (std::string const end : {"", "\n", "\n#define B 2\n"}) {
        SymbolTable table = made(kind);
        std::istringstream stream("#define A 1\n" + definitionOf(size) + end);
        EXPECT_FALSE(table.parseHeaderFile(stream)) << size;
        EXPECT_TRUE(stream.fail());
        EXPECT_EQ(added(table), "A=1") << size;
      }
    }
  }
}

TEST(SymbolHeader, ACarriageReturnCountsAsAByteOfItsLine) {
  SymbolTable table;
  EXPECT_TRUE(parse(table, definitionOf(253) + "\r\n"));
  SymbolTable other;
  EXPECT_FALSE(parse(other, definitionOf(254) + "\r\n"));
}

TEST(SymbolHeader, ALongLineThatDefinesNothingEndsTheReadingToo) {
  SymbolTable table;
  EXPECT_FALSE(parse(table, "//" + std::string(253, '-') + "\n#define A 1\n"));
  EXPECT_EQ(shown(table), "");
}

TEST(SymbolHeader, AFaultyLineBeforeOrBehindChangesNothingAboutLongOnes) {
  SymbolTable table;
  EXPECT_FALSE(parse(table, "#define\n#define A 1\n" + definitionOf(255) + "\n#define B 1\n"));
  EXPECT_EQ(shown(table), "A=1");
}

TEST(SymbolHeader, ALineEndsAtItsFirstNul) {
  for (Table const kind : kTables) {
    SymbolTable table = made(kind);
    EXPECT_TRUE(parse(table, std::string("#define A 1\0x\n#define B 2\0\n\0#define C 3\n#define D\0 4\n", 50)));
    EXPECT_EQ(added(table), "A=1 B=2 D=0");
  }
}

// --- Failing allocations ------------------------------------------------------------------------------------------------

std::string manyDefinitions(int count) {
  std::string text;
  for (int i = 0; i < count; ++i)
    text += "#define NAME" + std::to_string(i * 7 % 101) + ' ' + std::to_string(i % 5) + '\n';
  return text + "#define OTHER NAME0\n#define BIG 99999999999\n";
}

void sweepParsing(Table kind, std::string const& text) {
  for (AllocationSweep sweep; sweep.next();) {
    SymbolTable table = made(kind);
    std::istringstream stream(text);
    sweep.run([&] { table.parseHeaderFile(stream); });
    EXPECT_EQ(symbolsByName(table).size(), symbolsByValue(table).size());
  }
}

TEST(SymbolHeader, ParsingSurvivesExhaustedMemory) {
  for (Table const kind : kTables) sweepParsing(kind, manyDefinitions(30));
}

TEST(SymbolHeader, CopyingSurvivesExhaustedMemory) {
  SymbolTable const source = tableOf("#define A 1\n#define B 2\n#define C 1\n");
  for (AllocationSweep sweep; sweep.next();) {
    SymbolTable target = tableOf("#define OLD 9\n");
    sweep.run([&] { target = source; });
    EXPECT_EQ(shown(target), sweep.failed() ? "OLD=9" : "A=1 B=2 C=1");
  }
  for (AllocationSweep sweep; sweep.next();) sweep.run([&] { SymbolTable const copy(source); });
  EXPECT_EQ(shown(source), "A=1 B=2 C=1");
}

TEST(SymbolHeader, LookingUpNamesSurvivesExhaustedMemory) {
  SymbolTable const table = tableOf("#define A 1\n#define B 2\n#define C 1\n");
  std::size_t count = 0;
  for (AllocationSweep sweep; sweep.next();) sweep.run([&] { count = table.lookupValue(1).size(); });
  EXPECT_EQ(count, 2u);
}

TEST(SymbolHeader, LookingUpANumberAllocatesNothing) {
  SymbolTable const table = tableOf("#define A 1\n#define B 2\n");
  String const known(KVW("b"));
  String const unknown(KVW("c"));
  AllocationFailure scope(1);
  unsigned int const two = table[known];
  unsigned int const none = table[unknown];
  scope.end();
  EXPECT_EQ(two, 2u);
  EXPECT_EQ(none, kNoSymbol);
  EXPECT_EQ(scope.allocations(), 0);
}

// --- Random texts -------------------------------------------------------------------------------------------------------

// Texts of pieces that meet each other in every order, names that return, and now and then any bytes.
std::string randomHeader(RandomText& random) {
  static char const* const kPieces[] = {"#define ",
                                        "#define ",
                                        "#define\t",
                                        "#define",
                                        "\n",
                                        "\n",
                                        "\n",
                                        "\r\n",
                                        " ",
                                        " ",
                                        "\t",
                                        "// ",
                                        "/* ",
                                        " */",
                                        "A",
                                        "a",
                                        "B ",
                                        "b",
                                        "AB",
                                        "Ab ",
                                        "_APS",
                                        "_APS_X ",
                                        "_",
                                        "C1 ",
                                        "IDC_STATIC_LENGTH",
                                        "idc_static_length1",
                                        "0",
                                        "1 ",
                                        "2 ",
                                        "12 ",
                                        "-1 ",
                                        "+3 ",
                                        "-",
                                        ".",
                                        "(7)",
                                        "(A)",
                                        "0x10 ",
                                        "4294967295 ",
                                        "99999999999 ",
                                        "7 // r",
                                        "\"x\"",
                                        "\xE4",
                                        "\xC4 ",
                                        "\xA0",
                                        "\xB2",
                                        "\xFF"};
  std::string text;
  int const pieces = random.below(60);
  for (int i = 0; i < pieces; ++i) {
    bool const isLine = random.oneIn(3);
    if (isLine) {
      text += std::string("#define ") + kPieces[14 + random.below(10)] + ' ' + kPieces[14 + random.below(25)] + '\n';
    } else if (random.oneIn(40)) {
      text += static_cast<char>(random.below(256));
    } else if (random.oneIn(400)) {
      text += std::string(static_cast<std::size_t>(random.between(200, 300)), 'x');
    } else {
      text += kPieces[random.below(static_cast<int>(sizeof kPieces / sizeof kPieces[0]))];
    }
  }
  return text;
}

TEST(SymbolHeader, AgreesWithTheModelOnRandomTexts) {
  ScriptedText latin;
  latin.ansi = 28591;
  platform::ScopedBackend<platform::TextApi> scope(latin);
  RandomText random(4303);
  for (int round = 0; round < kRounds / 5; ++round) {
    SymbolTable table;
    reference::SymbolTableModel model;
    std::string all;
    for (int texts = random.between(1, 3); texts > 0; --texts) {
      std::string const text = randomHeader(random);
      all += text + "\n====\n";
      ASSERT_EQ(parse(table, text), model.parse(text)) << all;
      ASSERT_EQ(definitionsByName(table), model.byName()) << all;
      ASSERT_EQ(definitionsByValue(table), model.byValue()) << all;
    }
    for (auto const& definition : model.definitions) {
      ASSERT_EQ(table[String(definition.first.c_str())], definition.second);
      std::string names;
      for (wstring const& name : model.namesOf(definition.second)) names += (names.empty() ? "" : " ") + narrow(name);
      ASSERT_EQ(joined(table[definition.second]), names);
    }
  }
}

// Names are folded eight units at a time where they can be.
TEST(SymbolHeader, OnlyLettersOfAsciiAreFoldedWhereverTheyStand) {
  for (std::size_t length : {8u, 20u}) {
    for (std::size_t at = 0; at < length; ++at) {
      for (char unit = '!'; unit <= '~'; ++unit) {
        std::string const name = std::string(at, '_') + unit + std::string(length - 1 - at, '_');
        std::string other = name;
        other[at] = static_cast<char>(unit ^ 0x20);
        if (other[at] <= ' ' || other[at] > '~') continue;
        bool const isLetter = (unit | 0x20) >= 'a' && (unit | 0x20) <= 'z';
        SymbolTable table;
        ASSERT_EQ(parse(table, "#define " + name + " 1\n#define " + other + " 2\n"), !isLetter) << name;
        ASSERT_EQ(table.lookupSymbol(String(widen(other).c_str())), isLetter ? 1u : 2u) << name;
      }
    }
  }
}

// Many names, so that the tables inside grow; they share long beginnings and come again in another case.
TEST(SymbolHeader, AgreesWithTheModelOnALongText) {
  RandomText random(4304);
  std::string text;
  for (int i = 0; i < 800; ++i) {
    std::string name = "IDC_STATIC_" + std::string(static_cast<std::size_t>(random.below(20)), 'L');
    name += std::to_string(random.below(900));
    if (random.oneIn(3)) name[static_cast<std::size_t>(random.below(10))] = '_';
    if (random.oneIn(5))
      std::transform(name.begin(), name.end(), name.begin(),
                     [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    text +=
        "#define " + name + ' ' + (random.oneIn(10) ? "IDC_STATIC_" : "") + std::to_string(random.below(900)) + "\r\n";
  }
  SymbolTable table;
  reference::SymbolTableModel model;
  EXPECT_EQ(parse(table, text), model.parse(text));
  EXPECT_EQ(definitionsByName(table), model.byName());
  EXPECT_EQ(definitionsByValue(table), model.byValue());
  EXPECT_GT(model.definitions.size(), 400u);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
