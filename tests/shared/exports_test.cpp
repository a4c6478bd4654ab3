// SPDX-License-Identifier: MIT
//
// What a program sees of the shipped library: exported data is one object on both sides, memory crosses the boundary, and
// the seam can be swapped from outside.
#include <gtest/gtest.h>

#include "kvbase/kvbase.h"
#include "kvbase/platform/backend.h"
#include "tests/support/recording_files.h"

namespace {

using KV_1_1::Directory;
using KV_1_1::File;
using KV_1_1::SmartPtr;
using KV_1_1::String;

TEST(SharedLibraryTest, ConstantsAreOneObjectOnBothSides) {
  // The library itself gives EMPTY for a text with nothing left; a copy of its own would make another payload here.
  String const cut = String(KVW("  ")).trim();
  EXPECT_EQ(static_cast<KV_1_1::wchar const*>(String::EMPTY), static_cast<KV_1_1::wchar const*>(cut));

  // The library refers to the exported unit for an index into NIL; this program sees what was written.
  String nil;
  KV_1_1::wchar const before = String::outOfRange;
  nil[0] = KVW('x');
  EXPECT_EQ(KVW('x'), String::outOfRange);
  EXPECT_EQ(&String::outOfRange, &nil[5]);
  String::outOfRange = before;
}

TEST(SharedLibraryTest, PayloadsOfOneSideAreReleasedByTheOther) {
  String text(KVW("scan001"));
  for (int round = 0; round < 100; ++round) {
    String const other = text + KVW(".dat");
    text = other.substr(0, 7);
  }
  EXPECT_TRUE(text == KVW("scan001"));
}

TEST(SharedLibraryTest, ClassesAreKnownAcrossTheBoundary) {
  SmartPtr<Directory> const directory = Directory::fromString(KVW("C:\\scans\\today\\"));
  ASSERT_TRUE(directory);
  EXPECT_EQ(Directory::Class(), directory->getClassType());
  KV_1_1::BaseNode const* const node = directory.get();
  EXPECT_EQ(directory.get(), dynamic_cast<Directory const*>(node));
  EXPECT_EQ(nullptr, dynamic_cast<File const*>(node));
}

TEST(SharedLibraryTest, SeamIsSwappedFromOutside) {
  SmartPtr<Directory> const directory = Directory::fromString(KVW("C:\\scans\\"));
  ASSERT_TRUE(directory);
  KV_1_1::testing::RecordingFiles files;
  {
    KV_1_1::platform::ScopedBackend<KV_1_1::platform::FileApi> const scope(files);
    directory->exists();
  }
  EXPECT_EQ(1u, files.log().size());
  directory->exists();
  EXPECT_EQ(1u, files.log().size());
}

}  // namespace
