// SPDX-License-Identifier: MIT
//
// Every public operation that reaches the disk or the desktop, in one table. The sweeps in disk_operation_test.cpp run
// each row for its calls, for every call that can fail, for memory that runs out, for long paths and on several
// threads, so a new operation needs one row and no test of its own for these.
//
// All rows run on the tree that DiskTree builds. In the texts a slash stands for a backslash, {d} for the plain name of
// the folder of the tree and {D} for its prefixed one, both without a separator at their end.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/filesystem/disk_support.h"
#include "tests/support/progress.h"

namespace KV_1_1 {
namespace testing {

// The items of a tree by their names, and the progress that counts copied files.
class DiskItems {
 public:
  explicit DiskItems(wstring const& root) : root_(root) {}

  SmartPtr<Directory const> directory(char const* below) const { return Directory::fromString(text(below)); }
  SmartPtr<File const> file(char const* below) const { return File::fromString(text(below)); }

  CountedFiles progress;

 private:
  String text(char const* below) const { return String((root_ + KVW('/') + widen(below)).c_str()); }

  wstring root_;
};

// One failing call of an operation, and its effects.
struct Fault {
  wstring root;      // the folder of the tree
  int number;        // of the call that failed, from 1
  std::string call;  // its name
  std::string line;  // the call as the log shows it
  ulong32 error;
  std::string reason;  // the text of the error
  std::string result;
  int copied;  // the files that were reported as copied
  Texts messages;
  Tree before, after, done;  // done: after the same operation without a fault

  // The path of a call that got a prefixed one, as messages show it.
  std::string path() const { return line.substr(call.size() + std::string(R"( \\?\)").size()); }
};

// Expects the right effects of a fault.
using Judge = std::function<void(Fault const&)>;

// What an operation gives.
struct Result {
  Result(char const* text) : Result(text, text) {}
  Result(char const* text, char const* longText) : usual(text), onLongPaths(longText) {}

  char const* usual;
  char const* onLongPaths;  // where the system refuses every plain name in the tree as too long
};

struct DiskOperation {
  char const* name;  // the member that it covers; behind a colon what is special about the row
  Result result;
  std::function<std::string(DiskItems&)> run;
  // The calls to the disk, without the steps of searches and the questions about folders above the tree, and then those
  // to the desktop. A call may go on with numbers that the systems do not share.
  Log calls;
  Judge judge = nullptr;  // of one whose calls are all to the desktop: none
};

std::vector<DiskOperation> const& diskOperations();

// A text of the table for a tree in this folder.
std::string filled(std::string text, wstring const& root);

}  // namespace testing
}  // namespace KV_1_1
