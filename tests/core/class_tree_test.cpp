// SPDX-License-Identifier: MIT
#include "kvbase/core/class_record.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "kvbase/kvbase.h"
#include "kvbase/modules/client_module.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

using Names = std::vector<std::string>;

std::string nameOf(mZClass const* record) {
  return record == nullptr ? "null" : narrow(record->name());
}

// The names in the order of a walk, which must leave a null cursor behind.
template <class Walk>
Names namesIn(Walk walk) {
  Names names;
  mZClass const* cursor = nullptr;
  while (walk(cursor)) names.push_back(nameOf(cursor));
  EXPECT_EQ(cursor, nullptr);
  return names;
}

Names allClasses() {
  return namesIn([](mZClass const*& c) { return mZClass::iterateAllClasses(c); });
}
Names rootClasses() {
  return namesIn([](mZClass const*& c) { return mZClass::iterateRootClasses(c); });
}
Names baseClasses(mZClass const& of) {
  return namesIn([&of](mZClass const*& c) { return of.iterateBaseClasses(c); });
}
Names childClasses(mZClass const& of) {
  return namesIn([&of](mZClass const*& c) { return of.iterateChildClasses(c); });
}
Names derivedClasses(mZClass const& of) {
  return namesIn([&of](mZClass const*& c) { return of.iterateDerivedClasses(c); });
}
Names leafClasses(mZClass const& of) {
  return namesIn([&of](mZClass const*& c) { return of.iterateLeafClasses(c); });
}

// A module with a small tree of its own, beside that of the library:
//   R - A - A1, A2 ; R - B ; R - C - C1 - C11      S (a second root)
class ClassTree : public ::testing::Test {
 protected:
  ModuleOwner owner;
  ClassVersion version{0x0102030405060708};
  mZClass r{KVW("R"), owner.module(), version};
  mZClass a{KVW("A"), &r, owner.module(), version};
  mZClass b{KVW("B"), &r, owner.module(), version};
  mZClass c{KVW("C"), &r, owner.module(), version};
  mZClass a1{KVW("A1"), &a, owner.module(), version};
  mZClass a2{KVW("A2"), &a, owner.module(), version};
  mZClass c1{KVW("C1"), &c, owner.module(), version};
  mZClass c11{KVW("C11"), &c1, owner.module(), version};
  mZClass s{KVW("S"), owner.module(), version};
};

TEST_F(ClassTree, ARecordHoldsWhatItWasGiven) {
  wchar const* const name = KVW("D");
  mZClass const record(name, &a, owner.module(), version);
  EXPECT_EQ(record.name(), name);  // the very pointer: the text is not copied
  EXPECT_EQ(record.parent(), &a);
  EXPECT_EQ(&record.module(), &owner.module());
  EXPECT_EQ(record.version(), version);
  EXPECT_EQ(r.parent(), nullptr);
}

TEST_F(ClassTree, AVersionIsZeroByDefaultAndCompares) {
  EXPECT_EQ(ClassVersion().value, 0u);
  EXPECT_TRUE(ClassVersion() < version && version != ClassVersion() && version == version);
}

TEST_F(ClassTree, ChildrenComeNewestFirst) {
  EXPECT_EQ(childClasses(r), Names({"C", "B", "A"}));
  EXPECT_EQ(childClasses(a), Names({"A2", "A1"}));
  EXPECT_EQ(childClasses(b), Names());
}

TEST_F(ClassTree, RootsComeNewestFirst) {
  Names const roots = rootClasses();
  ASSERT_GE(roots.size(), 3u);
  EXPECT_EQ(Names(roots.begin(), roots.begin() + 2), Names({"S", "R"}));
  EXPECT_EQ(roots.back(), "BaseNode");
}

TEST_F(ClassTree, AncestorsComeNearestFirstWithoutTheClassItself) {
  EXPECT_EQ(baseClasses(c11), Names({"C1", "C", "R"}));
  EXPECT_EQ(baseClasses(b), Names({"R"}));
}

TEST_F(ClassTree, ARootHasNoAncestors) {
  mZClass const* cursor = nullptr;
  EXPECT_FALSE(r.iterateBaseClasses(cursor));
  EXPECT_EQ(cursor, nullptr);
}

TEST_F(ClassTree, DerivedClassesComeDepthFirstAndStayInTheSubtree) {
  EXPECT_EQ(derivedClasses(r), Names({"C", "C1", "C11", "B", "A", "A2", "A1"}));
  EXPECT_EQ(derivedClasses(c), Names({"C1", "C11"}));
  EXPECT_EQ(derivedClasses(a), Names({"A2", "A1"}));
  EXPECT_EQ(derivedClasses(c11), Names());
}

