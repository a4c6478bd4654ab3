// SPDX-License-Identifier: MIT
//
// The rule for links in calls that change something: a link that leads to a directory or to nothing is changed itself,
// and nothing is ever written or removed where it leads.
#include "tests/platform/linux/files/file_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

namespace fs = std::filesystem;
using namespace KV_1_1::platform;

class LinuxFileLinks : public FileCalls {
 protected:
  void SetUp() override {
    folder.write("dir/inside", "inside");
    folder.write("file", "file");
    folder.write("locked", "locked");
    ASSERT_EQ(chmod(folder.path("locked").c_str(), 0444), 0);
    link("dir", "toDir");
    link("file", "toFile");
    link("locked", "toLocked");
    link("nothing", "toNothing");
  }
  // No call may have changed these targets.
  void TearDown() override {
    EXPECT_EQ(bytes("dir/inside"), "inside");
    EXPECT_EQ(bytes("file"), "file");
    EXPECT_EQ(bytes("locked"), "locked");
    EXPECT_EQ(mode("locked"), 0444u);
    EXPECT_FALSE(has("nothing")) << "made behind a link";
  }
};

TEST_F(LinuxFileLinks, DeletingALinkLeavesItsTarget) {
  for (char const* name : {"toDir", "toFile", "toLocked", "toNothing"}) {
    EXPECT_EQ(remove(widen(name)), kNoError) << name;
    EXPECT_FALSE(has(name)) << name;
  }
}

TEST_F(LinuxFileLinks, ASeparatorDeletesNothing) {
  for (char const* name : {"toDir", "toFile", "toNothing"}) {
    EXPECT_NE(remove(widen(name) + KVW("\\")), kNoError) << name;
    EXPECT_TRUE(has(name)) << name;
  }
}

TEST_F(LinuxFileLinks, RemovingALinkToADirectoryLeavesTheDirectory) {
  for (wchar const* name : {KVW("copy"), KVW("copy\\")}) {
    for (char const* target : {"dir", "toDir"}) {
      link(target, "copy");
      EXPECT_EQ(removeDirectory(name), kNoError) << narrow(name) << " to " << target;
      EXPECT_FALSE(has("copy"));
      EXPECT_EQ(linkText("toDir"), "dir");
    }
  }
  EXPECT_EQ(removeDirectory(KVW("toFile")), kDirectoryNameInvalid);
  EXPECT_NE(removeDirectory(KVW("toFile\\")), kNoError);
  EXPECT_TRUE(has("toFile"));
}

TEST_F(LinuxFileLinks, ADirectoryIsRemovedThroughALinkAboveIt) {
  folder.makeFolder("dir/empty");
  EXPECT_EQ(removeDirectory(KVW("toDir\\empty")), kNoError);
  EXPECT_FALSE(has("dir/empty"));
}

TEST_F(LinuxFileLinks, ALinkIsMovedItself) {
  folder.makeFolder("sub");
  for (char const* name : {"toDir", "toFile", "toLocked", "toNothing"}) {
    std::string const text = linkText(name);
    EXPECT_EQ(move(widen(name), KVW("sub\\") + widen(name)), kNoError) << name;
    EXPECT_FALSE(has(name)) << name;
    EXPECT_EQ(linkText(fs::path("sub") / name), text) << name;
  }
}

TEST_F(LinuxFileLinks, NothingIsMovedOntoALink) {
  folder.write("other", "other");
  folder.makeFolder("folder");
  for (char const* name : {"toDir", "toFile", "toNothing"}) {
    EXPECT_EQ(move(KVW("other"), widen(name)), kAlreadyExists) << name;
    EXPECT_EQ(move(KVW("folder"), widen(name)), kAlreadyExists) << name;
    EXPECT_EQ(move(KVW("toLocked"), widen(name)), kAlreadyExists) << name;
    EXPECT_NE(linkText(name), "") << name;
  }
  EXPECT_EQ(bytes("other"), "other");
}

TEST_F(LinuxFileLinks, AFileMovedOntoALinkToItselfStays) {
  move(KVW("file"), KVW("toFile"));
  move(KVW("toFile"), KVW("file"));
  EXPECT_EQ(linkText("toFile"), "file");
  EXPECT_TRUE(S_ISREG(status("file").st_mode));
}

