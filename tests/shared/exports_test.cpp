// SPDX-License-Identifier: MIT
//
// What a program sees of the shipped library: exported data is one object on both sides, memory crosses the boundary,
// and the seam can be swapped from outside.
#include <gtest/gtest.h>

#include <memory>

#include "kvbase/kvbase.h"
#include "kvbase/platform/backend.h"
#include "tests/support/progress.h"
#include "tests/support/recording_files.h"
#include "tests/support/scripted_errors.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

// Copies nothing and tells a quarter; not every system tells of its own accord.
class ScriptedCopy final : public InterceptedFiles {
 public:
  ScriptedCopy() : InterceptedFiles(platform::nativeFiles()) {}
  bool copyFile(wchar const*, wchar const*, platform::CopyProgress progress, void* data, ulong32) override {
    return progress(400, 100, data) == platform::kProgressContinue;
  }

 protected:
  bool enter(char const*, wchar const*) override { return true; }
};

TEST(SharedLibrary, ConstantsAreOneObjectOnBothSides) {
  // The library itself gives EMPTY for a text with nothing left; a copy of its own would make another payload here.
  String const cut = String(KVW("  ")).trim();
  EXPECT_EQ(static_cast<wchar const*>(String::EMPTY), static_cast<wchar const*>(cut));

  // The library refers to the exported unit for an index into NIL; this program sees what was written.
  String nil;
  wchar const before = String::outOfRange;
  nil[0] = KVW('x');
  EXPECT_EQ(String::outOfRange, KVW('x'));
  EXPECT_EQ(&nil[5], &String::outOfRange);
  String::outOfRange = before;
}

TEST(SharedLibrary, PayloadsOfOneSideAreReleasedByTheOther) {
  String text(KVW("scan001"));
  for (int round = 0; round < 100; ++round) {
    String const other = text + KVW(".dat");
    text = other.substr(0, 7);
  }
  EXPECT_TRUE(text == KVW("scan001"));
}

TEST(SharedLibrary, ClassesAreKnownAcrossTheBoundary) {
  SmartPtr<Directory> const directory = Directory::fromString(KVW("C:\\scans\\today\\"));
  ASSERT_TRUE(directory);
  EXPECT_EQ(Directory::Class(), directory->getClassType());
  BaseNode const* const node = directory.get();
  EXPECT_EQ(directory.get(), dynamic_cast<Directory const*>(node));
  EXPECT_EQ(dynamic_cast<File const*>(node), nullptr);
}

TEST(SharedLibrary, SeamIsSwappedFromOutside) {
  SmartPtr<Directory> const directory = Directory::fromString(KVW("C:\\scans\\"));
  ASSERT_TRUE(directory);
  RecordingFiles files;
  {
    platform::ScopedBackend<platform::FileApi> const scope(files);
    directory->exists();
  }
  EXPECT_EQ(files.log().size(), 1u);
  directory->exists();
  EXPECT_EQ(files.log().size(), 1u);
}

TEST(SharedLibrary, TextsOfErrorsComeThroughTheSeamToo) {
  ScriptedErrors errors;
  errors.error = 5;
  errors.texts[5] = KVW("Denied.\r\n");
  {
    platform::ScopedBackend<platform::ErrorApi> const scope(errors);
    EXPECT_TRUE(getWindowsError() == KVW("Denied."));
  }
}

TEST(SharedLibrary, TheLibraryCallsObjectsOfTheProgram) {
  TempFolder folder;
  folder.write("from/a", "12345");
  folder.makeFolder("to");
  SmartPtr<Directory const> const from = Directory::fromString(folder.text(KVW("from")).c_str());
  SmartPtr<Directory const> const to = Directory::fromString(folder.text(KVW("to")).c_str());
  ASSERT_TRUE(from && to);
  CountedFiles counter;
  EXPECT_TRUE(from->copyContents(to, true, false, &counter));
  EXPECT_EQ(counter.count, 1);

  auto const progress = std::make_shared<RecordedProgress>();
  SmartPtr<File> const source = File::fromString(*from, KVW("a"));
  ScriptedCopy files;
  platform::ScopedBackend<platform::FileApi> const scope(files);
  EXPECT_EQ(File::CopyOk, source->copy(File::fromString(*to, KVW("b")), false, progress));
  ASSERT_FALSE(progress->values.empty());
  EXPECT_EQ(progress->values.back(), 0.25);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
