// SPDX-License-Identifier: MIT
//
// Holds for every operation in the table of disk operations: each call gets the right one of an item's names, and
// neither a failing call nor a failing allocation leaves a handle open, or makes, changes or removes an item by
// mistake.
#include "tests/filesystem/disk_operation_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <new>
#include <set>
#include <string>
#include <vector>

#include "kvbase/diagnostics/windows_error.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/current_path.h"
#include "tests/support/failing_files.h"
#include "tests/support/scripted_shell.h"
#include "tests/support/threads.h"

namespace KV_1_1 {
namespace testing {
namespace {

namespace fs = std::filesystem;

// Folders: s, full; t, with a file a.txt of its own; u, empty. Files: one.txt and two.txt of the same size, and the
// read-only locked.txt.
class DiskTree {
 public:
  explicit DiskTree(TempFolder const& folder, std::string const& below = "") : folder_(folder), below_(below) {
    build();
  }

  wstring root() const { return below_.empty() ? folder_.text() : folder_.text(widen(below_)); }

  // Makes the tree anew.
  void build() const {
    fs::create_directories(path());
    for (auto const& item : fs::recursive_directory_iterator(path())) {
      fs::permissions(item.path(), fs::perms::owner_all, fs::perm_options::add);
    }
    for (auto const& item : fs::directory_iterator(path())) fs::remove_all(item.path());
    auto const write = [&](char const* name, char const* bytes) { folder_.write(fs::path(below_) / name, bytes); };
    write("s/a.txt", "alpha");
    write("s/sub/c.txt", "gamma");
    write("t/a.txt", "old alpha");
    write("t/keep.txt", "kept");
    fs::create_directory(path("u"));
    write("one.txt", "1");
    write("two.txt", "2");
    write("locked.txt", "locked");
    fs::permissions(path("locked.txt"), fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
  }

  // The bytes of all files, and which of them are read-only.
  Tree contents() const {
    Tree tree = treeOf(path());
    for (auto& item : tree) {
      bool const isFolder = item.first.back() == '/';
      auto const rights = fs::status(path(fs::u8path(item.first))).permissions();
      if (!isFolder && (rights & fs::perms::owner_write) == fs::perms::none) item.second += " (read-only)";
    }
    return tree;
  }

 private:
  fs::path path(fs::path const& name = fs::path()) const { return folder_.path(fs::path(below_) / name); }

  TempFolder const& folder_;
  std::string below_;
};

// Expects each item to be as before or as after success, and none missing that was to stay.
void expectBetween(Tree const& before, Tree const& after, Tree const& done) {
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

// A desktop on which everything succeeds. It keeps no log, so it does not allocate and serves several threads.
class AgreeableShell final : public platform::ShellApi {
 public:
  std::intptr_t open(wchar const*, wchar const*, wchar const*, int) override { return 42; }
  platform::ItemList itemListFromPath(wchar const*) override { return &item_; }
  std::int32_t showItem(platform::ItemList) override { return 0; }
  void freeItemList(platform::ItemList) override {}
  bool commonProgramFiles(wstring&) override { return false; }

 private:
  char item_ = 0;
};

class DiskOperations : public OnDisk {
 protected:
  DiskOperations() : OnDisk(quickPlace()) {}

  DiskTree const tree{folder};
  CurrentPath const current{folder.path()};
  DiskItems items{folder.text()};
  AgreeableShell shell;
  platform::ScopedBackend<platform::ShellApi> shellScope{shell};
};

TEST_F(DiskOperations, MakeTheirCallsWithTheirNames) {
  std::string const above = narrow(folder.text());
  for (DiskOperation const& operation : diskOperations()) {
    SCOPED_TRACE(operation.name);
    RecordingFiles files;
    ScriptedShell desktop;
    {
      platform::ScopedBackend<platform::FileApi> const filesScope(files);
      platform::ScopedBackend<platform::ShellApi> const desktopScope(desktop);
      EXPECT_EQ(operation.run(items), filled(operation.result.usual, tree.root()));
    }
    EXPECT_EQ(files.openInAll() + desktop.openItems, 0);
    EXPECT_EQ(messages.take(), Texts());
    Log calls;
    for (std::string const& call : files.log()) {
      bool const isStep = call == "findNext" || call == "findClose";
      std::string const path = call.substr(call.find(' ') + 1);
      bool const isAbove = path.back() == '\\' && (R"(\\?\)" + above).rfind(path, 0) == 0;
      if (!isStep && !isAbove) calls.push_back(call);
    }
    calls.insert(calls.end(), desktop.log.begin(), desktop.log.end());
    ASSERT_EQ(calls.size(), operation.calls.size()) << ::testing::PrintToString(calls);
    for (std::size_t i = 0; i < calls.size(); ++i) {
      std::string const expected = filled(operation.calls[i], tree.root());
      EXPECT_TRUE(calls[i] == expected || calls[i].rfind(expected + ' ', 0) == 0) << calls[i] << "\n" << expected;
    }
    tree.build();
  }
}

// --- Calls that fail -------------------------------------------------------------------------------------------------

// The errors that a call can leave.
std::vector<ulong32> const& errorsOf(std::string const& call) {
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

// Each call of each operation fails with each of its errors, on a fresh tree each. Where not each failure is tried, a call
// that an operation makes again fails with one error.
TEST_F(DiskOperations, SurviveEveryFailingCall) {
  std::set<std::string> failedCalls;
  Tree const before = tree.contents();
  for (DiskOperation const& operation : diskOperations()) {
    SCOPED_TRACE(operation.name);
    Log calls;
    {
      RecordingFiles recorder;
      platform::ScopedBackend<platform::FileApi> const scope(recorder);
      operation.run(items);
      calls = recorder.log();
    }
    Tree const done = tree.contents();
    if (done != before) tree.build();
    ASSERT_EQ(operation.judge == nullptr, calls.empty());
    std::set<std::string> callsBefore;
    for (std::size_t n = 1; n <= calls.size(); ++n) {
      std::string const call = calls[n - 1].substr(0, calls[n - 1].find(' '));
      failedCalls.insert(call);
      bool const isNew = callsBefore.insert(call).second;
      for (ulong32 const error : errorsOf(call)) {
        if (!kTriesEachFailure && !isNew && error != errorsOf(call).front()) break;
        SCOPED_TRACE("call " + std::to_string(n) + ", error " + std::to_string(error) + ": " + calls[n - 1]);
        FailingFiles failing(static_cast<int>(n));
        failing.error = error;
        RecordingFiles recorder(failing);
        Fault fault{
            tree.root(), static_cast<int>(n), call, "", error, shown(getWindowsError(error)), "", 0, {}, before, {},
            done};
        {
          platform::ScopedBackend<platform::FileApi> const scope(recorder);
          fault.result = operation.run(items);
        }
        ASSERT_EQ(failing.failed(), call);
        EXPECT_EQ(failing.openInAll(), 0);
        fault.line = recorder.log()[n - 1];
        fault.copied = items.progress.count;
        fault.messages = messages.take();
        fault.after = tree.contents();
        expectBetween(before, fault.after, done);
        std::string const plain = narrow(tree.root());
        if (fault.result.rfind(plain, 0) == 0) fault.result = "{d}" + fault.result.substr(plain.size());
        operation.judge(fault);
        if (fault.after != before) tree.build();
        if (HasFatalFailure()) return;
      }
    }
  }
  // Every call that an operation can make has failed once.
  EXPECT_EQ(failedCalls.size(), 20u);
}

// --- Memory that runs out --------------------------------------------------------------------------------------------

// Each allocation of each operation fails in turn, or where not each failure is tried, each fifth. No row ends in a message: formatting one ends the process when
// memory runs out while the text is put in place.
TEST_F(DiskOperations, SurviveEveryFailingAllocation) {
  Tree const before = tree.contents();
  for (DiskOperation const& operation : diskOperations()) {
    SCOPED_TRACE(operation.name);
    FailingFiles files;
    platform::ScopedBackend<platform::FileApi> const scope(files);
    operation.run(items);  // what is built on first use stands from here on
    Tree const done = tree.contents();
    if (done != before) tree.build();
    for (AllocationSweep sweep(0, kTriesEachFailure ? 1 : 5); sweep.next();) {
      sweep.run([&] { operation.run(items); });
      EXPECT_EQ(files.openInAll(), 0);
      EXPECT_EQ(messages.take(), Texts());
      Tree const after = tree.contents();
      expectBetween(before, after, done);
      if (!sweep.failed()) EXPECT_EQ(after, done);
      if (after != before) tree.build();
    }
  }
}

// --- Long paths ------------------------------------------------------------------------------------------------------

// The real disk where every plain name below a folder is too long, as it is on Windows from 260 code units on.
class LimitedFiles final : public InterceptedFiles {
 public:
  explicit LimitedFiles(wstring const& root) : InterceptedFiles(platform::nativeFiles()), root_(root) {}

 protected:
  bool enter(char const*, wchar const* text) override {
    if (text == nullptr || wstring(text).compare(0, root_.size(), root_) != 0) return true;
    platform::errors().setLastError(platform::kPathNotFound);
    return false;
  }

 private:
  wstring const root_;
};

TEST_F(DiskOperations, OnLongPaths) {
  LimitedFiles files(tree.root());
  platform::ScopedBackend<platform::FileApi> const scope(files);
  for (DiskOperation const& operation : diskOperations()) {
    SCOPED_TRACE(operation.name);
    EXPECT_EQ(operation.run(items), filled(operation.result.onLongPaths, tree.root()));
    EXPECT_EQ(files.openInAll(), 0);
    tree.build();
  }
}

// --- Threads ---------------------------------------------------------------------------------------------------------

TEST_F(DiskOperations, RunOnSeveralThreads) {
  std::vector<Texts> faults(kThreads);
  std::vector<std::unique_ptr<DiskTree>> trees;
  for (int i = 0; i < kThreads; ++i) trees.push_back(std::make_unique<DiskTree>(folder, std::to_string(i)));
  onThreads([&](int thread) {
    DiskTree const& own = *trees[static_cast<std::size_t>(thread)];
    DiskItems ownItems(own.root());
    for (DiskOperation const& operation : diskOperations()) {
      Log const& calls = operation.calls;
      if (std::count(calls.begin(), calls.end(), "currentDirectory") != 0) continue;  // belongs to the whole process
      std::string const result = operation.run(ownItems);
      if (result != filled(operation.result.usual, own.root())) {
        faults[static_cast<std::size_t>(thread)].push_back(operation.name + (": " + result));
      }
      own.build();
    }
  });
  for (Texts const& each : faults) EXPECT_EQ(each, Texts());
  EXPECT_EQ(messages.take(), Texts());
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
