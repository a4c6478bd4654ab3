// SPDX-License-Identifier: MIT
//
// The operations of File on the real disk, as they are on every system. (Copying: file_copy_test.cpp.)
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>

#include "kvbase/diagnostics/windows_error.h"
#include "tests/filesystem/disk_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

class FileOnDisk : public OnDisk {
 protected:
  FileOnDisk() {
    folder.write("one", "1");
    folder.write("two", "22");
    folder.write("sub/inner", "inner");
  }
  ~FileOnDisk() override { EXPECT_EQ(messages.take(), Texts()); }

  static std::string reason(ulong32 code) { return shown(getWindowsError(code)); }
  static std::uint64_t lastWriteTime(SmartPtr<File const> const& file) {
    FILETIME time = {};
    EXPECT_TRUE(file->getLastWriteTime(&time));
    return (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
  }
};

TEST_F(FileOnDisk, RemoveOfWhatIsNoFileIsDoneAndChangesNothing) {
  Tree const before = tree();
  for (wchar const* below : {KVW("missing"), KVW("sub"), KVW("missing\\x"), KVW("one\\x")}) {
    SCOPED_TRACE(narrow(below));
    EXPECT_TRUE(file(below)->remove());
    EXPECT_EQ(tree(), before);
  }
}

TEST_F(FileOnDisk, RemoveRefusesAReadOnlyFile) {
  Tree const before = tree();
  auto const one = file(KVW("one"));
  EXPECT_EQ(one->setAsReadOnly(), File::ReadOnlyOk);
  EXPECT_FALSE(one->remove());
  EXPECT_EQ(messages.take(), Texts{notDeleted(name(KVW("one")), reason(5))});
  EXPECT_EQ(tree(), before);
  EXPECT_TRUE(one->isReadOnly());
  EXPECT_EQ(one->unsetAsReadOnly(), File::ReadOnlyOk);
  EXPECT_TRUE(one->remove());
  EXPECT_FALSE(one->exists());
}

TEST_F(FileOnDisk, MoveRenamesAndMoves) {
  Tree expected = tree();
  EXPECT_TRUE(file(KVW("one"))->move(file(KVW("three"))));
  expected["three"] = "1";
  expected.erase("one");
  EXPECT_EQ(tree(), expected);
  EXPECT_TRUE(file(KVW("three"))->move(file(KVW("sub\\three"))));
  expected["sub/three"] = "1";
  expected.erase("three");
  EXPECT_EQ(tree(), expected);
  EXPECT_TRUE(file(KVW("sub"))->move(file(KVW("sub2"))));  // a directory as well, as it is the system's to say
  EXPECT_EQ(tree(), (Tree{{"sub2/", ""}, {"sub2/inner", "inner"}, {"sub2/three", "1"}, {"two", "22"}}));
}

TEST_F(FileOnDisk, MoveThatFailsChangesNothing) {
  struct Row {
    char const* name;
    wchar const* from;
    wchar const* to;
    ulong32 error;
  };
  Row const rows[] = {
      {"onto an existing file", KVW("one"), KVW("two"), 183},
      {"onto a folder", KVW("one"), KVW("sub"), 183},
      {"missing source", KVW("missing"), KVW("three"), 2},
      {"missing folder of the target", KVW("one"), KVW("none\\one"), 3},
  };
  Tree const before = tree();
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_FALSE(file(row.from)->move(file(row.to)));
    EXPECT_EQ(messages.take(), Texts{notMoved(name(row.from), name(row.to), reason(row.error))});
    EXPECT_EQ(tree(), before);
  }
}

TEST_F(FileOnDisk, MoveOntoItselfLeavesItWhole) {
  Tree const before = tree();
  EXPECT_TRUE(file(KVW("one"))->move(file(KVW("one"))));
  EXPECT_EQ(tree(), before);
}

