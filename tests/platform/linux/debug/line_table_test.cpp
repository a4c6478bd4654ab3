// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/debug/line_table.h"

#include <dlfcn.h>
#include <dwarf.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "kvbase/platform/linux/debug/debug_session.h"
#include "kvbase/platform/linux/debug/module_lines.h"
#include "tests/platform/linux/debug/debug_help.h"
#include "tests/support/module_files.h"

namespace KV_1_1 {
namespace testing {
namespace line_tables {
namespace {

using platform::Bytes;
using platform::LineTable;
using Block = std::basic_string<unsigned char>;

// --- Tables made here ---

Block number(std::uint64_t value, int size) {
  Block bytes;
  for (int i = 0; i < size; ++i) bytes += static_cast<unsigned char>(value >> (8 * i));
  return bytes;
}

Block variable(std::uint64_t value) {
  Block bytes;
  for (; value >= 0x80; value >>= 7) bytes += static_cast<unsigned char>(value | 0x80);
  return bytes + static_cast<unsigned char>(value);
}

Block signedVariable(std::int64_t value) {
  Block bytes;
  for (; value < -0x40 || value >= 0x40; value >>= 7) bytes += static_cast<unsigned char>((value & 0x7F) | 0x80);
  return bytes + static_cast<unsigned char>(value & 0x7F);
}

Block text(char const* letters) {
  return Block(reinterpret_cast<unsigned char const*>(letters), strlen(letters) + 1);
}

constexpr unsigned char kOpcodeBase = 13;
constexpr int kLineBase = -5;
constexpr int kLineRange = 14;

// What stands between the version and the names.
struct Header {
  int version = 4;
  Block names;
  Block operands = {0, 1, 1, 1, 1, 0, 0, 0, 1, 0, 0, 1};
  unsigned char lineRange = kLineRange;
  unsigned char operationsPerInstruction = 1;
  unsigned char addressSize = 8;
};

Block table(Header const& header, Block const& program) {
  Block rest = {1};
  if (header.version >= 4) rest += header.operationsPerInstruction;
  rest +=
      Block{1, static_cast<unsigned char>(kLineBase), header.lineRange, kOpcodeBase} + header.operands + header.names;
  Block const sizes = header.version == 5 ? Block{header.addressSize, 0} : Block();
  Block const all =
      number(static_cast<std::uint64_t>(header.version), 2) + sizes + number(rest.size(), 4) + rest + program;
  return number(all.size(), 4) + all;
}

// Two folders; files 1 and 2 in them, 3 in that of the unit, 4 with a whole path, 5 in a folder that is not there.
Block oldNames() {
  Block names = text("/one") + text("two") + Block{0};
  names += text("a.cpp") + Block{1, 0, 0} + text("b.cpp") + Block{2, 0, 0} + text("c.cpp") + Block{0, 0, 0};
  return names + text("/d.cpp") + Block{1, 0, 0} + text("e.cpp") + Block{9, 0, 0} + Block{0};
}

Block setAddress(std::uint64_t address) {
  return Block{0, 9, DW_LNE_set_address} + number(address, 8);
}
Block const kEnd = {0, 1, DW_LNE_end_sequence};
// A row of its own, so many bytes and lines on.
Block row(unsigned bytes, int lines) {
  return Block{DW_LNS_advance_pc} + variable(bytes) + Block{DW_LNS_advance_line} + signedVariable(lines) +
         Block{DW_LNS_copy};
}

std::optional<LineTable> read(Block const& lines, std::string_view folder = "/unit", Block const& lineStrings = Block(),
                              Block const& strings = Block()) {
  return LineTable::read({Bytes(lines), Bytes(lineStrings), Bytes(strings)}, 0, folder);
}

// "file line start", or "-".
std::string found(std::optional<LineTable> const& table, std::uint64_t address) {
  auto const row = table.has_value() ? table->find(address) : std::nullopt;
  if (!row.has_value()) return "-";
  return table->file(row->file).value_or("?") + ' ' + std::to_string(row->line) + ' ' + std::to_string(row->address);
}

Header oldHeader(int version = 4) {
  Header header;
  header.version = version;
  header.names = oldNames();
  return header;
}

TEST(LinuxLineTable, RowHoldsUpToTheNextOne) {
  for (int const version : {2, 3, 4}) {
    Block const lines = table(oldHeader(version), setAddress(100) + row(0, 9) + row(10, 5) + row(10, 1) + kEnd);
    auto const read = line_tables::read(lines);
    EXPECT_EQ(found(read, 99), "-") << version;
    EXPECT_EQ(found(read, 100), "/one/a.cpp 10 100") << version;
    EXPECT_EQ(found(read, 109), "/one/a.cpp 10 100") << version;
    EXPECT_EQ(found(read, 110), "/one/a.cpp 15 110") << version;
    // The sequence ends where its last row is.
    EXPECT_EQ(found(read, 120), "-") << version;
  }
}

TEST(LinuxLineTable, CodeBehindASequenceHasNoLine) {
  Block const lines = table(oldHeader(), setAddress(100) + row(0, 9) + Block{DW_LNS_advance_pc, 10} + kEnd +
                                             setAddress(200) + row(0, 19) + Block{DW_LNS_advance_pc, 10} + kEnd);
  auto const read = line_tables::read(lines);
  EXPECT_EQ(found(read, 109), "/one/a.cpp 10 100");
  EXPECT_EQ(found(read, 110), "-");
  EXPECT_EQ(found(read, 199), "-");
  EXPECT_EQ(found(read, 200), "/one/a.cpp 20 200");
  EXPECT_EQ(found(read, 210), "-");
}

TEST(LinuxLineTable, OpcodesAdvanceAsTheyShould) {
  struct Case {
    char const* name;
    Block program;
    std::uint64_t address;
    char const* expected;
  } const cases[] = {
      {"special", {kOpcodeBase + 2 * kLineRange + 6}, 102, "/one/a.cpp 2 102"},
      {"lines back", {DW_LNS_advance_line, 20, kOpcodeBase}, 100, "/one/a.cpp 16 100"},
      {"constant", {DW_LNS_const_add_pc, DW_LNS_copy}, 117, "/one/a.cpp 1 117"},
      {"fixed", {DW_LNS_fixed_advance_pc, 2, 1, DW_LNS_copy}, 358, "/one/a.cpp 1 358"},
      {"file", {DW_LNS_set_file, 3, DW_LNS_copy}, 100, "/unit/c.cpp 1 100"},
      {"without meaning for lines",
       {DW_LNS_negate_stmt, DW_LNS_set_basic_block, DW_LNS_set_prologue_end, DW_LNS_set_epilogue_begin,
        DW_LNS_set_column, 9, DW_LNS_set_isa, 1, 0, 2, DW_LNE_set_discriminator, 7, DW_LNS_copy},
       100,
       "/one/a.cpp 1 100"},
  };
  for (Case const& each : cases) {
    Block const lines = table(oldHeader(), setAddress(100) + each.program + Block{DW_LNS_advance_pc, 1} + kEnd);
    EXPECT_EQ(found(line_tables::read(lines), each.address), each.expected) << each.name;
  }
}

TEST(LinuxLineTable, WhatIsNotUnderstoodIsNotRead) {
  struct Case {
    char const* name;
    Block program;
  } const cases[] = {
      {"no end", row(0, 1)},
      {"falling addresses", setAddress(100) + row(0, 1) + setAddress(99) + row(0, 1) + kEnd},
      {"a file of its own", Block{0, 5, DW_LNE_define_file, 'a', 0, 0, 0} + row(0, 1) + kEnd},
      {"an opcode of a maker", Block{0, 1, DW_LNE_lo_user} + row(0, 1) + kEnd},
      {"an address of four bytes", Block{0, 5, DW_LNE_set_address, 1, 2, 3, 4} + row(0, 1) + kEnd},
      {"an end with an operand", row(0, 1) + Block{0, 2, DW_LNE_end_sequence, 0}},
      {"a column that is too large", Block{DW_LNS_set_column} + variable(0x10000) + row(0, 1) + kEnd},
      {"an instruction set that is too large", Block{DW_LNS_set_isa} + variable(0x100) + row(0, 1) + kEnd},
      {"a discriminator that is too large",
       Block{0, 5, DW_LNE_set_discriminator} + variable(0x1000000) + row(0, 1) + kEnd},
      {"a file number that is too large", Block{DW_LNS_set_file} + variable(std::uint64_t{1} << 32) + row(0, 1) + kEnd},
      {"a number without end", Block{DW_LNS_advance_pc} + Block(20, 0xFF)},
  };
  for (Case const& each : cases) {
    EXPECT_FALSE(read(table(oldHeader(), each.program)).has_value()) << each.name;
  }
  EXPECT_TRUE(read(table(oldHeader(), row(0, 1) + kEnd)).has_value());
}

TEST(LinuxLineTable, HeaderOfAnotherFormIsNotRead) {
  Block const program = row(0, 1) + kEnd;
  for (int const version : {0, 1, 6}) EXPECT_FALSE(read(table(oldHeader(version), program)).has_value()) << version;
  Header header = oldHeader();
  header.lineRange = 0;
  EXPECT_FALSE(read(table(header, program)).has_value());
  header = oldHeader();
  header.operationsPerInstruction = 4;
  EXPECT_FALSE(read(table(header, program)).has_value());
  header = oldHeader();
  header.operands[0] = 1;
  EXPECT_FALSE(read(table(header, program)).has_value());
  EXPECT_FALSE(read(number(0xFFFFFFFF, 4) + table(oldHeader(), program)).has_value());
  EXPECT_FALSE(read(Block()).has_value());
  Block const lines = table(oldHeader(), program);
  EXPECT_FALSE(LineTable::read({Bytes(lines), Bytes(), Bytes()}, lines.size(), "").has_value());
  for (std::size_t size = 0; size < lines.size(); ++size) EXPECT_FALSE(read(lines.substr(0, size)).has_value()) << size;
}

TEST(LinuxLineTable, PathsOfOldTables) {
  Block const lines = table(oldHeader(), row(0, 1) + kEnd);
  auto const table = read(lines);
  ASSERT_TRUE(table.has_value());
  EXPECT_EQ(table->file(0), std::nullopt);
  EXPECT_EQ(table->file(1), "/one/a.cpp");
  EXPECT_EQ(table->file(2), "two/b.cpp");
  EXPECT_EQ(table->file(3), "/unit/c.cpp");
  EXPECT_EQ(table->file(4), "/d.cpp");
  EXPECT_EQ(table->file(5), std::nullopt);
  EXPECT_EQ(table->file(6), std::nullopt);
  EXPECT_EQ(read(lines, std::string_view())->file(3), "c.cpp");
}

TEST(LinuxLineTable, PathsOfNewTables) {
  Header header;
  header.version = 5;
  header.names = Block{1, DW_LNCT_path, DW_FORM_line_strp, 2} + number(0, 4) + number(5, 4) +
                 Block{4,           DW_LNCT_path,   DW_FORM_string, DW_LNCT_directory_index, DW_FORM_udata,
                       DW_LNCT_MD5, DW_FORM_data16, DW_LNCT_size,   DW_FORM_data2,           2} +
                 text("a.cpp") + Block{0} + Block(16, 7) + Block{1, 1} + text("b.cpp") + Block{1} + Block(16, 7) +
                 Block{1, 1};
  Block const lineStrings = text("/one") + text("two");
  Block const lines = table(header, setAddress(5) + row(0, 1) + kEnd);
  auto const table = read(lines, "/unit", lineStrings);
  ASSERT_TRUE(table.has_value());
  EXPECT_EQ(table->file(0), "/one/a.cpp");
  EXPECT_EQ(table->file(1), "two/b.cpp");
  // The texts of the folders are missing.
  EXPECT_FALSE(read(lines, "/unit", Block()).has_value());
  header.addressSize = 4;
  EXPECT_FALSE(read(line_tables::table(header, row(0, 1) + kEnd), "/unit", lineStrings).has_value());
}

// --- Compared with rows that are sorted ---

struct SlowRow {
  std::uint64_t address;
  std::uint32_t line;
  bool isEnd;
};

void sortAsLibdw(std::vector<SlowRow>& rows) {
  std::stable_sort(rows.begin(), rows.end(), [](SlowRow const& one, SlowRow const& other) {
    return one.address != other.address ? one.address < other.address : one.isEnd && !other.isEnd;
  });
  rows.back().isEnd = true;
}

std::string foundSlowly(std::vector<SlowRow> const& rows, std::uint64_t address) {
  auto const after = std::upper_bound(rows.begin(), rows.end(), address,
                                      [](std::uint64_t at, SlowRow const& each) { return at < each.address; });
  if (after == rows.begin() || (after - 1)->isEnd) return "-";
  return "/one/a.cpp " + std::to_string((after - 1)->line) + ' ' + std::to_string((after - 1)->address);
}

// Sequences of any lengths that lie in one another, touch, are empty or start at 0, as those of code that has been left out.
TEST(LinuxLineTable, AgreesWithASortOfAllRows) {
  std::mt19937 random(1);
  for (int round = 0; round < 150; ++round) {
    std::vector<SlowRow> rows;
    Block program;
    for (unsigned sequences = 1 + random() % 6; sequences > 0; --sequences) {
      std::uint64_t address = random() % 3 == 0 ? 0 : random() % 300;
      std::uint32_t line = 1;
      program += setAddress(address);
      for (unsigned i = round % 3 == 0 ? random() % 300 : random() % 8; i > 0; --i) {
        unsigned const bytes = random() % 3;
        line += 1 + random() % 5;
        address += bytes;
        program += row(bytes, static_cast<int>(line - (rows.empty() || rows.back().isEnd ? 1 : rows.back().line)));
        rows.push_back({address, line, false});
      }
      unsigned const bytes = random() % 3;
      program += Block{DW_LNS_advance_pc} + variable(bytes) + kEnd;
      rows.push_back({address + bytes, line, true});
    }
    sortAsLibdw(rows);
    Block const lines = table(oldHeader(), program);
    auto const table = read(lines);
    ASSERT_TRUE(table.has_value()) << round;
    for (std::uint64_t address = 0; address < 1000; ++address) {
      ASSERT_EQ(found(table, address), foundSlowly(rows, address)) << round << ' ' << address;
    }
  }
}

// --- Broken tables ---

TEST(LinuxLineTable, AnyBytesLeadToAnEnd) {
  std::mt19937 random(1);
  Header newHeader;
  newHeader.version = 5;
  newHeader.names = Block{1, DW_LNCT_path, DW_FORM_line_strp, 1} + number(0, 4) +
                    Block{2, DW_LNCT_path, DW_FORM_string, DW_LNCT_directory_index, DW_FORM_udata, 1} + text("a") +
                    Block{0};
  Block const program = setAddress(100) + row(0, 9) + row(10, 5) + row(300, -1) + kEnd;
  Block const strings = text("/one");
  int understood = 0;
  for (int round = 0; round < 20000; ++round) {
    Block lines = table(round % 2 == 0 ? oldHeader(2 + round % 3) : newHeader, program);
    for (unsigned changes = 1 + random() % 4; changes > 0; --changes) {
      lines[random() % lines.size()] = static_cast<unsigned char>(random());
    }
    if (random() % 4 == 0) lines.resize(random() % lines.size());
    // On the heap and of this size, so that reading behind the end is noticed.
    std::vector<unsigned char> const exact(lines.begin(), lines.end());
    auto const table = LineTable::read({Bytes(exact.data(), exact.size()), Bytes(strings), Bytes()}, 0, "/unit");
    if (!table.has_value()) continue;
    ++understood;
    for (std::uint64_t const address : {std::uint64_t{0}, std::uint64_t{105}, ~std::uint64_t{0}}) found(table, address);
    for (std::uint32_t file = 0; file < 10; ++file) table->file(file);
  }
  EXPECT_GT(understood, 1000);
}

// --- Real modules ---

// What libdw finds for an address, in the form of `found`.
std::string foundByLibdw(platform::LibdwFunctions const& libdw, Dwfl_Module* module, std::uint64_t address) {
  Dwfl_Line* const line = libdw.lineOfAddress(module, address);
  Dwarf_Addr start = 0;
  int number = 0;
  char const* const file = line == nullptr ? nullptr : libdw.lineInfo(line, &start, &number, nullptr, nullptr, nullptr);
  return file == nullptr ? "-" : std::string(file) + ' ' + std::to_string(number) + ' ' + std::to_string(start);
}

// Compares at every `stride`-th row of the module at an address, and beside it. Returns how many lines were found.
int compareWithLibdw(std::uint64_t inside, std::size_t stride) {
  DebugHelp const help;
  EXPECT_TRUE(help.isThere());
  platform::DebugSession& session = platform::DebugSession::instance();
  auto const lock = session.lock();
  platform::DebugSession::Module* const module = session.moduleAt(inside);
  platform::LibdwFunctions const& libdw = session.libdw();
  void* const library = dlopen(platform::libdwFile, RTLD_NOW | RTLD_LOCAL);
  auto const linesOf = reinterpret_cast<decltype(&::dwarf_getsrclines)>(dlsym(library, "dwarf_getsrclines"));
  auto const oneLine = reinterpret_cast<decltype(&::dwarf_onesrcline)>(dlsym(library, "dwarf_onesrcline"));
  platform::ModuleLines own;
  int count = 0;
  Dwarf_Addr bias = 0;
  for (Dwarf_Die* unit = nullptr; (unit = libdw.nextUnit(module->handle, unit, &bias)) != nullptr;) {
    Dwarf_Lines* lines = nullptr;
    std::size_t size = 0;
    if (linesOf(unit, &lines, &size) != 0) continue;
    for (std::size_t i = 0; i < size; i += stride) {
      Dwarf_Addr address = 0;
      libdw.lineAddress(oneLine(lines, i), &address);
      for (std::uint64_t const at : {address + bias - 1, address + bias, address + bias + 1}) {
        auto const line = own.find(libdw, module->handle, at);
        std::string const expected = foundByLibdw(libdw, module->handle, at);
        if (!line.has_value()) {
          EXPECT_EQ(expected, "-") << module->loaded.path << ' ' << at;
          continue;
        }
        ++count;
        EXPECT_EQ(line->file + ' ' + std::to_string(line->number) + ' ' + std::to_string(line->start), expected);
      }
    }
  }
  dlclose(library);
  return count;
}

TEST(LinuxModuleLines, AreThoseOfLibdwInTheProgram) {
  compareWithLibdw(reinterpret_cast<std::uint64_t>(&platform::DebugSession::instance), 31);
}

class LinuxModuleLinesOfForm : public ::testing::TestWithParam<char const*> {};

TEST_P(LinuxModuleLinesOfForm, AreThoseOfLibdw) {
  LoadedModule const module(fixtureFolder() / moduleFile(std::string("lines_") + GetParam()));
  EXPECT_GT(compareWithLibdw(reinterpret_cast<std::uint64_t>(module.handle()), 1), 30);
}

INSTANTIATE_TEST_SUITE_P(Rows, LinuxModuleLinesOfForm,
                         ::testing::Values("dwarf-2", "dwarf-3", "dwarf-4", "dwarf-5", "compressed"),
                         [](auto const& row) {
                           std::string name = row.param;
                           name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
                           return name;
                         });

}  // namespace
}  // namespace line_tables
}  // namespace testing
}  // namespace KV_1_1
