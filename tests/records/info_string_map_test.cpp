// SPDX-License-Identifier: MIT
#include "kvbase/records/info_string_map.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kvbase/core/smart_ptr.h"
#include "kvbase/modules/client_module.h"
#include "tests/strings/string_support.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

static_assert(sizeof(InfoStringMap::ClassCreator) == sizeof(mZClass), "the record of a class is a plain mZClass");

using Infos = InfoStringMap::Infos;

void add(InfoStringMap& map, String const& key, String const& value) {
  map.addInfo<String>(key, value);
}

// "key"="value" for each entry, in order.
std::string shown(Infos const& infos) {
  std::string text;
  for (auto const& info : infos) text += (text.empty() ? "" : " ") + spelled(info.first) + '=' + spelled(info.second);
  return text;
}
std::string shown(InfoStringMap const& map) {
  return shown(map.getInfos()) + (map.willExpire() ? "" : " stays");
}

unsigned int holdersOf(String const& text) {
  return (reinterpret_cast<StringVal const*>(static_cast<wchar const*>(text)) - 1)->inqRefCount();
}

// Two entries; it does not expire.
std::unique_ptr<InfoStringMap> someInfos() {
  auto map = std::make_unique<InfoStringMap>();
  add(*map, KVW("b"), KVW("2"));
  add(*map, KVW("A"), KVW("1"));
  map->setExpire(false);
  return map;
}

// --- Construction and copies --------------------------------------------------------------------------------------------

TEST(InfoStringMap, IsEmptyAtFirstAndExpires) {
  InfoStringMap const map;
  EXPECT_EQ(map.getNumberInfos(), 0u);
  EXPECT_TRUE(map.getInfos().empty());
  EXPECT_TRUE(map.willExpire());
}

// COMPAT: the copy constructor does not take over whether the source expires, assignment does.
TEST(InfoStringMap, ACopyExpiresThoughItsSourceDoesNot) {
  auto const source = someInfos();
  InfoStringMap const copy(*source);
  EXPECT_EQ(shown(copy), R"("A"="1" "b"="2")");
  EXPECT_TRUE(copy.willExpire());
  InfoStringMap assigned;
  assigned = *source;
  EXPECT_EQ(shown(assigned), R"("A"="1" "b"="2" stays)");
  EXPECT_FALSE(assigned.willExpire());
}

TEST(InfoStringMap, AnObjectMadeOfAMapExpires) {
  Infos const infos = {{KVW("x"), KVW("1")}, {String::NIL, KVW("none")}};
  InfoStringMap const map(infos);
  EXPECT_EQ(shown(map), R"(NIL="none" "x"="1")");
  EXPECT_TRUE(map.willExpire());
}

TEST(InfoStringMap, CopiesShareTheTexts) {
  String const key(KVW("key"));
  String const value(KVW("value"));
  InfoStringMap source;
  add(source, key, value);
  EXPECT_EQ(holdersOf(key), 2u);
  EXPECT_EQ(holdersOf(value), 2u);
  {
    InfoStringMap const copy(source);
    InfoStringMap const ofMap(source.getInfos());
    InfoStringMap assigned;
    assigned = source;
    EXPECT_TRUE(shares(copy.getInfos().begin()->first, key));
    EXPECT_EQ(holdersOf(key), 5u);
    EXPECT_EQ(holdersOf(value), 5u);
  }
  EXPECT_EQ(holdersOf(key), 2u);
  EXPECT_EQ(holdersOf(value), 2u);
}

TEST(InfoStringMap, ACopyIsIndependentOfItsSource) {
  auto const source = someInfos();
  InfoStringMap copy(*source);
  add(copy, KVW("a"), KVW("changed"));
  add(copy, KVW("c"), KVW("3"));
  EXPECT_EQ(shown(*source), R"("A"="1" "b"="2" stays)");
  EXPECT_EQ(shown(copy), R"("A"="changed" "b"="2" "c"="3")");
}

