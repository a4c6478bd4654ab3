// SPDX-License-Identifier: MIT
//
// The two services that list modules, and what is told about each module.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "kvbase/diagnostics/internal/stack_walker_impl.h"
#include "tests/diagnostics/walker_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

constexpr wchar const* kKernel = KVW("kernel32.dll");
constexpr wchar const* kToolhelp = KVW("tlhelp32.dll");
constexpr wchar const* kPsapi = KVW("psapi.dll");

class ModuleListing : public ScriptedWalk {
 protected:
  ModuleListing() { help.listed = {{"C:\\app\\listed.dll", "listed.dll", 0x5000, 300}}; }

  // The calls behind the preparation of the debug-help library.
  Texts callsOfListing() const {
    auto const begin = std::find_if(help.log.begin(), help.log.end(), [](std::string const& call) {
      return call.compare(0, 16, "SymGetSearchPath") == 0;
    });
    return Texts(begin + 1, help.log.end());
  }
  void skipSnapshots() { help.libraries.at(kKernel).clear(); }
  bool isLoaded(wchar const* library) { return help.loaded[help.library(library)] != 0; }

  RecordingWalker walker{0};
};

// --- The snapshot service ---

TEST_F(ModuleListing, ASnapshotListsThePathNameBaseAndSizeOfEachModule) {
  help.snapshot = {{"C:\\a\\tool.exe", "tool.exe", 0x400000, 8192}, {"C:\\b\\x.dll", "x.dll", 0x7FF000000000, 1}};
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(callsOfListing(),
            Texts({"loadLibrary kernel32.dll", "function CreateToolhelp32Snapshot", "function Module32First",
                   "function Module32Next", "CreateToolhelp32Snapshot 8 4711",
                   "SymLoadModule64 C:\\a\\tool.exe tool.exe 4194304 8192", "SymGetModuleInfo64 4194304 584",
                   "SymLoadModule64 C:\\b\\x.dll x.dll 140668768878592 1", "SymGetModuleInfo64 140668768878592 584",
                   "closeHandle", "freeLibrary kernel32.dll"}));
}

TEST_F(ModuleListing, TheSnapshotIsOfTheWalkersProcess) {
  RecordingWalker(99, help.process).LoadModules();
  EXPECT_EQ(calls("CreateToolhelp32Snapshot"), Texts({"CreateToolhelp32Snapshot 8 99"}));
}

TEST_F(ModuleListing, AModuleThatCannotBeLoadedCountsAllTheSame) {
  help.loadErrors["C:\\app\\tool.exe"] = 2;
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(walker.log, Texts({"OnSymInit path in effect|530|ann",
                               "OnLoadModule C:\\app\\tool.exe|tool.exe|4194304|8192|2|-unknown-||0"}));
}

TEST_F(ModuleListing, ALibraryThatLacksAFunctionIsFreedAndTheNextTaken) {
  for (char const* const function : {"CreateToolhelp32Snapshot", "Module32First", "Module32Next"}) {
    SCOPED_TRACE(function);
    ScriptedDebug::Functions const complete = help.libraries.at(kKernel);
    help.libraries[kToolhelp] = complete;
    help.remove(kKernel, function);
    help.log.clear();
    RecordingWalker another(0);
    EXPECT_EQ(another.LoadModules(), 1);
    EXPECT_EQ(another.log, started());
    EXPECT_EQ(calls("loadLibrary"),
              Texts({"loadLibrary dbghelp.dll", "loadLibrary kernel32.dll", "loadLibrary tlhelp32.dll"}));
    EXPECT_EQ(calls("freeLibrary"), Texts({"freeLibrary kernel32.dll", "freeLibrary tlhelp32.dll"}));
    help.libraries.at(kKernel) = complete;
  }
}

TEST_F(ModuleListing, WithoutAnyLibraryOfSnapshotsPsapiIsAsked) {
  skipSnapshots();
  help.libraries[kToolhelp] = {};
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(calls("loadLibrary"), Texts({"loadLibrary dbghelp.dll", "loadLibrary kernel32.dll",
                                         "loadLibrary tlhelp32.dll", "loadLibrary psapi.dll"}));
  EXPECT_EQ(calls("freeLibrary"),
            Texts({"freeLibrary kernel32.dll", "freeLibrary tlhelp32.dll", "freeLibrary psapi.dll"}));
  EXPECT_EQ(walker.logged("OnLoadModule"),
            Texts({"OnLoadModule C:\\app\\listed.dll|listed.dll|20480|300|0|-unknown-||0"}));
}

