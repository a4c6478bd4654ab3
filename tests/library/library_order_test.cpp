// SPDX-License-Identifier: MIT
//
// Which objects exist as soon as the library is loaded, and the order in which they are destroyed.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "kvbase/core/lazy.h"
#include "kvbase/kvbase.h"
#include "kvbase/modules/client_module.h"
#include "kvbase/records/internal/inverse_length_table.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

using Log = std::vector<std::string>;

// --- At load: as a static initialiser of the tests finds it, which runs after those of the library -----------------------

std::vector<std::string> classesNow() {
  std::vector<std::string> names;
  for (mZClass const* c = nullptr; mZClass::iterateAllClasses(c);) {
    if (&c->module() == &getLibraryModule()) names.push_back(narrow(c->name()));
  }
  return names;
}

unsigned int ownersOf(String const& text) {
  return (reinterpret_cast<StringVal const*>(static_cast<wchar const*>(text)) - 1)->inqRefCount();
}

struct Start {
  std::vector<std::string> classes = classesNow();
  bool emptyStands = String::EMPTY.length() == 0 && String::EMPTY != String::NIL;
  bool firstModuleIsTheLibrarys = Module::begin() != Module::end() && &*Module::begin() == &getLibraryModule();
  wchar outOfRange = String::outOfRange;
  bool emptySymbolsStand =
      SymbolTable::EMPTY[String::EMPTY] == 0xFFFFFFFF && SymbolTable(SymbolTable::EMPTY)[0].empty();
  double firstInverseLength = records::inverseLengthTable.factors[0];
  double lastInverseLength = records::inverseLengthTable.factors[8191];
  float floatEpsilon = KVBoundingBoxTraits<float>::epsilon;
  double doubleRoot = KVBoundingBoxTraits<double>::sqrt(6.25);
  std::string info = [] {
    InfoStringMap map;
    map.addInfo<String>(KVW("key"), KVW("value"));
    return narrow(static_cast<wchar const*>(map.getInfoByKey(KVW("KEY"))));
  }();
  // A path parsed before main.
  std::string text = narrow(static_cast<wchar const*>(Directory::fromString(KVW("c:/a/../b"))->getFullName()));
};
// Never destroyed, because destructors that run at the end of the process read it.
Start const& start = *new Start;

TEST(LibraryOrder, RecordsExistBeforeOtherInitialisersInTheOrderOfTheWalk) {
  EXPECT_EQ(start.classes, Log({"BaseNode", "ObserverInfo", "InfoStringMap", "FileSystemIterator", "FileIterator",
                                "FileCollectionIterator", "DirectoryIterator", "FileSystemItem", "File", "Directory"}));
  EXPECT_EQ(classesNow(), start.classes);
}

TEST(LibraryOrder, TheLibrarysModuleIsTheFirst) {
  EXPECT_TRUE(start.firstModuleIsTheLibrarys);
}

TEST(LibraryOrder, TextsExistBeforeOtherInitialisers) {
  EXPECT_TRUE(start.emptyStands);
  EXPECT_EQ(start.outOfRange, 7);
  EXPECT_EQ(start.text, "C:\\b\\");
}

TEST(LibraryOrder, TheEmptySymbolTableExistsBeforeOtherInitialisers) {
  EXPECT_TRUE(start.emptySymbolsStand);
}

TEST(LibraryOrder, EmptyCountsItselfAndTheStringsThatShareIt) {
  unsigned int const before = ownersOf(String::EMPTY);
  EXPECT_GE(before, 1u);
  {
    String const shared = String::EMPTY;
    String const cut = String(KVW("abc")).substr(2, 1);
    EXPECT_EQ(ownersOf(String::EMPTY), before + 2);
  }
  EXPECT_EQ(ownersOf(String::EMPTY), before);
}

TEST(LibraryOrder, TheRecordsOfTheScanningCodeCanBeUsedBeforeOtherInitialisers) {
  EXPECT_EQ(start.firstInverseLength, 1.0 / 126);
  EXPECT_EQ(start.lastInverseLength, 1.0 / std::sqrt(64.0 * 64 + 62 * 62));
  EXPECT_EQ(start.floatEpsilon, 1e-5f);
  EXPECT_EQ(start.doubleRoot, 2.5);
  EXPECT_EQ(start.info, "value");
}

// --- Lazy objects -------------------------------------------------------------------------------------------------------

