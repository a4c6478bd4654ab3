// SPDX-License-Identifier: MIT
//
// Text for the user. Widths are counted in columns of the terminal, not in code units.
#pragma once

#include <kvbase/kvbase.h>

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <stdexcept>
#include <vector>

namespace scanshelf {

using namespace KV_1_1;  // for the whole program

// The text as UTF-8; an empty text for NIL. Valid as long as the String.
char const* utf8(String const& text);
// The text that String::printf makes.
template <class... Values>
String format(wchar const* pattern, Values const&... values) {
  String text;
  text.printf(pattern, values...);
  return text;
}

// Ends the program with a message for the user, which is not NIL.
class Error : public std::runtime_error {
 public:
  explicit Error(String const& message) : std::runtime_error(utf8(message)) {}
};

//   1234567 => "1,234,567"
String countText(std::uint64_t count);
// The count and the noun, with an s unless the count is 1.
//   1, "file" => "1 file"      1200, "file" => "1,200 files"
String countOf(std::uint64_t count, wchar const* noun);
//   1023 => "1023 B"      1536 => "1.5 KB"      1048575 => "1.0 MB"
String sizeText(std::uint64_t bytes);
//   0 ms => "under 1 ms"      12 ms => "12 ms"      1449 ms => "1.4 s"      65 s => "1 min 5 s"
//   7260 s => "2 h 1 min"
String durationText(std::chrono::milliseconds duration);

// A combining mark has width 0, and an ideograph width 2. A lone surrogate counts as one character of width 1.
int displayWidth(String const& text);
// The text in at most `width` columns. A path with slashes loses folders in its middle; a name, or a path whose last
// name alone is too wide, loses characters. Never cuts a surrogate pair.
//   "scans/2024/March/hall/scan001.dat", 26 => "scans/.../hall/scan001.dat"      "abcdefgh", 5 => "ab…gh"
String shorten(String const& text, int width);

// Prints the rows in columns, each as wide as its widest cell. `alignment` has one letter for each column: l or r.
// REQUIRES: no row has more cells than there are letters.
void printTable(std::ostream& out, char const* alignment, std::vector<std::vector<String>> const& rows);

}  // namespace scanshelf
