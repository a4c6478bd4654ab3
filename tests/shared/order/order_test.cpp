// SPDX-License-Identifier: MIT
//
// The order in which the globals of the library come up and go down, in a process of its own (order_host.cpp). Each line is
// an event and what stands at that moment: the empty text, modules and class records, the table of inverse lengths, the
// global walker, the empty symbol table.
#include <gmock/gmock.h>

#include <string>

#include "tests/shared/clients/run_host.h"

namespace KV_1_1 {
namespace testing {
namespace {

using ::testing::ElementsAreArray;

std::string with(std::string const& event, int records, std::string const& more = std::string()) {
  return event + ": EMPTY modules=1 records=" + std::to_string(records) + " table" + more;
}

TEST(LibraryOrderOfGlobals, ComesUpAndGoesDownAsRequired) {
  std::string const all = " walker symbols";
  // The newest record first. The last object of the list is the Module.
  Lines const records = {"InfoStringMap", "ObserverInfo",      "FileCollectionIterator",
                         "FileIterator",  "DirectoryIterator", "FileSystemIterator",
                         "File",          "Directory",         "FileSystemItem",
                         "BaseNode"};
  int const count = static_cast<int>(records.size());
  Lines expected = {
      "first: modules=0 records=0",
      // The text, the Module, all records and the table stand before the walker; the empty symbol table does not.
      with("the walker is built", count),
      with("the entry asks for its module", count, all),
      with("the module looks for its translation", count, all),
      with("the module reads its header", count, all),
      with("the framework is joined", count, all),
      with("Probe starts", count + 1, all),
      with("static object of the program comes", count + 1, all),
      with("main returns", count + 1, all),
      with("static object of the program goes", count + 1, all),
      with("the framework is left", count + 1, all),
      // The end of the Module.
      with("Probe ends", count + 1, all),
      // What has been built lazily goes first, newest first.
      with("destroy Probe", count + 1, all),
      with("destroy lazy object", count, all),
      // The empty symbol table has gone.
      with("the walker goes", count, " walker"),
  };
  for (int i = 0; i < count; ++i) expected.push_back(with("destroy " + records[static_cast<unsigned>(i)], count - i));
  expected.push_back(with("destroy Module", 0));
  // The empty text has gone too. The table has no end.
  expected.push_back("last: modules=0 records=0 table");

  HostRun const run = runHost("order_host", {});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.lines, ElementsAreArray(expected));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
