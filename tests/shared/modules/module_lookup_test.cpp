// SPDX-License-Identifier: MIT
//
// Lookup in real modules with a real translation library.
#include <gtest/gtest.h>

#include <istream>
#include <iterator>
#include <memory>
#include <string>

#include "kvbase/platform/module_api.h"
#include "tests/shared/modules/started_module.h"
#include "tests/support/temp_folder.h"
#include "tests/support/thread_locale.h"
#include "tests/support/user_setting.h"

namespace KV_1_1 {
namespace testing {
namespace {

using platform::resourceId;

wchar const* const kMetadata = KVW("METADATA");

// The tool with a translation that the user's settings force.
class ModuleLookupFiles : public ::testing::Test {
 protected:
  ModuleLookupFiles() {
    copyModule(folder, "tool", "tool");
    copyTranslation(folder, "toolabc", "toolabc");
    UserSetting const setting(kProgram, "abc");
    tool.reset(new StartedModule(folder.path(moduleFile("tool"))));
  }
  Module const& module() { return tool->module(); }

  std::string bytes(wchar const* name, bool localized, ulong32* locale) {
    std::pair<void*, ulong32> const found = module().getResource(String(name), kMetadata, localized, locale);
    if (found.first == nullptr) {
      EXPECT_EQ(found.second, 0u);
      return "(none)";
    }
    return std::string(static_cast<char const*>(found.first), found.second);
  }
  bool isInModule(wchar const* name, bool localized) {
    HINSTANCE const holder = module().findResource(String(name), kMetadata, localized, nullptr);
    EXPECT_NE(holder, nullptr);
    return holder == tool->instance();
  }

