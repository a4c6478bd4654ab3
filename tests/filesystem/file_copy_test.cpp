// SPDX-License-Identifier: MIT
//
// The three forms of File::copy: their calls, results and progress.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kvbase/filesystem/internal/copy_progress.h"
#include "tests/filesystem/disk_support.h"
#include "tests/support/scripted_errors.h"
#include "tests/support/skip.h"

namespace KV_1_1 {
namespace testing {
namespace {

// An application's progress that is not the first base of its object.
class Window {
 public:
  virtual ~Window() = default;
  std::string title;
};
class ProgressWindow final : public Window, public RecordedProgress {};

// Keeps the arguments of copyFile.
class KeptCopy final : public FileScript {
 public:
  platform::CopyProgress routine = nullptr;
  void* data = nullptr;
  ulong32 flags = 0;

  bool copyFile(wchar const* source, wchar const* target, platform::CopyProgress progress, void* progressData,
                ulong32 copyFlags) override {
    routine = progress;
    data = progressData;
    flags = copyFlags;
    return FileScript::copyFile(source, target, progress, progressData, copyFlags);
  }
};

class FileCopy : public ::testing::Test {
 protected:
  ~FileCopy() override {
    EXPECT_EQ(files.openInAll(), 0);
    EXPECT_EQ(messages.take(), Texts());  // no form of copy has a message
    EXPECT_EQ(errors.asked, std::vector<ulong32>());
  }

