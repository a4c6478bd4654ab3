// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <istream>
#include <iterator>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "kvbase/modules/client_module.h"
#include "kvbase/modules/module.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/module_instances.h"
#include "tests/support/scripted_locales.h"
#include "tests/support/scripted_modules.h"

namespace KV_1_1 {
namespace testing {
namespace {

using Log = std::vector<std::string>;
using Languages = std::vector<std::uint16_t>;

wchar const* const kType = KVW("TEXT");
wchar const* const kName = KVW("GREETING");
ulong32* const kNoLocale = nullptr;
constexpr ulong32 kSort = 0x10000;

// A module with a translation library. The bytes of a version are "<holder> <language>".
class ModuleResources : public ::testing::Test {
 protected:
  ModuleResources() : inModules_(modules), inLocales_(locales) {
    setInstances(owner.module(), modules.tool, modules.translation);
  }

  void put(HINSTANCE holder, Languages const& languages) {
    std::string const prefix = holder == modules.tool ? "tool " : "translation ";
    for (std::uint16_t const language : languages)
      modules.resources[holder][{kType, kName}][language] = prefix + std::to_string(language);
  }

  // What is found: the bytes.
  std::string found(bool localized, ulong32* locale) {
    std::pair<void*, ulong32> const bytes = module().getResource(kName, kType, localized, locale);
    return bytes.first != nullptr ? std::string(static_cast<char const*>(bytes.first), bytes.second) : "nothing";
  }

  Module const& module() { return owner.module(); }

  ScriptedModules modules;
  ScriptedLocales locales;
  ModuleOwner owner;

