// SPDX-License-Identifier: MIT
//
// InfoStringMap against a list of entries that is searched from the front, and from several threads.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kvbase/records/info_string_map.h"
#include "tests/reference/text_kernels.h"
#include "tests/strings/string_support.h"
#include "tests/support/random_text.h"
#include "tests/support/threads.h"

namespace KV_1_1 {
namespace testing {
namespace {

// What a key is compared by: its lower-case form up to its first NUL; nothing for NIL, which stands before every text.
Text comparedForm(Text const& key) {
  if (!key) return key;
  return reference::lowerCase(key->substr(0, key->find(wchar(0))));
}

class InfoModel {
 public:
  using Entry = std::pair<Text, Text>;

  void add(Text const& key, Text const& value) {
    for (Entry& entry : entries_) {
      if (comparedForm(entry.first) != comparedForm(key)) continue;
      entry.second = value;
      return;
    }
    entries_.emplace_back(key, value);
  }

  // Nothing if there is no such key.
  std::optional<Text> find(Text const& key) const {
    for (Entry const& entry : entries_)
      if (comparedForm(entry.first) == comparedForm(key)) return entry.second;
    return std::nullopt;
  }

  std::string shown() const {
    std::vector<Entry> sorted = entries_;
    std::sort(sorted.begin(), sorted.end(),
              [](Entry const& a, Entry const& b) { return comparedForm(a.first) < comparedForm(b.first); });
    std::string text;
    for (Entry const& entry : sorted) text += spelled(entry.first) + '=' + spelled(entry.second) + ' ';
    return text;
  }

 private:
  std::vector<Entry> entries_;
};

std::string shownInfos(InfoStringMap const& map) {
  std::string text;
  for (auto const& info : map.getInfos()) text += spelled(info.first) + '=' + spelled(info.second) + ' ';
  return text;
}

// Short texts of few letters, so that keys meet again; NIL and EMPTY now and then.
Text randomInfo(RandomText& random) {
  if (random.oneIn(12)) return Text();
  if (random.oneIn(12)) return wstring();
  return random.text(random.below(3), random.oneIn(3) ? RandomUnits::kAnyWithNul : RandomUnits::kFew);
}

TEST(InfoStringMapModel, AgreesWithTheModelOnRandomChanges) {
  RandomText random(71);
  for (int round = 0; round < 60; ++round) {
    auto map = std::make_unique<InfoStringMap>();
    InfoModel model;
    for (int change = random.below(60); change > 0; --change) {
      Text const key = randomInfo(random);
      Text const value = randomInfo(random);
      map->addInfo<String>(stringOf(key), stringOf(value));
      model.add(key, value);
      if (random.oneIn(10)) map = std::make_unique<InfoStringMap>(*map);

      Text const asked = randomInfo(random);
      String const& found = map->getInfoByKey(stringOf(asked));
      std::optional<Text> const expected = model.find(asked);
      ASSERT_EQ(&found != &String::NIL, expected.has_value()) << spelled(asked);
      if (expected) {
        ASSERT_EQ(spelled(found), spelled(*expected)) << spelled(asked);
      }
    }
    ASSERT_EQ(shownInfos(*map), model.shown());
  }
}

TEST(InfoStringMapConcurrency, SeveralThreadsReadAndCopyOneMap) {
  InfoStringMap map;
  for (wchar unit = KVW('a'); unit <= KVW('z'); ++unit) map.addInfo<String>(String(&unit, 1), String(&unit, 1));
  InfoStringMap const& shared = map;
  int found[kThreads] = {};
  onThreads([&shared, &found](int thread) {
    for (int round = 0; round < 200; ++round) {
      InfoStringMap const copy(shared);
      String const value = shared.getInfoByKey(KVW("K"));
      if (value == KVW("k") && copy.getInfoByKey(value) == value && copy.getNumberInfos() == 26) ++found[thread];
    }
  });
  for (int const count : found) EXPECT_EQ(count, 200);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