TEST_F(FileOnDisk, MoveKeepsTheTimeAndTheReadOnlyBit) {
  auto const one = file(KVW("one")), three = file(KVW("three"));
  std::uint64_t const time = lastWriteTime(one);
  EXPECT_EQ(one->setAsReadOnly(), File::ReadOnlyOk);
  EXPECT_TRUE(one->move(three));
  EXPECT_EQ(lastWriteTime(three), time);
  EXPECT_TRUE(three->isReadOnly());
}

TEST_F(FileOnDisk, TouchMakesAnEmptyFile) {
  Tree expected = tree();
  expected["new"] = "";
  EXPECT_TRUE(file(KVW("new"))->touch());
  EXPECT_EQ(tree(), expected);
  EXPECT_FALSE(file(KVW("new"))->isReadOnly());
}

TEST_F(FileOnDisk, TouchOfAnExistingFileSetsTheTimeAndKeepsTheContents) {
  namespace fs = std::filesystem;
  Tree const before = tree();
  auto const one = file(KVW("one"));
  fs::last_write_time(folder.path("one"), fs::last_write_time(folder.path("one")) - std::chrono::hours(1000));
  std::uint64_t const old = lastWriteTime(one), from = platform::files().systemTime();
  ASSERT_LT(old, from);
  EXPECT_TRUE(one->touch());
  std::uint64_t const to = platform::files().systemTime();
  EXPECT_GE(lastWriteTime(one), from);
  EXPECT_LE(lastWriteTime(one), to);
  EXPECT_EQ(tree(), before);
}

// Bytes that mean something in a text for some runtimes: the end of a line, and the end of the text.
TEST_F(FileOnDisk, TouchKeepsEveryByte) {
  folder.write("bytes", "a\r\nb\n\x1A");
  Tree const before = tree();
  EXPECT_TRUE(file(KVW("bytes"))->touch());
  EXPECT_EQ(tree(), before);
}

TEST_F(FileOnDisk, TouchFailsWithoutAFolderAndForAFolder) {
  Tree const before = tree();
  EXPECT_FALSE(file(KVW("none\\new"))->touch());
  EXPECT_FALSE(file(KVW("one\\new"))->touch());
  EXPECT_FALSE(file(KVW("sub"))->touch());
  EXPECT_EQ(tree(), before);
}

TEST_F(FileOnDisk, ReadOnlyIsSetAndTakenBack) {
  Tree const before = tree();
  auto const one = file(KVW("one"));
  EXPECT_FALSE(one->isReadOnly());
  EXPECT_EQ(one->unsetAsReadOnly(), 0);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(one->setReadOnly(true), 0);
    EXPECT_TRUE(one->isReadOnly());
    EXPECT_EQ(one->setAsReadOnly(), 0);
    EXPECT_TRUE(one->isReadOnly());
    EXPECT_EQ(one->setReadOnly(false), 0);
    EXPECT_FALSE(one->isReadOnly());
  }
  EXPECT_FALSE(file(KVW("two"))->isReadOnly());
  EXPECT_EQ(tree(), before);
}

TEST_F(FileOnDisk, NamesOfEveryKind) {
  struct Row {
    char const* name;
    wchar const* below;
  };
  Row const rows[] = {
      {"Latin", KVW("Gr\u00f6\u00dfe.t\u00e4xt")},
      {"Cyrillic and Japanese", KVW("\u0444\u0430\u0439\u043b \u65e5\u672c\u8a9e.txt")},
      {"a pair of surrogates", KVW("scan \U0001F4C4.bin")},
      {"combining marks", KVW("e\u0301a\u0308")},
      {"blanks inside and before", KVW(" a b")},
      {"hidden", KVW(".hidden")},
      {"many dots", KVW("a..b...c")},
      {"what shells read", KVW("$(x) `y` 'z' ;&#~!%PATH%^")},
      {"below folders of such names", KVW("\u65e5 \U0001F4C1\\b c\\x.y")},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    useFile(file(row.below), file(row.below + wstring(KVW(" copy"))));
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
