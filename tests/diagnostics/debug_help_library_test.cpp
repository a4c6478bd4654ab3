// SPDX-License-Identifier: MIT
//
// Where the debug-help library is looked for, its functions, and its preparation.
#include <gtest/gtest.h>

#include <algorithm>

#include "kvbase/diagnostics/internal/stack_walker_impl.h"
#include "tests/diagnostics/walker_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

constexpr wchar const* kTools32 = KVW("C:\\Programs\\Debugging Tools for Windows\\dbghelp.dll");
constexpr wchar const* kTools64 = KVW("C:\\Programs\\Debugging Tools for Windows 64-Bit\\dbghelp.dll");
constexpr wchar const* kBareName = KVW("dbghelp.dll");

class DebugHelpLibrary : public ScriptedWalk {
 protected:
  DebugHelpLibrary() { help.wideVariables[KVW("ProgramFiles")] = KVW("C:\\Programs"); }

  void addFile(wchar const* path) { files.script.attributes[path] = platform::kAttributeNormal; }
  // A file that is a debug-help library.
  void addLibrary(wchar const* path) {
    addFile(path);
    help.libraries[path] = help.libraries.at(kBareName);
  }
  // The names with which debug-help libraries were asked for.
  Texts asked() const {
    Texts names;
    for (std::string const& call : calls("loadLibrary ")) {
      std::string const name = call.substr(12);
      if (name.find("dbghelp.dll") != std::string::npos) names.push_back(name);
    }
    return names;
  }
  Texts probed() const { return files.log(); }

  RecordingWalker walker{0};
};

// --- The search ---

TEST_F(DebugHelpLibrary, IsLoadedByBareNameIfNoToolsFolderHasIt) {
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(probed(), Texts({"getAttributes C:\\app\\tool.exe.local",
                             "getAttributes C:\\Programs\\Debugging Tools for Windows\\dbghelp.dll",
                             "getAttributes C:\\Programs\\Debugging Tools for Windows 64-Bit\\dbghelp.dll"}));
  EXPECT_EQ(calls("environmentVariable"),
            Texts({"environmentVariable ProgramFiles", "environmentVariable ProgramFiles"}));
  EXPECT_EQ(asked(), Texts({"dbghelp.dll"}));
}

TEST_F(DebugHelpLibrary, OfThe32BitToolsIsTakenWithoutALookAtThe64BitFolder) {
  addLibrary(kTools32);
  addLibrary(kTools64);
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(asked(), Texts({narrow(kTools32)}));
  EXPECT_EQ(probed().size(), 2u);
  EXPECT_EQ(calls("environmentVariable").size(), 1u);
}

TEST_F(DebugHelpLibrary, OfThe64BitToolsIsTakenIfThe32BitFolderHasNone) {
  addLibrary(kTools64);
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(asked(), Texts({narrow(kTools64)}));
}

TEST_F(DebugHelpLibrary, OfThe64BitToolsIsTakenIfThatOfThe32BitToolsCannotBeLoaded) {
  addFile(kTools32);
  addLibrary(kTools64);
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(asked(), Texts({narrow(kTools32), narrow(kTools64)}));
}

TEST_F(DebugHelpLibrary, IsLoadedByBareNameIfThoseOfTheToolsCannotBeLoaded) {
  addFile(kTools32);
  addFile(kTools64);
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(asked(), Texts({narrow(kTools32), narrow(kTools64), "dbghelp.dll"}));
}

TEST_F(DebugHelpLibrary, WithALocalFileTheToolsFoldersAreSkipped) {
  addFile(KVW("C:\\app\\tool.exe.local"));
  addLibrary(kTools32);
  addLibrary(kTools64);
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(asked(), Texts({"dbghelp.dll"}));
  EXPECT_EQ(probed(), Texts({"getAttributes C:\\app\\tool.exe.local"}));
  EXPECT_EQ(calls("environmentVariable"), Texts());
}

TEST_F(DebugHelpLibrary, WithoutThePathOfTheProgramTheToolsFoldersAreSkipped) {
  addLibrary(kTools32);
  help.programPathText.reset();
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(asked(), Texts({"dbghelp.dll"}));
  EXPECT_EQ(probed(), Texts());
}

