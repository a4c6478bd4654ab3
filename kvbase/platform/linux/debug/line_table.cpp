// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/debug/line_table.h"

#include <dwarf.h>

#include <algorithm>
#include <cstring>

namespace KV_1_1 {
namespace platform {

namespace {

constexpr std::size_t kAddressSize = 8;
constexpr std::uint32_t kLargestShortLength = 0xFFFFFFEF;
// The numbers of operands of the opcodes that versions 2 and 3 know, from 1 on. Version 2 has the first nine.
constexpr std::uint8_t kOperands[] = {0, 1, 1, 1, 1, 0, 0, 0, 1, 0, 0, 1};
constexpr std::size_t kFewestOpcodes = 9;
// What the rows of libdw have room for. It has no lines of a table with larger numbers.
constexpr std::uint64_t kMostColumns = 0xFFFF;
constexpr std::uint64_t kHighestSet = 0xFF;
constexpr std::uint64_t kHighestDiscriminator = 0xFFFFFF;

constexpr LineTable::Row kFirstRow = {0, 1, 1};  // of a sequence
constexpr int kPieceRows = 64;

Bytes from(Bytes bytes, std::uint64_t offset) {
  return offset < bytes.size() ? bytes.substr(offset) : Bytes();
}

// A column of the names of version 5.
struct Column {
  std::uint64_t content;
  std::uint64_t form;
};

std::string_view textOf(ByteReader& reader, std::uint64_t form, LineSections const& sections) {
  if (form == DW_FORM_string) return reader.text();
  std::uint64_t const offset = reader.number(4);
  ByteReader strings(from(form == DW_FORM_line_strp ? sections.lineStrings : sections.strings, offset));
  std::string_view const text = strings.text();
  // A text that is not there fails as one behind the end.
  if (strings.hasFailed()) reader.skip(~std::uint64_t{0});
  return text;
}

bool isText(std::uint64_t form) {
  return form == DW_FORM_string || form == DW_FORM_line_strp || form == DW_FORM_strp;
}

// The number of bytes of a number; 0 for one of variable size, -1 for another form.
int sizeOf(std::uint64_t form) {
  switch (form) {
    case DW_FORM_data1:
      return 1;
    case DW_FORM_data2:
      return 2;
    case DW_FORM_data4:
      return 4;
    case DW_FORM_data8:
      return 8;
    case DW_FORM_udata:
      return 0;
    default:
      return -1;
  }
}

// False for columns that are not understood.
bool readColumns(ByteReader& reader, std::vector<Column>& columns) {
  bool hasName = false;
  std::size_t const count = reader.byte();
  for (std::size_t i = 0; i < count; ++i) {
    Column const column = {reader.variable(), reader.variable()};
    bool const isName = column.content == DW_LNCT_path;
    bool const isNumber = column.content != DW_LNCT_MD5 && sizeOf(column.form) >= 0;
    bool const isChecksum = column.content == DW_LNCT_MD5 && column.form == DW_FORM_data16;
    if (isName ? !isText(column.form) || hasName : !isNumber && !isChecksum) return false;
    hasName = hasName || isName;
    columns.push_back(column);
  }
  return hasName && !reader.hasFailed();
}

}  // namespace

std::uint8_t ByteReader::fail() {
  at_ = end_;
  hasFailed_ = true;
  return 0;
}

Bytes ByteReader::part(std::uint64_t size) {
  if (size > static_cast<std::size_t>(end_ - at_)) {
    fail();
    return Bytes();
  }
  Bytes const result(at_, size);
  at_ += size;
  return result;
}

std::uint64_t ByteReader::number(std::size_t size) {
  Bytes const bytes = part(size);
  std::uint64_t value = 0;
  if (!bytes.empty()) memcpy(&value, bytes.data(), bytes.size());
  return value;
}

// A number with more than 64 bits is taken for broken.
std::uint64_t ByteReader::variable() {
  std::uint64_t value = 0;
  for (int shift = 0; shift < 63; shift += 7) {
    std::uint8_t const bits = byte();
    value |= std::uint64_t{bits & 0x7Fu} << shift;
    if (bits < 0x80) return value;
  }
  return fail();
}

std::int64_t ByteReader::signedVariable() {
  std::uint64_t value = 0;
  for (int shift = 0; shift < 63; shift += 7) {
    std::uint8_t const bits = byte();
    value |= std::uint64_t{bits & 0x7Fu} << shift;
    if (bits >= 0x80) continue;
    bool const isNegative = (bits & 0x40) != 0;
    return static_cast<std::int64_t>(isNegative ? value | ~std::uint64_t{0} << (shift + 7) : value);
  }
  return fail();
}

std::string_view ByteReader::text() {
  auto const* const start = reinterpret_cast<char const*>(at_);
  void const* const terminator = at_ == end_ ? nullptr : memchr(at_, 0, static_cast<std::size_t>(end_ - at_));
  if (terminator == nullptr) {
    fail();
    return std::string_view();
  }
  at_ = static_cast<unsigned char const*>(terminator) + 1;
  return std::string_view(start, static_cast<std::size_t>(static_cast<char const*>(terminator) - start));
}

std::optional<LineTable> LineTable::read(LineSections const& sections, std::uint64_t offset, std::string_view folder) {
  std::optional<LineTable> table(std::in_place);
  if (!table->readHeader(sections, offset, folder) || !table->readPieces()) table.reset();
  return table;
}

bool LineTable::readHeader(LineSections const& sections, std::uint64_t offset, std::string_view folder) {
  ByteReader section(from(sections.lines, offset));
  std::uint64_t const length = section.number(4);
  if (length > kLargestShortLength) return false;
  ByteReader table(section.part(length));
  std::uint64_t const version = table.number(2);
  if (version < 2 || version > 5) return false;
  if (version == 5 && (table.byte() != kAddressSize || table.byte() != 0)) return false;
  ByteReader header(table.part(table.number(4)));
  if (section.hasFailed() || table.hasFailed()) return false;
  program_ = table.part(static_cast<std::size_t>(section.position() - table.position()));
  minimumLength_ = header.byte();
  if (version >= 4 && header.byte() != 1) return false;
  header.byte();  // whether a row starts a statement
  lineBase_ = static_cast<std::int8_t>(header.byte());
  lineRange_ = header.byte();
  opcodeBase_ = header.byte();
  std::size_t const opcodes = opcodeBase_ - std::size_t{1};
  if (lineRange_ == 0 || opcodes < kFewestOpcodes || opcodes > sizeof kOperands) return false;
  Bytes const operands = header.part(opcodes);
  if (operands.size() != opcodes || memcmp(operands.data(), kOperands, opcodes) != 0) return false;
  bool const hasNames = version < 5 ? readOldNames(header, folder)
                                    : readNames(header, sections, true) && readNames(header, sections, false);
  return hasNames && !header.hasFailed();
}

// Lists that end with an empty name. Folder 0 is that of the unit; there is no file 0.
bool LineTable::readOldNames(ByteReader& reader, std::string_view folder) {
  folders_.push_back(folder);
  for (std::string_view name = reader.text(); !name.empty(); name = reader.text()) folders_.push_back(name);
  files_.push_back({std::string_view(), 0});
  for (std::string_view name = reader.text(); !name.empty(); name = reader.text()) {
    files_.push_back({name, reader.variable()});
    reader.variable();  // the time
    reader.variable();  // the size
  }
  return true;
}

bool LineTable::readNames(ByteReader& reader, LineSections const& sections, bool areFolders) {
  std::vector<Column> columns;
  if (!readColumns(reader, columns)) return false;
  std::uint64_t const count = reader.variable();
  for (std::uint64_t i = 0; i < count && !reader.hasFailed(); ++i) {
    File file = {std::string_view(), 0};
    for (Column const& column : columns) {
      if (column.content == DW_LNCT_path) {
        file.name = textOf(reader, column.form, sections);
      } else if (column.content == DW_LNCT_MD5) {
        reader.skip(16);
      } else {
        int const size = sizeOf(column.form);
        std::uint64_t const value = size == 0 ? reader.variable() : reader.number(static_cast<std::size_t>(size));
        if (column.content == DW_LNCT_directory_index) file.folder = value;
      }
    }
    if (areFolders) {
      folders_.push_back(file.name);
    } else {
      files_.push_back(file);
    }
  }
  return !reader.hasFailed();
}

bool LineTable::runExtended(ByteReader& program, Row& row, bool& isEnd) const {
  ByteReader operands(program.part(program.variable()));
  switch (operands.byte()) {
    case DW_LNE_end_sequence:
      isEnd = true;
      break;
    case DW_LNE_set_address:
      row.address = operands.number(kAddressSize);
      break;
    case DW_LNE_set_discriminator:
      if (operands.variable() > kHighestDiscriminator) return false;
      break;
    default:
      return false;
  }
  return operands.isAtEnd() && !operands.hasFailed();
}

// An opcode that makes no row. What has no operand has no meaning for the lines either.
bool LineTable::runStandard(std::uint8_t opcode, ByteReader& program, Row& row) const {
  switch (opcode) {
    case DW_LNS_advance_pc:
      row.address += program.variable() * minimumLength_;
      return true;
    case DW_LNS_advance_line:
      row.line += static_cast<std::uint32_t>(program.signedVariable());
      return true;
    case DW_LNS_set_file: {
      std::uint64_t const file = program.variable();
      row.file = static_cast<std::uint32_t>(file);
      return row.file == file;
    }
    case DW_LNS_set_column:
      return program.variable() <= kMostColumns;
    case DW_LNS_const_add_pc:
      row.address += std::uint64_t{(255u - opcodeBase_) / lineRange_} * minimumLength_;
      return true;
    case DW_LNS_fixed_advance_pc:
      row.address += program.number(2);
      return true;
    case DW_LNS_set_isa:
      return program.variable() <= kHighestSet;
    default:
      return true;
  }
}

template <class Visit>
bool LineTable::run(ByteReader& program, Row& row, Visit visit) const {
  for (bool goesOn = true; goesOn && !program.isAtEnd();) {
    std::uint8_t const opcode = program.byte();
    if (opcode >= opcodeBase_) {
      unsigned const special = opcode - unsigned{opcodeBase_};
      row.address += std::uint64_t{special / lineRange_} * minimumLength_;
      row.line += static_cast<std::uint32_t>(lineBase_ + static_cast<int>(special % lineRange_));
      goesOn = visit(row, false);
    } else if (opcode == DW_LNS_copy) {
      goesOn = visit(row, false);
    } else if (opcode == 0) {
      bool isEnd = false;
      if (!runExtended(program, row, isEnd)) return false;
      if (isEnd) goesOn = visit(row, true);
    } else if (!runStandard(opcode, program, row)) {
      return false;
    }
  }
  return !program.hasFailed();
}

bool LineTable::readPieces() {
  ByteReader program(program_);
  Row row = kFirstRow;
  std::uint64_t last = 0;
  bool isEnd = true;
  while (!program.isAtEnd()) {
    unsigned char const* const start = program.position();
    Piece piece = {0, 0, 0, pieces_.size(), row, Bytes()};
    int rows = 0;
    bool isRising = true;
    bool const isUnderstood = run(program, row, [&](Row const& each, bool ends) {
      if (rows++ == 0) piece.start = each.address;
      isRising = isRising && each.address >= last;
      last = piece.end = each.address;
      isEnd = ends;
      return !ends && rows < kPieceRows;
    });
    if (!isUnderstood || !isRising || rows == 0) return false;
    piece.program = Bytes(start, static_cast<std::size_t>(program.position() - start));
    pieces_.push_back(piece);
    if (!isEnd) continue;
    row = kFirstRow;
    last = 0;
  }
  std::stable_sort(pieces_.begin(), pieces_.end(),
                   [](Piece const& one, Piece const& other) { return one.start < other.start; });
  std::uint64_t furthest = 0;
  for (Piece& each : pieces_) each.furthest = furthest = std::max(furthest, each.end);
  return isEnd;
}

// The best row so far. libdw sorts the rows by address, those that end a sequence first, else as they are stored, and takes
// the last one that is not above the address.
struct LineTable::Candidate {
  Row row = {0, 0, 0};
  bool isThere = false;
  bool isEnd = false;
  std::size_t piece = 0;

