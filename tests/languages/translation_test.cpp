// SPDX-License-Identifier: MIT
#include "kvbase/languages/translation.h"

#include <gtest/gtest.h>

#include <ostream>
#include <stdexcept>

#include "kvbase/languages/language_selection.h"
#include "kvbase/modules/client_module.h"
#include "tests/languages/language_world.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/module_instances.h"

namespace KV_1_1 {
namespace testing {
namespace {

constexpr std::uint32_t kHigh = 0x000A0000;  // 10.0.
constexpr std::uint32_t kLow = 0x00002521;   // 0.9505

// The tool has the version 10.0.0.9505, and translations can be added.
class TranslationWorld : public LanguageWorld {
 public:
  TranslationWorld() {
    setVersion(KVW("C:\\app\\tool.dll"), kHigh, kLow);
    setVersion(KVW("C:\\app\\prog.exe"), kHigh, kLow);
  }

  // A readable library; its handle.
  HINSTANCE addTranslation(wstring const& path, std::uint32_t high = kHigh, std::uint32_t low = kLow) {
    modules.files.insert(path);
    setVersion(path, high, low);
    nextHandle_ += 0x10000;
    return modules.libraries[path] = reinterpret_cast<HINSTANCE>(nextHandle_);
  }

  HINSTANCE load(unsigned short language = kNoLanguage) { return LoadTranslationDLL(tool(), language); }

