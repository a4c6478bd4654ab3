// SPDX-License-Identifier: MIT
//
// Translation libraries and manuals that are real files: which one is taken, and what becomes of the others.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>

#include "kvbase/platform/module_api.h"
#include "tests/shared/modules/started_module.h"
#include "tests/support/intercepted_modules.h"
#include "tests/support/temp_folder.h"
#include "tests/support/user_setting.h"

namespace KV_1_1 {
namespace testing {
namespace {

namespace fs = std::filesystem;
using platform::modules;

constexpr unsigned short kNone = 0xFFFF;

// A module that is loaded but not started, with the language "abc" forced.
class TranslationFiles : public ::testing::Test {
 protected:
  enum class Kind { kModule, kNull, kTranslation };
  struct Result {
    Kind kind = Kind::kNull;
    std::string text;  // the text 100 of the translation
  };

  // Loads a copy of a fixture and its translation.
  Result load(std::string const& fixture) {
    copyModule(folder, fixture, "tool");
    LoadedModule const tool(folder.path(moduleFile("tool")));
    HINSTANCE const translation = LoadTranslationDLL(tool.handle(), kNone);
    if (translation == nullptr) return {Kind::kNull, ""};
    if (translation == tool.handle()) return {Kind::kModule, ""};
    wstring text;
    EXPECT_TRUE(modules().stringTableEntry(translation, 100, text));
    EXPECT_TRUE(modules().freeLibrary(translation));
    return {Kind::kTranslation, narrow(text)};
  }

  TempFolder folder;
  UserSetting const setting{kProgram, "abc"};
};

TEST_F(TranslationFiles, ATranslationOfTheSameVersionIsTaken) {
  copyTranslation(folder, "toolabc", "toolabc");
  Result const result = load("tool");
  EXPECT_EQ(result.kind, Kind::kTranslation);
  EXPECT_EQ(result.text, "Hallo");
}

TEST_F(TranslationFiles, ATranslationOfAnotherBuildIsNot) {
  copyTranslation(folder, "otherbuild", "toolabc");
  EXPECT_EQ(load("tool").kind, Kind::kModule);
}

TEST_F(TranslationFiles, ATranslationWithoutVersionDoesNotFitAModuleThatHasOne) {
  copyTranslation(folder, "unversioned", "toolabc");
  EXPECT_EQ(load("tool").kind, Kind::kModule);
}

TEST_F(TranslationFiles, ATranslationWithVersionDoesNotFitAModuleThatHasNone) {
  copyTranslation(folder, "toolabc", "toolabc");
  EXPECT_EQ(load("no_version").kind, Kind::kModule);
}

TEST_F(TranslationFiles, NoVersionOnEitherSideIsTheSameVersion) {
  copyTranslation(folder, "unversioned", "toolabc");
  Result const result = load("no_version");
  EXPECT_EQ(result.kind, Kind::kTranslation);
  EXPECT_EQ(result.text, "Ohne Version");
}

TEST_F(TranslationFiles, NoFileIsTheModule) {
  EXPECT_EQ(load("tool").kind, Kind::kModule);
}

TEST_F(TranslationFiles, NoFileAndNoVersionIsTheModuleToo) {
  EXPECT_EQ(load("no_version").kind, Kind::kModule);
}

TEST_F(TranslationFiles, GarbageDoesNotFitAModuleWithAVersion) {
  folder.write("toolabc.dll", "This is no library.\n");
  EXPECT_EQ(load("tool").kind, Kind::kModule);
}

TEST_F(TranslationFiles, GarbageForAModuleWithoutVersionGivesNull) {
  for (std::string const& bytes : {std::string(), std::string("This is no library.\n"), std::string("MZ")}) {
    folder.write("toolabc.dll", bytes);
    EXPECT_EQ(load("no_version").kind, Kind::kNull);
    fs::remove(folder.path(moduleFile("tool")));
  }
}

TEST_F(TranslationFiles, AModuleWhoseTranslationIsGarbageSpeaksItsOwnLanguage) {
  folder.write("toolabc.dll", "This is no library.\n");
  copyModule(folder, "no_version", "tool");
  StartedModule tool(folder.path(moduleFile("tool")));
  EXPECT_EQ(textOf(tool.module(), 100), "No version");
}

TEST_F(TranslationFiles, AFolderInThePlaceOfATranslation) {
  folder.makeFolder("toolabc.dll");
  EXPECT_EQ(load("tool").kind, Kind::kModule);
  fs::remove(folder.path(moduleFile("tool")));
  // The folder is readable and, like the module, has no version.
  EXPECT_EQ(load("no_version").kind, Kind::kNull);
}

TEST_F(TranslationFiles, AModuleWithoutATableOfTranslationsThrows) {
  copyModule(folder, "no_translation_table", "tool");
  LoadedModule const tool(folder.path(moduleFile("tool")));
  EXPECT_THROW(LoadTranslationDLL(tool.handle(), kNone), std::runtime_error);
  ModuleOwner owner;
  EXPECT_THROW(owner.start(tool.handle()), std::runtime_error);
  EXPECT_EQ(owner.module().getModuleName().length(), 0);
}

// --- Files that change between two calls ---

class Meddling final : public InterceptedModules {
 public:
  Meddling(std::string const& method, std::string const& file, std::function<void()> action)
      : method_(method), file_(file), action_(std::move(action)) {}
  bool done = false;

