// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "examples/scanshelf/progress_line.cpp"
#include "tests/examples/scanshelf_texts.h"

namespace scanshelf {
namespace {

class ScanshelfProgress : public ScanshelfTest {};
class ScanshelfBar : public ScanshelfTest {};

constexpr std::uint64_t kMega = 1024 * 1024;

Totals totalsOf(std::uint64_t files, std::uint64_t bytes) {
  Totals totals;
  totals.files = files;
  totals.bytes = bytes;
  return totals;
}

ProgressLine::Clock::time_point at(double seconds) {
  return ProgressLine::Clock::time_point() + std::chrono::milliseconds(static_cast<int>(seconds * 1000));
}

struct Step {
  double seconds;
  Totals done;
};

// What is written for these steps of a task that starts at 0.
std::string shown(bool isTerminal, Totals const* all, std::vector<Step> const& steps) {
  std::ostringstream out;
  {
    ProgressLine line({out, isTerminal}, all, at(0));
    for (Step const& step : steps) line.show(step.done, at(step.seconds));
  }
  return out.str();
}

TEST_F(ScanshelfProgress, LogStaysEmptyInTheFirstSecond) {
  Totals const all = totalsOf(9, 9);
  for (Totals const* of : {static_cast<Totals const*>(nullptr), &all}) {
    EXPECT_EQ(shown(/*isTerminal=*/false, of, {{0, totalsOf(5, 5)}, {0.999, totalsOf(5, 5)}}), "");
  }
}

TEST_F(ScanshelfProgress, TaskWithoutAnyCallLeavesATerminalAlone) {
  EXPECT_EQ(shown(/*isTerminal=*/true, nullptr, {}), "");
}

TEST_F(ScanshelfProgress, LineOnATerminalIsOverwrittenAndClearedAtTheEnd) {
  EXPECT_EQ(shown(/*isTerminal=*/true, nullptr,
                  {{0, totalsOf(1000, 1000)}, {0.199, totalsOf(2000, 2000)}, {0.2, totalsOf(3, 3)}}),
            "\rReading: 1,000 files in 1 folder, 1000 B"
            "\rReading: 3 files in 1 folder, 3 B       "
            "\r                                 \r");
}

TEST_F(ScanshelfProgress, CallbackClearsTheLineWhenItGoes) {
  std::ostringstream out;
  {
    Progress const progress = progressOn({out, /*isTerminal=*/true});
    progress(totalsOf(3, 3));
    EXPECT_EQ(out.str(), "\rReading: 3 files in 1 folder, 3 B");
  }
  EXPECT_EQ(out.str(), "\rReading: 3 files in 1 folder, 3 B\r                                 \r");
}

TEST_F(ScanshelfProgress, PlainLinesComeAtGrowingIntervals) {
  std::vector<Step> steps;
  for (unsigned tenth = 0; tenth <= 150; ++tenth) steps.push_back({tenth / 10.0, totalsOf(tenth, tenth)});
  EXPECT_EQ(shown(/*isTerminal=*/false, nullptr, steps),
            "Reading: 10 files in 1 folder, 10 B\n"
            "Reading: 30 files in 1 folder, 30 B\n"
            "Reading: 70 files in 1 folder, 70 B\n"
            "Reading: 150 files in 1 folder, 150 B\n");
}

TEST_F(ScanshelfProgress, CopyingIsABarOnATerminal) {
  Totals const all = totalsOf(1200, 200 * kMega);
  EXPECT_EQ(shown(/*isTerminal=*/true, &all,
                  {{0, totalsOf(0, 0)}, {0.1, totalsOf(3, kMega)}, {0.2, totalsOf(900, 100 * kMega)}, {0.4, all}}),
            "\r[.........................]   0%      0 of 1,200 files        0 B of 200.0 MB"
            "\r[############.............]  50%    900 of 1,200 files   100.0 MB of 200.0 MB"
            "\r[#########################] 100%  1,200 of 1,200 files   200.0 MB of 200.0 MB"
            "\r                                                                             \r");
}

TEST_F(ScanshelfProgress, CopyingIsPlainLinesElsewhere) {
  Totals const all = totalsOf(1200, 200 * kMega);
  EXPECT_EQ(shown(/*isTerminal=*/false, &all,
                  {{1, totalsOf(1, 0)}, {2.9, totalsOf(2, kMega)}, {3, totalsOf(900, 100 * kMega)}, {7, all}}),
            "Copying: 1 of 1,200 files, 0 B of 200.0 MB (0%)\n"
            "Copying: 900 of 1,200 files, 100.0 MB of 200.0 MB (50%)\n"
            "Copying: 1,200 of 1,200 files, 200.0 MB of 200.0 MB (100%)\n");
}

TEST_F(ScanshelfBar, FitsIntoALineAndKeepsItsPlacesWhateverTheNumbers) {
  Totals const rows[] = {totalsOf(0, 0),
                         totalsOf(1, 1),
                         totalsOf(1200, 1023 * 1024),
                         totalsOf(123'456'789, 5000 * kMega),
                         totalsOf(1'234'567'890, kMega * kMega),
                         totalsOf(UINT64_MAX, UINT64_MAX)};
  for (Totals const& all : rows) {
    int const width = barText(Totals(), all).length();
    EXPECT_LE(width, 77) << all.files;
    for (unsigned part : {1u, 3u, 100u}) {
      String const text = barText(totalsOf(all.files / part, all.bytes / part), all);
      EXPECT_EQ(text.length(), width) << utf8(text);
      EXPECT_TRUE(text.startsWith(KVW("[")));
    }
  }
}

TEST_F(ScanshelfBar, PercentIsRoundedDownAndNeverMoreThanAll) {
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
      {"a hundred times as much overflows 64 bits", totalsOf(1, UINT64_MAX / 2), totalsOf(2, UINT64_MAX), 50},
  };
  for (auto const& row : rows) EXPECT_EQ(percentOf(row.done, row.all), row.percent) << row.name;
}

}  // namespace
}  // namespace scanshelf
