// SPDX-License-Identifier: MIT
//
// The results of the collect functions on a scripted system, their order, and the searches behind them.
#include <gtest/gtest.h>

#include <string>

#include "kvbase/filesystem/file_system_iterator.h"
#include "tests/filesystem/path_support.h"
#include "tests/support/scripted_files.h"

namespace KV_1_1 {
namespace testing {
namespace {

constexpr ulong32 kFile = platform::kAttributeNormal;
constexpr ulong32 kFolder = platform::kAttributeDirectory;

template <class Items>
Texts fullNames(Items const& items) {
  Texts names;
  for (auto const& item : items) names.push_back(fullName(item));
  return names;
}

// C:\d with a tree whose parts match a* or not, in an order that is not sorted:
//   x, a2, x1.txt, a.txt;   x: a1, a3.txt;   x\a1: a4.txt;   a2: (only dots)
class DirectoryCollect : public ::testing::Test {
 protected:
  DirectoryCollect() {
    ScriptedEntry const dot = {kFolder, KVW(".")};
    ScriptedEntry const dots = {kFolder, KVW("..")};
    add(KVW(R"(C:\d\)"),
        {dot, dots, {kFolder, KVW("x")}, {kFile, KVW("x1.txt")}, {kFolder, KVW("a2")}, {kFile, KVW("a.txt")}},
        {{kFolder, KVW("a2")}, {kFile, KVW("a.txt")}});
    add(KVW(R"(C:\d\x\)"), {dot, dots, {kFile, KVW("a3.txt")}, {kFolder, KVW("a1")}},
        {{kFile, KVW("a3.txt")}, {kFolder, KVW("a1")}});
    add(KVW(R"(C:\d\x\a1\)"), {dot, dots, {kFile, KVW("a4.txt")}}, {{kFile, KVW("a4.txt")}});
    add(KVW(R"(C:\d\a2\)"), {dot, dots}, {});
  }
  ~DirectoryCollect() override { EXPECT_EQ(files.openSearches(), 0); }

  void add(wstring const& folder, std::vector<ScriptedEntry> const& all, std::vector<ScriptedEntry> const& matching) {
    files.script.searches[folder + KVW("*")] = all;
    files.script.searches[folder + KVW("a*")] = matching;
  }
  // The folders of the searches started, in order: "C:\d\a*".
  Texts searches() {
    Texts started;
    for (std::string const& call : files.log()) {
      if (call.compare(0, 10, "findFirst ") == 0) started.push_back(call.substr(10));
    }
    files.clearLog();
    return started;
  }