TEST(InfoStringMap, ACopyHasNoOwner) {
  SmartPtr<InfoStringMap> const source(new InfoStringMap);
  InfoStringMap const copy(*source);
  EXPECT_EQ(copy.getRefCounter(), 0u);
  InfoStringMap assigned;
  assigned = *source;
  EXPECT_EQ(assigned.getRefCounter(), 0u);
  EXPECT_EQ(source->getRefCounter(), 1u);
}

TEST(InfoStringMap, TheDestructorReleasesAllEntries) {
  String const text(KVW("text"));
  {
    SmartPtr<BaseNode const> const owned([&text] {
      auto* const map = new InfoStringMap;
      add(*map, text, text);
      add(*map, String::NIL, text);
      return map;
    }());
    EXPECT_EQ(holdersOf(text), 4u);
  }
  EXPECT_EQ(holdersOf(text), 1u);
}

// --- Assignment and setInfos --------------------------------------------------------------------------------------------

TEST(InfoStringMap, AssignmentRemovesTheEntriesOfBefore) {
  InfoStringMap target;
  String const old(KVW("old"));
  add(target, KVW("z"), old);
  EXPECT_EQ(&(target = *someInfos()), &target);
  EXPECT_EQ(shown(target), R"("A"="1" "b"="2" stays)");
  EXPECT_EQ(holdersOf(old), 1u);
  target = InfoStringMap();
  EXPECT_EQ(shown(target), "");
}

TEST(InfoStringMap, AssignedToItselfItKeepsItsEntriesInPlace) {
  auto const map = someInfos();
  String const* const value = &map->getInfoByKey(KVW("a"));
  InfoStringMap const& same = *map;
  *map = same;
  EXPECT_EQ(shown(*map), R"("A"="1" "b"="2" stays)");
  EXPECT_EQ(&map->getInfoByKey(KVW("a")), value);
}

TEST(InfoStringMap, SetInfosReplacesTheEntriesAndNothingElse) {
  auto const map = someInfos();
  map->setInfos({{KVW("x"), String::NIL}});
  EXPECT_EQ(shown(*map), R"("x"=NIL stays)");
  map->setExpire(true);
  map->setInfos(Infos());
  EXPECT_EQ(shown(*map), "");
  EXPECT_TRUE(map->willExpire());
}

TEST(InfoStringMap, SetInfosWithItsOwnInfosChangesNothing) {
  auto const map = someInfos();
  String const* const value = &map->getInfoByKey(KVW("a"));
  map->setInfos(map->getInfos());
  EXPECT_EQ(shown(*map), R"("A"="1" "b"="2" stays)");
  EXPECT_EQ(&map->getInfoByKey(KVW("a")), value);
}

TEST(InfoStringMap, SetInfosTakesTheInfosOfAnother) {
  InfoStringMap target;
  auto const source = someInfos();
  target.setInfos(source->getInfos());
  EXPECT_EQ(shown(target), R"("A"="1" "b"="2")");
  EXPECT_EQ(shown(*source), R"("A"="1" "b"="2" stays)");
}

// --- addInfo and getInfoByKey -------------------------------------------------------------------------------------------

TEST(InfoStringMap, KeysThatDifferInCaseAreOneEntry) {
  InfoStringMap map;
  add(map, KVW("Name"), KVW("first"));
  add(map, KVW("NAME"), KVW("second"));
  EXPECT_EQ(map.getNumberInfos(), 1u);
  EXPECT_EQ(spelled(map.getInfoByKey(KVW("name"))), R"("second")");
}

TEST(InfoStringMap, AnEntryKeepsItsKeyAsFirstSpelt) {
  InfoStringMap map;
  add(map, KVW("COLOUR"), KVW("red"));
  add(map, KVW("Colour"), KVW("blue"));
  EXPECT_EQ(shown(map), R"("COLOUR"="blue")");
}

TEST(InfoStringMap, NilIsAKeyOfItsOwnAndComesFirst) {
  InfoStringMap map;
  add(map, KVW("a"), KVW("of a"));
  add(map, String::EMPTY, KVW("of EMPTY"));
  add(map, String::NIL, KVW("of NIL"));
  EXPECT_EQ(map.getNumberInfos(), 3u);
  EXPECT_EQ(shown(map), R"(NIL="of NIL" ""="of EMPTY" "a"="of a")");
  EXPECT_EQ(spelled(map.getInfoByKey(String::NIL)), R"("of NIL")");
  EXPECT_EQ(spelled(map.getInfoByKey(String::EMPTY)), R"("of EMPTY")");
}

