// SPDX-License-Identifier: MIT
//
// Copies of files: contents, rights and times, and the sources that are refused.
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/xattr.h>

#include <cstring>
#include <new>
#include <random>

#include "tests/platform/linux/files/file_support.h"
#include "tests/platform/linux/refused_call.h"

namespace KV_1_1 {
namespace testing {
namespace {

namespace fs = std::filesystem;
using namespace KV_1_1::platform;

constexpr std::int64_t kMiB = 1 << 20;
// With a progress callback, a file is copied in slices of this size.
constexpr std::int64_t kSlice = 8 * kMiB;

std::string randomBytes(std::size_t size) {
  std::mt19937_64 random(size);
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i < size; i += 8) {
    auto const number = random();
    std::memcpy(&bytes[i], &number, std::min<std::size_t>(8, size - i));
  }
  return bytes;
}

class LinuxFileCopy : public FileCalls {
 protected:
  // Creates a file of `size` bytes with text at some positions and holes elsewhere.
  void makeSparse(char const* name, std::int64_t size, std::vector<std::int64_t> const& places) const {
    int const descriptor = ::open(folder.path(name).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    ASSERT_GE(descriptor, 0);
    for (std::int64_t const place : places) EXPECT_EQ(pwrite(descriptor, "data", 4, place), 4);
    EXPECT_EQ(ftruncate(descriptor, size), 0);
    EXPECT_EQ(fsync(descriptor), 0);
    close(descriptor);
  }
  std::int64_t allocated(char const* name) const {
    int const descriptor = ::open(folder.path(name).c_str(), O_RDONLY);
    EXPECT_EQ(fsync(descriptor), 0);
    close(descriptor);
    return std::int64_t{status(name).st_blocks} * 512;
  }
};

TEST_F(LinuxFileCopy, EveryByteIsCopiedAndTold) {
  struct Row {
    std::int64_t size;
    std::size_t minCalls;
  };
  Row const rows[] = {{0, 1},          {1, 2},      {4095, 2},       {4096, 2},     {kMiB + 1, 2},
                      {kSlice - 1, 2}, {kSlice, 2}, {kSlice + 1, 3}, {20 * kMiB, 4}};
  for (Row const& row : rows) {
    SCOPED_TRACE(row.size);
    std::string const contents = randomBytes(static_cast<std::size_t>(row.size));
    folder.write("source", contents);
    EXPECT_EQ(copy(KVW("source"), KVW("plain")), kNoError);
    EXPECT_TRUE(bytes("plain") == contents);

    ProgressCalls calls;
    EXPECT_EQ(copy(KVW("source"), KVW("told"), calls), kNoError);
    EXPECT_TRUE(bytes("told") == contents);
    ASSERT_GE(calls.all.size(), row.minCalls);
    if (row.size == 0) {
      EXPECT_EQ(calls.all.size(), 1u);
    }
    EXPECT_EQ(calls.all.front().transferred, 0);
    EXPECT_EQ(calls.all.back().transferred, row.size);
    for (std::size_t i = 0; i < calls.all.size(); ++i) {
      EXPECT_EQ(calls.all[i].total, row.size);
      if (i > 0) {
        EXPECT_GT(calls.all[i].transferred, calls.all[i - 1].transferred);
        EXPECT_LE(calls.all[i].transferred, calls.all[i - 1].transferred + kSlice);
      }
    }
    fs::remove(folder.path("plain"));
    fs::remove(folder.path("told"));
  }
}

// A progress callback that cancels the copy after some calls, by its result or by an exception.
struct Stopper {
  int callsLeft;
  bool throws;

