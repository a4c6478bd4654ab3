// SPDX-License-Identifier: MIT
//
// Open files, times and status records.
#include <limits>
#include <utility>

#include "tests/platform/linux/files/file_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

namespace fs = std::filesystem;
using namespace KV_1_1::platform;

constexpr std::int64_t kUnitsPerSecond = 10000000;
constexpr std::int64_t kUnitsBefore1970 = 11644473600 * kUnitsPerSecond;
constexpr ulong32 kAccesses[] = {0, kAccessRead, kAccessWrite, kAccessRead | kAccessWrite};

class LinuxOpenFiles : public FileCalls {};

TEST_F(LinuxOpenFiles, AReadOnlyFileIsNotOpenedToWriteWhoeverAsks) {
  folder.write("file", "kept");
  for (unsigned const readOnly : {0444u, 0000u, 0466u}) {
    ASSERT_EQ(chmod(folder.path("file").c_str(), readOnly), 0);
    EXPECT_EQ(open(KVW("file"), kAccessWrite), kAccessDenied) << readOnly;
    EXPECT_EQ(open(KVW("file"), kAccessRead | kAccessWrite), kAccessDenied) << readOnly;
    EXPECT_EQ(open(KVW("file"), kAccessWrite, kOpenAlways), kAccessDenied) << readOnly;
    EXPECT_EQ(open(KVW("file"), 0), kNoError) << readOnly;
  }
  ASSERT_EQ(chmod(folder.path("file").c_str(), 0444), 0);
  EXPECT_EQ(open(KVW("file"), kAccessRead), kNoError);
  EXPECT_EQ(open(KVW("file"), kAccessRead, kOpenAlways), kAlreadyExists);
  EXPECT_EQ(bytes("file"), "kept");
}

TEST_F(LinuxOpenFiles, DirectoriesAreOpenedWithTheirFlag) {
  folder.makeFolder("dir");
  for (ulong32 const access : kAccesses) {
    EXPECT_EQ(open(KVW("dir"), access), kAccessDenied) << access;
    EXPECT_EQ(open(KVW("dir\\"), access), kAccessDenied) << access;
    EXPECT_EQ(open(KVW("dir"), access, kOpenExisting, kFlagBackupSemantics), kNoError) << access;
    EXPECT_EQ(open(KVW("dir\\"), access, kOpenExisting, kFlagBackupSemantics), kNoError) << access;
  }
  EXPECT_EQ(open(KVW("dir"), kAccessWrite, kOpenAlways), kAccessDenied);
}

TEST_F(LinuxOpenFiles, ADirectoryIsOpenedAsItsRightsAllow) {
  std::pair<char const*, mode_t> const directories[] = {{"readable", 0555}, {"writable", 0333}, {"closed", 0000}};
  for (auto const& [name, mode] : directories) {
    folder.makeFolder(name);
    ASSERT_EQ(chmod(folder.path(name).c_str(), mode), 0);
  }
  auto const openDirectory = [this](wchar const* name, ulong32 access) {
    return open(name, access, kOpenExisting, kFlagBackupSemantics);
  };
  inChild([&] {
    dropRights();
    EXPECT_EQ(openDirectory(KVW("readable"), kAccessRead), kNoError);
    EXPECT_EQ(openDirectory(KVW("readable"), kAccessWrite), kAccessDenied);
    EXPECT_EQ(openDirectory(KVW("writable"), kAccessWrite), kNoError);
    EXPECT_EQ(openDirectory(KVW("writable"), kAccessRead | kAccessWrite), kAccessDenied);
    EXPECT_EQ(openDirectory(KVW("closed"), kAccessRead), kAccessDenied);
    EXPECT_EQ(openDirectory(KVW("closed"), 0), kNoError);
  });
  for (auto const& each : directories) chmod(folder.path(each.first).c_str(), 0755);
}

TEST_F(LinuxOpenFiles, AFileMadeHasTheRightsThatTheProcessGives) {
  inChild([&] {
    umask(027);
    EXPECT_EQ(open(KVW("made"), kAccessWrite, kOpenAlways), kNoError);
    EXPECT_EQ(mode("made"), 0640u);
  });
}

TEST_F(LinuxOpenFiles, AFileThatIsThereKeepsItsContents) {
  folder.write("file", "kept");
  struct stat const before = status("file");
  EXPECT_EQ(open(KVW("file"), kAccessWrite, kOpenAlways), kAlreadyExists);
  EXPECT_EQ(bytes("file"), "kept");
  EXPECT_EQ(status("file").st_mtim.tv_nsec, before.st_mtim.tv_nsec);
}

