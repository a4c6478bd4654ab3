// SPDX-License-Identifier: MIT
//
// Every operation that reaches the disk, with each of its calls made to fail in turn: the result and the messages are
// the settled ones, nothing stays open, and nothing is removed, overwritten or made that was not to be.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "kvbase/filesystem/file_system_iterator.h"
#include "tests/filesystem/disk_fault_support.h"
#include "tests/support/current_path.h"

namespace KV_1_1 {
namespace {

using namespace KV_1_1::testing;

enum After { kBefore, kDone };

// What is settled for a fault.
struct Expected {
  std::string call;  // how the line of the log starts
  ulong32 error;     // 0: any
  std::string result;
  After after;
  std::string message;  // empty: none; "{fault}" stands for the text of the error, "{any}" at its end for any text
};

// Judges a fault by the first row that fits.
std::function<void(Fault const&)> by(std::vector<Expected> const& rows) {
  return [rows](Fault const& fault) {
    auto const row = std::find_if(rows.begin(), rows.end(), [&](Expected const& expected) {
      return fault.line.compare(0, expected.call.size(), expected.call) == 0 &&
             (expected.error == 0 || expected.error == fault.error);
    });
    ASSERT_NE(row, rows.end()) << "nothing is settled";
    EXPECT_EQ(fault.result, row->result);
    EXPECT_EQ(fault.after, row->after == kBefore ? fault.before : fault.done);
    if (row->message.empty()) {
      EXPECT_EQ(fault.messages, Texts());
      return;
    }
    ASSERT_EQ(fault.messages.size(), 1u);
    std::string message = row->message;
    std::size_t const any = message.find("{any}");
    if (any != std::string::npos) {
      EXPECT_EQ(fault.messages[0].substr(0, any), message.substr(0, any));
      return;
    }
    message.replace(message.find("{fault}"), 7, fault.reason());
    EXPECT_EQ(fault.messages[0], message);
  };
}

class DiskFault : public DiskTree {
 protected:
  std::string createLine(wchar const* below) const { return R"(createDirectory \\?\)" + name(below); }

