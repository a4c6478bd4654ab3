// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>

// The example is a program of its own; its sources are linked into the suite by the tests that try them.
#include "examples/scanshelf/diagnostics.cpp"
#include "tests/examples/scanshelf_folders.h"
#include "tests/examples/scanshelf_texts.h"
#include "tests/support/scripted_debug.h"

namespace scanshelf {
namespace {

class ScanshelfDiagnostics : public ScanshelfTest {};

namespace platform = KV_1_1::platform;
using KV_1_1::testing::ScriptedDebug;
using KV_1_1::testing::TempFolder;
using ::testing::AllOf;
using ::testing::AnyOf;
using ::testing::HasSubstr;
using ::testing::Not;

// The tests have no debug information, without which Windows has no names; the library has it.
TEST_F(ScanshelfDiagnostics, StackTellsTheCallsThatHaveLedHere) {
  std::ostringstream out;
  printStack(out);
  std::string const text = out.str();
  std::string const latest = text.substr(0, text.find('\n'));
  EXPECT_THAT(latest, AllOf(HasSubstr("stack_walker.cpp ("), HasSubstr("StackWalker::ShowCallstack")));
  // This function, main and what is between them.
  EXPECT_GT(std::count(text.begin(), text.end(), '\n'), 5);
  EXPECT_EQ(text.back(), '\n');
  EXPECT_THAT(text, Not(AnyOf(HasSubstr("SymInit"), HasSubstr("SymType"), HasSubstr("ERROR"))));
}

TEST_F(ScanshelfDiagnostics, StackWithoutALibraryForItIsAnError) {
  ScriptedDebug debug;
  platform::ScopedBackend<platform::DebugApi> const scope(debug);
  std::ostringstream out;
  EXPECT_THROW(printStack(out), Error);
  EXPECT_EQ(out.str(), "");
}

// The file that is no scan; NIL if all are scans.
String invalidIn(TempFolder const& folder) {
  try {
    checkHeaders(survey(directoryOf(folder), KVW("*"), &ignoreProgress));
  } catch (InvalidHeader const& header) {
    return header.file;
  }
  return String::NIL;
}

TEST_F(ScanshelfDiagnostics, ScansBeginWithTheirSignature) {
  TempFolder folder;
  folder.write("a.dat", "SCAN");
  folder.write("b.DAT", "SCANNER");
  folder.write("notes.txt", "no scan");
  folder.write("dat", "");
  EXPECT_TRUE(invalidIn(folder) == String::NIL);
}

TEST_F(ScanshelfDiagnostics, OtherDatFilesAreNoScans) {
  for (char const* const content : {"", "SCA", "scan", "xSCAN", "SC\xC3\xA4N"}) {
    TempFolder folder;
    folder.write("a.dat", "SCAN");
    folder.write("b.Dat", content);
    EXPECT_TRUE(invalidIn(folder).endsWith(KVW("b.Dat"))) << content;
  }
}

TEST_F(ScanshelfDiagnostics, ReportOfAnInvalidHeaderNamesTheFile) {
  ScriptedDebug debug;
  platform::ScopedBackend<platform::DebugApi> const scope(debug);
  ::testing::internal::CaptureStderr();
  reportHeader({KVW("D:\\scans\\b.dat"), "SCRA"});
  std::string const written = ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(written.find("Assertion signature == kScanSignature failed.\nIn file "), 0U);
  EXPECT_THAT(written, ::testing::EndsWith("in function reportHeader.\n\"D:\\scans\\b.dat\""));
  EXPECT_EQ(debug.calls("ask"), 1);
  reportHeader({KVW("D:\\scans\\a.dat"), "SCAN"});
  EXPECT_EQ(debug.calls("ask"), 1);
}

}  // namespace
}  // namespace scanshelf
