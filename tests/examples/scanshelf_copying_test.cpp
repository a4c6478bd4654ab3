// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <limits>
#include <map>
#include <sstream>
#include <string>

#include "examples/scanshelf/folder_tasks.cpp"
#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/file_api.h"
#include "tests/examples/scanshelf_folders.h"
#include "tests/examples/scanshelf_texts.h"
#include "tests/support/intercepted_files.h"
#include "tests/support/narrow_text.h"

namespace scanshelf {
namespace {

namespace platform = KV_1_1::platform;
using KV_1_1::testing::InterceptedFiles;
using KV_1_1::testing::narrow;
using KV_1_1::testing::TempFolder;
using ::testing::ElementsAre;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

// Real files, but copies of files with certain names fail or come out too long, and the progress within a file, which
// depends on the system, is scripted.
class FaultyCopies final : public InterceptedFiles {
 public:
  FaultyCopies() : InterceptedFiles(platform::nativeFiles()) {}

  std::map<std::string, ulong32> errors;  // by the end of the source's name
  std::string grows;                      // the end of a source's name whose copy gets one more byte

  std::vector<std::int64_t> reports;  // bytes of 100

  bool copyFile(wchar const* source, wchar const* target, platform::CopyProgress progress, void* data,
                ulong32 flags) override {
    for (auto const& [name, error] : errors) {
      if (!endsWith(source, name)) continue;
      platform::errors().setLastError(error);
      return false;
    }
    for (std::int64_t const report : reports) progress(100, report, data);
    bool const copied = InterceptedFiles::copyFile(source, target, reports.empty() ? progress : nullptr, data, flags);
    if (!grows.empty() && endsWith(source, grows)) grow(target);
    return copied;
  }

 protected:
  bool enter(char const*, wchar const*) override { return true; }

 private:
  static bool endsWith(wchar const* path, std::string const& name) { return String(path).endsWith(String(wide(name))); }
  static String wide(std::string const& text) { return String(KV_1_1::UTF8Interface(text.c_str())); }
  static void grow(wchar const* target) {
    SmartPtr<File const> const file = File::fromString(String(target).substr(4));
    std::ofstream(fs::u8path(file->getFullNameUnix().stringUTF8()), std::ios::app) << 'x';
  }
};

class ScanshelfCopying : public ScanshelfTest {
 protected:
  ScanshelfCopying() {
    source_.write("a.dat", std::string(100, 'a'));
    source_.write("empty.dat");
    source_.write(fs::u8path("\xC3\x84rzte/\xE5\xA1\x94/scan \xF0\x9F\x98\x80.dat"), "12345");
    source_.write("sub/notes.txt", "note");
    source_.makeFolder("sub/nothing/at all");
  }

  CopyResult copy(wchar const* pattern = KVW("*"), bool overwrite = false) {
    Survey const found = survey(directoryOf(source_), pattern, ignoreProgress);
    return copyItems(found, *directoryOf(target_, KVW("new")), overwrite,
                     [this](Totals const& done) { progress_.push_back(done); });
  }

  // The items of the copy: each path with slashes, and the contents of a file.
  std::map<std::string, std::string> copied() const {
    std::map<std::string, std::string> items;
    fs::path const root = target_.path("new");
    for (fs::directory_entry const& entry : fs::recursive_directory_iterator(root)) {
      std::ostringstream contents;
      if (entry.is_directory()) {
        contents << "(folder)";
      } else if (entry.file_size() > 0) {
        contents << std::ifstream(entry.path(), std::ios::binary).rdbuf();
      }
      items[entry.path().lexically_relative(root).generic_u8string()] = contents.str();
    }
    return items;
  }

  // The items that failed, each with its reason.
  static std::map<std::string, std::string> failures(CopyResult const& result) {
    std::map<std::string, std::string> texts;
    for (Failure const& failure : result.failures) {
      texts[failure.item->getFullNameUnix().stringUTF8()] = utf8(failure.reason);
    }
    return texts;
  }

  static std::string textOf(ulong32 code) { return utf8(getWindowsError(code).trim()); }

