// SPDX-License-Identifier: MIT
//
// Iterators and collections on a real tree. The order of entries is the system's, so names are compared sorted.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "kvbase/filesystem/file_system_iterator.h"
#include "tests/filesystem/disk_support.h"
#include "tests/support/current_path.h"
#include "tests/support/recording_files.h"

namespace KV_1_1 {
namespace testing {
namespace {

template <class Items>
Texts sortedNames(Items const& items) {
  Texts names;
  for (auto const& item : items) names.push_back(shown(item->getName()));
  std::sort(names.begin(), names.end());
  return names;
}

template <class Iterator>
Texts sortedNames(SmartPtr<Iterator> const& iterator) {
  Texts names;
  while (auto const item = iterator->getNext()) names.push_back(shown(item->getName()));
  std::sort(names.begin(), names.end());
  return names;
}

class DirectorySearchOnDisk : public OnDisk {
 protected:
  ~DirectorySearchOnDisk() override { EXPECT_EQ(files.openSearches(), 0); }

  RecordingFiles files;
  platform::ScopedBackend<platform::FileApi> scope{files};
};

TEST_F(DirectorySearchOnDisk, ItemsAreAbsoluteAndThere) {
  folder.write("sub/file.txt", "abc");
  auto const items = directory()->collectContents(String(KVW("*")), true);
  ASSERT_EQ(items.size(), 2u);
  EXPECT_EQ(fullName(items[0]), name(KVW("sub\\")));
  EXPECT_EQ(fullName(items[1]), narrow(folder.text(KVW("sub\\file.txt"))));
  for (auto const& item : items) EXPECT_TRUE(item->exists());
  EXPECT_TRUE(items[0]->isKindOf(Directory::Class()));
  EXPECT_TRUE(items[1]->isKindOf(File::Class()));
}

TEST_F(DirectorySearchOnDisk, AMissingFolderOrAFileHasNoItemsEither) {
  folder.write("file");
  for (wchar const* below : {KVW("missing"), KVW("file"), KVW("missing\\more")}) {
    SmartPtr<FileIterator> const iterator = directoryAt(folder.text(below).c_str())->findFiles(String(KVW("*")));
    ASSERT_NE(iterator, nullptr);
    EXPECT_EQ(iterator->getNext(), nullptr);
  }
  EXPECT_EQ(messages.take(), Texts());
}

TEST_F(DirectorySearchOnDisk, Patterns) {
  for (char const* name : {"a.txt", "B.TXT", "b", "ab.dat", "scan01.dat", "scan012.dat", ".hidden", "a.txt.bak"}) {
    folder.write(name);
  }
  struct Row {
    char const* name;
    wchar const* pattern;
    Texts matches;
  };
  Texts const all = {".hidden", "B.TXT", "a.txt", "a.txt.bak", "ab.dat", "b", "scan01.dat", "scan012.dat"};
  Row const rows[] = {
      {"all", KVW("*"), all},
      {"names without a dot too", KVW("*.*"), all},
      {"extension without case", KVW("*.txt"), {"B.TXT", "a.txt"}},
      {"the other case", KVW("*.TXT"), {"B.TXT", "a.txt"}},
      {"fixed number of units", KVW("scan??.dat"), {"scan01.dat"}},
      {"front", KVW("a*"), {"a.txt", "a.txt.bak", "ab.dat"}},
      {"two asterisks", KVW("*a*.dat"), {"ab.dat", "scan01.dat", "scan012.dat"}},
      {"no wildcard", KVW("a.txt"), {"a.txt"}},
      {"no wildcard, other case", KVW("A.txt"), {"a.txt"}},
      {"no match", KVW("*.none"), {}},
      {"dot in front", KVW(".h*"), {".hidden"}},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(sortedNames(directory()->findFiles(String(row.pattern))), row.matches);
    EXPECT_EQ(sortedNames(directory()->collectContents(String(row.pattern), false)), row.matches);
  }
}

TEST_F(DirectorySearchOnDisk, RecursionGoesThroughFoldersThatDoNotMatch) {
  folder.write("top.txt");
  folder.write("x/in.txt");
  folder.write("x/a1/deep.txt");
  folder.write("x/a1/other.dat");
  folder.makeFolder("a2");
  EXPECT_EQ(sortedNames(directory()->collectFiles(String(KVW("*.txt")), true)),
            Texts({"deep.txt", "in.txt", "top.txt"}));
  EXPECT_EQ(sortedNames(directory()->collectFiles(String(KVW("*.txt")), false)), Texts{"top.txt"});
  EXPECT_EQ(sortedNames(directory()->collectDirectories(String(KVW("a*")), true)), Texts({"a1", "a2"}));
  EXPECT_EQ(sortedNames(directory()->collectDirectories(String(KVW("a*")), false)), Texts{"a2"});
}

TEST_F(DirectorySearchOnDisk, EachFolderStandsBeforeWhatLiesInIt) {
  folder.write("b/1/x");
  folder.write("a/2/y");
  folder.write("z");
  auto const items = directory()->collectContents(String(KVW("*")), true);
  ASSERT_EQ(items.size(), 7u);
  // The groups: two folders and a file; then one folder and all below it; then the other.
  EXPECT_EQ(fullName(items[2]), narrow(folder.text(KVW("z"))));
  for (std::size_t i : {3u, 5u}) {
    SmartPtr<Directory const> const top =
        i == 3 ? directoryAt(items[0]->getFullName()) : directoryAt(items[1]->getFullName());
    EXPECT_TRUE(top->contains(*items[i]));
    EXPECT_TRUE(top->contains(*items[i + 1]));
    EXPECT_TRUE(items[i]->isKindOf(Directory::Class()));
    EXPECT_TRUE(items[i + 1]->isKindOf(File::Class()));
  }
}

TEST_F(DirectorySearchOnDisk, NamesOfManyScripts) {
  std::u16string const names[] = {u"\u00e4\u00f6\u00fc.txt",    u"\u65e5\u672c.txt", u"\U0001F600.txt",
                                  u" blank in front.txt",       u"CON1.txt",         u"a.b.c.txt",
                                  u"!#$%&'()+,-;=@[]^_`{}~.txt"};
  Texts expected;
  for (std::u16string const& name : names) {
    folder.write(std::filesystem::path(name), "x");
    expected.push_back(narrow(wstring(name.begin(), name.end())));
  }
  std::sort(expected.begin(), expected.end());
  auto const found = directory()->collectFiles(String(KVW("*.txt")), false);
  EXPECT_EQ(sortedNames(found), expected);
  for (auto const& file : found) EXPECT_TRUE(file->exists()) << shown(file->getName());
}

TEST_F(DirectorySearchOnDisk, ANameOfTheGreatestLength) {
  // 255 units; with a drive letter the whole path must fit into 259 units, too.
  bool const hasDrive = folder.text()[1] == KVW(':');
  std::size_t const length = hasDrive ? 259 - folder.text().size() - 1 : 255;
  std::string const name(length, 'n');
  folder.write(name, "x");
  auto const found = directory()->collectFiles(String(KVW("n*")), false);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(shown(found[0]->getName()), name);
  EXPECT_TRUE(found[0]->exists());
}

TEST_F(DirectorySearchOnDisk, IteratorsOnOneFolderRunSideBySide) {
  folder.write("a");
  folder.write("b");
  SmartPtr<FileIterator> const one = directory()->findFiles(String(KVW("*")));
  SmartPtr<FileIterator> const two = directory()->findFiles(String(KVW("*")));
  EXPECT_EQ(files.openSearches(), 2);
  SmartPtr<File const> const first = one->getNext();
  EXPECT_EQ(first->equals(two->getNext()), FileSystemItem::Equal);
  EXPECT_EQ(one->getNext()->equals(two->getNext()), FileSystemItem::Equal);
  EXPECT_EQ(one->getNext(), nullptr);
  EXPECT_EQ(two->getNext(), nullptr);
}

TEST_F(DirectorySearchOnDisk, ARelativeDirectoryGivesAbsoluteItems) {
  folder.write("sub/file");
  CurrentPath const current(folder.path());
  SmartPtr<FileIterator> const iterator = directoryAt(KVW("sub"))->findFiles(String(KVW("*")));
  SmartPtr<File const> const file = iterator->getNext();
  ASSERT_NE(file, nullptr);
  EXPECT_TRUE(file->isAbsolute());
  EXPECT_EQ(file->equals(fileAt(folder.text(KVW("sub\\file")).c_str())), FileSystemItem::Equal);
  EXPECT_TRUE(directoryAt(KVW("sub"))->exists());
  EXPECT_TRUE(fileAt(KVW("sub\\file"))->exists());
  EXPECT_FALSE(directoryAt(KVW("sub\\file"))->exists());
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
