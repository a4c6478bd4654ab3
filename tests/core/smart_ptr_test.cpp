// SPDX-License-Identifier: MIT
#include "kvbase/core/smart_ptr.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>
#include <vector>

#include "kvbase/filesystem/directory.h"
#include "kvbase/filesystem/file.h"
#include "tests/core/counted_node.h"

namespace KV_1_1 {
namespace testing {
namespace {

using Pointer = SmartPtr<LoggedNode>;

static_assert(std::is_nothrow_default_constructible<Pointer>::value, "building a null SmartPtr cannot fail");

// Two objects, a and b, each with one owner, and a log that is empty when a test starts to look.
class SmartPtrSequence : public ::testing::Test {
 protected:
  SmartPtrSequence() { log.clear(); }

  // What has happened since the last call.
  Log happened() { return std::exchange(log, Log()); }

  Log log;
  Pointer a{new LoggedNode(log, "a")};
  Pointer b{new LoggedNode(log, "b")};
};

TEST_F(SmartPtrSequence, ConstructionWithoutObjectTouchesNothing) {
  Pointer const byDefault;
  Pointer const fromNull(nullptr);
  Pointer const fromNullObject(static_cast<LoggedNode*>(nullptr));
  Pointer const copyOfNull(byDefault);
  EXPECT_EQ(happened(), Log());
  EXPECT_FALSE(byDefault || fromNull || fromNullObject || copyOfNull);
}

TEST_F(SmartPtrSequence, ConstructionFromAnObjectTakesIt) {
  {
    Pointer const pointer(a.get());
    EXPECT_EQ(happened(), Log({"ref a"}));
    EXPECT_EQ(a->getRefCounter(), 2u);
  }
  EXPECT_EQ(happened(), Log({"unref a"}));
}

TEST_F(SmartPtrSequence, CopyTakesTheObject) {
  Pointer const copy(a);
  EXPECT_EQ(happened(), Log({"ref a"}));
  EXPECT_EQ(copy.get(), a.get());
}

TEST_F(SmartPtrSequence, MoveTouchesNoCount) {
  Pointer const moved(std::move(a));
  EXPECT_EQ(happened(), Log());
  EXPECT_EQ(a, nullptr);
  EXPECT_EQ(moved->getRefCounter(), 1u);
}

TEST_F(SmartPtrSequence, TheLastOwnerDestroys) {
  { Pointer const last(std::move(a)); }
  EXPECT_EQ(happened(), Log({"unref a", "destroy a"}));
}

TEST_F(SmartPtrSequence, AssignmentTakesTheNewBeforeItReleasesTheOld) {
  a = b;
  EXPECT_EQ(happened(), Log({"ref b", "unref a", "destroy a"}));
  EXPECT_EQ(b->getRefCounter(), 2u);
}

TEST_F(SmartPtrSequence, AssignmentHasReleasedTheOldWhenItsResultIsUsed) {
  auto const use = [this](Pointer const& pointer) { log.push_back(pointer == nullptr ? "use null" : "use b"); };
  use(a = b);
  EXPECT_EQ(happened(), Log({"ref b", "unref a", "destroy a", "use b"}));
  b = nullptr;
  happened();
  use(a = nullptr);
  EXPECT_EQ(happened(), Log({"unref b", "destroy b", "use null"}));
}

TEST_F(SmartPtrSequence, AssignmentOfARawPointerDoesTheSame) {
  a = b.get();
  EXPECT_EQ(happened(), Log({"ref b", "unref a", "destroy a"}));
}

TEST_F(SmartPtrSequence, AssignmentOfNullOnlyReleases) {
  a = nullptr;
  EXPECT_EQ(happened(), Log({"unref a", "destroy a"}));
  b = Pointer();
  EXPECT_EQ(happened(), Log({"unref b", "destroy b"}));
  b = nullptr;
  EXPECT_EQ(happened(), Log());
}

TEST_F(SmartPtrSequence, AssignmentToNullOnlyTakes) {
  Pointer target;
  target = a;
  EXPECT_EQ(happened(), Log({"ref a"}));
}

TEST_F(SmartPtrSequence, SelfAssignmentOfTheSoleOwnerKeepsTheObject) {
  Pointer const& self = a;
  a = self;
  EXPECT_EQ(happened(), Log({"ref a", "unref a"}));
  EXPECT_EQ(a->getRefCounter(), 1u);
}

TEST_F(SmartPtrSequence, AssignmentOfTheSameObjectKeepsItsCount) {
  Pointer other(a);
  happened();
  a = other;
  EXPECT_EQ(happened(), Log({"ref a", "unref a"}));
  EXPECT_EQ(a->getRefCounter(), 2u);
  a = a.get();
  EXPECT_EQ(happened(), Log({"ref a", "unref a"}));
}

TEST_F(SmartPtrSequence, MoveAssignmentOnlyReleasesTheOld) {
  a = std::move(b);
  EXPECT_EQ(happened(), Log({"unref a", "destroy a"}));
  EXPECT_EQ(b, nullptr);
  EXPECT_EQ(a->getRefCounter(), 1u);
}

TEST_F(SmartPtrSequence, SelfMoveKeepsTheObject) {
  Pointer& self = a;
  a = std::move(self);
  EXPECT_EQ(happened(), Log());
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a->getRefCounter(), 1u);
}

TEST_F(SmartPtrSequence, DerivedToBaseTakesAndMovesAlike) {
  SmartPtr<DerivedLoggedNode> derived(new DerivedLoggedNode(log, "d"));
  EXPECT_EQ(happened(), Log({"ref d"}));
  Pointer base(derived);
  EXPECT_EQ(happened(), Log({"ref d"}));
  Pointer moved(std::move(derived));
  EXPECT_EQ(happened(), Log());
  EXPECT_EQ(derived, nullptr);
  base = moved;
  EXPECT_EQ(happened(), Log({"ref d", "unref d"}));
  base = nullptr;
  moved = SmartPtr<DerivedLoggedNode>(new DerivedLoggedNode(log, "e"));
  EXPECT_EQ(happened(), Log({"unref d", "ref e", "unref d", "destroy d"}));
}

TEST_F(SmartPtrSequence, ToConstTakesAndMovesAlike) {
  SmartPtr<LoggedNode const> constant(a);
  EXPECT_EQ(happened(), Log({"ref a"}));
  constant = b;
  EXPECT_EQ(happened(), Log({"ref b", "unref a"}));
  SmartPtr<LoggedNode const> const moved(std::move(b));
  EXPECT_EQ(happened(), Log());
}

TEST_F(SmartPtrSequence, AnObjectMayBeReplacedByOneThatItOwns) {
  a->next = std::move(b);
  EXPECT_EQ(happened(), Log());
  a = a->next;
  EXPECT_EQ(happened(), Log({"ref b", "unref a", "destroy a", "unref b"}));
  EXPECT_EQ(a->getRefCounter(), 1u);
}

TEST_F(SmartPtrSequence, AnObjectThatOwnsItselfEndsWhenItLetsGo) {
  LoggedNode* const object = a.get();
  object->next = a;
  a = nullptr;
  EXPECT_EQ(happened(), Log({"ref a", "unref a"}));
  EXPECT_EQ(object->getRefCounter(), 1u);
  object->next = nullptr;
  EXPECT_EQ(happened(), Log({"unref a", "destroy a"}));
}

TEST_F(SmartPtrSequence, AVectorGrowsWithoutTouchingCounts) {
  std::vector<Pointer> pointers;
  pointers.push_back(std::move(a));
  pointers.push_back(std::move(b));
  pointers.reserve(pointers.capacity() * 2 + 1);
  pointers.insert(pointers.begin(), Pointer());
  EXPECT_EQ(happened(), Log());
  pointers.erase(pointers.begin() + 1);
  EXPECT_EQ(happened(), Log({"unref a", "destroy a"}));
}

TEST(SmartPtr, ComparesWithNullRawPointersAndOtherSmartPtrs) {
  int alive = 0;
  SmartPtr<LiveNode> const one(new LiveNode(alive));
  SmartPtr<LiveNode> const two(new LiveNode(alive));
  SmartPtr<LiveNode const> const oneToo(one);
  SmartPtr<BaseNode const> const oneAsBase(one);
  SmartPtr<LiveNode> const null;

  EXPECT_TRUE(one == oneToo && oneToo == one && one == oneAsBase && !(one == two));
  EXPECT_TRUE(one != two && !(one != oneToo) && !(one != oneAsBase));
  EXPECT_TRUE(one == one.get() && one.get() == one && one != two.get() && two.get() != one);
  EXPECT_TRUE(null == nullptr && nullptr == null && one != nullptr && nullptr != one);
  EXPECT_TRUE(!null && one && null == SmartPtr<LiveNode>());
  EXPECT_NE(one < two, two < one);
  EXPECT_FALSE(one < one);
}

TEST(SmartPtr, LeadsToTheObject) {
  int alive = 0;
  LiveNode* const node = new LiveNode(alive);
  SmartPtr<LiveNode> const pointer(node);
  EXPECT_EQ(pointer.get(), node);
  EXPECT_EQ(&*pointer, node);
  EXPECT_EQ(pointer->getRefCounter(), 1u);
  EXPECT_TRUE((std::is_same<decltype(*std::declval<SmartPtr<LiveNode const>>()), LiveNode const&>::value));
}

TEST(SmartPtr, DestroysEachObjectOnce) {
  int alive = 0;
  {
    std::vector<SmartPtr<LiveNode const>> owners;
    for (int i = 0; i < 100; ++i) {
      SmartPtr<LiveNode const> const node(new LiveNode(alive));
      owners.push_back(node);
      owners.push_back(node);
    }
    EXPECT_EQ(alive, 100);
    owners.resize(100);
    EXPECT_EQ(alive, 50);
    std::vector<SmartPtr<LiveNode const>> const more = owners;
    owners.clear();
    EXPECT_EQ(alive, 50);
  }
  EXPECT_EQ(alive, 0);
}

TEST(SmartPtr, ReturnsFromAFunctionWithoutTouchingTheCount) {
  Log log;
  {
    auto const make = [&log] {
      Pointer made(new LoggedNode(log, "m"));
      return made;
    };
    Pointer const pointer = make();
    EXPECT_EQ(log, Log({"ref m"}));
  }
  EXPECT_EQ(log, Log({"ref m", "unref m", "destroy m"}));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