 private:
  platform::ScopedBackend<platform::ModuleApi> inModules_;
  platform::ScopedBackend<platform::LocaleApi> inLocales_;
};

// --- Where is searched --------------------------------------------------------------------------------------------------

TEST_F(ModuleResources, TheTranslationIsSearchedFirst) {
  put(modules.tool, {1031});
  put(modules.translation, {1033});
  EXPECT_EQ(module().findResource(kName, kType, true, kNoLocale), modules.translation);
  EXPECT_EQ(found(true, nullptr), "translation 1033");
}

TEST_F(ModuleResources, WithoutLocalisationOnlyTheModuleIsSearched) {
  put(modules.tool, {1031});
  put(modules.translation, {1033});
  EXPECT_EQ(module().findResource(kName, kType, false, kNoLocale), modules.tool);
  EXPECT_EQ(found(false, nullptr), "tool 1031");
}

TEST_F(ModuleResources, AResourceOfTheTranslationAloneIsNotFoundWithoutLocalisation) {
  put(modules.translation, {1033});
  EXPECT_EQ(module().findResource(kName, kType, false, kNoLocale), nullptr);
  EXPECT_EQ(found(false, nullptr), "nothing");
}

TEST_F(ModuleResources, AResourceOfTheModuleAloneIsFoundBehindTheTranslation) {
  put(modules.tool, {1031});
  EXPECT_EQ(module().findResource(kName, kType, true, kNoLocale), modules.tool);
  EXPECT_EQ(found(true, nullptr), "tool 1031");
  EXPECT_EQ(modules.log.front(), "findResource TEXT GREETING");
}

TEST_F(ModuleResources, WhatIsMissingInBothIsNotFound) {
  for (ulong32 const wanted : {1031u, 0u}) {
    modules.log.clear();
    ulong32 locale = wanted;
    EXPECT_EQ(module().findResource(kName, kType, true, &locale), nullptr);
    EXPECT_EQ(modules.log, Log(2, "findResource TEXT GREETING"));
    EXPECT_EQ(locale, wanted);
    EXPECT_EQ(module().getResource(kName, kType, true, &locale), (std::pair<void*, ulong32>()));
    EXPECT_EQ(locale, wanted);
  }
  EXPECT_EQ(locales.log, Log());
}

TEST_F(ModuleResources, NoOtherModuleIsSearched) {
  ModuleOwner other;
  setInstances(other.module(), modules.programHandle, modules.programHandle);
  modules.resources[modules.programHandle][{kType, kName}][1033] = "program";
  EXPECT_EQ(found(true, nullptr), "nothing");
}

TEST_F(ModuleResources, TheLanguageIsChosenWhereTheFallbackHasFound) {
  put(modules.tool, {1031, 1033});
  modules.preferredLanguages = {1031};
  ulong32 locale = 1033;
  EXPECT_EQ(found(true, &locale), "tool 1033");
  EXPECT_EQ(locale, 1033u);
}

// --- Names --------------------------------------------------------------------------------------------------------------

TEST_F(ModuleResources, ANilNameFindsNothingWithoutASearch) {
  put(modules.tool, {1031});
  ulong32 locale = 5;
  for (bool const localized : {false, true}) {
    EXPECT_EQ(module().findResource(String::NIL, kType, localized, &locale), nullptr);
    EXPECT_EQ(module().getResource(String::NIL, kType, localized, &locale), (std::pair<void*, ulong32>()));
    EXPECT_EQ(module().loadResource(String::NIL, kType, localized).get(), nullptr);
  }
  EXPECT_EQ(locale, 5u);
  EXPECT_EQ(modules.log, Log());
}

TEST_F(ModuleResources, AnEmptyNameIsSearched) {
  EXPECT_EQ(module().findResource(String::EMPTY, kType, false, kNoLocale), nullptr);
  EXPECT_EQ(modules.log, Log({"findResource TEXT "}));
}

TEST_F(ModuleResources, ANumberIsItsLow16Bits) {
  modules.resources[modules.tool][{kType, KVW("#17")}][1033] = "seventeen";
  EXPECT_EQ(module().findResource(17u, kType, false, kNoLocale), modules.tool);
  EXPECT_EQ(module().findResource(0xABCD0011u, kType, true, kNoLocale), modules.tool);
  EXPECT_EQ(module().getResource(17u, kType, false, kNoLocale).second, 9u);
  EXPECT_NE(module().loadResource(17u, kType, true).get(), nullptr);
}

TEST_F(ModuleResources, ANumberWithoutLowBitsIsNoName) {
  EXPECT_EQ(module().findResource(0u, kType, true, kNoLocale), nullptr);
  EXPECT_EQ(module().getResource(0x10000u, kType, true, kNoLocale).first, nullptr);
  EXPECT_EQ(module().loadResource(0u, kType, true).get(), nullptr);
  EXPECT_EQ(modules.log, Log());
}

TEST_F(ModuleResources, ATypeMayBeANumber) {
  modules.resources[modules.tool][{KVW("#10"), kName}][1033] = "raw";
  EXPECT_EQ(module().findResource(kName, platform::resourceId(10), false, kNoLocale), modules.tool);
}

// --- The language -------------------------------------------------------------------------------------------------------

TEST_F(ModuleResources, WithoutALocaleThePlainSearchStands) {
  put(modules.translation, {1031, 1033});
  modules.preferredLanguages = {1033};
  EXPECT_EQ(module().findResource(kName, kType, true, kNoLocale), modules.translation);
  // The languages have not been asked for, and the thread's locale has stayed.
  EXPECT_EQ(modules.log, Log({"findResource TEXT GREETING"}));
  EXPECT_EQ(locales.log, Log());
  EXPECT_EQ(found(true, nullptr), "translation 1033");
}

TEST_F(ModuleResources, TheWantedLanguageIsTaken) {
  put(modules.translation, {1031, 1033});
  locales.thread = 1036 | kSort;
  ulong32 locale = 1033;
  EXPECT_EQ(found(true, &locale), "translation 1033");
  EXPECT_EQ(locale, 1033 | kSort);
}

TEST_F(ModuleResources, ALanguageThatIsNotThereIsLeftToTheSystem) {
  put(modules.translation, {1031, 1033});
  modules.preferredLanguages = {1033};
  locales.thread = 1041 | kSort;
  ulong32 locale = 1036;
  EXPECT_EQ(found(true, &locale), "translation 1033");
  EXPECT_EQ(locale, 1041 | kSort);
  EXPECT_EQ(modules.calls("findResourceOfLanguage"), 0);
  EXPECT_EQ(locales.log, Log());
}

TEST_F(ModuleResources, ASingleLanguageDecidesByItself) {
  put(modules.translation, {1031});
  locales.thread = 1033 | kSort;
  ulong32 locale = 1033;
  EXPECT_EQ(found(true, &locale), "translation 1031");
  EXPECT_EQ(locale, 1031 | kSort);
}

TEST_F(ModuleResources, ThePrimaryLanguageStandsForItsSublanguages) {
  put(modules.tool, {7, 1033});
  ulong32 locale = 3079;  // German (Austria)
  EXPECT_EQ(found(false, &locale), "tool 7");
  EXPECT_EQ(locale, 7u);
}

TEST_F(ModuleResources, TheExactLanguageComesBeforeThePrimaryOne) {
  put(modules.tool, {7, 1031, 1033});
  ulong32 locale = 1031;
  EXPECT_EQ(found(false, &locale), "tool 1031");
}

TEST_F(ModuleResources, AnotherSublanguageIsNoMatch) {
  put(modules.tool, {1031, 1033});
  locales.thread = 1033;
  ulong32 locale = 3079;
  modules.preferredLanguages = {1033};
  EXPECT_EQ(found(false, &locale), "tool 1033");
  EXPECT_EQ(locale, 1033u);
}

TEST_F(ModuleResources, ALocaleOfZeroIsThatOfTheThread) {
  put(modules.tool, {1031, 1033});
  locales.thread = 1031 | kSort;
  modules.preferredLanguages = {1033};
  ulong32 locale = 0;
  EXPECT_EQ(found(false, &locale), "tool 1031");
  EXPECT_EQ(locale, 1031 | kSort);
}

TEST_F(ModuleResources, TheSortOrderIsFourBitsOfTheThreadsLocale) {
  put(modules.tool, {1031});
  locales.thread = 0xFFF00000 | kSort | 1033;
  ulong32 locale = 0x20000 | 1031;
  EXPECT_EQ(found(false, &locale), "tool 1031");
  EXPECT_EQ(locale, 1031 | kSort);
  EXPECT_EQ(locales.thread, 0xFFF00000 | kSort | 1033);
}

TEST_F(ModuleResources, OnlyTheLow16BitsOfTheWantedLocaleCount) {
  put(modules.tool, {1031, 1033});
  ulong32 locale = 0xFFFF0000 | 1031;
  EXPECT_EQ(found(false, &locale), "tool 1031");
  EXPECT_EQ(locale, 1031u);
}

TEST_F(ModuleResources, ANeutralVersionIsNoChoice) {
  put(modules.tool, {0});
  locales.thread = 1033 | kSort;
  ulong32 locale = 1031;
  EXPECT_EQ(found(false, &locale), "tool 0");
  EXPECT_EQ(locale, 1033 | kSort);
  EXPECT_EQ(modules.calls("findResourceOfLanguage"), 0);
}

TEST_F(ModuleResources, ANeutralVersionAmongOthersIsNoChoiceToo) {
  put(modules.tool, {0, 1033});
  modules.preferredLanguages = {1033};
  ulong32 locale = kSort;  // its language is 0, which is in the set
  EXPECT_EQ(found(false, &locale), "tool 1033");
  EXPECT_EQ(locale, locales.thread);
  EXPECT_EQ(modules.calls("findResourceOfLanguage"), 0);
}

TEST_F(ModuleResources, LanguagesThatCannotBeEnumeratedAreNoChoice) {
  put(modules.tool, {1031, 1033});
  modules.preferredLanguages = {1033};
  modules.failures.insert("resourceLanguages");
  locales.thread = 1036 | kSort;
  ulong32 locale = 1031;
  EXPECT_EQ(found(false, &locale), "tool 1033");
  EXPECT_EQ(locale, 1036 | kSort);
  EXPECT_EQ(locales.log, Log());
}

// The enumeration may add languages before it fails; they do not count.
TEST_F(ModuleResources, LanguagesOfAFailedEnumerationDoNotCount) {
  struct Failing final : ScriptedModules {
    bool resourceLanguages(HINSTANCE module, wchar const* type, wchar const* name,
                           std::set<unsigned short>& languages) override {
      ScriptedModules::resourceLanguages(module, type, name, languages);
      return false;
    }
  } failing;
  platform::ScopedBackend<platform::ModuleApi> const scope(failing);
  failing.resources[failing.tool][{kType, kName}][1031] = "bytes";
  ulong32 locale = 1031;
  EXPECT_EQ(found(false, &locale), "bytes");
  EXPECT_EQ(failing.calls("findResourceOfLanguage"), 0);
}

TEST_F(ModuleResources, AnEnumerationOfNoLanguagesIsNoChoice) {
  struct Empty final : ScriptedModules {
    bool resourceLanguages(HINSTANCE, wchar const*, wchar const*, std::set<unsigned short>&) override { return true; }
  } empty;
  platform::ScopedBackend<platform::ModuleApi> const scope(empty);
  empty.resources[empty.tool][{kType, kName}][1031] = "bytes";
  ulong32 locale = 1031;
  EXPECT_EQ(found(false, &locale), "bytes");
  EXPECT_EQ(locale, locales.thread);
  EXPECT_EQ(empty.calls("findResourceOfLanguage"), 0);
}

TEST_F(ModuleResources, AVersionThatIsNotFoundAfterAllLeavesTheSystemsChoice) {
  put(modules.tool, {1031, 1033});
  modules.preferredLanguages = {1033};
  modules.failures.insert("findResourceOfLanguage");
  locales.thread = 1036 | kSort;
  ulong32 locale = 1031;
  EXPECT_EQ(found(false, &locale), "tool 1033");
  EXPECT_EQ(locale, 1036 | kSort);
  EXPECT_EQ(modules.calls("findResourceOfLanguage"), 1);
  EXPECT_EQ(locales.thread, 1036 | kSort);
}

// --- The locale of the thread -------------------------------------------------------------------------------------------

TEST_F(ModuleResources, TheThreadHasTheLocaleOfTheVersionWhileItIsFound) {
  struct Watching final : ScriptedModules {
    explicit Watching(ScriptedLocales const& watched) : locales(watched) {}
    HRSRC findResourceOfLanguage(HINSTANCE module, wchar const* type, wchar const* name,
                                 std::uint16_t language) override {
      during = locales.thread;
      return ScriptedModules::findResourceOfLanguage(module, type, name, language);
    }
    ScriptedLocales const& locales;
    ulong32 during = 0;
  } watching(locales);
  platform::ScopedBackend<platform::ModuleApi> const scope(watching);
  watching.resources[watching.tool][{kType, kName}] = {{1031, "de"}, {1033, "en"}};
  locales.thread = 1033 | kSort;
  ulong32 locale = 1031;
  EXPECT_EQ(found(false, &locale), "de");
  EXPECT_EQ(watching.during, 1031 | kSort);
  EXPECT_EQ(locales.thread, 1033 | kSort);
  EXPECT_EQ(locales.log, Log({"setThreadLocale " + std::to_string(1031 | kSort),
                              "setThreadLocale " + std::to_string(1033 | kSort)}));
}

TEST_F(ModuleResources, TheThreadsLocaleIsNotSetWhereItIsTheSame) {
  put(modules.tool, {1031, 1033});
  locales.thread = 1031 | kSort;
  ulong32 locale = 1031;
  EXPECT_EQ(found(false, &locale), "tool 1031");
  EXPECT_EQ(modules.calls("findResourceOfLanguage"), 1);
  EXPECT_EQ(locales.log, Log());
}

TEST_F(ModuleResources, AThreadLocaleThatCannotBeSetChangesNothingElse) {
  put(modules.tool, {1031, 1033});
  locales.failures.insert("setThreadLocale");
  ulong32 locale = 1031;
  EXPECT_EQ(found(false, &locale), "tool 1031");
  EXPECT_EQ(locale, 1031u);
  EXPECT_EQ(locales.log, Log({"setThreadLocale 1031", "setThreadLocale 1033"}));
}

// --- Bytes --------------------------------------------------------------------------------------------------------------

TEST_F(ModuleResources, BytesAreThoseOfTheModuleItself) {
  put(modules.tool, {1033});
  std::string const& stored = modules.resources[modules.tool][{kType, kName}][1033];
  std::pair<void*, ulong32> const bytes = module().getResource(kName, kType, true, nullptr);
  EXPECT_EQ(bytes.first, stored.data());
  EXPECT_EQ(bytes.second, stored.size());
}

TEST_F(ModuleResources, AResourceOfNoBytesIsFoundButHasNone) {
  modules.resources[modules.tool][{kType, kName}][1031] = "";
  EXPECT_EQ(module().findResource(kName, kType, true, kNoLocale), modules.tool);
  EXPECT_EQ(module().getResource(kName, kType, true, kNoLocale), (std::pair<void*, ulong32>()));
  EXPECT_EQ(module().loadResource(kName, kType, true).get(), nullptr);
  ulong32 locale = 1033;
  EXPECT_EQ(module().getResource(kName, kType, true, &locale), (std::pair<void*, ulong32>()));
  EXPECT_EQ(locale, 1031u);
}

// A resource of no bytes in the translation is found, so the module is not asked.
TEST_F(ModuleResources, AResourceOfNoBytesHidesThatOfTheModule) {
  put(modules.tool, {1033});
  modules.resources[modules.translation][{kType, kName}][1033] = "";
  EXPECT_EQ(found(true, nullptr), "nothing");
}

TEST_F(ModuleResources, AResourceThatCannotBeLoadedHasNoBytes) {
  put(modules.tool, {1033});
  modules.failures.insert("resourceBytes");
  ulong32 locale = 1033;
  EXPECT_EQ(module().findResource(kName, kType, true, &locale), modules.tool);
  EXPECT_EQ(found(true, &locale), "nothing");
  EXPECT_EQ(module().loadResource(kName, kType, true).get(), nullptr);
}

TEST_F(ModuleResources, AnAddressIsNeededEvenWithASize) {
  struct Unlocked final : ScriptedModules {
    platform::ResourceBytes resourceBytes(HINSTANCE, HRSRC) override { return {nullptr, 5}; }
  } unlocked;
  platform::ScopedBackend<platform::ModuleApi> const scope(unlocked);
  unlocked.resources[unlocked.tool][{kType, kName}][1033] = "12345";
  EXPECT_EQ(module().getResource(kName, kType, true, kNoLocale), (std::pair<void*, ulong32>()));
}

// --- Streams ------------------------------------------------------------------------------------------------------------

TEST_F(ModuleResources, AStreamReadsTheBytesAsTheyAreStored) {
  std::string const stored(
      "a\r\n\xE4\0\x1A"
      "b",
      7);
  modules.resources[modules.tool][{kType, kName}][1033] = stored;
  auto const stream = module().loadResource(kName, kType, true);
  ASSERT_NE(stream.get(), nullptr);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(*stream), std::istreambuf_iterator<char>()), stored);
  EXPECT_EQ(stream->get(), std::char_traits<char>::eof());
  EXPECT_TRUE(stream->eof());
}

TEST_F(ModuleResources, AStreamCopiesNothing) {
  put(modules.tool, {1033});
  auto const stream = module().loadResource(kName, kType, true);
  ASSERT_NE(stream.get(), nullptr);
  modules.resources[modules.tool][{kType, kName}][1033][0] = 'T';
  EXPECT_EQ(stream->get(), 'T');
}

TEST_F(ModuleResources, AStreamReadsTokensAndLines) {
  modules.resources[modules.tool][{kType, kName}][1033] = "12 scans\r\nlast";
  auto const stream = module().loadResource(kName, kType, false);
  ASSERT_NE(stream.get(), nullptr);
  int number = 0;
  std::string line;
  *stream >> number;
  std::getline(*stream, line);
  EXPECT_EQ(number, 12);
  EXPECT_EQ(line, " scans\r");
  std::getline(*stream, line);
  EXPECT_EQ(line, "last");
  EXPECT_TRUE(stream->eof());
}

TEST_F(ModuleResources, AStreamHasNoPositionsAndTakesNoOutput) {
  put(modules.tool, {1033});
  auto const stream = module().loadResource(kName, kType, true);
  ASSERT_NE(stream.get(), nullptr);
  EXPECT_EQ(std::streamoff(stream->tellg()), -1);
  EXPECT_EQ(stream->rdbuf()->sputc('x'), std::char_traits<char>::eof());
  stream->seekg(0);
  EXPECT_TRUE(stream->fail());
}

TEST_F(ModuleResources, AStreamIsOfTheLanguageOfTheThread) {
  put(modules.translation, {1031, 1033});
  modules.preferredLanguages = {1033};
  locales.thread = 1031 | kSort;
  auto const stream = module().loadResource(kName, kType, true);
  ASSERT_NE(stream.get(), nullptr);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(*stream), std::istreambuf_iterator<char>()), "translation 1031");
  EXPECT_EQ(locales.log, Log());
}

