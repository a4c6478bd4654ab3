// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>

#include "kvbase/platform/backend.h"
#include "tests/examples/scanshelf_folders.h"
#include "tests/examples/scanshelf_texts.h"
#include "tests/support/failing_files.h"
#include "tests/support/narrow_text.h"
#include "tests/support/scripted_debug.h"

// The program is linked into the suite under another name.
#define main scanshelfMain
#include "examples/scanshelf/main.cpp"
#include "examples/scanshelf/report.cpp"
#include "examples/scanshelf/resource_report.cpp"
#undef main

namespace scanshelf {
namespace {

class ScanshelfRun : public ScanshelfTest {};
class ScanshelfSample : public ScanshelfTest {};
class ScanshelfSummary : public ScanshelfTest {};

namespace platform = KV_1_1::platform;
using KV_1_1::testing::narrow;
using KV_1_1::testing::TempFolder;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

struct Outcome {
  int status;
  std::string out;
  std::string err;
};

Outcome outcomeOf(std::vector<wstring> const& words) {
  std::vector<String> strings;
  for (wstring const& word : words) strings.emplace_back(word.c_str());
  std::ostringstream out;
  std::ostringstream err;
  int const status = run(strings, out, err, /*isErrTerminal=*/false);
  return {status, out.str(), err.str()};
}

TEST_F(ScanshelfRun, ReportTellsNamesCountsAndFiles) {
  TempFolder folder;
  folder.write("a.dat", std::string(2048, 'x'));
  folder.write("sub/b.DAT", "12345");
  folder.write("sub/deep/c.txt", "1");
  Outcome const outcome = outcomeOf({folder.text()});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  std::string const name = narrow(folder.text());
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("  Folder     " + name + "\\\n"),
                                 HasSubstr("  Unix name  " + folder.path().generic_string() + "/\n"),
                                 HasSubstr("  Long path  \\\\?\\" + name + "\\\n"),
                                 HasSubstr("  Name       " + folder.path().filename().string() + "\n")));
  EXPECT_THAT(outcome.out, HasSubstr("  Extension  Files    Size\n"
                                     "  .dat           2  2.0 KB\n"
                                     "  .txt           1     1 B\n"));
  EXPECT_THAT(outcome.out, HasSubstr("  Folder            Files  Folders    Size\n"
                                     "  sub                   2        1     6 B\n"
                                     "  (directly in it)      1        0  2.0 KB\n"));
  EXPECT_THAT(outcome.out, HasSubstr("    Size  File\n"
                                     "  2.0 KB  .\\a.dat\n"
                                     "     5 B  sub\\b.DAT\n"
                                     "     1 B  sub\\deep\\c.txt\n"));
  EXPECT_THAT(outcome.out, HasSubstr("3 files match *, 2.0 KB in all; 3 folders searched.\n"));
}

TEST_F(ScanshelfRun, RenumberingShowsNamesAndTouchesNone) {
  TempFolder folder;
  folder.write("scan009.dat", "1");
  folder.write("sub/notes.txt", "1");
  folder.write("sub/x2147483647.dat", "1");
  Outcome const outcome = outcomeOf({folder.text(), KVW("--renumber")});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, HasSubstr("Nothing is renamed."));
  EXPECT_THAT(outcome.out, HasSubstr("  scan009.dat      scan010.dat         .\\\n"));
  EXPECT_THAT(outcome.out, HasSubstr("  notes.txt        notes1.txt          sub\\\n"));
  EXPECT_THAT(outcome.out, HasSubstr("  x2147483647.dat  (number too large)  sub\\\n"));
  EXPECT_TRUE(std::filesystem::exists(folder.path() / "scan009.dat"));
  EXPECT_FALSE(std::filesystem::exists(folder.path() / "scan010.dat"));
}

TEST_F(ScanshelfRun, RenumberingTellsHowManyMore) {
  TempFolder folder;
  for (int i = 0; i < 14; ++i) folder.write("scan" + std::to_string(i) + ".dat", "1");
  EXPECT_THAT(outcomeOf({folder.text(), KVW("-r")}).out, HasSubstr("  (4 more)\n"));
  EXPECT_THAT(outcomeOf({folder.text(), KVW("-r"), KVW("-a")}).out, Not(HasSubstr("more)")));
}

