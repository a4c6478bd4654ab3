// SPDX-License-Identifier: MIT
#include "benchmarks/driver.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <random>
#include <regex>
#include <utility>
#include <vector>

namespace KV_1_1 {
namespace bench {

namespace {

constexpr double kSlice = 2e6;  // nanoseconds
constexpr int kMostRounds = 50;
// What takes longer than a slice is measured in fewer rounds.
constexpr int kFewestRounds = 4;
constexpr double kTimeOfContestant = kMostRounds * kSlice;

struct Contestant {
  std::string name;
  Measure measure;
  long long iterations = 1;  // in a slice
  double shortest = std::numeric_limits<double>::infinity();

  void takeSlice() {
    Measured const slice = measure(iterations);
    shortest = std::min(shortest, slice.nanoseconds / static_cast<double>(slice.iterations));
  }

  // As many iterations as fill a slice, approached by steps of at most ten times as many.
  void findIterations() {
    for (;;) {
      Measured const trial = measure(iterations);
      double const part = trial.nanoseconds / kSlice;
      if (part >= 1) return;
      double const factor = part > 0.1 ? 1.2 / part : 10;
      iterations =
          std::max(trial.iterations + 1, static_cast<long long>(static_cast<double>(trial.iterations) * factor));
    }
  }
};

struct MeasuredRow {
  std::string name;
  std::vector<Contestant> contestants;

  void measure() {
    for (Contestant& contestant : contestants) contestant.findIterations();
    static std::mt19937 random(std::random_device{}());
    std::vector<Contestant*> turns;
    for (Contestant& contestant : contestants) turns.push_back(&contestant);
    Stopwatch const all;
    double const time = kTimeOfContestant * static_cast<double>(turns.size());
    for (int round = 0; round < kFewestRounds || (round < kMostRounds && all.nanoseconds() < time); ++round) {
      std::shuffle(turns.begin(), turns.end(), random);
      for (Contestant* const contestant : turns) contestant->takeSlice();
    }
  }

  void print() const {
    std::printf("%s\n", name.c_str());
    for (Contestant const& contestant : contestants) {
      std::printf("  %-30s %14.1f ns\n", contestant.name.c_str(), contestant.shortest);
    }
    std::fflush(stdout);
  }

  void write(std::FILE* file) const {
    std::fprintf(file, "\"%s\": {", name.c_str());
    char const* separator = "";
    for (Contestant const& contestant : contestants) {
      std::fprintf(file, "%s\"%s\": %.6g", std::exchange(separator, ", "), contestant.name.c_str(),
                   contestant.shortest);
    }
    std::fputs("}", file);
  }
};

std::vector<MeasuredRow>& rows() {
  static std::vector<MeasuredRow> all;
  return all;
}

}  // namespace

void addContestant(std::string const& row, std::string const& contestant, Measure measure) {
  if (rows().empty() || rows().back().name != row) rows().push_back({row, {}});
  rows().back().contestants.push_back({contestant, std::move(measure)});
}

bool measureRows(char const* pattern, char const* file) {
  std::regex const wanted(pattern);
  std::FILE* const out = std::fopen(file, "w");
  if (out == nullptr) {
    std::fprintf(stderr, "cannot write %s\n", file);
    return false;
  }
  char const* separator = "{\n";
  for (MeasuredRow& row : rows()) {
    if (!std::regex_search(row.name, wanted)) continue;
    row.measure();
    row.print();
    std::fputs(std::exchange(separator, ",\n"), out);
    row.write(out);
  }
  bool const isAny = *separator == ',';
  if (!isAny) std::fprintf(stderr, "no row matches '%s'\n", pattern);
  std::fputs(isAny ? "\n}\n" : "{}\n", out);
  return std::fclose(out) == 0 && isAny;
}

}  // namespace bench
}  // namespace KV_1_1
