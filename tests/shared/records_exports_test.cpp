// SPDX-License-Identifier: MIT
//
// The records as a program sees them in the shipped library: every exported name is used once, and the exported data is
// one object for all its users.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "kvbase/kvbase.h"
#include "kvbase/platform/debug_api.h"
#include "tests/support/module_files.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

// A module that uses the same data.
class OtherUser {
 public:
  OtherUser() {
    wstring file = widen((fixtureFolder() / moduleFile("records_user")).string());
    std::replace(file.begin(), file.end(), KVW('/'), KVW('\\'));
    module_ = platform::debug().loadLibrary(file.c_str());
  }
  ~OtherUser() { EXPECT_TRUE(platform::debug().freeLibrary(module_)); }

  template <class Function>
  Function* function(char const* name) const {
    auto* const found = reinterpret_cast<Function*>(platform::debug().function(module_, name));
    EXPECT_NE(found, nullptr) << name;
    return found;
  }

 private:
  HINSTANCE module_ = nullptr;
};

TEST(SharedRecords, AChangeOfTheTraitsTakesEffectForAllUsers) {
  OtherUser const other;
  float* const epsilon = other.function<float*()>("floatEpsilon")();
  EXPECT_EQ(epsilon, &KVBoundingBoxTraits<float>::epsilon);
  EXPECT_EQ(*epsilon, 1e-5f);
  KVBoundingBoxTraits<float>::epsilon = 0.5f;
  EXPECT_EQ(*epsilon, 0.5f);
  *epsilon = 1e-5f;
  EXPECT_EQ(KVBoundingBoxTraits<float>::epsilon, 1e-5f);

  auto* const rootOf = other.function<double(double)>("rootOf");
  EXPECT_EQ(rootOf(6.25), 2.5);
  auto* const sqrt = KVBoundingBoxTraits<double>::sqrt;
  KVBoundingBoxTraits<double>::sqrt = [](double number) { return -number; };
  EXPECT_EQ(rootOf(6.25), -6.25);
  KVBoundingBoxTraits<double>::sqrt = sqrt;

  EXPECT_EQ(other.function<Vec3d<double>*()>("largestVector")(), &KVBoundingBoxTraits<double>::maxVector);
}

TEST(SharedRecords, NullReferencesAreOneObjectForAllUsers) {
  OtherUser const other;
  EXPECT_EQ(other.function<ScanPtColor<Vec3d<float>> const*()>("noFloatPoint")(),
            &ScanPtColor<Vec3d<float>>::nullReference);
  EXPECT_EQ(other.function<ScanPtColor<Vec3d<double>> const*()>("noDoublePoint")(),
            &ScanPtColor<Vec3d<double>>::nullReference);
  EXPECT_EQ(other.function<ScanPtColor<double> const*()>("noDouble")(), &ScanPtColor<double>::nullReference);
  EXPECT_EQ(other.function<ScanPtColor<int> const*()>("noInt")(), &ScanPtColor<int>::nullReference);
  EXPECT_EQ(ScanPtColor<Vec3d<double>>::nullReference.position.z, 0.0);
  EXPECT_EQ(ScanPtColor<Vec3d<float>>::nullReference.color[3], 0);
}

TEST(SharedRecords, TheOtherTraitsAreThereToo) {
  EXPECT_EQ(KVBoundingBoxTraits<double>::epsilon, 1e-5);
  EXPECT_EQ(KVBoundingBoxTraits<float>::sqrt(6.25f), 2.5f);
  EXPECT_EQ(KVBoundingBoxTraits<float>::maxVector.z, 0x1.fffffep127f);
}

TEST(SharedRecords, AllFormsOfTheCastAreThere) {
  ScanPtColorExt<Vec3d<double>> extended;
  extended.position = {1, 2, 3};
  extended.extra = 4;
  EXPECT_EQ(scanpt_cast<Vec3d<double>>(scanpt_cast<Vec3d<double>>(extended)).extra, 4);
  EXPECT_EQ(scanpt_cast<Vec3d<double>>(scanpt_cast<Vec3d<float>>(extended)).position.z, 3);
  EXPECT_EQ(scanpt_cast<Vec3d<float>>(scanpt_cast<Vec3d<float>>(extended)).extra, 4);
  ScanPtColor<Vec3d<double>> color;
  color.position = {5, 6, 7};
  color.value = 8;
  EXPECT_EQ(scanpt_cast<Vec3d<double>>(scanpt_cast<Vec3d<double>>(color)).value, 8);
  EXPECT_EQ(scanpt_cast<Vec3d<double>>(scanpt_cast<Vec3d<float>>(color)).position.x, 5);
  EXPECT_EQ(scanpt_cast<Vec3d<float>>(scanpt_cast<Vec3d<float>>(color)).value, 8);
}

TEST(SharedRecords, InfosCrossTheBoundary) {
  SmartPtr<InfoStringMap> const map(new InfoStringMap);
  map->addInfo<String>(KVW("Colour"), KVW("red"));
  map->addInfo<String>(KVW("COLOUR"), KVW("blue"));
  EXPECT_EQ(map->getNumberInfos(), 1u);
  EXPECT_EQ(map->getInfoByKey(KVW("colour")), KVW("blue"));
  EXPECT_EQ(&map->getInfoByKey(KVW("size")), &String::NIL);

  InfoStringMap::Infos infos = map->getInfos();
  infos[KVW("size")] = KVW("10");
  InfoStringMap copy(infos);
  copy.setExpire(false);
  *map = copy;
  EXPECT_FALSE(map->willExpire());
  EXPECT_TRUE(InfoStringMap(*map).willExpire());
  EXPECT_EQ(map->getNumberInfos(), 2u);
  map->setInfos(InfoStringMap::Infos());
  EXPECT_EQ(map->getNumberInfos(), 0u);
}

// A record of the program below that of the library.
class ProgramInfo : public ObserverInfo {
 public:
  int number = 0;
};

TEST(SharedRecords, AProgramDerivesFromObserverInfo) {
  SmartPtr<ObserverInfo> const info(new ProgramInfo);
  EXPECT_TRUE(info->willExpire());
  info->setExpire(false);
  ProgramInfo other;
  other.number = 5;
  static_cast<ObserverInfo&>(other) = *info;
  EXPECT_FALSE(other.willExpire());
  EXPECT_EQ(other.number, 5);
  EXPECT_FALSE(ObserverInfo(*info).willExpire());
  EXPECT_NE(dynamic_cast<ProgramInfo const*>(info.get()), nullptr);
  EXPECT_EQ(info->getClassType(), ObserverInfo::Class());
}

TEST(SharedRecords, TheClassesBelongToTheLibrary) {
  EXPECT_EQ(&InfoStringMap::Class()->module(), &*Module::begin());
  EXPECT_EQ(InfoStringMap::Class()->parent(), ObserverInfo::Class());
  ObserverInfo::initStatics();
  InfoStringMap::initStatics();
  InfoStringMap::clearStatics();
  ObserverInfo::clearStatics();
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
