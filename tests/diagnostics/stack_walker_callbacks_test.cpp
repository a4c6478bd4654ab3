// SPDX-License-Identifier: MIT
//
// The lines of the default callbacks.
#include <gtest/gtest.h>

#include <cstring>

#include "kvbase/platform/pointer_text.h"
#include "tests/diagnostics/walker_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

class DefaultCallbacks : public ScriptedWalk {
 protected:
  // The default forms, with what they print.
  class Walker : public StackWalker {
   public:
    Walker() : StackWalker(0) {}
    using StackWalker::OnCallstackEntry;
    using StackWalker::OnDbgHelpErr;
    using StackWalker::OnLoadModule;
    using StackWalker::OnSymInit;
  };

  // What has been printed since the last call.
  std::string printed() {
    std::string all;
    for (std::string const& text : help.outputs) all += text;
    help.outputs.clear();
    return all;
  }
  static std::string shown(std::uint64_t address) { return platform::PointerText(address).get(); }
  static StackWalker::CallstackEntry entryWith(char const* name, char const* bare, char const* complete,
                                               char const* file, char const* module) {
    StackWalker::CallstackEntry entry = {};
    entry.address = 0x401234;
    entry.lineNumber = 12;
    std::strcpy(entry.name, name);
    std::strcpy(entry.undecoratedName, bare);
    std::strcpy(entry.undecoratedFullName, complete);
    std::strcpy(entry.lineFileName, file);
    std::strcpy(entry.moduleName, module);
    return entry;
  }
  // The line for an entry.
  std::string line(StackWalker::CallstackEntry entry, StackWalker::CallstackEntryType type = StackWalker::EntryNext) {
    walker.OnCallstackEntry(type, entry);
    return printed();
  }

  Walker walker;
};

TEST_F(DefaultCallbacks, PointersAreShownAsTheSystemDoes) {
  EXPECT_EQ(shown(0x401ABC), sizeof(wchar_t) == 2 ? "0000000000401ABC" : "0x401abc");
  EXPECT_EQ(shown(0xFEDCBA9876543210), sizeof(wchar_t) == 2 ? "FEDCBA9876543210" : "0xfedcba9876543210");
  EXPECT_EQ(shown(0), sizeof(wchar_t) == 2 ? "0000000000000000" : "(nil)");
}

TEST_F(DefaultCallbacks, SymInitIsOneLineWithoutTheVersionOfTheSystem) {
  walker.OnSymInit("C:\\a;.", 0xFFFFFFFF, "ann");
  EXPECT_EQ(help.outputs, Texts({"SymInit: Symbol-SearchPath: 'C:\\a;.', symOptions: 4294967295, UserName: 'ann'\n"}));
}

TEST_F(DefaultCallbacks, SymInitHasASecondLineForTheVersionOfTheSystem) {
  help.version = platform::SystemVersion{10, 1, 22631, "Service Pack 2", 0xABCD, 0xEF};
  walker.OnSymInit("", 0, "");
  EXPECT_EQ(help.outputs, Texts({"SymInit: Symbol-SearchPath: '', symOptions: 0, UserName: ''\n",
                                 "OS-Version: 10.1.22631 (Service Pack 2) 0xabcd-0xef\n"}));
  printed();
  help.version = platform::SystemVersion{4294967295u, 0, 0, "", 0, 0};
  walker.OnSymInit("", 0, "");
  EXPECT_EQ(help.outputs.at(1), "OS-Version: 4294967295.0.0 () 0x0-0x0\n");
}

TEST_F(DefaultCallbacks, LoadModuleWithoutAFileVersion) {
  walker.OnLoadModule("C:\\a.dll", "a.dll", 0x7FF012345678, 4294967295u, 126, "PDB", "C:\\a.pdb", 0);
  EXPECT_EQ(help.outputs, Texts({"C:\\a.dll:a.dll (" + shown(0x7FF012345678) +
                                 "), size: 4294967295 (result: 126), SymType: 'PDB', PDB: 'C:\\a.pdb'\n"}));
}

TEST_F(DefaultCallbacks, LoadModuleWithAFileVersionHighestPartFirst) {
  walker.OnLoadModule("C:\\a.dll", "a.dll", 1, 2, 0, "DIA", "", 0xFFFF000200030004);
  EXPECT_EQ(printed(), "C:\\a.dll:a.dll (" + shown(1) +
                           "), size: 2 (result: 0), SymType: 'DIA', PDB: '', fileVersion: 65535.2.3.4\n");
  walker.OnLoadModule("a", "b", 0, 2, 0, "c", "d", 1);
  EXPECT_EQ(printed(), "a:b (" + shown(0) + "), size: 2 (result: 0), SymType: 'c', PDB: 'd', fileVersion: 0.0.0.1\n");
}

TEST_F(DefaultCallbacks, DbgHelpErr) {
  walker.OnDbgHelpErr("StackWalk64", 4294967295u, 0x401ABC);
  EXPECT_EQ(printed(), "ERROR: StackWalk64, GetLastError: 4294967295 (Address: " + shown(0x401ABC) + ")\n");
  walker.OnDbgHelpErr("LoadModule", 0, 0);
  EXPECT_EQ(printed(), "ERROR: LoadModule, GetLastError: 0 (Address: " + shown(0) + ")\n");
}

TEST_F(DefaultCallbacks, CallstackEntryWithASourceFile) {
  EXPECT_EQ(line(entryWith("run", "", "", "a.cpp", "tool")), "a.cpp (12): run\n");
  EXPECT_EQ(line(entryWith("run", "", "", "a.cpp", "tool"), StackWalker::EntryFirst), "a.cpp (12): run\n");
}