TEST_F(ClassTree, LeavesAreTheDerivedClassesWithoutChildren) {
  EXPECT_EQ(leafClasses(r), Names({"C11", "B", "A2", "A1"}));
  EXPECT_EQ(leafClasses(c), Names({"C11"}));
  EXPECT_EQ(leafClasses(b), Names());  // not a leaf of itself
}

TEST_F(ClassTree, AllClassesComeDepthFirstRootByRoot) {
  Names const expected = {"S", "R", "C", "C1", "C11", "B", "A", "A2", "A1"};
  Names const all = allClasses();
  ASSERT_GE(all.size(), expected.size());
  EXPECT_EQ(Names(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(expected.size())), expected);
}

TEST_F(ClassTree, AWalkThatIsOverStartsAnew) {
  mZClass const* cursor = nullptr;
  while (a.iterateDerivedClasses(cursor)) {
  }
  EXPECT_TRUE(a.iterateDerivedClasses(cursor));
  EXPECT_EQ(nameOf(cursor), "A2");
}

TEST_F(ClassTree, AWalkGoesOnFromAnyCursor) {
  mZClass const* cursor = &c11;
  EXPECT_TRUE(r.iterateDerivedClasses(cursor));
  EXPECT_EQ(nameOf(cursor), "B");
  cursor = &a1;
  EXPECT_FALSE(r.iterateDerivedClasses(cursor));
  EXPECT_EQ(cursor, nullptr);
}

TEST_F(ClassTree, KinshipFollowsTheParents) {
  struct Row {
    char const* name;
    mZClass const* record;
    mZClass const* other;
    bool expected;
  };
  Row const rows[] = {
      {"itself", &a, &a, true},
      {"parent", &a1, &a, true},
      {"grandparent", &c11, &c, true},
      {"root", &c11, &r, true},
      {"child", &a, &a1, false},
      {"sibling", &a, &b, false},
      {"other root", &a, &s, false},
      {"null", &a, nullptr, false},
      {"null of a root", &r, nullptr, false},
      {"cousin", &a1, &c1, false},
      {"library class", &a, BaseNode::Class(), false},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.record->isDerivedFrom(row.other), row.expected);
  }
}

// Records that go are out of the list that they stood in, wherever they stood there.
TEST_F(ClassTree, ARecordThatGoesLeavesItsSiblingsLinked) {
  struct Row {
    char const* name;
    std::size_t gone;
    Names left;
  };
  Row const rows[] = {
      {"the oldest, at the end", 0, {"Z", "Y"}},
      {"the middle one", 1, {"Z", "X"}},
      {"the newest, at the front", 2, {"Y", "X"}},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    for (bool const asRoots : {false, true}) {
      SCOPED_TRACE(asRoots ? "roots" : "children");
      Names const before = rootClasses();
      std::vector<std::unique_ptr<mZClass>> records;
      for (wchar const* name : {KVW("X"), KVW("Y"), KVW("Z")}) {
        records.emplace_back(asRoots ? new mZClass(name, owner.module(), version)
                                     : new mZClass(name, &b, owner.module(), version));
      }
      records[row.gone].reset();
      Names left = asRoots ? rootClasses() : childClasses(b);
      if (asRoots) left.resize(2);
      EXPECT_EQ(left, row.left);
      records.clear();
      EXPECT_EQ(childClasses(b), Names());
      EXPECT_EQ(rootClasses(), before);
    }
  }
}

TEST_F(ClassTree, HooksDoNothingUnlessOverridden) {
  Names const before = allClasses();
  r.initClassStatics();
  r.clearClassStatics();
  EXPECT_EQ(allClasses(), before);
}

TEST_F(ClassTree, HooksAndCreationCanBeOverridden) {
  class Creator : public mZClass {
   public:
    Creator(mZClass const& parent, Module const& module, Names& log)
        : mZClass(KVW("Made"), &parent, module, ClassVersion()), log_(log) {}
    BaseNode* create() const override { return new Directory; }
    void initClassStatics() const override { log_.push_back("init"); }
    void clearClassStatics() const override { log_.push_back("clear"); }

   private:
    Names& log_;
  };
  Names log;
  Creator const creator(r, owner.module(), log);
  mZClass const& record = creator;
  SmartPtr<BaseNode> const made(record.create());
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(made->getRefCounter(), 1u);  // given unowned
  record.initClassStatics();
  record.clearClassStatics();
  EXPECT_EQ(log, Names({"init", "clear"}));
}