  CountedFiles progress;
};

TEST_F(DiskFault, CopyMoveAndRemove) {
  auto const one = file(KVW("one.txt")), two = file(KVW("two.txt")), fresh = file(KVW("new.txt"));
  auto const copied = by({{"copyFile", 112, "221", kBefore, ""}, {"copyFile", 0, "18", kBefore, ""}});
  Operation const operations[] = {
      {"copy", "0", [&] { return std::to_string(one->copy(fresh, false)); }, copied},
      {"copy over a file", "0", [&] { return std::to_string(one->copy(two, true)); }, copied},
      {"copy with progress", "0",
       [&] { return std::to_string(one->copy(two, true, std::make_shared<RecordedProgress>())); }, copied},
      {"copy into a folder", name(KVW(R"(u\one.txt)")), [&] { return fullName(one->copy(directory(KVW("u")), false)); },
       by({{"copyFile", 0, "null", kBefore, ""}})},
      {"copy of a read-only file", name(KVW(R"(u\locked.txt)")),
       [&] { return fullName(file(KVW("locked.txt"))->copy(directory(KVW("u")), true)); },
       by({{"copyFile", 0, "null", kBefore, ""}})},
      {"move", "true", [&] { return textOf(one->move(fresh)); },
       by({{"moveFile", 0, "false", kBefore, notMoved(name(KVW("one.txt")), name(KVW("new.txt")), "{fault}")}})},
      {"remove", "true", [&] { return textOf(one->remove()); },
       by({{"getAttributes", 0, "true", kBefore, ""},
           {"deleteFile", 0, "false", kBefore, notDeleted(name(KVW("one.txt")), "{fault}")}})},
  };
  for (Operation const& operation : operations) ASSERT_NO_FATAL_FAILURE(sweep(operation));
  EXPECT_EQ(failedCalls, (std::set<std::string>{"copyFile", "deleteFile", "getAttributes", "moveFile"}));
}

TEST_F(DiskFault, TouchAndReadOnly) {
  auto const one = file(KVW("one.txt")), locked = file(KVW("locked.txt"));
  auto const touched = by({{"openFile", 0, "false", kBefore, ""},
                           {"setLastWriteTime", 0, "false", kBefore, ""},
                           {"", 0, "true", kDone, ""}});
  auto const switched = by({{"getAttributes", 0, "168", kBefore, ""}, {"setAttributes", 0, "0", kBefore, ""}});
  Operation const operations[] = {
      {"touch", "true", [&] { return textOf(one->touch()); }, touched},
      {"touch of a missing file", "true", [&] { return textOf(file(KVW("new.txt"))->touch()); }, touched},
      {"isReadOnly", "false", [&] { return textOf(one->isReadOnly()); },
       by({{"getAttributes", 0, "true", kBefore, ""}})},
      {"setAsReadOnly", "0", [&] { return std::to_string(one->setAsReadOnly()); }, switched},
      {"unsetAsReadOnly", "0", [&] { return std::to_string(locked->unsetAsReadOnly()); }, switched},
      {"setReadOnly", "0", [&] { return std::to_string(one->setReadOnly(true)); }, switched},
  };
  for (Operation const& operation : operations) ASSERT_NO_FATAL_FAILURE(sweep(operation));
  EXPECT_EQ(failedCalls, (std::set<std::string>{"closeDescriptor", "closeFile", "commitDescriptor", "getAttributes",
                                                "openDescriptor", "openFile", "setAttributes", "setLastWriteTime"}));
}

TEST_F(DiskFault, Queries) {
  auto const one = file(KVW("one.txt")), two = file(KVW("two.txt"));
  auto const empty = directory(KVW("u"));
  auto const refused = by({{"closeFile", 0, "true", kBefore, ""}, {"", 0, "false", kBefore, ""}});
  // What is asked for is left alone where the answer is false.
  auto const size = [&] {
    ULARGE_INTEGER value;
    value.QuadPart = 77;
    bool const told = one->getFileSize(value);
    EXPECT_EQ(value.QuadPart, told ? 1u : 77u);
    return textOf(told);
  };
  auto const time = [](auto const& item, auto query) {
    FILETIME value;
    value.dwLowDateTime = 7;
    value.dwHighDateTime = 7;
    bool const told = ((*item).*query)(&value);
    EXPECT_EQ(value.dwHighDateTime == 7, !told);
    return textOf(told);
  };
  auto const status = [](auto const& item) {
    struct _stat64i32 value;
    return textOf(item->stat(value));
  };
  Operation const operations[] = {
      {"File::exists", "true", [&] { return textOf(one->exists()); }, refused},
      {"Directory::exists", "true", [&] { return textOf(empty->exists()); }, refused},
      {"isDirectory", "true", [&] { return textOf(empty->isDirectory()); }, refused},
      {"isEmpty", "true", [&] { return textOf(empty->isEmpty()); }, refused},
      {"getFileSize", "true", size, refused},
      {"hasEqualSize", "true", [&] { return textOf(one->hasEqualSize(two)); }, refused},
      {"access to a file", "true", [&] { return textOf(one->access(6)); }, refused},
      {"access to a folder", "true", [&] { return textOf(empty->access(4)); }, refused},
      {"stat of a file", "true", [&] { return status(one); }, refused},
      {"stat of a folder", "true", [&] { return status(empty); }, refused},
      {"getCreationTime", "true", [&] { return time(one, &FileSystemItem::getCreationTime); }, refused},
      {"getLastWriteTime", "true", [&] { return time(empty, &FileSystemItem::getLastWriteTime); }, refused},
  };
  for (Operation const& operation : operations) ASSERT_NO_FATAL_FAILURE(sweep(operation));
  EXPECT_EQ(failedCalls, (std::set<std::string>{"closeFile", "getAttributes", "getInfo", "getStatus",
                                                "isDirectoryEmpty", "openFile"}));
}

// A level that cannot be asked is made, and that it is there already is no failure; one that is said to be there
// already and is not fails the next level.
TEST_F(DiskFault, Create) {
  std::string const makeA = createLine(KVW("n\\")), makeB = createLine(KVW("n\\m\\"));
  std::string const failedA = notCreated(name(KVW("n\\")), "{fault}"),
                    failedB = notCreated(name(KVW("n\\m\\")), "{fault}");
  Operation const operations[] = {
      {"create", "true", [&] { return textOf(directory(KVW("n\\m"))->create()); },
       by({{"getAttributes", 0, "true", kDone, ""},
           {makeB, 183, "true", kBefore, ""},  // see below: n stands then
           {makeB, 0, "false", kBefore, failedB},
           {makeA, 183, "false", kBefore, notCreated(name(KVW("n\\m\\")), "{any}")},
           {makeA, 0, "false", kBefore, failedA}})},
      {"create where all is there", "true", [&] { return textOf(directory(KVW("s\\sub"))->create()); },
       by({{"getAttributes", 0, "true", kBefore, ""}})},
      {"createParentDirectories", "true", [&] { return textOf(file(KVW("n\\m\\f.txt"))->createParentDirectories()); },
       by({{"getAttributes", 0, "true", kDone, ""},
           {makeB, 183, "true", kBefore, ""},
           {makeB, 0, "false", kBefore, failedB},
           {makeA, 183, "true", kDone, ""},  // the next level asks again
           {makeA, 0, "false", kBefore, failedA}})},
  };
  for (Operation operation : operations) {
    // A level that was made stays: what is compared below is without it where the next one failed.
    auto const check = operation.check;
    operation.check = [check, makeB](Fault const& fault) {
      Fault judged = fault;
      if (fault.line.compare(0, makeB.size(), makeB) == 0) {
        EXPECT_EQ(judged.after.erase("n/"), 1u);
      }
      check(judged);
    };
    ASSERT_NO_FATAL_FAILURE(sweep(operation));
  }
  EXPECT_EQ(failedCalls, (std::set<std::string>{"createDirectory", "getAttributes"}));
}

TEST_F(DiskFault, WithoutACurrentDirectory) {
  CurrentPath const current(folder.path());
  // Without the last row: the same as for an absolute path, see above.
  Operation const operations[] = {
      {"create", "true", [] { return textOf(directoryAt(KVW("n"))->create()); },
       [this](Fault const& fault) {
         if (fault.call == "currentDirectory") {
           EXPECT_EQ(fault.result, "false");
           EXPECT_EQ(fault.after, fault.before);
           EXPECT_EQ(fault.messages, Texts{kNoCurrentDirectory});
         } else if (fault.call == "createDirectory") {
           EXPECT_EQ(fault.result, textOf(fault.error == 183));
           EXPECT_EQ(fault.messages,
                     fault.error == 183 ? Texts() : Texts{notCreated(name(KVW("n\\")), fault.reason())});
         } else {
           EXPECT_EQ(fault.result, "true");
           EXPECT_EQ(fault.after, fault.done);
         }
       }},
      {"removeContents", "true", [] { return textOf(directoryAt(KVW("t"))->removeContents(true)); },
       [](Fault const& fault) {
         EXPECT_EQ(fault.result, textOf(fault.call != "deleteFile"));
         bool const lost = fault.call == "currentDirectory";
         EXPECT_EQ(fault.messages.size(), lost || fault.call == "deleteFile" ? 1u : 0u);
         if (lost) EXPECT_EQ(fault.messages, Texts{kNoCurrentDirectory});
       }},
  };
  for (Operation const& operation : operations) ASSERT_NO_FATAL_FAILURE(sweep(operation));
  EXPECT_EQ(failedCalls.count("currentDirectory"), 1u);
}

// What removing has in common: an item that is refused ends it with its own message; what could not be seen makes the
// folder fail that holds it.
void checkRemoval(Fault const& fault) {
  if (fault.call == "deleteFile" || fault.call == "removeDirectory") {
    EXPECT_EQ(fault.result, "false");
    EXPECT_EQ(fault.messages, Texts{fault.call == "deleteFile" ? notDeleted(fault.path(), fault.reason())
                                                               : notRemoved(fault.path(), fault.reason())});
  } else if (fault.call == "findClose") {
    EXPECT_EQ(fault.result, "true");
    EXPECT_EQ(fault.after, fault.done);
  } else if (fault.number == 1) {
    EXPECT_EQ(fault.result, "true") << "what cannot be asked counts as removed";
    EXPECT_EQ(fault.after, fault.before);
  }
  ASSERT_EQ(fault.messages.size(), fault.result == "true" ? 0u : 1u);
  if (fault.result == "false" && fault.call != "deleteFile") {
    std::string const start = "Failed to remove directory '";
    EXPECT_EQ(fault.messages[0].substr(0, start.size()), start);
  }
}

TEST_F(DiskFault, RemoveATree) {
  Operation const operations[] = {
      {"remove, recursive", "true", [&] { return textOf(directory(KVW("s"))->remove(true)); },
       [](Fault const& fault) {
         checkRemoval(fault);
         if (fault.number > 1) EXPECT_EQ(fault.result, textOf(fault.after.count("s/") == 0));
       }},
      {"remove of an empty folder", "true", [&] { return textOf(directory(KVW("u"))->remove(false)); }, checkRemoval},
      {"removeContents, recursive", "true", [&] { return textOf(directory(KVW("s"))->removeContents(true)); },
       [](Fault const& fault) {
         checkRemoval(fault);
         EXPECT_EQ(fault.after.count("s/"), 1u);
       }},
      {"removeContents", "true", [&] { return textOf(directory(KVW("s"))->removeContents(false)); },
       [](Fault const& fault) {
         checkRemoval(fault);
         EXPECT_EQ(fault.result, textOf(fault.call != "deleteFile"));
       }},
  };
  for (Operation const& operation : operations) ASSERT_NO_FATAL_FAILURE(sweep(operation));
  EXPECT_EQ(failedCalls, (std::set<std::string>{"deleteFile", "findClose", "findFirst", "findNext", "getAttributes",
                                                "removeDirectory"}));
}

TEST_F(DiskFault, CopyATree) {
  for (bool const recursive : {true, false}) {
    for (bool const overwrite : {true, false}) {
      wchar const* const to = overwrite ? KVW("t") : KVW("u");
      std::string const under = overwrite ? "t/" : "u/";
      auto const run = [&] {
        progress.count = 0;
        return textOf(directory(KVW("s"))->copyContents(directory(to), recursive, overwrite, &progress));
      };
      auto const check = [&](Fault const& fault) {
        int copied = 0;
        for (auto const& item : fault.before) {
          if (item.first.compare(0, 2, "s/") != 0 || item.first.back() == '/') continue;
          auto const found = fault.after.find(under + item.first.substr(2));
          copied += found != fault.after.end() && found->second == item.second;
        }
        EXPECT_EQ(progress.count, copied);

        bool const makes = fault.call == "createDirectory", raced = makes && fault.error == 183;
        EXPECT_EQ(fault.messages, makes && !raced ? Texts{notCreated(fault.path(), fault.reason())} : Texts());
        if (makes) {
          EXPECT_EQ(fault.result, textOf(!recursive && (overwrite || raced)));
        } else if (fault.call == "copyFile") {
          EXPECT_EQ(fault.result, "false");
        } else if (fault.call == "findClose") {
          EXPECT_EQ(fault.after, fault.done);
          EXPECT_EQ(fault.result, "true");
        } else if (fault.call == "getAttributes") {
          if (fault.number <= 2) EXPECT_EQ(fault.after, fault.before);
          if (fault.number <= 2) EXPECT_EQ(fault.result, "false");
          if (fault.result == "true") EXPECT_EQ(fault.after, fault.done);
        } else {
          EXPECT_EQ(fault.result, "true") << "a search that fails is one without items";
        }
      };
      std::string const flags = std::string(recursive ? ", recursive" : "") + (overwrite ? ", overwriting" : "");
      ASSERT_NO_FATAL_FAILURE(sweep({"copyContents" + flags, "true", run, check}));
    }
  }
  EXPECT_EQ(failedCalls, (std::set<std::string>{"copyFile", "createDirectory", "findClose", "findFirst", "findNext",
                                                "getAttributes"}));
}

// A search that fails gives fewer items, and no message.
TEST_F(DiskFault, Searches) {
  Texts found;
  auto const collect = [&found](auto const& items) {
    found.clear();
    for (auto const& item : items) found.push_back(shown(item->getFullName()));
    return std::string("done");
  };
  auto const iterate = [&found](auto iterator) {
    found.clear();
    while (auto const item = iterator->getNext()) found.push_back(shown(item->getFullName()));
    return std::string("done");
  };
  String const all(KVW("*"));
  auto const tree = directory(KVW("s"));
  struct Row {
    char const* name;
    std::function<std::string()> run;
    std::size_t items;
  };
  Row const rows[] = {
      {"findContents", [&] { return iterate(tree->findContents(all)); }, 4},
      {"findDirectories", [&] { return iterate(tree->findDirectories(all)); }, 2},
      {"findFiles", [&] { return iterate(tree->findFiles(all)); }, 2},
      {"collectContents", [&] { return collect(tree->collectContents(all, false)); }, 4},
      {"collectContents, recursive", [&] { return collect(tree->collectContents(all, true)); }, 7},
      {"collectDirectories, recursive", [&] { return collect(tree->collectDirectories(all, true)); }, 3},
      {"collectFiles, recursive", [&] { return collect(tree->collectFiles(all, true)); }, 4},
  };
  for (Row const& row : rows) {
    row.run();
    Texts whole = found;
    ASSERT_EQ(whole.size(), row.items);
    std::sort(whole.begin(), whole.end());
    auto const check = [&](Fault const& fault) {
      Texts part = found;
      std::sort(part.begin(), part.end());
      EXPECT_TRUE(std::includes(whole.begin(), whole.end(), part.begin(), part.end()));
      EXPECT_TRUE(std::adjacent_find(part.begin(), part.end()) == part.end());
      if (fault.call == "findClose") EXPECT_EQ(part, whole);
      if (fault.call == "findFirst" && fault.number == 1) EXPECT_LT(part.size(), whole.size());
      EXPECT_EQ(fault.messages, Texts());
      EXPECT_EQ(fault.after, fault.before);
    };
    ASSERT_NO_FATAL_FAILURE(sweep({row.name, "done", row.run, check}));
  }
  EXPECT_EQ(failedCalls, (std::set<std::string>{"findClose", "findFirst", "findNext"}));
}

}  // namespace
}  // namespace KV_1_1