class Probe {
 public:
  Probe(Log& log, char const* name) : log_(log), name_(name) { log_.push_back("up " + name_); }
  ~Probe() { log_.push_back("down " + name_); }
  std::string const& name() const { return name_; }

 private:
  Log& log_;
  std::string name_;
};

TEST(LibraryOrder, LazyObjectsAreDestroyedNewestFirst) {
  Log log;
  AtExitList::Entry* const mark = AtExitList::newest();
  Lazy<Probe> a(log, "a");
  Lazy<Probe> b(log, "b");
  Lazy<Probe const> c(log, "c");
  EXPECT_EQ(a.get().name() + b.get().name() + c.get().name(), "abc");
  EXPECT_NE(AtExitList::newest(), mark);
  AtExitList::destroyDownTo(mark);
  EXPECT_EQ(log, Log({"up a", "up b", "up c", "down c", "down b", "down a"}));
  EXPECT_EQ(AtExitList::newest(), mark);
  AtExitList::destroyDownTo(mark);
  EXPECT_EQ(log.size(), 6u);
}

TEST(LibraryOrder, OnlyObjectsRegisteredAfterTheMarkAreDestroyed) {
  Log log;
  AtExitList::Entry* const mark = AtExitList::newest();
  Lazy<Probe> a(log, "a");
  AtExitList::Entry* const behindA = AtExitList::newest();
  Lazy<Probe> b(log, "b");
  log.clear();
  AtExitList::destroyDownTo(behindA);
  EXPECT_EQ(log, Log({"down b"}));
  AtExitList::destroyDownTo(mark);
  EXPECT_EQ(log, Log({"down b", "down a"}));
}

TEST(LibraryOrder, ObjectsBuiltDuringDestructionAreDestroyedToo) {
  struct Builder {
    Builder(Lazy<Probe>*& place, Log& log) : place_(place), log_(log) {}
    ~Builder() { place_ = new Lazy<Probe>(log_, "late"); }
    Lazy<Probe>*& place_;
    Log& log_;
  };
  Log log;
  Lazy<Probe>* late = nullptr;
  AtExitList::Entry* const mark = AtExitList::newest();
  Lazy<Probe> a(log, "a");
  Lazy<Builder> builder(late, log);
  log.clear();
  AtExitList::destroyDownTo(mark);
  EXPECT_EQ(log, Log({"up late", "down late", "down a"}));
  delete late;
}

TEST(LibraryOrder, AnObjectThatThrowsIsNotRegistered) {
  struct Thrower {
    Thrower() { throw 1; }
  };
  AtExitList::Entry* const mark = AtExitList::newest();
  EXPECT_THROW(Lazy<Thrower>{}, int);
  EXPECT_EQ(AtExitList::newest(), mark);
}

// At the end of the process lazy objects are destroyed newest first, while the class records still exist and texts work.
struct Farewell {
  explicit Farewell(char const* name) : name_(name) {}
  ~Farewell() {
    bool const records = classesNow() == start.classes;
    bool const texts = (String(KVW("x")) + String::EMPTY).length() == 1;
    std::fprintf(stderr, "%s%s%s;", name_, records ? "+records" : "", texts ? "+texts" : "");
  }
  char const* name_;
};

TEST(LibraryOrderDeathTest, LazyObjectsAreDestroyedBeforeRecordsAndTexts) {
  EXPECT_EXIT(
      {
        new Lazy<Farewell>("older");
        new Lazy<Farewell>("newer");
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "newer\\+records\\+texts;older\\+records\\+texts;");
}

// A record that a program adds below those of the library is destroyed before them, and its module after it. Texts and the
// empty symbol table still work in the destructor of a static object of the program.
TEST(LibraryOrderDeathTest, RecordsOfAProgramAreDestroyedBeforeThoseOfTheLibrary) {
  struct Client {
    String text = String(KVW(" early ")).trim();
    ModuleOwner owner;
    mZClass record{KVW("Client"), BaseNode::Class(), owner.module(), ClassVersion()};
    ~Client() {
      bool const stands = record.isDerivedFrom(BaseNode::Class()) && classesNow() == start.classes &&
                          (text + KVW(" and late")).trim() == KVW("early and late") &&
                          SymbolTable::EMPTY[text] == 0xFFFFFFFF;
      std::fprintf(stderr, "client%s;", stands ? "+library" : "");
    }
  };
  EXPECT_EXIT(
      {
        static Client const client;
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "client\\+library;");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
