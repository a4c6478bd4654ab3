// SPDX-License-Identifier: MIT
//
// Memory that runs out at any point of an operation: std::bad_alloc comes through, nothing leaks, no search stays open,
// and the objects that took part are as before. Operations that end in a message are not here: formatting a text ends
// the process when memory runs out while the text is put in place.
#include <gtest/gtest.h>

#include <functional>
#include <iterator>
#include <new>
#include <string>

#include "kvbase/filesystem/file_collection_iterator.h"
#include "kvbase/filesystem/file_system_iterator.h"
#include "kvbase/modules/client_module.h"
#include "tests/filesystem/path_support.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/failing_files.h"
#include "tests/support/scripted_files.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace {

using namespace KV_1_1::testing;

// A system that allocates nothing: C:\work and the two folders s below it hold a folder s and two files each.
class FrugalFiles final : public FileScript {
 public:
  int openSearches = 0;

  ulong32 getAttributes(wchar const*) override { return platform::kAttributeDirectory; }
  bool getInfo(wchar const*, platform::FileInfo& info) override {
    info = {platform::kAttributeNormal, 1};
    return true;
  }
  platform::SearchHandle findFirst(wchar const* pattern, platform::FindData& data) override {
    std::size_t const length = std::char_traits<wchar>::length(pattern);
    bool const tooDeep = length > std::size(KVW(R"(C:\work\s\s\*)"));
    bool const forNothing = pattern[length - 1] == KVW('\\');  // as the base of a FileCollectionIterator searches
    if (tooDeep || forNothing) return platform::invalidSearch();
    Search* const search = &searches_[openSearches++];
    search->next = 0;
    findNext(search, data);
    return search;
  }
  bool findNext(platform::SearchHandle handle, platform::FindData& data) override {
    static wchar const* const names[] = {KVW("."), KVW("s"), KVW("f.txt"), KVW("g")};
    auto* const search = static_cast<Search*>(handle);
    if (search->next == std::size(names)) return false;
    data.attributes = search->next < 2 ? platform::kAttributeDirectory : platform::kAttributeNormal;
    wchar const* const name = names[search->next];
    std::char_traits<wchar>::copy(data.name, name, std::char_traits<wchar>::length(name) + 1);
    ++search->next;
    return true;
  }
  bool findClose(platform::SearchHandle) override { return --openSearches >= 0; }
  bool currentDirectory(wstring& path) override {
    path = KVW(R"(C:\work)");
    return true;
  }
  bool currentDirectoryOfDrive(int, wstring& path) override { return currentDirectory(path); }

 private:
  struct Search {
    std::size_t next;
  };
  Search searches_[32];
};

struct Operation {
  char const* name;
  std::function<void()> run;
};

// Runs the operation with the first, second, ... allocation failing until it passes. `open` counts what is open.
void sweep(Operation const& operation, std::function<int()> const& open) {
  SCOPED_TRACE(operation.name);
  operation.run();  // what is built on first use stands from here on
  int const openBefore = open();
  for (int n = 1; n < 10000; ++n) {
    bool threw = false;
    AllocationFailure scope(n);
    try {
      operation.run();
    } catch (std::bad_alloc const&) {
      threw = true;
    }
    scope.end();
    ASSERT_EQ(scope.live(), 0) << "allocation " << n;
    ASSERT_EQ(scope.mismatched(), 0) << "allocation " << n;
    ASSERT_EQ(open(), openBefore) << "allocation " << n;
    ASSERT_EQ(threw, scope.failed()) << "allocation " << n;
    if (!scope.failed()) return;
  }
  FAIL() << "never passed";
}

