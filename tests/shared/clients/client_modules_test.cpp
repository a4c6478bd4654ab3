// SPDX-License-Identifier: MIT
//
// Modules of the family that other libraries and programs make (client_module.h), in processes of their own. What each line
// of their output says is told in tests/fixtures/clients.
#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "tests/shared/clients/run_host.h"

namespace KV_1_1 {
namespace testing {
namespace {

using ::testing::ElementsAreArray;

// Without the reports of failed assertions, which go to the standard error stream and end without an end of line.
Lines withoutReports(Lines lines) {
  std::string const second = "In file walker.cpp:1 in function report.";
  for (std::string& line : lines) {
    while (line.compare(0, second.size(), second) == 0) line.erase(0, second.size());
    line.erase(std::min(line.find("Assertion walker failed."), line.size()));
  }
  lines.erase(std::remove(lines.begin(), lines.end(), std::string()), lines.end());
  return lines;
}

// The lines that a host which does as it is told writes.
Lines linesOf(Lines const& arguments, std::string const& language = "xyz") {
  HostRun run = runHost("client_host", arguments, language);
  EXPECT_EQ(run.status, 0);
  // The systems differ in when a program that has not been linked with KVBase destroys its static objects.
  auto const farewell = std::find(run.lines.begin(), run.lines.end(), "static object of the program goes");
  EXPECT_NE(farewell, run.lines.end());
  if (farewell != run.lines.end()) run.lines.erase(farewell);
  return withoutReports(run.lines);
}

// Lines of shapes.cpp and scanfiles.cpp: the hooks at start and end.
Lines shapesStart(std::string const& text) {
  std::string const state = " starts: name=shapes text=" + text + " symbol=100 own=2";
  return {"Shape" + state, "Circle" + state};
}
Lines const kShapesEnd = {"Shape ends: name=shapes text=shape symbol=-1 own=2",
                          "Circle ends: name=shapes text=shape symbol=-1 own=2"};
Lines const kScanFilesStart = {"ScanFile starts: name=scanfiles text=scan file symbol=-1 own=2"};
Lines const kScanFilesEnd = {"ScanFile ends: name=scanfiles text=scan file symbol=-1 own=2"};

std::string const kShapes = "Shape<BaseNode Circle<Shape";
std::string const kScanFiles = "ScansByNumber<FileCollectionIterator ScanFile<File";

TEST(ClientModules, RecordsComeBeforeTheHooksAndGoWithTheirModule) {
  EXPECT_THAT(linesOf({"load=walker", "walker.tellTree", "load=shapes", "walker.tellTree", "load=scanfiles",
                       "walker.tellTree", "unload=shapes", "walker.tellTree", "unload=scanfiles", "walker.tellTree"}),
              ElementsAreArray(
                  joined({{"load walker", "modules: KVBase; classes:"},
                          shapesStart("shape"),
                          {"load shapes", "modules: KVBase shapes; classes: " + kShapes},
                          kScanFilesStart,
                          {"load scanfiles", "modules: KVBase shapes scanfiles; classes: " + kShapes + ' ' + kScanFiles,
                           "unload shapes"},
                          kShapesEnd,
                          {"modules: KVBase scanfiles; classes: " + kScanFiles, "unload scanfiles"},
                          kScanFilesEnd,
                          {"modules: KVBase; classes:", "main returns"}})));
}

TEST(ClientModules, FindTheClassesOfKVBaseInTheOrderOfItsLoad) {
  EXPECT_THAT(linesOf({"load=walker", "walker.tellLibraryClasses"}),
              ElementsAreArray({"load walker",
                                "KVBase: BaseNode ObserverInfo InfoStringMap FileSystemIterator FileIterator "
                                "FileCollectionIterator DirectoryIterator FileSystemItem File Directory",
                                "main returns"}));
}

TEST(ClientModules, TheOtherOrderLeavesTheOtherModule) {
  EXPECT_THAT(
      linesOf({"load=walker", "load=scanfiles", "load=shapes", "walker.tellTree", "unload=shapes", "walker.tellTree",
               "load=shapes", "unload=scanfiles", "walker.tellTree", "unload=shapes"}),
      ElementsAreArray(joined(
          {{"load walker"},
           kScanFilesStart,
           {"load scanfiles"},
           shapesStart("shape"),
           {"load shapes", "modules: KVBase scanfiles shapes; classes: " + kShapes + ' ' + kScanFiles, "unload shapes"},
           kShapesEnd,
           {"modules: KVBase scanfiles; classes: " + kScanFiles},
           shapesStart("shape"),
           {"load shapes", "unload scanfiles"},
           kScanFilesEnd,
           {"modules: KVBase shapes; classes: " + kShapes, "unload shapes"},
           kShapesEnd,
           {"main returns"}})));
}

// The only user of KVBase brings it along and takes it away, as often as one likes.
TEST(ClientModules, AModuleIsTheSameEachTimeItIsLoaded) {
  Lines const once = joined(
      {shapesStart("shape"),
       {"load shapes", "palette up", "shapes: name=shapes text=shape symbol=100 own=2", "circle, shape",
        "no Shape by its record", "unload shapes"},
       kShapesEnd,
       {"palette down: name=shapes text=shape symbol=-1 own=2", "shapes is not loaded", "KVBase is not loaded"}});
  Lines const arguments = {"load=shapes", "shapes.useShapes", "unload=shapes", "loaded=shapes", "loaded=KVBase"};
  EXPECT_THAT(linesOf(joined({arguments, arguments})), ElementsAreArray(joined({once, once, {"main returns"}})));
}

// The translation is there when the hooks start, and no more when they end.
TEST(ClientModules, HooksSeeTheTranslationOfTheModule) {
  EXPECT_THAT(linesOf({"load=shapes", "shapes.useShapes", "unload=shapes"}, "abc"),
              ElementsAreArray(joined({shapesStart("Form"),
                                       {"load shapes", "palette up", "shapes: name=shapes text=Form symbol=100 own=2",
                                        "circle, Form", "no Shape by its record", "unload shapes"},
                                       kShapesEnd,
                                       {"palette down: name=shapes text=shape symbol=-1 own=2", "main returns"}})));
}

TEST(ClientModules, ClassesBelowThoseOfTheFileSystemWork) {
  EXPECT_THAT(linesOf({"load=scanfiles", "scanfiles.useScanFiles"}),
              ElementsAreArray(joined({kScanFilesStart,
                                       {"load scanfiles", "scanfiles: name=scanfiles text=scan file symbol=-1 own=2",
                                        "scans: scan9.dat scan10.dat scan100.dat", "main returns"},
                                       kScanFilesEnd})));
}

// Windows refuses the load and takes the records back; elsewhere a library cannot refuse, and ends what it has started.
TEST(ClientModules, AHookThatThrowsFailsTheLoad) {
  Lines const lines = linesOf({"load=walker", "load=broken", "walker.tellTree", "unload=broken", "walker.tellTree"});
  Lines const refused = {"load walker",
                         "Broken starts",
                         "Broken ends",
                         "load broken failed",
                         "modules: KVBase; classes:",
                         "unload broken",
                         "failed",
                         "modules: KVBase; classes:",
                         "main returns"};
  Lines const inert = {"load walker",
                       "Broken starts",
                       "Broken ends",
                       "load broken",
                       "modules: KVBase broken; classes: Broken<BaseNode",
                       "unload broken",
                       "modules: KVBase; classes:",
                       "main returns"};
  EXPECT_THAT(lines, ElementsAreArray(kCanRefuseItsLoad ? refused : inert));
}

// The same of KVBase itself: a copy of it whose version data has no table of translations. Where it stays loaded it has no
// name, but works, and can be unloaded.
TEST(LibraryEnd, ALibraryThatCannotBeStartedFailsTheLoad) {
  Lines const arguments = {"load=unstartable",  "loaded=unstartable", "load=walker",        "walker.tellTree",
                           "walker.useStrings", "unload=walker",      "unload=unstartable", "loaded=unstartable"};
  Lines const refused = {"load unstartable failed",
                         "unstartable is not loaded",
                         "load walker",
                         "modules: KVBase; classes:",
                         "strings work",
                         "unload walker",
                         "unload unstartable",
                         "failed",
                         "unstartable is not loaded"};
  Lines const inert = {"load unstartable", "unstartable is loaded", "load walker",        "modules: ; classes:",
                       "strings work",     "unload walker",         "unload unstartable", "unstartable is not loaded"};
  Lines const once = kCanRefuseItsLoad ? refused : inert;
  EXPECT_THAT(linesOf(joined({arguments, arguments})), ElementsAreArray(joined({once, once, {"main returns"}})));
}

// --- KVBase at the end of a process and of its use ------------------------------------------------------------------------

// Windows takes long to read the debug information of all modules, and its debug-help library is a part of it.
TEST(LibraryEnd, NothingPinsTheLibraryThatHasBeenUsed) {
  Lines const use = kCanRefuseItsLoad ? Lines{"walker.useLibrary"} : Lines{"walker.useLibrary", "walker.walkStack"};
  Lines const used = kCanRefuseItsLoad ? Lines{"used"} : Lines{"used", "walked"};
  Lines const arguments = joined({{"load=walker"}, use, {"unload=walker", "loaded=walker", "loaded=KVBase"}});
  Lines const once = joined({{"load walker"}, used, {"unload walker", "walker is not loaded", "KVBase is not loaded"}});
  EXPECT_THAT(linesOf(joined({arguments, arguments})), ElementsAreArray(joined({once, once, {"main returns"}})));
}

// What was loaded last ends first.
Lines const kAllLoaded = {"load=walker", "load=shapes", "load=scanfiles", "shapes.useShapes"};
Lines const kAllStart = joined({{"load walker"},
                                shapesStart("shape"),
                                {"load shapes"},
                                kScanFilesStart,
                                {"load scanfiles", "palette up", "shapes: name=shapes text=shape symbol=100 own=2",
                                 "circle, shape", "no Shape by its record"}});
Lines const kAllEnd = joined({kScanFilesEnd, kShapesEnd, {"palette down: name=shapes text=shape symbol=-1 own=2"}});

TEST(LibraryEnd, AtTheReturnOfMainModulesEndInReverseOrder) {
  EXPECT_THAT(linesOf(kAllLoaded), ElementsAreArray(joined({kAllStart, {"main returns"}, kAllEnd})));
}

TEST(LibraryEnd, AtExitTheyDoTheSame) {
  EXPECT_THAT(linesOf(joined({kAllLoaded, {"exit"}})), ElementsAreArray(joined({kAllStart, kAllEnd})));
}

// Off Windows the signal ends the process as it is; there libraries end even then, but no object of the program does.
TEST(LibraryEnd, TheAbortOfAnAssertionRunsNothingOfTheProgram) {
  HostRun const run = runHost("client_host", joined({kAllLoaded, {"walker.failAssertion"}}));
  bool const isWindows = kCanRefuseItsLoad;
  EXPECT_EQ(run.status, isWindows ? 3 : -1);
  EXPECT_THAT(withoutReports(run.lines), ElementsAreArray(isWindows ? joined({kAllStart, kAllEnd}) : kAllStart));
}

// --- A program that is linked with a client module, and is one itself ------------------------------------------------------

std::string hostIs(std::string const& what) {
  return what + ": name=linked_host text=Error loading string resource! symbol=-1 own=1";
}

Lines linkedLines(Lines const& last) {
  return joined({shapesStart("shape"),
                 {hostIs("Square starts"), hostIs("static object comes"), "square, shape", "palette up",
                  "shapes: name=shapes text=shape symbol=100 own=2", "circle, shape", "no Shape by its record"},
                 last,
                 {hostIs("static object goes"), hostIs("Square ends")},
                 kShapesEnd,
                 {"palette down: name=shapes text=shape symbol=-1 own=2"}});
}

TEST(LinkedClientModules, StartBeforeTheProgramAndEndBehindItAtTheReturnOfMain) {
  HostRun const run = runHost("linked_host", {});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.lines, ElementsAreArray(linkedLines({"main returns"})));
}

TEST(LinkedClientModules, StartBeforeTheProgramAndEndBehindItAtExit) {
  HostRun const run = runHost("linked_host", {"exit"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.lines, ElementsAreArray(linkedLines({})));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
