// SPDX-License-Identifier: MIT
//
// What holds for every operation in the table of path operations: it leaves the disk and the objects that take part
// alone, gives the same answer each time and on each thread, and stands memory that runs out at any point.
#include "tests/filesystem/path_operation_table.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <string>
#include <vector>

#include "tests/support/allocation_failure.h"
#include "tests/support/scripted_files.h"
#include "tests/support/threads.h"

namespace KV_1_1 {
namespace testing {
namespace {

// A process in C:\work, for D: in D:\data, on a disk with nothing on it.
class PathOperations : public ::testing::Test {
 protected:
  PathOperations() {
    files.script.directory = KVW(R"(C:\work)");
    for (int drive = 1; drive <= 26; ++drive) files.script.driveDirectories[drive] = KVW(R"(D:\data)");
  }

  ScriptedFiles files;
  platform::ScopedBackend<platform::FileApi> scope{files};
};

SmartPtr<File const> fileCalled(wchar const* path, String const& name) {
  SmartPtr<File> const file = File::fromString(String(path));
  file->setName(name);
  return file;
}

// No operation ends in a message on these.
std::vector<PathItems> ordinaryItems() {
  String const text(KVW("c:/a/../b/c")), share(KVW("//srv/share/x")), name(KVW("n.e"));
  return {
      {"on a drive", directoryAt(KVW(R"(C:\work\a)")), directoryAt(KVW(R"(..\r)")), fileAt(KVW(R"(C:\a\f.txt)")),
       fileAt(KVW(R"(r\f.txt)")), text, name},
      {"on a share", directoryAt(KVW(R"(\\srv\share\x)")), directoryAt(KVW("r")), fileAt(KVW(R"(\\srv\share\f)")),
       fileAt(KVW(R"(D:g.h)")), share, name},
      {"relative", directoryAt(KVW(R"(r\q)")), directoryAt(KVW(R"(..\x)")), fileAt(KVW("f")), fileAt(KVW(R"(\g)")),
       text, name},
  };
}

std::vector<PathItems> oddItems() {
  SmartPtr<Directory const> const byDefault(new Directory), root = directoryAt(KVW(R"(C:\)")),
                                                            up = directoryAt(KVW(R"(..\..)"));
  SmartPtr<File const> const file = fileAt(KVW("a.b")), nil = fileCalled(KVW("x"), String::NIL),
                             empty = fileCalled(KVW(R"(\x)"), String::EMPTY),
                             odd = fileCalled(KVW(R"(\\s\t\x)"), String(KVW(R"(..\*:?/ .)")));
  String const surrogate(wchar(0xD800), 3);
  return {
      {"NIL", byDefault, byDefault, nil, nil, String::NIL, String::NIL},
      {"EMPTY", byDefault, root, empty, nil, String::EMPTY, String::EMPTY},
      {"roots", root, directoryAt(KVW(R"(\\s\t)")), empty, odd, String(KVW("C:")), String(KVW("."))},
      {"beyond the root", root, up, file, odd, String(KVW(R"(C:\..)")), String(KVW(".."))},
      {"dots alone", up, up, odd, odd, String(KVW(R"(\\.\..\.)")), String(KVW("..."))},
      {"inner NUL", root, byDefault, file, file, counted(wstring(KVW("a\0\\b*"), 5)), counted(wstring(KVW("a\0b"), 3))},
      {"percent signs", up, root, fileCalled(KVW("x"), String(KVW("%ls%n"))), nil, String(KVW("%ls%n*")),
       String(KVW("%s:"))},
      {"lone surrogates", directoryAt(surrogate), directoryAt(surrogate), fileCalled(KVW("x"), surrogate), file,
       surrogate, surrogate},
  };
}

std::string describedItems(PathItems const& items) {
  return described(items.directory) + ", " + described(items.otherDirectory) + ", " + described(items.file) + ", " +
         described(items.otherFile) + ", " + shown(items.text) + ", " + shown(items.level);
}

TEST_F(PathOperations, LeaveTheDiskAndTheirObjectsAlone) {
  CollectedMessages messages;
  std::vector<PathItems> all = ordinaryItems();
  for (PathItems const& items : all) {
    for (PathOperation const& operation : pathOperations()) operation.run(items);
    EXPECT_EQ(messages.take(), Texts{shown(items.text)}) << items.name;  // of reportError itself
  }
  for (PathItems const& items : oddItems()) all.push_back(items);
  for (PathItems const& items : all) {
    std::string const before = describedItems(items);
    for (PathOperation const& operation : pathOperations()) {
      SCOPED_TRACE(std::string(operation.name) + ", " + items.name);
      files.clearLog();
      std::string const result = operation.run(items);
      Texts const reported = messages.take();
      EXPECT_EQ(operation.run(items), result);
      EXPECT_EQ(messages.take(), reported);
      EXPECT_EQ(describedItems(items), before);
      for (std::string const& call : files.log()) {
        std::string const name = call.substr(0, call.find(' '));
        EXPECT_NE(std::string(operation.calls).find(name), std::string::npos) << call;
      }
      EXPECT_EQ(files.openInAll(), 0);
    }
  }
}

// The same calls without an allocation of the script's own.
class FrugalFiles final : public FileScript {
 public:
  platform::SearchHandle findFirst(wchar const*, platform::FindData&) override { return platform::invalidSearch(); }
  bool currentDirectory(wstring& path) override {
    path = KVW(R"(C:\work)");
    return true;
  }
  bool currentDirectoryOfDrive(int, wstring& path) override { return currentDirectory(path); }
};

TEST(PathAllocation, EveryOperationCleansUp) {
  FrugalFiles files;
  platform::ScopedBackend<platform::FileApi> const scope(files);
  for (PathItems const& items : ordinaryItems()) {
    std::string const before = describedItems(items);
    for (PathOperation const& operation : pathOperations()) {
      SCOPED_TRACE(std::string(operation.name) + ", " + items.name);
      operation.run(items);  // what is built on first use stands from here on
      for (AllocationSweep sweep(0); sweep.next();) sweep.run([&] { operation.run(items); });
      ASSERT_EQ(describedItems(items), before);
    }
  }
}

TEST(PathAllocation, AReceiverIsAsBeforeWhereMemoryRanOut) {
  String const name(KVW("new.ext"));
  for (AllocationSweep sweep(3); sweep.next();) {
    SmartPtr<Directory> const directory = Directory::fromString(String(KVW("C:\\a\\b")));
    SmartPtr<Directory> const target = Directory::fromString(String(KVW("\\\\s\\t\\x")));
    SmartPtr<File> const file = File::fromString(String(KVW("C:\\a\\b.txt")));
    int done = 0;
    sweep.run([&] {
      directory->setName(name);
      ++done;
      *target = *directory;
      ++done;
      file->setName(name);
      ++done;
    });
    EXPECT_EQ(described(directory), done < 1 ? "abs C: [a][b]" : "abs C: [a][new.ext]");
    EXPECT_EQ(described(target), done < 2 ? "abs \\\\s\\t [x]" : described(directory));
    EXPECT_EQ(described(file), done < 3 ? "abs C: [a] | b | txt" : "abs C: [a] | new | ext");
  }
}

// How many blocks a path and its texts take, whatever the number of levels.
TEST(PathAllocation, APathIsAnObjectAndOneText) {
  struct Row {
    char const* name;
    int expected;
    std::function<void()> work;
  };
  String const text(KVW("C:\\a\\b\\c\\d\\..\\e\\f\\g\\h")), level(KVW("x"));
  SmartPtr<Directory const> const directory = directoryAt(text);
  SmartPtr<Directory> const changed = Directory::fromString(text);
  String const fileText(KVW("C:\\a\\b\\..\\c.txt")), dotted(KVW("c.txt"));
  SmartPtr<File const> const file = fileAt(fileText);
  SmartPtr<Directory const> const other = directoryAt(KVW("C:\\a\\x"));
  Row const rows[] = {
      {"fromString", 2, [&] { Directory::fromString(text); }},
      {"copy", 1, [&] { SmartPtr<Directory>(new Directory(*directory)); }},
      {"assignment", 0, [&] { *changed = *directory; }},
      {"setName", 1, [&] { changed->setName(level); }},
      {"getParent", 2, [&] { directory->getParent(); }},
      {"appendLevel", 2, [&] { directory->appendLevel(level); }},
      {"makeRelative", 2, [&] { directory->makeRelative(other); }},
      {"equals", 0, [&] { directory->equals(other); }},
      {"getFullName", 1, [&] { directory->getFullName(); }},
      {"getFullNameUnicode", 1, [&] { directory->getFullNameUnicode(); }},
      {"getFullNameUnix", 1, [&] { directory->getFullNameUnix(); }},
      {"getName", 1, [&] { directory->getName(); }},
      {"getRoot", 1, [&] { directory->getRoot(); }},
      {"File::fromString, a path", 5, [&] { File::fromString(fileText); }},
      {"File::fromString, a name with a dot", 3, [&] { File::fromString(*directory, dotted); }},
      {"File::fromString, a name without a dot", 1, [&] { File::fromString(*directory, level); }},
      {"File::getFullName", 1, [&] { file->getFullName(); }},
  };
  for (Row const& row : rows) {
    AllocationFailure counter(0);
    row.work();
    counter.end();
    EXPECT_EQ(counter.allocations(), row.expected) << row.name;
  }
}

// Each thread gets texts of its own, so each may ask for the narrow copies that a text caches.
TEST(PathConcurrency, EachThreadGetsTextsOfItsOwn) {
  SmartPtr<Directory const> const directory = directoryAt(KVW("C:\\a\\b"));
  std::vector<Texts> results(kThreads);
  onThreads([&](int thread) {
    for (int round = 0; round < 200; ++round) {
      results[static_cast<std::size_t>(thread)] = {directory->getFullName().stringUTF8(),
                                                   directory->getName().stringUTF8()};
    }
  });
  for (Texts const& result : results) EXPECT_EQ(result, Texts({"C:\\a\\b\\", "b"}));
}

TEST(PathConcurrency, OnePathServesSeveralThreads) {
  FrugalFiles files;
  platform::ScopedBackend<platform::FileApi> const scope(files);
  for (PathItems const& items : ordinaryItems()) {
    std::vector<Texts> results(kThreads);
    onThreads([&](int thread) {
      for (int round = 0; round < 50; ++round) {
        for (PathOperation const& operation : pathOperations()) {
          results[static_cast<std::size_t>(thread)].push_back(operation.run(items));
        }
      }
    });
    for (Texts const& result : results) EXPECT_EQ(result, results.front()) << items.name;
    EXPECT_EQ(items.directory->getRefCounter(), 1u);
    EXPECT_EQ(items.file->getRefCounter(), 1u);
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
