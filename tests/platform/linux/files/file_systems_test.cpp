// SPDX-License-Identifier: MIT
//
// Full disks, and work between file systems.
#include <sys/resource.h>

#include "tests/platform/linux/files/file_support.h"

namespace KV_1_1 {
namespace testing {
namespace {

namespace fs = std::filesystem;
using namespace KV_1_1::platform;

constexpr std::size_t kMebibyte = 1 << 20;

class LinuxFullDisk : public FileCalls {
 protected:
  // Copies `source` to names below "mount" in each way and checks that no partial target remains.
  void expectNoRoomFor(wstring const& source, ulong32 code) const {
    folder.write("mount/old", "old");
    ProgressCalls calls;
    EXPECT_EQ(copy(source, KVW("mount\\plain")), code);
    EXPECT_EQ(copy(source, KVW("mount\\told"), calls), code);
    EXPECT_EQ(copy(source, KVW("mount\\old")), code);
    EXPECT_FALSE(has("mount/plain") || has("mount/told"));
    EXPECT_TRUE(!has("mount/old") || bytes("mount/old") == "old");
    folder.write("mount/real", "old");
    link("real", "mount/link");
    EXPECT_EQ(copy(source, KVW("mount\\link")), code);
    EXPECT_EQ(linkText("mount/link"), "real");
    EXPECT_TRUE(!has("mount/real") || bytes("mount/real").size() <= 3) << "half-made behind a link";
    fs::remove(folder.path("mount/link"));
  }
};

TEST_F(LinuxFullDisk, AFullDeviceStaysWhatItIs) {
  fs::path const device = fullDevice(folder);
  KVBASE_SKIP_UNLESS(!device.empty(), "a device that is always full, or the right to make its node");
  wstring name = widen(device.string());
  std::replace(name.begin(), name.end(), KVW('/'), KVW('\\'));
  for (std::size_t const size : {std::size_t{1}, 3 * kMebibyte}) {
    folder.write("file", std::string(size, 'x'));
    ProgressCalls calls;
    EXPECT_EQ(copy(KVW("file"), name), kDiskFull) << size;
    EXPECT_EQ(copy(KVW("file"), name, calls), kDiskFull) << size;
    ASSERT_TRUE(S_ISCHR(statusOf(device).st_mode));
  }
}

TEST_F(LinuxFullDisk, AHalfMadeCopyDoesNotStay) {
  folder.makeFolder("mount");
  folder.write("large", std::string(3 * kMebibyte, 'x'));
  bool const permitted = inChildIfPermitted([&] {
    if (!mountPrivately(folder.path("mount"), "size=1m")) return false;
    expectNoRoomFor(KVW("large"), kDiskFull);
    folder.write("mount/most", std::string(600 << 10, 'x'));
    expectNoRoomFor(KVW("mount\\most"), kDiskFull);
    EXPECT_EQ(copy(KVW("mount\\most"), KVW("back")), kNoError);
    EXPECT_EQ(move(KVW("large"), KVW("mount\\moved")), kDiskFull);
    EXPECT_FALSE(has("mount/moved"));
    return true;
  });
  KVBASE_SKIP_UNLESS(permitted, KVBASE_MOUNT_RIGHT);
  EXPECT_EQ(fs::file_size(folder.path("large")), 3 * kMebibyte) << "what could not be moved stays";
}

TEST_F(LinuxFullDisk, ADiskWithoutRoomForItems) {
  folder.makeFolder("mount");
  folder.write("file", "kept");
  link("nothing", "toNothing");
  bool const permitted = inChildIfPermitted([&] {
    if (!mountPrivately(folder.path("mount"), "nr_inodes=2")) return false;
    folder.write("mount/last");
    EXPECT_EQ(makeDirectory(KVW("mount\\dir")), kDiskFull);
    EXPECT_EQ(open(KVW("mount\\file"), kAccessWrite, kOpenAlways), kDiskFull);
    EXPECT_EQ(copy(KVW("file"), KVW("mount\\file")), kDiskFull);
    EXPECT_EQ(copy(KVW("toNothing"), KVW("mount\\link")), kDiskFull);
    EXPECT_EQ(copy(KVW("toNothing"), KVW("mount\\last")), kDiskFull) << "in the place of a file, which stays";
    EXPECT_TRUE(has("mount/last"));
    EXPECT_EQ(move(KVW("file"), KVW("mount\\file")), kDiskFull);
    EXPECT_EQ(move(KVW("toNothing"), KVW("mount\\link")), kDiskFull);
    return true;
  });
  KVBASE_SKIP_UNLESS(permitted, KVBASE_MOUNT_RIGHT);
  EXPECT_EQ(bytes("file"), "kept");
  EXPECT_EQ(linkText("toNothing"), "nothing");
}

TEST_F(LinuxFullDisk, AFileLargerThanAllowed) {
  folder.makeFolder("mount");
  folder.write("large", std::string(3 * kMebibyte, 'x'));
  inChild([&] {
    signal(SIGXFSZ, SIG_IGN);
    rlimit const limit = {kMebibyte, kMebibyte};
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    expectNoRoomFor(KVW("large"), kFileTooLarge);
  });
}

class LinuxTwoFileSystems : public FileCalls {
 protected:
  void SetUp() override {
    KVBASE_SKIP_UNLESS(other.isOtherThan(folder.path()), "/dev/shm, on another file system than temporary files");
  }