TEST_F(LinuxFileLinks, ALinkToADirectoryOrToNothingIsCopiedAsALink) {
  folder.makeFolder("sub");
  link(folder.path("dir"), "absolute");
  for (char const* name : {"toDir", "toNothing", "absolute"}) {
    EXPECT_EQ(copy(widen(name), KVW("sub\\") + widen(name), kCopyFailIfExists), kNoError) << name;
    EXPECT_EQ(linkText(fs::path("sub") / name), linkText(name)) << "the text of the link, as it stands";
  }
}

TEST_F(LinuxFileLinks, ALinkToAFileIsCopiedAsTheFile) {
  EXPECT_EQ(copy(KVW("toLocked"), KVW("copy"), kCopyFailIfExists), kNoError);
  EXPECT_TRUE(S_ISREG(status("copy").st_mode));
  EXPECT_EQ(bytes("copy"), "locked");
  EXPECT_EQ(mode("copy"), 0444u);
}

TEST_F(LinuxFileLinks, ACopiedLinkCallsTheProgress) {
  for (char const* name : {"toDir", "toNothing"}) {
    ProgressCalls calls;
    EXPECT_EQ(copy(widen(name), KVW("copy"), calls), kNoError) << name;
    ASSERT_FALSE(calls.all.empty()) << name;
    EXPECT_EQ(calls.all.back().transferred, calls.all.back().total) << name;
  }
}

TEST_F(LinuxFileLinks, ACopiedLinkReplacesALinkToADirectoryOrToNothing) {
  for (char const* source : {"toDir", "toNothing"}) {
    for (char const* old : {"../elsewhere", "dir", "nothing2"}) {
      SCOPED_TRACE(source);
      SCOPED_TRACE(old);
      fs::remove(folder.path("copy"));
      link(old, "copy");
      EXPECT_EQ(copy(widen(source), KVW("copy"), kCopyFailIfExists), kFileExists);
      EXPECT_EQ(linkText("copy"), old);
      EXPECT_EQ(copy(widen(source), KVW("copy")), kNoError);
      EXPECT_EQ(linkText("copy"), linkText(source));
      EXPECT_FALSE(has("nothing2"));
    }
  }
}

TEST_F(LinuxFileLinks, ACopiedLinkReplacesAFile) {
  folder.write("old", "old");
  EXPECT_EQ(copy(KVW("toDir"), KVW("old"), kCopyFailIfExists), kFileExists);
  EXPECT_EQ(bytes("old"), "old");
  EXPECT_EQ(copy(KVW("toDir"), KVW("old")), kNoError);
  EXPECT_EQ(linkText("old"), "dir");
}

TEST_F(LinuxFileLinks, ACopiedLinkSparesWhatACopiedFileDoes) {
  folder.makeFolder("empty");
  for (char const* source : {"toDir", "toNothing"}) {
    EXPECT_EQ(copy(widen(source), KVW("locked")), kAccessDenied) << source;
    EXPECT_EQ(copy(widen(source), KVW("empty")), kAccessDenied) << source;
    EXPECT_EQ(copy(widen(source), widen(source)), kSharingViolation) << source;
    EXPECT_NE(linkText(source), "");
  }
  EXPECT_TRUE(fs::is_directory(folder.path("empty")));
}

TEST_F(LinuxFileLinks, AFileIsNeverWrittenBehindALinkThatLeadsToNoFile) {
  for (char const* old : {"nothing", "dir", "none/below", "copy"}) {
    SCOPED_TRACE(old);
    fs::remove(folder.path("copy"));
    link(old, "copy");
    EXPECT_EQ(copy(KVW("file"), KVW("copy"), kCopyFailIfExists), kFileExists);
    EXPECT_EQ(linkText("copy"), old);
    ulong32 const result = copy(KVW("file"), KVW("copy"));
    if (result == kNoError) {
      EXPECT_TRUE(S_ISREG(status("copy").st_mode));
      EXPECT_EQ(bytes("copy"), "file");
    } else {
      EXPECT_EQ(linkText("copy"), old) << "refused, so left alone";
    }
    EXPECT_FALSE(has("nothing"));
    EXPECT_FALSE(has("dir/file"));
  }
}