  static ulong32 add(std::int64_t, std::int64_t, void* data) {
    auto& stopper = *static_cast<Stopper*>(data);
    if (stopper.callsLeft-- > 0) return kProgressContinue;
    if (stopper.throws) throw std::bad_alloc();
    return 1;
  }
};

TEST_F(LinuxFileCopy, ACopyThatIsStoppedLeavesNothing) {
  folder.write("source", randomBytes(20 * kMiB));
  for (bool const throws : {false, true}) {
    for (int calls = 0; calls < 4; ++calls) {
      SCOPED_TRACE(calls);
      Stopper stopper = {calls, throws};
      wstring const source = at(KVW("source")), target = at(KVW("copy"));
      auto const copyIt = [&] { return files().copyFile(source.c_str(), target.c_str(), &Stopper::add, &stopper, 0); };
      std::size_t const before = openDescriptors();
      if (throws) {
        EXPECT_THROW(copyIt(), std::bad_alloc);
      } else {
        EXPECT_EQ(errorOf(copyIt), kRequestAborted);
      }
      EXPECT_EQ(openDescriptors(), before);
      EXPECT_FALSE(has("copy"));
    }
  }
}

TEST_F(LinuxFileCopy, ACopyReplacesALongerFile) {
  folder.write("short", "new");
  folder.write("empty");
  for (char const* source : {"short", "empty"}) {
    folder.write("target", randomBytes(3 * kMiB));
    EXPECT_EQ(copy(widen(source), KVW("target"), kCopyFailIfExists), kFileExists);
    EXPECT_EQ(status("target").st_size, 3 * kMiB);
    EXPECT_EQ(copy(widen(source), KVW("target")), kNoError);
    EXPECT_EQ(bytes("target"), bytes(source));
  }
}

TEST_F(LinuxFileCopy, RightsAndTimeGoWithTheContents) {
  folder.write("source", "12345");
  timespec const times[] = {{1100000000, 7}, {1000000000, 123456789}};
  for (unsigned const rights : {0644u, 0600u, 0755u, 0777u, 0444u, 0464u}) {
    SCOPED_TRACE(rights);
    folder.write("old", "a longer old text");
    ASSERT_EQ(chmod(folder.path("source").c_str(), rights), 0);
    ASSERT_EQ(utimensat(AT_FDCWD, folder.path("source").c_str(), times, 0), 0);
    inChild([&] {
      umask(0077);
      EXPECT_EQ(copy(KVW("source"), KVW("new")), kNoError);
      EXPECT_EQ(copy(KVW("source"), KVW("old")), kNoError);
    });
    for (char const* name : {"new", "old"}) {
      EXPECT_EQ(mode(name), rights) << name;
      EXPECT_EQ(bytes(name), "12345") << name;
      EXPECT_EQ(status(name).st_mtim.tv_sec, times[1].tv_sec) << name;
      EXPECT_EQ(status(name).st_mtim.tv_nsec, times[1].tv_nsec) << name;
      fs::remove(folder.path(name));
    }
  }
}

// A folder can withhold rights from the files made in it whatever the mask of the process says.
TEST_F(LinuxFileCopy, RightsGoWithTheContentsWhateverTheFolderWithholds) {
  struct Entry {
    std::uint16_t tag, rights;
    std::uint32_t id;
  };
  struct {
    std::uint32_t version;
    Entry owner, group, others;
  } const ownerAlone = {2, {0x01, 6, ~0u}, {0x04, 0, ~0u}, {0x20, 0, ~0u}};
  folder.write("source", "12345");
  folder.makeFolder("dir");
  bool const isWithheld =
      setxattr(folder.path("dir").c_str(), "system.posix_acl_default", &ownerAlone, sizeof ownerAlone, 0) == 0;
  KVBASE_SKIP_UNLESS(isWithheld, "a file system for temporary files with lists of access");
  folder.write("dir/made");
  ASSERT_EQ(mode("dir/made"), 0600u);
  for (unsigned const rights : {0644u, 0755u, 0600u, 0444u}) {
    ASSERT_EQ(chmod(folder.path("source").c_str(), rights), 0);
    EXPECT_EQ(copy(KVW("source"), KVW("dir\\copy")), kNoError);
    EXPECT_EQ(mode("dir/copy"), rights);
    fs::remove(folder.path("dir/copy"));
  }
}

TEST_F(LinuxFileCopy, ANewFileWhoseRightsAreNotToldDoesNotStay) {
  folder.write("source", "12345");
  folder.write("old", "kept");
  bool const permitted = inChildIfPermitted([&] {
    if (!refuseCall(SYS_statx, EACCES)) return false;
    EXPECT_EQ(copy(KVW("source"), KVW("new")), kAccessDenied);
    EXPECT_EQ(copy(KVW("source"), KVW("old"), kCopyFailIfExists), kFileExists);
    return true;
  });
  KVBASE_SKIP_UNLESS(permitted, "a kernel that takes a filter of system calls");
  EXPECT_FALSE(has("new"));
  EXPECT_EQ(bytes("source"), "12345");
  EXPECT_EQ(bytes("old"), "kept");
}

TEST_F(LinuxFileCopy, HolesStayHoles) {
  struct Row {
    char const* name;
    std::int64_t size;
    std::vector<std::int64_t> places;
  };
  Row const rows[] = {
      {"at the start", 5 * kMiB, {5 * kMiB - 4}},
      {"in the middle", 5 * kMiB, {0, 5 * kMiB - 4}},
      {"at the end", 5 * kMiB, {0}},
      {"at both ends", 5 * kMiB, {2 * kMiB}},
      {"around the slices", 3 * kSlice, {kSlice - 2, 2 * kSlice}},
      {"nothing else", 5 * kMiB, {}},
      {"more than 32 bits", 5 * 1024 * kMiB, {1, 5 * 1024 * kMiB - 4}},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    makeSparse("source", row.size, row.places);
    KVBASE_SKIP_UNLESS(allocated("source") <= kMiB, "a file system for temporary files whose files can have holes");
    folder.write("longer", std::string(kMiB, 'x'));
    ProgressCalls calls;
    EXPECT_EQ(copy(KVW("source"), KVW("plain")), kNoError);
    EXPECT_EQ(copy(KVW("source"), KVW("told"), calls), kNoError);
    EXPECT_EQ(copy(KVW("source"), KVW("longer")), kNoError);
    ASSERT_FALSE(calls.all.empty());
    EXPECT_EQ(calls.all.front().transferred, 0);
    EXPECT_EQ(calls.all.back().transferred, row.size);
    EXPECT_EQ(calls.all.back().total, row.size);
    bool const isSmall = row.size <= 3 * kSlice;
    std::string const contents = isSmall ? bytes("source") : std::string();
    for (char const* name : {"plain", "told", "longer"}) {
      SCOPED_TRACE(name);
      EXPECT_EQ(status(name).st_size, row.size);
      EXPECT_LE(allocated(name), allocated("source"));
      if (isSmall) {
        EXPECT_TRUE(bytes(name) == contents);
      } else {
        std::ifstream file(folder.path(name), std::ios::binary);
        char end[4] = {};
        file.seekg(row.size - 4).read(end, 4);
        EXPECT_EQ(std::string(end, 4), "data");
      }
      fs::remove(folder.path(name));
    }
  }
}

// A file system may tell where data begin but not where they end, or neither.
TEST_F(LinuxFileCopy, HolesThatAreNotToldAreCopied) {
  makeSparse("source", kMiB, {2, kMiB / 2});
  for (int const firstRefused : {SEEK_DATA, SEEK_HOLE}) {
    bool const permitted = inChildIfPermitted([&] {
      if (!refuseCall(SYS_lseek, EINVAL, static_cast<unsigned>(firstRefused))) return false;
      EXPECT_EQ(copy(KVW("source"), KVW("copy")), kNoError);
      return true;
    });
    KVBASE_SKIP_UNLESS(permitted, "a kernel that takes a filter of system calls");
    EXPECT_TRUE(bytes("copy") == bytes("source")) << firstRefused;
    fs::remove(folder.path("copy"));
  }
}

TEST_F(LinuxFileCopy, AFileIsNotCopiedOntoItself) {
  folder.write("file", "kept");
  ASSERT_EQ(::link(folder.path("file").c_str(), folder.path("twin").c_str()), 0);
  EXPECT_EQ(copy(KVW("file"), KVW("file")), kSharingViolation);
  EXPECT_EQ(copy(KVW("file"), KVW("none\\..\\file")), kSharingViolation);
  EXPECT_EQ(copy(KVW("file"), KVW("twin")), kSharingViolation);
  EXPECT_EQ(copy(KVW("twin"), KVW("file")), kSharingViolation);
  ProgressCalls calls;
  EXPECT_EQ(copy(KVW("file"), KVW("twin"), calls), kSharingViolation);
  EXPECT_EQ(bytes("file"), "kept");
  EXPECT_EQ(status("twin").st_nlink, 2u);
}

TEST_F(LinuxFileCopy, WhatIsInTheWayIsLeftAlone) {
  folder.write("file", "new");
  folder.write("locked", "kept");
  folder.makeFolder("dir");
  ASSERT_EQ(chmod(folder.path("locked").c_str(), 0444), 0);
  EXPECT_EQ(copy(KVW("file"), KVW("locked")), kAccessDenied);
  EXPECT_EQ(copy(KVW("file"), KVW("dir")), kAccessDenied);
  EXPECT_EQ(copy(KVW("dir"), KVW("copy")), kAccessDenied);
  EXPECT_EQ(copy(KVW("dir\\"), KVW("copy")), kAccessDenied);
  EXPECT_EQ(bytes("locked"), "kept");
  EXPECT_FALSE(has("copy"));
  ASSERT_EQ(mkfifo(folder.path("fifo").c_str(), 0644), 0);
  inChild([&] { EXPECT_NE(copy(KVW("file"), KVW("fifo")), kNoError); });
  EXPECT_TRUE(S_ISFIFO(status("fifo").st_mode));
}

TEST_F(LinuxFileCopy, WhatIsNeitherFileNorLinkIsRefused) {
  ASSERT_EQ(mkfifo(folder.path("fifo").c_str(), 0644), 0);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::string const path = folder.path("socket").string();
  ASSERT_LT(path.size(), sizeof address.sun_path);
  path.copy(address.sun_path, path.size());
  int const listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  close(listener);
  link("fifo", "toFifo");
  folder.write("old", "kept");
  struct Row {
    char const* name;
    wchar const* source;
  };
  Row const rows[] = {
      {"pipe", KVW("fifo")},        {"link to a pipe", KVW("toFifo")}, {"socket", KVW("socket")},
      {"zero", KVW("\\dev\\zero")}, {"nothing", KVW("\\dev\\null")},   {"terminal", KVW("\\dev\\tty")},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    inChild([&] {
      // One of these is endless, and a fault must not fill the disk.
      rlimit const limit = {kMiB, kMiB};
      EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
      EXPECT_EQ(copy(row.source, KVW("copy")), kAccessDenied);
      EXPECT_EQ(copy(row.source, KVW("old")), kAccessDenied);
    });
    EXPECT_FALSE(has("copy"));
    EXPECT_EQ(bytes("old"), "kept");
  }
}

TEST_F(LinuxFileCopy, AFileWhoseSizeIsNotToldIsCopiedWhole) {
  for (char const* name : {"/proc/version", "/proc/filesystems", "/sys/devices/system/cpu/possible"}) {
    SCOPED_TRACE(name);
    if (!fs::exists(name)) continue;
    std::string const contents = bytesOf(name);
    ASSERT_FALSE(contents.empty());
    wstring source = widen(name);
    std::replace(source.begin(), source.end(), KVW('/'), KVW('\\'));
    ProgressCalls calls;
    EXPECT_EQ(copy(source, KVW("plain")), kNoError);
    EXPECT_EQ(copy(source, KVW("told"), calls), kNoError);
    EXPECT_EQ(bytes("plain"), contents);
    EXPECT_EQ(bytes("told"), contents);
    EXPECT_FALSE(calls.all.empty());
    fs::remove(folder.path("plain"));
    fs::remove(folder.path("told"));
  }
}

TEST_F(LinuxFileCopy, ACopyIsItsOwnFile) {
  folder.write("source", "before");
  EXPECT_EQ(copy(KVW("source"), KVW("copy")), kNoError);
  folder.write("source", "after!");
  EXPECT_EQ(bytes("copy"), "before");
  EXPECT_EQ(copy(KVW("source"), KVW("none\\copy")), kPathNotFound);
  EXPECT_EQ(copy(KVW("none"), KVW("copy")), kFileNotFound);
  EXPECT_EQ(bytes("copy"), "before") << "a missing source leaves the target alone";
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
