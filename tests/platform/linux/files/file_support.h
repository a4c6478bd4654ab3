// SPDX-License-Identifier: MIT
//
// Shared parts of the tests that change the disk on Linux.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sched.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <system_error>
#include <type_traits>
#include <vector>

#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"
#include "kvbase/platform/file_api.h"
#include "tests/platform/linux/open_descriptors.h"
#include "tests/support/narrow_text.h"
#include "tests/support/skip.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {

// A last error that no call sets.
constexpr ulong32 kUntouched = 0xA1B2C3;

// Whoever may make user namespaces has this right too.
#define KVBASE_MOUNT_RIGHT "the right to mount, which most containers withhold even from root"

// The last error of a call that fails, kNoError of one that succeeds. Also checks that no descriptor stays open.
template <class Call>
ulong32 errorOf(Call call) {
  std::size_t const before = openDescriptors();
  platform::nativeErrors().setLastError(kUntouched);
  bool const done = call();
  ulong32 const error = platform::nativeErrors().lastError();
  EXPECT_EQ(openDescriptors(), before) << "a descriptor stays open";
  if (done) {
    EXPECT_EQ(error, kUntouched) << "success leaves the last error alone";
    return platform::kNoError;
  }
  EXPECT_NE(error, kUntouched) << "a failure leaves its reason";
  EXPECT_NE(error, platform::kNoError) << "a failure leaves its reason";
  return error;
}

// Runs `body` in a child process with its own limits, rights and mounts, which is killed if it hangs. Failed
// expectations in it count here. False if the body returns false, because it lacks the permissions that it needs.
template <class Body>
[[nodiscard]] bool inChildIfPermitted(Body body) {
  constexpr int kFailed = 1, kNotPermitted = 2;
  std::fflush(nullptr);
  pid_t const child = fork();
  if (child == 0) {
    alarm(60);
    int result = kFailed;
    try {
      bool const permitted = body();
      result = ::testing::Test::HasFailure() ? kFailed : permitted ? 0 : kNotPermitted;
    } catch (std::exception const& exception) {
      std::printf("the child ended by an exception: %s\n", exception.what());
    }
    std::fflush(nullptr);
    _exit(result);
  }
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  if (WIFSIGNALED(status)) {
    ADD_FAILURE() << (WTERMSIG(status) == SIGALRM ? "the call hangs" : "the child was ended by a signal");
    return true;
  }
  EXPECT_NE(WEXITSTATUS(status), kFailed) << "see the failures of the child above";
  return WEXITSTATUS(status) != kNotPermitted;
}

// The same with a body that needs no permission.
template <class Body>
void inChild(Body body) {
  static_assert(std::is_void_v<decltype(body())>, "what is not permitted must be skipped");
  static_cast<void>(inChildIfPermitted([&] {
    body();
    return true;
  }));
}

// Drops the rights of root to go past the modes of files; to be used in a child. Everybody may do that.
inline void dropRights() {
  __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3] = {};
  EXPECT_EQ(syscall(SYS_capset, &header, none), 0);
}

// Makes this process root in a user namespace of its own; to be used in a child. False where the system does not allow it.
inline bool becomeRootOfNamespace() {
  std::string const users = "0 " + std::to_string(geteuid()) + " 1";
  std::string const groups = "0 " + std::to_string(getegid()) + " 1";
  if (unshare(CLONE_NEWUSER) != 0) return false;
  auto const written = [](char const* file, std::string const& text) {
    return static_cast<bool>(std::ofstream(file) << text << std::flush);
  };
  return written("/proc/self/setgroups", "deny") && written("/proc/self/uid_map", users) &&
         written("/proc/self/gid_map", groups);
}

// Mounts an empty file system in memory that only this process sees; to be used in a child. False without permission.
inline bool mountPrivately(std::filesystem::path const& at, char const* options, unsigned long flags = 0) {
  bool const isPrivate = unshare(CLONE_NEWNS) == 0 || (becomeRootOfNamespace() && unshare(CLONE_NEWNS) == 0);
  return isPrivate && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         mount("none", at.c_str(), "tmpfs", flags, options) == 0;
}

// A device that is always full: a new node in the folder, so that a fault cannot damage the system, or without the
// permission for that the system's own. Empty if there is none.
inline std::filesystem::path fullDevice(TempFolder const& folder) {
  std::filesystem::path const own = folder.path("full");
  if (mknod(own.c_str(), S_IFCHR | 0666, makedev(1, 7)) == 0) {
    int const descriptor = open(own.c_str(), O_WRONLY);
    if (descriptor >= 0 && close(descriptor) == 0) return own;
    unlink(own.c_str());
  }
  std::filesystem::path const systems = "/dev/full";
  return std::filesystem::is_character_file(systems) ? systems : std::filesystem::path();
}

// A folder on another file system than that of temporary files.
class OtherFileSystem {
 public:
  OtherFileSystem() {
    char name[] = "/dev/shm/kvbase-XXXXXX";
    if (mkdtemp(name) != nullptr) path_ = name;
  }
  ~OtherFileSystem() {
    std::error_code error;
    if (!path_.empty()) std::filesystem::remove_all(path_, error);
    if (error) ADD_FAILURE() << "folder not removed: " << path_;
  }
  OtherFileSystem(OtherFileSystem const&) = delete;
  OtherFileSystem& operator=(OtherFileSystem const&) = delete;

