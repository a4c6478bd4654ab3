// SPDX-License-Identifier: MIT
//
// The calls and items of the iterators on a scripted system.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "kvbase/filesystem/file_system_iterator.h"
#include "tests/filesystem/path_support.h"
#include "tests/support/failing_files.h"
#include "tests/support/scripted_files.h"

namespace KV_1_1 {
namespace testing {
namespace {

constexpr ulong32 kFileEntry = platform::kAttributeNormal;
constexpr ulong32 kFolderEntry = platform::kAttributeDirectory;

enum Kind { kAllItems, kOnlyDirectories, kOnlyFiles };
Kind const kKinds[] = {kAllItems, kOnlyDirectories, kOnlyFiles};
char const* const kKindNames[] = {"findContents", "findDirectories", "findFiles"};

// Gives the next item as text: its full name, "null" at the end.
using Next = std::function<std::string()>;

template <class Iterator>
Next stepsOf(SmartPtr<Iterator> iterator) {
  if (iterator == nullptr) return nullptr;
  return [iterator] { return fullName(iterator->getNext()); };
}
Next searchFor(Directory const& directory, Kind kind, String const& pattern) {
  if (kind == kAllItems) return stepsOf(directory.findContents(pattern));
  if (kind == kOnlyDirectories) return stepsOf(directory.findDirectories(pattern));
  return stepsOf(directory.findFiles(pattern));
}

// A folder C:\d whose search for * gives what the test says.
class DirectorySearch : public ::testing::Test {
 protected:
  ~DirectorySearch() override { EXPECT_EQ(files.openSearches(), 0); }

  void entries(std::vector<ScriptedEntry> const& list) { files.script.searches[KVW(R"(C:\d\*)")] = list; }
  Next start(Kind kind) { return searchFor(*directory, kind, String(KVW("*"))); }
  Texts itemsOf(Kind kind) {
    Texts items;
    Next next = start(kind);
    for (std::string item = next(); item != "null"; item = next()) items.push_back(item);
    return items;
  }
  Log calls() {
    Log const log = files.log();
    files.clearLog();
    return log;
  }