TEST(InfoStringMap, ANewEntrySharesKeyAndValue) {
  String const key(KVW("key"));
  String const value(KVW("value"));
  InfoStringMap map;
  add(map, key, value);
  EXPECT_TRUE(shares(map.getInfos().begin()->first, key));
  EXPECT_TRUE(shares(map.getInfoByKey(key), value));
}

TEST(InfoStringMap, AnotherValueReleasesTheOldOne) {
  String const older(KVW("older"));
  String const newer(KVW("newer"));
  InfoStringMap map;
  add(map, KVW("key"), older);
  String const& value = map.getInfoByKey(KVW("key"));
  add(map, KVW("key"), newer);
  EXPECT_TRUE(shares(value, newer));  // the reference still shows the value of the entry
  EXPECT_EQ(holdersOf(older), 1u);
  EXPECT_EQ(holdersOf(newer), 2u);
}

TEST(InfoStringMap, AValueThatIsSharedAlreadyStays) {
  String const value(KVW("value"));
  InfoStringMap map;
  add(map, KVW("key"), value);
  add(map, KVW("key"), value);
  EXPECT_EQ(holdersOf(value), 2u);
  // The entry's own value, whose only holder is the entry.
  map.addInfo<String>(KVW("own"), String(KVW("text")));
  add(map, KVW("OWN"), map.getInfoByKey(KVW("own")));
  EXPECT_EQ(spelled(map.getInfoByKey(KVW("own"))), R"("text")");
  EXPECT_EQ(holdersOf(map.getInfoByKey(KVW("own"))), 1u);
}

TEST(InfoStringMap, KeyAndValueMayBePartsOfTheMap) {
  auto const map = someInfos();
  String const& one = map->getInfoByKey(KVW("a"));
  add(*map, one, map->getInfos().begin()->first);
  EXPECT_EQ(shown(*map), R"("1"="A" "A"="1" "b"="2" stays)");
  add(*map, map->getInfos().begin()->first, one);
  EXPECT_EQ(shown(*map), R"("1"="1" "A"="1" "b"="2" stays)");
}

TEST(InfoStringMap, AValueMayBeNilOrEmpty) {
  InfoStringMap map;
  add(map, KVW("none"), String::NIL);
  add(map, KVW("empty"), String::EMPTY);
  EXPECT_EQ(map.getNumberInfos(), 2u);
  EXPECT_EQ(state(map.getInfoByKey(KVW("none"))), "NIL");
  EXPECT_EQ(state(map.getInfoByKey(KVW("empty"))), "EMPTY");
  add(map, KVW("empty"), String::NIL);
  EXPECT_EQ(shown(map), R"("empty"=NIL "none"=NIL)");
}

TEST(InfoStringMap, AMissingKeyGivesNilItself) {
  InfoStringMap map;
  EXPECT_EQ(&map.getInfoByKey(KVW("key")), &String::NIL);
  EXPECT_EQ(&map.getInfoByKey(String::NIL), &String::NIL);
  add(map, KVW("key"), KVW("value"));
  EXPECT_EQ(&map.getInfoByKey(KVW("other")), &String::NIL);
  EXPECT_EQ(&map.getInfoByKey(String::EMPTY), &String::NIL);
  EXPECT_EQ(map.getNumberInfos(), 1u);
}

TEST(InfoStringMap, AStoredNilIsNotTheConstant) {
  InfoStringMap map;
  add(map, KVW("key"), String::NIL);
  EXPECT_EQ(map.getInfoByKey(KVW("key")), String::NIL);
  EXPECT_NE(&map.getInfoByKey(KVW("key")), &String::NIL);
  EXPECT_EQ(&map.getInfoByKey(KVW("key")), &map.getInfos().begin()->second);
}