TEST_F(DebugHelpLibrary, WithoutTheFolderOfProgramsTheToolsAreNotLookedFor) {
  help.wideVariables.clear();
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(asked(), Texts({"dbghelp.dll"}));
  EXPECT_EQ(probed(), Texts({"getAttributes C:\\app\\tool.exe.local"}));
}

TEST_F(DebugHelpLibrary, PathsOf4096UnitsAndMoreAreNotLookedFor) {
  struct {
    char const* name;
    std::size_t program;   // length of the path of the program, in units
    std::size_t programs;  // length of the value of the variable
    std::size_t probes;
  } const rows[] = {
      {"all fit", 100, 100, 3},
      {".local just fits", 4095 - 6, 100, 3},
      {".local does not fit, so nothing is searched", 4096 - 6, 100, 0},
      {"the 64-bit name just fits", 100, 4095 - 47, 3},
      {"the 64-bit name does not fit", 100, 4096 - 47, 2},
      {"the 32-bit name just fits", 100, 4095 - 40, 2},
      {"neither fits", 100, 4096 - 40, 1},
      {"longer than the buffer by itself", 5000, 5000, 0},
  };
  ASSERT_EQ(wstring(KVW("\\Debugging Tools for Windows\\dbghelp.dll")).size(), 40u);
  ASSERT_EQ(wstring(KVW("\\Debugging Tools for Windows 64-Bit\\dbghelp.dll")).size(), 47u);
  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    files.clearLog();
    help.programPathText = wstring(row.program, KVW('p'));
    help.wideVariables[KVW("ProgramFiles")] = wstring(row.programs, KVW('f'));
    RecordingWalker another(0);
    EXPECT_EQ(another.LoadModules(), 1);
    EXPECT_EQ(probed().size(), row.probes);
  }
}

// --- The functions ---

TEST_F(DebugHelpLibrary, FunctionsAreTakenInOrder) {
  walker.LoadModules();
  Texts all = calls("function ");
  all.resize(13);
  EXPECT_EQ(all,
            Texts({"function SymInitialize", "function SymCleanup", "function StackWalk64", "function SymGetOptions",
                   "function SymSetOptions", "function SymFunctionTableAccess64", "function SymGetLineFromAddr64",
                   "function SymGetModuleBase64", "function SymGetModuleInfo64", "function SymGetSymFromAddr64",
                   "function UnDecorateSymbolName", "function SymLoadModule64", "function SymGetSearchPath"}));
}

TEST_F(DebugHelpLibrary, EachRequiredFunctionThatIsMissingFailsTheStart) {
  for (char const* const function :
       {"SymInitialize", "SymCleanup", "StackWalk64", "SymGetOptions", "SymSetOptions", "SymFunctionTableAccess64",
        "SymGetModuleBase64", "SymGetModuleInfo64", "SymGetSymFromAddr64", "UnDecorateSymbolName", "SymLoadModule64"}) {
    SCOPED_TRACE(function);
    ScriptedDebug::Functions const complete = help.libraries.at(kBareName);
    help.remove(kBareName, function);
    help.log.clear();
    {
      RecordingWalker another(0);
      errors.error = 0;
      EXPECT_EQ(another.LoadModules(), 0);
      EXPECT_EQ(errors.error, 1114u);
      EXPECT_EQ(another.log, Texts({"OnDbgHelpErr Error while initializing dbghelp.dll|0|0"}));
      EXPECT_EQ(another.implementation()->library, nullptr);
      EXPECT_EQ(another.implementation()->symCleanup, nullptr);
      errors.error = 0;
      EXPECT_EQ(another.walk(), 0);
      EXPECT_EQ(errors.error, 1114u);
    }
    EXPECT_EQ(help.calls("SymInitialize") + help.calls("SymCleanup"), 0);
    EXPECT_TRUE(help.allFreed());
    help.libraries.at(kBareName) = complete;
  }
}

TEST_F(DebugHelpLibrary, TheOptionalFunctionsMayBeMissing) {
  help.remove(kBareName, "SymGetLineFromAddr64");
  help.remove(kBareName, "SymGetSearchPath");
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(walker.log, Texts({"OnSymInit |530|ann", loadedTool()}));
}

TEST_F(DebugHelpLibrary, ThatIsMissingFailsTheStart) {
  help.libraries.erase(kBareName);
  EXPECT_EQ(walker.LoadModules(), 0);
  EXPECT_EQ(errors.error, 1114u);
  EXPECT_EQ(walker.log, Texts({"OnDbgHelpErr Error while initializing dbghelp.dll|0|0"}));
  EXPECT_EQ(calls("function"), Texts());
}