  OtherFileSystem other;
};

TEST_F(LinuxTwoFileSystems, FilesAreCopied) {
  std::string const contents(9 * kMebibyte + 1, 'x');
  folder.write("file", contents);
  ASSERT_EQ(chmod(folder.path("file").c_str(), 0440), 0);
  ProgressCalls calls;
  EXPECT_EQ(copy(KVW("file"), other.text(KVW("plain"))), kNoError);
  EXPECT_EQ(copy(KVW("file"), other.text(KVW("told")), calls), kNoError);
  EXPECT_EQ(copy(other.text(KVW("told")), KVW("back")), kNoError);
  ASSERT_GE(calls.all.size(), 3u);
  EXPECT_EQ(calls.all.front().transferred, 0);
  EXPECT_EQ(calls.all.back().transferred, static_cast<std::int64_t>(contents.size()));
  for (fs::path const& path : {other.path("plain"), other.path("told"), folder.path("back")}) {
    EXPECT_TRUE(bytesOf(path) == contents) << path;
    EXPECT_EQ(statusOf(path).st_mode & 07777u, 0440u) << path;
    EXPECT_EQ(statusOf(path).st_mtim.tv_nsec, status("file").st_mtim.tv_nsec) << path;
  }
}

TEST_F(LinuxTwoFileSystems, HolesStayHoles) {
  folder.write("sparse", "data");
  ASSERT_EQ(truncate(folder.path("sparse").c_str(), 20 * kMebibyte), 0);
  EXPECT_EQ(copy(KVW("sparse"), other.text(KVW("sparse"))), kNoError);
  EXPECT_TRUE(bytesOf(other.path("sparse")) == bytes("sparse"));
  EXPECT_LT(std::size_t(statusOf(other.path("sparse")).st_blocks) * 512, kMebibyte);
}

TEST_F(LinuxTwoFileSystems, FilesAreMoved) {
  for (unsigned const rights : {0640u, 0444u}) {
    SCOPED_TRACE(rights);
    folder.write("file", "contents");
    ASSERT_EQ(chmod(folder.path("file").c_str(), rights), 0);
    timespec const times[] = {{1100000000, 7}, {1000000000, 123456789}};
    ASSERT_EQ(utimensat(AT_FDCWD, folder.path("file").c_str(), times, 0), 0);
    EXPECT_EQ(move(KVW("file"), other.text(KVW("moved"))), kNoError);
    EXPECT_FALSE(has("file"));
    EXPECT_EQ(bytesOf(other.path("moved")), "contents");
    struct stat const moved = statusOf(other.path("moved"));
    EXPECT_EQ(moved.st_mode & 07777u, rights);
    EXPECT_EQ(moved.st_mtim.tv_sec, 1000000000);
    EXPECT_EQ(moved.st_mtim.tv_nsec, 123456789);
    fs::remove(other.path("moved"));
  }
}

TEST_F(LinuxTwoFileSystems, LinksAreMovedAndCopiedAsLinks) {
  folder.write("dir/inside");
  folder.write("file", "kept");
  for (char const* target : {"dir", "nothing", "../no/such/item", "file"}) {
    SCOPED_TRACE(target);
    link(target, "link");
    bool const isToFile = std::string(target) == "file";
    EXPECT_EQ(copy(KVW("link"), other.text(KVW("copied"))), kNoError);
    EXPECT_EQ(fs::is_symlink(other.path("copied")), !isToFile);
    EXPECT_EQ(move(KVW("link"), other.text(KVW("moved"))), kNoError);
    EXPECT_FALSE(has("link"));
    ASSERT_TRUE(fs::is_symlink(other.path("moved")));
    EXPECT_EQ(fs::read_symlink(other.path("moved")), target);
    fs::remove(other.path("moved"));
    fs::remove(other.path("copied"));
  }
  EXPECT_EQ(bytes("file"), "kept");
  EXPECT_TRUE(has("dir/inside"));
}

TEST_F(LinuxTwoFileSystems, DirectoriesAreNotMoved) {
  folder.write("dir/inside", "kept");
  EXPECT_EQ(move(KVW("dir"), other.text(KVW("dir"))), kNotSameDevice);
  EXPECT_EQ(bytes("dir/inside"), "kept");
  EXPECT_FALSE(isThere(other.path("dir")));
}

TEST_F(LinuxTwoFileSystems, NothingThatIsThereIsReplacedByAMove) {
  folder.write("file", "kept");
  std::ofstream(other.path("old")) << "old";
  fs::create_directory(other.path("dir"));
  fs::create_symlink("nothing", other.path("toNothing"));
  for (wchar const* name : {KVW("old"), KVW("dir"), KVW("toNothing")}) {
    EXPECT_EQ(move(KVW("file"), other.text(name)), kAlreadyExists) << narrow(name);
  }
  EXPECT_EQ(move(KVW("file"), other.text(KVW("none\\file"))), kPathNotFound);
  EXPECT_EQ(bytes("file"), "kept");
  EXPECT_EQ(bytesOf(other.path("old")), "old");
  EXPECT_FALSE(isThere(other.path("nothing")));
}

TEST_F(LinuxTwoFileSystems, APipeIsNotRead) {
  ASSERT_EQ(mkfifo(folder.path("fifo").c_str(), 0644), 0);
  inChild([&] { EXPECT_NE(move(KVW("fifo"), other.text(KVW("fifo"))), kNoError); });
  EXPECT_TRUE(has("fifo"));
  EXPECT_FALSE(isThere(other.path("fifo")));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
