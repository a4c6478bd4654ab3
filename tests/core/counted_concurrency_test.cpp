// SPDX-License-Identifier: MIT
//
// What several threads may do at once: own one object, ask for class records, and build lazy objects.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <vector>

#include "kvbase/core/lazy.h"
#include "kvbase/kvbase.h"
#include "tests/core/counted_node.h"
#include "tests/support/threads.h"

namespace KV_1_1 {
namespace testing {
namespace {

class AtomicLiveNode : public BaseNode {
 public:
  explicit AtomicLiveNode(std::atomic<int>& alive) : alive_(alive) { ++alive_; }

 protected:
  ~AtomicLiveNode() override { --alive_; }

 private:
  std::atomic<int>& alive_;
};

TEST(SmartPtrConcurrency, ThreadsOwnOneObject) {
  std::atomic<int> alive{0};
  SmartPtr<AtomicLiveNode const> const shared(new AtomicLiveNode(alive));
  onThreads([&shared](int) {
    for (int i = 0; i < 2000; ++i) {
      SmartPtr<BaseNode const> const first(shared);
      SmartPtr<AtomicLiveNode const> second(shared);
      second = SmartPtr<AtomicLiveNode const>(second);
    }
  });
  EXPECT_EQ(shared->getRefCounter(), 1u);
  EXPECT_EQ(alive, 1);
}

TEST(SmartPtrConcurrency, TheLastOwnerOnAnyThreadDestroysOnce) {
  std::atomic<int> alive{0};
  for (int round = 0; round < 100; ++round) {
    std::vector<SmartPtr<BaseNode const>> owners(kThreads, SmartPtr<BaseNode const>(new AtomicLiveNode(alive)));
    onThreads([&owners](int i) { owners[static_cast<std::size_t>(i)] = nullptr; });
    ASSERT_EQ(alive, 0);
  }
}

TEST(ClassTreeConcurrency, RecordsAndWalksSeenFromSeveralThreadsAreTheSame) {
  std::vector<std::vector<mZClass const*>> seen(kThreads);
  onThreads([&seen](int i) {
    auto& records = seen[static_cast<std::size_t>(i)];
    records = {FileCollectionIterator::Class(), FileIterator::Class(), DirectoryIterator::Class(), File::Class(),
               Directory::Class()};
    for (mZClass const* c = nullptr; mZClass::iterateAllClasses(c);) records.push_back(c);
  });
  for (auto const& records : seen) EXPECT_EQ(records, seen.front());
}

TEST(LazyConcurrency, ObjectsOfManyThreadsAreAllTakenDown) {
  std::atomic<int> alive{0};
  struct Counted {
    explicit Counted(std::atomic<int>& counter) : counter_(counter) { ++counter_; }
    ~Counted() { --counter_; }
    std::atomic<int>& counter_;
  };
  constexpr int kEach = 200;
  AtExitList::Entry* const mark = AtExitList::newest();
  std::vector<std::vector<std::unique_ptr<Lazy<Counted>>>> objects(kThreads);
  onThreads([&](int i) {
    for (int k = 0; k < kEach; ++k) objects[static_cast<std::size_t>(i)].emplace_back(new Lazy<Counted>(alive));
  });
  EXPECT_EQ(alive, kThreads * kEach);
  AtExitList::destroyDownTo(mark);
  EXPECT_EQ(alive, 0);
}

TEST(LazyConcurrency, OneObjectIsBuiltOnceForAllThreads) {
  static std::atomic<int> built{0};
  struct Counted {
    Counted() { ++built; }
  };
  AtExitList::Entry* const mark = AtExitList::newest();
  std::vector<Counted*> seen(kThreads);
  onThreads([&seen](int i) {
    static Lazy<Counted> object;
    seen[static_cast<std::size_t>(i)] = &object.get();
  });
  EXPECT_EQ(built, 1);
  for (Counted* object : seen) EXPECT_EQ(object, seen.front());
  AtExitList::destroyDownTo(mark);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
