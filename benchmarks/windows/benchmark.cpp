// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <regex>
#include <string>
#include <utility>
#include <vector>

namespace benchmark {

namespace {

constexpr int kMeasurements = 15;  // in each repetition, but fewer of what takes long

struct Benchmark {
  std::string name;
  std::function<void(State&)> run;
  long long iterations = 1;  // in each measurement
};

std::vector<Benchmark>& benchmarks() {
  static std::vector<Benchmark> all;
  return all;
}

std::map<std::string, std::string>& options() {
  static std::map<std::string, std::string> values = {{"filter", "."},        {"min_time", "0.5"},
                                                      {"repetitions", "1"},   {"out", ""},
                                                      {"out_format", "json"}, {"enable_random_interleaving", "true"}};
  return values;
}

State measured(Benchmark const& benchmark, long long iterations) {
  State state(iterations);
  benchmark.run(state);
  return state;
}

// As many iterations as take `wanted` nanoseconds, approached by steps of at most ten times as many.
long long iterationsFor(Benchmark const& benchmark, double wanted) {
  for (long long iterations = 1;;) {
    State const state = measured(benchmark, iterations);
    double const part = state.nanoseconds() / wanted;
    if (part >= 1) return state.iterations();
    double const factor = part > 0.1 ? 1.4 / part : 10;
    iterations = std::max(iterations + 1, static_cast<long long>(static_cast<double>(iterations) * factor));
  }
}

// The shortest of several measurements that take `minimum` nanoseconds together. Other processes lengthen an elapsed time,
// and the shorter it is, the less often.
State shortestOf(Benchmark const& benchmark, double minimum) {
  State shortest = measured(benchmark, benchmark.iterations);
  for (double all = shortest.nanoseconds(); all < minimum;) {
    State const next = measured(benchmark, benchmark.iterations);
    all += next.nanoseconds();
    if (next.nanoseconds() < shortest.nanoseconds()) shortest = next;
  }
  return shortest;
}

void write(std::FILE* file, Benchmark const& benchmark, State const& state, bool isFirst) {
  double const time = state.nanoseconds() / static_cast<double>(state.iterations());
  std::printf("%-80s %12.1f ns %12lld\n", benchmark.name.c_str(), time, state.iterations());
  std::fprintf(file,
               "%s\n{\"run_name\": \"%s\", \"run_type\": \"iteration\", \"iterations\": %lld, \"real_time\": %.17g, "
               "\"cpu_time\": %.17g, \"time_unit\": \"ns\"}",
               isFirst ? "" : ",", benchmark.name.c_str(), state.iterations(), time, time);
}

}  // namespace

void RegisterBenchmark(char const* name, std::function<void(State&)> run) {
  benchmarks().push_back({name, std::move(run)});
}

void Initialize(int* count, char** arguments) {
  auto const isUnknown = [](std::string const& argument) {
    static constexpr char kPrefix[] = "--benchmark_";
    std::size_t const start = sizeof kPrefix - 1;
    std::size_t const end = std::min(argument.find('='), argument.size());
    if (argument.compare(0, start, kPrefix) != 0) return true;
    auto const option = options().find(argument.substr(start, end - start));
    if (option == options().end()) return true;
    option->second = argument.substr(std::min(end + 1, argument.size()));
    return false;
  };
  *count = static_cast<int>(std::stable_partition(arguments + 1, arguments + *count, isUnknown) - arguments);
}

bool ReportUnrecognizedArguments(int count, char** arguments) {
  for (int i = 1; i < count; ++i) std::fprintf(stderr, "unknown option: %s\n", arguments[i]);
  return count > 1;
}

void RunSpecifiedBenchmarks() {
  double const minimum = 1e9 * std::stod(options()["min_time"]);
  std::regex const filter(options()["filter"]);
  std::vector<Benchmark const*> order;
  for (Benchmark& benchmark : benchmarks()) {
    if (!std::regex_search(benchmark.name, filter)) continue;
    benchmark.iterations = iterationsFor(benchmark, minimum / kMeasurements);
    order.insert(order.end(), std::stoul(options()["repetitions"]), &benchmark);
  }
  if (order.empty()) return;
  std::shuffle(order.begin(), order.end(), std::mt19937(std::random_device()()));

  std::string const& out = options()["out"];
  std::FILE* const file = std::fopen(out.empty() ? "nul" : out.c_str(), "w");
  if (file == nullptr) {
    std::fprintf(stderr, "cannot write %s\n", out.c_str());
    std::exit(1);
  }
  std::fputs("{\"benchmarks\": [", file);
  bool isFirst = true;
  for (Benchmark const* benchmark : order) {
    write(file, *benchmark, shortestOf(*benchmark, minimum), isFirst);
    isFirst = false;
  }
  std::fputs("]}\n", file);
  std::fclose(file);
}

}  // namespace benchmark