  bool isOtherThan(std::filesystem::path const& folder) const {
    struct stat here, there;
    return stat(path_.c_str(), &here) == 0 && stat(folder.c_str(), &there) == 0 && here.st_dev != there.st_dev;
  }
  std::filesystem::path path(std::filesystem::path const& below) const { return path_ / below; }
  // In the notation of the library.
  wstring text(wstring const& below) const {
    wstring text = widen(path_.string());
    std::replace(text.begin(), text.end(), KVW('/'), KVW('\\'));
    return text + KVW('\\') + below;
  }

 private:
  std::filesystem::path path_;
};

// The calls of a progress callback.
struct ProgressCalls {
  struct Call {
    std::int64_t total, transferred;
  };
  std::vector<Call> all;

  static ulong32 add(std::int64_t total, std::int64_t transferred, void* calls) {
    static_cast<ProgressCalls*>(calls)->all.push_back({total, transferred});
    return platform::kProgressContinue;
  }
};

// Calls of the native backend that return the last error, on names below a temporary folder or on absolute paths.
class FileCalls : public ::testing::Test {
 protected:
  static platform::FileApi& files() { return platform::nativeFiles(); }

  wstring at(wstring const& name) const {
    bool const isAbsolute = name.size() > 1 && (name[0] == '\\' || name[1] == ':');
    return isAbsolute ? name : folder.text(name);
  }

  ulong32 attributes(wstring const& name) const { return files().getAttributes(at(name).c_str()); }
  ulong32 errorOfAttributes(wstring const& name) const {
    return errorOf([&] { return attributes(name) != platform::kInvalidAttributes; });
  }
  ulong32 setAttributes(wstring const& name, ulong32 wanted) const {
    return errorOf([&] { return files().setAttributes(at(name).c_str(), wanted); });
  }
  ulong32 copy(wstring const& source, wstring const& target, ulong32 flags = 0) const {
    return errorOf([&] { return files().copyFile(at(source).c_str(), at(target).c_str(), nullptr, nullptr, flags); });
  }
  ulong32 copy(wstring const& source, wstring const& target, ProgressCalls& calls) const {
    return errorOf(
        [&] { return files().copyFile(at(source).c_str(), at(target).c_str(), &ProgressCalls::add, &calls, 0); });
  }
  ulong32 move(wstring const& source, wstring const& target) const {
    return errorOf([&] { return files().moveFile(at(source).c_str(), at(target).c_str()); });
  }
  ulong32 remove(wstring const& name) const {
    return errorOf([&] { return files().deleteFile(at(name).c_str()); });
  }
  ulong32 makeDirectory(wstring const& name) const {
    return errorOf([&] { return files().createDirectory(at(name).c_str()); });
  }
  ulong32 removeDirectory(wstring const& name) const {
    return errorOf([&] { return files().removeDirectory(at(name).c_str()); });
  }
  // Opens and closes. With kOpenAlways the last error after success is part of the result: kNoError or kAlreadyExists.
  ulong32 open(wstring const& name, ulong32 access, ulong32 disposition = platform::kOpenExisting,
               ulong32 flags = 0) const {
    constexpr ulong32 kSharing = platform::kShareRead | platform::kShareWrite | platform::kShareDelete;
    std::size_t const before = openDescriptors();
    platform::nativeErrors().setLastError(kUntouched);
    platform::FileHandle const file = files().openFile(at(name).c_str(), access, kSharing, disposition, flags);
    ulong32 const error = platform::nativeErrors().lastError();
    bool const done = file != platform::invalidFile();
    if (done) {
      EXPECT_TRUE(files().closeFile(file));
    }
    EXPECT_EQ(openDescriptors(), before) << "a descriptor stays open";
    if (!done) {
      EXPECT_TRUE(error != kUntouched && error != platform::kNoError) << "a failure leaves its reason";
    } else if (disposition == platform::kOpenExisting) {
      EXPECT_EQ(error, kUntouched) << "success leaves the last error alone";
      return platform::kNoError;
    }
    return error;
  }

  void link(std::filesystem::path const& target, std::filesystem::path const& name) const {
    ASSERT_EQ(symlink(target.c_str(), folder.path(name).c_str()), 0) << name;
  }
  static bool isThere(std::filesystem::path const& path) {
    return std::filesystem::exists(std::filesystem::symlink_status(path));
  }
  bool has(std::filesystem::path const& name) const { return isThere(folder.path(name)); }
  // The text of a link; empty for any other item.
  std::string linkText(std::filesystem::path const& name) const {
    std::error_code ignored;
    return std::filesystem::read_symlink(folder.path(name), ignored).string();
  }
  static std::string bytesOf(std::filesystem::path const& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
  }
  std::string bytes(std::filesystem::path const& name) const { return bytesOf(folder.path(name)); }
  // The item itself, not what it leads to.
  static struct stat statusOf(std::filesystem::path const& path) {
    struct stat status = {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status;
  }
  struct stat status(std::filesystem::path const& name) const {
    return statusOf(folder.path(name));
  }
  unsigned mode(std::filesystem::path const& name) const { return status(name).st_mode & 07777u; }

  TempFolder folder;
};

}  // namespace testing
}  // namespace KV_1_1