TEST_F(ModuleResources, AStreamOfASingleLanguageIsBuiltInItsLocale) {
  put(modules.translation, {1031});
  locales.thread = 1033 | kSort;
  EXPECT_NE(module().loadResource(kName, kType, true).get(), nullptr);
  std::string const there = "setThreadLocale " + std::to_string(1031 | kSort);
  std::string const back = "setThreadLocale " + std::to_string(1033 | kSort);
  // Once while the version is found, once while the stream is built.
  EXPECT_EQ(locales.log, Log({there, back, there, back}));
  EXPECT_EQ(locales.thread, 1033 | kSort);
}

TEST_F(ModuleResources, AThreadLocaleThatHasNotChangedIsNotSetBack) {
  put(modules.translation, {1031});
  locales.failures.insert("setThreadLocale");
  EXPECT_NE(module().loadResource(kName, kType, true).get(), nullptr);
  EXPECT_EQ(locales.log, Log({"setThreadLocale 1031", "setThreadLocale 1033", "setThreadLocale 1031"}));
}

TEST_F(ModuleResources, TheStreamOfAMissingResourceIsEmpty) {
  EXPECT_EQ(module().loadResource(kName, kType, true).get(), nullptr);
  EXPECT_EQ(module().loadResource(3u, kType, false).get(), nullptr);
}

