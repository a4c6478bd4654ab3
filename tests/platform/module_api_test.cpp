// SPDX-License-Identifier: MIT
//
// Modules, their resources and their version data, for the native backend of either system and the modules in
// tests/fixtures.
#include "kvbase/platform/module_api.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "kvbase/platform/locale_api.h"
#include "tests/support/current_path.h"
#include "tests/support/module_files.h"
#include "tests/support/narrow_text.h"
#include "tests/support/temp_folder.h"
#include "tests/support/thread_locale.h"
#include "tests/support/threads.h"

namespace KV_1_1 {
namespace testing {
namespace {

namespace fs = std::filesystem;
using platform::ModuleApi;
using platform::ResourceBytes;
using platform::resourceId;
using Languages = std::set<unsigned short>;

ModuleApi& modules() {
  return platform::nativeModules();
}

wstring const kMetadata = KVW("METADATA");

// A translation library that is loaded as data for a scope.
class LoadedData {
 public:
  explicit LoadedData(wstring const& path) : handle_(modules().loadAsData(path.c_str())) {
    EXPECT_NE(handle_, nullptr) << narrow(path);
  }
  ~LoadedData() {
    if (handle_ != nullptr) {
      EXPECT_TRUE(modules().freeLibrary(handle_));
    }
  }
  LoadedData(LoadedData const&) = delete;
  LoadedData& operator=(LoadedData const&) = delete;

  HINSTANCE handle() const { return handle_; }

 private:
  HINSTANCE const handle_;
};

// The tool with its code, and its translation as data.
class ModuleApiTest : public ::testing::Test {
 protected:
  ModuleApiTest() {
    copyModule(folder, "tool", "tool");
    copyTranslation(folder, "toolabc", "toolabc");
  }

