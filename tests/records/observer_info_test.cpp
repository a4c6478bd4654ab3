// SPDX-License-Identifier: MIT
#include "kvbase/records/observer_info.h"

#include <gtest/gtest.h>

#include "kvbase/core/smart_ptr.h"
#include "kvbase/modules/client_module.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

static_assert(sizeof(ObserverInfo::ClassCreator) == sizeof(mZClass), "the record of a class is a plain mZClass");

TEST(ObserverInfo, ExpiresAtFirst) {
  ObserverInfo const info;
  EXPECT_TRUE(info.willExpire());
}

TEST(ObserverInfo, CanBeToldNotToExpire) {
  ObserverInfo info;
  info.setExpire(false);
  EXPECT_FALSE(info.willExpire());
  info.setExpire(true);
  EXPECT_TRUE(info.willExpire());
}

TEST(ObserverInfo, ACopyExpiresAsItsSourceDoes) {
  for (bool const expire : {true, false}) {
    ObserverInfo source;
    source.setExpire(expire);
    ObserverInfo const copy(source);
    EXPECT_EQ(copy.willExpire(), expire);
  }
}

TEST(ObserverInfo, ACopyHasNoOwner) {
  SmartPtr<ObserverInfo> const source(new ObserverInfo);
  ObserverInfo const copy(*source);
  EXPECT_EQ(source->getRefCounter(), 1u);
  EXPECT_EQ(copy.getRefCounter(), 0u);
}

TEST(ObserverInfo, AssignmentTakesOverWhetherItExpiresAndNothingElse) {
  SmartPtr<ObserverInfo> const source(new ObserverInfo);
  SmartPtr<ObserverInfo> const second(source);
  source->setExpire(false);
  ObserverInfo target;
  EXPECT_EQ(&(target = *source), &target);
  EXPECT_FALSE(target.willExpire());
  EXPECT_EQ(target.getRefCounter(), 0u);
  EXPECT_EQ(source->getRefCounter(), 2u);
  target = ObserverInfo();
  EXPECT_TRUE(target.willExpire());
}

TEST(ObserverInfo, AssignedToItselfItStays) {
  ObserverInfo info;
  info.setExpire(false);
  ObserverInfo const& same = info;
  info = same;
  EXPECT_FALSE(info.willExpire());
}

// Notes its destruction.
class WatchedInfo final : public ObserverInfo {
 public:
  explicit WatchedInfo(int& destroyed) : destroyed_(destroyed) {}
  ~WatchedInfo() override { ++destroyed_; }

 private:
  int& destroyed_;
};

TEST(ObserverInfo, ItsLastOwnerDestroysTheDerivedObject) {
  int destroyed = 0;
  SmartPtr<ObserverInfo> info(new WatchedInfo(destroyed));
  SmartPtr<BaseNode const> node(info);
  info = nullptr;
  EXPECT_EQ(destroyed, 0);
  node = nullptr;
  EXPECT_EQ(destroyed, 1);
}

TEST(ObserverInfo, ItsDestructorIsVirtualAndPublic) {
  int destroyed = 0;
  ObserverInfo* const info = new WatchedInfo(destroyed);
  delete info;
  EXPECT_EQ(destroyed, 1);
}

TEST(ObserverInfo, TheRecordStandsBelowBaseNode) {
  mZClass const* const record = ObserverInfo::Class();
  EXPECT_EQ(narrow(record->name()), "ObserverInfo");
  EXPECT_EQ(record->parent(), BaseNode::Class());
  EXPECT_EQ(&record->module(), &getLibraryModule());
  EXPECT_EQ(record->version(), ClassVersion());
  EXPECT_EQ(record->create(), nullptr);
  EXPECT_NE(dynamic_cast<ObserverInfo::ClassCreator const*>(record), nullptr);
  EXPECT_EQ(ObserverInfo::Class(), record);
}

TEST(ObserverInfo, AnObjectLeadsToTheRecord) {
  ObserverInfo const info;
  BaseNode const& node = info;
  EXPECT_EQ(node.getClassType(), ObserverInfo::Class());
  EXPECT_TRUE(node.isKindOf(BaseNode::Class()));
}

TEST(ObserverInfo, TheHooksDoNothing) {
  ObserverInfo::initStatics();
  ObserverInfo::clearStatics();
  EXPECT_TRUE(ObserverInfo().willExpire());
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
