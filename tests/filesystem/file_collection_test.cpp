// SPDX-License-Identifier: MIT
#include "kvbase/filesystem/file_collection_iterator.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/filesystem/path_support.h"
#include "tests/support/scripted_files.h"

namespace KV_1_1 {
namespace testing {
namespace {

using Files = std::vector<SmartPtr<File const>>;

Files filesNamed(std::vector<wchar const*> const& names) {
  Files files;
  for (wchar const* name : names) files.push_back(fileAt(name));
  return files;
}

TEST(FileCollection, AnEmptyListEndsAtOnce) {
  SmartPtr<FileCollectionIterator> const iterator = FileCollectionIterator::create(Files());
  ASSERT_NE(iterator, nullptr);
  EXPECT_EQ(iterator->getNext(), nullptr);
  EXPECT_EQ(iterator->getNext(), nullptr);
}

TEST(FileCollection, GivesTheListInItsOrderAndThenNullForEver) {
  Files const files = filesNamed({KVW("b"), KVW(R"(C:\a)"), KVW("b")});
  SmartPtr<FileCollectionIterator> const iterator = FileCollectionIterator::create(files);
  for (SmartPtr<File const> const& file : files) EXPECT_EQ(iterator->getNext(), file);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(iterator->getNext(), nullptr);
}

TEST(FileCollection, IsAFileIteratorToItsUsers) {
  Files const files = filesNamed({KVW("a")});
  SmartPtr<FileIterator> const iterator = FileCollectionIterator::create(files);
  EXPECT_EQ(iterator->getNext(), files[0]);
  EXPECT_EQ(iterator->getNext(), nullptr);
}

TEST(FileCollection, SharesTheFilesAndNotTheList) {
  Files files = filesNamed({KVW("a"), KVW("b")});
  SmartPtr<File const> const first = files[0];
  SmartPtr<FileCollectionIterator> iterator = FileCollectionIterator::create(files);
  EXPECT_EQ(first->getRefCounter(), 3u);
  files[0] = fileAt(KVW("x"));
  files.pop_back();
  EXPECT_EQ(fullName(iterator->getNext()), R"(.\a)");
  files.clear();
  EXPECT_EQ(fullName(iterator->getNext()), R"(.\b)");
  EXPECT_EQ(iterator->getNext(), nullptr);
  iterator = nullptr;
  EXPECT_EQ(first->getRefCounter(), 1u);
}

TEST(FileCollection, ANullElementComesAsNullAndTheRestBehindIt) {
  Files const files = {fileAt(KVW("a")), nullptr, fileAt(KVW("b"))};
  SmartPtr<FileCollectionIterator> const iterator = FileCollectionIterator::create(files);
  EXPECT_EQ(iterator->getNext(), files[0]);
  EXPECT_EQ(iterator->getNext(), nullptr);
  EXPECT_EQ(iterator->getNext(), files[2]);
  EXPECT_EQ(iterator->getNext(), nullptr);
}

TEST(FileCollection, ACopyHasItsOwnPositionAndList) {
  Files const files = filesNamed({KVW("a"), KVW("b"), KVW("c")});
  SmartPtr<FileCollectionIterator> source = FileCollectionIterator::create(files);
  source->getNext();
  SmartPtr<FileCollectionIterator> const copy(new FileCollectionIterator(*source));
  EXPECT_EQ(copy->getRefCounter(), 1u);
  EXPECT_EQ(copy->getNext(), files[1]);
  EXPECT_EQ(copy->getNext(), files[2]);
  EXPECT_EQ(copy->getNext(), nullptr);
  EXPECT_EQ(source->getNext(), files[1]);

  SmartPtr<FileCollectionIterator> const assigned = FileCollectionIterator::create(Files());
  *assigned = *source;
  source = nullptr;
  EXPECT_EQ(assigned->getNext(), files[2]);
  EXPECT_EQ(assigned->getNext(), nullptr);
}

// The base class searches the current directory with an empty pattern; nobody asks for the items.
TEST(FileCollection, SearchesTheCurrentDirectoryOnceForNothing) {
  ScriptedFiles files;
  files.script.directory = KVW(R"(C:\work)");
  {
    platform::ScopedBackend<platform::FileApi> const scope(files);
    Files const list = filesNamed({KVW("a")});
    SmartPtr<FileCollectionIterator> iterator = FileCollectionIterator::create(list);
    EXPECT_EQ(files.log(), Log({"currentDirectory", R"(findFirst C:\work\)"}));
    files.clearLog();
    EXPECT_EQ(iterator->getNext(), list[0]);
    EXPECT_EQ(iterator->getNext(), nullptr);
    iterator = nullptr;
    EXPECT_EQ(files.log(), Log());
  }
}

TEST(FileCollection, ClosesASearchThatTheSystemStartedAllTheSame) {
  ScriptedFiles files;
  files.script.directory = KVW(R"(C:\work)");
  files.script.searches[KVW(R"(C:\work\)")] = {{platform::kAttributeNormal, KVW("x")}};
  platform::ScopedBackend<platform::FileApi> const scope(files);
  SmartPtr<FileCollectionIterator> iterator = FileCollectionIterator::create(filesNamed({KVW("a")}));
  EXPECT_EQ(files.openSearches(), 1);
  EXPECT_EQ(fullName(iterator->getNext()), R"(.\a)");
  EXPECT_EQ(iterator->getNext(), nullptr);
  iterator = nullptr;
  EXPECT_EQ(files.openSearches(), 0);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
