// SPDX-License-Identifier: MIT
//
// The table of source lines of a unit in the form of DWARF, versions 2 to 5. libdw reads such a table into a list of all
// its rows and sorts it before it answers the first question; here the table is gone through once, without keeping the
// rows, and then only the piece of it with the address that is asked for.
//
// The bytes may be anything. Whatever these classes do not expect, they do not read at all, so that the caller can ask
// libdw; what they find is what libdw finds.
//
// Thread rule: none; a table is used under the lock of the session.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace KV_1_1 {
namespace platform {

using Bytes = std::basic_string_view<unsigned char>;

// Reads what is stored one after the other. Behind the end everything is 0, and it has failed.
class ByteReader {
 public:
  explicit ByteReader(Bytes bytes) : at_(bytes.data()), end_(at_ + bytes.size()) {}

  bool hasFailed() const { return hasFailed_; }
  bool isAtEnd() const { return at_ == end_; }
  unsigned char const* position() const { return at_; }

  // A number of 1, 2, 4 or 8 bytes.
  std::uint64_t number(std::size_t size);
  std::uint8_t byte() { return at_ != end_ ? *at_++ : fail(); }
  std::uint64_t variable();
  std::int64_t signedVariable();
  // A text with its terminator behind it.
  std::string_view text();
  void skip(std::uint64_t size) { part(size); }
  // The next bytes, which are passed over.
  Bytes part(std::uint64_t size);

 private:
  std::uint8_t fail();

  unsigned char const* at_;
  unsigned char const* end_;
  bool hasFailed_ = false;
};

// Those that line tables are stored in. They must stay as long as a table that has been read from them.
struct LineSections {
  Bytes lines;        // .debug_line
  Bytes lineStrings;  // .debug_line_str
  Bytes strings;      // .debug_str
};

class LineTable {
 public:
  struct Row {
    std::uint64_t address;
    std::uint32_t file;
    std::uint32_t line;
  };

  // The table at an offset in .debug_line of a unit with that folder. None if it is not understood.
  static std::optional<LineTable> read(LineSections const& sections, std::uint64_t offset, std::string_view folder);

  // The row of an address; none if no row has it.
  std::optional<Row> find(std::uint64_t address) const;
  // The path of a file. None if there is no such file.
  std::optional<std::string> file(std::uint32_t number) const;

 private:
  // Some rows of a sequence, whose addresses rise. The last row of a sequence tells only where its code ends.
  struct Piece {
    std::uint64_t start;     // the address of its first row
    std::uint64_t end;       // that of its last one
    std::uint64_t furthest;  // the highest `end` up to this piece
    std::size_t number;      // as they are stored
    Row state;               // what the program starts with
    Bytes program;
  };
  struct File {
    std::string_view name;
    std::uint64_t folder;
  };
  struct Candidate;

  bool readHeader(LineSections const& sections, std::uint64_t offset, std::string_view folder);
  bool readOldNames(ByteReader& reader, std::string_view folder);
  bool readNames(ByteReader& reader, LineSections const& sections, bool areFolders);
  bool readPieces();
  // Calls `visit` with each row that the program makes, and whether it ends a sequence, until that returns false or the
  // program ends. False if the program is not understood.
  template <class Visit>
  bool run(ByteReader& program, Row& row, Visit visit) const;
  bool runStandard(std::uint8_t opcode, ByteReader& program, Row& row) const;
  bool runExtended(ByteReader& program, Row& row, bool& isEnd) const;
  void findIn(Piece const& piece, std::uint64_t address, Candidate& best) const;

  Bytes program_;
  std::uint8_t minimumLength_ = 0;
  std::int8_t lineBase_ = 0;
  std::uint8_t lineRange_ = 0;
  std::uint8_t opcodeBase_ = 0;
  std::vector<std::string_view> folders_;
  std::vector<File> files_;
  std::vector<Piece> pieces_;  // by start
};

}  // namespace platform
}  // namespace KV_1_1
