// SPDX-License-Identifier: MIT
#include "kvbase/core/base_node.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <new>

#include "kvbase/core/smart_ptr.h"
#include "kvbase/filesystem/directory.h"
#include "kvbase/filesystem/file.h"
#include "kvbase/modules/client_module.h"
#include "kvbase/modules/module.h"
#include "tests/core/counted_node.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

constexpr unsigned int kDeadMark = 0xF000DEAD;

TEST(BaseNode, StartsUnowned) {
  int alive = 0;
  LiveNode const node(alive);
  EXPECT_EQ(node.getRefCounter(), 0u);
}

TEST(BaseNode, RefAndUnrefCountAndTheLastUnrefDestroys) {
  int alive = 0;
  LiveNode const* const node = new LiveNode(alive);
  node->ref();
  node->ref();
  EXPECT_EQ(node->getRefCounter(), 2u);
  node->unref();
  EXPECT_EQ(node->getRefCounter(), 1u);
  EXPECT_EQ(alive, 1);
  node->unref();
  EXPECT_EQ(alive, 0);
}

TEST(BaseNode, UnrefOfAnUnownedObjectWrapsAndDestroysNothing) {
  int alive = 0;
  LiveNode const node(alive);
  node.unref();
  EXPECT_EQ(node.getRefCounter(), 0xFFFFFFFFu);
  EXPECT_EQ(alive, 1);
  node.ref();
  EXPECT_EQ(node.getRefCounter(), 0u);
}

TEST(BaseNode, UnrefNoDeleteHandsTheObjectBackUnowned) {
  int alive = 0;
  LiveNode const* const node = new LiveNode(alive);
  node->ref();
  node->unrefNoDelete();
  EXPECT_EQ(node->getRefCounter(), 0u);
  EXPECT_EQ(alive, 1);
  // The unowned object can be owned and ended once more.
  { SmartPtr<LiveNode const> const owner(node); }
  EXPECT_EQ(alive, 0);
}

TEST(BaseNode, UnrefNoDeleteOfAnUnownedObjectWraps) {
  int alive = 0;
  LiveNode const node(alive);
  node.unrefNoDelete();
  EXPECT_EQ(node.getRefCounter(), 0xFFFFFFFFu);
  EXPECT_EQ(alive, 1);
}

TEST(BaseNode, ACopyStartsUnownedWhateverTheSourceCounts) {
  int alive = 0;
  LiveNode const source(alive);
  source.ref();
  source.ref();
  LiveNode const copy(source);
  EXPECT_EQ(copy.getRefCounter(), 0u);
  EXPECT_EQ(source.getRefCounter(), 2u);
}

TEST(BaseNode, AssignmentLeavesBothCounts) {
  int alive = 0;
  LiveNode source(alive);
  LiveNode target(alive);
  source.ref();
  source.ref();
  target.ref();
  EXPECT_EQ(&(target = source), &target);
  EXPECT_EQ(source.getRefCounter(), 2u);
  EXPECT_EQ(target.getRefCounter(), 1u);
}

// Looks at its own count while it goes: in the destructor, and in the memory that is about to be released.
class Witness : public BaseNode {
 public:
  static unsigned int inDestructor;
  static std::uint32_t inMemory;

  static void* operator new(std::size_t size) { return ::operator new(size); }
  static void operator delete(void* memory) {
    // Volatile: the object is gone, but its bytes are to be looked at.
    inMemory = reinterpret_cast<std::uint32_t volatile*>(memory)[sizeof(void*) / sizeof(std::uint32_t)];
    ::operator delete(memory);
  }

 protected:
  ~Witness() override { inDestructor = getRefCounter(); }
};
unsigned int Witness::inDestructor = 0;
std::uint32_t Witness::inMemory = 0;

TEST(BaseNode, TheLastUnrefLeavesTheDeadMark) {
  Witness::inDestructor = 0;
  Witness::inMemory = 0;
  BaseNode const* const node = new Witness;
  node->ref();
  node->unref();
  EXPECT_EQ(Witness::inDestructor, kDeadMark);
  EXPECT_EQ(Witness::inMemory, kDeadMark);
}

TEST(BaseNode, TheLastSmartPtrLeavesTheDeadMark) {
  Witness::inDestructor = 0;
  Witness::inMemory = 0;
  { SmartPtr<BaseNode const> const node(new Witness); }
  EXPECT_EQ(Witness::inDestructor, kDeadMark);
  EXPECT_EQ(Witness::inMemory, kDeadMark);
}

TEST(BaseNode, TellsWhatTheRecordOfItsClassSays) {
  SmartPtr<Directory const> const directory(new Directory);
  EXPECT_EQ(directory->getClassType(), Directory::Class());
  EXPECT_EQ(wstring(directory->getClassName()), KVW("Directory"));
  EXPECT_EQ(directory->getClassVersion(), ClassVersion());
  EXPECT_EQ(&directory->getCodeModule(), &getLibraryModule());
}

TEST(BaseNode, IsOfTheKindOfItsClassAndOfAllAncestors) {
  SmartPtr<Directory const> const directory(new Directory);
  struct Row {
    char const* name;
    mZClass const* kind;
    bool expected;
  };
  Row const rows[] = {
      {"own class", Directory::Class(), true},
      {"base class", FileSystemItem::Class(), true},
      {"root", BaseNode::Class(), true},
      {"sibling", File::Class(), false},
      {"null", nullptr, false},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(directory->isKindOf(row.kind), row.expected);
  }
}

TEST(BaseNode, AClassWithoutRecordOfItsOwnIsABaseNode) {
  int alive = 0;
  LiveNode const node(alive);
  EXPECT_EQ(node.getClassType(), BaseNode::Class());
  EXPECT_EQ(wstring(node.getClassName()), KVW("BaseNode"));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