// --- The classes of the library ---------------------------------------------------------------------------------------

template <class... Classes>
constexpr bool recordsAddNoField() {
  return ((sizeof(typename Classes::ClassCreator) == sizeof(mZClass)) && ...);
}
static_assert(recordsAddNoField<FileSystemItem, Directory, File, FileSystemIterator, DirectoryIterator, FileIterator,
                                FileCollectionIterator, ObserverInfo, InfoStringMap>(),
              "the record of a class is a plain mZClass");

struct LibraryClassRow {
  char const* name;
  mZClass const* (*record)();
  mZClass const* (*parent)();
};

LibraryClassRow const kLibraryClasses[] = {
    {"BaseNode", &BaseNode::Class, nullptr},
    {"FileSystemItem", &FileSystemItem::Class, &BaseNode::Class},
    {"Directory", &Directory::Class, &FileSystemItem::Class},
    {"File", &File::Class, &FileSystemItem::Class},
    {"FileSystemIterator", &FileSystemIterator::Class, &BaseNode::Class},
    {"DirectoryIterator", &DirectoryIterator::Class, &FileSystemIterator::Class},
    {"FileIterator", &FileIterator::Class, &FileSystemIterator::Class},
    {"FileCollectionIterator", &FileCollectionIterator::Class, &FileIterator::Class},
    {"ObserverInfo", &ObserverInfo::Class, &BaseNode::Class},
    {"InfoStringMap", &InfoStringMap::Class, &ObserverInfo::Class},
};

TEST(ClassTreeOfLibrary, EachClassHasItsNameParentModuleAndVersion) {
  for (LibraryClassRow const& row : kLibraryClasses) {
    SCOPED_TRACE(row.name);
    mZClass const* const record = row.record();
    EXPECT_EQ(nameOf(record), row.name);
    EXPECT_EQ(record->parent(), row.parent == nullptr ? nullptr : row.parent());
    EXPECT_EQ(&record->module(), &getLibraryModule());
    EXPECT_EQ(record->version(), ClassVersion());
    EXPECT_EQ(record->create(), nullptr);
  }
}

TEST(ClassTreeOfLibrary, AFurtherCallOfClassChangesNothing) {
  Names const before = allClasses();
  for (LibraryClassRow const& row : kLibraryClasses) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.record(), row.record());
  }
  EXPECT_EQ(allClasses(), before);
}

TEST(ClassTreeOfLibrary, StandsFromTheLoadOnInTheOrderOfTheLoad) {
  EXPECT_EQ(childClasses(*FileSystemItem::Class()), Names({"File", "Directory"}));
  EXPECT_EQ(childClasses(*FileSystemIterator::Class()), Names({"FileIterator", "DirectoryIterator"}));
  Names const children = childClasses(*BaseNode::Class());
  ASSERT_GE(children.size(), 3u);
  EXPECT_EQ(Names(children.end() - 3, children.end()), Names({"ObserverInfo", "FileSystemIterator", "FileSystemItem"}));
  EXPECT_EQ(childClasses(*ObserverInfo::Class()), Names({"InfoStringMap"}));
}

TEST(ClassTreeOfLibrary, LeavesOfFileSystemItemAreFileThenDirectory) {
  EXPECT_EQ(leafClasses(*FileSystemItem::Class()), Names({"File", "Directory"}));
  mZClass const* cursor = nullptr;
  EXPECT_FALSE(File::Class()->iterateLeafClasses(cursor));
  EXPECT_EQ(cursor, nullptr);
}

TEST(ClassTreeOfLibrary, ClassesBelowFileSystemIteratorComeDepthFirst) {
  EXPECT_EQ(derivedClasses(*FileSystemIterator::Class()),
            Names({"FileIterator", "FileCollectionIterator", "DirectoryIterator"}));
}

TEST(ClassTreeOfLibrary, AnObjectLeadsToTheRecordOfItsClass) {
  SmartPtr<File const> const file = File::fromString(String(KVW("a.txt")));
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(file->getClassType(), File::Class());
  EXPECT_TRUE(file->isKindOf(FileSystemItem::Class()));
  EXPECT_FALSE(file->isKindOf(Directory::Class()));
  std::vector<SmartPtr<File const>> const files;
  SmartPtr<FileCollectionIterator> const iterator = FileCollectionIterator::create(files);
  EXPECT_EQ(iterator->getClassType(), FileCollectionIterator::Class());
  EXPECT_TRUE(iterator->isKindOf(FileIterator::Class()));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