  TempFolder folder;
  ThreadLocale const english{1033};
};

// The bytes of a resource, or what is wrong with it.
std::string bytesOf(HINSTANCE module, HRSRC resource) {
  if (resource == nullptr) return "(none)";
  ResourceBytes const bytes = modules().resourceBytes(module, resource);
  if (bytes.data == nullptr) return "(no address)";
  return std::string(static_cast<char const*>(bytes.data), bytes.size);
}
std::string found(HINSTANCE module, wchar const* name, wchar const* type) {
  return bytesOf(module, modules().findResource(module, name, type));
}
std::string found(HINSTANCE module, char const* name) {
  return found(module, widen(name).c_str(), kMetadata.c_str());
}
std::string foundOfLanguage(HINSTANCE module, char const* name, std::uint16_t language) {
  return bytesOf(module, modules().findResourceOfLanguage(module, kMetadata.c_str(), widen(name).c_str(), language));
}
std::string entry(HINSTANCE module, unsigned int id) {
  wstring text = KVW("unchanged");
  bool const loaded = modules().stringTableEntry(module, id, text);
  if (!loaded) {
    EXPECT_EQ(narrow(text), "unchanged");
    return "(none)";
  }
  return narrow(text);
}

// --- Paths ---

TEST_F(ModuleApiTest, TheProgramHasAHandleAndAPath) {
  EXPECT_NE(modules().program(), nullptr);
  wstring byHandle;
  wstring byNull;
  EXPECT_TRUE(modules().modulePath(modules().program(), byHandle));
  EXPECT_TRUE(modules().modulePath(nullptr, byNull));
  EXPECT_EQ(narrow(byHandle), narrow(byNull));
  std::u16string const file = programFile().u16string();
  EXPECT_EQ(byNull.substr(byNull.rfind(KVW('\\')) + 1),
            wstring(file.begin(), file.end()).substr(file.find_last_of(u"/\\") + 1));
}

TEST_F(ModuleApiTest, ThePathOfALibraryIsThatOfItsFile) {
  LoadedModule const tool(folder.path(moduleFile("tool")));
  wstring path;
  EXPECT_TRUE(modules().modulePath(tool.handle(), path));
  EXPECT_EQ(narrow(path), narrow(folder.text(widen(moduleFile("tool")))));
  EXPECT_NE(tool.handle(), modules().program());
}

TEST_F(ModuleApiTest, NamesWithTwoDotsAndWithoutADotAreNames) {
  copyModule(folder, "tool", "tool.two");
  fs::copy_file(folder.path(moduleFile("tool")), folder.path("plain"));
  for (std::string const& name : {moduleFile("tool.two"), std::string("plain")}) {
    SCOPED_TRACE(name);
    LoadedModule const tool(folder.path(name));
    wstring path;
    EXPECT_TRUE(modules().modulePath(tool.handle(), path));
    EXPECT_EQ(narrow(path), narrow(folder.text(widen(name))));
  }
}

TEST_F(ModuleApiTest, DataModulesAndUnknownHandlesHaveNoPath) {
  LoadedData const translation(folder.text(KVW("toolabc.dll")));
  int notAModule = 0;
  wstring path = KVW("unchanged");
  EXPECT_FALSE(modules().modulePath(translation.handle(), path));
  EXPECT_FALSE(modules().modulePath(reinterpret_cast<HINSTANCE>(&notAModule), path));
  EXPECT_EQ(narrow(path), "unchanged");
}

TEST_F(ModuleApiTest, TheLongFormOfWhatExists) {
  wstring longPath;
  for (wstring const& path : {folder.text(), folder.text(KVW("toolabc.dll"))}) {
    EXPECT_TRUE(modules().longPath(path.c_str(), longPath));
    EXPECT_EQ(narrow(longPath), narrow(path));
  }
}

TEST_F(ModuleApiTest, WhatDoesNotExistOrIsTooLongHasNoLongForm) {
  wstring tooLong = folder.text();
  while (tooLong.size() < platform::kModulePathCapacity) tooLong += KVW("\\.");
  tooLong += KVW("\\toolabc.dll");
  wstring longPath = KVW("unchanged");
  EXPECT_FALSE(modules().longPath(folder.text(KVW("none.dll")).c_str(), longPath));
  EXPECT_FALSE(modules().longPath(folder.text(KVW("none\\a.dll")).c_str(), longPath));
  EXPECT_FALSE(modules().longPath(tooLong.c_str(), longPath));
  EXPECT_FALSE(modules().longPath(KVW(""), longPath));
  EXPECT_EQ(narrow(longPath), "unchanged");
}

// --- Files ---

TEST_F(ModuleApiTest, FilesAreReadableWhateverTheCaseOfTheirNames) {
  EXPECT_TRUE(modules().isReadable(folder.text(KVW("toolabc.dll")).c_str()));
  EXPECT_TRUE(modules().isReadable(folder.text(KVW("TOOLabc.DLL")).c_str()));
  EXPECT_FALSE(modules().isReadable(folder.text(KVW("toolxyz.dll")).c_str()));
  EXPECT_FALSE(modules().isReadable(folder.text(KVW("none\\toolabc.dll")).c_str()));
  EXPECT_FALSE(modules().isReadable(KVW("")));
}

TEST_F(ModuleApiTest, AFolderIsReadable) {
  folder.makeFolder("tooldir.dll");
  EXPECT_TRUE(modules().isReadable(folder.text(KVW("tooldir.dll")).c_str()));
}

TEST_F(ModuleApiTest, TranslationsAreLoadedWhateverTheCaseOfTheirNames) {
  LoadedData const first(folder.text(KVW("toolabc.dll")));
  LoadedData const second(folder.text(KVW("TOOLabc.DLL")));
  EXPECT_EQ(found(first.handle(), "ONLYTRANSLATION"), "of the translation");
  EXPECT_EQ(found(second.handle(), "ONLYTRANSLATION"), "of the translation");
}

TEST_F(ModuleApiTest, WhatIsNoModuleIsNotLoaded) {
  folder.makeFolder("folder.dll");
  folder.write("empty.dll");
  folder.write("text.dll", "This is no module, though it has the name of one.\n");
  folder.write("header.dll", "MZ");
  folder.write("far.dll", "MZ" + std::string(58, '\0') + std::string("\xff\xff\xff\x7f", 4));
  for (char const* name : {"folder.dll", "empty.dll", "text.dll", "header.dll", "far.dll", "none.dll", "none\\a.dll"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(modules().loadAsData(folder.text(widen(name)).c_str()), nullptr);
  }
  EXPECT_EQ(modules().loadAsData(KVW("")), nullptr);
}

TEST_F(ModuleApiTest, ATranslationIsLoadedAgainAfterItsEnd) {
  for (int round = 0; round < 3; ++round) {
    LoadedData const translation(folder.text(KVW("toolabc.dll")));
    EXPECT_EQ(entry(translation.handle(), 100), "Hallo");
  }
}

TEST_F(ModuleApiTest, ATranslationThatIsLoadedTwiceIsUsedUntilItsLastEnd) {
  LoadedData const outer(folder.text(KVW("toolabc.dll")));
  { LoadedData const inner(folder.text(KVW("toolabc.dll"))); }
  EXPECT_EQ(entry(outer.handle(), 100), "Hallo");
}

// --- Resources ---

TEST_F(ModuleApiTest, NamesAndTypesCompareWithoutRegardToCase) {
  LoadedModule const tool(folder.path(moduleFile("tool")));
  std::string const text = found(tool.handle(), "RESOURCE.H");
  EXPECT_EQ(text.substr(0, 10), "// Symbols");
  EXPECT_EQ(found(tool.handle(), "resource.h"), text);
  EXPECT_EQ(found(tool.handle(), KVW("Resource.H"), KVW("metadata")), text);
}

TEST_F(ModuleApiTest, NumbersAreNamesAndTypes) {
  LoadedModule const tool(folder.path(moduleFile("tool")));
  EXPECT_EQ(found(tool.handle(), resourceId(17), kMetadata.c_str()), "seventeen");
  EXPECT_EQ(found(tool.handle(), "#17"), "seventeen");
  EXPECT_EQ(found(tool.handle(), KVW("NAMED"), resourceId(300)), "type 300");
  EXPECT_EQ(found(tool.handle(), KVW("named"), KVW("#300")), "type 300");
  EXPECT_EQ(found(tool.handle(), resourceId(65535), resourceId(65535)), "greatest numbers");
  EXPECT_EQ(found(tool.handle(), "17"), "(none)");
}

TEST_F(ModuleApiTest, WhatIsMissingIsNull) {
  LoadedModule const tool(folder.path(moduleFile("tool")));
  LoadedData const translation(folder.text(KVW("toolabc.dll")));
  copyModule(folder, "no_metadata", "bare");
  LoadedModule const bare(folder.path(moduleFile("bare")));
  for (HINSTANCE const module : {tool.handle(), translation.handle(), bare.handle()}) {
    EXPECT_EQ(found(module, "NONE"), "(none)");
    EXPECT_EQ(found(module, KVW("BOTH"), KVW("NOTYPE")), "(none)");
    EXPECT_EQ(found(module, resourceId(99), kMetadata.c_str()), "(none)");
    EXPECT_EQ(found(module, KVW("BOTH"), resourceId(99)), "(none)");
    EXPECT_EQ(foundOfLanguage(module, "NONE", 1033), "(none)");
    Languages languages = {7};
    EXPECT_FALSE(modules().resourceLanguages(module, kMetadata.c_str(), KVW("NONE"), languages));
    EXPECT_FALSE(modules().resourceLanguages(module, KVW("NOTYPE"), KVW("BOTH"), languages));
    EXPECT_EQ(languages, (Languages{7}));
  }
}

TEST_F(ModuleApiTest, BytesAreThoseOfTheScript) {
  LoadedModule const tool(folder.path(moduleFile("tool")));
  LoadedData const translation(folder.text(KVW("toolabc.dll")));
  std::string const expected("\x00\x01\x7f\xff\x00\x00\x0d\x1a", 8);
  EXPECT_EQ(found(tool.handle(), "BYTES"), expected);
  EXPECT_EQ(found(translation.handle(), resourceId(18), resourceId(300)), expected);
}

TEST_F(ModuleApiTest, AResourceOfNoBytesHasAnAddress) {
  LoadedModule const tool(folder.path(moduleFile("tool")));
  LoadedData const translation(folder.text(KVW("toolabc.dll")));
  for (HINSTANCE const module : {tool.handle(), translation.handle()}) {
    HRSRC const empty = modules().findResource(module, KVW("EMPTY"), kMetadata.c_str());
    ASSERT_NE(empty, nullptr);
    ResourceBytes const bytes = modules().resourceBytes(module, empty);
    EXPECT_NE(bytes.data, nullptr);
    EXPECT_EQ(bytes.size, 0u);
  }
}

TEST_F(ModuleApiTest, BytesOfNothingHaveNoAddress) {
  LoadedModule const tool(folder.path(moduleFile("tool")));
  EXPECT_EQ(modules().resourceBytes(tool.handle(), nullptr).data, nullptr);
}

TEST_F(ModuleApiTest, BytesOfALibraryLieInItAndThoseOfADataModuleInNone) {
  LoadedModule const tool(folder.path(moduleFile("tool")));
  LoadedData const translation(folder.text(KVW("toolabc.dll")));
  auto const addressIn = [](HINSTANCE module) {
    HRSRC const resource = modules().findResource(module, KVW("BOTH"), kMetadata.c_str());
    return modules().resourceBytes(module, resource).data;
  };
  EXPECT_EQ(modules().moduleOf(addressIn(tool.handle())), tool.handle());
  EXPECT_EQ(modules().moduleOf(addressIn(translation.handle())), nullptr);
}

TEST_F(ModuleApiTest, BytesStayWhereTheyAre) {
  LoadedData const translation(folder.text(KVW("toolabc.dll")));
  HRSRC const first = modules().findResource(translation.handle(), KVW("RESOURCE.H"), kMetadata.c_str());
  ResourceBytes const before = modules().resourceBytes(translation.handle(), first);
  for (int round = 0; round < 100; ++round) {
    found(translation.handle(), "BOTH");
    entry(translation.handle(), 100);
  }
  HRSRC const again = modules().findResource(translation.handle(), KVW("RESOURCE.H"), kMetadata.c_str());
  ResourceBytes const after = modules().resourceBytes(translation.handle(), again);
  EXPECT_EQ(after.data, before.data);
  EXPECT_EQ(after.size, before.size);
}

// --- Languages of resources ---

TEST_F(ModuleApiTest, LanguagesAreAllInWhichAResourceExists) {
  LoadedModule const tool(folder.path(moduleFile("tool")));
  struct Row {
    char const* name;
    Languages languages;
  };
  Row const rows[] = {
      {"BOTH", {1031, 1033}}, {"SINGLE", {1031}}, {"PRIMARY", {12, 1033}}, {"FAMILY", {0, 7, 1031, 1033, 3079}},
      {"NEUTRAL", {0}},       {"#17", {1033}},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    Languages languages;
    EXPECT_TRUE(modules().resourceLanguages(tool.handle(), kMetadata.c_str(), widen(row.name).c_str(), languages));
    EXPECT_EQ(languages, row.languages);
  }
  LoadedData const translation(folder.text(KVW("toolabc.dll")));
  Languages languages = {5};
  EXPECT_TRUE(modules().resourceLanguages(translation.handle(), KVW("metadata"), KVW("both"), languages));
  EXPECT_EQ(languages, (Languages{5, 12, 1031}));
}

TEST_F(ModuleApiTest, TheVersionOfALanguageIsTheExactThePrimaryOrTheNeutralOne) {
  LoadedModule const tool(folder.path(moduleFile("tool")));
  struct Row {
    char const* name;
    std::uint16_t language;
    char const* text;
  };
  Row const rows[] = {
      {"BOTH", 1031, "deutsch"},     {"BOTH", 1033, "english"},       {"BOTH", 1036, "(none)"},
      {"BOTH", 3079, "(none)"},      {"SINGLE", 1031, "nur deutsch"}, {"SINGLE", 1033, "(none)"},
      {"PRIMARY", 1036, "francais"}, {"PRIMARY", 3084, "francais"},   {"PRIMARY", 12, "francais"},
      {"PRIMARY", 1031, "(none)"},   {"FAMILY", 1031, "germany"},     {"FAMILY", 3079, "austria"},
      {"FAMILY", 2055, "german"},    {"FAMILY", 7, "german"},         {"FAMILY", 1036, "neutral"},
      {"NEUTRAL", 1041, "neutral"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(std::string(row.name) + ' ' + std::to_string(row.language));
    EXPECT_EQ(foundOfLanguage(tool.handle(), row.name, row.language), row.text);
  }
}

TEST_F(ModuleApiTest, WithoutALanguageTheNeutralVersionComesBeforeThatOfTheThread) {
  LoadedModule const tool(folder.path(moduleFile("tool")));
  bool const germanUser = platform::nativeLocales().userLanguage() == 1031;
  struct Row {
    char const* name;
    ulong32 locale;
    char const* text;
  };
  Row const rows[] = {
      {"BOTH", 1031, "deutsch"},       {"BOTH", 1033, "english"},    {"BOTH", 1036, germanUser ? "deutsch" : "english"},
      {"SINGLE", 1033, "nur deutsch"}, {"PRIMARY", 1033, "english"}, {"FAMILY", 1031, "neutral"},
      {"FAMILY", 1033, "neutral"},     {"NEUTRAL", 1041, "neutral"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(std::string(row.name) + ' ' + std::to_string(row.locale));
    ThreadLocale const thread(row.locale);
    EXPECT_EQ(found(tool.handle(), row.name), row.text);
  }
}

// --- Texts ---

TEST_F(ModuleApiTest, TextsOfTheStringTable) {
  LoadedModule const tool(folder.path(moduleFile("tool")));
  LoadedData const translation(folder.text(KVW("toolabc.dll")));
  struct Row {
    unsigned int id;
    char const* ofTheModule;
    char const* ofTheTranslation;
  };
  Row const rows[] = {
      {100, "Hello", "Hallo"},
      {101, "Good-bye", "Auf Wiedersehen"},
      {102, "Only in the module", "(none)"},
      {103, "(none)", "(none)"},  // empty, and missing
      {104, "(none)", "(none)"},  // missing in a block that is there
      {200, "(none)",
       "\xC3\x9C"
       "bersetzt f\xC3\xBCr \xF0\x9F\x98\x80"},
      {300,
       "Gr\xC3\xB6\xC3\x9F"
       "e \xC2\xBD \xF0\x9F\x98\x80",
       "(none)"},
      {4095, "(none)", "Ende"},
      {0, "(none)", "(none)"},
      {65535, "Last", "(none)"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.id);
    EXPECT_EQ(entry(tool.handle(), row.id), row.ofTheModule);
    EXPECT_EQ(entry(translation.handle(), row.id), row.ofTheTranslation);
  }
}

// --- Version data ---

// The version resource of a file; empty if there is none.
std::vector<char> versionBlock(wstring const& file) {
  ulong32 handle = 0;
  ulong32 const size = modules().versionInfoSize(file.c_str(), handle);
  std::vector<char> block(size);
  if (size != 0) {
    EXPECT_TRUE(modules().versionInfo(file.c_str(), handle, size, block.data())) << narrow(file);
  }
  return block;
}

std::string quad(std::vector<char> const& block) {
  void const* value = nullptr;
  ulong32 length = 0;
  if (block.empty() || !modules().queryVersion(block.data(), KVW("\\"), value, length)) return "(none)";
  EXPECT_EQ(length, 52u);
  std::uint32_t fixed[13];
  std::memcpy(fixed, value, sizeof fixed);
  EXPECT_EQ(fixed[0], 0xFEEF04BDu);
  std::string text;
  for (std::uint32_t const number : {fixed[2] >> 16, fixed[2] & 0xFFFF, fixed[3] >> 16, fixed[3] & 0xFFFF}) {
    text += (text.empty() ? "" : ".") + std::to_string(number);
  }
  return text;
}

std::string versionText(std::vector<char> const& block, char const* path) {
  int const unchanged = 0;
  void const* value = &unchanged;
  ulong32 length = 77;
  if (!modules().queryVersion(block.data(), widen(path).c_str(), value, length)) {
    EXPECT_EQ(value, &unchanged);
    EXPECT_EQ(length, 77u);
    return "(none)";
  }
  if (value == nullptr || length == 0) return "(empty)";
  wstring text(length, KVW('?'));
  std::memcpy(&text[0], value, length * sizeof(wchar));
  EXPECT_EQ(text.back(), KVW('\0'));
  text.pop_back();
  return narrow(text);
}

std::vector<unsigned> translationTable(std::vector<char> const& block) {
  void const* value = nullptr;
  ulong32 length = 0;
  std::vector<unsigned> pairs;
  if (!modules().queryVersion(block.data(), KVW("\\VarFileInfo\\Translation"), value, length)) return pairs;
  EXPECT_EQ(length % 4, 0u);
  for (ulong32 i = 0; i < length / 2; ++i) {
    std::uint16_t number = 0;
    std::memcpy(&number, static_cast<char const*>(value) + 2 * i, 2);
    pairs.push_back(number);
  }
  return pairs;
}

TEST_F(ModuleApiTest, VersionDataOfALibrary) {
  std::vector<char> const block = versionBlock(folder.text(widen(moduleFile("tool"))));
  ASSERT_FALSE(block.empty());
  EXPECT_EQ(quad(block), "1.2.3.4");
  EXPECT_EQ(translationTable(block), (std::vector<unsigned>{0x409, 1200}));
  struct Row {
    char const* path;
    char const* text;
  };
  Row const rows[] = {
      {"\\StringFileInfo\\040904b0\\CompanyName", "Scan Works"},
      {"\\StringFileInfo\\040904B0\\companyNAME", "Scan Works"},
      {"\\stringfileinfo\\040904b0\\ProductName", "Scan Tool"},
      {"\\StringFileInfo\\040904b0\\ProductVersion", "2.1.0.7"},
      {"\\StringFileInfo\\040904b0\\FileDescription",
       "Gr\xC3\xB6\xC3\x9F"
       "e \xC2\xBD"},
      {"\\StringFileInfo\\040904b0\\None", "(none)"},
      {"\\StringFileInfo\\040704b0\\CompanyName", "(none)"},
      {"\\NoBlock\\040904b0\\CompanyName", "(none)"},
      {"\\VarFileInfo\\None", "(none)"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.path);
    EXPECT_EQ(versionText(block, row.path), row.text);
  }
}

TEST_F(ModuleApiTest, VersionDataOfATranslation) {
  std::vector<char> const block = versionBlock(folder.text(KVW("toolabc.dll")));
  ASSERT_FALSE(block.empty());
  EXPECT_EQ(quad(block), "1.2.3.4");
  EXPECT_EQ(translationTable(block), (std::vector<unsigned>{0x407, 1200}));
  EXPECT_EQ(versionText(block, "\\StringFileInfo\\040704b0\\FileDescription"),
            "\xC3\x9C"
            "bersetzung");
}

TEST_F(ModuleApiTest, VersionDataThatLacksSomething) {
  struct Row {
    char const* fixture;
    std::vector<unsigned> table;
    char const* company;
    char const* product;
  };
  Row const rows[] = {
      {"no_translation_table", {}, "Scan Works", "Scan Tool"},
      {"empty_translation_table", {}, "(none)", "(none)"},
      {"missing_values", {0x409, 1200}, "(none)", "Scan Tool"},
      {"other_language", {0x409, 1200}, "(none)", "(none)"},
      {"empty_values", {0x409, 1200}, "(empty)", "Scan Tool"},
      {"empty_text", {0x409, 1200}, "", "Scan Tool"},
      {"two_translations", {0x407, 1200, 0x409, 1200}, "Scan Works", "Scan Tool"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.fixture);
    copyModule(folder, row.fixture, row.fixture);
    std::vector<char> const block = versionBlock(folder.text(widen(moduleFile(row.fixture))));
    if (block.empty()) {
      ADD_FAILURE();
      continue;
    }
    EXPECT_EQ(quad(block), "1.2.3.4");
    EXPECT_EQ(translationTable(block), row.table);
    EXPECT_EQ(versionText(block, "\\StringFileInfo\\040904b0\\CompanyName"), row.company);
    EXPECT_EQ(versionText(block, "\\StringFileInfo\\040904b0\\ProductName"), row.product);
  }
}

TEST_F(ModuleApiTest, FilesWithoutVersionData) {
  copyModule(folder, "no_version", "bare");
  copyTranslation(folder, "unversioned", "bareabc");
  folder.makeFolder("folder.dll");
  folder.write("empty.dll");
  folder.write("text.dll", "no module");
  std::string const library = moduleFile("bare");
  for (char const* name : {library.c_str(), "bareabc.dll", "folder.dll", "empty.dll", "text.dll", "none.dll"}) {
    SCOPED_TRACE(name);
    ulong32 handle = 0;
    EXPECT_EQ(modules().versionInfoSize(folder.text(widen(name)).c_str(), handle), 0u);
  }
  ulong32 handle = 0;
  EXPECT_EQ(modules().versionInfoSize(KVW(""), handle), 0u);
}

TEST_F(ModuleApiTest, ABareNameIsThatOfALoadedLibrary) {
  // The name is the folder's, so that no other library of the process has it.
  std::string const stem = folder.path().filename().string();
  wstring const bareName = widen(moduleFile(stem));
  copyModule(folder, "tool", stem);
  EXPECT_TRUE(versionBlock(bareName).empty());
  LoadedModule const tool(folder.path(moduleFile(stem)));
  EXPECT_EQ(quad(versionBlock(bareName)), "1.2.3.4");
}

TEST_F(ModuleApiTest, VersionInfoFailsForAFileThatHasGone) {
  wstring const file = folder.text(KVW("toolabc.dll"));
  ulong32 handle = 0;
  ulong32 const size = modules().versionInfoSize(file.c_str(), handle);
  ASSERT_NE(size, 0u);
  fs::remove(folder.path("toolabc.dll"));
  std::vector<char> block(size);
  EXPECT_FALSE(modules().versionInfo(file.c_str(), handle, size, block.data()));
}

// --- Threads ---

TEST(ModuleApiConcurrency, ManyThreadsReadOneModule) {
  TempFolder folder;
  copyTranslation(folder, "toolabc", "toolabc");
  LoadedData const translation(folder.text(KVW("toolabc.dll")));
  onThreads([&](int) {
    for (int round = 0; round < 50; ++round) {
      EXPECT_EQ(found(translation.handle(), "ONLYTRANSLATION"), "of the translation");
      EXPECT_EQ(entry(translation.handle(), 200),
                "\xC3\x9C"
                "bersetzt f\xC3\xBCr \xF0\x9F\x98\x80");
      EXPECT_EQ(quad(versionBlock(folder.text(KVW("toolabc.dll")))), "1.2.3.4");
      LoadedData const own(folder.text(KVW("toolabc.dll")));
      EXPECT_EQ(entry(own.handle(), 100), "Hallo");
    }
  });
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