TEST_F(ModuleListing, AFailedSnapshotLeavesItsLibraryLoadedAndPsapiIsAsked) {
  help.takesSnapshot = false;
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(walker.logged("OnLoadModule").size(), 1u);
  EXPECT_TRUE(isLoaded(kKernel));
  EXPECT_FALSE(isLoaded(kPsapi));
  EXPECT_EQ(help.calls("closeHandle"), 0);
  EXPECT_EQ(calls("loadLibrary tlhelp32.dll"), Texts());
}

TEST_F(ModuleListing, AnEmptySnapshotIsClosedAndPsapiIsAsked) {
  help.snapshot.clear();
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(walker.logged("OnLoadModule"),
            Texts({"OnLoadModule C:\\app\\listed.dll|listed.dll|20480|300|0|-unknown-||0"}));
  EXPECT_EQ(help.openHandles, 0);
  EXPECT_FALSE(isLoaded(kKernel));
}

TEST_F(ModuleListing, OverlongTextsOfASnapshotAreCut) {
  help.snapshot = {{std::string(400, 'p'), std::string(400, 'n'), 1, 2}};
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(walker.logged("OnLoadModule"),
            Texts({"OnLoadModule " + std::string(259, 'p') + "|" + std::string(255, 'n') + "|1|2|0|-unknown-||0"}));
}

TEST_F(ModuleListing, IsOverIfACallbackThrows) {
  class Throwing : public StackWalker {
   public:
    using StackWalker::StackWalker;
    void OnSymInit(char const*, ulong32, char const*) override {}
    void OnLoadModule(char const*, char const*, unsigned long long, ulong32, ulong32, char const*, char const*,
                      unsigned long long) override {
      throw 1;
    }
  };
  for (bool const hasSnapshot : {true, false}) {
    if (!hasSnapshot) help.snapshot.clear();
    {
      Throwing another(0);
      EXPECT_THROW(another.LoadModules(), int);
    }
    EXPECT_TRUE(help.allFreed());
  }
}

// --- psapi ---

class PsapiListing : public ModuleListing {
 protected:
  PsapiListing() { skipSnapshots(); }
};

TEST_F(PsapiListing, ListsEachModule) {
  help.listed = {{"C:\\a\\tool.exe", "tool.exe", 0x400000, 8192}, {"C:\\b\\x.dll", "x.dll", 0x7FF000000000, 1}};
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(calls("EnumProcessModules"), Texts({"EnumProcessModules 8096"}));
  EXPECT_EQ(calls("SymLoadModule64"), Texts({"SymLoadModule64 C:\\a\\tool.exe tool.exe 4194304 8192",
                                             "SymLoadModule64 C:\\b\\x.dll x.dll 140668768878592 1"}));
  EXPECT_EQ(help.log.back(), "freeLibrary psapi.dll");
}

TEST_F(PsapiListing, AModuleThatCannotBeLoadedIsToldAndTheOthersAreListed) {
  help.listed.push_back({"b", "b", 2, 2});
  help.loadErrors["C:\\app\\listed.dll"] = 126;
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(walker.log, Texts({"OnSymInit path in effect|530|ann",
                               "OnLoadModule C:\\app\\listed.dll|listed.dll|20480|300|126|-unknown-||0",
                               "OnDbgHelpErr LoadModule|126|0", "OnLoadModule b|b|2|2|0|-unknown-||0"}));
}

TEST_F(PsapiListing, IsTrueIfNoModuleCouldBeLoaded) {
  help.loadErrors["C:\\app\\listed.dll"] = 126;
  EXPECT_EQ(walker.LoadModules(), 1);
}

TEST_F(PsapiListing, FailsWithoutItsLibrary) {
  help.libraries.erase(kPsapi);
  errors.error = 55;
  EXPECT_EQ(walker.LoadModules(), 0);
  // There is no message, and the last error is whatever it was.
  EXPECT_EQ(walker.log, Texts({"OnSymInit path in effect|530|ann"}));
  EXPECT_EQ(errors.error, 55u);
}

TEST_F(PsapiListing, FailsWithoutOneOfItsFunctions) {
  for (char const* const function :
       {"EnumProcessModules", "GetModuleFileNameExA", "GetModuleBaseNameA", "GetModuleInformation"}) {
    SCOPED_TRACE(function);
    ScriptedDebug::Functions const complete = help.libraries.at(kPsapi);
    help.remove(kPsapi, function);
    EXPECT_EQ(walker.LoadModules(), 0);
    EXPECT_FALSE(isLoaded(kPsapi));
    help.libraries.at(kPsapi) = complete;
  }
  EXPECT_EQ(help.calls("EnumProcessModules"), 0);
  EXPECT_EQ(walker.LoadModules(), 1);
}