  SmartPtr<File const> const source = fileAt(KVW(R"(C:\a\x.e)"));
  SmartPtr<File const> const target = fileAt(KVW(R"(D:\b\y)"));
  SmartPtr<Directory const> const folder = directoryAt(KVW(R"(D:\b)"));
  ScriptedErrors errors;
  platform::ScopedBackend<platform::ErrorApi> errorsScope{errors};
  KeptCopy script;
  RecordingFiles files{script};
  platform::ScopedBackend<platform::FileApi> filesScope{files};
  CollectedMessages messages;
};

TEST_F(FileCopy, OneCallWithTheFlagOfOverwrite) {
  EXPECT_EQ(source->copy(target, false), 0);
  EXPECT_EQ(source->copy(target, true), 0);
  EXPECT_EQ(source->copy(target, false, nullptr), 0);
  EXPECT_EQ(source->copy(target, true, nullptr), 0);
  EXPECT_EQ(source->copy(target, false, std::make_shared<RecordedProgress>()), 0);
  EXPECT_EQ(source->copy(target, true, std::make_shared<RecordedProgress>()), 0);
  std::string const call = R"(copyFile \\?\C:\a\x.e -> \\?\D:\b\y)";
  EXPECT_EQ(files.log(),
            (Log{call + " 1", call + " 0", call + " 1", call + " 0", call + " 1 progress", call + " 0 progress"}));
}

TEST_F(FileCopy, ResultByTheLastError) {
  struct Row {
    char const* name;
    ulong32 error;
    int result;
  };
  Row const rows[] = {
      {"disk full", 112, 221},      {"no source", 2, 18},
      {"no folder", 3, 18},         {"denied", 5, 18},
      {"the file itself", 32, 18},  {"target exists", 80, 18},
      {"handle disk full", 39, 18}, {"aborted", 1235, 18},
      {"no error at all", 0, 18},   {"below disk full", 111, 18},
      {"above disk full", 113, 18}, {"low bits of disk full", 0x10070, 18},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    script.errors["copyFile"] = row.error;
    errors.error = 112 - row.error;  // an earlier error does not count
    EXPECT_EQ(source->copy(target, true), row.result);
    EXPECT_EQ(source->copy(target, false), row.result);
    EXPECT_EQ(source->copy(target, true, std::make_shared<RecordedProgress>()), row.result);
    EXPECT_EQ(source->copy(folder, true), nullptr);
  }
}

TEST_F(FileCopy, ASuccessDoesNotAskForTheLastError) {
  errors.error = platform::kDiskFull;
  EXPECT_EQ(source->copy(target, true), 0);
  EXPECT_NE(source->copy(folder, true), nullptr);
}

TEST_F(FileCopy, WithoutProgressNoRoutineAndNoData) {
  script.data = &script;
  EXPECT_EQ(source->copy(target, true), 0);
  EXPECT_EQ(script.routine, nullptr);
  EXPECT_EQ(script.data, nullptr);
  script.data = &script;
  EXPECT_EQ(source->copy(target, true, std::shared_ptr<IProgress>()), 0);
  EXPECT_EQ(script.routine, nullptr);
  EXPECT_EQ(script.data, nullptr);
  script.data = &script;
  EXPECT_NE(source->copy(folder, true), nullptr);
  EXPECT_EQ(script.routine, nullptr);
  EXPECT_EQ(script.data, nullptr);
}

// A shared pointer may own an object and point at nothing, or point at an object that it does not own.
TEST_F(FileCopy, ProgressIsWhatIsPointedAtNotWhatIsOwned) {
  auto const owner = std::make_shared<RecordedProgress>();
  EXPECT_EQ(source->copy(target, true, std::shared_ptr<IProgress>(owner, nullptr)), 0);
  EXPECT_EQ(script.routine, nullptr);
  EXPECT_EQ(script.data, nullptr);
  EXPECT_EQ(source->copy(target, true, std::shared_ptr<IProgress>(std::shared_ptr<void>(), owner.get())), 0);
  EXPECT_EQ(script.data, static_cast<IProgress*>(owner.get()));
}

TEST_F(FileCopy, ProgressGoesAsTheRoutineAndThePointerToIt) {
  auto const progress = std::make_shared<ProgressWindow>();
  EXPECT_EQ(source->copy(target, true, progress), 0);
  EXPECT_EQ(script.routine, &copyProgressRoutine);
  EXPECT_EQ(script.data, static_cast<IProgress*>(progress.get()));
  EXPECT_NE(script.data, static_cast<void*>(progress.get()));
  EXPECT_EQ(script.flags, 0u);
}

TEST_F(FileCopy, ProgressIsToldEachPart) {
  script.copySteps = {{8, 0}, {8, 2}, {8, 6}, {8, 8}};
  auto const progress = std::make_shared<ProgressWindow>();
  EXPECT_EQ(source->copy(target, true, progress), 0);
  EXPECT_EQ(progress->values, (std::vector<double>{0, 0.25, 0.75, 1}));
  EXPECT_EQ(script.copyAnswers, std::vector<ulong32>(4, platform::kProgressContinue));
}

TEST_F(FileCopy, ProgressOfAnEmptyFileIsNotANumber) {
  script.copySteps = {{0, 0}};
  auto const progress = std::make_shared<RecordedProgress>();
  EXPECT_EQ(source->copy(target, true, progress), 0);
  ASSERT_EQ(progress->values.size(), 1u);
  EXPECT_TRUE(std::isnan(progress->values[0]));
  EXPECT_EQ(script.copyAnswers, std::vector<ulong32>{0});
}

TEST_F(FileCopy, ProgressOfACopyThatFailsIsToldWhatWasDone) {
  script.copySteps = {{4, 1}};
  script.errors["copyFile"] = platform::kDiskFull;
  auto const progress = std::make_shared<RecordedProgress>();
  EXPECT_EQ(source->copy(target, true, progress), 221);
  EXPECT_EQ(progress->values, std::vector<double>{0.25});
}

TEST_F(FileCopy, NoHoldOfTheProgressIsKept) {
  auto progress = std::make_shared<RecordedProgress>();
  std::weak_ptr<RecordedProgress> const watch = progress;
  EXPECT_EQ(source->copy(target, true, progress), 0);
  EXPECT_EQ(progress.use_count(), 1);
  script.errors["copyFile"] = platform::kAccessDenied;
  EXPECT_EQ(source->copy(target, true, progress), 18);
  EXPECT_EQ(progress.use_count(), 1);
  EXPECT_EQ(source->copy(target, true, std::move(progress)), 18);
  EXPECT_TRUE(watch.expired());
}

TEST(CopyProgressRoutine, PassesTheQuotientOnAndGoesOn) {
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
  struct Row {
    char const* name;
    std::int64_t total;
    std::int64_t transferred;
    double value;
  };
  Row const rows[] = {
      {"nothing yet", 10, 0, 0.0},
      {"a part", 8, 3, 0.375},
      {"all", 10, 10, 1.0},
      {"one byte", 1, 1, 1.0},
      {"a part without end", 3, 1, 1.0 / 3.0},
      {"beyond 32 bits", std::int64_t{1} << 40, std::int64_t{1} << 39, 0.5},
      {"more than a file has", kMost, kMost, 1.0},
      {"beyond the exact numbers", kMost, kMost - 1, 1.0},
      {"a file that grew", 2, 3, 1.5},
      {"a negative total", -4, 1, -0.25},
      {"something of nothing", 0, 5, std::numeric_limits<double>::infinity()},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    RecordedProgress progress;
    EXPECT_EQ(copyProgressRoutine(row.total, row.transferred, static_cast<IProgress*>(&progress)), 0u);
    EXPECT_EQ(progress.values, std::vector<double>{row.value});
  }
  RecordedProgress progress;
  EXPECT_EQ(copyProgressRoutine(0, 0, static_cast<IProgress*>(&progress)), 0u);
  ASSERT_EQ(progress.values.size(), 1u);
  EXPECT_TRUE(std::isnan(progress.values[0]));
}

TEST_F(FileCopy, IntoADirectoryUnderItsName) {
  struct Row {
    char const* source;
    char const* directory;
    char const* copy;
    char const* prefixed;
  };
  Row const rows[] = {
      {R"(C:\a\x.e)", R"(D:\b)", R"(D:\b\x.e)", R"(\\?\D:\b\x.e)"},
      {R"(C:\a\x)", R"(\\s\t)", R"(\\s\t\x)", R"(\\?\UNC\s\t\x)"},
      {R"(C:\a\.x)", R"(b\..\c)", R"(b\..\c\.x)", R"(b\..\c\.x)"},
      {R"(C:\a\x.y.z)", "", R"(.\x.y.z)", R"(.\x.y.z)"},
      {R"(C:\a\x.e)", R"(C:\a)", R"(C:\a\x.e)", R"(\\?\C:\a\x.e)"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.copy);
    SmartPtr<Directory const> const directory = directoryAt(widen(row.directory).c_str());
    SmartPtr<File const> const file = fileAt(widen(row.source).c_str());
    for (bool const overwrite : {false, true}) {
      files.clearLog();
      SmartPtr<File const> const copy = file->copy(directory, overwrite);
      EXPECT_EQ(fullName(copy), row.copy);
      std::string const from = narrow(wstring(file->getFullNameUnicode()));
      EXPECT_EQ(files.log(), Log{"copyFile " + from + " -> " + row.prefixed + (overwrite ? " 0" : " 1")});
    }
  }
}

TEST_F(FileCopy, IntoADirectoryUnderANameThatIsNoneDoesNothing) {
  struct Row {
    char const* name;
    String fileName;
  };
  Row const rows[] = {
      {"NIL", String::NIL},
      {"EMPTY", String::EMPTY},
      {"current directory", String(KVW("."))},
      {"parent", String(KVW(".."))},
      {"way out", String(KVW("..\\x"))},
      {"slash", String(KVW("a/b"))},
      {"wildcard", String(KVW("a*b.c"))},
      {"stream", String(KVW("a.b:c"))},
      {"control unit", String(KVW("a\x1F"
                                  "b"))},
      {"blank at the end", String(KVW("a.b "))},
      {"dot at the end of the base name", String(KVW("a.."))},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    SmartPtr<File> const file = File::fromString(String(KVW(R"(C:\a\x)")));
    file->setName(row.fileName);
    EXPECT_EQ(file->copy(folder, true), nullptr);
  }
  EXPECT_EQ(files.log(), Log());
}

class FileCopyOnDisk : public OnDisk {
 protected:
  FileCopyOnDisk() {
    folder.write("five", "12345");
    folder.write("long", std::string(3000, 'l'));
    folder.write("empty");
    folder.makeFolder("sub");
  }
  ~FileCopyOnDisk() override { EXPECT_EQ(messages.take(), Texts()); }
};

TEST_F(FileCopyOnDisk, MakesAFileOfTheSameContentsSizeAndTime) {
  Tree expected = tree();
  expected["new"] = "12345";
  auto const path = folder.path("five");
  std::filesystem::last_write_time(path, std::filesystem::last_write_time(path) - std::chrono::hours(1000));
  EXPECT_EQ(file(KVW("five"))->copy(file(KVW("new")), false), File::CopyOk);
  EXPECT_EQ(tree(), expected);
  EXPECT_TRUE(file(KVW("new"))->hasEqualSize(file(KVW("five"))));
  FILETIME time, copied;
  ASSERT_TRUE(file(KVW("five"))->getLastWriteTime(&time));
  ASSERT_TRUE(file(KVW("new"))->getLastWriteTime(&copied));
  EXPECT_EQ(copied.dwHighDateTime, time.dwHighDateTime);
  EXPECT_EQ(copied.dwLowDateTime, time.dwLowDateTime);
}

TEST_F(FileCopyOnDisk, OntoAnExistingFile) {
  Tree const before = tree();
  EXPECT_EQ(file(KVW("five"))->copy(file(KVW("long")), false), File::CopyFailed);
  EXPECT_EQ(tree(), before);
  EXPECT_EQ(file(KVW("five"))->copy(file(KVW("long")), true), File::CopyOk);
  Tree expected = before;
  expected["long"] = "12345";
  EXPECT_EQ(tree(), expected);
  EXPECT_EQ(file(KVW("empty"))->copy(file(KVW("long")), true), File::CopyOk);
  expected["long"] = "";
  EXPECT_EQ(tree(), expected);
}

TEST_F(FileCopyOnDisk, WhatCannotBeCopiedChangesNothing) {
  struct Row {
    char const* name;
    wchar const* source;
    wchar const* target;
  };
  Row const rows[] = {
      {"missing source", KVW("missing"), KVW("new")},
      {"missing source onto a file", KVW("missing"), KVW("five")},
      {"missing folder", KVW("five"), KVW("none\\new")},
      {"below a file", KVW("five"), KVW("long\\new")},
      {"a folder", KVW("sub"), KVW("new")},
      {"onto a folder", KVW("five"), KVW("sub")},
      {"onto itself", KVW("five"), KVW("five")},
  };
  Tree const before = tree();
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    for (bool const overwrite : {false, true}) {
      EXPECT_EQ(file(row.source)->copy(file(row.target), overwrite), File::CopyFailed) << overwrite;
      EXPECT_EQ(file(row.source)->copy(file(row.target), overwrite, std::make_shared<RecordedProgress>()),
                File::CopyFailed);
      EXPECT_EQ(tree(), before);
    }
  }
}

TEST_F(FileCopyOnDisk, IntoADirectory) {
  SmartPtr<Directory const> const sub = directory(KVW("sub"));
  SmartPtr<File const> const copy = file(KVW("five"))->copy(sub, false);
  EXPECT_EQ(fullName(copy), narrow(folder.text(KVW("sub\\five"))));
  EXPECT_TRUE(copy->exists());
  EXPECT_EQ(bytesOf(folder.path("sub/five")), "12345");
  EXPECT_EQ(file(KVW("five"))->copy(sub, false), nullptr);
  EXPECT_NE(file(KVW("five"))->copy(sub, true), nullptr);
  EXPECT_EQ(copy->copy(sub, true), nullptr);  // onto itself
  EXPECT_EQ(bytesOf(folder.path("sub/five")), "12345");
  EXPECT_EQ(file(KVW("five"))->copy(directory(KVW("missing")), true), nullptr);
  EXPECT_EQ(file(KVW("missing"))->copy(sub, true), nullptr);
  EXPECT_EQ(file(KVW("sub"))->copy(sub, true), nullptr);
  EXPECT_FALSE(std::filesystem::exists(folder.path("missing")));
}

TEST_F(FileCopyOnDisk, TheReadOnlyBitGoesAlong) {
  EXPECT_EQ(file(KVW("five"))->setAsReadOnly(), File::ReadOnlyOk);
  EXPECT_EQ(file(KVW("five"))->copy(file(KVW("new")), false), File::CopyOk);
  EXPECT_TRUE(file(KVW("new"))->isReadOnly());
  EXPECT_EQ(bytesOf(folder.path("new")), "12345");
  EXPECT_EQ(file(KVW("long"))->copy(file(KVW("other")), false), File::CopyOk);
  EXPECT_FALSE(file(KVW("other"))->isReadOnly());
}

// A device that is always full, by its path on Linux or by the drive on which Wine shows that path.
TEST_F(FileCopyOnDisk, AFullDiskHasACodeOfItsOwn) {
  bool const isOnDrive = directoryAt(KVW(R"(Z:\dev)"))->exists();
  SmartPtr<File const> const full = fileAt(isOnDrive ? KVW(R"(Z:\dev\full)") : KVW(R"(\dev\full)"));
  KVBASE_SKIP_UNLESS(isOnDrive || full->exists(), "a device that is always full; Windows itself has none");
  EXPECT_EQ(file(KVW("five"))->copy(full, true), File::CopyDiskFull);
  EXPECT_EQ(file(KVW("five"))->copy(full, false), File::CopyFailed);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