TEST_F(DefaultCallbacks, CallstackEntryWithoutASourceFile) {
  EXPECT_EQ(line(entryWith("run", "", "", "", "tool")), shown(0x401234) + " (tool): (filename not available): run\n");
}

TEST_F(DefaultCallbacks, CallstackEntryTakesTheFullestName) {
  EXPECT_EQ(line(entryWith("n", "bare", "complete", "f", "")), "f (12): complete\n");
  EXPECT_EQ(line(entryWith("n", "bare", "", "f", "")), "f (12): bare\n");
  EXPECT_EQ(line(entryWith("n", "", "complete", "f", "")), "f (12): complete\n");
  EXPECT_EQ(line(entryWith("", "bare", "", "f", "")), "f (12): bare\n");
  EXPECT_EQ(line(entryWith("", "", "", "f", "")), "f (12): (function-name not available)\n");
}

TEST_F(DefaultCallbacks, CallstackEntryWithNothingKnown) {
  EXPECT_EQ(
      line(entryWith("", "", "", "", "")),
      shown(0x401234) + " ((module-name not available)): (filename not available): (function-name not available)\n");
}

TEST_F(DefaultCallbacks, CallstackEntryWritesIntoTheEntry) {
  StackWalker::CallstackEntry entry = entryWith("", "bare", "complete", "", "");
  walker.OnCallstackEntry(StackWalker::EntryNext, entry);
  EXPECT_STREQ(entry.name, "complete");
  EXPECT_STREQ(entry.undecoratedName, "bare");
  EXPECT_STREQ(entry.lineFileName, "(filename not available)");
  EXPECT_STREQ(entry.moduleName, "(module-name not available)");

  entry = entryWith("", "", "", "a.cpp", "");
  walker.OnCallstackEntry(StackWalker::EntryNext, entry);
  EXPECT_STREQ(entry.name, "(function-name not available)");
  EXPECT_STREQ(entry.moduleName, "");
}

TEST_F(DefaultCallbacks, CallstackEntryDoesNothingForLastAndForTheAddress0) {
  StackWalker::CallstackEntry entry = entryWith("", "bare", "", "", "");
  walker.OnCallstackEntry(StackWalker::EntryLast, entry);
  entry.address = 0;
  walker.OnCallstackEntry(StackWalker::EntryFirst, entry);
  EXPECT_EQ(printed(), "");
  EXPECT_STREQ(entry.name, "");
  EXPECT_STREQ(entry.lineFileName, "");
}

TEST_F(DefaultCallbacks, LinesAreCutAt1023Bytes) {
  std::string const longText(1023, 'x');
  char const* const text = longText.c_str();
  StackWalker::CallstackEntry entry = entryWith(text, text, text, text, text);
  EXPECT_EQ(line(entry), longText);
  entry.lineFileName[0] = 0;
  EXPECT_EQ(line(entry), (shown(0x401234) + " (" + longText).substr(0, 1023));
  help.version = platform::SystemVersion{1, 2, 3, longText, 4, 5};
  walker.OnSymInit(text, 0, text);
  EXPECT_EQ(help.outputs, Texts({("SymInit: Symbol-SearchPath: '" + longText).substr(0, 1023),
                                 ("OS-Version: 1.2.3 (" + longText).substr(0, 1023)}));
  printed();
  std::string const longer(100000, 'y');
  for (unsigned long long const version : {0, 1}) {
    walker.OnLoadModule("a", "b", 0, 0, 0, "c", longer.c_str(), version);
    EXPECT_EQ(printed(),
              ("a:b (" + shown(0) + "), size: 0 (result: 0), SymType: 'c', PDB: '" + longer).substr(0, 1023));
  }
  walker.OnDbgHelpErr(longer.c_str(), 0, 0);
  EXPECT_EQ(printed(), ("ERROR: " + longer).substr(0, 1023));
}

TEST_F(DefaultCallbacks, ALineOf1023BytesIsWhole) {
  // The number, the name and the line feed take 9 bytes.
  std::string const file(1023 - 9, 'x');
  EXPECT_EQ(line(entryWith("f", "", "", file.c_str(), "")), file + " (12): f\n");
  EXPECT_EQ(line(entryWith("fg", "", "", file.c_str(), "")), file + " (12): fg");
}

TEST_F(DefaultCallbacks, PercentSignsInTextsAreTexts) {
  EXPECT_EQ(line(entryWith("%s%n", "", "", "%d", "")), "%d (12): %s%n\n");
}

TEST_F(DefaultCallbacks, AWalkIsPrintedWithItsLastFrameOnce) {
  help.frames = {{0x10, 0x20}, {0x20, 0}};
  help.symbols[0x10] = {"_Z3runv", "run", "run()", 5};
  help.lines[0x10] = {"run.cpp", 7};
  help.modules[0x10] = moduleInfo(3, "tool", 0, "");
  EXPECT_EQ(walker.ShowCallstack(GetCurrentThread(), nullptr, nullptr, nullptr), 1);
  std::string const error = ", GetLastError: 487 (Address: " + shown(0x20) + ")\n";
  EXPECT_EQ(help.outputs,
            Texts({"SymInit: Symbol-SearchPath: 'path in effect', symOptions: 530, UserName: 'ann'\n",
                   "C:\\app\\tool.exe:tool.exe (" + shown(0x400000) +
                       "), size: 8192 (result: 0), SymType: '-unknown-', PDB: ''\n",
                   "run.cpp (7): run()\n", "ERROR: SymGetSymFromAddr64" + error, "ERROR: SymGetLineFromAddr64" + error,
                   "ERROR: SymGetModuleInfo64, GetLastError: 1114 (Address: " + shown(0x20) + ")\n",
                   shown(0x20) + " ((module-name not available)): (filename not available): "
                                 "(function-name not available)\n"}));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