TEST_F(PsapiListing, FailsIfModulesCannotBeEnumerated) {
  help.enumerates = false;
  EXPECT_EQ(walker.LoadModules(), 0);
  EXPECT_FALSE(isLoaded(kPsapi));
}

TEST_F(PsapiListing, TakesFrom1To1012Handles) {
  struct {
    char const* name;
    std::size_t modules;
    ulong32 needed;  // in bytes, as the service tells; 0 stands for the size of the handles of all modules
    std::size_t listed;
  } const rows[] = {
      {"none", 0, 0, 0},
      {"less than a handle", 1, 7, 0},
      {"one", 1, 0, 1},
      {"one and a half", 1, 12, 1},
      {"all that fit", 1012, 0, 1012},
      {"a byte more than fits", 1012, 8097, 0},
      {"one more than fits", 1013, 0, 0},
      {"many more", 1012, 0xFFFFFFFF, 0},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    RecordingWalker another(0);
    help.listed.assign(row.modules, {"path", "name", 1, 2});
    help.needed = row.needed;
    EXPECT_EQ(another.LoadModules(), row.listed != 0 ? 1 : 0);
    EXPECT_EQ(another.logged("OnLoadModule").size(), row.listed);
    EXPECT_FALSE(isLoaded(kPsapi));
  }
}

TEST_F(PsapiListing, WhatCannotBeHadOfAModuleIsEmpty) {
  help.knowsModules = false;
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(walker.logged("OnLoadModule"), Texts({"OnLoadModule ||0|0|487|-unknown-||0"}));
}

TEST_F(PsapiListing, NamesMayFillTheirBlocks) {
  help.listed = {{std::string(9000, 'p'), std::string(8096, 'n'), 1, 2}};
  EXPECT_EQ(walker.LoadModules(), 1);
  EXPECT_EQ(walker.logged("OnLoadModule"),
            Texts({"OnLoadModule " + std::string(8095, 'p') + "|" + std::string(8095, 'n') + "|1|2|0|-unknown-||0"}));
}

// --- What OnLoadModule is told ---

class LoadedModule : public ScriptedWalk {
 protected:
  static constexpr std::uint64_t kBase = 0x400000;

  // The part of the callback's arguments from the error code on.
  std::string told(int options = 0) {
    RecordingWalker walker(options);
    walker.LoadModules();
    return walker.logged("OnLoadModule")
        .at(0)
        .substr(std::strlen("OnLoadModule C:\\app\\tool.exe|tool.exe|4194304|8192|"));
  }
  // Gives the program a version resource.
  void setVersion(std::uint32_t high, std::uint32_t low, std::size_t size = 52) {
    std::string fixed(52, 'f');
    std::memcpy(&fixed[8], &high, sizeof high);
    std::memcpy(&fixed[12], &low, sizeof low);
    version_.values[KVW("\\")] = fixed.substr(0, size);
    ScriptedModules::VersionData const* const data = &version_;
    help.versionBlocks["C:\\app\\tool.exe"].assign(reinterpret_cast<char const*>(&data), sizeof data);
  }

  ScriptedModules::VersionData version_;
};

TEST_F(LoadedModule, SymbolTypesWhileLoading) {
  struct {
    int type;
    char const* text;
  } const rows[] = {{0, "-nosymbols-"}, {1, "COFF"},       {2, "CV"},         {3, "PDB"},
                    {4, "-exported-"},  {5, "-deferred-"}, {6, "SYM"},        {7, "-unknown-"},
                    {8, "Virtual"},     {9, "DIA"},        {10, "-unknown-"}, {-1, "-unknown-"}};
  for (auto const& row : rows) {
    SCOPED_TRACE(row.type);
    help.modules[kBase] = moduleInfo(row.type, "m", kBase, "C:\\app\\tool.pdb");
    EXPECT_EQ(told(), std::string("0|") + row.text + "|C:\\app\\tool.pdb|0");
  }
}

TEST_F(LoadedModule, IsOfUnknownTypeWithoutAnImageNameIfItsRecordCannotBeHad) {
  EXPECT_EQ(told(), "0|-unknown-||0");
}

TEST_F(LoadedModule, AFailureWithTheLastError0IsNoError) {
  help.loadErrors["C:\\app\\tool.exe"] = 0;
  EXPECT_EQ(told(), "0|-unknown-||0");
}