TEST_F(LinuxOpenFiles, APipeDoesNotBlock) {
  ASSERT_EQ(mkfifo(folder.path("fifo").c_str(), 0644), 0);
  inChild([&] {
    for (ulong32 const access : kAccesses) {
      open(KVW("fifo"), access);
      open(KVW("fifo"), access, kOpenAlways);
    }
    EXPECT_EQ(files().isDirectoryEmpty(at(KVW("fifo")).c_str()), 0);
  });
  EXPECT_TRUE(S_ISFIFO(status("fifo").st_mode));
}

// Descriptor 0 must not become a null handle.
TEST_F(LinuxOpenFiles, TheFirstDescriptorIsAFileToo) {
  folder.write("file", "1");
  inChild([&] {
    close(STDIN_FILENO);
    EXPECT_EQ(open(KVW("file"), kAccessRead), kNoError);
    EXPECT_EQ(copy(KVW("file"), KVW("copy")), kNoError);
    EXPECT_EQ(bytes("copy"), "1");
  });
}

TEST_F(LinuxOpenFiles, AnOpenFileIsNotInherited) {
  folder.write("file");
  std::size_t const count = inheritedDescriptors();
  FileHandle const file = files().openFile(at(KVW("file")).c_str(), kAccessWrite, 0, kOpenExisting, 0);
  int const descriptor = files().openDescriptor(at(KVW("file")).c_str(), kDescriptorReadWrite, kDescriptorShareAll, 0);
  EXPECT_EQ(inheritedDescriptors(), count);
  EXPECT_TRUE(files().closeFile(file));
  EXPECT_EQ(files().closeDescriptor(descriptor), 0);
}

TEST_F(LinuxOpenFiles, OnlyTheTimeOfTheLastWriteIsSet) {
  folder.write("file", "kept");
  struct Row {
    char const* name;
    std::int64_t seconds;
    long units;
  };
  Row const rows[] = {{"2001", 1000000000, 1234567},
                      {"now", 0, 0},
                      {"a unit before 1970", -1, kUnitsPerSecond - 1},
                      {"1950", -631152000, 1},
                      {"2035", 2051222400, 9}};
  FileInfo before;
  ASSERT_TRUE(files().getInfo(at(KVW("file")).c_str(), before));
  timespec const accessed = status("file").st_atim;
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    bool const isNow = row.seconds == 0;
    std::uint64_t const time =
        isNow ? files().systemTime()
              : static_cast<std::uint64_t>(kUnitsBefore1970 + row.seconds * kUnitsPerSecond + row.units);
    FileHandle const file = files().openFile(at(KVW("file")).c_str(), kAccessWrite, 0, kOpenExisting, 0);
    ASSERT_NE(file, invalidFile());
    EXPECT_TRUE(files().setLastWriteTime(file, time));
    EXPECT_TRUE(files().closeFile(file));
    FileInfo info;
    ASSERT_TRUE(files().getInfo(at(KVW("file")).c_str(), info));
    EXPECT_EQ(info.lastWriteTime, time);
    struct stat const now = status("file");
    if (!isNow) {
      EXPECT_EQ(now.st_mtim.tv_sec, row.seconds);
      EXPECT_EQ(now.st_mtim.tv_nsec, row.units * 100);
    }
    EXPECT_EQ(now.st_atim.tv_sec, accessed.tv_sec);
    EXPECT_EQ(now.st_atim.tv_nsec, accessed.tv_nsec);
  }
}

TEST_F(LinuxOpenFiles, TheCreationTimeIsTheBirthOrTheOldestOfTheOthers) {
  folder.write("file");
  timespec const times[] = {{1000000000, 0}, {1000000000, 123456789}};
  ASSERT_EQ(utimensat(AT_FDCWD, folder.path("file").c_str(), times, 0), 0);
  FileInfo info;
  ASSERT_TRUE(files().getInfo(at(KVW("file")).c_str(), info));
  EXPECT_EQ(info.lastWriteTime, std::uint64_t{kUnitsBefore1970} + 1000000000 * kUnitsPerSecond + 1234567);
  struct statx found;
  ASSERT_EQ(statx(AT_FDCWD, folder.path("file").c_str(), 0, STATX_BTIME | STATX_BASIC_STATS, &found), 0);
  bool const hasBirth = (found.stx_mask & STATX_BTIME) != 0;
  std::int64_t const seconds = hasBirth ? found.stx_btime.tv_sec : 1000000000;
  std::int64_t const nanoseconds = hasBirth ? found.stx_btime.tv_nsec : 123456789;
  EXPECT_EQ(info.creationTime,
            static_cast<std::uint64_t>(kUnitsBefore1970 + seconds * kUnitsPerSecond + nanoseconds / 100));
}

