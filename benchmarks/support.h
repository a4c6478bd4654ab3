// SPDX-License-Identifier: MIT
//
// Rows of the comparison. A row is one piece of work, done by KVBase and by its peers in the same process:
//
//   Row("storage: a + b, 50 + 50")
//       .add("KVBase", [a = String(text), b = String(text)] { return a + b; })
//       .add("QString", [a = QString(text), b = QString(text)] { return QString(a + b); });
//
// The first contestant is KVBase. What each contestant gives must equal, as a text, what the first one gave: the work
// is done once before it is timed, and a difference ends the program.
//
// What a contestant gives is destroyed within the time. What counts is the time of the processor; a row whose name ends
// in "(elapsed)" is judged by the clock, since there other processes may do the work. benchmarks/goals.tsv names the
// rows and what they have to reach.
#pragma once

#include <benchmark/benchmark.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <QByteArray>
#include <QString>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kvbase/kvbase.h"

namespace KV_1_1 {
namespace bench {

using icu::UnicodeString;
using std::u16string;

void addStringStorage();
void addStringSearch();
void addStringValues();
void addStringEncoding();
void addPaths();
void addObjects();
void addDisk();
void addDiskChanges();

// The order of two texts, of which only the sign means something.
struct Order {
  int value;
};

// Results as texts, to be compared.
u16string plain(String const& text);
u16string plain(QString const& text);
u16string plain(UnicodeString const& text);
u16string plain(std::string const& text);
u16string plain(QByteArray const& text);
// A pointer would slide into the form for bool.
u16string plain(char const* text);
u16string plain(u16string const& text);
u16string plain(std::shared_ptr<u16string const> const& text);
u16string plain(Order order);
u16string plain(long long number);
inline u16string plain(int number) {
  return plain(static_cast<long long>(number));
}
inline u16string plain(bool truth) {
  return plain(truth ? 1LL : 0LL);
}

[[noreturn]] void failPremise(char const* premise);
// Ends the program with a message if what the rows take for granted does not hold.
inline void require(bool holds, char const* premise) {
  if (!holds) failPremise(premise);
}

// Path texts come with either separator.
u16string withSlashes(u16string text);

// `length` units of words as they stand in English texts, letters only; q, x, z and j never occur. The same for the
// same seed.
u16string sampleText(int length, unsigned int seed = 1);

// The same units in the four classes; every call gives a text with a block of its own.
template <class Text>
Text make(u16string const& units) {
  return Text(units.data(), static_cast<int>(units.size()));
}
template <>
inline QString make<QString>(u16string const& units) {
  return QString(reinterpret_cast<QChar const*>(units.data()), static_cast<qsizetype>(units.size()));
}
template <>
inline u16string make<u16string>(u16string const& units) {
  return units;
}

class Row {
 public:
  explicit Row(std::string name) : name_(std::move(name)) {}

  // The contestant's work: a function without arguments that gives its result.
  template <class Work>
  Row& add(char const* contestant, Work work) {
    return addPlain(contestant, work, [](auto const& result) { return plain(result); });
  }
  // The same where the results are path texts.
  template <class Work>
  Row& addPath(char const* contestant, Work work) {
    return addPlain(contestant, work, [](auto const& result) { return withSlashes(plain(result)); });
  }
  // What `prepare` gives is destroyed, and nothing else is timed: `batch` of them in a row.
  template <class Prepare>
  Row& addDestruction(char const* contestant, int batch, Prepare prepare);
  // Each work on a thing of its own that `prepare` gave, for results that the thing keeps: `batch` of them in a row.
  // Neither things nor results are built or destroyed within the time.
  template <class Prepare, class Work>
  Row& addFresh(char const* contestant, int batch, Prepare prepare, Work work);

 private:
  template <class Work, class Plain>
  Row& addPlain(char const* contestant, Work work, Plain toPlain) {
    auto const run = [expected = expected_, label = label(contestant), work, toPlain](benchmark::State& state) {
      // Work that keeps a state begins anew in each repetition.
      Work timed = work;
      expect(*expected, toPlain(timed()), label);
      for (auto _ : state) benchmark::DoNotOptimize(timed());
    };
    benchmark::RegisterBenchmark(label(contestant).c_str(), run);
    return *this;
  }

  std::string label(char const* contestant) const { return name_ + "/" + contestant; }
  // Sets an expectation that is still empty; ends the program with a message if the result differs from it.
  static void expect(std::unique_ptr<u16string>& expected, u16string result, std::string const& label);

  std::string name_;
  std::shared_ptr<std::unique_ptr<u16string>> expected_ = std::make_shared<std::unique_ptr<u16string>>();
};

template <class Prepare>
Row& Row::addDestruction(char const* contestant, int batch, Prepare prepare) {
  auto const run = [expected = expected_, label = label(contestant), prepare, batch](benchmark::State& state) {
    expect(*expected, plain(prepare()), label);
    std::vector<decltype(prepare())> things;
    things.reserve(static_cast<std::size_t>(batch));
    while (state.KeepRunningBatch(batch)) {
      state.PauseTiming();
      for (int i = 0; i < batch; ++i) things.push_back(prepare());
      state.ResumeTiming();
      things.clear();
      benchmark::ClobberMemory();
    }
  };
  benchmark::RegisterBenchmark(label(contestant).c_str(), run);
  return *this;
}

template <class Prepare, class Work>
Row& Row::addFresh(char const* contestant, int batch, Prepare prepare, Work work) {
  auto const run = [expected = expected_, label = label(contestant), prepare, work, batch](benchmark::State& state) {
    auto first = prepare();
    expect(*expected, plain(work(first)), label);
    std::vector<decltype(prepare())> things;
    std::vector<decltype(work(first))> results;
    things.reserve(static_cast<std::size_t>(batch));
    results.reserve(static_cast<std::size_t>(batch));
    while (state.KeepRunningBatch(batch)) {
      state.PauseTiming();
      results.clear();
      things.clear();
      for (int i = 0; i < batch; ++i) things.push_back(prepare());
      state.ResumeTiming();
      for (auto& thing : things) results.push_back(work(thing));
      benchmark::ClobberMemory();
    }
  };
  benchmark::RegisterBenchmark(label(contestant).c_str(), run);
  return *this;
}

template <class Text>
struct Tag {
  using Type = Text;
};

// Adds the work of the four text classes, where one spelling serves them all: makeWork(Tag<Text>()) gives it.
template <class MakeWork>
Row& addTexts(Row&& row, MakeWork makeWork) {
  return row.add("KVBase", makeWork(Tag<String>()))
      .add("u16string", makeWork(Tag<u16string>()))
      .add("QString", makeWork(Tag<QString>()))
      .add("UnicodeString", makeWork(Tag<UnicodeString>()));
}

}  // namespace bench
}  // namespace KV_1_1