  ScriptedFiles files;
  platform::ScopedBackend<platform::FileApi> scope{files};
  CollectedMessages messages;
  SmartPtr<Directory const> directory = directoryAt(KVW(R"(C:\d)"));
};

TEST_F(DirectorySearch, EachKindGivesItsItemsInTheOrderOfTheSystem) {
  entries({{kFolderEntry, KVW(".")},
           {kFolderEntry, KVW("..")},
           {kFileEntry, KVW("z.txt")},
           {kFolderEntry, KVW("b")},
           {kFileEntry | platform::kAttributeHidden, KVW(".hidden")},
           {kFolderEntry | platform::kAttributeReparsePoint, KVW("link")},
           {0, KVW("a")}});
  EXPECT_EQ(itemsOf(kAllItems),
            Texts({R"(C:\d\z.txt)", R"(C:\d\b\)", R"(C:\d\.hidden)", R"(C:\d\link\)", R"(C:\d\a)"}));
  EXPECT_EQ(itemsOf(kOnlyDirectories), Texts({R"(C:\d\b\)", R"(C:\d\link\)"}));
  EXPECT_EQ(itemsOf(kOnlyFiles), Texts({R"(C:\d\z.txt)", R"(C:\d\.hidden)", R"(C:\d\a)"}));
}

TEST_F(DirectorySearch, WorksOneEntryAhead) {
  entries({{kFileEntry, KVW("a")}, {kFileEntry, KVW("b")}});
  for (Kind const kind : {kAllItems, kOnlyFiles}) {
    SCOPED_TRACE(kKindNames[kind]);
    Next next = start(kind);
    EXPECT_EQ(calls(), Log{R"(findFirst C:\d\*)"});
    EXPECT_EQ(next(), R"(C:\d\a)");
    EXPECT_EQ(calls(), Log{"findNext"});
    EXPECT_EQ(next(), R"(C:\d\b)");
    EXPECT_EQ(calls(), Log({"findNext", "findClose"}));
    EXPECT_EQ(next(), "null");
    EXPECT_EQ(next(), "null");
    next = nullptr;
    EXPECT_EQ(calls(), Log());
  }
}

TEST_F(DirectorySearch, PassesOverWhatIsNotOfItsKindOnlyWhenAsked) {
  entries({{kFolderEntry, KVW(".")},
           {kFolderEntry, KVW("..")},
           {kFileEntry, KVW("f")},
           {kFolderEntry, KVW("d")},
           {kFileEntry, KVW("g")}});
  struct Row {
    Kind kind;
    char const* first;
    Log calls;
    char const* second;
    Log moreCalls;
  };
  Row const rows[] = {
      {kAllItems, R"(C:\d\f)", {"findNext", "findNext", "findNext"}, R"(C:\d\d\)", {"findNext"}},
      {kOnlyDirectories,
       R"(C:\d\d\)",
       {"findNext", "findNext", "findNext", "findNext"},
       "null",
       {"findNext", "findClose"}},
      {kOnlyFiles,
       R"(C:\d\f)",
       {"findNext", "findNext", "findNext"},
       R"(C:\d\g)",
       {"findNext", "findNext", "findClose"}},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(kKindNames[row.kind]);
    Next next = start(row.kind);
    EXPECT_EQ(calls(), Log{R"(findFirst C:\d\*)"});
    EXPECT_EQ(next(), row.first);
    EXPECT_EQ(calls(), row.calls);
    EXPECT_EQ(next(), row.second);
    EXPECT_EQ(calls(), row.moreCalls);
    next = nullptr;
    calls();
  }
}

TEST_F(DirectorySearch, AnEmptyFolderEndsBehindItsDots) {
  entries({{kFolderEntry, KVW(".")}, {kFolderEntry, KVW("..")}});
  for (Kind const kind : kKinds) {
    SCOPED_TRACE(kKindNames[kind]);
    Next next = start(kind);
    calls();
    EXPECT_EQ(next(), "null");
    EXPECT_EQ(calls(), Log({"findNext", "findNext", "findClose"}));
  }
}

TEST_F(DirectorySearch, NamesThatOnlyStartLikeDotsAreItems) {
  entries({{kFolderEntry, KVW("..a")}, {kFolderEntry, KVW(".b")}});
  EXPECT_EQ(itemsOf(kAllItems), Texts({R"(C:\d\..a\)", R"(C:\d\.b\)"}));
  EXPECT_EQ(itemsOf(kOnlyDirectories), Texts({R"(C:\d\..a\)", R"(C:\d\.b\)"}));
}

TEST_F(DirectorySearch, DotsWithoutTheDirectoryBitAreStillPassedOver) {
  entries({{kFileEntry, KVW(".")}, {kFileEntry, KVW("..")}, {kFileEntry, KVW("f")}});
  EXPECT_EQ(itemsOf(kAllItems), Texts{R"(C:\d\f)"});
  EXPECT_EQ(itemsOf(kOnlyDirectories), Texts());
}

TEST_F(DirectorySearch, AnInvalidHandleIsTheEndAtOnce) {
  for (Kind const kind : kKinds) {
    SCOPED_TRACE(kKindNames[kind]);
    Next next = start(kind);
    ASSERT_TRUE(next != nullptr);  // an iterator all the same
    EXPECT_EQ(next(), "null");
    EXPECT_EQ(next(), "null");
    next = nullptr;
    EXPECT_EQ(calls(), Log{R"(findFirst C:\d\*)"});
  }
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(DirectorySearch, AnIteratorThatGoesClosesItsSearch) {
  entries({{kFileEntry, KVW("a")}, {kFileEntry, KVW("b")}, {kFileEntry, KVW("c")}});
  Next next = start(kOnlyFiles);
  EXPECT_EQ(next(), R"(C:\d\a)");
  EXPECT_EQ(files.openSearches(), 1);
  calls();
  next = nullptr;
  EXPECT_EQ(calls(), Log{"findClose"});
  EXPECT_EQ(files.openSearches(), 0);
}

TEST_F(DirectorySearch, AnErrorEndsTheSearchLikeTheLastEntry) {
  entries({{kFileEntry, KVW("a")}, {kFileEntry, KVW("b")}, {kFileEntry, KVW("c")}});
  FailingFiles failing(3, files);  // findFirst, findNext, and then the findNext that fails
  platform::ScopedBackend<platform::FileApi> const inner(failing);
  Next next = start(kOnlyFiles);
  EXPECT_EQ(next(), R"(C:\d\a)");
  EXPECT_EQ(next(), R"(C:\d\b)");
  EXPECT_EQ(next(), "null");
  EXPECT_EQ(failing.openSearches(), 0);
  EXPECT_EQ(next(), "null");
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(DirectorySearch, ARefusedNameIsNullInItsPlaceAndTheSearchGoesOn) {
  entries({{kFileEntry, KVW("a")},
           {kFileEntry, KVW("b ")},
           {kFolderEntry, KVW("c.")},
           {kFolderEntry, KVW("d")},
           {kFileEntry, KVW("e")}});
  Next contents = start(kAllItems);
  EXPECT_EQ(contents(), R"(C:\d\a)");
  EXPECT_EQ(contents(), "null");
  EXPECT_EQ(messages.take(), Texts());  // none for a file
  EXPECT_EQ(contents(), "null");
  EXPECT_EQ(messages.take(), Texts{invalidName("c.")});
  EXPECT_EQ(contents(), R"(C:\d\d\)");
  EXPECT_EQ(contents(), R"(C:\d\e)");
  EXPECT_EQ(contents(), "null");

  Next directories = start(kOnlyDirectories);
  EXPECT_EQ(directories(), "null");
  EXPECT_EQ(messages.take(), Texts{invalidName("c.")});
  EXPECT_EQ(directories(), R"(C:\d\d\)");
  EXPECT_EQ(directories(), "null");

  Next found = start(kOnlyFiles);
  EXPECT_EQ(found(), R"(C:\d\a)");
  EXPECT_EQ(found(), "null");
  EXPECT_EQ(found(), R"(C:\d\e)");
  EXPECT_EQ(found(), "null");
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(DirectorySearch, ItemsShareTheDirectorySearched) {
  entries({{kFileEntry, KVW("a")}});
  SmartPtr<FileIterator> const iterator = directory->findFiles(String(KVW("*")));
  SmartPtr<File const> const file = iterator->getNext();
  EXPECT_EQ(file->getDirectory(), directory);  // absolute already, so the very object
}

TEST_F(DirectorySearch, ThePatternStandsBehindTheFullName) {
  struct Row {
    char const* name;
    wchar const* directory;
    char const* call;
  };
  Row const rows[] = {
      {"drive root", KVW(R"(C:\)"), R"(findFirst C:\scan??.d*)"},
      {"share", KVW(R"(\\s\t)"), R"(findFirst \\s\t\scan??.d*)"},
      {"root without drive", KVW(R"(\)"), R"(findFirst \scan??.d*)"},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    for (Kind const kind : kKinds) {
      searchFor(*directoryAt(row.directory), kind, String(KVW("scan??.d*")));
      EXPECT_EQ(calls(), Log{row.call});
    }
  }
}

TEST_F(DirectorySearch, AnInvalidPatternGivesNoIteratorAndOneMessage) {
  struct Row {
    char const* name;
    String pattern;
    char const* shownPattern;
  };
  Row const rows[] = {
      {"NIL", String::NIL, ""},
      {"EMPTY", String::EMPTY, ""},
      {"a dot", String(KVW(".")), "."},
      {"two dots", String(KVW("..")), ".."},
      {"last dot", String(KVW("*.")), "*."},
      {"path", String(KVW(R"(sub\*.txt)")), R"(sub\*.txt)"},
      {"slash", String(KVW("sub/*")), "sub/*"},
      {"drive", String(KVW("C:*")), "C:*"},
  };
  SmartPtr<Directory const> const relative = directoryAt(KVW("q:x"));  // not even made absolute
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    for (Kind const kind : kKinds) {
      SCOPED_TRACE(kKindNames[kind]);
      EXPECT_TRUE(searchFor(*relative, kind, row.pattern) == nullptr);
      EXPECT_EQ(messages.take(), Texts{invalidPattern(row.shownPattern)});
    }
  }
  EXPECT_EQ(calls(), Log());
}

TEST_F(DirectorySearch, ARelativeDirectoryIsResolvedOnceWhenTheSearchStarts) {
  files.script.directory = KVW(R"(C:\d)");
  files.script.searches[KVW(R"(C:\d\sub\*)")] = {{kFileEntry, KVW("a")}, {kFileEntry, KVW("b")}};
  Next next = searchFor(*directoryAt(KVW("sub")), kOnlyFiles, String(KVW("*")));
  EXPECT_EQ(calls(), Log({"currentDirectory", R"(findFirst C:\d\sub\*)"}));
  files.script.directory = KVW(R"(D:\)");
  EXPECT_EQ(next(), R"(C:\d\sub\a)");
  EXPECT_EQ(next(), R"(C:\d\sub\b)");
}

TEST_F(DirectorySearch, WithoutAbsoluteFormThereIsNoIterator) {
  for (Kind const kind : kKinds) {
    SCOPED_TRACE(kKindNames[kind]);
    EXPECT_TRUE(searchFor(*directoryAt(KVW("sub")), kind, String(KVW("*"))) == nullptr);
    EXPECT_EQ(messages.take(), Texts{kNoCurrentDirectory});
    EXPECT_EQ(calls(), Log{"currentDirectory"});
  }
}

TEST_F(DirectorySearch, ACopySharesTheSearchAndSeesItClosed) {
  entries({{kFileEntry, KVW("a")}, {kFileEntry, KVW("b")}, {kFileEntry, KVW("c")}, {kFileEntry, KVW("d")}});
  SmartPtr<FileIterator> const iterator = directory->findFiles(String(KVW("*")));
  {
    SmartPtr<FileIterator> const copy(new FileIterator(*iterator));
    EXPECT_EQ(copy->getRefCounter(), 1u);
    EXPECT_EQ(fullName(copy->getNext()), R"(C:\d\a)");      // its own current entry
    EXPECT_EQ(fullName(iterator->getNext()), R"(C:\d\a)");  // and the search goes on under both
    EXPECT_EQ(fullName(copy->getNext()), R"(C:\d\b)");
    calls();
  }
  EXPECT_EQ(calls(), Log{"findClose"});
  EXPECT_EQ(fullName(iterator->getNext()), R"(C:\d\c)");
  EXPECT_EQ(calls(), Log({"findNext", "findClose"}));  // on the stale handle
  EXPECT_EQ(iterator->getNext(), nullptr);
}

TEST_F(DirectorySearch, AssignmentDoesNotCloseTheSearchOfTheTarget) {
  entries({{kFileEntry, KVW("a")}});
  SmartPtr<FileIterator> const target = directory->findFiles(String(KVW("*")));
  SmartPtr<FileIterator> const finished = directory->findFiles(String(KVW("none")));
  {
    SmartPtr<FileIterator> const keeper(new FileIterator(*target));  // closes the search that the target drops
    calls();
    *target = *finished;
    EXPECT_EQ(calls(), Log());
    EXPECT_EQ(target->getNext(), nullptr);
    EXPECT_EQ(files.openSearches(), 1);
  }
  EXPECT_EQ(calls(), Log{"findClose"});
}

TEST_F(DirectorySearch, AssignmentTakesOverTheSearch) {
  entries({{kFileEntry, KVW("a")}});
  files.script.searches[KVW(R"(C:\e\*)")] = {{kFileEntry, KVW("x")}, {kFileEntry, KVW("y")}};
  SmartPtr<FileIterator> const target = directory->findFiles(String(KVW("*")));
  SmartPtr<FileIterator> const keeper(new FileIterator(*target));  // closes the search that the target drops
  SmartPtr<FileIterator> const source = directoryAt(KVW(R"(C:\e)"))->findFiles(String(KVW("*")));
  *target = *source;
  EXPECT_EQ(fullName(target->getNext()), R"(C:\e\x)");
  EXPECT_EQ(fullName(target->getNext()), R"(C:\e\y)");
  EXPECT_EQ(target->getNext(), nullptr);
}

TEST_F(DirectorySearch, ACopyOfWhatIsFinishedIsFinished) {
  SmartPtr<FileIterator> const finished = directory->findFiles(String(KVW("none")));
  SmartPtr<FileIterator> const copy(new FileIterator(*finished));
  calls();
  EXPECT_EQ(copy->getNext(), nullptr);
  EXPECT_EQ(calls(), Log());
}

// Called through the base class, getNext gives files and directories, whatever the class of the iterator.
TEST_F(DirectorySearch, TheBasesGetNextIsNotVirtual) {
  entries({{kFolderEntry, KVW("d")}, {kFileEntry, KVW("f")}});
  SmartPtr<FileSystemIterator> const iterator = directory->findFiles(String(KVW("*")));
  EXPECT_EQ(fullName(iterator->getNext()), R"(C:\d\d\)");
  EXPECT_EQ(fullName(iterator->getNext()), R"(C:\d\f)");
  EXPECT_EQ(iterator->getNext(), nullptr);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