// A file of /proc has no creation time.
TEST_F(LinuxOpenFiles, WithoutBirthTheOlderOfWriteAndChangeStandsForIt) {
  FileInfo info;
  ASSERT_TRUE(files().getInfo(KVW("\\proc\\version"), info));
  struct statx found;
  ASSERT_EQ(statx(AT_FDCWD, "/proc/version", 0, STATX_BTIME | STATX_BASIC_STATS, &found), 0);
  ASSERT_EQ(found.stx_mask & STATX_BTIME, 0u);
  EXPECT_NE(info.creationTime, 0u);
  EXPECT_LE(info.creationTime, info.lastWriteTime);
}

TEST_F(LinuxOpenFiles, AStatusHasTheBitsOfTheSystem) {
  folder.write("file", "12345");
  folder.makeFolder("dir");
  ASSERT_EQ(chmod(folder.path("file").c_str(), 0640), 0);
  timespec const times[] = {{1000000000, 1}, {1100000000, 1}};
  ASSERT_EQ(utimensat(AT_FDCWD, folder.path("file").c_str(), times, 0), 0);
  struct _stat64i32 found;
  ASSERT_EQ(files().getStatus(at(KVW("file")).c_str(), found), 0);
  EXPECT_EQ(found.st_mode, 0100640);
  EXPECT_EQ(found.st_size, 5);
  EXPECT_EQ(found.st_atime, 1000000000);
  EXPECT_EQ(found.st_mtime, 1100000000);
  EXPECT_EQ(found.st_nlink, 1);
  EXPECT_EQ(found.st_ino, 0);
  ASSERT_EQ(files().getStatus(at(KVW("dir")).c_str(), found), 0);
  EXPECT_EQ(found.st_mode & S_IFMT, S_IFDIR + 0u);
}

TEST_F(LinuxOpenFiles, AFileOf2GBHasNoStatus) {
  folder.write("file");
  struct Row {
    std::int64_t size;
    bool fits;
  };
  std::int64_t const limit = std::numeric_limits<std::int32_t>::max();
  for (Row const& row : {Row{limit, true}, Row{limit + 1, false}, Row{(std::int64_t{1} << 32) + 5, false}}) {
    SCOPED_TRACE(row.size);
    ASSERT_EQ(truncate(folder.path("file").c_str(), row.size), 0);
    struct _stat64i32 found = {};
    found.st_size = -7;
    EXPECT_EQ(files().getStatus(at(KVW("file")).c_str(), found) == 0, row.fits);
    EXPECT_EQ(found.st_size, row.fits ? row.size : -7);
  }
}

TEST_F(LinuxOpenFiles, QuestionsLeaveNothingOpen) {
  folder.write("full/file");
  folder.makeFolder("empty");
  std::size_t const before = openDescriptors();
  for (wchar const* name : {KVW("full"), KVW("empty"), KVW("full\\file"), KVW("none"), KVW("a|b")}) {
    FileInfo info;
    struct _stat64i32 found;
    files().isDirectoryEmpty(at(name).c_str());
    files().getStatus(at(name).c_str(), found);
    files().getInfo(at(name).c_str(), info);
    attributes(name);
    EXPECT_EQ(openDescriptors(), before) << narrow(name);
  }
}

// These stand for calls of the C runtime, which has an error number of its own.
TEST_F(LinuxOpenFiles, TheRuntimeLeavesNoLastError) {
  folder.write("file");
  nativeErrors().setLastError(kUntouched);
  struct _stat64i32 found;
  for (wchar const* name : {KVW("file"), KVW("none"), KVW("none\\x"), KVW("a<b"), KVW("Q:\\x")}) {
    files().getStatus(at(name).c_str(), found);
    int const descriptor = files().openDescriptor(at(name).c_str(), kDescriptorReadWrite, kDescriptorShareAll, 0);
    EXPECT_EQ(descriptor >= 0, wstring(name) == KVW("file")) << narrow(name);
    if (descriptor < 0) continue;
    EXPECT_EQ(files().commitDescriptor(descriptor), 0);
    EXPECT_EQ(files().closeDescriptor(descriptor), 0);
  }
  EXPECT_EQ(nativeErrors().lastError(), kUntouched);
  EXPECT_FALSE(has("none"));
}

TEST_F(LinuxOpenFiles, ADescriptorOfAPipeDoesNotBlock) {
  ASSERT_EQ(mkfifo(folder.path("fifo").c_str(), 0644), 0);
  inChild([&] {
    constexpr int kReadOnly = 0;
    for (int const flags : {kReadOnly, kDescriptorReadWrite}) {
      int const descriptor = files().openDescriptor(at(KVW("fifo")).c_str(), flags, kDescriptorShareAll, 0);
      if (descriptor >= 0) files().closeDescriptor(descriptor);
    }
  });
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
