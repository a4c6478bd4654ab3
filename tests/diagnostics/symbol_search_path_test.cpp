// SPDX-License-Identifier: MIT
#include "kvbase/diagnostics/internal/symbol_search_path.h"

#include <gtest/gtest.h>

#include "tests/diagnostics/walker_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

constexpr char kServer[] = "\\websymbols*https://msdl.microsoft.com/download/symbols;";

class SymbolSearchPath : public ScriptedWalk {
 protected:
  void setAllVariables() {
    help.variables["_NT_SYMBOL_PATH"] = "S:\\one";
    help.variables["_NT_ALTERNATE_SYMBOL_PATH"] = "S:\\two";
    help.variables["SYSTEMROOT"] = "C:\\Windows";
    help.variables["SYSTEMDRIVE"] = "D:";
  }
  static std::string composed(char const* symbolPath) {
    diagnostics::HeapText const path = diagnostics::composeSymbolSearchPath(symbolPath);
    return path.get();
  }
};

TEST_F(SymbolSearchPath, HasAllElementsInOrder) {
  setAllVariables();
  EXPECT_EQ(composed("abc"), std::string("abc;.;C:\\work;C:\\app;S:\\one;S:\\two;C:\\Windows;C:\\Windows\\system32;") +
                                 "SRV*D:" + kServer);
}

TEST_F(SymbolSearchPath, WithNothingSetHasTheCurrentFolderAndTheServer) {
  help.currentDirectoryText.reset();
  help.narrowProgramPath.reset();
  EXPECT_EQ(composed(nullptr), std::string(".;SRV*c:") + kServer);
}

TEST_F(SymbolSearchPath, EachElementIsThereOnItsOwn) {
  struct {
    char const* variable;
    std::string path;
  } const rows[] = {
      {"_NT_SYMBOL_PATH", std::string(".;X:\\y;SRV*c:") + kServer},
      {"_NT_ALTERNATE_SYMBOL_PATH", std::string(".;X:\\y;SRV*c:") + kServer},
      {"SYSTEMROOT", std::string(".;X:\\y;X:\\y\\system32;SRV*c:") + kServer},
      {"SYSTEMDRIVE", std::string(".;SRV*X:\\y") + kServer},
  };
  help.currentDirectoryText.reset();
  help.narrowProgramPath.reset();
  for (auto const& row : rows) {
    SCOPED_TRACE(row.variable);
    help.variables = {{row.variable, "X:\\y"}};
    EXPECT_EQ(composed(nullptr), row.path);
  }
  help.variables.clear();
  EXPECT_EQ(composed("p;q"), std::string("p;q;.;SRV*c:") + kServer);
  EXPECT_EQ(composed(""), std::string(";.;SRV*c:") + kServer);
  help.currentDirectoryText = "C:\\work";
  EXPECT_EQ(composed(nullptr), std::string(".;C:\\work;SRV*c:") + kServer);
}

TEST_F(SymbolSearchPath, VariablesAreReadInOrder) {
  composed(nullptr);
  EXPECT_EQ(help.log, Texts({"environmentVariable _NT_SYMBOL_PATH", "environmentVariable _NT_ALTERNATE_SYMBOL_PATH",
                             "environmentVariable SYSTEMROOT", "environmentVariable SYSTEMDRIVE"}));
}

TEST_F(SymbolSearchPath, TheFolderOfTheProgramEndsBeforeTheLastSeparator) {
  struct {
    char const* program;
    char const* element;
  } const rows[] = {
      {"C:\\app\\bin\\tool.exe", "C:\\app\\bin;"},
      {"/opt/app/tool", "/opt/app;"},
      {"C:\\app/bin\\x/tool.exe", "C:\\app/bin\\x;"},
      {"C:tool.exe", "C;"},
      {"\\tool.exe", ""},
      {"/tool", ""},
      {"tool.exe", ""},
      {"folder\\", "folder;"},
  };
  help.currentDirectoryText.reset();
  for (auto const& row : rows) {
    SCOPED_TRACE(row.program);
    help.narrowProgramPath = row.program;
    EXPECT_EQ(composed(nullptr), std::string(".;") + row.element + "SRV*c:" + kServer);
  }
}

TEST_F(SymbolSearchPath, IsCutAt4095Bytes) {
  setAllVariables();
  std::string const rest = composed("abc").substr(3);
  for (std::size_t const length : {std::size_t{4000}, 4095 - rest.size() - 1, 4095 - rest.size(), 4096 - rest.size(),
                                   std::size_t{4094}, std::size_t{4095}, std::size_t{4096}, std::size_t{100000}}) {
    SCOPED_TRACE(length);
    std::string const path(length, 'x');
    EXPECT_EQ(composed(path.c_str()), (path + rest).substr(0, 4095));
  }
}

TEST_F(SymbolSearchPath, LongValuesFillItTogether) {
  std::string const value(1023, 'v');
  help.currentDirectoryText = value;
  for (char const* const name : {"_NT_SYMBOL_PATH", "_NT_ALTERNATE_SYMBOL_PATH", "SYSTEMROOT", "SYSTEMDRIVE"})
    help.variables[name] = value;
  EXPECT_EQ(composed(nullptr),
            (".;" + value + ";C:\\app;" + value + ";" + value + ";" + value + ";" + value).substr(0, 4095));
}

// --- What LoadModules does with it ---

TEST_F(SymbolSearchPath, IsGivenToTheLibraryWithTheOption) {
  setAllVariables();
  RecordingWalker(StackWalker::OptionBuildSymbolPath).LoadModules();
  EXPECT_EQ(calls("SymInitialize"), Texts({"SymInitialize process " + composed(nullptr) + " 0"}));
}

TEST_F(SymbolSearchPath, IsNotComposedWithoutTheOption) {
  for (int const options : {0, 8, 63 & ~16}) {
    help.log.clear();
    RecordingWalker(options).LoadModules();
    EXPECT_EQ(calls("SymInitialize"), Texts({"SymInitialize process (null) 0"}));
    EXPECT_EQ(calls("environmentVariable _"), Texts());
  }
}

TEST_F(SymbolSearchPath, APathOfTheConstructorSetsTheOption) {
  RecordingWalker walker(0, "abc");
  EXPECT_EQ(walker.optionBits(), 16);
  walker.LoadModules();
  EXPECT_EQ(calls("SymInitialize"), Texts({"SymInitialize process " + composed("abc") + " 0"}));
}

TEST_F(SymbolSearchPath, IsComposedAnewByASecondStart) {
  help.snapshot.clear();
  RecordingWalker walker(16);
  walker.LoadModules();
  help.currentDirectoryText = "C:\\elsewhere";
  walker.LoadModules();
  EXPECT_EQ(calls("SymInitialize").at(1), "SymInitialize process " + composed(nullptr) + " 0");
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