TEST(InfoStringMap, AFoundValueIsThatInTheMapAndStaysValid) {
  InfoStringMap map;
  add(map, KVW("m"), KVW("middle"));
  String const* const value = &map.getInfoByKey(KVW("M"));
  EXPECT_EQ(value, &map.getInfos().begin()->second);
  for (wchar unit = KVW('a'); unit <= KVW('z'); ++unit) add(map, String(&unit, 1), KVW("x"));
  EXPECT_EQ(map.getNumberInfos(), 26u);
  EXPECT_EQ(&map.getInfoByKey(KVW("m")), value);
}

// --- Failing allocations ------------------------------------------------------------------------------------------------

struct MapChange {
  char const* name;
  void (*change)(InfoStringMap& target, InfoStringMap const& source, String const& text);
};

MapChange const kMapChanges[] = {
    {"copy constructor",
     [](InfoStringMap&, InfoStringMap const& source, String const&) { InfoStringMap const copy(source); }},
    {"constructor of a map",
     [](InfoStringMap&, InfoStringMap const& source, String const&) { InfoStringMap const copy(source.getInfos()); }},
    {"operator=", [](InfoStringMap& target, InfoStringMap const& source, String const&) { target = source; }},
    {"setInfos",
     [](InfoStringMap& target, InfoStringMap const& source, String const&) { target.setInfos(source.getInfos()); }},
    {"addInfo, another key",
     [](InfoStringMap& target, InfoStringMap const&, String const& text) { target.addInfo<String>(text, text); }},
};

TEST(InfoStringMapAllocation, AFailureLeavesTheMapAsItWasAndReleasesWhatWasCopied) {
  auto const source = someInfos();
  add(*source, KVW("c"), KVW("3"));
  String const text(KVW("text"));
  for (MapChange const& row : kMapChanges) {
    SCOPED_TRACE(row.name);
    for (AllocationSweep sweep; sweep.next();) {
      InfoStringMap target;
      add(target, KVW("x"), text);
      sweep.run([&] { row.change(target, *source, text); });
      if (!sweep.failed()) continue;
      EXPECT_EQ(shown(target), R"("x"="text")");
      EXPECT_EQ(holdersOf(text), 2u);
    }
    EXPECT_EQ(holdersOf(text), 1u);
    EXPECT_EQ(shown(*source), R"("A"="1" "b"="2" "c"="3" stays)");
  }
}

TEST(InfoStringMapAllocation, AnotherValueForAKeyAllocatesNothing) {
  InfoStringMap map;
  add(map, KVW("key"), KVW("value"));
  String const key(KVW("KEY"));
  String const value(KVW("other"));
  AllocationSweep sweep(0);
  while (sweep.next()) sweep.run([&] { map.addInfo<String>(key, value); });
  EXPECT_EQ(sweep.failures(), 0);
  EXPECT_EQ(shown(map), R"("key"="other")");
}

// --- Class --------------------------------------------------------------------------------------------------------------

TEST(InfoStringMap, TheRecordStandsBelowObserverInfo) {
  mZClass const* const record = InfoStringMap::Class();
  EXPECT_EQ(narrow(record->name()), "InfoStringMap");
  EXPECT_EQ(record->parent(), ObserverInfo::Class());
  EXPECT_EQ(&record->module(), &getLibraryModule());
  EXPECT_EQ(record->version(), ClassVersion());
  EXPECT_EQ(record->create(), nullptr);
  EXPECT_NE(dynamic_cast<InfoStringMap::ClassCreator const*>(record), nullptr);
  EXPECT_EQ(InfoStringMap::Class(), record);
}

TEST(InfoStringMap, AnObjectLeadsToTheRecord) {
  InfoStringMap const map;
  BaseNode const& node = map;
  EXPECT_EQ(node.getClassType(), InfoStringMap::Class());
  EXPECT_TRUE(node.isKindOf(ObserverInfo::Class()));
  EXPECT_FALSE(ObserverInfo().isKindOf(InfoStringMap::Class()));
}

TEST(InfoStringMap, TheHooksDoNothing) {
  InfoStringMap::initStatics();
  InfoStringMap::clearStatics();
  EXPECT_EQ(InfoStringMap().getNumberInfos(), 0u);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