TEST_F(ScanshelfRun, LongPathsAreListedWithoutTheirMiddle) {
  TempFolder folder;
  folder.write("Town hall/" + std::string(60, 'f') + "/Before cleaning and measuring/scan001.dat", "1");
  EXPECT_THAT(outcomeOf({folder.text()}).out,
              HasSubstr("  1 B  Town hall\\...\\Before cleaning and measuring\\scan001.dat\n"));
}

TEST_F(ScanshelfRun, FilesAreListedWithSlashesOnRequest) {
  TempFolder folder;
  folder.write("sub/b.dat", "12345");
  EXPECT_THAT(outcomeOf({folder.text(), KVW("--unix")}).out, HasSubstr("  5 B  sub/b.dat\n"));
}

TEST_F(ScanshelfRun, LongListsAreCutUnlessAllAreAskedFor) {
  TempFolder folder;
  for (int i = 10; i < 30; ++i) folder.write(std::to_string(i) + "/x." + std::to_string(i), std::string(i, 'x'));
  Outcome const cut = outcomeOf({folder.text()});
  EXPECT_THAT(cut.out, AllOf(HasSubstr("  .20            1   20 B\n"), Not(HasSubstr("  .19 ")),
                             HasSubstr("  (10 more)     10  145 B\n"), HasSubstr("  Size  Largest files\n"),
                             Not(HasSubstr("19\\x.19"))));
  Outcome const whole = outcomeOf({folder.text(), KVW("--all")});
  EXPECT_THAT(whole.out, AllOf(HasSubstr("  .10            1  10 B\n"), Not(HasSubstr(" more)")),
                               HasSubstr("  Size  File\n"), HasSubstr("10\\x.10")));
}

TEST_F(ScanshelfRun, OneFileAndNoneAreToldInPlainSentences) {
  TempFolder folder;
  folder.write("a.dat");
  EXPECT_THAT(outcomeOf({folder.text(), KVW("*.dat")}).out,
              HasSubstr("1 file matches *.dat, 0 B in all; 1 folder searched.\n"));
  EXPECT_THAT(outcomeOf({folder.text(), KVW("*.txt")}).out, HasSubstr("No file matches *.txt; 1 folder searched.\n"));
}

TEST_F(ScanshelfRun, ComplaintsAreSentencesWithAStatus) {
  TempFolder folder;
  folder.write("a.dat");
  struct {
    char const* name;
    std::vector<wstring> words;
    int status;
    std::string err;
  } const rows[] = {
      {"missing", {folder.text(KVW("none"))}, 1, "There is no folder '" + narrow(folder.text(KVW("none"))) + "'.\n"},
      {"file",
       {folder.text(KVW("a.dat"))},
       1,
       "'" + narrow(folder.text(KVW("a.dat"))) + "' is a file, not a folder.\n"},
      {"refused name", {KVW("*.dat")}, 1, "'*.dat' cannot be the name of a folder.\n"},
      {"empty name", {KVW("")}, 1, "'' cannot be the name of a folder.\n"},
      {"beyond the root", {KVW("C:\\..")}, 1, "'C:\\..' cannot be the name of a folder.\n"},
      {"empty target", {folder.text(), KVW("-c"), KVW("")}, 1, "'' cannot be the name of a folder.\n"},
      {"target is a file",
       {folder.text(), KVW("-c"), folder.text(KVW("a.dat"))},
       1,
       "'" + narrow(folder.text(KVW("a.dat"))) + "' is a file, not a folder.\n"},
      {"unknown option", {KVW("--fast")}, 2, "There is no option '--fast'.\nTry 'scanshelf --help'.\n"},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    Outcome const outcome = outcomeOf(row.words);
    EXPECT_EQ(outcome.status, row.status);
    EXPECT_EQ(outcome.err, "scanshelf: " + row.err);
    EXPECT_EQ(outcome.out, "");
  }
}

TEST_F(ScanshelfRun, RefusedPatternIsToldOnce) {
  TempFolder folder;
  folder.makeFolder("a/b");
  Outcome const outcome = outcomeOf({folder.text(), KVW("a\\*")});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err.find("scanshelf: 'a\\*' is not a valid pattern."), 0u);
  EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1);
}

TEST_F(ScanshelfRun, StackNeedsNoFolder) {
  Outcome const outcome = outcomeOf({KVW("nowhere"), KVW("--stack")});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, HasSubstr("StackWalker::ShowCallstack"));
}

