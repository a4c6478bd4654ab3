// SPDX-License-Identifier: MIT
//
// Random worlds: languages, abbreviations, folders, files, arguments, settings and failing calls. Results and every call
// of the platform are compared with those of the model.
#include <gtest/gtest.h>

#include <stdexcept>

#include "kvbase/languages/language_selection.h"
#include "tests/languages/language_world.h"
#include "tests/reference/language_search_model.h"
#include "tests/support/random_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

template <class T>
T const& oneOf(RandomText& random, std::vector<T> const& values) {
  return values[static_cast<std::size_t>(random.below(static_cast<int>(values.size())))];
}

// Few ids, so that they repeat; full ones, primary ones and none.
std::uint16_t randomId(RandomText& random) {
  static std::vector<std::uint16_t> const ids = {kGerman, kAustrian, kFrench,     kJapanese, 2057, 9,
                                                 7,       12,        kNoLanguage, 1023,      17,   kEnglish};
  return oneOf(random, ids);
}

wstring randomAbbreviation(RandomText& random) {
  static std::vector<wstring> const abbreviations = {KVW("DEU"), KVW("FRA"), KVW("deu"), KVW("A"), KVW("ENU"), KVW("")};
  return oneOf(random, abbreviations);
}

wstring randomModule(RandomText& random) {
  static std::vector<wstring> const modules = {
      KVW("C:\\app\\tool.dll"),   KVW("C:\\app\\tool.x.dll"), KVW("C:\\my.app\\tool"),   KVW("tool.dll"),
      KVW("C:\\100%\\tool.dll"),  KVW("C:\\%%\\to%%ol.dll"),  KVW("C:\\a%ls\\tool.dll"), KVW("C:\\app\\tool%.dll"),
      KVW("C:\\%%%\\tool%%.dll"), KVW("\\opt\\tool.so"),      KVW("C:\\app\\.dll")};
  return oneOf(random, modules);
}

wstring randomArgument(RandomText& random) {
  static std::vector<wstring> const arguments = {KVW("-lang="),    KVW("/LANG=deu"), KVW("-lang=A"), KVW("-lang=fran"),
                                                 KVW("+lang=deu"), KVW("x"),         KVW(""),        KVW("-lang=%d")};
  return oneOf(random, arguments);
}

void makeLanguages(RandomText& random, LanguageWorld& world) {
  world.setLanguages(randomId(random), randomId(random), randomId(random), randomId(random));
  world.locales.abbreviations.clear();
  for (int i = 0; i < 10; ++i) world.locales.abbreviations[randomId(random)] = randomAbbreviation(random);
  world.locales.groups.clear();
  for (ulong32 group = 1; group < 4; ++group) {
    world.locales.groups.push_back({group, {randomId(random), randomId(random) | 0x10000u}});
  }
}

void makeForced(RandomText& random, LanguageWorld& world) {
  if (random.oneIn(3)) world.setArguments({randomArgument(random), randomArgument(random)});
  if (random.oneIn(3)) {
    wstring const value = random.oneIn(4) ? KVW("fran") : randomAbbreviation(random);
    world.setRegistry(static_cast<ulong32>(random.between(1, 3)), ScriptedSettings::bytesOf(value));
  }
  if (random.oneIn(8) && !world.settings.keys.empty()) world.settings.keys.erase(world.settings.keys.begin());
}

void makeProduct(RandomText& random, LanguageWorld& world, wstring const& module) {
  wstring const file = LanguageSearchModel::fileOf(module);
  world.shell.hasCommonFiles = !random.oneIn(8);
  world.shell.commonFiles = random.oneIn(2) ? KVW("C:\\Common") : KVW("C:\\Common\\");
  if (random.oneIn(3)) return;
  if (!random.oneIn(8)) world.setTranslation(file);
  for (wchar const* key : {KVW("CompanyName"), KVW("ProductName"), KVW("ProductVersion")}) {
    if (random.oneIn(2)) world.setText(file, key, random.oneIn(8) ? KVW("%s") : KVW("value"));
  }
  if (random.oneIn(8)) world.modules.versions[file].values[KVW("\\StringFileInfo\\040904b0\\ProductName")].clear();
}