TEST_F(LinuxFileLinks, ACopyOntoALinkToAFileIsOneOntoTheFile) {
  folder.write("old", "a longer text than the new one");
  link("old", "toOld");
  EXPECT_EQ(copy(KVW("file"), KVW("toOld"), kCopyFailIfExists), kFileExists);
  EXPECT_EQ(copy(KVW("file"), KVW("toOld")), kNoError);
  EXPECT_EQ(bytes("old"), "file");
  EXPECT_EQ(linkText("toOld"), "old");
  EXPECT_EQ(copy(KVW("file"), KVW("toLocked")), kAccessDenied);
}

TEST_F(LinuxFileLinks, TheSameFileByALinkIsNotCopied) {
  link("toFile", "twice");
  folder.write("dir/own", "own");
  for (char const* name : {"toFile", "twice"}) {
    EXPECT_EQ(copy(KVW("file"), widen(name)), kSharingViolation) << name;
    EXPECT_EQ(copy(widen(name), KVW("file")), kSharingViolation) << name;
  }
  EXPECT_EQ(copy(KVW("toFile"), KVW("twice")), kSharingViolation);
  EXPECT_EQ(copy(KVW("dir\\own"), KVW("toDir\\own")), kSharingViolation);
  EXPECT_EQ(bytes("dir/own"), "own");
}

TEST_F(LinuxFileLinks, OpeningALinkToNothingMakesNothing) {
  for (ulong32 const access : {kAccessRead, kAccessWrite, kAccessRead | kAccessWrite}) {
    FileHandle const file = files().openFile(at(KVW("toNothing")).c_str(), access, 0, kOpenAlways, 0);
    EXPECT_EQ(file, invalidFile());
    EXPECT_EQ(open(KVW("toNothing"), access), kNoError) << "the link itself, which is there";
    EXPECT_NE(open(KVW("toNothing\\"), access), kNoError);
  }
  EXPECT_EQ(linkText("toNothing"), "nothing");
}

TEST_F(LinuxFileLinks, OpeningALinkToAFileOpensTheFile) {
  EXPECT_EQ(open(KVW("toFile"), kAccessWrite), kNoError);
  EXPECT_EQ(open(KVW("toFile"), kAccessWrite, kOpenAlways), kAlreadyExists);
  EXPECT_EQ(open(KVW("toLocked"), kAccessWrite), kAccessDenied);
  EXPECT_EQ(open(KVW("toLocked"), kAccessRead), kNoError);
  EXPECT_EQ(open(KVW("toDir\\"), kAccessRead, kOpenExisting, kFlagBackupSemantics), kNoError);
  EXPECT_EQ(open(KVW("toDir\\"), kAccessRead), kAccessDenied);
}

TEST_F(LinuxFileLinks, EmptinessIsThatOfTheDirectoryBehindASeparator) {
  folder.makeFolder("empty");
  folder.makeFolder("onlyLink");
  link("empty", "toEmpty");
  link("nothing", "onlyLink/toNothing");
  EXPECT_EQ(files().isDirectoryEmpty(at(KVW("toEmpty\\")).c_str()), 1);
  EXPECT_EQ(files().isDirectoryEmpty(at(KVW("toDir\\")).c_str()), 0);
  EXPECT_EQ(files().isDirectoryEmpty(at(KVW("toNothing\\")).c_str()), 0);
  EXPECT_EQ(files().isDirectoryEmpty(at(KVW("toFile\\")).c_str()), 0);
  EXPECT_EQ(files().isDirectoryEmpty(at(KVW("onlyLink")).c_str()), 0);
}

TEST_F(LinuxFileLinks, TheStatusIsThatBehindEachLink) {
  struct _stat64i32 found;
  ASSERT_EQ(files().getStatus(at(KVW("toDir")).c_str(), found), 0);
  EXPECT_EQ(found.st_mode & S_IFMT, S_IFDIR + 0u);
  ASSERT_EQ(files().getStatus(at(KVW("toFile")).c_str(), found), 0);
  EXPECT_EQ(found.st_mode & S_IFMT, S_IFREG + 0u);
  EXPECT_EQ(found.st_size, 4);
  found.st_size = 77;
  EXPECT_NE(files().getStatus(at(KVW("toNothing")).c_str(), found), 0);
  EXPECT_EQ(found.st_size, 77);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
