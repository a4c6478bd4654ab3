// SPDX-License-Identifier: MIT
//
// Every public operation of paths and iterators that leaves the disk alone, in one table. The sweeps in
// path_operation_test.cpp run each row on ordinary and odd objects, with memory that runs out and on several threads,
// so a new operation needs one row and no test of its own for these. (Operations on the disk: disk_operation_table.h.)
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/filesystem/path_support.h"

namespace KV_1_1 {
namespace testing {

// What the rows run on.
struct PathItems {
  char const* name;
  SmartPtr<Directory const> directory;
  SmartPtr<Directory const> otherDirectory;
  SmartPtr<File const> file;
  SmartPtr<File const> otherFile;
  String text;  // to be parsed
  String level;
};

struct PathOperation {
  char const* name;   // the member that it covers; behind a colon what is special about the row
  char const* calls;  // the names of the platform calls that it may make
  std::function<std::string(PathItems const&)> run;
};

std::vector<PathOperation> const& pathOperations();

}  // namespace testing
}  // namespace KV_1_1
