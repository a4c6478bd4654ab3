// SPDX-License-Identifier: MIT
#include "table.h"

#include <algorithm>
#include <ostream>
#include <string>

#include "text.h"

namespace scanshelf {

using KV_1_1::String;

namespace {

void printRow(std::ostream& out, std::vector<Column> const& columns, std::vector<String> const& cells,
              std::vector<int> const& widths) {
  for (std::size_t i = 0; i < cells.size(); ++i) {
    std::string const room(static_cast<std::size_t>(widths[i] - displayWidth(cells[i])), ' ');
    bool const isLast = i + 1 == cells.size();
    out << "  ";
    if (columns[i].align == Align::Right) out << room;
    out << utf8(cells[i]);
    if (columns[i].align == Align::Left && !isLast) out << room;
  }
  out << '\n';
}

}  // namespace

void Table::print(std::ostream& out) const {
  std::vector<String> titles;
  for (Column const& column : columns_) titles.push_back(column.title);
  std::vector<int> widths;
  for (String const& title : titles) widths.push_back(displayWidth(title));
  bool const isTitled = std::any_of(widths.begin(), widths.end(), [](int width) { return width > 0; });

  for (std::vector<String> const& row : rows_) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], displayWidth(row[i]));
  }
  if (isTitled) printRow(out, columns_, titles, widths);
  for (std::vector<String> const& row : rows_) printRow(out, columns_, row, widths);
}

}  // namespace scanshelf
