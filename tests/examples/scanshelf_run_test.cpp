// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>

#include "examples/scanshelf/renumbering.cpp"
#include "examples/scanshelf/report.cpp"
#include "examples/scanshelf/run.cpp"
#include "examples/scanshelf/sample_tree.cpp"
#include "tests/support/narrow_text.h"
#include "tests/support/temp_folder.h"

namespace scanshelf {
namespace {

using KV_1_1::wstring;
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
  int const status = run(strings, out, err);
  return {status, out.str(), err.str()};
}

TEST(ScanshelfRunTest, ReportTellsNamesCountsAndFiles) {
  TempFolder folder;
  folder.write("a.dat", std::string(2048, 'x'));
  folder.write("sub/b.dat", "12345");
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
                                     "     5 B  sub\\b.dat\n"
                                     "     1 B  sub\\deep\\c.txt\n"));
  EXPECT_THAT(outcome.out, HasSubstr("3 files match *, 2.0 KB in all; 3 folders searched.\n"));
}

TEST(ScanshelfRunTest, RenumberingShowsNamesAndTouchesNone) {
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

TEST(ScanshelfRunTest, RenumberingTellsHowManyMore) {
  TempFolder folder;
  for (int i = 0; i < 14; ++i) folder.write("scan" + std::to_string(i) + ".dat", "1");
  EXPECT_THAT(outcomeOf({folder.text(), KVW("-r")}).out, HasSubstr("  (4 more)\n"));
  EXPECT_THAT(outcomeOf({folder.text(), KVW("-r"), KVW("-a")}).out, Not(HasSubstr("more)")));
}

TEST(ScanshelfRunTest, LongPathsAreListedWithoutTheirMiddle) {
  TempFolder folder;
  folder.write("Town hall/" + std::string(60, 'f') + "/Before cleaning and measuring/scan001.dat", "1");
  EXPECT_THAT(outcomeOf({folder.text()}).out,
              HasSubstr("  1 B  Town hall\\...\\Before cleaning and measuring\\scan001.dat\n"));
}

TEST(ScanshelfRunTest, FilesAreListedWithSlashesOnRequest) {
  TempFolder folder;
  folder.write("sub/b.dat", "12345");
  EXPECT_THAT(outcomeOf({folder.text(), KVW("--unix")}).out, HasSubstr("  5 B  sub/b.dat\n"));
}

TEST(ScanshelfRunTest, LongListsAreCutUnlessAllAreAskedFor) {
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

TEST(ScanshelfRunTest, OneFileAndNoneAreToldInPlainSentences) {
  TempFolder folder;
  folder.write("a.dat");
  EXPECT_THAT(outcomeOf({folder.text(), KVW("*.dat")}).out,
              HasSubstr("1 file matches *.dat, 0 B in all; 1 folder searched.\n"));
  EXPECT_THAT(outcomeOf({folder.text(), KVW("*.txt")}).out, HasSubstr("No file matches *.txt; 1 folder searched.\n"));
}

TEST(ScanshelfRunTest, ComplaintsAreSentencesWithAStatus) {
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

TEST(ScanshelfRunTest, RefusedPatternIsToldOnce) {
  TempFolder folder;
  folder.makeFolder("a/b");
  Outcome const outcome = outcomeOf({folder.text(), KVW("a\\*")});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err.find("scanshelf: 'a\\*' is no pattern for names."), 0u);
  EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1);
}

TEST(ScanshelfRunTest, HelpNeedsNoFolder) {
  Outcome const outcome = outcomeOf({KVW("nowhere"), KVW("--help")});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, helpText());
}

TEST(ScanshelfRunTest, OutputThatCannotBeWrittenIsAFailure) {
  std::ostringstream out;
  std::ostringstream err;
  out.setstate(std::ios::badbit);
  EXPECT_EQ(run({String(KVW("--help"))}, out, err), 1);
  EXPECT_EQ(err.str(), "scanshelf: The report could not be written.\n");
}

TEST(ScanshelfSampleTest, IsThereAsLongAsTheObject) {
  SmartPtr<Directory const> folder;
  {
    SampleTree const sample;
    folder = sample.folder();
    EXPECT_TRUE(folder->exists());
    EXPECT_EQ(folder->collectFiles(KVW("*"), /*recursive=*/true).size(), std::size(kFiles));
    EXPECT_EQ(folder->collectDirectories(KVW("To be scanned"), /*recursive=*/true).size(), 1u);
  }
  EXPECT_FALSE(folder->exists());
}

TEST(ScanshelfSampleTest, IsShownWithoutAFolder) {
  Outcome const outcome = outcomeOf({KVW("-u")});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out.find("A sample of scans"), 0u);
  EXPECT_THAT(outcome.out, HasSubstr("14 files match *, 11.3 MB in all; 11 folders searched.\n"));
}

}  // namespace
}  // namespace scanshelf