 private:
  std::uintptr_t nextHandle_ = 0x40000001;
};

TEST(Translation, IsLoadedAndItsLanguageRecorded) {
  TranslationWorld world;
  world.locales.userUi = kGerman;
  HINSTANCE const german = world.addTranslation(KVW("C:\\app\\toolDEU.dll"));
  EXPECT_EQ(world.load(), german);
  EXPECT_EQ(world.recorded(world.tool()), "1031");
  EXPECT_EQ(world.modules.log.back(), "loadAsData C:\\app\\toolDEU.dll");
}

TEST(Translation, AForcedLanguageIsFoundInTheSubfolder) {
  TranslationWorld world;
  world.setArguments({KVW("-lang=abc")});
  HINSTANCE const abc = world.addTranslation(KVW("C:\\app\\languages\\toolabc.dll"));
  ModuleOwner owner;
  setInstances(owner.module(), world.tool(), nullptr);
  EXPECT_EQ(world.load(), abc);
  EXPECT_EQ(world.recorded(world.tool()), "65535");
  EXPECT_EQ(GetCurrentLangId(owner.module()), kNoLanguage);
  LanguageWorld::forget();
  world.locales.abbreviations[kFrench] = KVW("ABC");
  EXPECT_EQ(world.load(), abc);
  EXPECT_EQ(world.recorded(world.tool()), "1036");
  EXPECT_EQ(GetCurrentLangId(owner.module()), kFrench);
}

TEST(Translation, AnotherVersionInAnyPartDoesNotFit) {
  struct {
    std::uint32_t high, low;
  } const versions[] = {{0x000B0000, kLow}, {0x000A0001, kLow}, {kHigh, 0x00012521}, {kHigh, 0x00002522}, {0, 0}};
  for (auto const& version : versions) {
    SCOPED_TRACE(version.high);
    SCOPED_TRACE(version.low);
    TranslationWorld world;
    world.locales.userUi = kGerman;
    world.addTranslation(KVW("C:\\app\\toolDEU.dll"), version.high, version.low);
    EXPECT_EQ(world.load(), world.tool());
    EXPECT_EQ(world.recorded(world.tool()), "none");
    EXPECT_EQ(world.modules.calls("loadAsData"), 0);
  }
}

TEST(Translation, AFileThatDoesNotFitHidesTheFittingOnesBehindIt) {
  TranslationWorld world;
  world.locales.userUi = kGerman;
  world.addTranslation(KVW("C:\\app\\toolDEU.dll"), kHigh, kLow + 1);
  world.addTranslation(KVW("C:\\app\\languages\\toolDEU.dll"));
  EXPECT_EQ(world.load(), world.tool());
  EXPECT_EQ(world.recorded(world.tool()), "none");
}

TEST(Translation, WithoutAFileTheModuleSpeaksItself) {
  TranslationWorld world;
  world.addTranslation(KVW("C:\\app\\toolENU.dll"));
  EXPECT_EQ(world.load(), world.tool());
  EXPECT_EQ(world.recorded(world.tool()), "none");
  world.locales.userUi = kGerman;
  EXPECT_EQ(world.load(), world.tool());
  EXPECT_EQ(world.recorded(world.tool()), "none");
}

TEST(Translation, AModuleWithoutVersionAndFileRecordsNoLanguage) {
  TranslationWorld world;
  world.modules.versions.clear();
  world.locales.userUi = kGerman;
  EXPECT_EQ(world.load(), world.tool());
  EXPECT_EQ(world.recorded(world.tool()), "65535");
  EXPECT_EQ(world.modules.calls("loadAsData"), 0);
}

TEST(Translation, AModuleAndAFileWithoutVersionFit) {
  TranslationWorld world;
  world.locales.userUi = kGerman;
  HINSTANCE const german = world.addTranslation(KVW("C:\\app\\toolDEU.dll"));
  world.modules.versions.clear();
  EXPECT_EQ(world.load(), german);
  EXPECT_EQ(world.recorded(world.tool()), "1031");
}

TEST(Translation, AFileThatCannotBeLoadedGivesNullButIsRecorded) {
  TranslationWorld world;
  world.setArguments({KVW("-lang=deu")});
  world.addTranslation(KVW("C:\\app\\tooldeu.dll"));
  world.addTranslation(KVW("C:\\app\\progdeu.dll"));
  world.modules.failures = {"loadAsData"};
  EXPECT_EQ(world.load(), nullptr);
  EXPECT_EQ(world.recorded(world.tool()), "1031");
  EXPECT_EQ(LoadTranslationDLL(world.program(), kNoLanguage), nullptr);
  EXPECT_EQ(world.locales.controlsLanguages, std::vector<std::uint16_t>({kGerman}));
}

TEST(Translation, WithoutPathOrLongFormTheModuleComesBackUnrecorded) {
  for (char const* method : {"modulePath", "longPath"}) {
    SCOPED_TRACE(method);
    TranslationWorld world;
    world.locales.userUi = kGerman;
    world.addTranslation(KVW("C:\\app\\toolDEU.dll"));
    world.modules.failures = {method};
    EXPECT_EQ(world.load(), world.tool());
    EXPECT_EQ(world.recorded(world.tool()), "none");
    EXPECT_EQ(world.modules.calls("versionInfoSize"), 0);
  }
}

TEST(Translation, TheVersionOfTheModuleIsReadFromItsLongPath) {
  TranslationWorld world;
  world.locales.userUi = kGerman;
  world.modules.paths[world.tool()] = KVW("C:\\APP\\TO~1.DLL");
  world.modules.longPaths[KVW("C:\\APP\\TO~1.DLL")] = KVW("C:\\app\\tool.dll");
  HINSTANCE const german = world.addTranslation(KVW("C:\\app\\toolDEU.dll"));
  EXPECT_EQ(world.load(), german);
}

TEST(Translation, TheLanguageOfTheCallIsTriedFirstButTheOneFoundIsRecorded) {
  TranslationWorld world;
  world.locales.userUi = kFrench;
  world.addTranslation(KVW("C:\\app\\toolFRA.dll"));
  HINSTANCE const german = world.addTranslation(KVW("C:\\app\\toolGER.dll"));
  EXPECT_EQ(world.load(kAustrian), german);
  EXPECT_EQ(world.recorded(world.tool()), "7");
}

TEST(Translation, ASecondCallMayLoadAnotherFileButTheFirstLanguageStays) {
  TranslationWorld world;
  world.locales.userUi = kGerman;
  HINSTANCE const german = world.addTranslation(KVW("C:\\app\\toolDEU.dll"));
  HINSTANCE const french = world.addTranslation(KVW("C:\\app\\toolFRA.dll"));
  EXPECT_EQ(world.load(), german);
  EXPECT_EQ(world.load(kFrench), french);
  EXPECT_EQ(world.recorded(world.tool()), "1031");
}

TEST(Translation, ARecordOfNoLanguageStaysToo) {
  TranslationWorld world;
  world.modules.versions.clear();
  EXPECT_EQ(world.load(), world.tool());
  world.locales.userUi = kGerman;
  HINSTANCE const german = world.addTranslation(KVW("C:\\app\\toolDEU.dll"), 0, 0);
  EXPECT_EQ(world.load(), german);
  EXPECT_EQ(world.recorded(world.tool()), "65535");
}

TEST(Translation, ModulesAreRecordedEachForItself) {
  TranslationWorld world;
  world.locales.userUi = kGerman;
  world.addTranslation(KVW("C:\\app\\toolDEU.dll"));
  world.addTranslation(KVW("C:\\app\\progFRA.dll"));
  world.load();
  LoadTranslationDLL(world.program(), kFrench);
  EXPECT_EQ(world.recorded(world.tool()), "1031");
  EXPECT_EQ(world.recorded(world.program()), "1036");
}

// --- Common controls ----------------------------------------------------------------------------------------------------

using Ids = std::vector<std::uint16_t>;

TEST(Translation, OnlyTheProgramTellsTheCommonControls) {
  TranslationWorld world;
  world.locales.userUi = kGerman;
  world.addTranslation(KVW("C:\\app\\toolDEU.dll"));
  world.addTranslation(KVW("C:\\app\\progDEU.dll"));
  world.load();
  world.load(kGerman);
  EXPECT_EQ(world.locales.controlsLanguages, Ids());
  LoadTranslationDLL(world.program(), kNoLanguage);
  EXPECT_EQ(world.locales.controlsLanguages, Ids({kGerman}));
}

TEST(Translation, TheCommonControlsAreToldTheLanguageOfTheCall) {
  TranslationWorld world;
  HINSTANCE const german = world.addTranslation(KVW("C:\\app\\progGER.dll"));
  EXPECT_EQ(LoadTranslationDLL(world.program(), kAustrian), german);
  EXPECT_EQ(world.locales.controlsLanguages, Ids({kAustrian}));
  EXPECT_EQ(world.recorded(world.program()), "7");
}

TEST(Translation, WithoutALanguageOfTheCallItIsTheOneFound) {
  TranslationWorld world;
  world.locales.userUi = kAustrian;
  world.addTranslation(KVW("C:\\app\\progGER.dll"));
  LoadTranslationDLL(world.program(), kNoLanguage);
  EXPECT_EQ(world.locales.controlsLanguages, Ids({kAnyGerman}));
}

TEST(Translation, WithoutAnyLanguageTheCommonControlsAreNotTold) {
  TranslationWorld world;
  world.modules.versions.clear();
  EXPECT_EQ(LoadTranslationDLL(world.program(), kNoLanguage), world.program());
  EXPECT_EQ(world.locales.controlsLanguages, Ids());
  // A language of the call is told though no file has been found.
  EXPECT_EQ(LoadTranslationDLL(world.program(), kFrench), world.program());
  EXPECT_EQ(world.locales.controlsLanguages, Ids({kFrench}));
  EXPECT_EQ(world.recorded(world.program()), "65535");
}

TEST(Translation, AVersionThatDoesNotFitTellsNothing) {
  TranslationWorld world;
  world.addTranslation(KVW("C:\\app\\progDEU.dll"), kHigh, 0);
  EXPECT_EQ(LoadTranslationDLL(world.program(), kGerman), world.program());
  EXPECT_EQ(world.locales.controlsLanguages, Ids());
}

// --- Failures -----------------------------------------------------------------------------------------------------------

TEST(Translation, AResourceWithoutTableOfTranslationsThrows) {
  TranslationWorld world;
  world.setVersion(KVW("tool.dll"), kHigh, kLow);
  std::string failure;
  try {
    world.load();
  } catch (std::runtime_error const& error) {
    failure = error.what();
  }
  EXPECT_EQ(failure, "VerQueryValue failed");
  EXPECT_EQ(world.recorded(world.tool()), "none");
}

// One call of the module group fails, each in turn. The result is the translation, or the module, or null; and there is a
// record unless the module came back.
TEST(Translation, AnyFailingCallGivesTheModuleOrNull) {
  int loaded = 0, unfit = 0, null = 0;
  for (int n = 1;; ++n) {
    SCOPED_TRACE(n);
    TranslationWorld world;
    world.setProduct();
    world.locales.userUi = kGerman;
    HINSTANCE const german = world.addTranslation(KVW("C:\\app\\toolDEU.dll"));
    world.modules.failAt = n;
    HINSTANCE result = world.tool();
    bool threw = false;
    try {
      result = world.load();
    } catch (std::runtime_error const&) {
      threw = true;
    }
    std::string const failed = n <= static_cast<int>(world.modules.log.size()) ? world.modules.log[n - 1] : "";
    EXPECT_EQ(threw, failed == "queryVersion \\VarFileInfo\\Translation");
    EXPECT_EQ(world.recorded(world.tool()), result == world.tool() ? "none" : "1031");
    (result == german ? loaded : result == nullptr ? null : unfit) += 1;
    if (failed.empty()) break;
  }
  EXPECT_EQ(null, 1);
  // The path twice, its long form, the two versions (three calls each), the table of translations, the question for the
  // file.
  EXPECT_EQ(unfit, 11);
  // What may fail without harm: the long form in the search, six calls for the product folder, three for the settings,
  // the question for the program; and the last round, without a failure.
  EXPECT_EQ(loaded, 12);
}

TEST(Translation, AFailingAllocationRecordsOnlyWhatWasFound) {
  TranslationWorld world;
  world.setProduct();
  world.locales.userUi = kGerman;
  HINSTANCE const german = world.addTranslation(KVW("C:\\app\\toolDEU.dll"));
  for (AllocationSweep sweep; sweep.next();) {
    LanguageWorld::forget();
    HINSTANCE result = nullptr;
    sweep.runRecovering([&] { result = world.load(); });
    // A version that cannot be read for want of memory is no version, so the translation does not fit.
    if (!sweep.threw()) EXPECT_EQ(result, moduleLanguages().size() == 1 ? german : world.tool());
    world.clearLogs();
    LanguageWorld::forget();
  }
  EXPECT_EQ(world.load(), german);
}

// --- Help files ---------------------------------------------------------------------------------------------------------

struct HelpRow {
  char const* name;
  wchar const* module;
  bool isStandardUi;
  char const* expected;
};

void PrintTo(HelpRow const& row, std::ostream* out) {
  *out << row.name;
}

HelpRow const kHelpRows[] = {
    {"Standard", KVW("C:\\app\\tool.exe"), true, "C:\\app\\tool.pdf"},
    {"Classic", KVW("C:\\app\\tool.exe"), false, "C:\\app\\tool_ClassicUI.pdf"},
    {"TwoDots", KVW("C:\\app\\tool.x.exe"), true, "C:\\app\\tool.x.pdf"},
    {"NoDot", KVW("C:\\app\\tool"), true, "C:\\app\\tool.pdf"},
    {"NoDotClassic", KVW("C:\\app\\tool"), false, "C:\\app\\tool_ClassicUI.pdf"},
    {"TheLastDotLiesInAFolder", KVW("C:\\my.folder\\tool"), true, "C:\\my.pdf"},
    {"TheLastDotLiesInAFolderClassic", KVW("C:\\my.folder\\tool"), false, "C:\\my_ClassicUI.pdf"},
    {"DotAtTheEnd", KVW("C:\\app\\tool."), true, "C:\\app\\tool.pdf"},
    {"DotAtTheBeginning", KVW(".tool"), true, ".pdf"},
};

class TranslationHelpFiles : public ::testing::TestWithParam<HelpRow> {};

TEST_P(TranslationHelpFiles, AreFoundBesideTheModule) {
  LanguageWorld world;
  HelpRow const& row = GetParam();
  world.modules.paths[world.tool()] = row.module;
  EXPECT_EQ(narrow(LocateHelpFile(world.tool(), kNoLanguage, row.isStandardUi)), "");
  EXPECT_EQ(world.probes(), Texts({row.expected}));
  world.modules.files = {widen(row.expected)};
  EXPECT_EQ(narrow(LocateHelpFile(world.tool(), kNoLanguage, row.isStandardUi)), row.expected);
  EXPECT_EQ(narrow(LocateHelpFile(world.tool(), kNoLanguage, !row.isStandardUi)), "");
}

INSTANTIATE_TEST_SUITE_P(Rows, TranslationHelpFiles, ::testing::ValuesIn(kHelpRows),
                         [](auto const& row) { return std::string(row.param.name); });

TEST(Translation, TheHelpFileDoesNotDependOnALanguage) {
  LanguageWorld world;
  world.setArguments({KVW("-lang=deu")});
  world.setLanguages(kGerman, kGerman, kGerman, kGerman);
  world.modules.files = {KVW("C:\\app\\tool.pdf"), KVW("C:\\app\\tooldeu.pdf"), KVW("C:\\app\\languages\\tool.pdf")};
  EXPECT_EQ(narrow(LocateHelpFile(world.tool(), kFrench, true)), "C:\\app\\tool.pdf");
  EXPECT_EQ(world.locales.log, Texts());
  EXPECT_EQ(world.probes(), Texts({"C:\\app\\tool.pdf"}));
}

TEST(Translation, TheHelpFileHasTheLongNameOfTheModule) {
  LanguageWorld world;
  world.modules.paths[world.tool()] = KVW("C:\\APP\\TO~1.DLL");
  world.modules.longPaths[KVW("C:\\APP\\TO~1.DLL")] = KVW("C:\\app\\tool.dll");
  world.modules.files = {KVW("C:\\app\\tool.pdf"), KVW("C:\\APP\\TO~1.pdf")};
  EXPECT_EQ(narrow(LocateHelpFile(world.tool(), kNoLanguage, true)), "C:\\app\\tool.pdf");
}

TEST(Translation, AFailureOfAnyCallGivesNoHelpFile) {
  for (int n = 1; n <= 4; ++n) {
    SCOPED_TRACE(n);
    LanguageWorld world;
    world.modules.files = {KVW("C:\\app\\tool.pdf")};
    world.modules.failAt = n;
    EXPECT_EQ(narrow(LocateHelpFile(world.tool(), kNoLanguage, true)), n < 4 ? "" : "C:\\app\\tool.pdf");
    EXPECT_EQ(world.modules.log.size(), n < 4 ? static_cast<std::size_t>(n) : 3u);
  }
}

TEST(Translation, AFailingAllocationLeavesNothingOfAHelpFile) {
  LanguageWorld world;
  world.modules.files = {KVW("C:\\app\\tool.pdf")};
  for (AllocationSweep sweep; sweep.next();) {
    bool isFound = false;
    sweep.run([&] { isFound = !LocateHelpFile(world.tool(), kNoLanguage, true).empty(); });
    EXPECT_EQ(isFound, !sweep.failed());
    world.clearLogs();
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
