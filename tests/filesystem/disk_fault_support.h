// SPDX-License-Identifier: MIT
//
// A tree on the real disk, and the sweep that makes each call of an operation on it fail in turn, with each error that
// the call can give.
#pragma once

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "kvbase/diagnostics/windows_error.h"
#include "tests/filesystem/disk_support.h"
#include "tests/support/failing_files.h"

namespace KV_1_1 {
namespace testing {

inline std::vector<ulong32> const& errorsOf(std::string const& call) {
  static std::map<std::string, std::vector<ulong32>> const errors = {
      {"getAttributes", {2, 3, 5, 32, 123, 206}},
      {"setAttributes", {2, 5}},
      {"getInfo", {2, 3, 5, 32}},
      {"getStatus", {2}},
      {"isDirectoryEmpty", {2, 5}},
      {"openFile", {2, 3, 5, 32, 80, 112, 123, 183, 206}},
      {"closeFile", {6}},
      {"setLastWriteTime", {5}},
      {"openDescriptor", {5}},
      {"commitDescriptor", {112}},
      {"closeDescriptor", {6}},
      {"copyFile", {2, 3, 5, 32, 80, 112, 123, 206}},
      {"moveFile", {2, 3, 5, 32, 183, 206}},
      {"deleteFile", {2, 5, 32}},
      {"createDirectory", {3, 5, 112, 123, 183, 206}},
      {"removeDirectory", {2, 5, 32, 145}},
      {"findFirst", {2, 3, 5}},
      {"findNext", {5, 18}},
      {"findClose", {6}},
      {"currentDirectory", {3, 5}},
  };
  return errors.at(call);
}

// One fault and what came of it.
struct Fault {
  int number;        // of the call that failed, from 1
  std::string call;  // its name
  std::string line;  // the call as the log shows it
  ulong32 error;
  std::string result;
  Texts messages;
  Tree before, after, done;  // done: after the same operation without a fault

  // The path of a call that got a prefixed one, as messages show it.
  std::string path() const { return line.substr(call.size() + std::string(R"( \\?\)").size()); }
  std::string reason() const { return shown(getWindowsError(error)); }
};

struct Operation {
  std::string name;
  std::string done;  // the result without a fault
  std::function<std::string()> run;
  std::function<void(Fault const&)> check;
};

inline std::string textOf(bool value) {
  return value ? "true" : "false";
}

// Each item that stays is as it was; each that goes is gone or as it was; each that comes or changes is so or not yet.
inline void expectBetween(Tree const& before, Tree const& after, Tree const& done) {
  auto const has = [](Tree const& tree, Tree::value_type const& item) {
    auto const found = tree.find(item.first);
    return found != tree.end() && found->second == item.second;
  };
  for (auto const& item : after) {
    EXPECT_TRUE(has(before, item) || has(done, item)) << item.first << " was changed: " << item.second;
  }
  for (auto const& item : before) {
    bool const stays = done.count(item.first) != 0;
    EXPECT_TRUE(!stays || after.count(item.first) != 0) << item.first << " is gone";
  }
}

// Folders: s, full; t, with a file a.txt of its own; u, empty; the files one.txt, two.txt and the read-only locked.txt.
class DiskTree : public OnDisk {
 protected:
  DiskTree() : OnDisk(quickPlace()) { build(); }

  // The bytes of all files, and which of them are read-only.
  Tree tree() const {
    namespace fs = std::filesystem;
    Tree tree = treeOf(folder.path());
    for (auto& item : tree) {
      bool const isFolder = item.first.back() == '/';
      auto const rights = fs::status(folder.path(fs::u8path(item.first))).permissions();
      if (!isFolder && (rights & fs::perms::owner_write) == fs::perms::none) item.second += " (read-only)";
    }
    return tree;
  }

  // Makes the tree anew.
  void build() const {
    namespace fs = std::filesystem;
    for (auto const& item : fs::recursive_directory_iterator(folder.path())) {
      fs::permissions(item.path(), fs::perms::owner_all, fs::perm_options::add);
    }
    for (auto const& item : fs::directory_iterator(folder.path())) fs::remove_all(item.path());
    folder.write("s/a.txt", "alpha");
    folder.write("s/b.txt", "beta");
    folder.write("s/sub/c.txt", "gamma");
    folder.write("s/sub/deep/d.txt", "delta");
    folder.makeFolder("s/none");
    folder.write("t/a.txt", "old alpha");
    folder.write("t/keep.txt", "kept");
    folder.makeFolder("u");
    folder.write("one.txt", "1");
    folder.write("two.txt", "2");
    folder.write("locked.txt", "locked");
    fs::permissions(folder.path("locked.txt"),
                    fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
  }

  // Runs the operation without a fault, then with each of its calls failing with each of its errors, on a fresh tree
  // each.
  void sweep(Operation const& operation) {
    SCOPED_TRACE(operation.name);
    Tree const before = tree();
    Log calls;
    {
      RecordingFiles recorder;
      platform::ScopedBackend<platform::FileApi> const scope(recorder);
      ASSERT_EQ(operation.run(), operation.done);
      ASSERT_EQ(recorder.openInAll(), 0);
      calls = recorder.log();
    }
    ASSERT_EQ(messages.take(), Texts());
    Tree const done = tree();
    if (done != before) build();
    for (std::size_t n = 1; n <= calls.size(); ++n) {
      std::string const call = calls[n - 1].substr(0, calls[n - 1].find(' '));
      failedCalls.insert(call);
      for (ulong32 const error : errorsOf(call)) {
        SCOPED_TRACE("call " + std::to_string(n) + ", error " + std::to_string(error) + ": " + calls[n - 1]);
        Fault fault{static_cast<int>(n), call, "", error, "", {}, before, {}, done};
        ASSERT_NO_FATAL_FAILURE(run(operation, fault));
      }
    }
  }

  std::set<std::string> failedCalls;

 private:
  void run(Operation const& operation, Fault& fault) {
    FailingFiles failing(fault.number);
    failing.error = fault.error;
    RecordingFiles recorder(failing);
    {
      platform::ScopedBackend<platform::FileApi> const scope(recorder);
      fault.result = operation.run();
    }
    ASSERT_EQ(failing.failed(), fault.call);
    EXPECT_EQ(failing.openInAll(), 0);
    fault.line = recorder.log()[static_cast<std::size_t>(fault.number) - 1];
    fault.messages = messages.take();
    fault.after = tree();
    expectBetween(fault.before, fault.after, fault.done);
    operation.check(fault);
    if (fault.after != fault.before) build();
  }
};

}  // namespace testing
}  // namespace KV_1_1
