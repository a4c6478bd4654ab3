// SPDX-License-Identifier: MIT
//
// File's remove, move, touch, read-only family and sizes on a scripted system: the order of the calls, and the results
// by their answers.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/filesystem/disk_support.h"
#include "tests/filesystem/scripted_system.h"

namespace KV_1_1 {
namespace testing {
namespace {

class FileOperations : public ScriptedSystem<ScriptedFiles> {
 protected:
  FileOperations() {
    errors.texts[5] = KVW("Denied.\r\n");
    errors.texts[183] = KVW("There already. \r\n");
    files.script.attributes[KVW(R"(\\?\C:\a\f.e)")] = platform::kAttributeNormal;
    files.script.attributes[KVW(R"(\\?\C:\a\d)")] = platform::kAttributeDirectory;
  }
  ~FileOperations() override { EXPECT_EQ(messages.take(), Texts()); }

  SmartPtr<File const> const file = fileAt(KVW(R"(C:\a\f.e)"));
  SmartPtr<File const> const missing = fileAt(KVW(R"(C:\a\missing)"));
  SmartPtr<File const> const folder = fileAt(KVW(R"(C:\a\d)"));  // a file by name, a directory on the disk
};

// The text of the system's error in a message.
struct ReasonRow {
  char const* name;
  ulong32 error;
  char const* reason;
};
constexpr ReasonRow kReasons[] = {
    {"a text", 5, "Denied."},
    {"a text that ends in a blank", 183, "There already. "},
    {"no text", 5000, "[0x00001388]"},
    {"a code beyond the sign", 0x80004005, "[0x80004005]"},
    {"no error", 0, ""},
};

// --- remove ----------------------------------------------------------------------------------------------------------

TEST_F(FileOperations, RemoveOfAMissingFileIsDone) {
  files.script.errors["deleteFile"] = 5;
  EXPECT_TRUE(missing->remove());
  EXPECT_EQ(files.log(), Log{R"(getAttributes \\?\C:\a\missing)"});
}

TEST_F(FileOperations, RemoveLeavesADirectoryOfThatName) {
  files.script.errors["deleteFile"] = 5;
  EXPECT_TRUE(folder->remove());
  EXPECT_EQ(files.log(), Log{R"(getAttributes \\?\C:\a\d)"});
}

TEST_F(FileOperations, RemoveThatFailsSaysWhy) {
  for (ReasonRow const& row : kReasons) {
    SCOPED_TRACE(row.name);
    files.script.errors["deleteFile"] = row.error;
    EXPECT_FALSE(file->remove());
    EXPECT_EQ(messages.take(),
              Texts{"Failed to delete file 'C:\\a\\f.e'.\r\nWindows error message: " + std::string(row.reason)});
  }
}

TEST_F(FileOperations, MessagesShowTheNameWithoutPrefix) {
  struct Row {
    char const* path;
    char const* prefixed;
    char const* shown;
  };
  Row const rows[] = {
      {R"(\\s\t\f)", R"(\\?\UNC\s\t\f)", R"(\\s\t\f)"},
      {R"(\f)", R"(\\?\\f)", R"(\f)"},
      {"f", R"(.\f)", R"(.\f)"},
      {"C:f", "C:f", "C:f"},
      {R"(C:\100%ls %s %n %)", R"(\\?\C:\100%ls %s %n %)", R"(C:\100%ls %s %n %)"},
  };
  files.script.errors = {{"deleteFile", 5}, {"moveFile", 5}};
  for (Row const& row : rows) {
    SCOPED_TRACE(row.path);
    files.script.attributes[widen(row.prefixed)] = platform::kAttributeNormal;
    SmartPtr<File const> const item = fileAt(widen(row.path).c_str());
    EXPECT_FALSE(item->remove());
    EXPECT_EQ(messages.take(), Texts{notDeleted(row.shown, "Denied.")});
    EXPECT_FALSE(item->move(file));
    EXPECT_EQ(messages.take(), Texts{notMoved(row.shown, R"(C:\a\f.e)", "Denied.")});
    EXPECT_FALSE(file->move(item));
    EXPECT_EQ(messages.take(), Texts{notMoved(R"(C:\a\f.e)", row.shown, "Denied.")});
  }
}

// --- move ------------------------------------------------------------------------------------------------------------

TEST_F(FileOperations, MoveIsOneCall) {
  EXPECT_TRUE(file->move(missing));
  EXPECT_TRUE(missing->move(file));  // whether anything is there is for the system to say
  EXPECT_EQ(files.log(),
            (Log{R"(moveFile \\?\C:\a\f.e -> \\?\C:\a\missing)", R"(moveFile \\?\C:\a\missing -> \\?\C:\a\f.e)"}));
}

TEST_F(FileOperations, MoveToNullIsRefusedWithoutAMessage) {
  EXPECT_FALSE(file->move(nullptr));
  EXPECT_FALSE(missing->move(SmartPtr<File const>()));
  EXPECT_EQ(files.log(), Log());
}

TEST_F(FileOperations, MoveThatFailsSaysWhy) {
  for (ReasonRow const& row : kReasons) {
    SCOPED_TRACE(row.name);
    files.script.errors["moveFile"] = row.error;
    EXPECT_FALSE(file->move(missing));
    EXPECT_EQ(messages.take(),
              Texts{R"(Failed to move file 'C:\a\f.e' to file 'C:\a\missing' because: )" + std::string(row.reason)});
  }
}

// --- touch -----------------------------------------------------------------------------------------------------------

class FileTouch : public FileOperations {
 protected:
  std::string const open = R"(openFile \\?\C:\a\f.e 40000000 3 4 80)";
  Log const flush = {R"(openDescriptor C:\a\f.e 2 40 180)", "commitDescriptor", "closeDescriptor"};

