// SPDX-License-Identifier: MIT
//
// The library can be loaded and unloaded repeatedly at run time, as by a plug-in host.
#include <gtest/gtest.h>

#include "tests/shared/loader.h"

namespace {

TEST(LibraryLoad, ComesUpAndGoesAwayCompletelyTwice) {
  for (int round = 0; round < 2; ++round) {
    SCOPED_TRACE(round);
    ASSERT_FALSE(isLibraryLoaded());
    void* const library = loadLibrary();
    ASSERT_NE(library, nullptr);
    EXPECT_TRUE(isLibraryLoaded());
    EXPECT_TRUE(unloadLibrary(library));
    EXPECT_FALSE(isLibraryLoaded());
  }
}

TEST(LibraryLoad, TwoUsersShareOneLibrary) {
  void* const first = loadLibrary();
  void* const second = loadLibrary();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first, second);
  EXPECT_TRUE(unloadLibrary(first));
  EXPECT_TRUE(isLibraryLoaded());
  EXPECT_TRUE(unloadLibrary(second));
  EXPECT_FALSE(isLibraryLoaded());
}

}  // namespace