TEST_F(LoadedModule, AnImageNameWithoutATerminatorIsCut) {
  help.modules[kBase] = moduleInfo(3, "m", kBase, std::string(300, 'p'));
  EXPECT_EQ(told(), "0|PDB|" + std::string(255, 'p') + "|0");
}

TEST_F(LoadedModule, HasItsFileVersionWithTheOption) {
  setVersion(0x00010002, 0x00030004);
  EXPECT_EQ(told(StackWalker::OptionFileVersion), "0|-unknown-||" + std::to_string(0x0001000200030004));
  EXPECT_EQ(calls("versionInfo"), Texts({"versionInfoSize C:\\app\\tool.exe", "versionInfo C:\\app\\tool.exe 8"}));
  EXPECT_EQ(modules.log, Texts({"queryVersion \\"}));
}

TEST_F(LoadedModule, HasNoFileVersionWithoutTheOption) {
  setVersion(1, 2);
  EXPECT_EQ(told(63 & ~8), "0|-unknown-||0");
  EXPECT_EQ(calls("versionInfo"), Texts());
}

TEST_F(LoadedModule, AFileVersionThatCannotBeReadIs0) {
  EXPECT_EQ(told(8), "0|-unknown-||0");
  EXPECT_EQ(calls("versionInfo"), Texts({"versionInfoSize C:\\app\\tool.exe"}));

  setVersion(1, 2);
  help.readsVersions = false;
  EXPECT_EQ(told(8), "0|-unknown-||0");
  EXPECT_EQ(modules.log, Texts());
  help.readsVersions = true;

  setVersion(1, 2, 15);
  EXPECT_EQ(told(8), "0|-unknown-||0");
  setVersion(1, 2, 16);
  EXPECT_EQ(told(8), "0|-unknown-||" + std::to_string(0x100000002));

  version_.values.clear();
  EXPECT_EQ(told(8), "0|-unknown-||0");
  version_.nullValues.insert(KVW("\\"));
  EXPECT_EQ(told(8), "0|-unknown-||0");
}

TEST_F(LoadedModule, IsLoadedWithoutAParentToTell) {
  RecordingWalker walker(0);
  walker.LoadModules();
  StackWalkerImpl& impl = *walker.implementation();
  StackWalker* const parent = impl.parent;
  impl.parent = nullptr;
  walker.log.clear();
  help.loadErrors["bad"] = 5;
  EXPECT_EQ(impl.loadModule(help.process, "good", "g", 1, 2), 0u);
  EXPECT_EQ(impl.loadModule(help.process, "bad", "b", 1, 2), 5u);
  EXPECT_EQ(walker.log, Texts());
  impl.parent = parent;
}

// --- The record of a module ---

class ModuleRecord : public ScriptedWalk {
 protected:
  ModuleRecord() { walker.LoadModules(); }
  bool get(std::uint64_t address, StackWalkerImpl::ModuleInfo& info) {
    return walker.implementation()->getModuleInfo(help.process, address, info);
  }

  RecordingWalker walker{0};
};

TEST_F(ModuleRecord, HasTheSizeThatWasAskedForWhateverTheLibraryFillsIn) {
  help.modules[7] = moduleInfo(3, "tool", 0x400000, "path");
  struct {
    StackWalkerImpl::ModuleInfo info;
    char behind[64];
  } record = {};
  ASSERT_TRUE(get(7, record.info));
  EXPECT_EQ(record.info.sizeOfStruct, 584u);
  EXPECT_STREQ(record.info.moduleName, "tool");
  EXPECT_EQ(record.info.baseOfImage, 0x400000u);
  EXPECT_EQ(std::string(record.behind, sizeof record.behind), std::string(64, '\0'));
}

TEST_F(ModuleRecord, OfAnUnknownAddressFailsWith1114AndStaysAsItIs) {
  StackWalkerImpl::ModuleInfo info = {};
  store(info.moduleName, "before");
  EXPECT_FALSE(get(7, info));
  EXPECT_EQ(errors.error, 1114u);
  EXPECT_STREQ(info.moduleName, "before");
}

TEST_F(ModuleRecord, WithoutTheFunctionFailsWith1114) {
  walker.implementation()->symGetModuleInfo = nullptr;
  help.modules[7] = moduleInfo(3, "tool", 0x400000, "path");
  StackWalkerImpl::ModuleInfo info = {};
  EXPECT_FALSE(get(7, info));
  EXPECT_EQ(errors.error, 1114u);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
