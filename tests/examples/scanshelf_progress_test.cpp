// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>

#include "examples/scanshelf/progress_line.cpp"

namespace scanshelf {
namespace {

constexpr std::uint64_t kMega = 1024 * 1024;

Totals totalsOf(std::uint64_t files, std::uint64_t bytes) {
  Totals totals;
  totals.files = files;
  totals.bytes = bytes;
  return totals;
}

class ScanshelfProgressTest : public ::testing::Test {
 protected:
  static ProgressLine::Clock::time_point at(double seconds) {
    return ProgressLine::Clock::time_point() + std::chrono::milliseconds(static_cast<int>(seconds * 1000));
  }
  static Totals totals(std::uint64_t files) { return totalsOf(files, files); }

  std::ostringstream out_;
};

TEST_F(ScanshelfProgressTest, ALogHearsNothingInTheFirstSecond) {
  {
    ProgressLine line(out_, /*isTerminal=*/false, at(0));
    for (double now : {0.0, 0.5, 0.999}) line.showFound(totals(5), at(now));
    for (double now : {0.0, 0.5, 0.999}) line.showCopied(totals(5), totals(9), at(now));
  }
  EXPECT_EQ(out_.str(), "");
}

TEST_F(ScanshelfProgressTest, ATaskWithoutAnyCallLeavesATerminalAlone) {
  { ProgressLine line(out_, /*isTerminal=*/true, at(0)); }
  EXPECT_EQ(out_.str(), "");
}

TEST_F(ScanshelfProgressTest, OneLineOnATerminalIsClearedAtTheEnd) {
  {
    ProgressLine line(out_, /*isTerminal=*/true, at(0));
    line.showFound(totals(1000), at(0));
    line.showFound(totals(2000), at(0.199));
    line.showFound(totals(3), at(0.2));
  }
  EXPECT_EQ(out_.str(),
            "\rReading: 1,000 files in 1 folder, 1000 B"
            "\rReading: 3 files in 1 folder, 3 B       "
            "\r                                 \r");
}

TEST_F(ScanshelfProgressTest, PlainLinesComeAtLongerAndLongerIntervals) {
  {
    ProgressLine line(out_, /*isTerminal=*/false, at(0));
    for (int tenth = 0; tenth <= 150; ++tenth) line.showFound(totals(static_cast<unsigned>(tenth)), at(tenth / 10.0));
  }
  EXPECT_EQ(out_.str(),
            "Reading: 10 files in 1 folder, 10 B\n"
            "Reading: 30 files in 1 folder, 30 B\n"
            "Reading: 70 files in 1 folder, 70 B\n"
            "Reading: 150 files in 1 folder, 150 B\n");
}

TEST_F(ScanshelfProgressTest, CopyingIsABarOnATerminal) {
  Totals const all = totalsOf(1200, 200 * kMega);
  {
    ProgressLine line(out_, /*isTerminal=*/true, at(0));
    line.showCopied(totalsOf(0, 0), all, at(0));
    line.showCopied(totalsOf(3, kMega), all, at(0.1));
    line.showCopied(totalsOf(900, 100 * kMega), all, at(0.2));
    line.showCopied(all, all, at(0.4));
  }
  EXPECT_EQ(out_.str(),
            "\r[.........................]   0%      0 of 1,200 files        0 B of 200.0 MB"
            "\r[############.............]  50%    900 of 1,200 files   100.0 MB of 200.0 MB"
            "\r[#########################] 100%  1,200 of 1,200 files   200.0 MB of 200.0 MB"
            "\r                                                                             \r");
}

TEST_F(ScanshelfProgressTest, CopyingIsPlainLinesElsewhere) {
  Totals const all = totalsOf(1200, 200 * kMega);
  {
    ProgressLine line(out_, /*isTerminal=*/false, at(0));
    line.showCopied(totalsOf(1, 0), all, at(1));
    line.showCopied(totalsOf(2, kMega), all, at(2.9));
    line.showCopied(totalsOf(900, 100 * kMega), all, at(3));
    line.showCopied(all, all, at(7));
  }
  EXPECT_EQ(out_.str(),
            "Copying: 1 of 1,200 files, 0 B of 200.0 MB (0%)\n"
            "Copying: 900 of 1,200 files, 100.0 MB of 200.0 MB (50%)\n"
            "Copying: 1,200 of 1,200 files, 200.0 MB of 200.0 MB (100%)\n");
}

TEST(ScanshelfBarTest, FitsIntoALineAndKeepsItsPlacesWhateverTheNumbers) {
  Totals const rows[] = {totalsOf(0, 0),
                         totalsOf(1, 1),
                         totalsOf(1200, 1023 * 1024),
                         totalsOf(123'456'789, 5000 * kMega),
                         totalsOf(1'234'567'890, kMega * kMega),
                         totalsOf(UINT64_MAX, UINT64_MAX)};
  for (Totals const& all : rows) {
    std::size_t const width = barText(Totals(), all).size();
    EXPECT_LE(width, 77u) << all.files;
    for (unsigned part : {1u, 3u, 100u}) {
      std::string const text = barText(totalsOf(all.files / part, all.bytes / part), all);
      EXPECT_EQ(text.size(), width) << text;
      EXPECT_EQ(text.front(), '[');
    }
  }
}

TEST(ScanshelfBarTest, PercentIsRoundedDownAndNeverMoreThanAll) {
  struct {
    char const* name;
    Totals done;
    Totals all;
    unsigned percent;
  } const rows[] = {
      {"nothing", totalsOf(0, 0), totalsOf(10, 1000), 0},
      {"by bytes, not by files", totalsOf(9, 500), totalsOf(10, 1000), 50},
      {"nearly all", totalsOf(9, 999), totalsOf(10, 1000), 99},
      {"all", totalsOf(10, 1000), totalsOf(10, 1000), 100},
      {"a file has grown", totalsOf(10, 1500), totalsOf(10, 1000), 100},
      {"empty files", totalsOf(1, 0), totalsOf(4, 0), 25},
      {"no file", totalsOf(0, 0), totalsOf(0, 0), 100},
      {"more than the product of a percent and them would hold", totalsOf(1, UINT64_MAX / 2), totalsOf(2, UINT64_MAX),
       50},
  };
  for (auto const& row : rows) EXPECT_EQ(percentOf(row.done, row.all), row.percent) << row.name;
}

}  // namespace
}  // namespace scanshelf
