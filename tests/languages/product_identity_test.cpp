// SPDX-License-Identifier: MIT
#include "kvbase/languages/internal/product_identity.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/languages/language_world.h"
#include "tests/support/allocation_failure.h"

namespace KV_1_1 {
namespace testing {
namespace {

std::string folderOfTool(LanguageWorld const& world, bool withVersion = true) {
  return narrow(GetProductCommonFolder(world.tool(), withVersion));
}

// The text of the exception that `work` throws.
template <class Work>
std::string failureOf(Work work) {
  try {
    work();
  } catch (std::runtime_error const& error) {
    return error.what();
  }
  return "none";
}

// --- The folder ---------------------------------------------------------------------------------------------------------

TEST(ProductIdentity, TheFolderHasCompanyProductAndVersion) {
  LanguageWorld world;
  world.setProduct();
  EXPECT_EQ(folderOfTool(world), "C:\\Common\\Acme\\Scan\\2.1\\");
}

TEST(ProductIdentity, WithoutVersionTheFolderEndsBehindTheProduct) {
  LanguageWorld world;
  world.setProduct();
  EXPECT_EQ(folderOfTool(world, /*withVersion=*/false), "C:\\Common\\Acme\\Scan\\");
  EXPECT_EQ(world.modules.log.back(), "queryVersion \\StringFileInfo\\040904b0\\ProductName");
}

TEST(ProductIdentity, AVersionOfFourNumbersIsOneLevel) {
  LanguageWorld world;
  world.setProduct();
  world.setText(KVW("tool.dll"), KVW("ProductVersion"), KVW("2.1.0.7"));
  EXPECT_EQ(folderOfTool(world), "C:\\Common\\Acme\\Scan\\2.1.0.7\\");
}

TEST(ProductIdentity, ABackslashAtTheEndOfTheCommonFolderIsNotDoubled) {
  LanguageWorld world;
  world.setProduct();
  world.shell.commonFiles = KVW("D:\\");
  EXPECT_EQ(folderOfTool(world), "D:\\Acme\\Scan\\2.1\\");
  world.shell.commonFiles.clear();
  EXPECT_EQ(folderOfTool(world), "\\Acme\\Scan\\2.1\\");
}

TEST(ProductIdentity, TextsStandInTheFolderAsTheyAre) {
  LanguageWorld world;
  world.setProduct();
  world.setText(KVW("tool.dll"), KVW("CompanyName"), KVW(" A:*?\\..\\%d. "));
  EXPECT_EQ(folderOfTool(world), "C:\\Common\\ A:*?\\..\\%d. \\Scan\\2.1\\");
}

TEST(ProductIdentity, TheResourceIsLookedUpByTheBareFileName) {
  LanguageWorld world;
  world.setProduct();
  folderOfTool(world);
  EXPECT_EQ(world.modules.log,
            Texts({"modulePath", "versionInfoSize tool.dll", "versionInfo tool.dll 7 8",
                   "queryVersion \\VarFileInfo\\Translation", "queryVersion \\StringFileInfo\\040904b0\\CompanyName",
                   "queryVersion \\StringFileInfo\\040904b0\\ProductName",
                   "queryVersion \\StringFileInfo\\040904b0\\ProductVersion"}));
  world.modules.paths[world.tool()] = KVW("tool.dll");
  EXPECT_EQ(folderOfTool(world), "C:\\Common\\Acme\\Scan\\2.1\\");
}

TEST(ProductIdentity, WithoutACommonFolderThereIsNone) {
  LanguageWorld world;
  world.setProduct();
  world.shell.hasCommonFiles = false;
  EXPECT_EQ(folderOfTool(world), "");
  EXPECT_EQ(world.modules.log, Texts());
}

TEST(ProductIdentity, AModuleWithoutPathHasNone) {
  LanguageWorld world;
  world.setProduct();
  world.modules.failures = {"modulePath"};
  EXPECT_EQ(folderOfTool(world), "");
}

TEST(ProductIdentity, AModuleWithoutVersionResourceHasNone) {
  LanguageWorld world;
  EXPECT_EQ(folderOfTool(world), "");
  world.setProduct();
  world.modules.failures = {"versionInfoSize"};
  EXPECT_EQ(folderOfTool(world), "");
}

TEST(ProductIdentity, AResourceThatCannotBeReadGivesNone) {
  LanguageWorld world;
  world.setProduct();
  world.modules.failures = {"versionInfo"};
  EXPECT_EQ(folderOfTool(world), "");
}

TEST(ProductIdentity, EachTextHasADefault) {
  LanguageWorld world;
  world.setTranslation(KVW("tool.dll"));
  EXPECT_EQ(folderOfTool(world), "C:\\Common\\VOLQ Fabrication GmbH\\custom product\\internal\\");
  world.setText(KVW("tool.dll"), KVW("ProductName"), KVW("Scan"));
  EXPECT_EQ(folderOfTool(world), "C:\\Common\\VOLQ Fabrication GmbH\\Scan\\internal\\");
}

TEST(ProductIdentity, ATextOfLengthZeroCountsAsMissing) {
  LanguageWorld world;
  world.setProduct();
  world.modules.versions[KVW("tool.dll")].values[KVW("\\StringFileInfo\\040904b0\\CompanyName")].clear();
  EXPECT_EQ(folderOfTool(world), "C:\\Common\\VOLQ Fabrication GmbH\\Scan\\2.1\\");
}

TEST(ProductIdentity, ATextWithoutAddressCountsAsMissing) {
  LanguageWorld world;
  world.setProduct();
  world.modules.versions[KVW("tool.dll")].nullValues = {KVW("\\StringFileInfo\\040904b0\\ProductName")};
  EXPECT_EQ(folderOfTool(world), "C:\\Common\\Acme\\custom product\\2.1\\");
}

TEST(ProductIdentity, AMissingTableOfTranslationsThrowsAtTheCompany) {
  LanguageWorld world;
  world.setText(KVW("tool.dll"), KVW("CompanyName"), KVW("Acme"));
  EXPECT_EQ(failureOf([&] { folderOfTool(world); }), "VerQueryValue failed");
  EXPECT_EQ(world.modules.log.back(), "queryVersion \\VarFileInfo\\Translation");
}

TEST(ProductIdentity, ATableWithoutAddressGivesTheDefaultsAndIsAskedForAgain) {
  LanguageWorld world;
  world.setProduct();
  world.modules.versions[KVW("tool.dll")].nullValues = {KVW("\\VarFileInfo\\Translation")};
  EXPECT_EQ(folderOfTool(world), "C:\\Common\\VOLQ Fabrication GmbH\\custom product\\internal\\");
  EXPECT_EQ(world.modules.calls("queryVersion"), 3);
}

TEST(ProductIdentity, ATableWithoutAWholePairGivesTheDefaults) {
  for (std::size_t size : {0, 3}) {
    SCOPED_TRACE(size);
    LanguageWorld world;
    world.setProduct();
    world.modules.versions[KVW("tool.dll")].values[KVW("\\VarFileInfo\\Translation")].resize(size);
    EXPECT_EQ(folderOfTool(world), "C:\\Common\\VOLQ Fabrication GmbH\\custom product\\internal\\");
    // No text is asked for in a language that is not there.
    EXPECT_EQ(world.modules.calls("queryVersion"), 1);
  }
}

TEST(ProductIdentity, OnlyTheFirstTranslationIsUsedInFourLowerCaseDigitsEach) {
  LanguageWorld world;
  world.setProduct();
  world.modules.versions[KVW("tool.dll")].values[KVW("\\VarFileInfo\\Translation")] =
      std::string("\x0a\x00\xcd\xab\x09\x04\xb0\x04", 8);
  EXPECT_EQ(folderOfTool(world), "C:\\Common\\VOLQ Fabrication GmbH\\custom product\\internal\\");
  EXPECT_EQ(world.modules.log[4], "queryVersion \\StringFileInfo\\000aabcd\\CompanyName");
}

TEST(ProductIdentity, AFailureOfAnyCallFallsBackAsTold) {
  std::string const expected[] = {"",
                                  "",
                                  "",       // path, size, resource
                                  "throw",  // table of translations
                                  "C:\\Common\\VOLQ Fabrication GmbH\\Scan\\2.1\\",
                                  "C:\\Common\\Acme\\custom product\\2.1\\",
                                  "C:\\Common\\Acme\\Scan\\internal\\",
                                  "C:\\Common\\Acme\\Scan\\2.1\\"};
  for (int n = 1; n <= 8; ++n) {
    SCOPED_TRACE(n);
    LanguageWorld world;
    world.setProduct();
    world.modules.failAt = n;
    std::string result = "throw";
    failureOf([&] { result = folderOfTool(world); });
    EXPECT_EQ(result, expected[n - 1]);
  }
}

// The resource is released on every way out.
TEST(ProductIdentity, ExceptionsReleaseTheResource) {
  LanguageWorld world;
  world.setTranslation(KVW("tool.dll"));
  world.modules.versions[KVW("tool.dll")].values.clear();
  bool threw = false;
  AllocationFailure scope(0);
  try {
    GetProductCommonFolder(world.tool(), true);
  } catch (std::runtime_error const&) {
    threw = true;
  }
  world.modules.log = Texts();
  world.shell.log = Texts();
  scope.end();
  EXPECT_TRUE(threw);
  EXPECT_GT(scope.allocations(), 0);
  EXPECT_EQ(scope.live(), 0);
  EXPECT_EQ(scope.mismatched(), 0);
}

TEST(ProductIdentity, AFailingAllocationReleasesEverything) {
  LanguageWorld world;
  world.setProduct();
  for (AllocationSweep sweep; sweep.next();) {
    sweep.run([&] { GetProductCommonFolder(world.tool(), true); });
    world.clearLogs();
  }
}

// --- Texts --------------------------------------------------------------------------------------------------------------

TEST(ProductIdentity, ATextIsWhereTheResourceHasIt) {
  LanguageWorld world;
  world.setProduct();
  wchar const* const fallback = KVW("none");
  VersionInfoBlock block;
  EXPECT_EQ(block.data, nullptr);
  EXPECT_EQ(block.translations, nullptr);
  ASSERT_TRUE(block.load(KVW("tool.dll")));
  EXPECT_EQ(block.handle, 7u);
  auto const& text = world.modules.versions[KVW("tool.dll")].values[KVW("\\StringFileInfo\\040904b0\\ProductName")];
  EXPECT_EQ(static_cast<void const*>(block.GetVersionInfoString(KVW("ProductName"), fallback)), text.data());
  EXPECT_EQ(block.GetVersionInfoString(KVW("Comments"), fallback), fallback);
  EXPECT_EQ(block.translationCount, 1u);
  EXPECT_EQ(world.modules.calls("queryVersion"), 3);
}

TEST(ProductIdentity, AKeyThatFillsTheQueryThrows) {
  LanguageWorld world;
  world.setTranslation(KVW("tool.dll"));
  VersionInfoBlock block;
  ASSERT_TRUE(block.load(KVW("tool.dll")));
  wstring const fits(234, KVW('k'));
  EXPECT_EQ(shown(block.GetVersionInfoString(fits.c_str(), KVW("none"))), "none");
  EXPECT_EQ(world.modules.log.back(), "queryVersion \\StringFileInfo\\040904b0\\" + narrow(fits));
  wstring const tooLong(235, KVW('k'));
  EXPECT_EQ(failureOf([&] { block.GetVersionInfoString(tooLong.c_str(), KVW("none")); }), "stprintf failed");
  EXPECT_EQ(world.modules.calls("queryVersion"), 2);
}

TEST(ProductIdentity, WithoutATableEvenALongKeyGivesTheDefault) {
  LanguageWorld world;
  world.modules.versions[KVW("tool.dll")].nullValues = {KVW("\\VarFileInfo\\Translation")};
  VersionInfoBlock block;
  ASSERT_TRUE(block.load(KVW("tool.dll")));
  wstring const tooLong(300, KVW('k'));
  EXPECT_EQ(shown(block.GetVersionInfoString(tooLong.c_str(), KVW("none"))), "none");
}

// A resource of twelve bytes: a translation, and four units that reach its end without a terminator.
class UnterminatedVersion final : public ScriptedModules {
 public:
  ulong32 versionInfoSize(wchar const*, ulong32&) override { return 12; }
  bool versionInfo(wchar const*, ulong32, ulong32 size, void* block) override {
    std::memcpy(block,
                "\x09\x04\xb0\x04"
                "A\0c\0m\0e\0",
                size);
    return true;
  }
  bool queryVersion(void const* block, wchar const* path, void const*& value, ulong32& length) override {
    bool const isTable = path == wstring(KVW("\\VarFileInfo\\Translation"));
    value = static_cast<char const*>(block) + (isTable ? 0 : 4);
    length = 4;
    return true;
  }
};

TEST(ProductIdentity, ATextWithoutTerminatorEndsWithTheResource) {
  UnterminatedVersion modules;
  platform::ScopedBackend<platform::ModuleApi> const scope(modules);
  VersionInfoBlock block;
  ASSERT_TRUE(block.load(KVW("tool.dll")));
  EXPECT_EQ(shown(block.GetVersionInfoString(KVW("CompanyName"), KVW("none"))), "Acme");
}

// --- The version of a file ----------------------------------------------------------------------------------------------

std::string dotted(FileVersionQuad const& quad) {
  return std::to_string(quad.major) + '.' + std::to_string(quad.minor) + '.' + std::to_string(quad.build) + '.' +
         std::to_string(quad.revision);
}

TEST(ProductIdentity, TheFileVersionHasFourParts) {
  LanguageWorld world;
  world.setVersion(KVW("C:\\app\\tool.dll"), 0x000A0000, 0x00002521);
  world.setVersion(KVW("C:\\app\\tooldeu.dll"), 0x00010002, 0x00030004);
  world.setVersion(KVW("max.dll"), 0xFFFFFFFF, 0xFFFFFFFF);
  EXPECT_EQ(dotted(GetFileVersionQuad(KVW("C:\\app\\tool.dll"))), "10.0.0.9505");
  EXPECT_EQ(dotted(GetFileVersionQuad(KVW("C:\\app\\tooldeu.dll"))), "1.2.3.4");
  EXPECT_EQ(dotted(GetFileVersionQuad(KVW("max.dll"))), "65535.65535.65535.65535");
}

TEST(ProductIdentity, TheEmptyPathHasNoVersion) {
  LanguageWorld world;
  world.setVersion(KVW(""), 0x00010002, 0x00030004);
  EXPECT_EQ(dotted(GetFileVersionQuad(wstring())), "0.0.0.0");
  EXPECT_EQ(world.modules.log, Texts());
}

TEST(ProductIdentity, AFailureOfAnyCallGivesNoVersion) {
  for (int n = 1; n <= 4; ++n) {
    SCOPED_TRACE(n);
    LanguageWorld world;
    world.setVersion(KVW("a.dll"), 0x00010002, 0x00030004);
    world.modules.failAt = n;
    EXPECT_EQ(dotted(GetFileVersionQuad(KVW("a.dll"))), n < 4 ? "0.0.0.0" : "1.2.3.4");
  }
}

TEST(ProductIdentity, AFileWithoutFixedPartHasNoVersion) {
  LanguageWorld world;
  EXPECT_EQ(dotted(GetFileVersionQuad(KVW("missing.dll"))), "0.0.0.0");
  world.setTranslation(KVW("a.dll"));
  EXPECT_EQ(dotted(GetFileVersionQuad(KVW("a.dll"))), "0.0.0.0");
  world.modules.versions[KVW("a.dll")].nullValues = {KVW("\\")};
  EXPECT_EQ(dotted(GetFileVersionQuad(KVW("a.dll"))), "0.0.0.0");
}

TEST(ProductIdentity, AFixedPartThatIsTooShortGivesNoVersion) {
  LanguageWorld world;
  world.setVersion(KVW("a.dll"), 0x00010002, 0x00030004);
  std::string& fixed = world.modules.versions[KVW("a.dll")].values[KVW("\\")];
  fixed.resize(16);
  EXPECT_EQ(dotted(GetFileVersionQuad(KVW("a.dll"))), "1.2.3.4");
  fixed.resize(15);
  EXPECT_EQ(dotted(GetFileVersionQuad(KVW("a.dll"))), "0.0.0.0");
}

TEST(ProductIdentity, WithoutMemoryThereIsNoVersion) {
  LanguageWorld world;
  world.setVersion(KVW("a.dll"), 0x00010002, 0x00030004);
  wstring const path = KVW("a.dll");
  for (AllocationSweep sweep; sweep.next();) {
    FileVersionQuad quad = {};
    sweep.runReporting([&] { quad = GetFileVersionQuad(path); });
    EXPECT_EQ(dotted(quad), sweep.failed() ? "0.0.0.0" : "1.2.3.4");
    world.clearLogs();
  }
}

TEST(ProductIdentity, VersionsAreEqualIfAllPartsAre) {
  FileVersionQuad const version = {1, 2, 3, 4};
  EXPECT_TRUE(version == FileVersionQuad({1, 2, 3, 4}));
  EXPECT_FALSE(version != FileVersionQuad({1, 2, 3, 4}));
  for (FileVersionQuad const& other : {FileVersionQuad{9, 2, 3, 4}, FileVersionQuad{1, 9, 3, 4},
                                       FileVersionQuad{1, 2, 9, 4}, FileVersionQuad{1, 2, 3, 9}}) {
    SCOPED_TRACE(dotted(other));
    EXPECT_TRUE(version != other);
    EXPECT_FALSE(version == other);
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