  TempFolder folder;
  ThreadLocale const english{1033};
  std::unique_ptr<StartedModule> tool;
};

// The tool alone.
class ModuleLookupWithoutTranslation : public ModuleLookupFiles {
 protected:
  ModuleLookupWithoutTranslation() {
    tool.reset();
    UserSetting const setting(kProgram, "xyz");
    tool.reset(new StartedModule(folder.path(moduleFile("tool"))));
  }
};

TEST_F(ModuleLookupFiles, ATranslationIsSearchedFirst) {
  EXPECT_FALSE(isInModule(KVW("RESOURCE.H"), /*localized=*/true));
  EXPECT_TRUE(isInModule(KVW("RESOURCE.H"), /*localized=*/false));
  EXPECT_EQ(bytes(KVW("RESOURCE.H"), /*localized=*/true, nullptr).substr(0, 29), "// Symbols of the translation");
  EXPECT_EQ(bytes(KVW("RESOURCE.H"), /*localized=*/false, nullptr).substr(0, 22), "// Symbols of the tool");
}

TEST_F(ModuleLookupFiles, TheModuleHasWhatItsTranslationLacks) {
  EXPECT_TRUE(isInModule(KVW("ONLYMODULE"), /*localized=*/true));
  EXPECT_EQ(bytes(KVW("ONLYMODULE"), /*localized=*/true, nullptr), "of the module");
  EXPECT_EQ(bytes(KVW("onlymodule"), /*localized=*/false, nullptr), "of the module");
}

TEST_F(ModuleLookupFiles, WhatOnlyTheTranslationHasIsNotInTheModule) {
  EXPECT_EQ(bytes(KVW("ONLYTRANSLATION"), /*localized=*/true, nullptr), "of the translation");
  EXPECT_EQ(bytes(KVW("ONLYTRANSLATION"), /*localized=*/false, nullptr), "(none)");
  EXPECT_EQ(module().findResource(String(KVW("ONLYTRANSLATION")), kMetadata, false, nullptr), nullptr);
}

TEST_F(ModuleLookupFiles, OtherModulesAreNotSearched) {
  copyModule(folder, "tool", "other");
  copyModule(folder, "no_metadata", "bare");
  StartedModule other(folder.path(moduleFile("other")));
  StartedModule bare(folder.path(moduleFile("bare")));
  EXPECT_EQ(bare.module().findResource(String(KVW("ONLYMODULE")), kMetadata, true, nullptr), nullptr);
  EXPECT_EQ(other.module().findResource(String(KVW("ONLYTRANSLATION")), kMetadata, true, nullptr), nullptr);
}

TEST_F(ModuleLookupFiles, ANilNameFindsNothing) {
  for (bool const localized : {false, true}) {
    ulong32 locale = 1031;
    EXPECT_EQ(module().findResource(String::NIL, kMetadata, localized, &locale), nullptr);
    EXPECT_EQ(module().getResource(String::NIL, kMetadata, localized, nullptr).first, nullptr);
    EXPECT_EQ(module().loadResource(String::NIL, kMetadata, localized).get(), nullptr);
    EXPECT_EQ(locale, 1031u);
  }
}

TEST_F(ModuleLookupFiles, NumbersAreNamesByTheirLow16Bits) {
  EXPECT_EQ(module().findResource(17u, kMetadata, true, nullptr), tool->instance());
  EXPECT_EQ(module().findResource(0x50011u, kMetadata, false, nullptr), tool->instance());
  EXPECT_EQ(module().findResource(99u, kMetadata, true, nullptr), nullptr);
  std::pair<void*, ulong32> const found = module().getResource(18u, resourceId(300), true, nullptr);
  ASSERT_EQ(found.second, 8u);
  EXPECT_EQ(std::string(static_cast<char const*>(found.first), 8), std::string("\x00\x01\x7f\xff\x00\x00\x0d\x1a", 8));
}

TEST_F(ModuleLookupFiles, AResourceOfNoBytesIsFoundButHasNothing) {
  // The translation has one too, and that ends the search.
  for (bool const localized : {false, true}) {
    EXPECT_NE(module().findResource(String(KVW("EMPTY")), kMetadata, localized, nullptr), nullptr);
    EXPECT_EQ(bytes(KVW("EMPTY"), localized, nullptr), "(none)");
    EXPECT_EQ(module().loadResource(String(KVW("EMPTY")), kMetadata, localized).get(), nullptr);
  }
}

TEST_F(ModuleLookupFiles, AStreamReadsTheBytesAsTheyAre) {
  auto const stream = module().loadResource(String(KVW("BYTES")), kMetadata, true);
  ASSERT_NE(stream.get(), nullptr);
  std::string const read((std::istreambuf_iterator<char>(*stream)), std::istreambuf_iterator<char>());
  EXPECT_EQ(read, std::string("\x00\x01\x7f\xff\x00\x00\x0d\x1a", 8));
  EXPECT_EQ(module().loadStringResource(String(KVW("BYTES")), kMetadata, true), read);
  auto const byNumber = module().loadResource(17u, kMetadata, false);
  ASSERT_NE(byNumber.get(), nullptr);
  std::string word;
  *byNumber >> word;
  EXPECT_EQ(word, "seventeen");
}

TEST_F(ModuleLookupFiles, AStreamTakesTheLanguageOfTheThread) {
  for (auto const& row : {std::make_pair(1031u, "deutsch"), std::make_pair(1033u, "english")}) {
    ThreadLocale const thread(row.first);
    EXPECT_EQ(module().loadStringResource(String(KVW("BOTH")), kMetadata, false), row.second);
    EXPECT_EQ(platform::nativeLocales().threadLocale(), row.first);
  }
}

struct LanguageRow {
  char const* name;
  wchar const* resource;
  ulong32 thread;
  ulong32 wanted;
  char const* bytes;
  ulong32 found;
};

// The module alone: `localized` makes no difference.
TEST_F(ModuleLookupWithoutTranslation, LanguageOfAResource) {
  LanguageRow const rows[] = {
      {"two, the wanted one", KVW("BOTH"), 1031, 1033, "english", 1033},
      {"two, the other one", KVW("BOTH"), 1033, 1031, "deutsch", 1031},
      {"two, 0 is the thread's", KVW("BOTH"), 1031, 0, "deutsch", 1031},
      {"two, neither: the choice of the system", KVW("BOTH"), 1031, 1036, "deutsch", 1031},
      {"two, neither, English thread", KVW("BOTH"), 1033, 1036, "english", 1033},
      {"two, another country of one", KVW("BOTH"), 1033, 3079, "english", 1033},
      {"one decides by itself", KVW("SINGLE"), 1033, 1033, "nur deutsch", 1031},
      {"one, 0", KVW("SINGLE"), 1033, 0, "nur deutsch", 1031},
      {"marked with the primary language", KVW("PRIMARY"), 1033, 1036, "francais", 12},
      {"marked so, another country", KVW("PRIMARY"), 1033, 3084, "francais", 12},
      {"marked so, wanted so", KVW("PRIMARY"), 1033, 12, "francais", 12},
      {"exact before primary", KVW("FAMILY"), 1033, 3079, "austria", 3079},
      {"exact, with the primary one there", KVW("FAMILY"), 1033, 1031, "germany", 1031},
      {"primary before the choice of the system", KVW("FAMILY"), 1033, 2055, "german", 7},
      {"neutral is the choice of the system", KVW("FAMILY"), 1033, 1036, "neutral", 1033},
      {"neutral alone is no choice", KVW("NEUTRAL"), 1031, 1036, "neutral", 1031},
      {"sort bits of the wanted one do not matter", KVW("BOTH"), 1033, 0x10407, "deutsch", 1031},
      {"missing keeps the wanted one", KVW("NONE"), 1033, 1036, "(none)", 1036},
  };
  for (LanguageRow const& row : rows) {
    for (bool const localized : {false, true}) {
      SCOPED_TRACE(std::string(row.name) + (localized ? ", localized" : ""));
      ThreadLocale const thread(row.thread);
      ulong32 locale = row.wanted;
      EXPECT_EQ(bytes(row.resource, localized, &locale), row.bytes);
      EXPECT_EQ(locale, row.found);
      EXPECT_EQ(platform::nativeLocales().threadLocale(), row.thread);
    }
  }
}

TEST_F(ModuleLookupWithoutTranslation, WithoutALocaleTheSystemChooses) {
  for (auto const& row : {std::make_pair(1031u, "deutsch"), std::make_pair(1033u, "english")}) {
    ThreadLocale const thread(row.first);
    EXPECT_EQ(bytes(KVW("BOTH"), true, nullptr), row.second);
    EXPECT_EQ(bytes(KVW("FAMILY"), true, nullptr), "neutral");
  }
}

// The languages of the translation decide, not those of the module.
TEST_F(ModuleLookupFiles, LanguageOfAResourceInATranslation) {
  LanguageRow const rows[] = {
      {"German is there", KVW("BOTH"), 1033, 1031, "uebersetzt", 1031},
      {"French is there as a primary language", KVW("BOTH"), 1033, 3084, "traduit", 12},
      {"one decides by itself", KVW("ONLYTRANSLATION"), 1033, 1036, "of the translation", 1031},
      {"only in the module", KVW("PRIMARY"), 1033, 1036, "francais", 12},
  };
  for (LanguageRow const& row : rows) {
    SCOPED_TRACE(row.name);
    ThreadLocale const thread(row.thread);
    ulong32 locale = row.wanted;
    EXPECT_EQ(bytes(row.resource, true, &locale), row.bytes);
    EXPECT_EQ(locale, row.found);
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
