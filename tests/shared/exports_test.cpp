// SPDX-License-Identifier: MIT
//
// What a program sees of the shipped library: exported data is one object on both sides, memory crosses the boundary,
// and the seam can be swapped from outside.
#include <gtest/gtest.h>

#include <memory>

#include "kvbase/kvbase.h"
#include "kvbase/platform/backend.h"
#include "tests/support/recording_files.h"
#include "tests/support/scripted_debug.h"
#include "tests/support/temp_folder.h"

namespace {

using KV_1_1::Directory;
using KV_1_1::File;
using KV_1_1::SmartPtr;
using KV_1_1::String;

// Copies nothing and tells a quarter; not every system tells of its own accord.
class ScriptedCopy final : public KV_1_1::testing::InterceptedFiles {
 public:
  ScriptedCopy() : InterceptedFiles(KV_1_1::platform::nativeFiles()) {}
  bool copyFile(KV_1_1::wchar const*, KV_1_1::wchar const*, KV_1_1::platform::CopyProgress progress, void* data,
                KV_1_1::ulong32) override {
    return progress(400, 100, data) == KV_1_1::platform::kProgressContinue;
  }

 protected:
  bool enter(char const*, KV_1_1::wchar const*) override { return true; }
};

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

TEST(SharedLibraryTest, TextsOfErrorsComeThroughTheSeamToo) {
  KV_1_1::testing::ScriptedDebug debug;
  debug.error = 5;
  debug.texts[5] = KVW("Denied.\r\n");
  {
    KV_1_1::platform::ScopedBackend<KV_1_1::platform::DebugApi> const scope(debug);
    EXPECT_TRUE(KV_1_1::getWindowsError() == KVW("Denied."));
  }
  EXPECT_EQ(0, debug.openTexts);
}

class LastFraction final : public IProgress {
 public:
  void setProgress(double fraction) override { value = fraction; }
  double value = -1;
};

class FileCounter final : public KV_1_1::KVFileProgressInterface {
 public:
  void fileCopied() override { ++files; }
  int files = 0;
};

TEST(SharedLibraryTest, TheLibraryCallsObjectsOfTheProgram) {
  KV_1_1::testing::TempFolder folder;
  folder.write("from/a", "12345");
  folder.makeFolder("to");
  SmartPtr<Directory const> const from = Directory::fromString(folder.text(KVW("from")).c_str());
  SmartPtr<Directory const> const to = Directory::fromString(folder.text(KVW("to")).c_str());
  ASSERT_TRUE(from && to);
  FileCounter counter;
  EXPECT_TRUE(from->copyContents(to, true, false, &counter));
  EXPECT_EQ(1, counter.files);

  auto const progress = std::make_shared<LastFraction>();
  SmartPtr<File> const source = File::fromString(*from, KVW("a"));
  ScriptedCopy files;
  KV_1_1::platform::ScopedBackend<KV_1_1::platform::FileApi> const scope(files);
  EXPECT_EQ(File::CopyOk, source->copy(File::fromString(*to, KVW("b")), false, progress));
  EXPECT_EQ(0.25, progress->value);
}

}  // namespace