  bool isBehind(Row const& other, bool otherIsEnd, std::size_t otherPiece) const {
    if (row.address != other.address) return row.address > other.address;
    if (isEnd != otherIsEnd) return otherIsEnd;
    return piece > otherPiece;
  }
};

void LineTable::findIn(Piece const& piece, std::uint64_t address, Candidate& best) const {
  ByteReader program(piece.program);
  Row state = piece.state;
  run(program, state, [&](Row const& row, bool isEnd) {
    bool const isBetter = !best.isThere || !best.isBehind(row, isEnd, piece.number);
    if (row.address <= address && isBetter) best = {row, true, isEnd, piece.number};
    return !isEnd && row.address <= address;
  });
}

std::optional<LineTable::Row> LineTable::find(std::uint64_t address) const {
  // The last one of the sorted rows ends a sequence by definition, for libdw, too.
  if (pieces_.empty() || address >= pieces_.back().furthest) return std::nullopt;
  auto piece = std::upper_bound(pieces_.begin(), pieces_.end(), address,
                                [](std::uint64_t at, Piece const& each) { return at < each.start; });
  Candidate best;
  while (piece != pieces_.begin()) {
    --piece;
    if (best.isThere && piece->furthest < best.row.address) break;
    if (!best.isThere || piece->end >= best.row.address) findIn(*piece, address, best);
  }
  return best.isThere && !best.isEnd ? std::optional<Row>(best.row) : std::nullopt;
}

std::optional<std::string> LineTable::file(std::uint32_t number) const {
  if (number >= files_.size() || files_[number].name.empty()) return std::nullopt;
  File const& file = files_[number];
  if (file.name[0] == '/') return std::string(file.name);
  if (file.folder >= folders_.size()) return std::nullopt;
  std::string_view const folder = folders_[file.folder];
  std::string path(folder);
  if (folder.data() != nullptr) path += '/';
  return path.append(file.name);
}

}  // namespace platform
}  // namespace KV_1_1