TEST_F(ModuleResources, AllBytesAsAText) {
  std::string const stored("a\0b\r\n\xFF", 6);
  modules.resources[modules.tool][{kType, kName}][1033] = stored;
  EXPECT_EQ(module().loadStringResource(kName, kType, true), stored);
}

TEST_F(ModuleResources, AllBytesOfALargeResource) {
  std::string stored;
  for (int i = 0; i < 300000; ++i) stored += static_cast<char>(i * 7);
  modules.resources[modules.tool][{kType, kName}][1033] = stored;
  EXPECT_EQ(module().loadStringResource(kName, kType, false), stored);
}

using ModuleResourcesDeathTest = ModuleResources;

TEST_F(ModuleResourcesDeathTest, TheTextOfAMissingResourceEndsTheProcess) {
  EXPECT_DEATH(module().loadStringResource(kName, kType, true), "");
}

// --- Memory -------------------------------------------------------------------------------------------------------------

TEST_F(ModuleResources, ExhaustedMemoryLeavesTheThreadsLocale) {
  put(modules.translation, {1031});
  put(modules.tool, {1031, 1033});
  locales.thread = 1033 | kSort;
  locales.logging = false;
  for (bool const localized : {false, true}) {
    for (AllocationSweep sweep(4); sweep.next();) {
      sweep.run([&] { module().loadResource(kName, kType, localized); });
      modules.log = Log();
      EXPECT_EQ(locales.thread, 1033 | kSort);
    }
  }
}