TEST(PathAllocation, EveryOperationCleansUp) {
  FrugalFiles files;
  platform::ScopedBackend<platform::FileApi> const scope(files);
  auto const text = [](wchar const* units) { return String(units); };
  String const local = text(KVW("c:/a/../b/c"));
  String const share = text(KVW("//srv/share/x"));
  String const name = text(KVW("n.e"));
  String const all = text(KVW("*"));
  SmartPtr<Directory const> const d = directoryAt(local);
  SmartPtr<Directory const> const s = directoryAt(share);
  SmartPtr<Directory const> const r = directoryAt(KVW("..\\r"));
  SmartPtr<Directory const> const onDrive = directoryAt(KVW("D:x"));
  SmartPtr<File const> const f = fileAt(KVW("C:\\b\\f.txt"));
  SmartPtr<File const> const rf = fileAt(KVW("r\\f.txt"));
  SmartPtr<FileCollectionIterator> const collection = FileCollectionIterator::create({f, rf});

  Operation const operations[] = {
      {"default directory", [] { SmartPtr<Directory>(new Directory); }},
      {"local directory from text", [&] { Directory::fromString(local); }},
      {"share from text", [&] { Directory::fromString(share); }},
      {"directory from UTF-8", [] { Directory::fromUTF8("c:/\xc3\xa4/b"); }},
      {"directory from std::string", [s8 = std::string("c:/a/b")] { Directory::fromUTF8(s8); }},
      {"file from text", [&] { File::fromString(local); }},
      {"file from name", [&] { File::fromString(name); }},
      {"file from directory and name", [&] { File::fromString(*d, name); }},
      {"file refused in silence", [&] { File::fromString(*d, all); }},
      {"copies", [&] { SmartPtr<Directory>(new Directory(*d)), SmartPtr<File>(new File(*f)); }},
      {"full name", [&] { d->getFullName(); }},
      {"Unicode name", [&] { d->getFullNameUnicode(), s->getFullNameUnicode(); }},
      {"Unix name", [&] { d->getFullNameUnix(); }},
      {"name", [&] { d->getName(), f->getName(); }},
      {"names of files", [&] { f->getFullName(), f->getFullNameUnicode(), f->getFullNameUnix(); }},
      {"setName of a directory", [&] { SmartPtr<Directory>(new Directory(*d))->setName(name); }},
      {"setName of a file", [&] { SmartPtr<File>(new File(*f))->setName(name); }},
      {"parent", [&] { d->getParent(); }},
      {"appendLevel", [&] { d->appendLevel(name); }},
      {"appendPath", [&] { d->appendPath(*r); }},
      {"combine", [&] { d->combine(r), d->combine(rf); }},
      {"replaceExtension", [&] { f->replaceExtension(name); }},
      {"makeAbsolute", [&] { r->makeAbsolute(), onDrive->makeAbsolute(), rf->makeAbsolute(); }},
      {"makeRelative", [&] { d->makeRelative(r), r->makeRelative(d), f->makeRelative(r); }},
      {"contains", [&] { d->contains(*f); }},
      {"equals", [&] { d->equals(r), s->equals(r), f->equals(rf); }},
      {"exists", [&] { d->exists(), d->isDirectory(), f->exists(); }},
      {"getFileSize",
       [&] {
         ULARGE_INTEGER size;
         f->getFileSize(size);
       }},
      {"findContents",
       [&] {
         auto const items = r->findContents(all);
         while (items->getNext()) {
         }
       }},
      {"findDirectories, left in the middle", [&] { r->findDirectories(all)->getNext(); }},
      {"findFiles, left in the middle", [&] { r->findFiles(all)->getNext(); }},
      {"findFiles, left at once", [&] { r->findFiles(all); }},
      {"collectContents", [&] { r->collectContents(all, true); }},
      {"collectDirectories", [&] { r->collectDirectories(all, true); }},
      {"collectFiles", [&] { r->collectFiles(all, true); }},
      {"FileCollectionIterator",
       [&] {
         FileCollectionIterator::create({f, rf})->getNext();
       }},
      {"copy of a FileCollectionIterator",
       [&] { SmartPtr<FileCollectionIterator>(new FileCollectionIterator(*collection)); }},
      {"Module", [] { ModuleOwner(); }},
      {"class walk",
       [] {
         for (mZClass const* c = nullptr; mZClass::iterateAllClasses(c);) {
         }
       }},
  };
  std::string const before = described(d) + described(s) + described(r) + described(f) + described(rf);
  for (Operation const& operation : operations) {
    ASSERT_NO_FATAL_FAILURE(sweep(operation, [&files] { return files.openSearches; }));
  }
  EXPECT_EQ(described(d) + described(s) + described(r) + described(f) + described(rf), before);
}

TEST(PathAllocation, AReceiverIsAsBeforeWhereMemoryRanOut) {
  String const name(KVW("new.ext"));
  for (int n = 1; n < 100; ++n) {
    SmartPtr<Directory> const directory = Directory::fromString(String(KVW("C:\\a\\b")));
    SmartPtr<Directory> const target = Directory::fromString(String(KVW("\\\\s\\t\\x")));
    SmartPtr<File> const file = File::fromString(String(KVW("C:\\a\\b.txt")));
    bool directoryThrew = false, targetThrew = false, fileThrew = false;
    AllocationFailure scope(n);
    try {
      directory->setName(name);
    } catch (std::bad_alloc const&) {
      directoryThrew = true;
    }
    try {
      *target = *directory;
    } catch (std::bad_alloc const&) {
      targetThrew = true;
    }
    try {
      file->setName(name);
    } catch (std::bad_alloc const&) {
      fileThrew = true;
    }
    scope.end();
    EXPECT_EQ(described(directory), directoryThrew ? "abs C: [a][b]" : "abs C: [a][new.ext]");
    EXPECT_EQ(described(target), targetThrew ? "abs \\\\s\\t [x]" : described(directory));
    EXPECT_EQ(described(file), fileThrew ? "abs C: [a] | b | txt" : "abs C: [a] | new | ext");
    if (!scope.failed()) return;
  }
  FAIL() << "never passed";
}

// The same over the real system, whose own part may allocate, too.
TEST(PathAllocation, SearchesOfTheRealDiskCleanUp) {
  TempFolder folder;
  folder.write("sub/a.txt");
  folder.write("b.txt");
  SmartPtr<Directory const> const directory = directoryAt(folder.text().c_str());
  String const all(KVW("*"));
  FailingFiles files;
  platform::ScopedBackend<platform::FileApi> const scope(files);
  Operation const operations[] = {
      {"exists", [&] { directory->exists(); }},
      {"makeAbsolute", [] { SmartPtr<Directory const>(new Directory)->makeAbsolute(); }},
      {"findFiles, left in the middle", [&] { directory->findFiles(all)->getNext(); }},
      {"collectContents", [&] { directory->collectContents(all, true); }},
  };
  for (Operation const& operation : operations) {
    SCOPED_TRACE(operation.name);
    operation.run();
    for (int n = 1;; ++n) {
      AllocationFailure memory(n);
      try {
        operation.run();
      } catch (std::bad_alloc const&) {
      }
      memory.end();
      ASSERT_EQ(memory.live(), 0) << "allocation " << n;
      ASSERT_EQ(files.openSearches(), 0) << "allocation " << n;
      if (!memory.failed()) break;
      ASSERT_LT(n, 10000);
    }
  }
}

}  // namespace
}  // namespace KV_1_1