  // The calls with those of the flush behind them.
  Log flushed(Log calls) const {
    calls.insert(calls.end(), flush.begin(), flush.end());
    return calls;
  }
};

TEST_F(FileTouch, OfAnExistingFileSetsTheTime) {
  files.script.openLeaves = platform::kAlreadyExists;
  files.script.now = 0x01DA2B3C4D5E6F70;
  EXPECT_TRUE(file->touch());
  EXPECT_EQ(files.log(), flushed({open, "setLastWriteTime", "closeFile"}));
  EXPECT_EQ(files.script.lastWriteTimes, std::vector<std::uint64_t>{0x01DA2B3C4D5E6F70});
}

TEST_F(FileTouch, ATimeThatCannotBeSetFailsItAndItIsFlushedAllTheSame) {
  files.script.openLeaves = platform::kAlreadyExists;
  files.script.errors["setLastWriteTime"] = 5;
  EXPECT_FALSE(file->touch());
  EXPECT_EQ(files.log(), flushed({open, "setLastWriteTime", "closeFile"}));
}

TEST_F(FileTouch, OnlyTheOneLastErrorTellsAFileThatWasThere) {
  for (ulong32 const left : {0, 2, 5, 80, 182, 184, 0x100B7}) {
    SCOPED_TRACE(left);
    files.script.openLeaves = left;
    files.clearLog();
    EXPECT_TRUE(file->touch());
    EXPECT_EQ(files.log(), flushed({open, "closeFile"}));
  }
}

TEST_F(FileTouch, WhatCannotBeOpenedFailsAndNothingFollows) {
  for (ulong32 const error : {5, 3, 183}) {
    files.script.errors["openFile"] = error;
    files.clearLog();
    EXPECT_FALSE(file->touch());
    EXPECT_EQ(files.log(), Log{open});
  }
}

TEST_F(FileTouch, ANewFileIsMadeWhateverBecomesOfTheFlush) {
  files.script.errors["openDescriptor"] = 5;
  EXPECT_TRUE(file->touch());
  // Without a descriptor there is nothing to flush; a wrong one would end the process.
  EXPECT_EQ(files.log().size(), 3u);
  EXPECT_EQ(files.log()[2], flush[0]);
}

TEST_F(FileTouch, OfARelativeFileGivesOneNameTwice) {
  EXPECT_TRUE(fileAt(KVW("f"))->touch());
  EXPECT_EQ(files.log()[0], R"(openFile .\f 40000000 3 4 80)");
  EXPECT_EQ(files.log()[2], R"(openDescriptor .\f 2 40 180)");
}

// --- The read-only family --------------------------------------------------------------------------------------------

TEST_F(FileOperations, ReadOnlyFamilyByTheAttributes) {
  struct Row {
    char const* name;
    ulong32 attributes;
    bool isReadOnly;
    char const* toSet;  // the attributes that are set; empty: none are
    char const* toUnset;
  };
  Row const rows[] = {
      {"normal", 0x80, false, "81", ""},
      {"no bit", 0, false, "1", ""},
      {"archive and hidden", 0x22, false, "23", ""},
      {"directory", 0x10, false, "11", ""},
      {"every other bit", 0xFFFFFFFE, false, "ffffffff", ""},
      {"read-only", 0x81, true, "", "80"},
      {"read-only alone", 0x1, true, "", "0"},
      {"read-only and more", 0x27, true, "", "26"},
      {"read-only directory", 0x11, true, "", "10"},
  };
  std::string const ask = R"(getAttributes C:\a\f.e)", set = R"(setAttributes C:\a\f.e )";
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    files.script.attributes[KVW(R"(C:\a\f.e)")] = row.attributes;
    files.clearLog();
    EXPECT_EQ(file->isReadOnly(), row.isReadOnly);
    EXPECT_EQ(files.log(), Log{ask});
    for (ulong32 const error : {0, 5}) {
      files.script.errors.clear();
      if (error != 0) files.script.errors["setAttributes"] = error;
      Log const setCalls = *row.toSet == 0 ? Log{ask} : Log{ask, set + row.toSet};
      Log const unsetCalls = *row.toUnset == 0 ? Log{ask} : Log{ask, set + row.toUnset};
      files.clearLog();
      EXPECT_EQ(file->setAsReadOnly(), 0);
      EXPECT_EQ(files.log(), setCalls);
      files.clearLog();
      EXPECT_EQ(file->setReadOnly(true), 0);
      EXPECT_EQ(files.log(), setCalls);
      files.clearLog();
      EXPECT_EQ(file->unsetAsReadOnly(), 0);
      EXPECT_EQ(files.log(), unsetCalls);
      files.clearLog();
      EXPECT_EQ(file->setReadOnly(false), 0);
      EXPECT_EQ(files.log(), unsetCalls);
    }
  }
}

// --- Sizes -----------------------------------------------------------------------------------------------------------

TEST_F(FileOperations, HasEqualSizeComparesBothHalves) {
  struct Row {
    char const* name;
    std::uint64_t size;
    std::uint64_t other;
    bool isEqual;
  };
  Row const rows[] = {
      {"empty files", 0, 0, true},
      {"equal", 42, 42, true},
      {"low halves differ", 42, 43, false},
      {"high halves differ", 0x100000005, 0x200000005, false},
      {"high half alone", 0x100000000, 0, false},
      {"halves exchanged", 0x100000002, 0x200000001, false},
      {"beyond 4 GB and equal", 0x123456789A, 0x123456789A, true},
      {"all bits", 0xFFFFFFFFFFFFFFFF, 0xFFFFFFFFFFFFFFFF, true},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    files.script.infos[KVW(R"(\\?\C:\a\f.e)")] = {platform::kAttributeNormal, row.size};
    files.script.infos[KVW(R"(\\?\C:\a\missing)")] = {platform::kAttributeNormal, row.other};
    EXPECT_EQ(file->hasEqualSize(missing), row.isEqual);
    EXPECT_EQ(missing->hasEqualSize(file), row.isEqual);
    ULARGE_INTEGER size;
    EXPECT_TRUE(file->getFileSize(size));
    EXPECT_EQ(size.u.LowPart, static_cast<ulong32>(row.size));
    EXPECT_EQ(size.u.HighPart, row.size >> 32);
  }
}

TEST_F(FileOperations, HasEqualSizeWithItselfAsksNobody) {
  EXPECT_TRUE(file->hasEqualSize(file));
  EXPECT_TRUE(missing->hasEqualSize(missing));
  SmartPtr<File const> const sameObject = missing;
  EXPECT_TRUE(missing->hasEqualSize(sameObject));
  EXPECT_EQ(files.log(), Log());
}

TEST_F(FileOperations, HasEqualSizeOfTwoObjectsForOneMissingFileIsFalse) {
  EXPECT_FALSE(missing->hasEqualSize(fileAt(KVW(R"(C:\a\missing)"))));
  EXPECT_FALSE(missing->hasEqualSize(SmartPtr<File const>(new File(*missing))));
}

// --- Names that setName lets in --------------------------------------------------------------------------------------

TEST_F(FileOperations, NamesThatWereNotCheckedGoAsTheyAre) {
  struct Row {
    char const* name;
    String fileName;
    char const* path;  // behind C:\a and its separator
  };
  Row const rows[] = {
      {"NIL", String::NIL, ""},
      {"EMPTY", String::EMPTY, ""},
      {"way out", String(KVW(R"(..\x)")), R"(..\x)"},
      {"slash", String(KVW("x/y")), "x/y"},
      {"wildcard", String(KVW("*")), "*"},
      {"dot at the end is dropped", String(KVW("x.")), "x"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    SmartPtr<File> const item = File::fromString(String(KVW(R"(C:\a\f.e)")));
    item->setName(row.fileName);
    std::string const prefixed = R"(\\?\C:\a\)" + std::string(row.path), plain = R"(C:\a\)" + std::string(row.path);
    files.clearLog();
    EXPECT_TRUE(item->remove());
    EXPECT_TRUE(item->isReadOnly());
    EXPECT_EQ(item->setReadOnly(true), 168);
    EXPECT_TRUE(item->move(item));
    EXPECT_EQ(files.log(), (Log{"getAttributes " + prefixed, "getAttributes " + plain, "getAttributes " + plain,
                                "moveFile " + prefixed + " -> " + prefixed}));
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
