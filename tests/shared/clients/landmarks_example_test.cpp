// SPDX-License-Identifier: MIT
//
// The example that the page on client modules shows.
#include <gmock/gmock.h>

#include "tests/shared/clients/run_host.h"

namespace KV_1_1 {
namespace testing {
namespace {

using ::testing::ElementsAreArray;

TEST(LandmarksExample, ShowsOneOfEachKindInTheLanguageOfTheUser) {
  HostRun const english = runHost("landmark_tour", {});
  EXPECT_EQ(english.status, 0);
  EXPECT_THAT(english.lines,
              ElementsAreArray({"Checkerboard: four black and white fields, 200 mm", "Sphere: a white ball, 145 mm"}));
  HostRun const german = runHost("landmark_tour", {}, "deu");
  EXPECT_EQ(german.status, 0);
  EXPECT_THAT(german.lines, ElementsAreArray({"Checkerboard: vier schwarze und weiße Felder, 200 mm",
                                              "Sphere: eine weiße Kugel, 145 mm"}));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