  ScriptedFiles files;
  platform::ScopedBackend<platform::FileApi> scope{files};
  CollectedMessages messages;
  SmartPtr<Directory const> directory = directoryAt(KVW(R"(C:\d)"));
  String pattern{KVW("a*")};
};

TEST_F(DirectoryCollect, WithoutRecursionOneLevel) {
  EXPECT_EQ(fullNames(directory->collectContents(pattern, false)), Texts({R"(C:\d\a2\)", R"(C:\d\a.txt)"}));
  EXPECT_EQ(searches(), Texts({R"(C:\d\a*)", R"(C:\d\a*)"}));
  EXPECT_EQ(fullNames(directory->collectDirectories(pattern, false)), Texts{R"(C:\d\a2\)"});
  EXPECT_EQ(searches(), Texts{R"(C:\d\a*)"});
  EXPECT_EQ(fullNames(directory->collectFiles(pattern, false)), Texts{R"(C:\d\a.txt)"});
  EXPECT_EQ(searches(), Texts{R"(C:\d\a*)"});
}

TEST_F(DirectoryCollect, RecursiveWalksInPreorderThroughAllSubdirectories) {
  EXPECT_EQ(fullNames(directory->collectContents(pattern, true)),
            Texts({R"(C:\d\a2\)", R"(C:\d\a.txt)", R"(C:\d\x\a1\)", R"(C:\d\x\a3.txt)", R"(C:\d\x\a1\a4.txt)"}));
  EXPECT_EQ(fullNames(directory->collectDirectories(pattern, true)), Texts({R"(C:\d\a2\)", R"(C:\d\x\a1\)"}));
  EXPECT_EQ(fullNames(directory->collectFiles(pattern, true)),
            Texts({R"(C:\d\a.txt)", R"(C:\d\x\a3.txt)", R"(C:\d\x\a1\a4.txt)"}));
}

TEST_F(DirectoryCollect, EachStepIsASearchOfItsOwn) {
  directory->collectContents(pattern, true);
  EXPECT_EQ(searches(), Texts({
                            R"(C:\d\a*)",
                            R"(C:\d\a*)",
                            R"(C:\d\*)",  // directories, files, descent
                            R"(C:\d\x\a*)",
                            R"(C:\d\x\a*)",
                            R"(C:\d\x\*)",  //
                            R"(C:\d\x\a1\a*)",
                            R"(C:\d\x\a1\a*)",
                            R"(C:\d\x\a1\*)",  //
                            R"(C:\d\a2\a*)",
                            R"(C:\d\a2\a*)",
                            R"(C:\d\a2\*)",
                        }));
  directory->collectDirectories(pattern, true);
  EXPECT_EQ(searches(), Texts({R"(C:\d\a*)", R"(C:\d\*)", R"(C:\d\x\a*)", R"(C:\d\x\*)", R"(C:\d\x\a1\a*)",
                               R"(C:\d\x\a1\*)", R"(C:\d\a2\a*)", R"(C:\d\a2\*)"}));
  directory->collectFiles(pattern, true);
  EXPECT_EQ(searches(), Texts({R"(C:\d\a*)", R"(C:\d\*)", R"(C:\d\x\a*)", R"(C:\d\x\*)", R"(C:\d\x\a1\a*)",
                               R"(C:\d\x\a1\*)", R"(C:\d\a2\a*)", R"(C:\d\a2\*)"}));
}

TEST_F(DirectoryCollect, AllOfATree) {
  EXPECT_EQ(fullNames(directory->collectContents(String(KVW("*")), true)),
            Texts({R"(C:\d\x\)", R"(C:\d\a2\)", R"(C:\d\x1.txt)", R"(C:\d\a.txt)",  //
                   R"(C:\d\x\a1\)", R"(C:\d\x\a3.txt)", R"(C:\d\x\a1\a4.txt)"}));
}

TEST_F(DirectoryCollect, AnInvalidPatternGivesNothingAndAMessageForEachSearch) {
  std::string const message = invalidPattern("a.");
  String const invalid(KVW("a."));
  EXPECT_TRUE(directory->collectContents(invalid, false).empty());
  EXPECT_EQ(messages.take(), Texts({message, message}));  // directories, files
  EXPECT_TRUE(directory->collectFiles(invalid, false).empty());
  EXPECT_EQ(messages.take(), Texts{message});
  EXPECT_EQ(searches(), Texts());

  // The walk still goes through all four levels.
  EXPECT_TRUE(directory->collectFiles(invalid, true).empty());
  EXPECT_EQ(messages.take(), Texts(4, message));
  EXPECT_EQ(searches(), Texts({R"(C:\d\*)", R"(C:\d\x\*)", R"(C:\d\x\a1\*)", R"(C:\d\a2\*)"}));
  EXPECT_TRUE(directory->collectDirectories(String::NIL, true).empty());
  EXPECT_EQ(messages.take(), Texts(4, invalidPattern("")));
  EXPECT_TRUE(directory->collectContents(invalid, true).empty());
  EXPECT_EQ(messages.take(), Texts(8, message));
}

TEST_F(DirectoryCollect, AMissingDirectoryGivesNothing) {
  SmartPtr<Directory const> const missing = directoryAt(KVW(R"(C:\missing)"));
  EXPECT_TRUE(missing->collectContents(pattern, true).empty());
  EXPECT_EQ(searches(), Texts({R"(C:\missing\a*)", R"(C:\missing\a*)", R"(C:\missing\*)"}));
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(DirectoryCollect, WithoutAbsoluteFormEachStepSaysSo) {
  EXPECT_TRUE(directoryAt(KVW("x"))->collectContents(pattern, true).empty());
  EXPECT_EQ(messages.take(), Texts(3, kNoCurrentDirectory));
}

TEST_F(DirectoryCollect, ARefusedNameEndsItsGroup) {
  files.script.searches[KVW(R"(C:\d\a*)")] = {
      {kFile, KVW("a1")}, {kFile, KVW("a ")}, {kFile, KVW("a2")}, {kFolder, KVW("a.")}, {kFolder, KVW("a3")}};
  EXPECT_EQ(fullNames(directory->collectContents(pattern, false)), Texts{R"(C:\d\a1)"});
  EXPECT_EQ(messages.take(), Texts{invalidName("a.")});
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