TEST_F(ScanshelfRun, FileThatIsNoScanFailsAnAssertion) {
  TempFolder folder;
  folder.write("a.dat", "SCAN 1");
  KV_1_1::testing::ScriptedDebug debug;
  platform::ScopedBackend<platform::DebugApi> const scope(debug);
  Outcome const good = outcomeOf({folder.text(), KVW("--assert")});
  EXPECT_EQ(good.status, 0);
  EXPECT_EQ(good.out + good.err, "");
  EXPECT_EQ(debug.calls("ask"), 0);

  folder.write("sub/b.dat", "SCRAP");
  ::testing::internal::CaptureStderr();
  Outcome const bad = outcomeOf({folder.text(), KVW("--assert")});
  EXPECT_THAT(::testing::internal::GetCapturedStderr(), HasSubstr("Assertion signature == kScanSignature failed."));
  EXPECT_EQ(bad.status, 1);
  EXPECT_EQ(bad.out, "");
  EXPECT_EQ(bad.err, "\n");
  EXPECT_EQ(debug.calls("ask"), 1);
}

TEST_F(ScanshelfRun, HelpNeedsNoFolder) {
  Outcome const outcome = outcomeOf({KVW("nowhere"), KVW("--help")});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, utf8(helpText()));
}

TEST_F(ScanshelfRun, OutputThatCannotBeWrittenIsAFailure) {
  std::ostringstream out;
  std::ostringstream err;
  out.setstate(std::ios::badbit);
  EXPECT_EQ(run({String(KVW("--help"))}, out, err, /*isErrTerminal=*/false), 1);
  EXPECT_EQ(err.str(), "scanshelf: The report could not be written.\n");
}

TEST_F(ScanshelfRun, CopyIsMadeAndReported) {
  TempFolder folder;
  TempFolder target;
  folder.write("a.dat", std::string(2048, 'x'));
  folder.write("sub/b.dat", "12345");
  folder.write("sub/c.txt", "1");
  folder.makeFolder("empty");
  Outcome const outcome = outcomeOf({folder.text(), KVW("*.dat"), KVW("--copy-to"), target.text(KVW("x\\y"))});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, HasSubstr("2 files match *.dat, 2.0 KB in all; 3 folders searched.\n\n"
                                     "  Copied to    " +
                                     narrow(target.text(KVW("x\\y\\"))) +
                                     "\n"
                                     "  Files        2 of 2\n"
                                     "  Folders      2 of 2\n"
                                     "  Bytes        2.0 KB of 2.0 KB\n"
                                     "  Sizes equal  2 of 2\n"
                                     "  Time         "));
  EXPECT_THAT(outcome.out, ::testing::EndsWith("s\n\nEverything was copied, and all sizes are equal.\n"));
  EXPECT_THAT(itemsBelow(target.path("x/y")), ::testing::UnorderedElementsAre("a.dat", "empty", "sub", "sub/b.dat"));
}

TEST_F(ScanshelfRun, CopyThatFailsInPartTellsWhatAndWhy) {
  TempFolder folder;
  TempFolder target;
  folder.write("a.dat", "123");
  folder.write("sub/b.dat", "12345");
  target.write("sub/b.dat", "old");
  std::string const exists = KV_1_1::getWindowsError(80).trim().stringUTF8();
  Outcome const outcome = outcomeOf({folder.text(), KVW("-c"), target.text(), KVW("-u")});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, HasSubstr("  Files        1 of 2\n"));
  EXPECT_THAT(outcome.out, HasSubstr("  Bytes        3 B of 8 B\n"));
  EXPECT_THAT(outcome.out, HasSubstr("\n\nNot everything could be copied:\n\n  Reason "));
  EXPECT_THAT(outcome.out, ::testing::EndsWith("  " + exists + "  sub/b.dat\n"));
  EXPECT_EQ(std::filesystem::file_size(target.path("sub/b.dat")), 3u);

  Outcome const replaced = outcomeOf({folder.text(), KVW("*b*"), KVW("-c"), target.text(), KVW("--overwrite")});
  EXPECT_EQ(replaced.status, 0);
  EXPECT_EQ(std::filesystem::file_size(target.path("sub/b.dat")), 5u);
}