TEST_F(DebugHelpLibrary, IsTriedAgainByTheNextCall) {
  ScriptedDebug::Functions const complete = help.libraries.at(kBareName);
  help.remove(kBareName, "SymInitialize");
  EXPECT_EQ(walker.LoadModules(), 0);
  EXPECT_TRUE(help.allFreed());
  help.libraries.at(kBareName) = complete;
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(asked(), Texts({"dbghelp.dll", "dbghelp.dll"}));
}

// --- The preparation ---

TEST_F(DebugHelpLibrary, IsPreparedInOrder) {
  walker.LoadModules();
  auto const start = std::find(help.log.begin(), help.log.end(), "SymInitialize process (null) 0");
  ASSERT_GE(help.log.end() - start, 4);
  EXPECT_EQ(Texts(start, start + 4),
            Texts({"SymInitialize process (null) 0", "SymGetOptions", "SymSetOptions 530", "SymGetSearchPath 1024"}));
}

TEST_F(DebugHelpLibrary, TheOptionWordKeepsItsBitsAndTheOneThatIsSetIsReported) {
  help.symOptions = 0x80000001;
  help.optionsAfterSetting = 0xFFFFFFFF;
  walker.LoadModules();
  EXPECT_EQ(calls("SymSetOptions"), Texts({"SymSetOptions " + std::to_string(0x80000211u)}));
  EXPECT_EQ(walker.logged("OnSymInit"), Texts({"OnSymInit path in effect|4294967295|ann"}));
}

TEST_F(DebugHelpLibrary, AFailingSymInitializeIsToldAndTheStartGoesOn) {
  help.initializes = false;
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(walker.log, Texts({"OnDbgHelpErr SymInitialize|487|0", "OnSymInit path in effect|530|ann", loadedTool()}));
}

TEST_F(DebugHelpLibrary, AFailingSymGetSearchPathIsToldAndThePathIsEmpty) {
  help.hasSearchPath = false;
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(walker.log, Texts({"OnDbgHelpErr SymGetSearchPath|487|0", "OnSymInit |530|ann", loadedTool()}));
}

TEST_F(DebugHelpLibrary, AnOverlongPathInEffectIsCut) {
  help.searchPath = std::string(3000, 'x');
  walker.LoadModules();
  EXPECT_EQ(walker.logged("OnSymInit"), Texts({"OnSymInit " + std::string(1023, 'x') + "|530|ann"}));
}

TEST_F(DebugHelpLibrary, AUserWithoutANameIsEmpty) {
  help.userNameText.reset();
  walker.LoadModules();
  EXPECT_EQ(walker.logged("OnSymInit"), Texts({"OnSymInit path in effect|530|"}));
}

TEST_F(DebugHelpLibrary, IsNotStartedWithoutAParent) {
  StackWalkerImpl impl(nullptr, help.process);
  EXPECT_FALSE(impl.initialize(nullptr));
  EXPECT_EQ(help.log, Texts());
}

// --- A second start, after no modules were listed ---

TEST_F(DebugHelpLibrary, ASecondStartTakesTheLoadedLibraryAndPreparesItAgain) {
  help.snapshot.clear();
  EXPECT_EQ(walker.LoadModules(), 0);
  EXPECT_EQ(walker.LoadModules(), 0);
  EXPECT_EQ(asked(), Texts({"dbghelp.dll"}));
  EXPECT_EQ(help.calls("SymInitialize"), 2);
  EXPECT_EQ(walker.logged("OnSymInit").size(), 2u);
}

TEST_F(DebugHelpLibrary, ASecondStartThatFindsTheToolsTakesThem) {
  help.snapshot.clear();
  EXPECT_EQ(walker.LoadModules(), 0);
  addLibrary(kTools32);
  EXPECT_EQ(walker.LoadModules(), 0);
  EXPECT_EQ(asked(), Texts({"dbghelp.dll", narrow(kTools32)}));
  EXPECT_EQ(walker.implementation()->library, help.library(kTools32));
  EXPECT_EQ(help.loaded[help.library(kBareName)], 0);
  EXPECT_EQ(walker.LoadModules(), 0);
  EXPECT_EQ(help.loaded[help.library(kTools32)], 1);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