  TempFolder source_;
  TempFolder target_;
  std::vector<Totals> progress_;
};

TEST_F(ScanshelfCopying, CopiesAllFilesAndFolders) {
  CopyResult const result = copy();
  EXPECT_EQ(failures(result).size(), 0u);
  EXPECT_EQ(result.copied.files, 4u);
  EXPECT_EQ(result.copied.folders, 5u);
  EXPECT_EQ(result.copied.bytes, 109u);
  EXPECT_EQ(result.equalSizes, 4u);
  EXPECT_EQ(result.unattempted, 0u);
  EXPECT_THAT(copied(),
              UnorderedElementsAre(Pair("a.dat", std::string(100, 'a')), Pair("empty.dat", ""),
                                   Pair("\xC3\x84rzte", "(folder)"), Pair("\xC3\x84rzte/\xE5\xA1\x94", "(folder)"),
                                   Pair("\xC3\x84rzte/\xE5\xA1\x94/scan \xF0\x9F\x98\x80.dat", "12345"),
                                   Pair("sub", "(folder)"), Pair("sub/notes.txt", "note"),
                                   Pair("sub/nothing", "(folder)"), Pair("sub/nothing/at all", "(folder)")));
}

TEST_F(ScanshelfCopying, PatternChoosesFilesNotFolders) {
  CopyResult const result = copy(KVW("*.TXT"));
  EXPECT_EQ(result.copied.files, 1u);
  EXPECT_EQ(result.copied.folders, 5u);
  EXPECT_EQ(copied().size(), 6u);
  EXPECT_EQ(copied()["sub/notes.txt"], "note");
}

TEST_F(ScanshelfCopying, KeepsExistingFilesUnlessTheyMayBeOverwritten) {
  target_.write("new/a.dat", "old");
  target_.write("new/sub/more.txt", "more");
  CopyResult const kept = copy();
  EXPECT_THAT(failures(kept), ElementsAre(Pair("./a.dat", textOf(platform::kFileExists))));
  EXPECT_EQ(kept.copied.files, 3u);
  EXPECT_EQ(kept.copied.folders, 5u);
  EXPECT_EQ(kept.equalSizes, 3u);
  EXPECT_EQ(copied()["a.dat"], "old");

  CopyResult const replaced = copy(KVW("*"), /*overwrite=*/true);
  EXPECT_TRUE(replaced.failures.empty());
  EXPECT_EQ(replaced.copied.files, 4u);
  EXPECT_EQ(copied()["a.dat"], std::string(100, 'a'));
  EXPECT_EQ(copied()["sub/more.txt"], "more");
}

TEST_F(ScanshelfCopying, ReportsFailuresWithTheSystemsTextAndCopiesTheRest) {
  FaultyCopies files;
  files.errors = {{"a.dat", platform::kSharingViolation}, {"notes.txt", platform::kAccessDenied}};
  platform::ScopedBackend<platform::FileApi> const scope(files);
  CopyResult const result = copy();
  EXPECT_THAT(failures(result), ElementsAre(Pair("./a.dat", textOf(platform::kSharingViolation)),
                                            Pair("sub/notes.txt", textOf(platform::kAccessDenied))));
  EXPECT_EQ(result.copied.files, 2u);
  EXPECT_EQ(result.copied.bytes, 5u);
  EXPECT_EQ(result.equalSizes, 2u);
  EXPECT_EQ(result.unattempted, 0u);
  EXPECT_EQ(copied().count("a.dat"), 0u);
  // Progress counts failed copies too.
  EXPECT_EQ(progress_.back().files, 4u);
  EXPECT_EQ(progress_.back().bytes, 109u);
}

TEST_F(ScanshelfCopying, StopsWhenTheDiskIsFull) {
  FaultyCopies files;
  files.errors = {{".dat", platform::kDiskFull}};
  platform::ScopedBackend<platform::FileApi> const scope(files);
  CopyResult const result = copy(KVW("*.dat"));
  ASSERT_EQ(result.failures.size(), 1u);
  EXPECT_EQ(failures(result).begin()->second, textOf(platform::kDiskFull));
  EXPECT_EQ(result.copied.files, 0u);
  EXPECT_EQ(result.unattempted, 2u);
}

TEST_F(ScanshelfCopying, ReportsDifferentSizesAsAFailure) {
  FaultyCopies files;
  files.grows = "notes.txt";
  platform::ScopedBackend<platform::FileApi> const scope(files);
  CopyResult const result = copy();
  EXPECT_THAT(failures(result), ElementsAre(Pair("sub/notes.txt", "It was copied, but the sizes are not equal.")));
  EXPECT_EQ(result.copied.files, 4u);
  EXPECT_EQ(result.equalSizes, 3u);
}

TEST_F(ScanshelfCopying, FileInPlaceOfAFolderFailsWithTheContentsOfTheFolder) {
  target_.write("new/sub", "in the way");
  CopyResult const result = copy();
  std::map<std::string, std::string> const failed = failures(result);
  ASSERT_EQ(failed.size(), 4u);
  EXPECT_EQ(failed.at("sub/"), textOf(platform::kAlreadyExists));
  for (char const* item : {"sub/nothing/", "sub/nothing/at all/", "sub/notes.txt"}) {
    EXPECT_EQ(failed.count(item), 1u) << item;
  }
  EXPECT_EQ(result.copied.files, 3u);
  EXPECT_EQ(result.copied.folders, 2u);
  EXPECT_EQ(copied()["sub"], "in the way");
}

TEST_F(ScanshelfCopying, TargetThatCannotBeMadeIsAnError) {
  target_.write("new", "in the way");
  try {
    copy();
    ADD_FAILURE() << "copied";
  } catch (Error const& error) {
    EXPECT_EQ(error.what(), "The folder '" + narrow(target_.text(KVW("new\\"))) +
                                "' could not be made: " + textOf(platform::kAlreadyExists));
  }
}

TEST_F(ScanshelfCopying, ProgressNeverGoesBackAndEndsWithAll) {
  copy();
  ASSERT_FALSE(progress_.empty());
  EXPECT_TRUE(std::is_sorted(progress_.begin(), progress_.end(), [](Totals const& a, Totals const& b) {
    return a.files < b.files || (a.files == b.files && a.bytes < b.bytes);
  }));
  EXPECT_EQ(progress_.back().files, 4u);
  EXPECT_EQ(progress_.back().bytes, 109u);
}

TEST_F(ScanshelfCopying, ProgressMovesWithinAFile) {
  FaultyCopies files;
  files.reports = {0, 25, 100};
  platform::ScopedBackend<platform::FileApi> const scope(files);
  copy(KVW("a.dat"));
  std::vector<std::uint64_t> bytes;
  for (Totals const& done : progress_) {
    if (done.files == 0 && (bytes.empty() || done.bytes != bytes.back())) bytes.push_back(done.bytes);
  }
  EXPECT_THAT(bytes, ElementsAre(0, 25, 100));
}

TEST(ScanshelfFileProgress, IgnoresAPartThatIsNotANumber) {
  std::vector<std::uint64_t> bytes;
  Progress const note = [&bytes](Totals const& done) { bytes.push_back(done.bytes); };
  Totals const finished = {7, 0, 1000};
  FileProgress part(finished, 200, note);
  for (double fraction : {0.25, std::numeric_limits<double>::quiet_NaN(), 1.0}) part.setProgress(fraction);
  EXPECT_THAT(bytes, ElementsAre(1050, 1000, 1200));
}

TEST_F(ScanshelfCopying, IsWithinTheFolderItselfAndFoldersBelow) {
  source_.makeFolder("scans old");
  source_.makeFolder("scans/2024");
  struct {
    wchar const* folder;
    bool isWithin;
  } const rows[] = {
      {KVW("scans"), true},           {KVW("scans\\2024"), true}, {KVW("scans\\none\\none"), true},
      {KVW("scans\\2024\\.."), true}, {KVW("scans old"), false},  {KVW("scansnone"), false},
      {KVW("none\\scans"), false},    {KVW("scans\\.."), false},  {KVW(""), false},
  };
  for (auto const& row : rows) {
    EXPECT_EQ(isWithin(*directoryOf(source_, row.folder), *directoryOf(source_, KVW("scans"))), row.isWithin)
        << narrow(row.folder);
  }
}

}  // namespace
}  // namespace scanshelf
