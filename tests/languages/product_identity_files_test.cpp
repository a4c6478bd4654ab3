// SPDX-License-Identifier: MIT
//
// Product identity from the version data of real modules (tests/fixtures), by the native backend.
#include "kvbase/languages/internal/product_identity.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

#include "kvbase/platform/module_api.h"
#include "kvbase/platform/shell_api.h"
#include "tests/support/module_files.h"
#include "tests/support/narrow_text.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

// The product folder of a fixture below the common program files folder; what is thrown; or "(none)" for the empty text.
std::string productFolder(std::string const& fixture, bool withVersion = true) {
  TempFolder folder;
  copyModule(folder, fixture, fixture);
  LoadedModule const module(folder.path(moduleFile(fixture)));
  wstring common;
  EXPECT_TRUE(platform::nativeShell().commonProgramFiles(common));
  if (common.empty() || common.back() != KVW('\\')) common += KVW('\\');
  try {
    wstring const product = GetProductCommonFolder(module.handle(), withVersion);
    if (product.empty()) return "(none)";
    EXPECT_EQ(narrow(product.substr(0, common.size())), narrow(common));
    return narrow(product.substr(common.size()));
  } catch (std::runtime_error const& error) {
    return error.what();
  }
}

TEST(ProductIdentityFiles, FolderOfEachKindOfVersionData) {
  struct Row {
    char const* fixture;
    char const* folder;
  };
  Row const rows[] = {
      {"tool", "Scan Works\\Scan Tool\\2.1.0.7\\"},
      {"no_version", "(none)"},
      {"no_translation_table", "VerQueryValue failed"},
      {"empty_translation_table", "VOLQ Fabrication GmbH\\custom product\\internal\\"},
      {"missing_values", "VOLQ Fabrication GmbH\\Scan Tool\\internal\\"},
      {"other_language", "VOLQ Fabrication GmbH\\custom product\\internal\\"},
      {"empty_values", "VOLQ Fabrication GmbH\\Scan Tool\\internal\\"},
      {"two_translations", "Scanwerke\\Scanwerkzeug\\2.1\\"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.fixture);
    EXPECT_EQ(productFolder(row.fixture), row.folder);
  }
}

TEST(ProductIdentityFiles, WithoutVersionTheFolderEndsBehindTheProduct) {
  EXPECT_EQ(productFolder("tool", /*withVersion=*/false), "Scan Works\\Scan Tool\\");
}

TEST(ProductIdentityFiles, ADataModuleHasNoPathAndSoNoFolder) {
  TempFolder folder;
  copyTranslation(folder, "toolabc", "toolabc");
  HINSTANCE const translation = platform::nativeModules().loadAsData(folder.text(KVW("toolabc.dll")).c_str());
  ASSERT_NE(translation, nullptr);
  EXPECT_EQ(narrow(GetProductCommonFolder(translation, true)), "");
  EXPECT_TRUE(platform::nativeModules().freeLibrary(translation));
}

TEST(ProductIdentityFiles, FileVersions) {
  TempFolder folder;
  copyModule(folder, "tool", "tool");
  copyModule(folder, "no_version", "bare");
  copyModule(folder, "no_translation_table", "no_table");
  for (char const* translation : {"toolabc", "otherbuild", "unversioned"}) {
    copyTranslation(folder, translation, translation);
  }
  folder.write("text.dll", "no module");
  folder.makeFolder("folder.dll");
  struct Row {
    std::string file;
    FileVersionQuad version;
  };
  Row const rows[] = {
      {moduleFile("tool"), {1, 2, 3, 4}}, {moduleFile("no_table"), {1, 2, 3, 4}}, {"toolabc.dll", {1, 2, 3, 4}},
      {"otherbuild.dll", {1, 2, 3, 5}},   {moduleFile("bare"), {0, 0, 0, 0}},     {"unversioned.dll", {0, 0, 0, 0}},
      {"text.dll", {0, 0, 0, 0}},         {"folder.dll", {0, 0, 0, 0}},           {"none.dll", {0, 0, 0, 0}},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.file);
    FileVersionQuad const version = GetFileVersionQuad(folder.text(widen(row.file)));
    EXPECT_EQ(version.major, row.version.major);
    EXPECT_EQ(version.minor, row.version.minor);
    EXPECT_EQ(version.build, row.version.build);
    EXPECT_EQ(version.revision, row.version.revision);
  }
  EXPECT_TRUE(GetFileVersionQuad(wstring()) == FileVersionQuad());
}

TEST(ProductIdentityFiles, AFileThatCannotBeOpenedHasNoVersion) {
  TempFolder folder;
  copyTranslation(folder, "toolabc", "toolabc");
  ASSERT_TRUE(GetFileVersionQuad(folder.text(KVW("toolabc.dll"))) != FileVersionQuad());
  std::filesystem::remove(folder.path("toolabc.dll"));
  EXPECT_TRUE(GetFileVersionQuad(folder.text(KVW("toolabc.dll"))) == FileVersionQuad());
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