// --- Against a model ----------------------------------------------------------------------------------------------------

// The rules once more, step by step: the language of the version, and the locale.
struct Expected {
  std::uint16_t language;
  ulong32 locale;
};

Expected model(Languages const& there, std::uint16_t systems, ulong32 wanted, ulong32 thread, bool enumerates,
               bool findsLanguage) {
  if (wanted == 0) wanted = thread;
  Languages matches;
  if (there.size() == 1) matches = there;
  for (unsigned int const candidate : {wanted & 0xFFFF, wanted & 0x3FF}) {
    for (std::uint16_t const language : there) {
      if (language == candidate) matches.push_back(language);
    }
  }
  bool const chosen = enumerates && !matches.empty() && matches.front() != 0 && findsLanguage;
  if (!chosen) return {systems, thread};
  return {matches.front(), matches.front() + (thread & 0x000F0000)};
}

TEST_F(ModuleResources, EveryChoiceAgreesWithTheModel) {
  std::mt19937 random(4711);
  Languages const pool = {0, 7, 9, 1031, 1033, 1036, 2055, 3079};
  auto const any = [&random](std::size_t count) {
    return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
  };
  for (int round = 0; round < 3000; ++round) {
    SCOPED_TRACE(round);
    std::set<std::uint16_t> there;
    for (std::size_t i = any(4) + 1; i > 0; --i) there.insert(pool[any(pool.size())]);
    Languages const languages(there.begin(), there.end());
    std::uint16_t const systems = languages[any(languages.size())];
    ulong32 const wanted = any(5) == 0 ? 0 : pool[any(pool.size())] | static_cast<ulong32>(any(32) << 16);
    ulong32 const thread = pool[any(pool.size())] | static_cast<ulong32>(any(32) << 16);
    bool const enumerates = any(8) != 0;
    bool const findsLanguage = any(8) != 0;

    modules.resources.clear();
    put(modules.tool, languages);
    modules.preferredLanguages = {systems};
    modules.failures.clear();
    if (!enumerates) modules.failures.insert("resourceLanguages");
    if (!findsLanguage) modules.failures.insert("findResourceOfLanguage");
    locales.thread = thread;
    ulong32 locale = wanted;
    Expected const expected = model(languages, systems, wanted, thread, enumerates, findsLanguage);
    ASSERT_EQ(found(false, &locale), "tool " + std::to_string(expected.language));
    ASSERT_EQ(locale, expected.locale);
    ASSERT_EQ(locales.thread, thread);
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