TEST_F(ScanshelfRun, EmptyFolderIsCopiedToo) {
  TempFolder folder;
  TempFolder target;
  Outcome const outcome = outcomeOf({folder.text(), KVW("-c"), target.text(KVW("new"))});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, ::testing::EndsWith("There was no file to copy.\n"));
  EXPECT_TRUE(std::filesystem::is_directory(target.path("new")));
}

TEST_F(ScanshelfRun, TargetWithinTheFolderIsRefusedBeforeAnythingIsWritten) {
  TempFolder folder;
  folder.write("sub/a.dat", "1");
  for (wstring const& target : {folder.text(), folder.text(KVW("sub")), folder.text(KVW("new\\deeper"))}) {
    Outcome const outcome = outcomeOf({folder.text(), KVW("--copy-to"), target});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "scanshelf: '" + narrow(target) +
                               "' is the folder to be copied, or lies in it. Choose a target outside of it.\n");
  }
  EXPECT_THAT(itemsBelow(folder.path()), ::testing::UnorderedElementsAre("sub", "sub/a.dat"));
}

TEST_F(ScanshelfRun, RefusedPatternMakesNoTarget) {
  TempFolder folder;
  TempFolder target;
  EXPECT_EQ(outcomeOf({folder.text(), KVW("a:b"), KVW("-c"), target.text(KVW("new"))}).status, 1);
  EXPECT_FALSE(std::filesystem::exists(target.path("new")));
}

TEST_F(ScanshelfRun, ListingWritesNothing) {
  TempFolder folder;
  folder.write("a.dat", "1");
  EXPECT_THAT(outcomeOf({folder.text()}).out, Not(HasSubstr("Copied")));
  EXPECT_THAT(itemsBelow(folder.path()), ::testing::ElementsAre("a.dat"));
}

TEST_F(ScanshelfRun, BarStandsOnATerminalAndIsClearedBeforeTheReport) {
  TempFolder folder;
  TempFolder target;
  folder.write("a.dat", "1");
  std::ostringstream both;
  String const words[] = {folder.text().c_str(), KVW("-c"), target.text().c_str()};
  EXPECT_EQ(run({std::begin(words), std::end(words)}, both, both, /*isErrTerminal=*/true), 0);
  std::string const text = both.str();
  std::size_t const bar = text.find("\r[..............................]   0%  0 of 1 file ");
  ASSERT_NE(bar, std::string::npos) << text;
  std::size_t const report = text.find("  Folder  ");
  EXPECT_LT(bar, report);
  EXPECT_EQ(text[report - 1], '\r');
  EXPECT_EQ(text.find('\r', report), std::string::npos);
}

std::string summaryOf(CopyResult const& result, Totals const& all, std::chrono::milliseconds duration) {
  std::ostringstream out;
  SmartPtr<Directory const> const target = Directory::fromString(KVW("D:\\copy"));
  printCopy(out, result, all, *target, duration, /*unixNames=*/false);
  return out.str();
}

TEST_F(ScanshelfSummary, SpeedIsToldWhereItIsMoreThanChance) {
  Totals all;
  all.files = 1200;
  all.folders = 1;
  all.bytes = 3 << 20;
  CopyResult result;
  result.copied = all;
  result.equalSizes = 1200;
  EXPECT_EQ(summaryOf(result, all, std::chrono::milliseconds(1500)),
            "  Copied to    D:\\copy\\\n"
            "  Files        1,200 of 1,200\n"
            "  Folders      1 of 1\n"
            "  Bytes        3.0 MB of 3.0 MB\n"
            "  Sizes equal  1,200 of 1,200\n"
            "  Time         1.5 s, 2.0 MB/s\n\n"
            "Everything was copied, and all sizes are equal.\n");
  EXPECT_THAT(summaryOf(result, all, std::chrono::milliseconds(499)), HasSubstr("  Time         499 ms\n"));
}

TEST_F(ScanshelfSummary, FullDiskIsToldWithWhatWasLeft) {
  Totals all;
  all.files = 8;
  CopyResult result;
  result.failures.push_back({File::fromString(KVW("sub\\a.dat")), KVW("There is no room.")});
  result.unattempted = 7;
  EXPECT_THAT(summaryOf(result, all, std::chrono::milliseconds(1)),
              ::testing::EndsWith("Not everything could be copied:\n\n"
                                  "  Reason             Item\n"
                                  "  There is no room.  sub\\a.dat\n\n"
                                  "The disk is full. Not attempted: 7 files.\n"));
}

