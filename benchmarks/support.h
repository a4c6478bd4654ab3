// SPDX-License-Identifier: MIT
//
// A row of the comparison is one piece of work, done by KVBase and by other libraries, its peers, in one process:
//
//   Row("storage: a + b, 50 + 50")
//       .add("KVBase", [a = String(text), b = String(text)] { return a + b; })
//       .add("QString", [a = QString(text), b = QString(text)] { return QString(a + b); });
//
// Each call of add adds a contestant; the first is KVBase. Before the work of a contestant is timed, it is run once and
// its result is converted to a text. The program ends with a message if two contestants of a row give different texts.
//
// The destruction of a result is timed too. Rows are judged by processor time, except those whose name ends in
// "(elapsed)": other processes may do their work, so they are judged by elapsed time. benchmarks/goals.tsv lists the
// rows and their goals.
#pragma once

#include <benchmark/benchmark.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <QByteArray>
#include <QString>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/fresh_processes.h"
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
void addModules();
void addModuleStart();
void addSymbols();
void addDiagnostics();

// The result of a comparison, of which only the sign is significant.
struct Order {
  int value;
};

// Results converted to texts, to compare them.
u16string plain(String const& text);
u16string plain(QString const& text);
u16string plain(UnicodeString const& text);
u16string plain(std::string const& text);
u16string plain(QByteArray const& text);
// Without this overload a pointer would convert to bool.
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
// Ends the program with a message if an assumption of the rows does not hold.
inline void require(bool holds, char const* premise) {
  if (!holds) failPremise(premise);
}

// Contestants return path texts with either separator; the comparison uses slashes.
u16string withSlashes(u16string text);

// `length` random lower-case letters, about as frequent as in English; j, q, x and z never occur. The same seed gives
// the same text.
u16string sampleText(int length, unsigned int seed = 1);

// A text of any of the four classes with these units. Texts of two calls share no storage.
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

// A text in one block from malloc behind a header, as KVBase keeps it, made and dropped bare: the work of a contestant
// called "floor".
class BareText {
 public:
  BareText(char16_t const* text, std::size_t units, char16_t const* more = u"", std::size_t moreUnits = 0)
      : block_(static_cast<Header*>(std::malloc(sizeof(Header) + (units + moreUnits + 1) * sizeof(char16_t)))) {
    *block_ = {1, static_cast<unsigned int>(units + moreUnits), {nullptr, nullptr}};
    std::memcpy(this->text(), text, units * sizeof(char16_t));
    if (moreUnits != 0) std::memcpy(this->text() + units, more, moreUnits * sizeof(char16_t));
    this->text()[units + moreUnits] = 0;
  }
  ~BareText() { std::free(block_); }
  BareText(BareText const&) = delete;
  BareText& operator=(BareText const&) = delete;

  friend u16string plain(BareText const& text) { return u16string(text.text(), text.block_->units); }

 private:
  struct Header {
    unsigned int references;
    unsigned int units;
    char* narrow[2];
  };
  char16_t* text() const { return reinterpret_cast<char16_t*>(block_ + 1); }

  Header* block_;
};

class Row {
 public:
  explicit Row(std::string name) : name_(std::move(name)) {}

  // `work` is a function without arguments that returns the result.
  template <class Work>
  Row& add(char const* contestant, Work work) {
    return addPlain(contestant, work, [](auto const& result) { return plain(result); });
  }
  // The same for path texts, which are equal if they differ only in their separators.
  template <class Work>
  Row& addPath(char const* contestant, Work work) {
    return addPlain(contestant, work, [](auto const& result) { return withSlashes(plain(result)); });
  }
  // Times only the destruction of the objects that `prepare` returns, `batch` of them at a time.
  template <class Prepare>
  Row& addDestruction(char const* contestant, int batch, Prepare prepare);
  // For work that can be timed only once on an object, for instance because the object caches the result. Times `work`
  // on `batch` objects that `prepare` returned, each used once. Building these objects is not timed, and neither is the
  // destruction of objects and results.
  template <class Prepare, class Work>
  Row& addFresh(char const* contestant, int batch, Prepare prepare, Work work);
  // For work that can be timed only once in a process. The processes must outlive the measurement.
  Row& addOnce(char const* contestant, FreshProcesses const& processes, std::size_t work);

 private:
  template <class Work, class Plain>
  Row& addPlain(char const* contestant, Work work, Plain toPlain) {
    auto const run = [expected = expected_, label = label(contestant), work, toPlain](benchmark::State& state) {
      // Each repetition starts with the initial state of the work.
      Work timed = work;
      expect(*expected, toPlain(timed()), label);
      for (auto _ : state) benchmark::DoNotOptimize(timed());
    };
    benchmark::RegisterBenchmark(label(contestant).c_str(), run);
    return *this;
  }

  std::string label(char const* contestant) const { return name_ + "/" + contestant; }
  // Stores the first result of a row; ends the program with a message if a later result differs from it.
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

// Adds the four text classes as contestants, for work that is the same code for all of them; makeWork(Tag<Text>())
// returns it.
template <class MakeWork>
Row& addTexts(Row&& row, MakeWork makeWork) {
  return row.add("KVBase", makeWork(Tag<String>()))
      .add("u16string", makeWork(Tag<u16string>()))
      .add("QString", makeWork(Tag<QString>()))
      .add("UnicodeString", makeWork(Tag<UnicodeString>()));
}

}  // namespace bench
}  // namespace KV_1_1
