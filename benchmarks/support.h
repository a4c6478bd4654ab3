// SPDX-License-Identifier: MIT
//
// A row of the comparison is one piece of work, done by KVBase and by other libraries, its peers, in one process:
//
//   Row("storage: a + b, 50 + 50")
//       .add("KVBase", [a = String(text), b = String(text)] { return a + b; })
//       .add(PEER("QString", [a = QString(text), b = QString(text)] { return QString(a + b); }));
//
// PEER is around a contestant that only Linux has, WINDOWS_PEER around one that only Windows has.
// Each call of add adds a contestant; the first is KVBase. Before the work of a contestant is timed, it is run once and
// its result is converted to a text. The program ends with a message if two contestants of a row give different texts.
//
// The destruction of a result is timed too. benchmarks/goals.tsv lists the rows and their goals.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/driver.h"
#include "benchmarks/texts.h"
#include "peers.h"

namespace KV_1_1 {
namespace bench {

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
void addCallStack();
void addDiagnostics();  // on Linux only

// Called before the first measurement: what makes one measurement in this process like the next.
void steadyProcess();

// Stands for a contestant that this system does not have: see PEER in peers.h.
struct Absent {};

[[noreturn]] void failPremise(char const* premise);
// Ends the program with a message if an assumption of the rows does not hold.
inline void require(bool holds, char const* premise) {
  if (!holds) failPremise(premise);
}
inline void require(Absent) {}

class FreshProcesses;  // on Linux only

class Row {
 public:
  explicit Row(std::string name) : name_(std::move(name)) {}

  // A peer that this system does not have adds nothing.
  Row& add(Absent) { return *this; }
  Row& addPath(Absent) { return *this; }
  Row& addDestruction(Absent) { return *this; }
  Row& addFresh(Absent) { return *this; }
  Row& addOnce(Absent) { return *this; }

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
    addContestant(name_, contestant, [expected = expected_, label = label(contestant), work, toPlain](long long n) {
      // Each slice starts with the initial state of the work.
      Work timed = work;
      expect(*expected, toPlain(timed()), label);
      Stopwatch const watch;
      for (long long i = 0; i < n; ++i) keep(timed());
      return Measured{n, watch.nanoseconds()};
    });
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
  addContestant(name_, contestant, [expected = expected_, label = label(contestant), prepare, batch](long long n) {
    expect(*expected, plain(prepare()), label);
    std::vector<decltype(prepare())> things;
    things.reserve(static_cast<std::size_t>(batch));
    Measured measured = {};
    while (measured.iterations < n) {
      for (int i = 0; i < batch; ++i) things.push_back(prepare());
      Stopwatch const watch;
      things.clear();
      keepWrites();
      measured.nanoseconds += watch.nanoseconds();
      measured.iterations += batch;
    }
    return measured;
  });
  return *this;
}

template <class Prepare, class Work>
Row& Row::addFresh(char const* contestant, int batch, Prepare prepare, Work work) {
  addContestant(name_, contestant,
                [expected = expected_, label = label(contestant), prepare, work, batch](long long n) {
                  auto first = prepare();
                  expect(*expected, plain(work(first)), label);
                  std::vector<decltype(prepare())> things;
                  std::vector<decltype(work(first))> results;
                  things.reserve(static_cast<std::size_t>(batch));
                  results.reserve(static_cast<std::size_t>(batch));
                  Measured measured = {};
                  while (measured.iterations < n) {
                    for (int i = 0; i < batch; ++i) things.push_back(prepare());
                    Stopwatch const watch;
                    for (auto& thing : things) results.push_back(work(thing));
                    keepWrites();
                    measured.nanoseconds += watch.nanoseconds();
                    measured.iterations += batch;
                    results.clear();
                    things.clear();
                  }
                  return measured;
                });
  return *this;
}

template <class Text>
struct Tag {
  using Type = Text;
};

// Adds the four text classes as contestants, for work that is the same code for all of them; makeWork(Tag<Text>())
// returns it.
template <class MakeWork>
Row addTexts(Row row, MakeWork makeWork) {
  row.add("KVBase", makeWork(Tag<String>()))
      .add("u16string", makeWork(Tag<u16string>()))
      .add(PEER("QString", makeWork(Tag<QString>())))
      .add(PEER("UnicodeString", makeWork(Tag<UnicodeString>())));
  return row;
}

}  // namespace bench
}  // namespace KV_1_1