TEST_F(ScanshelfSample, IsThereAsLongAsTheObject) {
  SmartPtr<Directory const> folder;
  {
    SampleTree const sample;
    folder = sample.folder();
    EXPECT_TRUE(folder->exists());
    EXPECT_EQ(folder->collectFiles(KVW("*"), /*recursive=*/true).size(), std::size(kSampleFiles));
    EXPECT_EQ(folder->collectDirectories(KVW("To be scanned"), /*recursive=*/true).size(), 1u);
    EXPECT_FALSE(sample.copyFolder()->exists());
    EXPECT_TRUE(sample.copyFolder()->create());
  }
  EXPECT_FALSE(folder->getParent()->exists());
}

TEST_F(ScanshelfSample, WhatCannotBeRemovedIsTold) {
  SmartPtr<Directory const> folder;
  {
    SampleTree sample;
    folder = sample.folder()->getParent();
    KV_1_1::testing::FailingFiles failing(2);  // the first call asks whether the folder is there
    platform::ScopedBackend<platform::FileApi> const scope(failing);
    try {
      sample.remove();
      ADD_FAILURE() << "removed";
    } catch (Error const& error) {
      EXPECT_EQ(std::string(error.what()).find("The temporary folder '"), 0u);
    }
  }
  EXPECT_FALSE(folder->exists());
}

TEST_F(ScanshelfSample, IsShownWithoutAFolder) {
  Outcome const outcome = outcomeOf({KVW("-u")});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out.find("A sample of scans"), 0u);
  EXPECT_THAT(outcome.out, HasSubstr("14 files match *, 11.3 MB in all; 11 folders searched.\n"));
}

// The answer may end the program, so nothing may be left to tidy up when the question is put.
TEST_F(ScanshelfSample, IsRemovedBeforeTheReportOfAnAssertion) {
  struct Debug : KV_1_1::testing::ScriptedDebug {
    int ask(wchar const* message, wchar const*, KV_1_1::ulong32) override {
      String const text = message;
      int const quote = text.find(KVW('"'));
      file = text.substr(quote + 1, text.length() - 1);
      isGone = !File::fromString(file)->exists() && !File::fromString(file)->getDirectory()->exists();
      return 0;  // not ignored, which would last for all tests
    }
    String file;
    bool isGone = false;
  } debug;
  platform::ScopedBackend<platform::DebugApi> const scope(debug);
  ::testing::internal::CaptureStderr();
  Outcome const outcome = outcomeOf({KVW("--assert")});
  ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(debug.file.endsWith(KVW("\\Scans\\scan001.dat"))) << debug.file.stringUTF8();
  EXPECT_TRUE(debug.isGone);
}

// The folder that the report says the sample was copied to.
std::filesystem::path copyFolderOf(std::string const& report) {
  std::string const label = "  Copied to    ";
  std::size_t const begin = report.find(label) + label.size();
  return std::filesystem::u8path(report.substr(begin, report.find('\n', begin) - begin));
}

TEST_F(ScanshelfSample, IsCopiedAndRemovedWithItsCopy) {
  Outcome const outcome = outcomeOf({KVW("-u")});
  EXPECT_EQ(outcome.out.find("A sample of scans, made for this report and removed again, like its copy:\n\n"), 0u);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("  Files        14 of 14\n"), HasSubstr("  Folders      10 of 10\n"),
                                 HasSubstr("  Sizes equal  14 of 14\n")));
  std::filesystem::path const copy = copyFolderOf(outcome.out).parent_path();
  EXPECT_EQ(copy.filename(), "Copy of scans");
  EXPECT_TRUE(std::filesystem::exists(copy.parent_path().parent_path()));
  EXPECT_FALSE(std::filesystem::exists(copy.parent_path()));
}

TEST_F(ScanshelfSample, CopyToAFolderOfTheUsersStays) {
  TempFolder target;
  Outcome const outcome = outcomeOf({KVW("--copy-to"), target.text()});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out.find("A sample of scans, made for this report and removed again:\n\n"), 0u);
  EXPECT_EQ(itemsBelow(target.path()).size(), 24u);
}

TEST_F(ScanshelfSample, RenumberingCopiesNothing) {
  Outcome const outcome = outcomeOf({KVW("--renumber")});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("scan201.dat"), Not(HasSubstr("cop"))));
}

}  // namespace
}  // namespace scanshelf