// Any of the paths at which a search may look.
void makeFiles(RandomText& random, LanguageWorld& world, wstring const& module) {
  std::string const name = narrow(LanguageSearchModel::fileOf(module));
  wstring const folder = module.substr(0, module.size() - name.size());
  std::vector<wstring> const folders = {folder, folder + KVW("languages\\"), KVW("C:\\Common\\value\\value\\value\\"),
                                        KVW("C:\\%\\"),
                                        KVW("C:\\Common\\VOLQ Fabrication GmbH\\custom product\\internal\\")};
  std::vector<wstring> const stems = {LanguageSearchModel::stemOf(module), KVW("to%ol"), KVW("tool%")};
  for (int count = random.below(60); count > 0; --count) {
    world.modules.files.insert(oneOf(random, folders) + oneOf(random, stems) + randomAbbreviation(random) +
                               KVW(".dll"));
  }
}

void makeWorld(std::uint32_t seed, LanguageWorld& world) {
  RandomText random(seed);
  wstring const module = randomModule(random);
  world.modules.paths[world.tool()] = module;
  if (random.oneIn(8)) world.modules.longPaths[module] = randomModule(random);
  makeLanguages(random, world);
  makeForced(random, world);
  makeProduct(random, world, module);
  makeFiles(random, world, module);
  if (random.oneIn(3)) world.modules.failAt = random.between(1, 12);
  if (random.oneIn(4)) world.locales.failAt = random.between(1, 6);
  if (random.oneIn(8)) world.settings.failAt = random.between(1, 6);
}

struct Outcome {
  std::string result;
  Texts calls;
};

template <class Work>
Outcome outcomeOf(std::uint32_t seed, Work work) {
  LanguageWorld world;
  makeWorld(seed, world);
  Outcome outcome;
  try {
    outcome.result = work(world);
  } catch (std::runtime_error const& error) {
    outcome.result = error.what();
  }
  for (Texts const* log : {&world.modules.log, &world.locales.log, &world.settings.log, &world.shell.log}) {
    outcome.calls.insert(outcome.calls.end(), log->begin(), log->end());
  }
  return outcome;
}

TEST(LanguageSearchRandom, FilesAreFoundAsInTheModel) {
  int found = 0;
  for (std::uint32_t seed = 1; seed <= 1500; ++seed) {
    bool const prefix = seed % 8 != 0;
    unsigned short const preferred = seed % 3 == 0 ? kFrench : kNoLanguage;
    Outcome const actual = outcomeOf(seed, [&](LanguageWorld& world) {
      LanguageFile const file = FindLanguageFile(world.tool(), KVW("%ls.dll"), prefix, preferred);
      found += file.path.empty() ? 0 : 1;
      return narrow(file.path) + ' ' + std::to_string(file.langId);
    });
    Outcome const expected = outcomeOf(seed, [&](LanguageWorld& world) {
      auto const file = LanguageSearchModel::find(world.tool(), KVW("%ls.dll"), prefix, preferred);
      return narrow(file.path) + ' ' + std::to_string(file.langId);
    });
    ASSERT_EQ(actual.result, expected.result) << "seed " << seed;
    ASSERT_EQ(actual.calls, expected.calls) << "seed " << seed;
  }
  // Both happens often in these worlds.
  EXPECT_GT(found, 200);
  EXPECT_LT(found, 1300);
}

std::string joined(std::vector<wstring> const& abbrevs) {
  std::string text;
  for (wstring const& abbrev : abbrevs) text += narrow(abbrev) + ' ';
  return text;
}

TEST(LanguageSearchRandom, UsedLanguagesAreThoseOfTheModel) {
  for (std::uint32_t seed = 1; seed <= 1000; ++seed) {
    Outcome const actual = outcomeOf(seed, [](LanguageWorld&) { return joined(GetUsedLangAbbrevs()); });
    Outcome const expected = outcomeOf(seed, [](LanguageWorld&) { return joined(LanguageSearchModel::used()); });
    ASSERT_EQ(actual.result, expected.result) << "seed " << seed;
    ASSERT_EQ(actual.calls, expected.calls) << "seed " << seed;
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
