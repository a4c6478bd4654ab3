// SPDX-License-Identifier: MIT
#pragma once

#include <kvbase/kvbase.h>

#include <iosfwd>
#include <vector>

namespace scanshelf {

enum class Align { Left, Right };

struct Column {
  KV_1_1::String title;
  Align align;
};

// Rows of text that print as columns, each as wide as its widest cell.
class Table {
 public:
  explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {}

  // REQUIRES: a cell for each column.
  void add(std::vector<KV_1_1::String> cells) { rows_.push_back(std::move(cells)); }
  // The titles, unless all are empty, and the rows.
  void print(std::ostream& out) const;

 private:
  std::vector<Column> columns_;
  std::vector<std::vector<KV_1_1::String>> rows_;
};

}  // namespace scanshelf