 protected:
  void enter(char const* method, wchar const* path) override {
    std::string const text = narrow(wstring(path));
    bool const isFile =
        text.size() > file_.size() && text.compare(text.size() - file_.size(), file_.size(), file_) == 0;
    if (done || method != method_ || !isFile) return;
    done = true;
    action_();
  }

 private:
  std::string const method_;
  std::string const file_;
  std::function<void()> const action_;
};

TEST_F(TranslationFiles, AFileThatChangesMeanwhile) {
  fs::path const file = folder.path("toolabc.dll");
  std::function<void()> const vanish = [&] { fs::remove(file); };
  std::function<void()> const becomeFolder = [&] {
    fs::remove(file);
    fs::create_directory(file);
  };
  std::function<void()> const shrink = [&] { fs::resize_file(file, fs::file_size(file) / 2); };
  std::function<void()> const empty = [&] { fs::resize_file(file, 0); };
  struct Row {
    char const* name;
    char const* method;
    std::function<void()> const& action;
    Kind kind;
  };
  Row const rows[] = {
      {"vanishes before it is looked for", "isReadable", vanish, Kind::kModule},
      {"vanishes before its version is read", "versionInfoSize", vanish, Kind::kModule},
      {"vanishes while its version is read", "versionInfo", vanish, Kind::kModule},
      {"vanishes before it is loaded", "loadAsData", vanish, Kind::kNull},
      {"becomes a folder before its version is read", "versionInfoSize", becomeFolder, Kind::kModule},
      {"becomes a folder before it is loaded", "loadAsData", becomeFolder, Kind::kNull},
      {"shrinks before its version is read", "versionInfoSize", empty, Kind::kModule},
      {"shrinks while its version is read", "versionInfo", shrink, Kind::kModule},
      {"is emptied before it is loaded", "loadAsData", empty, Kind::kNull},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    fs::remove(file);
    fs::remove(folder.path(moduleFile("tool")));
    copyTranslation(folder, "toolabc", "toolabc");
    copyModule(folder, "tool", "tool");
    LoadedModule const tool(folder.path(moduleFile("tool")));
    Meddling meddling(row.method, "toolabc.dll", row.action);
    platform::ScopedBackend<platform::ModuleApi> const scope(meddling);
    HINSTANCE const translation = LoadTranslationDLL(tool.handle(), kNone);
    EXPECT_TRUE(meddling.done);
    EXPECT_EQ(translation == nullptr, row.kind == Kind::kNull);
    EXPECT_EQ(translation == tool.handle(), row.kind == Kind::kModule);
    if (translation != nullptr && translation != tool.handle()) modules().freeLibrary(translation);
  }
}

TEST_F(TranslationFiles, AModuleWhoseTranslationVanishesMeanwhileSpeaksItsOwnLanguage) {
  copyTranslation(folder, "toolabc", "toolabc");
  copyModule(folder, "tool", "tool");
  Meddling meddling("loadAsData", "toolabc.dll", [&] { fs::remove(folder.path("toolabc.dll")); });
  platform::ScopedBackend<platform::ModuleApi> const scope(meddling);
  StartedModule tool(folder.path(moduleFile("tool")));
  EXPECT_TRUE(meddling.done);
  EXPECT_EQ(textOf(tool.module(), 100), "Hello");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
